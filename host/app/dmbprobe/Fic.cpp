// dmbprobe fic: what the fast information channel tells.
#include <iostream>
#include <memory>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/ServiceWalk.h"
#include "host/medmb/BlockTable.h"

namespace dmbprobe {

namespace {

const char* TransportName(wire::Transport transport) {
    switch (transport) {
    case wire::Transport::StreamAudio:
        return "stream audio";
    case wire::Transport::StreamData:
        return "stream data";
    case wire::Transport::Fidc:
        return "FIDC";
    case wire::Transport::Packet:
        return "packets";
    }
    return "";
}

void PrintService(std::ostream& out, const medmb::Service& service) {
    out << "  service " << HexId(service.id, service.longId) << " \"" << LabelOf(service) << "\" " << KindOf(service);
    if (service.Scrambled())
        out << ", scrambled";
    if (service.programmeType)
        out << ", programme type " << *service.programmeType;
    out << '\n';
    for (const medmb::Component& component : service.components) {
        out << "    " << (component.entry.primary ? "primary" : "secondary") << ", "
            << TransportName(component.entry.transport) << ", type " << component.dataType;
        if (component.subChannelId >= 0)
            out << ", sub-channel " << component.subChannelId;
        out << '\n';
    }
    for (const wire::UserApplication& application : service.applications)
        out << "    user application " << application.type << ", X-PAD type " << application.XPadType() << '\n';
}

void PrintSubChannel(std::ostream& out, const wire::SubChannelEntry& entry) {
    out << "  sub-channel " << entry.subChannelId << ": " << entry.BitRate() << " kbit/s, ";
    if (entry.longForm)
        out << "EEP " << entry.level << '-' << (entry.option == 0 ? 'A' : 'B');
    else
        out << "UEP " << entry.level;
    out << ", " << entry.size << " units from " << entry.startAddress << '\n';
}

void PrintEnsemble(std::ostream& out, const medmb::Ensemble& ensemble) {
    out << "ensemble " << HexId(ensemble.id, false) << " \""
        << (ensemble.label ? ensemble.label->Utf8() : std::string()) << "\"";
    if (ensemble.country)
        out << ", country code " << ensemble.country->extendedCountryCode << ", local time "
            << (ensemble.country->localTimeOffset < 0 ? "" : "+") << ensemble.country->localTimeOffset / 2.0 << " h";
    out << '\n';
    for (const medmb::Service& service : ensemble.services)
        PrintService(out, service);
    for (const wire::SubChannelEntry& entry : ensemble.subChannels)
        PrintSubChannel(out, entry);
}

int RunFic(const std::string& source) {
    WalkSource walk;
    if (!walk.Open(source, "fic"))
        return kNoInput;
    bool anyFrame = false;
    for (WalkInput& input : walk.Inputs()) {
        medmb::FicDecoder fic;
        const bool any = ForEachFrame(input, [&](const wire::EtiFrame& frame, bool) { fic.PushFic(frame.Fic()); });
        anyFrame = anyFrame || any;
        std::cout << "block " << medmb::BlockName(input.row) << ", " << fic.Fibs() << " FIBs, " << fic.FibErrors()
                  << " damaged\n";
        PrintEnsemble(std::cout, fic.Model());
    }
    if (!anyFrame)
        std::cerr << "dmbprobe fic: no ETI frame in " << source << '\n';
    return anyFrame ? kDone : kNoSync;
}

} // namespace

void AddFic(CLI::App& app, int& status) {
    auto source = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("fic", "Lists the ensemble: services, components, sub-channels");
    command->add_option("SOURCE", *source, "ETI: a directory, a file, - or tcp://HOST:PORT")->required();
    command->callback([source, &status] { status = RunFic(*source); });
}

} // namespace dmbprobe
