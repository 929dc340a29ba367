// Where picture and sound leave the filters. The program joins these ports to its window and its sound device before it
// registers the filters; every port may be null.
#pragma once

#include "host/filters/Picture.h"
#include "platform/types.h"

#include <memory>
#include <span>

namespace filters {

inline constexpr int kDeviceRate = 48000;
inline constexpr int kDeviceChannels = 2;

// Gives sound to a device: 16-bit stereo frames at 48 kHz, interleaved. Never waits; silence where there is no sound.
class SoundSource {
public:
    virtual void Pull(std::span<std::int16_t> frames) = 0;

protected:
    ~SoundSource() = default;
};

// A sound card.
//
// What a device must do:
// - Take 16-bit stereo at 48 kHz and ask for it in small portions (10 to 40 ms), steadily, on one thread of its own. A portion may
//   have any length; it is always filled whole. Pull allocates and frees nothing and waits for short locks only.
// - Hold no lock in Pull that Start, Stop or LatencyMs takes.
// - When the card goes away, simply stop pulling: after half a second without a Pull the renderer calls Stop and keeps time itself,
//   and tries Start again every two seconds. A device that opens another card by itself may go on pulling instead.
// - Every Start that answers true is followed by exactly one Stop before the next Start. Both come from the thread that runs the graph
//   or from the renderer's own, never at once. Neither may take longer than some tens of milliseconds, because a graph's Run and Stop
//   wait for them.
// - Play what it gets: volume and mute are the renderer's.
class SoundDevice {
public:
    virtual ~SoundDevice() = default;
    // Begins to pull. False: there is no device; the renderer then keeps time itself.
    [[nodiscard]] virtual bool Start(SoundSource& source) = 0;
    // When it returns, no Pull runs and none will come.
    virtual void Stop() = 0;
    // From a Pull until its first sample is heard, in milliseconds: what waits in the card and its driver then. Asked once after each
    // Start; pictures are shown that much later.
    [[nodiscard]] virtual int LatencyMs() const = 0;
};

// Hears what is played: a WAV file, a test. On the thread that pulls, never two at once; a tap that is slow can make a device run dry.
class SoundTap {
public:
    virtual ~SoundTap() = default;
    virtual void OnSound(std::span<const std::int16_t> frames) = 0;
};

// The picture's place on the screen.
class VideoPort {
public:
    virtual ~VideoPort() = default;
    // A picture to be seen from now on; whether its aspect is kept is the window's choice. Any thread.
    virtual void Show(const std::shared_ptr<const Picture>& picture) = 0;
    // No picture any more. Any thread.
    virtual void Clear() = 0;
    // Where the window wants it, and whether at all. The window's thread.
    virtual void Place(const RECT& rectangle, bool visible) = 0;
};

// What a viewer would like to know when there is no picture or no sound.
enum class ReceptionState : std::uint8_t {
    kIdle,      // no graph runs
    kWaiting,   // running, but nothing has reached a decoder yet
    kPlaying,   // picture or sound reach their decoders
    kSoundOnly, // the same, but the service has no picture, or none that can be decoded
    kWeak,      // plays, but the reception is damaged
    kNoService, // the tuner has no service, or has left it
    kNoSource,  // tuned, but the receiver sends nothing
    kNoSync,    // the receiver sends bytes in which there are no frames of an ensemble
    kNoSignal,  // frames come, but nothing usable of this service
    kScrambled, // data come, but picture and sound are scrambled
    kNoDecoder, // data come, but neither picture nor sound is coded in a way known here
    kNoFile,    // the file cannot be opened, or holds no programme
};

[[nodiscard]] constexpr bool IsPlaying(ReceptionState state) {
    return state == ReceptionState::kPlaying || state == ReceptionState::kSoundOnly || state == ReceptionState::kWeak;
}

// Tells how things are going. Any thread, one call at a time for each graph; must not wait for the window's thread.
class StatusPort {
public:
    virtual ~StatusPort() = default;
    // Only changes are told. A run begins with kWaiting and ends with kIdle.
    virtual void OnReception(ReceptionState state) = 0;
    // A capture ended by itself: the card is full or gone. What was written stays playable.
    virtual void OnCaptureFailed(HRESULT reason) = 0;
    // The file that plays cannot be read any further: the card is gone. What has been read is played; once a run.
    virtual void OnFileLost() = 0;
};

struct Outputs {
    SoundDevice* sound = nullptr;
    SoundTap* tap = nullptr;
    VideoPort* video = nullptr;
    StatusPort* status = nullptr;
};

} // namespace filters
