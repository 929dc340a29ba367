// The whole receiver without a window and without waiting: broadcast files, the software tuner, the streaming filters, the module and
// the headless shell, all on one clock that the test moves.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/app/dmbtv/CardWatch.h"
#include "host/app/dmbtv/ScreenPort.h"
#include "host/ce/Ce.h"
#include "host/ce/TemporaryFolder.h"
#include "host/dshow/ClassTable.h"
#include "host/filters/Register.h"
#include "host/medmb/Tuner.h"
#include "host/shell/Shell.h"
#include "tests/harness/DMBViewPeer.h"

namespace endtoend {

// Sound as it is played, 16-bit stereo at 48 kHz.
class Ear final : public filters::SoundTap {
public:
    void OnSound(std::span<const std::int16_t> frames) override;
    void Forget();
    // Loudness of what was played since, as the root of the mean square: 0 silence, 32767 the most.
    [[nodiscard]] double Loudness() const;

private:
    mutable std::mutex guard;
    std::vector<std::int16_t> samples;
};

// Pictures as they are shown.
class Eye {
public:
    void See(const std::shared_ptr<const filters::Picture>& picture);
    void Forget();
    [[nodiscard]] int Seen() const;
    // How many of the pictures since are not equal to the one before.
    [[nodiscard]] int Moved() const;
    // Spread of the brightness of the last picture, 0 for one even colour.
    [[nodiscard]] double Contrast() const;

private:
    mutable std::mutex guard;
    std::vector<std::shared_ptr<const filters::Picture>> pictures;
};

class Receiver {
public:
    explicit Receiver(const std::filesystem::path& broadcast);
    ~Receiver();

    // Lets time pass until the condition holds; false when it does not within so many seconds of the receiver's time.
    [[nodiscard]] bool WaitFor(const std::function<bool()>& condition, int seconds);
    void Wait(int milliseconds) { shell->Wait(milliseconds); }
    void Command(UINT id);
    // Opens the list and takes the channel with this label; the first recording.
    void PickFromList(const std::string& label);
    void PickFirstFile();
    void Tune(const std::string& label);

    [[nodiscard]] int Position(const std::string& label); // in the channel list, -1 when it is not there
    [[nodiscard]] std::string Info() const;               // empty when hidden
    [[nodiscard]] std::string NewestText();               // of the radio, UTF-8
    [[nodiscard]] int PicturePixels();                    // colours on the screen where the picture lies
    [[nodiscard]] std::filesystem::path Card() const { return folder / "card"; }
    [[nodiscard]] std::filesystem::path Folder() const { return folder.path(); }

    ce::ManualClock clock{1762000000};
    ce::TemporaryFolder folder;
    ce::Ce system{clock};
    dshow::ClassTable classes{clock};
    Ear ear;
    Eye eye;
    dmbtv::ScreenPort screen;
    dmbtv::OnAirNotice onAir;
    std::unique_ptr<medmb::Tuner> tuner;
    std::unique_ptr<shell::Shell> shell;
    std::unique_ptr<dmbtv::CardWatch> card;
    CVelDMBView* view = nullptr;
    std::unique_ptr<DMBViewPeer> peer;
};

// The demo and, beside it, a small broadcast whose signal is gone for a while, as links in one folder.
[[nodiscard]] std::filesystem::path DemoAndLoss();

} // namespace endtoend
