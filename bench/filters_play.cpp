// What playing one television service costs, as a share of a core, beside ffplay on the same picture in a plain transport
// stream with AAC sound. Both play in real time, without a screen and a sound card; each converts every picture to RGB.
//
//   bench_filters_play [SECONDS]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "host/filters/Demultiplexer.h"
#include "host/filters/SoundDecoder.h"
#include "host/filters/WavTap.h"
#include "host/filters/av/RgbConverter.h"
#include "tests/filters/FilterWorld.h"
#include "tests/filters/TestService.h"

namespace {

double CpuSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The picture's bytes and the samples, for the other player.
class Splitter final : public filters::DemuxListener {
public:
    explicit Splitter(const std::filesystem::path& folder)
        : picture_(folder / "picture.h264", std::ios::binary), sound_(folder / "sound.wav") {}
    void OnStreams(const filters::VideoFormat*, const filters::AudioFormat* audio) override {
        if (audio != nullptr)
            (void)decoder_.SetFormat(*audio);
    }
    void OnVideo(filters::AccessUnit unit) override {
        picture_.write(reinterpret_cast<const char*>(unit.bytes.data()),
                       static_cast<std::streamsize>(unit.bytes.size()));
    }
    void OnAudio(filters::AccessUnit unit) override {
        decoder_.Push(unit, [this](const filters::SoundBlock& block) { sound_.OnSound(block.samples); });
    }
    void OnClockLost() override {}

private:
    std::ofstream picture_;
    filters::WavTap sound_;
    filters::SoundDecoder decoder_;
};

class RgbScreen final : public filters::VideoPort {
public:
    void Show(const std::shared_ptr<const filters::Picture>& picture) override {
        pictures += converter_.Convert(*picture).empty() ? 0 : 1;
    }
    void Clear() override {}
    void Place(const RECT&, bool) override {}
    int pictures = 0;

private:
    filters::RgbConverter converter_;
};

// CPU seconds of playing the file through the graph.
double PlayHere(const filters_test::Service& service) {
    ce::RealClock clock;
    ce::TemporaryFolder folder;
    ce::Ce system(clock);
    system.files().AddMount({u"\\", folder.path()});
    std::ofstream(folder / "a.dmb", std::ios::binary)
        .write(reinterpret_cast<const char*>(service.packets.data()),
               static_cast<std::streamsize>(service.packets.size()));
    dshow::ClassTable classes(clock);
    medmb::Broadcast broadcast;
    RgbScreen screen;
    filters::Register(classes, clock, {nullptr, nullptr, &screen, nullptr}, broadcast);
    filters_test::Session session;
    if (FAILED(session.controller->InitDMBFilters(u"\\a.dmb", 1)))
        return -1;
    const double before = CpuSeconds(RUSAGE_SELF);
    (void)session.control->Run();
    while (!session.TakeEvents().contains(EC_COMPLETE))
        clock.Sleep(100);
    const double used = CpuSeconds(RUSAGE_SELF) - before;
    (void)session.control->Stop();
    (void)session.controller->CloseDMBFilters();
    std::printf("here: %d pictures\n", screen.pictures);
    return used;
}

double RunOther(const std::string& command) {
    const double before = CpuSeconds(RUSAGE_CHILDREN);
    const int status = std::system(command.c_str()); // NOLINT: a benchmark on a developer's machine
    return status == 0 ? CpuSeconds(RUSAGE_CHILDREN) - before : -1;
}

} // namespace

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 20;
    filters_test::ServiceWish wish;
    wish.seconds = seconds;
    wish.width = 320;
    wish.height = 240;
    wish.framesPerSecond = 30;
    wish.kbps = 544;
    const filters_test::Service service = filters_test::MakeService(wish);
    ce::TemporaryFolder folder;
    {
        Splitter splitter(folder.path());
        filters::Demultiplexer demultiplexer(splitter);
        for (std::size_t at = 0; at < service.packets.size(); at += 188)
            demultiplexer.Push(filters::ByteSpan(service.packets).subspan(at, 188));
        demultiplexer.Finish();
    }
    const std::string base = folder.path().string();
    const std::string plain = base + "/plain.ts";
    if (RunOther("ffmpeg -v error -y -r 30 -f h264 -i " + base + "/picture.h264 -i " + base +
                 "/sound.wav -c:v copy -c:a aac -b:a 64k " + plain) < 0)
        return EXIT_FAILURE;
    const double here = PlayHere(service);
    const double other =
        RunOther("SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy ffplay -v error -autoexit -threads 1 " + plain);
    std::printf("playing %.0f s of 320x240 at 30 pictures: here %.1f %% of a core, ffplay %.1f %%\n", seconds,
                here / seconds * 100, other / seconds * 100);
    return here >= 0 && other >= 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
