#include "host/medmb/Broadcast.h"

#include <algorithm>
#include <utility>

namespace medmb {

namespace {

constexpr std::size_t kPacketBytes = 188;

bool IsEvent(const BroadcastItem& item) {
    return item.kind == ItemKind::Text || item.kind == ItemKind::Slide;
}

} // namespace

BroadcastReader& BroadcastReader::operator=(BroadcastReader&& other) noexcept {
    if (this != &other) {
        Detach();
        broadcast = std::exchange(other.broadcast, nullptr);
        generation = other.generation;
        attachment = other.attachment;
    }
    return *this;
}

ReadResult BroadcastReader::Read(BroadcastItem& item, std::chrono::milliseconds limit) {
    return broadcast == nullptr ? ReadResult::End : broadcast->ReadItem(*this, item, limit);
}

void BroadcastReader::Flush() {
    if (broadcast == nullptr)
        return;
    const std::lock_guard lock(broadcast->mutex);
    if (broadcast->service.generation != generation || broadcast->lastAttachment != attachment)
        return;
    broadcast->queue.clear();
    broadcast->queueBytes = 0;
    broadcast->queueEvents = 0;
    broadcast->gapBefore = true;
}

void BroadcastReader::Wake() {
    if (broadcast == nullptr)
        return;
    {
        const std::lock_guard lock(broadcast->mutex);
        ++broadcast->wakeUps;
    }
    broadcast->changed.notify_all();
}

void BroadcastReader::Detach() {
    Wake();
    broadcast = nullptr;
}

Broadcast& Broadcast::Instance() {
    static Broadcast broadcast;
    return broadcast;
}

BroadcastReader Broadcast::Attach() {
    BroadcastReader reader;
    const std::lock_guard lock(mutex);
    if (service.generation == 0)
        return reader;
    reader.broadcast = this;
    reader.generation = service.generation;
    reader.attachment = ++lastAttachment;
    changed.notify_all();
    return reader;
}

void Broadcast::SetNotify(std::function<void()> function) {
    const std::lock_guard lock(notifyMutex);
    notify = std::move(function);
}

void Broadcast::Notify() {
    changed.notify_all();
    const std::lock_guard lock(notifyMutex);
    if (notify)
        notify();
}

ServiceDescription Broadcast::Service() const {
    const std::lock_guard lock(mutex);
    return service;
}

SignalState Broadcast::Signal() const {
    const std::lock_guard lock(mutex);
    return signal;
}

StageCounters Broadcast::Counters() const {
    const std::lock_guard lock(mutex);
    StageCounters result = counters;
    result.itemsDropped = dropped;
    return result;
}

std::uint32_t Broadcast::Publish(ServiceDescription description) {
    std::uint32_t generation = 0;
    {
        const std::lock_guard lock(mutex);
        generation = ++lastGeneration;
        description.generation = generation;
        service = std::move(description);
        signal = SignalState::Waiting;
        counters = {};
        queue.clear();
        queueBytes = 0;
        queueEvents = 0;
        dropped = 0;
        gapBefore = false;
    }
    Notify();
    return generation;
}

void Broadcast::End() {
    {
        const std::lock_guard lock(mutex);
        service = {};
        signal = SignalState::NoService;
        queue.clear();
        queueBytes = 0;
        queueEvents = 0;
    }
    Notify();
}

void Broadcast::Put(std::uint32_t generation, BroadcastItem item) {
    {
        const std::lock_guard lock(mutex);
        if (generation == 0 || service.generation != generation)
            return;
        queueBytes += item.bytes.size();
        queueEvents += IsEvent(item) ? 1 : 0;
        queue.push_back(std::move(item));
        MakeRoom();
    }
    Notify();
}

// Drops the oldest data, and the oldest events, beyond their limits. An item with several packets loses only as many as
// needed.
void Broadcast::MakeRoom() {
    while (queueEvents > kQueueEvents) {
        const auto oldest = std::find_if(queue.begin(), queue.end(), IsEvent);
        queue.erase(oldest);
        --queueEvents;
        ++dropped;
    }
    while (queueBytes > kQueueBytes) {
        const auto oldest = std::find_if_not(queue.begin(), queue.end(), IsEvent);
        const std::size_t excess = queueBytes - kQueueBytes;
        const std::size_t packets = (excess + kPacketBytes - 1) / kPacketBytes;
        ++dropped;
        auto next = oldest;
        if (oldest->kind == ItemKind::Packets && packets * kPacketBytes < oldest->bytes.size()) {
            oldest->bytes.erase(oldest->bytes.begin(),
                                oldest->bytes.begin() + static_cast<std::ptrdiff_t>(packets * kPacketBytes));
            queueBytes -= packets * kPacketBytes;
        } else {
            queueBytes -= oldest->bytes.size();
            next = queue.erase(oldest);
            next = std::find_if_not(next, queue.end(), IsEvent);
        }
        if (next != queue.end())
            next->discontinuity = true;
        else
            gapBefore = true;
    }
}

void Broadcast::SetSignal(std::uint32_t generation, SignalState state) {
    const std::lock_guard lock(mutex);
    if (generation != 0 && service.generation == generation)
        signal = state;
}

void Broadcast::SetCounters(std::uint32_t generation, const StageCounters& values) {
    const std::lock_guard lock(mutex);
    if (generation != 0 && service.generation == generation)
        counters = values;
}

void Broadcast::Describe(std::uint32_t generation, const std::string& label, bool scrambled) {
    const std::lock_guard lock(mutex);
    if (generation == 0 || service.generation != generation)
        return;
    service.label = label;
    service.scrambled = scrambled;
}

ReadResult Broadcast::ReadItem(const BroadcastReader& reader, BroadcastItem& item, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    const auto ended = [&] { return service.generation != reader.generation || lastAttachment != reader.attachment; };
    if (limit.count() > 0) {
        const std::uint64_t wakeUpsBefore = wakeUps;
        changed.wait_for(lock, limit, [&] { return ended() || !queue.empty() || wakeUps != wakeUpsBefore; });
    }
    if (ended())
        return ReadResult::End;
    if (queue.empty())
        return ReadResult::Timeout;
    item = std::move(queue.front());
    queue.pop_front();
    queueBytes -= item.bytes.size();
    if (IsEvent(item)) {
        --queueEvents;
    } else if (gapBefore) {
        item.discontinuity = true;
        gapBefore = false;
    }
    return ReadResult::Item;
}

} // namespace medmb
