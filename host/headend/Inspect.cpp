#include "host/headend/Inspect.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "host/headend/Multiplex.h"
#include "host/headend/Programme.h"
#include "host/headend/Scene.h"
#include "host/headend/Slide.h"

namespace headend {

namespace {

class Files {
public:
    explicit Files(std::filesystem::path target) : directory(std::move(target)) {
        std::filesystem::create_directories(directory);
    }
    std::filesystem::path Name(const ServiceDescription& service, const std::string& rest) {
        char id[16];
        std::snprintf(id, sizeof id, service.HasLongId() ? "%08X" : "%04X", static_cast<unsigned>(service.id));
        written.push_back(directory / (id + rest));
        return written.back();
    }
    void Write(const ServiceDescription& service, const std::string& rest, wire::ByteSpan bytes) {
        const auto path = Name(service, rest);
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file)
            throw std::runtime_error(path.string() + ": cannot be written");
    }
    std::vector<std::filesystem::path> written;

private:
    std::filesystem::path directory;
};

void WriteTelevision(const Description& description, const ServiceDescription& service, Files& files) {
    const Stretch stretch{0, FrameAt(std::min(description.seconds, service.present.to)), service.kbps};
    files.Write(service, ".ts", MakeTransportStream(description, service, stretch).packets);
    const VideoDescription& video = service.video;
    Scene scene({.kind = video.scene,
                 .width = video.width,
                 .height = video.height,
                 .station = video.station,
                 .ticker = video.ticker,
                 .clockStart = static_cast<int>(description.clock % 86400),
                 .flashEvery = video.flashEvery});
    Canvas canvas(video.width, video.height);
    for (int seconds = 0; seconds < description.seconds; seconds += 5) {
        scene.Draw(canvas, seconds);
        const auto path = files.Name(service, "-" + std::to_string(seconds) + ".png");
        if (!canvas.SavePng(path.string()))
            throw std::runtime_error(path.string() + ": cannot be written");
    }
}

void WriteRadio(const ServiceDescription& service, Files& files) {
    std::string texts;
    for (const TextDescription& text : service.texts) {
        if (!text.text.empty())
            texts += text.text + "\n";
    }
    files.Write(service, ".txt", {reinterpret_cast<const std::uint8_t*>(texts.data()), texts.size()});
    for (std::size_t i = 0; i < service.slides.size(); ++i) {
        const wire::ByteVector body = MakeSlideFile(service.slides[i]);
        const bool png = body.size() > 1 && body[0] == 0x89 && body[1] == 'P';
        files.Write(service, "-" + std::to_string(i + 1) + (png ? ".png" : ".jpg"), body);
    }
}

} // namespace

std::vector<std::filesystem::path> WriteParts(const Description& description, const std::filesystem::path& directory) {
    Files files(directory);
    for (const EnsembleDescription& ensemble : description.ensembles) {
        for (const ServiceDescription& service : ensemble.services) {
            if (service.kind == ServiceKind::kTelevision)
                WriteTelevision(description, service, files);
            else if (service.kind == ServiceKind::kRadio)
                WriteRadio(service, files);
        }
    }
    return files.written;
}

} // namespace headend
