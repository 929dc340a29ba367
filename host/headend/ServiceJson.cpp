#include "host/headend/ServiceJson.h"

#include <algorithm>
#include <utility>

#include "host/headend/LayerTwoEncoder.h"
#include "host/headend/Melody.h"
#include "host/headend/Scene.h"
#include "host/headend/Slide.h"

namespace headend {

namespace {

TextCoding ReadCoding(JsonNode& node, TextCoding otherwise) {
    const std::vector<std::string> names = {"ebu-latin", "korean", "ucs-2", "utf-8"};
    const std::string name = node.OneOf("coding", names, names[static_cast<std::size_t>(otherwise)]);
    return static_cast<TextCoding>(std::find(names.begin(), names.end(), name) - names.begin());
}

void CheckText(const JsonNode& node, const std::string& key, const std::string& text, TextCoding coding,
               std::size_t limit) {
    try {
        const std::size_t size = EncodeText(text, coding).size();
        if (size > limit)
            node.Fail(key, "\"" + text + "\" takes " + std::to_string(size) + " bytes of " + std::to_string(limit));
    } catch (const DescriptionError& error) {
        node.Fail(key, error.what());
    }
}

LabelDescription ReadLabel(JsonNode& node) {
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

Protection ReadProtection(JsonNode& node, const std::string& key) {
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

void ReadSound(JsonNode& node, SoundDescription& sound) {
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

void CheckSound(const JsonNode& node, const ServiceDescription& service, const SoundDescription& sound) {
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

std::filesystem::path ReadFile(JsonNode& node, const std::string& key, const std::filesystem::path& base) {
    const std::string name = node.Text(key, "");
    if (name.empty())
        return {};
    std::filesystem::path path = std::filesystem::path(name).is_absolute() ? std::filesystem::path(name) : base / name;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        node.Fail(key, path.string() + " is not there");
    return path;
}

void ReadVideo(JsonNode& node, VideoDescription& video) {
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

void ReadRadio(JsonNode& node, ServiceDescription& service, const std::filesystem::path& base) {
    service.padBytes = static_cast<std::size_t>(node.Integer("padBytes", 0, 196, 0));
    if (service.padBytes != 0 && service.padBytes != 4 && service.padBytes < 6)
        node.Fail("padBytes", "must be 0, 4 or 6 to 196");
    double last = 0;
    node.Each("texts", [&](JsonNode& item) {
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
    node.Each("slides", [&](JsonNode& item) {
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

ServiceChange ReadChange(JsonNode& node) {
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

} // namespace

LabelDescription ReadRequiredLabel(JsonNode& node) {
    LabelDescription label;
    if (!node.Has("label"))
        node.Fail("label", "is missing");
    node.Child("label", [&](JsonNode& child) { label = ReadLabel(child); });
    return label;
}

Window ReadWindow(JsonNode& node, double rate) {
    Window window;
    window.from = node.Number("from", 0, 1e6, 0);
    window.to = node.Number("to", 0, 1e6, 1e6);
    window.rate = node.Number("rate", 0, 1, rate);
    return window;
}

ServiceDescription ReadService(JsonNode& node, const std::filesystem::path& base) {
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
    node.Child("present", [&](JsonNode& child) { service.present = ReadWindow(child, 1); });
    node.Each("changes", [&](JsonNode& child) { service.changes.push_back(ReadChange(child)); });
    service.programmeType = node.Integer("programmeType", 0, 31, 0);
    service.announcements = node.Integer("announcements", 0, 0xFFFF, 0);
    service.dataType = node.Integer("dataType", 0, 63, service.dataType);
    service.scrambledFlag = node.Flag("conditionalAccess", false);
    node.Each("bitErrors", [&](JsonNode& child) { service.bitErrors.push_back(ReadWindow(child, 1e-4)); });

    const bool isTelevision = service.kind == ServiceKind::kTelevision;
    if (service.kind == ServiceKind::kRadio)
        ReadRadio(node, service, base);
    if (isTelevision) {
        service.video.station = service.label.text;
        node.Child("video", [&](JsonNode& child) { ReadVideo(child, service.video); });
        service.transportStream = ReadFile(node, "transportStream", base);
        service.clockStart = static_cast<std::int64_t>(node.Number("clockStart", 0, 8589934591.0, 0));
        service.timeStampEveryMs = node.Integer("timeStampEvery", 0, 700, 0);
        node.Child("scrambled", [&](JsonNode& child) { service.scrambled = ReadWindow(child, 1); });
    }
    if (isTelevision || service.kind == ServiceKind::kRadio) {
        node.Child("sound", [&](JsonNode& child) { ReadSound(child, service.sound); });
        CheckSound(node, service, service.sound);
        double last = 0;
        node.Each("soundChanges", [&](JsonNode& child) {
            SoundChange change{child.Number("at", last, 1e6, last), service.sound};
            last = change.at;
            ReadSound(child, change.sound);
            CheckSound(child, service, change.sound);
            service.soundChanges.push_back(std::move(change));
        });
    }
    return service;
}

} // namespace headend
