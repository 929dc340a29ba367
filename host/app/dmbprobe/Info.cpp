// dmbprobe info: what a source holds, what passed each stage, the first thing that is wrong and what to do about it.
#include <iostream>
#include <map>
#include <memory>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/ServiceWalk.h"
#include "host/medmb/BlockTable.h"
#include "platform/medmblib.h"

namespace dmbprobe {

namespace {

class CountingSink final : public medmb::ServiceSink {
public:
    void OnPackets(wire::ByteSpan /*packets*/, bool /*discontinuity*/) override {}
    void OnAudio(const medmb::RadioFrame& /*frame*/, bool /*discontinuity*/) override {}
    void OnText(const medmb::DynamicLabelText& /*text*/) override {}
    void OnObject(const medmb::MotObject& object) override {
        if (const std::string why = medmb::RefuseSlide(object.header); !why.empty())
            refused = object.Name() + ": " + why;
    }

    std::string refused;
};

// One service under observation.
struct Watched {
    explicit Watched(const medmb::Service& found)
        : service(found), sink(std::make_unique<CountingSink>()),
          receiver(std::make_unique<medmb::ServiceReceiver>(found.id, *sink)) {}

    medmb::Service service;
    std::unique_ptr<CountingSink> sink;
    std::unique_ptr<medmb::ServiceReceiver> receiver;
};

struct Findings {
    medmb::EtiFramer::Counters framer;
    std::uint64_t framesLost = 0;
    medmb::FicDecoder fic;
    std::vector<Watched> watched;
};

// The first thing that is wrong along the chain; empty when all is well.
std::string FirstFault(const WalkInput& input, const Findings& found) {
    constexpr double kManyFibErrors = 0.05;
    if (!input.frames)
        return input.reason + " - check the name and the rights of the file";
    if (found.framer.frames == 0)
        return "no ETI frame found - the source must be ETI(NI), raw or framed; an EDI, IQ or transport stream has to "
               "be "
               "converted first";
    if (found.fic.Fibs() == 0)
        return "the frames carry no FIC - the recording was made without it and cannot be listed";
    const double fibErrors = static_cast<double>(found.fic.FibErrors()) / static_cast<double>(found.fic.Fibs());
    if (fibErrors > kManyFibErrors)
        return "many FIBs are damaged - the reception is weak: better aerial, other gain";
    if (found.framer.truncated > 0 || found.framer.bytesSkipped > 0)
        return std::to_string(found.framer.bytesSkipped) +
               " foreign bytes between frames - harmless for us; a relay or a cut file adds or loses bytes";
    if (found.framesLost > 0)
        return std::to_string(found.framesLost) +
               " frames are missing - the receiver that made the source was too slow";
    if (!found.fic.HasServices())
        return "the ensemble lists no service - wait longer, or the multiplexer's configuration is empty";
    for (const Watched& watched : found.watched) {
        const medmb::StageCounters counters = watched.receiver->Counters();
        const std::string name = "\"" + LabelOf(watched.service) + "\" ";
        if (!watched.service.label)
            return HexId(watched.service.id, watched.service.longId) +
                   " has no label - it is left out of channel lists";
        if (watched.service.Scrambled() || counters.packetsScrambled > 0)
            return name + "is scrambled - it cannot be shown without the operator's key";
        if (watched.service.LibraryType() == DMB_SERVICE_TYPE_DMB_VIDEO && counters.packets == 0)
            return name + "has no transport packets - its sub-channel is missing or has no outer code";
        if (counters.packetsBad > 0)
            return name + "has packets beyond repair - the reception is weak: better aerial, other gain";
        if (watched.service.LibraryType() == DMB_SERVICE_TYPE_DAB_AUDIO && counters.audioFrames == 0)
            return name + "has no audio frames - its sub-channel is missing or not layer II";
        if (counters.audioFramesBad > 0)
            return name + "has damaged audio frames - the reception is weak: better aerial, other gain";
    }
    if (found.fic.FibErrors() > 0)
        return std::to_string(found.fic.FibErrors()) + " FIBs are damaged - now and then, nothing to worry about";
    for (const Watched& watched : found.watched)
        if (!watched.sink->refused.empty())
            return "a slide of \"" + LabelOf(watched.service) + "\" is not shown: " + watched.sink->refused;
    return "";
}

void Print(const WalkInput& input, const Findings& found) {
    const medmb::Ensemble ensemble = found.fic.Model();
    std::cout << input.name << ": block " << medmb::BlockName(input.row) << ", " << medmb::BlockFrequency(input.row)
              << " Hz\n"
              << "  frames   " << found.framer.frames << " (" << found.framer.frames * 24 / 1000.0 << " s), lost "
              << found.framesLost << ", header damaged " << found.framer.headersBad << ", main stream sum wrong "
              << found.framer.mstBad << ", cut off " << found.framer.truncated << ", foreign bytes "
              << found.framer.bytesSkipped << '\n'
              << "  FIC      " << found.fic.Fibs() << " FIBs, damaged " << found.fic.FibErrors() << '\n'
              << "  ensemble " << HexId(ensemble.id, false) << " \""
              << (ensemble.label ? ensemble.label->Utf8() : std::string()) << "\"\n";
    for (const Watched& watched : found.watched) {
        const medmb::Service& service = watched.service;
        const medmb::StageCounters c = watched.receiver->Counters();
        std::cout << "  service  " << HexId(service.id, service.longId) << " \"" << LabelOf(service) << "\" "
                  << KindOf(service) << (service.Scrambled() || c.packetsScrambled > 0 ? ", scrambled" : "") << '\n';
        if (service.LibraryType() == DMB_SERVICE_TYPE_DMB_VIDEO)
            std::cout << "             packets " << c.packets << ", corrected " << c.packetsCorrected << " ("
                      << c.bytesCorrected << " bytes), beyond repair " << c.packetsBad << ", resynchronised "
                      << c.resyncs << '\n';
        if (service.LibraryType() == DMB_SERVICE_TYPE_DAB_AUDIO)
            std::cout << "             audio frames " << c.audioFrames << ", damaged " << c.audioFramesBad
                      << "; labels " << c.labels << ", objects " << c.slides << ", damaged data groups "
                      << c.dataGroupErrors << '\n';
    }
    const std::string fault = FirstFault(input, found);
    std::cout << "  " << (fault.empty() ? "all is well" : "first fault: " + fault) << '\n';
}

int RunInfo(const std::string& source) {
    WalkSource walk;
    if (!walk.Open(source, "info"))
        return kNoInput;
    bool anyFrame = false;
    for (WalkInput& input : walk.Inputs()) {
        Findings found;
        std::map<std::uint32_t, std::size_t> known;
        anyFrame |= ForEachFrame(input, [&](const wire::EtiFrame& frame, bool restarted) {
            const std::uint64_t before = found.fic.Changes();
            found.fic.PushFic(frame.Fic());
            if (found.fic.Changes() != before)
                for (const medmb::Service& service : found.fic.Model().services) {
                    const auto [place, isNew] = known.try_emplace(service.id, found.watched.size());
                    if (isNew)
                        found.watched.emplace_back(service);
                    found.watched[place->second].service = service;
                }
            for (const Watched& watched : found.watched)
                watched.receiver->Push(frame, restarted);
        });
        for (const Watched& watched : found.watched)
            watched.receiver->Finish();
        if (input.frames)
            found.framer = input.frames->Count();
        if (!found.watched.empty())
            found.framesLost = found.watched.front().receiver->Counters().framesLost;
        Print(input, found);
    }
    return anyFrame ? kDone : kNoSync;
}

} // namespace

void AddInfo(CLI::App& app, int& status) {
    auto source = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("info", "What a source holds, and the first thing that is wrong with it");
    command->add_option("SOURCE", *source, "ETI: a directory, a file, - or tcp://HOST:PORT")->required();
    command->callback([source, &status] { status = RunInfo(*source); });
}

} // namespace dmbprobe
