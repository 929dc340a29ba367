// The randomised test: the module and the model do the same steps, and after each the same must have happened.
//
// DMB_MODEL_STEPS sets how many (100000 unless told), DMB_MODEL_SEED the beginning of the walk.
#include <algorithm>
#include <cstdlib>
#include <deque>
#include <map>

#include <gtest/gtest.h>

#include "tests/model/Model.h"
#include "tests/model/Steps.h"
#include "tests/model/World.h"

namespace {

constexpr long kUsualSteps = 100000;
constexpr std::size_t kShownSteps = 20;
constexpr long kShownLines = 30;

constexpr const char* kEveryEffect[] = {"mode 2",
                                        "mode 4",
                                        "mode 5",
                                        "mode 8",
                                        "aspect 0",
                                        "aspect 1",
                                        "video on",
                                        "video off",
                                        "controls on",
                                        "controls off",
                                        "title [CH",
                                        "box VelDMB 1001 style 2",
                                        "box VelDMB 1009 style 2",
                                        "box VelDMB 1010 style 3",
                                        "box VelDMB 1011 style 1",
                                        "box VelDMB 1013 style 2",
                                        "box VelDMB 1014 style 2",
                                        "box VelDMB 1015 style 2",
                                        "box VelMain 5 style 3",
                                        "answer 1011 1",
                                        "answer 1011 2",
                                        "unanswered",
                                        "small ",
                                        "full",
                                        "host key 27",
                                        "host key 33",
                                        "host key 180",
                                        "host key 193",
                                        "host timer 999",
                                        "post main command 17",
                                        "post main 1324",
                                        "post view 1026",
                                        "post view 1029 0",
                                        "post view 1029 1573912",
                                        "post view 1124 ",
                                        "post view 1125 0 ",
                                        "post view 1126 1000 1",
                                        "post view 1126 1000 -1",
                                        "post view 1127 0 0",
                                        "post view command 20",
                                        "post view command 23",
                                        "post view command 96",
                                        "post view command 97",
                                        "stream.Close",
                                        "tuner.Open",
                                        "tuner.Close",
                                        "tuner.GetChannel 214736000",
                                        "tuner.GetRSSI",
                                        "tuner.GetSNR",
                                        "tuner.SetChannel",
                                        "parser.Create = 80004005",
                                        "dab.Create = 80004005",
                                        "parser.Load",
                                        "parser.SetCaptureFileName",
                                        "parser.StartCapture",
                                        "parser.StopCapture",
                                        "parser.GetParam",
                                        "parser.SetParam",
                                        "picture.HoldVideo",
                                        "picture.ResumeVideo",
                                        "picture.put_AutoShow",
                                        "hold",
                                        "back",
                                        "dab.FetchPadInfo",
                                        "dab.End",
                                        "parser.End",
                                        "audio.Pause = 80004005",
                                        "audio.Run = 80004005",
                                        "audio.Stop = 80004005"};

long Setting(const char* name, long usual) {
    const char* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::atol(text) : usual;
}

class Comparison {
public:
    explicit Comparison(long walkSeed) : seed(walkSeed), model(inputs), walk(static_cast<std::uint64_t>(walkSeed)) {}

    // False when the two differ.
    bool Do(long number) {
        const model::Step step = walk.Next(model, inputs);
        return Do(number, step);
    }

    // The end: the view is closed and nothing may be left over.
    bool Finish(long number) {
        inputs.answers.clear();
        model::Step step;
        step.kind = model::Step::Close;
        if (model.open && !Do(number, step))
            return false;
        step.kind = model::Step::Settle;
        return model.settled || Do(number, step);
    }

    bool Do(long number, const model::Step& step) {
        shown.push_back(std::to_string(number) + " " + step.Describe());
        if (shown.size() > kShownSteps)
            shown.pop_front();
        world.Apply(inputs);
        model.log.clear();
        model::Perform(model, step);
        model::Perform(world, step);
        const std::vector<std::string> log = world.TakeLog();
        for (const std::string& line : log)
            ++effects[line.substr(0, line.find_first_of("(*"))];
        if (log.size() < model.log.size() && world.LogWasFull()) // the shell keeps the latest lines only
            model.log.erase(model.log.begin(), model.log.end() - static_cast<long>(log.size()));
        const model::Snapshot seen = world.Look();
        const model::Snapshot wanted = model.Look();
        if (log != model.log || !(seen == wanted)) {
            Explain(log, model::Differences(wanted, seen));
            return false;
        }
        if (step.kind != model::Step::Settle)
            return true;
        const auto leaks = world.Leaks(model.LeakedFilters(), model.leakedStreams);
        model.ForgetLeaks();
        if (!leaks.empty())
            Explain({}, leaks);
        return leaks.empty();
    }

    // A walk that never got anywhere would prove nothing.
    [[nodiscard]] std::vector<std::string> NeverSeen() const {
        std::vector<std::string> missing;
        for (const char* effect : kEveryEffect)
            if (std::none_of(effects.begin(), effects.end(),
                             [effect](const auto& seen) { return seen.first.find(effect) != std::string::npos; }))
                missing.emplace_back(effect);
        return missing;
    }

private:
    void Explain(const std::vector<std::string>& log, const std::vector<std::string>& differences) const {
        std::string text = "seed " + std::to_string(seed) + ", the last steps:\n";
        for (const std::string& line : shown)
            text += "  " + line + "\n";
        text += "differences:\n";
        for (const std::string& line : differences)
            text += "  " + line + "\n";
        if (log != model.log) {
            const auto [a, b] = std::mismatch(log.begin(), log.end(), model.log.begin(), model.log.end());
            const long from = std::max<long>(0, a - log.begin() - kShownLines / 2);
            text += "effects, from number " + std::to_string(from) + ", wanted:\n" + Lines(model.log, from) + "got:\n" +
                    Lines(log, from);
        }
        ADD_FAILURE() << text;
    }

    static std::string Lines(const std::vector<std::string>& lines, long from) {
        std::string text;
        for (long i = from; i < std::min<long>(from + kShownLines, static_cast<long>(lines.size())); ++i)
            text += "  " + lines[static_cast<std::size_t>(i)] + "\n";
        return text;
    }

    const long seed;
    model::Inputs inputs;
    model::Model model;
    model::Walk walk;
    model::World world;
    std::deque<std::string> shown;
    std::map<std::string, long> effects;
};

} // namespace

TEST(Model, RandomWalkDoesWhatTheTablesSay) {
    const long steps = Setting("DMB_MODEL_STEPS", kUsualSteps);
    Comparison comparison(Setting("DMB_MODEL_SEED", 1));
    long done = 0;
    while (done < steps && comparison.Do(done))
        ++done;
    EXPECT_EQ(done, steps);
    EXPECT_TRUE(done < steps || comparison.Finish(done));
    if (steps >= kUsualSteps) {
        EXPECT_EQ(comparison.NeverSeen(), std::vector<std::string>{});
    }
}
