// Watching in a window. The main thread has the window and nothing else; the shell's thread has everything else.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <thread>

#include "host/app/dmbtv/Controls.h"
#include "host/app/dmbtv/ExitStatus.h"
#include "host/app/dmbtv/Folders.h"
#include "host/app/dmbtv/Interrupts.h"
#include "host/app/dmbtv/Player.h"
#include "host/app/dmbtv/QuitPort.h"
#include "host/shell/sdl/SoundCard.h"
#include "host/shell/sdl/Window.h"

namespace dmbtv {

namespace sdl = shell::sdl;

namespace {

// The filters' sound on the card.
class CardPort final : public filters::SoundDevice {
public:
    bool Start(filters::SoundSource& source) override {
        return card.Start([&source](std::span<std::int16_t> frames) { source.Pull(frames); });
    }
    void Stop() override { card.Stop(); }
    int LatencyMs() const override { return card.LatencyMs(); }

private:
    sdl::SoundCard card{[](const std::string& line) { Log(LogLevel::Warn, line); }};
};

std::string ReadWhole(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

sdl::KeyMap LoadKeys(const std::filesystem::path& file) {
    sdl::KeyMap keys;
    if (std::filesystem::exists(file)) {
        if (const std::string reason = keys.Read(ReadWhole(file)); !reason.empty())
            throw StartFailure(kExitUsage, file.string() + ": " + reason);
    }
    return keys;
}

std::shared_ptr<const sdl::Picture> PlanesOf(const std::shared_ptr<const filters::Picture>& picture) {
    if (picture == nullptr || picture->i420.size() < picture->LumaBytes() + 2 * picture->ChromaBytes())
        return nullptr;
    auto planes = std::make_shared<sdl::Picture>();
    planes->owner = picture;
    planes->width = picture->width;
    planes->height = picture->height;
    planes->aspect = picture->aspect;
    planes->luma = picture->i420.data();
    planes->blue = planes->luma + picture->LumaBytes();
    planes->red = planes->blue + picture->ChromaBytes();
    return planes;
}

// What the window shows while the demo broadcast is made: how far that is. The title says it in words.
std::shared_ptr<const sdl::Frame> ProgressFrame(double share) {
    constexpr std::uint32_t kGround = 0xFF0B1016, kTrack = 0xFF26313D, kBar = 0xFF4FB3C9;
    constexpr int kLeft = 200, kTop = 236, kWidth = 400, kHeight = 8;
    auto frame = std::make_shared<sdl::Frame>();
    frame->pixels.assign(static_cast<std::size_t>(sdl::kScreenWidth) * sdl::kScreenHeight, kGround);
    const int done = static_cast<int>(kWidth * std::clamp(share, 0.0, 1.0));
    for (int y = kTop; y < kTop + kHeight; ++y) {
        const auto row = frame->pixels.begin() + static_cast<std::ptrdiff_t>(y) * sdl::kScreenWidth + kLeft;
        std::fill_n(row, kWidth, kTrack);
        std::fill_n(row, done, kBar);
    }
    frame->title = std::string("making the demo broadcast - ") + kWindowTitle;
    return frame;
}

// Made here and not by the session, so that somebody who starts the program for the first time sees why it takes a while.
void MakeDemoInSight(const Options& options, sdl::Frames& frames, const std::stop_token& stop) {
    if (!options.source.empty() || !options.command.empty() || options.noBroadcast)
        return;
    (void)DemoFolder([&frames](double share, const std::string& /*what*/) { frames.Show(ProgressFrame(share)); }, stop);
}

int PlayBehindWindow(const Options& options, const WindowTask& task, CardPort& card, QuitPort& quit,
                     sdl::Frames& frames, sdl::Inputs& inputs, WindowState& state) {
    try {
        MakeDemoInSight(options, frames, quit.Token());
        Session session(options, {&card, nullptr, [&frames](const auto& picture) { frames.Show(PlanesOf(picture)); },
                                  quit.Token()});
        const QuitPort::Joined joined(quit, session);
        Controls controls(session, frames, inputs, state);
        return task(session);
    } catch (const StartFailure& failure) {
        // Who closes the window is done.
        if (failure.status == kExitInterrupted) {
            Log(LogLevel::Warn, failure.what());
            return kExitDone;
        }
        return Fail(failure.status, failure.what());
    } catch (const std::exception& failure) {
        return Fail(kExitFailed, failure.what());
    }
}

void Keep(const WindowState& state, const std::filesystem::path& file) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << WriteWindowState(state);
    if (!out.flush())
        Log(LogLevel::Warn, "the volume cannot be kept in " + file.string());
}

} // namespace

int PlayInWindow(const Options& options, const WindowTask& task) {
    const std::filesystem::path stateFile = options.profile / "window";
    const WindowState before = ReadWindowState(ReadWhole(stateFile));
    WindowState state = before;
    sdl::Frames frames;
    sdl::Inputs inputs;
    std::optional<sdl::Window> window;
    try {
        window.emplace(kWindowTitle, options.fullScreen || state.fullScreen, LoadKeys(options.keys), frames, inputs);
    } catch (const sdl::WindowError& error) {
        throw StartFailure(kExitNoInput, std::string(error.what()) + "; --headless plays without a window");
    }
    Log(LogLevel::Debug, "drawing with " + window->RendererName());
    CardPort card;
    QuitPort quit;
    const Interrupts interrupts([&quit] { quit.Request(); });
    int status = kExitDone;
    std::thread shellThread([&] {
        status = PlayBehindWindow(options, task, card, quit, frames, inputs, state);
        frames.End();
    });
    window->Run([&quit] { quit.Request(); });
    shellThread.join();
    if (!options.fullScreen)
        state.fullScreen = window->IsFullScreen();
    if (state != before)
        Keep(state, stateFile);
    return interrupts.Came() ? int{kExitInterrupted} : status;
}

} // namespace dmbtv
