#include "tests/endtoend/Receiver.h"

#include <cmath>
#include <set>
#include <stdexcept>

#include "host/ce/Text.h"
#include "host/filters/Recording.h"
#include "host/headend/Demo.h"
#include "platform/velshell/VelDocument.h"
#include "tests/support/Places.h"
#include "tuner/ChannelRecord.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace endtoend {

namespace fs = std::filesystem;

namespace {

// Ten seconds, then none for twelve, then on to the end.
constexpr const char* kLoss = R"({
    "seconds": 50, "loop": false,
    "ensembles": [{
        "block": "13A", "id": "0xE1F1", "label": {"text": "LOSS MULTIPLEX"},
        "dropOuts": [{"from": 10, "to": 22}],
        "services": [
            {"kind": "television", "id": "0xE1F10101", "label": {"text": "LOSS TV"}, "subChannel": 1, "bitRate": 320,
             "sound": {"melody": "canon"}, "video": {"scene": "city", "width": 160, "height": 120, "framesPerSecond": 15}},
            {"kind": "radio", "id": "0xE1F2", "label": {"text": "LOSS FM"}, "subChannel": 2, "bitRate": 128,
             "sound": {"melody": "joy"}, "padBytes": 40, "texts": [{"from": 0, "text": "LOSS FM is here"}]}
        ]
    }]
})";

constexpr int kTurn = 50; // ms between two looks at a condition

} // namespace

fs::path DemoAndLoss() {
    const fs::path home = fs::path(testing_support::BinaryDir()) / "endtoend";
    const fs::path demo = headend::EnsureDemo(home / "demo");
    headend::EnsureBroadcast(kLoss, headend::DemoRecipe() + kLoss, home / "loss");
    const fs::path both = home / "air";
    fs::remove_all(both);
    fs::create_directories(both);
    for (const fs::path& from : {demo, home / "loss"})
        for (const fs::directory_entry& entry : fs::directory_iterator(from))
            if (entry.path().extension() == ".eti")
                fs::create_hard_link(entry.path(), both / entry.path().filename());
    return both;
}

// ---- Ear and eye ---------------------------------------------------------------------------------------------------------

void Ear::OnSound(std::span<const std::int16_t> frames) {
    const std::scoped_lock lock(guard);
    samples.insert(samples.end(), frames.begin(), frames.end());
}

void Ear::Forget() {
    const std::scoped_lock lock(guard);
    samples.clear();
}

double Ear::Loudness() const {
    const std::scoped_lock lock(guard);
    double power = 0;
    for (const std::int16_t sample : samples)
        power += static_cast<double>(sample) * sample;
    return samples.empty() ? 0 : std::sqrt(power / static_cast<double>(samples.size()));
}

void Eye::See(const std::shared_ptr<const filters::Picture>& picture) {
    const std::scoped_lock lock(guard);
    if (picture != nullptr)
        pictures.push_back(picture);
}

void Eye::Forget() {
    const std::scoped_lock lock(guard);
    pictures.clear();
}

int Eye::Seen() const {
    const std::scoped_lock lock(guard);
    return static_cast<int>(pictures.size());
}

int Eye::Moved() const {
    const std::scoped_lock lock(guard);
    int moved = 0;
    for (std::size_t i = 1; i < pictures.size(); ++i)
        moved += pictures[i]->i420 != pictures[i - 1]->i420 ? 1 : 0;
    return moved;
}

double Eye::Contrast() const {
    const std::scoped_lock lock(guard);
    if (pictures.empty())
        return 0;
    const filters::Picture& picture = *pictures.back();
    double sum = 0;
    double squares = 0;
    const auto count = static_cast<double>(picture.LumaBytes());
    for (std::size_t i = 0; i < picture.LumaBytes(); ++i) {
        sum += picture.i420[i];
        squares += static_cast<double>(picture.i420[i]) * picture.i420[i];
    }
    return std::sqrt(std::max(0.0, squares / count - sum / count * sum / count));
}

// ---- The receiver ----------------------------------------------------------------------------------------------------------

Receiver::Receiver(const fs::path& broadcast) {
    for (const char* part : {"root", "profile", "card"})
        fs::create_directory(folder / part);
    system.files().AddMount({u"\\", folder / "root"});
    system.files().AddMount({u"\\Profile", folder / "profile", ce::Mount::Writing::OnClose});
    system.files().AddMount({u"\\SDMMC Card", folder / "card", ce::Mount::Writing::InPlace, true});
    filters::Register(classes, clock, {nullptr, &ear, &screen, &onAir});
    std::string reason;
    auto spec = medmb::ParseSource(broadcast.string(), reason);
    if (!spec)
        throw std::runtime_error(reason);
    spec->loop = true;
    tuner = std::make_unique<medmb::Tuner>(clock, medmb::Broadcast::Instance(), medmb::MakeSourceProvider(*spec));
    medmb::Tuner::Install(tuner.get());
    shell::Setup setup;
    setup.skinFolder = fs::path(testing_support::BinaryDir()) / "skin";
    setup.language = shell::Language::English;
    shell = std::make_unique<shell::Shell>(system, setup);
    shell->SetPlayingTimeSource(filters::PlayingSeconds);
    card = std::make_unique<dmbtv::CardWatch>(system, onAir, [this] { return shell->View(); });
    screen.Join(shell.get(), [this](const std::shared_ptr<const filters::Picture>& picture) { eye.See(picture); });
    view = static_cast<CVelDMBView*>(shell->OpenView(CVelDMBView::classCVelDMBView));
    if (view == nullptr)
        throw std::runtime_error("the view cannot be opened");
    peer = std::make_unique<DMBViewPeer>(*view);
    onAir.Join(view->GetSafeHwnd());
    shell->RunUntilIdle();
}

Receiver::~Receiver() {
    onAir.Join(nullptr);
    shell->CloseView();
    screen.Join(nullptr, {});
    card.reset();
    shell.reset();
    medmb::Tuner::Install(nullptr);
}

bool Receiver::WaitFor(const std::function<bool()>& condition, int seconds) {
    const ce::Millis end = clock.Now() + seconds * 1000;
    while (!condition()) {
        if (clock.Now() >= end)
            return false;
        shell->Wait(kTurn);
    }
    return true;
}

void Receiver::Command(UINT id) {
    PostMessageW(view->GetSafeHwnd(), WM_COMMAND, id, 0);
    shell->RunUntilIdle();
}

int Receiver::Position(const std::string& label) {
    ChannelRecord record;
    for (int position = 0; peer->List().GetRecordAt(position, record); ++position)
        if (label == record.label)
            return position;
    return -1;
}

void Receiver::PickFromList(const std::string& label) {
    constexpr UINT kFirstTab = 60, kFirstRow = 40, kOk = 3;
    ChannelRecord wanted;
    const int position = Position(label);
    if (!peer->List().GetRecordAt(position, wanted))
        throw std::runtime_error("no channel " + label);
    UINT line = 0;
    ChannelRecord record;
    for (int before = 0; before < position; ++before)
        line += peer->List().GetRecordAt(before, record) && record.kind == wanted.kind ? 1 : 0;
    shell->DuringModal([this, tab = kFirstTab + static_cast<UINT>(wanted.kind)] { shell->Press(tab); });
    shell->DuringModal([this, line] { shell->Press(kFirstRow + line); });
    shell->DuringModal([this] { shell->Press(kOk); });
    Command(kCmdList);
}

void Receiver::PickFirstFile() {
    constexpr UINT kFilesTab = 62, kFirstRow = 40, kOk = 3;
    shell->DuringModal([this] { shell->Press(kFilesTab); });
    shell->DuringModal([this] { shell->Press(kFirstRow); });
    shell->DuringModal([this] { shell->Press(kOk); });
    Command(kCmdList);
}

void Receiver::Tune(const std::string& label) {
    PostMessageW(view->GetSafeHwnd(), WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(Position(label)), 0);
    shell->RunUntilIdle();
}

std::string Receiver::Info() const {
    const GButton* info = view->Find(kElementInfo);
    return info != nullptr && info->IsVisible() ? ce::ToUtf8(info->GetText()) : std::string();
}

std::string Receiver::NewestText() {
    return peer->Labels().empty() ? std::string() : ce::ToUtf8(peer->Labels().back());
}

int Receiver::PicturePixels() {
    std::set<std::uint32_t> colours;
    const std::uint32_t* pixels = shell->Screen();
    for (int y = 120; y < 360; y += 3)
        for (int x = 200; x < 600; x += 3)
            colours.insert(pixels[y * 800 + x]);
    return static_cast<int>(colours.size());
}

} // namespace endtoend
