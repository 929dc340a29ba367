// The viewer put together: system core, class table, tuner, filters, shell and module.
//
// A session belongs to the thread that makes it, which becomes the shell's: every call is made there, except RequestQuit and
// IsScanning. Its parts live in the order in which they stand on each other.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>

#include "host/app/dmbtv/CardWatch.h"
#include "host/app/dmbtv/Options.h"
#include "host/app/dmbtv/PictureReason.h"
#include "host/app/dmbtv/ScreenPort.h"
#include "host/ce/Ce.h"
#include "host/dshow/ClassTable.h"
#include "host/filters/WavTap.h"
#include "host/headend/Demo.h"
#include "host/medmb/Tuner.h"
#include "host/shell/Shell.h"

namespace dmbtv {

// A session cannot begin; carries an ExitStatus.
class StartFailure : public std::runtime_error {
public:
    StartFailure(int exitStatus, const std::string& reason) : std::runtime_error(reason), status(exitStatus) {}
    const int status;
};

// The world outside. Every port may be left empty; what is set outlives the session.
struct SessionPorts {
    filters::SoundDevice* sound = nullptr;
    filters::SoundTap* tap = nullptr; // hears what is played, unless --audio-out does
    // The picture to be seen from now on, or none. The renderer's thread.
    std::function<void(std::shared_ptr<const filters::Picture>)> picture;
    // Ends the making of a session that takes long.
    std::stop_token stop;
};

// The folder of the demo broadcast, which is made when it is not there yet. Throws StartFailure; its status is kExitInterrupted after
// a stop was asked for.
[[nodiscard]] std::filesystem::path DemoFolder(const headend::Progress& progress, const std::stop_token& stop);

class Session {
public:
    // Throws StartFailure.
    Session(const Options& options, SessionPorts outside);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Loads the module and opens its view. Throws StartFailure.
    CVelPlayerView& OpenView();
    // Has the view save and go; false when it may not now.
    bool CloseView();

    // Called when something on the screen changed, also in the middle of a scan.
    void SetScreenListener(std::function<void()> listener) { screenListener = std::move(listener); }

    [[nodiscard]] shell::Shell& Shell() { return *shell; }
    [[nodiscard]] ce::Ce& System() { return ce; }
    [[nodiscard]] medmb::Tuner& Receiver() { return *tuner; }

    // From any thread: everything that waits returns, a scan finds nothing more, and the shell's thread comes back from wherever
    // it is. A scan that is cut short by this leaves settings and channel list as they were.
    void RequestQuit();
    [[nodiscard]] bool IsQuitting() const { return quitting.load(); }
    // Does the view scan now? Any thread.
    [[nodiscard]] bool IsScanning() const { return scanning.load(); }

private:
    void Mount(const Options& options);
    void OnScreen();
    [[nodiscard]] ReceptionLook Look();
    void ProtectLists();

    SessionPorts ports;
    std::function<void()> screenListener;
    std::atomic<bool> quitting = false;
    std::atomic<bool> scanning = false;

    ce::RealClock clock;
    ce::Ce ce{clock};
    dshow::ClassTable classes{clock};
    ScreenPort screen;
    OnAirNotice onAir;
    StoppedRadio stoppedRadio;
    std::unique_ptr<filters::WavTap> wav;
    std::unique_ptr<medmb::Tuner> tuner;
    std::unique_ptr<shell::Shell> shell;
    std::unique_ptr<CardWatch> card;
};

// The module and the skin, by the place of the program: lib/ and skin/ beside bin/ as they are built, lib/dmbview/ and
// share/dmbview/skin/ as they are installed.
[[nodiscard]] std::filesystem::path ModuleFile();
[[nodiscard]] std::filesystem::path SkinFolder();
// By --lang, else by the locale.
[[nodiscard]] shell::Language LanguageOf(const Options& options);

} // namespace dmbtv
