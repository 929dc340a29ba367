#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "host/headend/LayerTwoEncoder.h"
#include "host/headend/Melody.h"
#include "host/headend/Multiplex.h"
#include "host/headend/PadEncoder.h"
#include "host/headend/Programme.h"
#include "host/headend/Slide.h"
#include "host/wire/LayerTwo.h"

namespace headend {

namespace {

// The characters before `part` in `whole`, and of `part` itself; a tag of DL Plus counts characters.
bool FindTag(const std::string& whole, const std::string& part, int contentType, std::vector<DlPlusTag>& tags) {
    const std::size_t at = part.empty() ? std::string::npos : whole.find(part);
    if (at == std::string::npos)
        return false;
    const auto characters = [](std::string_view text) {
        return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
    };
    tags.push_back({contentType, characters(std::string_view(whole).substr(0, at)), characters(part)});
    return true;
}

PadText MakeText(const TextDescription& description, bool itemToggle) {
    constexpr int kItemTitle = 1;
    constexpr int kItemArtist = 4;
    PadText text;
    text.from = description.from;
    text.charset = CharsetOf(description.coding);
    text.bytes = EncodeText(description.text, description.coding);
    std::vector<DlPlusTag> tags;
    FindTag(description.text, description.title, kItemTitle, tags);
    FindTag(description.text, description.artist, kItemArtist, tags);
    if (!tags.empty())
        text.dlPlus = MakeDlPlus(tags, itemToggle);
    return text;
}

PadSettings MakePad(const ServiceDescription& service) {
    PadSettings pad;
    pad.padBytes = service.padBytes;
    bool itemToggle = false;
    for (const TextDescription& text : service.texts)
        pad.texts.push_back(MakeText(text, itemToggle = !itemToggle));
    for (std::size_t i = 0; i < service.slides.size(); ++i) {
        const SlideDescription& description = service.slides[i];
        PadSlide slide;
        slide.from = description.from;
        slide.transportId = static_cast<std::uint16_t>(i + 1);
        slide.shuffled = description.shuffled;
        slide.body = MakeSlideFile(description);
        const bool png = slide.body.size() > 1 && slide.body[0] == 0x89 && slide.body[1] == 'P';
        slide.contentSubtype = png ? 3 : 1;
        slide.contentName = "slide" + std::to_string(i + 1) + (png ? ".png" : ".jpg");
        pad.slides.push_back(std::move(slide));
    }
    return pad;
}

} // namespace

Programme MakeRadio(const Description& description, const ServiceDescription& service, const Stretch& stretch) {
    const double end = std::min(description.seconds, (stretch.fromFrame + stretch.frames) * kFrameSeconds);
    Programme programme;
    const std::size_t size = static_cast<std::size_t>(stretch.frames) * static_cast<std::size_t>(stretch.kbps) * 3;
    PadEncoder pad(MakePad(service));

    // One run of the encoder for each format; a change begins at a whole frame.
    std::vector<SoundChange> changes = {{0, service.sound}};
    changes.insert(changes.end(), service.soundChanges.begin(), service.soundChanges.end());
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const int first = std::max(stretch.fromFrame, FrameAt(changes[i].at));
        const int last = std::min(stretch.fromFrame + stretch.frames,
                                  i + 1 < changes.size() ? FrameAt(changes[i + 1].at) : FrameAt(end));
        if (first >= last)
            continue;
        const SoundDescription& sound = changes[i].sound;
        const LayerTwoSettings settings{sound.sampleRate, sound.channels, stretch.kbps, service.padBytes};
        const double from = first * kFrameSeconds;
        const auto frames = EncodeLayerTwo(settings, RenderSound({.melody = sound.melody,
                                                                  .sampleRate = sound.sampleRate,
                                                                  .channels = sound.channels,
                                                                  .beepEvery = sound.beepEvery},
                                                                 from, (last - first) * kFrameSeconds));
        const double frameSeconds = static_cast<double>(wire::kLayerTwoSamples) / sound.sampleRate;
        for (std::size_t k = 0; k < frames.size(); ++k) {
            wire::ByteVector frame = frames[k];
            const auto header = wire::ParseLayerTwoHeader(frame);
            if (!header)
                throw std::runtime_error("layer II encoder: unreadable frame");
            pad.Fill(frame, header->ScfCrcBytes(), from + static_cast<double>(k) * frameSeconds);
            wire::AppendBytes(programme.bytes, frame);
        }
        programme.bytes.resize(static_cast<std::size_t>(last - stretch.fromFrame) *
                               static_cast<std::size_t>(stretch.kbps) * 3);
    }
    programme.bytes.resize(size);
    return programme;
}

} // namespace headend
