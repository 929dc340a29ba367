// Programme associated data of a radio service: dynamic labels and slides, cut into the X-PAD of audio frames
// (EN 300 401 7.4, EN 301 234, TS 101 499).
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "host/wire/Bytes.h"
#include "host/wire/MscDataGroup.h"
#include "host/wire/Pad.h"

namespace headend {

// A label text from a time on. Texts are repeated until the next one.
struct PadText {
    double from = 0; // seconds
    int charset = 0;
    wire::ByteVector bytes;    // at most 128; empty: the "remove label" command
    wire::ByteVector dlPlus{}; // body of a DL Plus command sent with the text (TS 102 980); empty = none
};

// A slide from a time on. It is repeated until the next one.
struct PadSlide {
    double from = 0;
    std::uint16_t transportId = 0;
    std::string contentName;
    int contentSubtype = 1; // of images: 1 JFIF, 3 PNG
    wire::ByteVector body;
    bool shuffled = false; // segments in reversed order and the header last
};

struct PadSettings {
    std::size_t padBytes = 0; // X-PAD of each frame: 0 none, 4 the short form (texts only), 6 to 196 the variable form
    std::vector<PadText> texts{};
    std::vector<PadSlide> slides{};
};

class PadEncoder {
public:
    explicit PadEncoder(PadSettings settings);

    // Writes X-PAD and F-PAD into an audio frame that begins at that many seconds. `scfCrcBytes` lie between the two.
    void Fill(wire::ByteVector& frame, std::size_t scfCrcBytes, double seconds);

private:
    struct Subfield {
        int type;
        std::size_t length;
        wire::ByteVector bytes;
    };

    void QueueTexts(double seconds);
    void QueueSlides(double seconds);
    void MakeSlideGroups(const PadSlide& slide, bool repeated);
    [[nodiscard]] wire::ByteVector TakeShort(wire::FPad& fPad);
    [[nodiscard]] wire::ByteVector TakeVariable(wire::FPad& fPad);
    [[nodiscard]] wire::ByteVector TakeContinuation();

    PadSettings settings;
    // Whole label segments, then whole data groups; `sent` bytes of the front one are gone.
    std::deque<wire::ByteVector> labels;
    std::size_t labelSent = 0;
    std::deque<wire::ByteVector> groups;
    std::size_t groupSent = 0;
    std::size_t nextText = 0;
    std::size_t nextSlide = 0;
    double nextTextRepetition = 0;
    bool toggle = false;
    int repetition = 0;
    std::uint8_t headerContinuity = 0;
    std::uint8_t bodyContinuity = 0;
    // What the last X-PAD was, for a frame without contents indicators.
    std::size_t lastTotal = 0;
    bool lastWasGroup = false;
};

// The bytes of a DL Plus tags command (TS 102 980 5.1): each tag is content type, start and length in characters.
struct DlPlusTag {
    int contentType = 0;
    int start = 0;
    int length = 0;
};
[[nodiscard]] wire::ByteVector MakeDlPlus(const std::vector<DlPlusTag>& tags, bool itemToggle);

} // namespace headend
