// What tests of single filters share: the links' media types, making filters and joining pins, units and samples.
#pragma once

#include "tests/filters/FilterHarness.h"
#include "tests/filters/FilterWorld.h"
#include "tests/filters/TestService.h"

#include <gtest/gtest.h>

namespace filters_test {

using namespace filters;
using dshow::ComPtr;

inline const dshow::MediaType kH264(MEDIATYPE_Video, kSubtypeH264);
inline const dshow::MediaType kI420(MEDIATYPE_Video, kSubtypeI420);
inline const dshow::MediaType kCoded(MEDIATYPE_Audio, kSubtypeMpeg4Audio);
inline const dshow::MediaType kLayerTwo(MEDIATYPE_Audio, kSubtypeLayerTwo);
inline const dshow::MediaType kPcm(MEDIATYPE_Audio, kSubtypePcm);

template <class T, class... Arguments> ComPtr<T> Make(Arguments&&... arguments) {
    return ComPtr<T>::Adopt(new T(std::forward<Arguments>(arguments)...));
}

// The units of a service.
class Units final : public DemuxListener {
public:
    explicit Units(const Bytes& packets) {
        Demultiplexer demultiplexer(*this);
        for (std::size_t at = 0; at + 188 <= packets.size(); at += 188)
            demultiplexer.Push(ByteSpan(packets).subspan(at, 188));
    }
    void OnStreams(const VideoFormat*, const AudioFormat* announced) override {
        format = std::make_shared<const AudioFormat>(*announced);
    }
    void OnVideo(AccessUnit unit) override { video.push_back({std::move(unit)}); }
    void OnAudio(AccessUnit unit) override { audio.push_back({std::move(unit), format}); }
    void OnClockLost() override {}

    std::shared_ptr<const AudioFormat> format;
    std::vector<PictureUnit> video;
    std::vector<SoundUnit> audio;
};

inline const Units& ServiceUnits() {
    static const Units units(MakeService({.seconds = 2}).packets);
    return units;
}

inline void Join(IPin& out, IPin& in) {
    ASSERT_EQ(out.Connect(&in, nullptr), S_OK);
}

inline void Part(IPin& out, IPin& in) {
    EXPECT_EQ(in.Disconnect(), S_OK);
    EXPECT_EQ(out.Disconnect(), S_OK);
}

inline SoundBlock Block(Ticks time) {
    SoundBlock block;
    block.sampleRate = 48000;
    block.channels = 2;
    block.time = time;
    block.samples.assign(2048, 1000);
    return block;
}

inline PictureSample Image(Ticks time) {
    auto picture = std::make_shared<Picture>();
    picture->width = 16;
    picture->height = 16;
    picture->time = time;
    picture->i420.assign(384, 1);
    return picture;
}

} // namespace filters_test
