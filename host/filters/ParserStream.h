// The part of the parser that live and file mode share: from packets to the two pins, and the format of the sound.
//
// When the stream announces another sound format, the old one stays in force and no sound is delivered until the new one is
// adopted: the graph has to be stopped and joined anew for it.
#pragma once

#include "graph/DMBFilterIds.h"
#include "host/filters/Samples.h"

#include <atomic>
#include <mutex>
#include <optional>

namespace filters {

// How far the stream has come.
enum class StreamState : std::uint8_t {
    kUnknown,   // no tables yet, or nothing of what they promise
    kScrambled, // at present
    kForeign,   // nothing in it can be decoded here
    kSound,     // sound comes, and there is no picture in it that can be decoded
    kPicture,   // a picture comes
};

class ParserStream final : private DemuxListener {
public:
    ParserStream(SampleOutput<PictureUnit>& picture, SampleOutput<SoundUnit>& sound);

    // --- the streaming thread's
    // A run begins. A format that waits for adoption is adopted.
    void BeginRun(bool live);
    void Push(ByteSpan packet) { demultiplexer_.Push(packet); }
    // The end of the stream, down both pins.
    void End();
    // Units are dropped instead of delivered, for the time being.
    void SetDropping(bool dropping);
    // Another place of the stream follows.
    void Restart();
    // Something is missing from here on.
    void MarkGap();
    [[nodiscard]] StreamState State() const;
    [[nodiscard]] const Demultiplexer& Demux() const { return demultiplexer_; }
    // True once after the stream's clock was lost, or another sound format was met.
    [[nodiscard]] bool TakeClockLost() { return std::exchange(clockLost_, false); }
    [[nodiscard]] bool TakeAudioChange() { return std::exchange(audioChange_, false); }
    // No sound is delivered until the new format is adopted.
    [[nodiscard]] bool WaitsForAudio() const;
    // Where the sound delivered so far ends, and the latest place of any unit.
    [[nodiscard]] std::optional<Ticks> SoundEnd() const { return soundEnd_; }
    [[nodiscard]] std::optional<Ticks> LastTime() const;

    // --- any thread
    // The format that the stream announces: the one in force, or the one that waits.
    [[nodiscard]] DMBAudioInfo AnnouncedAudio() const;
    // E_INVALIDARG when that is not what the stream announces.
    [[nodiscard]] HRESULT AdoptAudio(const DMBAudioInfo& info);

private:
    void OnStreams(const VideoFormat* video, const AudioFormat* audio) override;
    void OnVideo(AccessUnit unit) override;
    void OnAudio(AccessUnit unit) override;
    void OnClockLost() override { clockLost_ = true; }
    void EndMissing();

    SampleOutput<PictureUnit>& picture_;
    SampleOutput<SoundUnit>& sound_;
    Demultiplexer demultiplexer_{*this};
    bool live_ = false;
    bool dropping_ = false;
    bool known_ = false;
    bool hasVideo_ = false;
    bool hasAudio_ = false;
    bool pictureGap_ = false;
    bool soundGap_ = false;
    bool pictureCame_ = false; // since the run began
    bool soundCame_ = false;
    bool clockLost_ = false;
    bool audioChange_ = false;
    std::optional<Ticks> soundEnd_;

    mutable std::mutex guard_; // of all below
    std::shared_ptr<const AudioFormat> format_;
    std::shared_ptr<const AudioFormat> announced_; // waits for adoption
    std::optional<Ticks> lastTime_;
};

} // namespace filters
