// dmbprobe pad: texts and slides of a radio service.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <vector>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/ServiceWalk.h"
#include "host/wire/LabelText.h"
#include "platform/medmblib.h"

namespace dmbprobe {

namespace {

namespace fs = std::filesystem;

struct PadOptions {
    std::string source;
    std::string service;
    std::string directory;
};

const char* ExtensionOf(const wire::MotHeader& header) {
    if (header.contentType == wire::kMotContentGeneral)
        return header.mimeType == "image/jpeg" ? ".jpg" : ".bin";
    switch (header.contentSubtype) {
    case wire::kMotImageGif:
        return ".gif";
    case wire::kMotImageJfif:
        return ".jpg";
    case wire::kMotImageBmp:
        return ".bmp";
    case wire::kMotImagePng:
        return ".png";
    default:
        return ".bin";
    }
}

class PadSink final : public medmb::ServiceSink {
public:
    explicit PadSink(fs::path path) : directory(std::move(path)), labels(directory / "labels.txt", std::ios::trunc) {}

    void OnPackets(wire::ByteSpan /*packets*/, bool /*discontinuity*/) override {}
    void OnAudio(const medmb::RadioFrame& /*frame*/, bool /*discontinuity*/) override {}

    void OnText(const medmb::DynamicLabelText& text) override {
        const std::string line = wire::DecodeText(wire::RemoveControlCodes(text.bytes, text.charset), text.charset);
        if (anyLabel && line == lastLabel)
            return;
        anyLabel = true;
        lastLabel = line;
        labels << line << '\n';
    }

    // Every image as it was sent, under its own name; a picture that is sent again is the same file.
    void OnObject(const medmb::MotObject& object) override {
        if (object.header.compressed || !medmb::IsImage(object.header)) {
            std::cerr << "dmbprobe pad: " << object.Name() << " left out: " << medmb::RefuseSlide(object.header)
                      << '\n';
            return;
        }
        const fs::path wanted = FileName(object);
        fs::path name = wanted;
        for (int copy = 2; written.contains(name.string()); ++copy) {
            if (written[name.string()] == object.body)
                return;
            name = wanted.stem().string() + "-" + std::to_string(copy) + wanted.extension().string();
        }
        written[name.string()] = object.body;
        std::ofstream file(directory / name, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(object.body.data()), static_cast<std::streamsize>(object.body.size()));
        file.close();
        failed = failed || !file;
    }

    [[nodiscard]] bool Close() {
        labels.close();
        return !failed && static_cast<bool>(labels);
    }
    [[nodiscard]] std::size_t Slides() const { return written.size(); }

private:
    // The content name with nothing in it that leads to another place.
    static std::string FileName(const medmb::MotObject& object) {
        std::string name = object.Name();
        for (char& c : name)
            if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == ':')
                c = '_';
        while (!name.empty() && name.front() == '.')
            name.erase(name.begin());
        constexpr std::size_t kLongestName = 100;
        if (name.empty() || name.size() > kLongestName || name == "labels.txt")
            return std::string("slide") + ExtensionOf(object.header);
        return name;
    }

    fs::path directory;
    std::ofstream labels;
    bool anyLabel = false;
    std::string lastLabel;
    std::map<std::string, wire::ByteVector> written;
    bool failed = false;
};

int RunPad(const PadOptions& options) {
    std::error_code error;
    fs::create_directories(options.directory, error);
    if (error) {
        std::cerr << "dmbprobe pad: " << options.directory << ": " << error.message() << '\n';
        return kFailed;
    }
    PadSink sink(options.directory);
    medmb::StageCounters counters;
    const int status = PlayService(options.source, options.service, DMB_SERVICE_TYPE_DAB_AUDIO, sink, "pad", counters);
    if (!sink.Close()) {
        std::cerr << "dmbprobe pad: cannot write into " << options.directory << '\n';
        return kFailed;
    }
    if (status == kDone)
        std::cerr << "dmbprobe pad: " << counters.labels << " labels, " << sink.Slides() << " slides, "
                  << counters.dataGroupErrors << " damaged data groups\n";
    return status;
}

} // namespace

void AddPad(CLI::App& app, int& status) {
    auto options = std::make_shared<PadOptions>();
    CLI::App* command = app.add_subcommand("pad", "Writes texts and slides of a radio service");
    command->add_option("SOURCE", options->source, "ETI: a directory, a file, - or tcp://HOST:PORT")->required();
    command->add_option("--service", options->service, "Label of the service, or its identifier (0x...)")->required();
    command->add_option("DIR", options->directory, "Gets labels.txt and the slides under their own names")->required();
    command->callback([options, &status] { status = RunPad(*options); });
}

} // namespace dmbprobe
