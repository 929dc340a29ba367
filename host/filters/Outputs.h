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

// A sound card. Start and Stop come from one thread at a time; Pull is called on the device's own.
class SoundDevice {
public:
    virtual ~SoundDevice() = default;
    // Begins to pull. False: there is no device; the renderer then keeps time itself.
    [[nodiscard]] virtual bool Start(SoundSource& source) = 0;
    // When it returns, no Pull runs and none will come.
    virtual void Stop() = 0;
    // From a Pull until its sound is heard, in milliseconds.
    [[nodiscard]] virtual int LatencyMs() const = 0;
};

// Hears what is played: a WAV file, a test. Any thread, never two at once.
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

enum class ReceptionState : std::uint8_t {
    kIdle,      // stopped
    kPlaying,   // packets come
    kNoSignal,  // no packets
    kScrambled, // packets come, but picture and sound are scrambled
};

// Tells how things are going. Any thread.
class StatusPort {
public:
    virtual ~StatusPort() = default;
    virtual void OnReception(ReceptionState state) = 0;
    // A capture ended by itself: the card is full or gone. What was written stays playable.
    virtual void OnCaptureFailed(HRESULT reason) = 0;
};

struct Outputs {
    SoundDevice* sound = nullptr;
    SoundTap* tap = nullptr;
    VideoPort* video = nullptr;
    StatusPort* status = nullptr;
};

} // namespace filters
