// The software tuner behind the MEDMBLIB classes: scans blocks, plays one service into the Broadcast.
//
// Owner: the program or the test, which installs it as the current one; it outlives every CDMBLiveControl and every reader.
// Threads: calls come from one thread (the shell's); a playing service has one worker of its own, started on the clock;
// BeginClosing, SignalToNoise and Reports may come from any thread.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/medmb/BlockScan.h"
#include "host/medmb/Broadcast.h"
#include "host/medmb/ServiceReceiver.h"
#include "host/medmb/SourceSpec.h"

namespace medmb {

class Tuner {
public:
    using Log = std::function<void(const std::string& line)>;

    Tuner(ce::Clock& clockToUse, Broadcast& broadcastToFill, std::unique_ptr<SourceProvider> sources, Log log = {});
    ~Tuner();
    Tuner(const Tuner&) = delete;
    Tuner& operator=(const Tuner&) = delete;

    // The tuner that the MEDMBLIB classes speak to; null when there is none.
    static void Install(Tuner* tuner);
    [[nodiscard]] static Tuner* Current();

    // True when the block was received and lists a service; `info` is untouched otherwise. Ends a playing service.
    [[nodiscard]] bool GetChannel(int hz, _tag_DMB_CHANNEL_INFO& info);
    // Tunes and starts one service of the library's type 8 or 0.
    [[nodiscard]] bool SetChannel(int hz, int type, std::uint32_t serviceId);
    // Ends the playing service; its thread is gone within a fifth of a second.
    void StopService();

    // From now on GetChannel and SetChannel fail at once; one that waits in another thread returns.
    void BeginClosing();

    // dB, 0 to 99; 0 before the first frames of a service.
    [[nodiscard]] float SignalToNoise() const { return snr.load(); }
    [[nodiscard]] float Strength() const { return strength.load(); }
    [[nodiscard]] int FibErrorPerMille() const { return fibErrors.load(); }

    // How the last SetChannel went: Ok, or what was missing. Any thread.
    [[nodiscard]] BlockState LastTuning() const { return lastTuning.load(); }

    // What GetChannel found, the newest report of each frequency, in the order of frequencies.
    [[nodiscard]] std::vector<BlockReport> Reports() const;

private:
    class Sink;
    struct Session;

    [[nodiscard]] bool FindService(Session& session, int type);
    void Play(Session& session);
    void PlayFrame(Session& session);
    void UpdateDescription(Session& session);
    void UpdateSignal(Session& session, bool measured);
    void Remember(const BlockReport& report);
    [[nodiscard]] std::shared_ptr<Cancellation> BeginWork();
    void Say(const std::string& line) const;

    ce::Clock& clock;
    Broadcast& broadcast;
    std::unique_ptr<SourceProvider> provider;
    Log logLine;

    std::unique_ptr<Session> playing;
    std::thread worker;

    mutable std::mutex mutex; // guards what follows
    bool closing = false;
    std::shared_ptr<Cancellation> work; // what the calling thread waits in
    std::vector<BlockReport> reports;

    std::atomic<float> snr{0.0F};
    std::atomic<float> strength{0.0F};
    std::atomic<int> fibErrors{0};
    std::atomic<BlockState> lastTuning{BlockState::Ok};
};

} // namespace medmb
