// The sound that waits to be heard, and the clock that its playing makes.
//
//   Push   decoded sound with its times -> device rate -> queue
//   Pull   queue -> device: gaps become silence, late sound is left out, every beginning and end is softened
//
// Live sound is held back until it is behind the transmitter's own schedule by what LiveHold tells, and kept there by playing a little
// faster or slower: transmitter and sound card never agree. When the queue runs dry, silence is played and the stream's time goes
// on; sound that then comes too late for its place lengthens the hold and begins the holding back anew.
//
// Any thread may call. Pull waits for short locks only and neither allocates nor frees: blocks that were played go back to be filled
// again, and resampling has a lock of its own.
#pragma once

#include "host/ce/Clock.h"
#include "host/filters/LiveHold.h"
#include "host/filters/Outputs.h"
#include "host/filters/PresentationClock.h"
#include "host/filters/SoundDecoder.h"
#include "host/filters/av/Resampler.h"

#include <list>
#include <memory>
#include <mutex>

namespace filters {

class Playout final : public SoundSource {
public:
    // `hold` is shared with whatever plays the same source.
    explicit Playout(ce::Clock& clock, std::shared_ptr<LiveHold> hold = std::make_shared<LiveHold>());

    // False when there is no room now; the block is then not taken.
    [[nodiscard]] bool Push(const SoundBlock& block);
    // No sound follows.
    void End();
    // Another place follows: empty again.
    void Flush();
    // Sound before this time is left out.
    void SetSegment(Ticks start);
    // Hundredths of a decibel, -10000 (silence) to 0.
    void SetVolume(int hundredths);
    void SetLatency(int milliseconds);

    void Pull(std::span<std::int16_t> frames) override;

    [[nodiscard]] ClockState StreamTime(Ticks& now) const;
    // Time of the device, in units of 100 ns: goes on with every frame pulled, never back.
    [[nodiscard]] std::int64_t DeviceTime() const;
    // All sound before the end has been pulled.
    [[nodiscard]] bool IsOver() const;
    [[nodiscard]] std::uint64_t PulledFrames() const;
    // Correction in use, in millionths.
    [[nodiscard]] int Speed() const;

private:
    // Places in sixteenths of a tick, of which a frame lasts exactly thirty.
    using Fine = std::int64_t;
    static constexpr Fine kFinePerTick = 16;
    static constexpr Fine kFinePerFrame = kFinePerTick * kTicksPerSecond / kDeviceRate;

    struct Piece {
        Fine time = 0;
        std::vector<std::int16_t> frames;
        std::size_t done = 0; // samples, not frames
    };

    [[nodiscard]] bool IsReady() const;
    [[nodiscard]] Ticks BufferedTicks() const;
    void Steer(const SoundBlock& block);
    void HoldBackAnew();
    void Fill(std::span<std::int16_t> frames);
    [[nodiscard]] std::size_t Silence(std::span<std::int16_t> out, bool timePasses);
    [[nodiscard]] std::size_t Play(Piece& piece, std::span<std::int16_t> out);
    [[nodiscard]] Fine PositionAt(ce::Millis now) const;

    ce::Clock& clock_;
    const std::shared_ptr<LiveHold> hold_;
    std::mutex resampling_; // before guard_
    Resampler resampler_{kDeviceRate};

    mutable std::mutex guard_; // of all below
    std::list<Piece> queue_;
    std::list<Piece> spare_; // played, to be used again
    std::size_t queuedSamples_ = 0;
    bool anchored_ = false; // position_ means something
    bool playing_ = false;  // not holding back
    bool starved_ = false;  // the queue ran dry while live sound played
    bool filling_ = false;  // silence is played up to the next piece's place
    bool ended_ = false;
    bool live_ = false;
    Fine position_ = 0; // of the next frame to be pulled
    Fine pullStart_ = 0;
    ce::Millis pullTime_ = 0;
    std::size_t pullFrames_ = 0;
    std::optional<Ticks> segment_;
    Ticks newestSchedule_ = 0; // the transmitter's clock when the newest block came
    ce::Millis waitingSince_ = 0;
    double margin_ = 0; // ticks behind the schedule, smoothed
    unsigned marginBlocks_ = 0;
    int speed_ = 0;
    int latencyMs_ = 0;
    std::uint64_t pulled_ = 0;
    double gain_ = 1;
    double ramp_ = 0; // 0 silent .. 1 full
    std::int16_t last_[kDeviceChannels] = {};
};

} // namespace filters
