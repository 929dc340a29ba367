// Copies the packets of the service into a file while it plays.
//
// A capture begins with the tables and, behind them, the first packet at which decoding can begin, so the file plays at
// once. A thread of its own writes; the streaming thread never waits for the card. When the card is full or gone the capture
// ends there, and Stop tells why; what was written stays and plays.
#pragma once

#include "host/ce/Clock.h"
#include "host/filters/ProgramTables.h"
#include "platform/wince.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace filters {

class CaptureTee {
public:
    // `failed` is called, on the writing thread, when a capture ends by itself.
    CaptureTee(ce::Clock& clock, std::function<void(HRESULT)> failed);
    ~CaptureTee();
    CaptureTee(const CaptureTee&) = delete;
    CaptureTee& operator=(const CaptureTee&) = delete;

    // The three calls of the window's thread. Start: E_UNEXPECTED without a name or during a capture, E_FAIL when the file
    // cannot be made. Stop: S_FALSE when none was running, otherwise how it went.
    [[nodiscard]] HRESULT SetFileName(const WCHAR* path);
    [[nodiscard]] HRESULT Start();
    [[nodiscard]] HRESULT Stop();

    // Every packet of the service, in order, on the streaming thread.
    void Offer(ByteSpan packet, const ProgramTables& tables);

    [[nodiscard]] bool IsCapturing() const { return capturing_; }
    // Packets that the writer was too slow for.
    [[nodiscard]] std::uint64_t LostPackets() const { return lost_; }

private:
    static constexpr std::size_t kQueueBytes = 4u << 20;

    void Enqueue(ByteSpan bytes);
    [[nodiscard]] bool Begins(const wire::TsPacket& packet, const ProgramTables& tables);
    void Write();
    void WriteTables(const ProgramTables& tables);
    void Fail(DWORD error);

    ce::Clock& clock_;
    const std::function<void(HRESULT)> failed_;
    std::atomic<bool> capturing_{false};
    std::atomic<std::uint64_t> lost_{0};

    // The streaming thread's, while capturing.
    bool begun_ = false;
    std::size_t waited_ = 0;                         // packets that passed before a beginning was found
    std::map<std::uint16_t, std::uint8_t> counters_; // continuity, of every PID

    ce::Signal wake_;
    std::thread writer_;
    std::mutex guard_; // of all below
    WString path_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    Bytes queue_;
    bool closing_ = false;
    HRESULT result_ = S_OK;
    bool restart_ = false; // the streaming thread's fields belong to an earlier capture
};

// The bytes of a section as packets of its PID, the last of them with this continuity counter.
[[nodiscard]] Bytes PacketsOfSection(const TableSection& section, std::uint8_t lastCounter);

// Can decoding begin with this packet of the picture's stream, as far as the packet itself shows?
[[nodiscard]] bool BeginsRandomAccess(const wire::TsPacket& packet, const ProgramStream<VideoFormat>& video);

} // namespace filters
