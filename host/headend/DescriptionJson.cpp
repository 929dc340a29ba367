#include "host/headend/Description.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>

#include <nlohmann/json.hpp>

#include "host/headend/LayerTwoEncoder.h"
#include "host/headend/Melody.h"
#include "host/headend/Multiplex.h"
#include "host/headend/Scene.h"
#include "host/headend/Slide.h"

namespace headend {

namespace {

using nlohmann::json;

std::string Joined(const std::vector<std::string>& names) {
    std::string out;
    for (const std::string& name : names)
        out += (out.empty() ? "" : ", ") + name;
    return out;
}

// An object of the description with its place, for messages. Every member must be asked for before Finish.
class Node {
public:
    Node(const json& nodeValue, std::string nodePath, const std::string& documentName)
        : value(nodeValue), path(std::move(nodePath)), document(documentName) {
        if (!value.is_object())
            Fail("", "must be an object in braces");
    }

    [[noreturn]] void Fail(const std::string& key, const std::string& reason) const {
        std::string field = path;
        if (!key.empty())
            field += (field.empty() ? "" : ".") + key;
        throw DescriptionError(document + ": " + (field.empty() ? "the document" : field) + ": " + reason);
    }

    [[nodiscard]] bool Has(const std::string& key) { return Find(key) != nullptr; }

    double Number(const std::string& key, double low, double high, double otherwise) {
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

    int Integer(const std::string& key, int low, int high, int otherwise) {
        const double number = Number(key, low, high, otherwise);
        if (number != static_cast<int>(number))
            Fail(key, "must be a whole number");
        return static_cast<int>(number);
    }

    int RequiredInteger(const std::string& key, int low, int high) {
        if (!Has(key))
            Fail(key, "is missing");
        return Integer(key, low, high, low);
    }

    // A number, or hexadecimal digits in quotes: "0xE201".
    std::uint32_t Identifier(const std::string& key, std::uint32_t high) {
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

    std::string Text(const std::string& key, const std::string& otherwise) {
        const json* found = Find(key);
        if (found == nullptr)
            return otherwise;
        if (!found->is_string())
            Fail(key, "must be a text");
        return found->get<std::string>();
    }

    std::string OneOf(const std::string& key, const std::vector<std::string>& names, const std::string& otherwise) {
        const std::string text = Text(key, otherwise);
        if (std::find(names.begin(), names.end(), text) == names.end())
            Fail(key, "\"" + text + "\" is none of " + Joined(names));
        return text;
    }

    bool Flag(const std::string& key, bool otherwise) {
        const json* found = Find(key);
        if (found == nullptr)
            return otherwise;
        if (!found->is_boolean())
            Fail(key, "must be true or false");
        return found->get<bool>();
    }

    // Calls visit(Node) for each member of a list of objects.
    template <typename Visit> void Each(const std::string& key, Visit visit) {
        const json* found = Find(key);
        if (found == nullptr)
            return;
        if (!found->is_array())
            Fail(key, "must be a list in brackets");
        for (std::size_t i = 0; i < found->size(); ++i) {
            Node node((*found)[i], Path(key) + "[" + std::to_string(i) + "]", document);
            visit(node);
            node.Finish();
        }
    }

    template <typename Visit> void Child(const std::string& key, Visit visit) {
        const json* found = Find(key);
        if (found == nullptr)
            return;
        Node node(*found, Path(key), document);
        visit(node);
        node.Finish();
    }

    // A member that nobody asked for is a slip of the pen.
    void Finish() const {
        for (const auto& [key, member] : value.items()) {
            if (known.count(key) == 0)
                Fail(key, "is not known here");
        }
    }

    [[nodiscard]] std::string Path(const std::string& key) const { return path.empty() ? key : path + "." + key; }

private:
    const json* Find(const std::string& key) {
        known.insert(key);
        const auto found = value.find(key);
        return found == value.end() ? nullptr : &*found;
    }

    static std::string Short(double number) {
        std::string text = std::to_string(number);
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
        return text;
    }

    const json& value;
    std::string path;
    const std::string& document;
    std::set<std::string> known;
};

TextCoding ReadCoding(Node& node, TextCoding otherwise) {
    const std::vector<std::string> names = {"ebu-latin", "korean", "ucs-2", "utf-8"};
    const std::string name = node.OneOf("coding", names, names[static_cast<std::size_t>(otherwise)]);
    return static_cast<TextCoding>(std::find(names.begin(), names.end(), name) - names.begin());
}

void CheckText(const Node& node, const std::string& key, const std::string& text, TextCoding coding,
               std::size_t limit) {
    try {
        const std::size_t size = EncodeText(text, coding).size();
        if (size > limit)
            node.Fail(key, "\"" + text + "\" takes " + std::to_string(size) + " bytes of " + std::to_string(limit));
    } catch (const DescriptionError& error) {
        node.Fail(key, error.what());
    }
}

LabelDescription ReadLabel(Node& node) {
    LabelDescription label;
    label.text = node.Text("text", "");
    label.coding = ReadCoding(node, TextCoding::kEbuLatin);
    label.shortText = node.Text("short", "");
    label.extended = node.Text("extended", "");
    if (label.text.empty())
        node.Fail("text", "is missing");
    CheckText(node, "text", label.text, label.coding, 16);
    CheckText(node, "short", label.shortText, label.coding, 8);
    CheckText(node, "extended", label.extended, TextCoding::kUtf8, 32);
    return label;
}

LabelDescription ReadRequiredLabel(Node& node) {
    LabelDescription label;
    if (!node.Has("label"))
        node.Fail("label", "is missing");
    node.Child("label", [&](Node& child) { label = ReadLabel(child); });
    return label;
}

Protection ReadProtection(Node& node, const std::string& key) {
    const std::string text = node.Text(key, "EEP 3-A");
    Protection protection;
    if (text.size() == 5 && text.rfind("UEP ", 0) == 0 && text[4] >= '1' && text[4] <= '5') {
        protection.equal = false;
        protection.level = text[4] - '0';
        return protection;
    }
    if (text.size() == 7 && text.rfind("EEP ", 0) == 0 && text[4] >= '1' && text[4] <= '4' && text[5] == '-' &&
        (text[6] == 'A' || text[6] == 'B')) {
        protection.level = text[4] - '0';
        protection.set = text[6];
        return protection;
    }
    node.Fail(key, "\"" + text + "\" is neither \"UEP 1\" to \"UEP 5\" nor \"EEP 1-A\" to \"EEP 4-B\"");
}

Window ReadWindow(Node& node, double rate) {
    Window window;
    window.from = node.Number("from", 0, 1e6, 0);
    window.to = node.Number("to", 0, 1e6, 1e6);
    window.rate = node.Number("rate", 0, 1, rate);
    return window;
}

void ReadSound(Node& node, SoundDescription& sound) {
    sound.codec = node.OneOf("codec", {"aac", "bsac"}, sound.codec);
    sound.sampleRate = node.Integer("sampleRate", 8000, 48000, sound.sampleRate);
    sound.channels = node.Integer("channels", 1, 2, sound.channels);
    sound.kbps = node.Integer("bitRate", 32, 128, sound.kbps);
    sound.melody = node.Text("melody", sound.melody);
    sound.beepEvery = node.Number("beepEvery", 0, 3600, sound.beepEvery);
    if (!IsMelody(sound.melody))
        node.Fail("melody", "\"" + sound.melody + "\" is none of " + Joined(MelodyNames()) +
                                ", silence, tone:HZ, tone:LEFT/RIGHT");
}

void CheckSound(const Node& node, const ServiceDescription& service, const SoundDescription& sound) {
    if (service.kind == ServiceKind::kTelevision) {
        if (sound.sampleRate != 24000 && sound.sampleRate != 44100 && sound.sampleRate != 48000)
            node.Fail("sound.sampleRate", "television sound has 24000, 44100 or 48000");
        return;
    }
    if (sound.sampleRate != 24000 && sound.sampleRate != 48000)
        node.Fail("sound.sampleRate", "radio has 24000 or 48000");
    std::vector<int> rates = {service.kbps};
    for (const ServiceChange& change : service.changes) {
        if (change.kbps >= 0)
            rates.push_back(change.kbps);
    }
    for (const int kbps : rates) {
        if (LayerTwoCoderKbps({sound.sampleRate, sound.channels, kbps, service.padBytes}) == 0)
            node.Fail("bitRate", std::to_string(kbps) + " kbit/s is no layer II rate for " +
                                     std::to_string(sound.channels) + " channels at " +
                                     std::to_string(sound.sampleRate) + " Hz with " + std::to_string(service.padBytes) +
                                     " bytes of PAD");
    }
}

std::filesystem::path ReadFile(Node& node, const std::string& key, const std::filesystem::path& base) {
    const std::string name = node.Text(key, "");
    if (name.empty())
        return {};
    std::filesystem::path path = std::filesystem::path(name).is_absolute() ? std::filesystem::path(name) : base / name;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        node.Fail(key, path.string() + " is not there");
    return path;
}

void ReadVideo(Node& node, VideoDescription& video) {
    video.scene = node.OneOf("scene", SceneNames(), video.scene);
    video.width = node.Integer("width", 64, 384, video.width);
    video.height = node.Integer("height", 64, 288, video.height);
    video.framesPerSecond = node.Integer("framesPerSecond", 1, 30, video.framesPerSecond);
    video.kbps = node.Integer("bitRate", 32, 768, 0);
    video.station = node.Text("station", video.station);
    video.ticker = node.Text("ticker", "");
    video.flashEvery = node.Number("flashEvery", 0, 3600, 0);
    video.parameterSetsInBand = node.OneOf("parameterSets", {"avcC", "in band"}, "in band") == "in band";
    if (video.width % 2 != 0 || video.height % 2 != 0)
        node.Fail("width", "width and height must be even");
    // H.264 table A-1, level 1.3: 396 macroblocks a picture, 11880 a second.
    const int blocks = (video.width + 15) / 16 * ((video.height + 15) / 16);
    if (blocks > 396 || blocks * video.framesPerSecond > 11880)
        node.Fail("width", "the picture is more than level 1.3 allows");
}

void ReadRadio(Node& node, ServiceDescription& service, const std::filesystem::path& base) {
    service.padBytes = static_cast<std::size_t>(node.Integer("padBytes", 0, 196, 0));
    if (service.padBytes != 0 && service.padBytes != 4 && service.padBytes < 6)
        node.Fail("padBytes", "must be 0, 4 or 6 to 196");
    double last = 0;
    node.Each("texts", [&](Node& item) {
        TextDescription text;
        text.from = item.Number("from", last, 1e6, last);
        last = text.from;
        text.text = item.Text("text", "");
        text.coding = ReadCoding(item, TextCoding::kUtf8);
        text.artist = item.Text("artist", "");
        text.title = item.Text("title", "");
        CheckText(item, "text", text.text, text.coding, 128);
        service.texts.push_back(std::move(text));
    });
    last = 0;
    node.Each("slides", [&](Node& item) {
        SlideDescription slide;
        slide.from = item.Number("from", last, 1e6, last);
        last = slide.from;
        slide.file = ReadFile(item, "file", base);
        slide.style = item.OneOf("style", SlideStyles(), slide.style);
        slide.title = item.Text("title", "");
        slide.text = item.Text("text", "");
        if (item.Has("colour"))
            slide.colour = item.Identifier("colour", 0xFFFFFF);
        slide.width = item.Integer("width", 16, 1280, slide.width);
        slide.height = item.Integer("height", 16, 960, slide.height);
        slide.quality = item.Integer("quality", 1, 100, slide.quality);
        slide.progressive = item.OneOf("coding", {"baseline", "progressive"}, "baseline") == "progressive";
        slide.shuffled = item.Flag("shuffled", false);
        service.slides.push_back(std::move(slide));
    });
    if (!service.texts.empty() && service.padBytes == 0)
        node.Fail("texts", "need padBytes of at least 4");
    if (!service.slides.empty() && service.padBytes < 16)
        node.Fail("slides", "need padBytes of at least 16");
}

ServiceChange ReadChange(Node& node) {
    ServiceChange change;
    change.at = node.Number("at", 0, 1e6, 0);
    change.subChannel = node.Integer("subChannel", 0, 63, -1);
    change.kbps = node.Integer("bitRate", 8, 1824, -1);
    if (node.Has("protection")) {
        change.hasProtection = true;
        change.protection = ReadProtection(node, "protection");
    }
    if (node.Has("label")) {
        change.hasLabel = true;
        change.label = ReadRequiredLabel(node);
    }
    return change;
}

ServiceDescription ReadService(Node& node, const std::filesystem::path& base) {
    const std::vector<std::string> kinds = {"television", "radio", "dab+", "stream data", "packet data"};
    ServiceDescription service;
    if (!node.Has("kind"))
        node.Fail("kind", "is missing");
    const std::string kind = node.OneOf("kind", kinds, "");
    service.kind = static_cast<ServiceKind>(std::find(kinds.begin(), kinds.end(), kind) - kinds.begin());
    service.id = node.Identifier("id", service.HasLongId() ? 0xFFFF'FFFF : 0xFFFF);
    service.label = ReadRequiredLabel(node);
    service.subChannel = node.RequiredInteger("subChannel", 0, 63);
    service.kbps = node.RequiredInteger("bitRate", 8, 1824);
    service.protection = ReadProtection(node, "protection");
    node.Child("present", [&](Node& child) { service.present = ReadWindow(child, 1); });
    node.Each("changes", [&](Node& child) { service.changes.push_back(ReadChange(child)); });
    service.programmeType = node.Integer("programmeType", 0, 31, 0);
    service.announcements = node.Integer("announcements", 0, 0xFFFF, 0);
    service.dataType = node.Integer("dataType", 0, 63, service.dataType);
    service.scrambledFlag = node.Flag("conditionalAccess", false);
    node.Each("bitErrors", [&](Node& child) { service.bitErrors.push_back(ReadWindow(child, 1e-4)); });

    const bool isTelevision = service.kind == ServiceKind::kTelevision;
    if (service.kind == ServiceKind::kRadio)
        ReadRadio(node, service, base);
    if (isTelevision) {
        service.video.station = service.label.text;
        node.Child("video", [&](Node& child) { ReadVideo(child, service.video); });
        service.transportStream = ReadFile(node, "transportStream", base);
        service.clockStart = static_cast<std::int64_t>(node.Number("clockStart", 0, 8589934591.0, 0));
        service.timeStampEveryMs = node.Integer("timeStampEvery", 0, 700, 0);
        node.Child("scrambled", [&](Node& child) { service.scrambled = ReadWindow(child, 1); });
    }
    if (isTelevision || service.kind == ServiceKind::kRadio) {
        node.Child("sound", [&](Node& child) { ReadSound(child, service.sound); });
        CheckSound(node, service, service.sound);
        double last = 0;
        node.Each("soundChanges", [&](Node& child) {
            SoundChange change{child.Number("at", last, 1e6, last), service.sound};
            last = change.at;
            ReadSound(child, change.sound);
            CheckSound(child, service, change.sound);
            service.soundChanges.push_back(std::move(change));
        });
    }
    return service;
}

EnsembleDescription ReadEnsemble(Node& node, const std::filesystem::path& base) {
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
    node.Each("services", [&](Node& child) { ensemble.services.push_back(ReadService(child, base)); });
    node.Each("lostFrames", [&](Node& child) {
        ensemble.lostFrames.push_back({child.Number("at", 0, 1e6, 0), child.Integer("count", 1, 100000, 1)});
    });
    node.Each("fibErrors", [&](Node& child) { ensemble.fibErrors.push_back(ReadWindow(child, 1)); });
    node.Each("dropOuts", [&](Node& child) { ensemble.dropOuts.push_back(ReadWindow(child, 1)); });
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
std::int64_t ReadClock(Node& node) {
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
    Node root(document, "", name);
    Description description;
    description.seconds = root.Number("seconds", 0.5, 1200, 10);
    description.clock = ReadClock(root);
    description.loop = root.Flag("loop", true);
    root.Each("ensembles", [&](Node& node) { description.ensembles.push_back(ReadEnsemble(node, base)); });
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
