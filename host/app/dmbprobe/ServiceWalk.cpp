#include "host/app/dmbprobe/ServiceWalk.h"

#include <cstdio>
#include <deque>
#include <iostream>
#include <optional>

#include "host/app/dmbprobe/Commands.h"
#include "host/medmb/BlockTable.h"
#include "host/wire/LabelText.h"
#include "platform/medmblib.h"

namespace dmbprobe {

namespace {

// A label may come late; what went before it is kept for so long (one minute) and played all the same.
constexpr std::size_t kKeptFrames = 2500;

struct KeptFrame {
    wire::ByteVector bytes;
    bool restarted = false;
};

bool Matches(const medmb::Service& service, const std::string& name) {
    if (HexId(service.id, service.longId) == name || HexId(service.id, service.longId) == "0x" + name)
        return true;
    // A channel list shows labels through code page 949, which lacks some letters.
    const auto isNamed = [&](const std::optional<medmb::LabelBytes>& label) {
        return label && (label->Utf8() == name || label->CodePage949() == name ||
                         wire::FromCodePage949(wire::CutCodePage949(label->CodePage949(), DMB_LABEL_BYTES)) == name);
    };
    return isNamed(service.label) || isNamed(service.extendedLabel);
}

// Labels need not be unique: a service of the wanted type goes before others of the same name.
std::optional<medmb::Service> FindByName(const medmb::FicDecoder& fic, const std::string& name, int libraryType) {
    std::optional<medmb::Service> found;
    for (medmb::Service& service : fic.Model().services)
        if (Matches(service, name) && (!found || service.LibraryType() == libraryType)) {
            found = std::move(service);
            if (found->LibraryType() == libraryType)
                break;
        }
    return found;
}

} // namespace

bool WalkSource::Open(const std::string& text, const char* command) {
    std::string error;
    const auto spec = medmb::ParseSource(text, error);
    if (!spec) {
        std::cerr << "dmbprobe " << command << ": " << error << '\n';
        return false;
    }
    std::vector<medmb::SourceFile> files;
    if (spec->kind == medmb::SourceKind::File || spec->kind == medmb::SourceKind::Directory)
        files = medmb::ListSourceFiles(*spec);
    else
        files.push_back({0, text});
    provider = medmb::MakeSourceProvider(*spec);
    for (const medmb::SourceFile& file : files) {
        WalkInput input;
        input.row = file.row;
        input.name = file.path;
        input.frames =
            provider->Open(medmb::BlockFrequency(file.row), medmb::Purpose::Scan, cancellation, input.reason);
        inputs.push_back(std::move(input));
    }
    if (inputs.empty()) {
        std::cerr << "dmbprobe " << command << ": " << text << " holds no file named by a block or a frequency\n";
        return false;
    }
    for (const WalkInput& input : inputs) {
        if (input.frames)
            return true;
        std::cerr << "dmbprobe " << command << ": " << input.reason << '\n';
    }
    return false;
}

bool ForEachFrame(WalkInput& input, const std::function<void(const wire::EtiFrame&, bool)>& visit) {
    constexpr medmb::Millis kLimit = 1000;
    bool any = false;
    while (input.frames) {
        const medmb::ReadStatus status = input.frames->Next(kLimit);
        if (status == medmb::ReadStatus::Waiting)
            continue;
        if (status != medmb::ReadStatus::Data)
            break;
        any = true;
        visit(input.frames->Frame(), input.frames->Restarted());
    }
    return any;
}

int PlayService(const std::string& source, const std::string& name, int libraryType, medmb::ServiceSink& sink,
                const char* command, medmb::StageCounters& counters) {
    WalkSource walk;
    if (!walk.Open(source, command))
        return kNoInput;
    bool anyFrame = false;
    bool anyOfAnotherKind = false;
    for (WalkInput& input : walk.Inputs()) {
        medmb::FicDecoder fic;
        std::deque<KeptFrame> kept;
        std::unique_ptr<medmb::ServiceReceiver> receiver;
        bool wrongKind = false;
        std::uint64_t seen = ~std::uint64_t{0};
        anyFrame |= ForEachFrame(input, [&](const wire::EtiFrame& frame, bool restarted) {
            if (receiver) {
                receiver->Push(frame, restarted);
                return;
            }
            const wire::ByteSpan bytes = frame.Bytes();
            kept.push_back({wire::ByteVector(bytes.begin(), bytes.end()), restarted});
            if (kept.size() > kKeptFrames)
                kept.pop_front();
            fic.PushFic(frame.Fic());
            if (fic.Changes() == seen)
                return;
            seen = fic.Changes();
            const auto service = FindByName(fic, name, libraryType);
            wrongKind = service && service->LibraryType() != libraryType;
            if (!service || wrongKind)
                return;
            receiver = std::make_unique<medmb::ServiceReceiver>(service->id, sink, fic);
            for (const KeptFrame& early : kept)
                if (const auto again = wire::EtiFrame::Parse(early.bytes))
                    receiver->Push(*again, early.restarted);
            kept.clear();
        });
        if (receiver) {
            receiver->Finish();
            counters = receiver->Counters();
            counters.bytesSkipped = input.frames->Count().bytesSkipped;
            const auto& service = receiver->Current();
            if ((service && service->Scrambled()) || counters.packetsScrambled > 0)
                std::cerr << "dmbprobe " << command << ": the service is scrambled\n";
            return kDone;
        }
        anyOfAnotherKind = anyOfAnotherKind || wrongKind;
    }
    std::cerr << "dmbprobe " << command << ": "
              << (anyOfAnotherKind ? name + " is a service of another kind"
                  : anyFrame       ? "no service named " + name
                                   : "no ETI frame in " + source)
              << '\n';
    return anyFrame ? kNoService : kNoSync;
}

const char* KindOf(const medmb::Service& service) {
    constexpr int kDabPlus = 63;
    constexpr int kFirstData = 0x100;
    const int type = service.LibraryType();
    if (type == DMB_SERVICE_TYPE_DMB_VIDEO)
        return "television";
    if (type == DMB_SERVICE_TYPE_DAB_AUDIO)
        return "radio";
    if (type == kDabPlus)
        return "DAB+ radio";
    return type < kFirstData ? "audio of an unknown kind" : "data";
}

std::string LabelOf(const medmb::Service& service) {
    return service.label ? service.label->Utf8() : std::string();
}

std::string HexId(std::uint32_t id, bool isLong) {
    char text[16];
    std::snprintf(text, sizeof text, isLong ? "0x%08X" : "0x%04X", id);
    return text;
}

} // namespace dmbprobe
