#include "host/medmb/Tuner.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/wire/LabelText.h"

namespace medmb {

namespace {

std::atomic<Tuner*> currentTuner{nullptr};

constexpr Millis kFrame = wire::kEtiFrameMilliseconds;
constexpr Millis kReadLimit = 100;
// A live source may run a little faster than our clock, never much: what comes in one burst is spread.
constexpr Millis kLiveFrame = 23;
// A file's first frames are there, so nobody need wait for them: as many come at once as live sound is held back for.
constexpr Millis kFileAhead = 3 * kFrame;
// Being this late means that the source paused, not that we have to catch up.
constexpr Millis kLateness = 500;
constexpr std::uint64_t kCountersEvery = 10; // frames
constexpr float kBestSignal = 99;            // dB, of a receiver that tells its own

std::shared_ptr<const RadioText> MakeText(const DynamicLabelText& label) {
    auto text = std::make_shared<RadioText>();
    text->charset = label.charset;
    text->bytes = wire::RemoveControlCodes(label.bytes, label.charset);
    text->utf8 = wire::DecodeText(text->bytes, label.charset);
    text->ucs2 = label.charset == wire::kCharsetUcs2 ? text->bytes : wire::EncodeUcs2(text->utf8);
    text->codePage949 = wire::ToCodePage949(text->utf8);
    return text;
}

} // namespace

// Puts a service's data into the Broadcast.
class Tuner::Sink final : public ServiceSink {
public:
    explicit Sink(Tuner& tuner) : owner(tuner) {}

    void OnPackets(wire::ByteSpan packets, bool discontinuity) override {
        BroadcastItem item = Item(ItemKind::Packets, discontinuity);
        item.bytes.assign(packets.begin(), packets.end());
        owner.broadcast.Put(generation, std::move(item));
    }
    void OnAudio(const RadioFrame& frame, bool discontinuity) override {
        BroadcastItem item = Item(ItemKind::Audio, discontinuity);
        item.bytes.assign(frame.bytes.begin(), frame.bytes.end());
        item.damaged = frame.damaged;
        owner.broadcast.Put(generation, std::move(item));
    }
    void OnText(const DynamicLabelText& label) override {
        BroadcastItem item = Item(ItemKind::Text, false);
        item.text = MakeText(label);
        owner.broadcast.Put(generation, std::move(item));
    }
    void OnObject(const MotObject& object) override {
        if (const std::string refusal = RefuseSlide(object.header); !refusal.empty()) {
            ++slidesRefused;
            owner.Say("slide " + object.Name() + " refused: " + refusal);
            return;
        }
        auto slide = std::make_shared<RadioSlide>();
        slide->contentType = object.header.contentType;
        slide->contentSubtype = object.header.contentSubtype;
        slide->name = object.Name();
        slide->body = object.body;
        BroadcastItem item = Item(ItemKind::Slide, false);
        item.slide = std::move(slide);
        owner.broadcast.Put(generation, std::move(item));
    }

    std::uint32_t generation = 0;
    std::uint64_t time = 0;
    std::uint64_t slidesRefused = 0;

private:
    [[nodiscard]] BroadcastItem Item(ItemKind kind, bool discontinuity) const {
        BroadcastItem item;
        item.kind = kind;
        item.discontinuity = discontinuity;
        item.time = time;
        return item;
    }

    Tuner& owner;
};

// One tuned service with everything that belongs to it.
struct Tuner::Session {
    Session(Tuner& tuner, std::uint32_t serviceId) : sink(tuner), receiver(serviceId, sink) {}

    int frequency = 0;
    std::shared_ptr<Cancellation> cancellation; // before the source, which refers to it
    std::unique_ptr<FrameSource> source;
    Sink sink;
    ServiceReceiver receiver;
    std::uint32_t generation = 0;
    Millis due = 0;       // when the next frame may be taken
    Millis lastFrame = 0; // when the last one came, or was found missing
    bool ended = false;
    std::string label;
    bool scrambled = false;
    std::string told; // what the source complained of last
};

Tuner::Tuner(ce::Clock& clockToUse, Broadcast& broadcastToFill, std::unique_ptr<SourceProvider> sources, Log log)
    : clock(clockToUse), broadcast(broadcastToFill), provider(std::move(sources)), logLine(std::move(log)) {}

Tuner::~Tuner() {
    BeginClosing();
    StopService();
    Tuner* self = this;
    currentTuner.compare_exchange_strong(self, nullptr);
}

void Tuner::Install(Tuner* tuner) {
    currentTuner = tuner;
}

Tuner* Tuner::Current() {
    return currentTuner;
}

void Tuner::Say(const std::string& line) const {
    if (logLine)
        logLine(line);
}

// A cancellation that BeginClosing will find; null when closing already.
std::shared_ptr<Cancellation> Tuner::BeginWork() {
    auto cancellation = std::make_shared<Cancellation>(clock);
    const std::lock_guard lock(mutex);
    if (closing)
        return nullptr;
    work = cancellation;
    return cancellation;
}

void Tuner::BeginClosing() {
    const std::lock_guard lock(mutex);
    closing = true;
    if (work)
        work->Cancel();
}

void Tuner::Remember(const BlockReport& report) {
    const std::lock_guard lock(mutex);
    const auto at = std::lower_bound(reports.begin(), reports.end(), report.frequency,
                                     [](const BlockReport& known, int hz) { return known.frequency < hz; });
    if (at != reports.end() && at->frequency == report.frequency)
        *at = report;
    else
        reports.insert(at, report);
}

std::vector<BlockReport> Tuner::Reports() const {
    const std::lock_guard lock(mutex);
    return reports;
}

bool Tuner::GetChannel(int hz, _tag_DMB_CHANNEL_INFO& info) {
    StopService();
    const auto cancellation = BeginWork();
    if (!cancellation)
        return false;
    BlockReport report;
    std::string reason;
    if (const auto source = provider->Open(hz, Purpose::Scan, *cancellation, reason))
        report = ScanBlock(*source, *cancellation);
    else
        report.reason = reason;
    report.frequency = hz;
    Remember(report);
    if (report.state != BlockState::Ok)
        return false;
    FillChannelInfo(report, info);
    return true;
}

bool Tuner::SetChannel(int hz, int type, std::uint32_t serviceId) {
    StopService();
    lastTuning = BlockState::Cancelled;
    const auto cancellation = BeginWork();
    if (!cancellation)
        return false;
    auto session = std::make_unique<Session>(*this, serviceId);
    session->frequency = hz;
    session->cancellation = cancellation;
    std::string reason;
    session->source = provider->Open(hz, Purpose::Play, *cancellation, reason);
    if (!session->source) {
        lastTuning = BlockState::NoSource;
        Say("cannot tune " + std::to_string(hz) + " Hz: " + reason);
        return false;
    }
    if (!FindService(*session, type))
        return false;

    lastTuning = BlockState::Ok;
    ServiceDescription description;
    description.kind = type == DMB_SERVICE_TYPE_DMB_VIDEO ? ServiceKind::Television : ServiceKind::Radio;
    description.frequency = static_cast<std::uint32_t>(hz);
    description.serviceId = serviceId;
    session->generation = session->sink.generation = broadcast.Publish(std::move(description));
    session->lastFrame = clock.Now();
    session->due = session->lastFrame - (session->source->IsFile() ? kFileAhead : 0);
    UpdateDescription(*session);
    UpdateSignal(*session, true);
    playing = std::move(session);
    worker = clock.StartWorker([this] { Play(*playing); });
    return true;
}

// Reads until the service is known and its sub-channel is there, within the limits of a scan.
bool Tuner::FindService(Session& session, int type) {
    const ScanLimits limits;
    FrameSource& source = *session.source;
    const Millis start = clock.Now();
    Millis fileTime = 0;
    Millis deadline = limits.sync;
    bool anyFrame = false;
    const auto now = [&] { return source.IsFile() ? fileTime : clock.Now() - start; };
    const char* missing = "no ETI frame";
    while (!session.cancellation->Cancelled() && now() < deadline) {
        const ReadStatus status = source.Next(std::min(kReadLimit, deadline - now()));
        fileTime += kFrame;
        if (status == ReadStatus::Waiting)
            continue;
        if (status != ReadStatus::Data)
            break;
        if (!anyFrame)
            deadline = now() + limits.fic + limits.labels;
        anyFrame = true;
        missing = "the service is not in the block";
        session.receiver.Push(source.Frame(), source.Restarted());
        const auto& service = session.receiver.Current();
        if (service && service->LibraryType() != type)
            missing = "the service is of another type";
        else if (service && session.receiver.Receiving())
            return true;
    }
    if (!session.cancellation->Cancelled())
        lastTuning = anyFrame ? BlockState::NoServices : BlockState::NoSync;
    Say("cannot tune " + std::to_string(session.frequency) +
        " Hz: " + (anyFrame || source.Reason().empty() ? std::string(missing) : source.Reason()));
    return false;
}

void Tuner::StopService() {
    {
        const std::lock_guard lock(mutex);
        work.reset();
    }
    if (playing)
        playing->cancellation->Cancel();
    if (worker.joinable())
        worker.join();
    if (playing)
        broadcast.End();
    playing.reset();
    snr = 0.0F;
    strength = 0.0F;
    fibErrors = 0;
}

// The worker of one service.
void Tuner::Play(Session& session) {
    Cancellation& cancellation = *session.cancellation;
    while (!cancellation.Cancelled()) {
        const ReadStatus status = session.ended ? ReadStatus::End : session.source->Next(kReadLimit);
        if (status == ReadStatus::Data) {
            PlayFrame(session);
            // Files go by our clock; a live source sets its own pace and is only kept from bursts.
            const Millis now = clock.Now();
            if (session.due + kLateness < now)
                session.due = now;
            session.due += session.source->IsFile() ? kFrame : kLiveFrame;
            if (!cancellation.WaitUntil(session.due))
                return;
            continue;
        }
        if (status == ReadStatus::Cancelled)
            return;
        if (std::string reason = session.source->Reason(); status == ReadStatus::Waiting && reason != session.told) {
            Say(reason);
            session.told = std::move(reason);
        }
        // A file without frames has not waited.
        if (status == ReadStatus::Waiting && session.source->IsFile() && !cancellation.WaitUntil(clock.Now() + kFrame))
            return;
        if ((status == ReadStatus::End || status == ReadStatus::Failed) && !session.ended) {
            session.ended = true;
            session.receiver.Finish();
            Say("the source has ended" + (session.source->Reason().empty() ? "" : ": " + session.source->Reason()));
        }
        const Millis silent = clock.Now() - session.lastFrame;
        if (silent >= 2 * kReadLimit) {
            session.receiver.Missing(static_cast<std::uint64_t>(silent / kFrame));
            session.lastFrame += silent / kFrame * kFrame;
            UpdateSignal(session, false);
        }
        if (session.ended && !cancellation.WaitUntil(clock.Now() + kReadLimit))
            return;
    }
}

void Tuner::PlayFrame(Session& session) {
    session.sink.time = session.receiver.FrameTime() * static_cast<std::uint64_t>(kFrame);
    session.receiver.Push(session.source->Frame(), session.source->Restarted());
    session.lastFrame = clock.Now();
    UpdateDescription(session);
    UpdateSignal(session, true);
}

// Follows late labels, renames and scrambling that begins or ends.
void Tuner::UpdateDescription(Session& session) {
    const auto& service = session.receiver.Current();
    const std::string label = service && service->label ? service->label->Utf8() : session.label;
    const bool scrambled = (service && service->Scrambled()) || session.receiver.Counters().packetsScrambled > 0;
    if (label == session.label && scrambled == session.scrambled)
        return;
    if (scrambled != session.scrambled)
        Say(label + (scrambled ? " is scrambled: no picture or sound can be expected" : " is no longer scrambled"));
    session.label = label;
    session.scrambled = scrambled;
    broadcast.Describe(session.generation, label, scrambled);
}

void Tuner::UpdateSignal(Session& session, bool measured) {
    const SignalMeter& meter = session.receiver.Meter();
    float decibel = meter.SignalToNoise();
    // A figure of the receiver's own is some program's text: below 0 would mean that there is no reading, and no number is none.
    if (float own = 0; measured && session.source->Measured(own) && std::isfinite(own))
        decibel = std::clamp(own, 0.0F, kBestSignal);
    snr = decibel;
    strength = meter.Strength();
    fibErrors = meter.FibErrorPerMille();
    constexpr float kWeak = 18.0F;
    const SignalState state = session.ended     ? SignalState::Ended
                              : meter.Lost()    ? SignalState::Lost
                              : decibel < kWeak ? SignalState::Weak
                                                : SignalState::Good;
    broadcast.SetSignal(session.generation, state);
    if (session.receiver.Counters().frames % kCountersEvery == 0 || !measured) {
        StageCounters counters = session.receiver.Counters();
        counters.bytesSkipped = session.source->Count().bytesSkipped;
        counters.slidesRefused = session.sink.slidesRefused;
        counters.slides -= session.sink.slidesRefused;
        broadcast.SetCounters(session.generation, counters);
    }
}

} // namespace medmb
