// An object of a JSON description together with its place in the document, so that whatever is wrong with it can be told by
// field and reason.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace headend {

// Names with commas between.
[[nodiscard]] std::string Joined(const std::vector<std::string>& names);

// Every member must be asked for before Finish. What is wrong is thrown as DescriptionError.
class JsonNode {
public:
    JsonNode(const nlohmann::json& nodeValue, std::string nodePath, const std::string& documentName);

    [[noreturn]] void Fail(const std::string& key, const std::string& reason) const;

    [[nodiscard]] bool Has(const std::string& key) { return Find(key) != nullptr; }

    // `otherwise` when the member is not there.
    double Number(const std::string& key, double low, double high, double otherwise);
    int Integer(const std::string& key, int low, int high, int otherwise);
    int RequiredInteger(const std::string& key, int low, int high);
    // A number, or hexadecimal digits in quotes: "0xE201".
    std::uint32_t Identifier(const std::string& key, std::uint32_t high);
    std::string Text(const std::string& key, const std::string& otherwise);
    std::string OneOf(const std::string& key, const std::vector<std::string>& names, const std::string& otherwise);
    bool Flag(const std::string& key, bool otherwise);

    // Calls visit(JsonNode&) for each member of a list of objects.
    template <typename Visit> void Each(const std::string& key, Visit visit) {
        const nlohmann::json* found = FindList(key);
        for (std::size_t i = 0; found != nullptr && i < found->size(); ++i) {
            JsonNode node((*found)[i], Path(key) + "[" + std::to_string(i) + "]", document);
            visit(node);
            node.Finish();
        }
    }

    template <typename Visit> void Child(const std::string& key, Visit visit) {
        const nlohmann::json* found = Find(key);
        if (found == nullptr)
            return;
        JsonNode node(*found, Path(key), document);
        visit(node);
        node.Finish();
    }

    // A member that nobody asked for is a slip of the pen.
    void Finish() const;

private:
    [[nodiscard]] std::string Path(const std::string& key) const { return path.empty() ? key : path + "." + key; }
    [[nodiscard]] const nlohmann::json* Find(const std::string& key);
    [[nodiscard]] const nlohmann::json* FindList(const std::string& key);

    const nlohmann::json& value;
    std::string path;
    const std::string& document;
    std::set<std::string> known;
};

} // namespace headend
