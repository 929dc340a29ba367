#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

#include <nlohmann/json.hpp>

#include "host/headend/Description.h"
#include "host/headend/Multiplex.h"
#include "host/headend/ServiceJson.h"

namespace headend {

namespace {

using nlohmann::json;

EnsembleDescription ReadEnsemble(JsonNode& node, const std::filesystem::path& base) {
    EnsembleDescription ensemble;
    std::vector<std::string> blocks;
    for (int channel = 7; channel <= 13; ++channel) {
        for (const char block : {'A', 'B', 'C'})
            blocks.push_back(std::to_string(channel) + block);
    }
    ensemble.block = node.OneOf("block", blocks, "");
    ensemble.id = static_cast<std::uint16_t>(node.Identifier("id", 0xFFFF));
    ensemble.label = ReadRequiredLabel(node);
    if (node.Has("ecc"))
        ensemble.ecc = static_cast<int>(node.Identifier("ecc", 0xFF));
    ensemble.localTimeOffset = static_cast<int>(node.Number("localTimeOffset", -15.5, 15.5, 9) * 2);
    ensemble.firstFrame = node.Integer("firstFrame", 0, 4999, 0);
    node.Each("services", [&](JsonNode& child) { ensemble.services.push_back(ReadService(child, base)); });
    node.Each("lostFrames", [&](JsonNode& child) {
        ensemble.lostFrames.push_back({child.Number("at", 0, 1e6, 0), child.Integer("count", 1, 100000, 1)});
    });
    node.Each("fibErrors", [&](JsonNode& child) { ensemble.fibErrors.push_back(ReadWindow(child, 1)); });
    node.Each("dropOuts", [&](JsonNode& child) { ensemble.dropOuts.push_back(ReadWindow(child, 1)); });
    std::set<std::uint32_t> ids;
    for (const ServiceDescription& service : ensemble.services) {
        if (!ids.insert(service.id).second)
            node.Fail("services", "two services have the same id");
    }
    try {
        (void)MakeConfigurations(ensemble);
    } catch (const DescriptionError& error) {
        node.Fail("services", error.what());
    }
    return ensemble;
}

// "2026-05-05T19:29:50" as seconds since 1970.
std::int64_t ReadClock(JsonNode& node) {
    const std::string text = node.Text("clock", "2026-05-05T19:29:50");
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%c", &year, &month, &day, &hour, &minute, &second, &rest) !=
            6 ||
        year < 1970 || year > 2100 || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || hour < 0 ||
        minute > 59 || minute < 0 || second > 59 || second < 0)
        node.Fail("clock", "\"" + text + "\" is no time like 2026-05-05T19:29:50");
    // Days of the civil calendar, counted from March so that the leap day comes last.
    const int y = month <= 2 ? year - 1 : year;
    const int m = (month + 9) % 12;
    const std::int64_t days = std::int64_t{365} * y + y / 4 - y / 100 + y / 400 + (m * 306 + 5) / 10 + day - 1 - 719468;
    return days * 86400 + hour * 3600 + minute * 60 + second;
}

int LineOf(std::string_view text, std::size_t byte) {
    return 1 + static_cast<int>(std::count(
                   text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size())), '\n'));
}

} // namespace

Description ParseDescription(std::string_view text, const std::string& name, const std::filesystem::path& base) {
    json document;
    try {
        document = json::parse(text, nullptr, true, true); // comments are welcome
    } catch (const json::parse_error& error) {
        const std::string what = error.what();
        const std::size_t colon = what.rfind(": ");
        throw DescriptionError(name + ": line " + std::to_string(LineOf(text, error.byte > 0 ? error.byte - 1 : 0)) +
                               ": " + (colon == std::string::npos ? what : what.substr(colon + 2)));
    } catch (const json::exception& error) { // a number beyond all bounds
        const std::string what = error.what();
        const std::size_t bracket = what.find("] ");
        throw DescriptionError(name +
                               ": the document: " + (bracket == std::string::npos ? what : what.substr(bracket + 2)));
    }
    JsonNode root(document, "", name);
    Description description;
    description.seconds = root.Number("seconds", 0.5, 1200, 10);
    description.clock = ReadClock(root);
    description.loop = root.Flag("loop", true);
    root.Each("ensembles", [&](JsonNode& node) { description.ensembles.push_back(ReadEnsemble(node, base)); });
    root.Finish();
    if (description.ensembles.empty())
        root.Fail("ensembles", "there is none");
    std::set<std::string> blocks;
    for (const EnsembleDescription& ensemble : description.ensembles) {
        if (!blocks.insert(ensemble.block).second)
            root.Fail("ensembles", "block " + ensemble.block + " has two");
    }
    return description;
}

Description LoadDescription(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw DescriptionError(file.string() + ": cannot be read");
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    return ParseDescription(text, file.string(), file.parent_path());
}

} // namespace headend
