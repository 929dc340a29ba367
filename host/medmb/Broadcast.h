// The one door between the tuner and the filters: the tuned service as it arrives.
//
// The tuner publishes a service (a new generation), puts its data in, and ends it. A filter attaches when it runs,
// reads until the end, and detaches. A reader belongs to the generation it attached to: after Close, or when another
// service is tuned, it sees the end of its stream and never another service's data.
//
// One bounded queue. When nobody reads fast enough the oldest data fall out by whole transport packets or whole audio
// frames, and the next data read are marked as a discontinuity; labels and slides have a small room of their own.
//
// Threads: one writer (the tuner's), one reader at a time (the last to attach; an earlier one sees the end), and anybody for
// Service, Signal and Counters. Nobody waits inside a lock.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#ifndef DMB_MEDMB_API
#define DMB_MEDMB_API __attribute__((visibility("default")))
#endif

namespace medmb {

enum class ServiceKind : std::uint8_t { None, Television, Radio, Other };

struct ServiceDescription {
    ServiceKind kind = ServiceKind::None;
    std::uint32_t frequency = 0; // Hz
    std::uint32_t serviceId = 0;
    std::string label; // UTF-8
    bool scrambled = false;
    // Counts every published service of the process; 0 is none.
    std::uint32_t generation = 0;
};

enum class SignalState : std::uint8_t {
    NoService, // nothing is tuned
    Waiting,   // tuned, no frame yet
    Good,
    Weak,  // damaged, but data come
    Lost,  // no usable frame for a second
    Ended, // a file that does not loop is over
};

struct RadioText {
    int charset = 0;                 // as on air: 0 EBU Latin, 6 UCS-2 big-endian, 15 UTF-8
    std::vector<std::uint8_t> bytes; // as broadcast, without control codes
    std::string utf8;
    std::vector<std::uint8_t> ucs2; // big-endian
    std::string codePage949;        // letters that the page lacks are replaced
};

struct RadioSlide {
    int contentType = 0;    // 2 is an image
    int contentSubtype = 0; // of images: 1 is JPEG, 3 is PNG
    std::string name;       // UTF-8
    std::vector<std::uint8_t> body;
};

enum class ItemKind : std::uint8_t {
    Packets, // whole transport packets of 188 bytes, one or more
    Audio,   // one layer II frame
    Text,    // the radio's text changed
    Slide,   // a picture is complete
};

struct BroadcastItem {
    ItemKind kind = ItemKind::Packets;
    std::vector<std::uint8_t> bytes; // Packets and Audio
    // Something is missing before these bytes.
    bool discontinuity = false;
    // Audio: the frame's own check sum was wrong; better silent than decoded.
    bool damaged = false;
    // Milliseconds of broadcast since the service was tuned; goes on when a file starts over.
    std::uint64_t time = 0;
    std::shared_ptr<const RadioText> text;
    std::shared_ptr<const RadioSlide> slide;
};

// What passed each stage since the service was tuned.
struct StageCounters {
    std::uint64_t frames = 0;       // ETI
    std::uint64_t framesLost = 0;   // gaps of the frame count
    std::uint64_t bytesSkipped = 0; // between frames
    std::uint64_t fibs = 0;
    std::uint64_t fibErrors = 0;
    std::uint64_t packets = 0;
    std::uint64_t packetsCorrected = 0;
    std::uint64_t packetsBad = 0; // passed on with the transport error indicator set
    std::uint64_t bytesCorrected = 0;
    std::uint64_t packetsScrambled = 0;
    std::uint64_t resyncs = 0;
    std::uint64_t audioFrames = 0;
    std::uint64_t audioFramesBad = 0;
    std::uint64_t labelSegments = 0;
    std::uint64_t labels = 0;
    std::uint64_t dataGroups = 0;
    std::uint64_t dataGroupErrors = 0;
    std::uint64_t slides = 0;
    std::uint64_t slidesRefused = 0;
    std::uint64_t itemsDropped = 0; // by the queue
};

enum class ReadResult : std::uint8_t { Item, Timeout, End };

class Broadcast;

// A filter's hold on the current service; detaches when it goes.
class DMB_MEDMB_API BroadcastReader {
public:
    BroadcastReader() = default;
    BroadcastReader(BroadcastReader&& other) noexcept { *this = std::move(other); }
    BroadcastReader& operator=(BroadcastReader&& other) noexcept;
    ~BroadcastReader() { Detach(); }

    // The next item; waits at most `limit` of real time. End is final.
    [[nodiscard]] ReadResult Read(BroadcastItem& item, std::chrono::milliseconds limit);
    // The same without waiting.
    [[nodiscard]] ReadResult TryRead(BroadcastItem& item) { return Read(item, std::chrono::milliseconds(0)); }

    // Throws away what has queued up; the next item is a discontinuity.
    void Flush();
    // Makes a Read that waits return Timeout now. From any thread.
    void Wake();
    void Detach();

    [[nodiscard]] bool Attached() const { return broadcast != nullptr; }
    [[nodiscard]] std::uint32_t Generation() const { return generation; }

private:
    friend class Broadcast;
    Broadcast* broadcast = nullptr;
    std::uint32_t generation = 0;
    std::uint64_t attachment = 0;
};

class DMB_MEDMB_API Broadcast {
public:
    Broadcast() = default;
    Broadcast(const Broadcast&) = delete;
    Broadcast& operator=(const Broadcast&) = delete;

    // The one of this process.
    [[nodiscard]] static Broadcast& Instance();

    // For filters. An unattached reader when no service is published.
    [[nodiscard]] BroadcastReader Attach();
    // Called, outside all locks and on the tuner's thread, when an item came or the service ended. Null to remove; when the
    // call returns, the old function runs no more. It must not call back into SetNotify.
    void SetNotify(std::function<void()> notify);

    // For anybody.
    [[nodiscard]] ServiceDescription Service() const;
    [[nodiscard]] SignalState Signal() const;
    [[nodiscard]] StageCounters Counters() const;

    // For the tuner. Publish ends the service before; it returns the new generation. Calls with another generation
    // than the current one do nothing.
    std::uint32_t Publish(ServiceDescription description);
    void End();
    void Put(std::uint32_t generation, BroadcastItem item);
    void SetSignal(std::uint32_t generation, SignalState state);
    void SetCounters(std::uint32_t generation, const StageCounters& counters);
    // What the service information tells later: the label may come after the data.
    void Describe(std::uint32_t generation, const std::string& label, bool scrambled);

    // About two seconds of the largest sub-channel.
    static constexpr std::size_t kQueueBytes = 512 * 1024;
    static constexpr std::size_t kQueueEvents = 16;

private:
    friend class BroadcastReader;

    void MakeRoom();
    void Notify();
    [[nodiscard]] ReadResult ReadItem(const BroadcastReader& reader, BroadcastItem& item,
                                      std::chrono::milliseconds limit);

    mutable std::mutex mutex;
    std::condition_variable changed;
    ServiceDescription service;
    SignalState signal = SignalState::NoService;
    StageCounters counters;
    std::deque<BroadcastItem> queue;
    std::size_t queueBytes = 0;
    std::size_t queueEvents = 0;
    std::uint64_t dropped = 0;
    bool gapBefore = false; // data were dropped in front of the queue
    std::uint32_t lastGeneration = 0;
    std::uint64_t lastAttachment = 0;
    std::uint64_t wakeUps = 0;

    std::mutex notifyMutex;
    std::function<void()> notify;
};

} // namespace medmb
