#include "host/medmb/BlockScan.h"

#include <algorithm>
#include <cstring>

#include "host/wire/LabelText.h"

namespace medmb {

namespace {

constexpr Millis kStep = 100;
// What a file source reads at one go without finding a frame.
constexpr Millis kChunkTime = 64 * 1024 / static_cast<Millis>(wire::kEtiFrameBytes) * wire::kEtiFrameMilliseconds;

std::vector<int> StreamIds(const wire::EtiFrame& frame) {
    std::vector<int> ids;
    for (std::size_t i = 0; i < frame.StreamCount(); ++i)
        ids.push_back(frame.Stream(i).subChannelId);
    return ids;
}

} // namespace

BlockReport ScanBlock(FrameSource& source, const Cancellation& cancellation, const ScanLimits& limits) {
    BlockReport report;
    FicDecoder fic;
    ce::Clock& clock = cancellation.Clock();
    const Millis start = clock.Now();
    Millis fileTime = 0;
    const auto now = [&] { return source.IsFile() ? fileTime : clock.Now() - start; };
    Millis deadline = limits.sync;
    bool anyFrame = false;
    bool anyFic = false;
    bool complete = false;
    ReadStatus status = ReadStatus::Waiting;
    while (!complete && !cancellation.Cancelled() && now() < deadline) {
        status = source.Next(std::min(kStep, deadline - now()));
        if (status == ReadStatus::Waiting) {
            fileTime += kChunkTime;
            continue;
        }
        if (status != ReadStatus::Data)
            break;
        fileTime += wire::kEtiFrameMilliseconds;
        if (!anyFrame)
            deadline = now() + limits.fic;
        anyFrame = true;
        fic.PushFic(source.Frame().Fic());
        if (!anyFic && fic.Fibs() > fic.FibErrors())
            deadline = now() + limits.labels;
        anyFic = fic.Fibs() > fic.FibErrors();
        complete = fic.Complete(StreamIds(source.Frame()));
    }
    report.ensemble = fic.Model();
    const bool anyLabel = std::any_of(report.ensemble.services.begin(), report.ensemble.services.end(),
                                      [](const Service& service) { return service.label.has_value(); });
    if (cancellation.Cancelled()) {
        report.state = BlockState::Cancelled;
        report.reason = "cancelled";
    } else if (anyLabel) {
        report.state = BlockState::Ok;
    } else if (anyFrame) {
        report.state = BlockState::NoServices;
        report.reason = anyFic ? "the block lists no service with a label" : "no readable service information";
    } else {
        report.state = BlockState::NoSync;
        report.reason = source.Reason().empty() ? "no ETI frame found" : source.Reason();
    }
    return report;
}

void FillChannelInfo(const BlockReport& report, _tag_DMB_CHANNEL_INFO& info) {
    info = {};
    info.nFrequency = static_cast<std::uint32_t>(report.frequency);
    std::size_t count = 0;
    for (const Service& service : report.ensemble.services) {
        if (!service.label || count == static_cast<std::size_t>(DMB_MAX_SERVICES))
            continue;
        const std::string label = service.label->CodePage949();
        const std::string_view cut = wire::CutCodePage949(label, DMB_LABEL_BYTES);
        if (cut.empty())
            continue;
        _tag_DMB_SERVICE_INFO& entry = info.service[count++];
        std::memcpy(entry.szLabel, cut.data(), cut.size());
        entry.nServiceType = service.LibraryType();
        entry.nServiceID = service.id;
    }
}

} // namespace medmb
