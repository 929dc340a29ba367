// dmbprobe ts: the corrected transport stream of a television service.
#include <fstream>
#include <iostream>
#include <memory>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/ServiceWalk.h"
#include "platform/medmblib.h"

namespace dmbprobe {

namespace {

struct TsOptions {
    std::string source;
    std::string service;
    std::string output;
};

// A packet that could not be repaired keeps its place, with the transport error indicator set.
class TsSink final : public medmb::ServiceSink {
public:
    explicit TsSink(const std::string& path) : file(path, std::ios::binary | std::ios::trunc) {}

    void OnPackets(wire::ByteSpan packets, bool /*discontinuity*/) override {
        file.write(reinterpret_cast<const char*>(packets.data()), static_cast<std::streamsize>(packets.size()));
    }
    void OnAudio(const medmb::RadioFrame& /*frame*/, bool /*discontinuity*/) override {}
    void OnText(const medmb::DynamicLabelText& /*text*/) override {}
    void OnObject(const medmb::MotObject& /*object*/) override {}

    std::ofstream file;
};

int RunTs(const TsOptions& options) {
    TsSink sink(options.output);
    if (!sink.file) {
        std::cerr << "dmbprobe ts: cannot write " << options.output << '\n';
        return kFailed;
    }
    medmb::StageCounters counters;
    const int status = PlayService(options.source, options.service, DMB_SERVICE_TYPE_DMB_VIDEO, sink, "ts", counters);
    sink.file.close();
    if (status == kDone && !sink.file) {
        std::cerr << "dmbprobe ts: cannot write " << options.output << '\n';
        return kFailed;
    }
    if (status == kDone)
        std::cerr << "dmbprobe ts: " << counters.packets << " packets, " << counters.packetsCorrected << " corrected, "
                  << counters.packetsBad << " beyond repair\n";
    return status;
}

} // namespace

void AddTs(CLI::App& app, int& status) {
    auto options = std::make_shared<TsOptions>();
    CLI::App* command = app.add_subcommand("ts", "Writes the transport stream of a television service");
    command->add_option("SOURCE", options->source, "ETI: a directory, a file, - or tcp://HOST:PORT")->required();
    command->add_option("--service", options->service, "Label of the service, or its identifier (0x...)")->required();
    command->add_option("OUT.ts", options->output, "Packets of 188 bytes")->required();
    command->callback([options, &status] { status = RunTs(*options); });
}

} // namespace dmbprobe
