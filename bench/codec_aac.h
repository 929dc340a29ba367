// libavcodec's AAC encoder and decoder, for comparison.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "bench/codec_clips.h"

namespace bench {

class AacProgramme {
public:
    // Encodes the clip. Throws std::runtime_error.
    AacProgramme(const Clip& clip, unsigned bitsPerSecond);
    ~AacProgramme();
    AacProgramme(const AacProgramme&) = delete;
    AacProgramme& operator=(const AacProgramme&) = delete;

    // Decodes all of it on one thread to interleaved 16-bit samples, as BsacDecoder gives them; returns the samples of a
    // channel that came out.
    std::size_t DecodeAll();

    [[nodiscard]] std::size_t Bytes() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace bench
