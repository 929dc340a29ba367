#include "host/headend/JsonNode.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/headend/Description.h"

namespace headend {

using nlohmann::json;

namespace {

std::string Short(double number) {
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

} // namespace

std::string Joined(const std::vector<std::string>& names) {
    std::string out;
    for (const std::string& name : names)
        out += (out.empty() ? "" : ", ") + name;
    return out;
}

JsonNode::JsonNode(const json& nodeValue, std::string nodePath, const std::string& documentName)
    : value(nodeValue), path(std::move(nodePath)), document(documentName) {
    if (!value.is_object())
        Fail("", "must be an object in braces");
}

void JsonNode::Fail(const std::string& key, const std::string& reason) const {
    std::string field = path;
    if (!key.empty())
        field += (field.empty() ? "" : ".") + key;
    throw DescriptionError(document + ": " + (field.empty() ? "the document" : field) + ": " + reason);
}

double JsonNode::Number(const std::string& key, double low, double high, double otherwise) {
    const json* found = Find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_number())
        Fail(key, "must be a number");
    const double number = found->get<double>();
    if (!(number >= low && number <= high))
        Fail(key, "must lie between " + Short(low) + " and " + Short(high));
    return number;
}

int JsonNode::Integer(const std::string& key, int low, int high, int otherwise) {
    const double number = Number(key, low, high, otherwise);
    if (number != static_cast<int>(number))
        Fail(key, "must be a whole number");
    return static_cast<int>(number);
}

int JsonNode::RequiredInteger(const std::string& key, int low, int high) {
    if (!Has(key))
        Fail(key, "is missing");
    return Integer(key, low, high, low);
}

std::uint32_t JsonNode::Identifier(const std::string& key, std::uint32_t high) {
    const json* found = Find(key);
    if (found == nullptr)
        Fail(key, "is missing");
    std::uint64_t number = std::numeric_limits<std::uint64_t>::max();
    if (found->is_number_unsigned()) {
        number = found->get<std::uint64_t>();
    } else if (found->is_string()) {
        const auto text = found->get<std::string>();
        std::size_t used = 0;
        try {
            number = std::stoull(text, &used, 0);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used == 0 || used != text.size())
            Fail(key, "\"" + text + "\" is no number");
    }
    if (number > high)
        Fail(key, "must be a number or a text like \"0xE201\", at most " + std::to_string(high));
    return static_cast<std::uint32_t>(number);
}

std::string JsonNode::Text(const std::string& key, const std::string& otherwise) {
    const json* found = Find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_string())
        Fail(key, "must be a text");
    return found->get<std::string>();
}

std::string JsonNode::OneOf(const std::string& key, const std::vector<std::string>& names,
                            const std::string& otherwise) {
    const std::string text = Text(key, otherwise);
    if (std::find(names.begin(), names.end(), text) == names.end())
        Fail(key, "\"" + text + "\" is none of " + Joined(names));
    return text;
}

bool JsonNode::Flag(const std::string& key, bool otherwise) {
    const json* found = Find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_boolean())
        Fail(key, "must be true or false");
    return found->get<bool>();
}

void JsonNode::Finish() const {
    for (const auto& [key, member] : value.items()) {
        if (known.count(key) == 0)
            Fail(key, "is not known here");
    }
}

const json* JsonNode::Find(const std::string& key) {
    known.insert(key);
    const auto found = value.find(key);
    return found == value.end() ? nullptr : &*found;
}

const json* JsonNode::FindList(const std::string& key) {
    const json* found = Find(key);
    if (found != nullptr && !found->is_array())
        Fail(key, "must be a list in brackets");
    return found;
}

} // namespace headend
