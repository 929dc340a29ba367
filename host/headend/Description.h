// What a broadcast is to be: one or more ensembles, their services, what is played on them, and what is to go wrong.
// docs/headend.md tells the JSON form. All times are seconds from the first frame.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/wire/Bytes.h"

namespace headend {

// How a text's bytes are made (TS 101 756; the Korean way is KS X 1001 bytes under character set 0).
enum class TextCoding { kEbuLatin, kKorean, kUcs2, kUtf8 };

struct LabelDescription {
    std::string text; // UTF-8
    TextCoding coding = TextCoding::kEbuLatin;
    std::string shortText; // a subsequence of the text; empty: its first eight characters
    std::string extended;  // sent as FIG 2 in UTF-8, up to 32 bytes; empty: none
};

struct Protection {
    bool equal = true; // EEP; else UEP
    int level = 3;     // 1..4, UEP 1..5
    char set = 'A';    // EEP: A or B
};

struct Window {
    double from = 0;
    double to = 0; // equal: never
    double rate = 1;
};

struct SoundDescription {
    std::string codec = "bsac"; // television: bsac or aac
    int sampleRate = 48000;
    int channels = 2;
    int kbps = 60; // television; radio follows its sub-channel
    std::string melody = "silence";
    double beepEvery = 0;
};

struct SoundChange {
    double at = 0;
    SoundDescription sound;
};

struct VideoDescription {
    std::string scene = "bars";
    int width = 320;
    int height = 240;
    int framesPerSecond = 30;
    int kbps = 0; // 0: what the sub-channel has room for
    std::string station;
    std::string ticker;
    double flashEvery = 0;
    bool parameterSetsInBand = true;
};

struct TextDescription {
    double from = 0;
    std::string text; // UTF-8; empty: remove the label
    TextCoding coding = TextCoding::kEbuLatin;
    std::string artist; // tagged by DL Plus when part of the text
    std::string title;
};

struct SlideDescription {
    double from = 0;
    std::filesystem::path file; // sent as it is; else drawn:
    std::string style = "cover";
    std::string title;
    std::string text;
    std::uint32_t colour = 0x3A6EA5;
    int width = 320;
    int height = 240;
    int quality = 80;
    bool progressive = false;
    bool shuffled = false;
};

enum class ServiceKind { kTelevision, kRadio, kDabPlus, kStreamData, kPacketData };

// What a reconfiguration changes; a value of -1 or an empty text keeps what was.
struct ServiceChange {
    double at = 0;
    int subChannel = -1;
    int kbps = -1;
    bool hasProtection = false;
    Protection protection;
    bool hasLabel = false;
    LabelDescription label;
};

struct ServiceDescription {
    ServiceKind kind = ServiceKind::kRadio;
    std::uint32_t id = 0; // 16 bits for sound, 32 for data and television
    LabelDescription label;
    int subChannel = 0;
    int kbps = 0;
    Protection protection;
    Window present{0, 1e9, 1}; // when the service is in the multiplex
    std::vector<ServiceChange> changes;
    int programmeType = 0;      // FIG 0/17; 0: not told
    int announcements = 0;      // FIG 0/18 support flags
    int dataType = 5;           // DSCTy of data services
    bool scrambledFlag = false; // conditional access told in FIG 0/2

    SoundDescription sound;
    std::vector<SoundChange> soundChanges;
    // Television.
    VideoDescription video;
    std::filesystem::path transportStream; // 188-byte packets instead of our own
    std::int64_t clockStart = 0;           // 90 kHz
    int timeStampEveryMs = 0;
    Window scrambled;
    // Radio.
    std::size_t padBytes = 0;
    std::vector<TextDescription> texts;
    std::vector<SlideDescription> slides;

    std::vector<Window> bitErrors; // rate: errors a bit

    [[nodiscard]] bool HasLongId() const {
        return kind == ServiceKind::kTelevision || kind == ServiceKind::kStreamData || kind == ServiceKind::kPacketData;
    }
};

struct LostFrames {
    double at = 0;
    int count = 1;
};

struct EnsembleDescription {
    std::string block; // "7A" to "13C"; names the file
    std::uint16_t id = 0;
    LabelDescription label;
    int ecc = 0xF1;
    int localTimeOffset = 18; // half hours
    int firstFrame = 0;       // of the count of 5000 at the file's first frame
    std::vector<ServiceDescription> services;

    std::vector<LostFrames> lostFrames;
    std::vector<Window> fibErrors; // rate: of the FIBs
    std::vector<Window> dropOuts;
};

struct Description {
    double seconds = 10;
    std::int64_t clock = 0; // local time at the first frame, seconds since 1970-01-01
    bool loop = true;       // the end fits to the beginning
    std::vector<EnsembleDescription> ensembles;
};

// Says what is wrong where: "FILE: LINE-OR-FIELD: REASON".
class DescriptionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads the JSON form. `name` stands in messages; relative files are looked for beside `base`. Checks all that can be
// checked without making the broadcast: ranges, names, capacity, that files are there.
[[nodiscard]] Description ParseDescription(std::string_view json, const std::string& name,
                                           const std::filesystem::path& base);
[[nodiscard]] Description LoadDescription(const std::filesystem::path& file);

// The text's bytes in that coding; throws DescriptionError for a character that the coding lacks.
[[nodiscard]] wire::ByteVector EncodeText(const std::string& utf8, TextCoding coding);
// The charset field that goes with the coding.
[[nodiscard]] int CharsetOf(TextCoding coding);

} // namespace headend
