#include "host/headend/Headend.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <fstream>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>

#include "host/headend/Faults.h"
#include "host/headend/FicCarousel.h"
#include "host/headend/Multiplex.h"
#include "host/headend/Programme.h"
#include "host/wire/EtiFrame.h"

namespace headend {

namespace {

// A service over the frames in which its bit rate stays the same.
struct Job {
    std::size_t ensemble = 0;
    std::size_t service = 0;
    Stretch stretch;
    Programme programme{};
};

std::vector<Job> MakeJobs(const EnsembleDescription& ensemble, std::size_t index,
                          const std::vector<Configuration>& configurations, int frameCount) {
    std::vector<Job> jobs;
    for (std::size_t service = 0; service < ensemble.services.size(); ++service) {
        bool running = false;
        for (std::size_t i = 0; i < configurations.size(); ++i) {
            const int from = configurations[i].fromFrame;
            const int to =
                std::min(frameCount, i + 1 < configurations.size() ? configurations[i + 1].fromFrame : frameCount);
            const auto& active = configurations[i].services;
            const auto found =
                std::find_if(active.begin(), active.end(), [&](const ActiveService& a) { return a.index == service; });
            if (found == active.end() || from >= to) {
                running = running && from >= to;
                continue;
            }
            if (running && jobs.back().stretch.kbps == found->kbps)
                jobs.back().stretch.frames += to - from;
            else
                jobs.push_back({index, service, {from, to - from, found->kbps}});
            running = true;
        }
    }
    return jobs;
}

void RunJobs(const Description& description, std::vector<Job>& jobs, const Progress& progress,
             const std::stop_token& stop) {
    const auto serviceOf = [&](const Job& job) -> const ServiceDescription& {
        return description.ensembles[job.ensemble].services[job.service];
    };
    // Pictures take longest, so they go first: what is left over at the end is small.
    std::vector<Job*> order;
    for (Job& job : jobs)
        order.push_back(&job);
    std::stable_partition(order.begin(), order.end(),
                          [&](const Job* job) { return serviceOf(*job).kind == ServiceKind::kTelevision; });
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::size_t done = 0;
    std::exception_ptr failure;
    const auto work = [&] {
        for (std::size_t i = next++; i < order.size(); i = next++) {
            Job& job = *order[i];
            const ServiceDescription& service = serviceOf(job);
            try {
                if (stop.stop_requested())
                    throw Interrupted();
                job.programme = MakeProgramme(description, service, job.stretch, stop);
            } catch (...) {
                const std::lock_guard lock(mutex);
                failure = std::current_exception();
                next = jobs.size();
                return;
            }
            const std::lock_guard lock(mutex);
            ++done;
            if (progress)
                progress(static_cast<double>(done) / static_cast<double>(jobs.size()), service.label.text);
        }
    };
    std::vector<std::thread> threads;
    const std::size_t count = std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()), jobs.size());
    for (std::size_t i = 1; i < count; ++i)
        threads.emplace_back(work);
    work();
    for (std::thread& thread : threads)
        thread.join();
    if (failure)
        std::rethrow_exception(failure);
}

wire::ByteVector BytesOf(const std::vector<Job>& jobs, std::size_t ensemble, std::size_t service, int frame) {
    for (const Job& job : jobs) {
        const int at = frame - job.stretch.fromFrame;
        if (job.ensemble != ensemble || job.service != service || at < 0 || at >= job.stretch.frames)
            continue;
        const std::size_t size = static_cast<std::size_t>(job.stretch.kbps) * 3;
        const auto begin =
            job.programme.bytes.begin() + static_cast<std::ptrdiff_t>(size * static_cast<std::size_t>(at));
        return {begin, begin + static_cast<std::ptrdiff_t>(size)};
    }
    throw std::logic_error("a service without bytes");
}

wire::ByteVector Assemble(const Description& description, std::size_t index,
                          const std::vector<Configuration>& configurations, const std::vector<Job>& jobs,
                          int frameCount) {
    const EnsembleDescription& ensemble = description.ensembles[index];
    FicCarousel fic(ensemble, configurations, description.clock);
    Faults faults(ensemble);
    wire::ByteVector eti;
    eti.reserve(static_cast<std::size_t>(frameCount) * wire::kEtiFrameBytes);
    std::size_t current = 0;
    for (int frame = 0; frame < frameCount; ++frame) {
        while (current + 1 < configurations.size() && configurations[current + 1].fromFrame <= frame)
            ++current;
        wire::EtiFrameContent content;
        content.frameCount = (ensemble.firstFrame + frame) % wire::kEtiFrameCountModulo;
        content.framePhase = (ensemble.firstFrame + frame) % 8;
        content.fic = fic.Next();
        for (const ActiveService& active : configurations[current].services)
            content.streams.push_back({{.subChannelId = static_cast<std::uint8_t>(active.subChannel),
                                        .startAddress = static_cast<std::uint16_t>(active.entry.startAddress),
                                        .protection = static_cast<std::uint8_t>(active.protectionField)},
                                       BytesOf(jobs, index, active.index, frame)});
        if (faults.Apply(frame, configurations[current], content))
            wire::AppendBytes(eti, wire::WriteEtiFrame(content));
    }
    return eti;
}

} // namespace

Broadcast MakeBroadcast(const Description& description, const Progress& progress, const std::stop_token& stop) {
    const int frameCount = FrameAt(description.seconds);
    std::vector<std::vector<Configuration>> configurations;
    std::vector<Job> jobs;
    for (std::size_t i = 0; i < description.ensembles.size(); ++i) {
        configurations.push_back(MakeConfigurations(description.ensembles[i]));
        const std::vector<Job> more = MakeJobs(description.ensembles[i], i, configurations[i], frameCount);
        jobs.insert(jobs.end(), more.begin(), more.end());
    }
    if (progress)
        progress(0, "");
    RunJobs(description, jobs, progress, stop);

    Broadcast broadcast;
    for (std::size_t i = 0; i < description.ensembles.size(); ++i)
        broadcast.ensembles.push_back(
            {description.ensembles[i].block, Assemble(description, i, configurations[i], jobs, frameCount)});
    for (const Job& job : jobs)
        broadcast.warnings.insert(broadcast.warnings.end(), job.programme.warnings.begin(),
                                  job.programme.warnings.end());
    return broadcast;
}

void WriteBroadcast(const Broadcast& broadcast, const std::filesystem::path& directory) {
    std::filesystem::create_directories(directory);
    for (const BuiltEnsemble& ensemble : broadcast.ensembles) {
        const std::filesystem::path target = directory / (ensemble.block + ".eti");
        // A name of our own: another process may be making the same files.
        const std::filesystem::path part =
            directory / (ensemble.block + "." + std::to_string(std::random_device{}()) + ".part");
        std::ofstream file(part, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(ensemble.eti.data()),
                   static_cast<std::streamsize>(ensemble.eti.size()));
        file.close();
        if (!file)
            throw std::runtime_error(part.string() + ": cannot be written");
        std::filesystem::rename(part, target);
    }
}

} // namespace headend
