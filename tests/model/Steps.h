// The random walk: what may happen to the view, and how a step is done to either side.
#pragma once

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/model/Inputs.h"
#include "tests/model/Model.h"

namespace model {

struct Step {
    enum Kind {
        Open,
        Settle, // the view is closed: everything that waits is done, and nothing may be left over
        Close,
        Idle,
        Wait,
        Command,
        Change,
        ChangeByLabel,
        Step_,
        ShowLabel,
        ShowText,
        OnAir,
        Notice,
        Key,
        Tick,
        Event,
        Hold,
        Pause,
        Stop,
        Release,
        Controls,
        Small,
        Move,
        Full,
        Home,
        Back,
        SaveAll,
        SnrDebug,
        Ratio,
        RecordTime,
        Mask,
        Reading,
        PlayFile,
        Toggle,
        Theme,
        Preload,      // once more: a stream is lost by rule
        Surroundings, // the tuner, a filter or the card behaves otherwise from here on
        kCount
    };
    Kind kind = Idle;
    std::int64_t a = 0, b = 0;
    std::string text; // what changed in the surroundings, the mask
    Place place;
    // Open.
    std::vector<Record> channels;
    bool listFile = true;
    std::optional<int> savedChannel;

    [[nodiscard]] std::string Describe() const;
};

class Walk {
public:
    explicit Walk(std::uint64_t seed) : random(seed) {}
    // The next step, given how the model stands; may change the surroundings and the answers.
    [[nodiscard]] Step Next(const Model& model, Inputs& surroundings);

private:
    [[nodiscard]] int Below(int limit) { return static_cast<int>(random() % static_cast<std::uint64_t>(limit)); }
    [[nodiscard]] bool OneIn(int count) { return Below(count) == 0; }
    template <class T, std::size_t N> [[nodiscard]] T OneOf(const T (&values)[N]) {
        return values[static_cast<std::size_t>(Below(static_cast<int>(N)))];
    }
    void ChangeSurroundings(Inputs& in, Step& step);
    void ChangeAir(Inputs& in);
    void ChooseAnswers(Inputs& in);
    void FillOpen(Step& step);
    void Fill(Step& step, Inputs& in);

    std::mt19937_64 random;
};

// Does the step; `Side` is the model or the world.
template <class Side> void Perform(Side& side, const Step& step) {
    switch (step.kind) {
    case Step::Open:
        side.Open(step.channels, step.listFile, step.savedChannel, static_cast<int>(step.a), static_cast<int>(step.b));
        break;
    case Step::Settle:
        side.Settle();
        break;
    case Step::Close:
        side.Close();
        break;
    case Step::Idle:
        side.Idle();
        break;
    case Step::Wait:
        side.Wait(static_cast<int>(step.a));
        break;
    case Step::Command:
        side.Post(kCommand, step.a, 0);
        break;
    case Step::Change:
        side.Post(kChangeChannel, step.a, 0);
        break;
    case Step::ChangeByLabel:
        side.Post(kChangeChannel, -1, step.a);
        break;
    case Step::Step_:
        side.Post(kStep, step.a, step.b);
        break;
    case Step::ShowLabel:
        side.Post(kShowLabel, step.a, step.b);
        break;
    case Step::ShowText:
        side.Post(kUpdateInfo, step.a, step.b);
        break;
    case Step::OnAir:
        side.Post(kOnAirNotice, 0, 0);
        break;
    case Step::Notice:
        side.Post(kGraphNotice, 0, 0);
        break;
    case Step::Key:
        side.KeyUp(static_cast<unsigned>(step.a), static_cast<unsigned>(step.b));
        break;
    case Step::Tick:
        side.Send(kTimerTick, step.a, 0);
        break;
    case Step::Event:
        side.Report(static_cast<Kind>(step.a), static_cast<int>(step.b));
        break;
    case Step::Hold:
        side.Hold(static_cast<int>(step.a));
        break;
    case Step::Pause:
        side.Pause();
        break;
    case Step::Stop:
        side.Stop();
        break;
    case Step::Release:
        side.ReleaseInterface();
        break;
    case Step::Controls:
        side.ShowControls(static_cast<int>(step.a));
        break;
    case Step::Small:
        side.Minimize();
        break;
    case Step::Move:
        side.MoveSmall(step.place);
        break;
    case Step::Full:
        side.Restore();
        break;
    case Step::Home:
        side.ShowHome();
        break;
    case Step::Back:
        side.ShowView();
        break;
    case Step::SaveAll:
        side.SaveAll();
        break;
    case Step::SnrDebug:
        side.SetSnrDebug(static_cast<int>(step.a));
        break;
    case Step::Ratio:
        side.SetRatio(static_cast<int>(step.a));
        break;
    case Step::RecordTime:
        side.SetRecordTime(static_cast<unsigned>(step.a));
        break;
    case Step::Mask:
        side.SetMask(step.text);
        break;
    case Step::Reading:
        side.Reading(static_cast<int>(step.a));
        break;
    case Step::PlayFile:
        side.PlayFile("\\SDMMC Card\\DMB\\a.dmb");
        break;
    case Step::Toggle:
        side.ToggleKind();
        break;
    case Step::Theme:
        side.Theme();
        break;
    case Step::Preload:
        side.Send(kCommand, 64954, 0);
        break;
    case Step::Surroundings:
    case Step::kCount:
        break;
    }
}

} // namespace model
