#include "host/app/dmbtv/ScriptRunner.h"

#include <chrono>
#include <functional>

#include "host/app/dmbtv/ViewLook.h"
#include "host/ce/Text.h"

namespace dmbtv {

namespace {

constexpr UINT kFirstTab = 60;
constexpr UINT kFirstRow = 40;
constexpr UINT kInfoElement = 43;
constexpr UINT kPageDown = 72;
constexpr UINT kListButton = 21;
constexpr UINT kOk = 3, kCancel = 4, kLoneOk = 12;
constexpr int kRowsOfATab = 10;
constexpr int kRowsOfFiles = 5;
constexpr int kFileTab = 2;

std::string Got(const std::string& wanted, const std::string& got) {
    return "wanted " + wanted + ", got " + got;
}

class Runner {
public:
    explicit Runner(shell::Shell& shellToDrive) : shell(shellToDrive) {}

    // Empty, or what was wanted and what was got.
    std::string Carry(const ScriptLine& line) {
        switch (line.verb) {
        case Verb::Wait:
            shell.Wait(line.first);
            return {};
        case Verb::Press:
            return Press(static_cast<UINT>(line.first));
        case Verb::Key:
            shell.Key(static_cast<UINT>(line.first));
            return {};
        case Verb::Click:
            shell.Click(line.first, line.second);
            return {};
        case Verb::Answer:
            shell.Answer(static_cast<WORD>(line.first), line.second != 0);
            return {};
        case Verb::Pick:
            return Pick(line.first, line.second);
        case Verb::Shot:
            return shell.Screenshot(line.text) ? std::string() : "cannot write " + line.text;
        case Verb::Dialog:
            return Dialog(line);
        case Verb::ExpectMode:
            return Expect(line.first, shell.View() ? shell.View()->GetPlayMode() : -1);
        case Verb::ExpectType:
            return Expect(line.first, Type());
        case Verb::ExpectText:
            return ExpectText(line);
        case Verb::ExpectTitle:
            return ExpectEqual(line.text, ce::ToUtf8(shell.Title()));
        case Verb::ExpectBox:
            return ExpectBox(line.first);
        case Verb::Remark:
        case Verb::Quit:
            return {};
        }
        return {};
    }

private:
    static std::string Expect(int wanted, int got) {
        return wanted == got ? std::string() : Got(std::to_string(wanted), std::to_string(got));
    }
    static std::string ExpectEqual(const std::string& wanted, const std::string& got) {
        return wanted == got ? std::string() : Got("\"" + wanted + "\"", "\"" + got + "\"");
    }

    std::string Press(UINT element) {
        if (!shell.Press(element))
            return Got("element " + std::to_string(element), "none that can be pressed");
        shell.RunUntilIdle();
        return {};
    }

    [[nodiscard]] int Type() const {
        const CVelPlayerView* view = shell.View();
        return view ? DMBViewPeer::CurrentType(static_cast<const CVelDMBView&>(*view)) : kSessionNone;
    }

    std::string ExpectText(const ScriptLine& line) {
        const GButton* element = shell.Element(static_cast<UINT>(line.first));
        if (element == nullptr)
            return Got("element " + std::to_string(line.first), "none");
        return ExpectEqual(line.text, element->IsVisible() ? ce::ToUtf8(element->GetText()) : std::string());
    }

    std::string ExpectBox(int textId) const {
        const auto& boxes = shell.BoxRecords();
        const int got = boxes.empty() ? -1 : int{boxes.back().textId};
        return Expect(textId, got);
    }

    // Opens the list and takes a line of a tab. The list is modal, so what happens in it is arranged before.
    std::string Pick(int tab, int line) {
        std::string failure;
        const int rows = tab == kFileTab ? kRowsOfFiles : kRowsOfATab;
        ModalPlan plan(shell);
        plan.Add([this, tab] { shell.Press(kFirstTab + static_cast<UINT>(tab)); });
        for (int page = 0; page < line / rows; ++page)
            plan.Add([this] { shell.Press(kPageDown); });
        plan.Add([this, row = kFirstRow + static_cast<UINT>(line % rows), &failure] {
            const GButton* element = shell.Element(row);
            if (element == nullptr || *element->GetText() == 0)
                failure = "the list has no such line";
            else
                shell.Press(row);
        });
        plan.Add([this] { shell.Press(kOk); });
        if (!PressTool(shell, kListButton))
            return "the list cannot be opened";
        shell.RunUntilIdle();
        return failure;
    }

    // What is open after the picture goes as everything does that nobody answers.
    std::string Dialog(const ScriptLine& line) {
        std::string failure = "no dialog has opened";
        ModalPlan plan(shell);
        if (line.second >= 0)
            plan.Add([this, &line] { shell.Press(static_cast<UINT>(line.second)); });
        plan.Add([this, &line, &failure] {
            failure = shell.Screenshot(line.text) ? std::string() : "cannot write " + line.text;
        });
        if (!PressTool(shell, static_cast<UINT>(line.first)))
            return "the dialog cannot be opened";
        shell.RunUntilIdle();
        return failure;
    }

    shell::Shell& shell;
};

bool Expects(Verb verb) {
    return verb == Verb::ExpectMode || verb == Verb::ExpectType || verb == Verb::ExpectText ||
           verb == Verb::ExpectTitle || verb == Verb::ExpectBox;
}

// One line for each line of the script, and what the screen said after it when that has changed.
class Transcript {
public:
    Transcript(shell::Shell& shellToWatch, const std::function<void(const std::string& line)>& sink)
        : shell(shellToWatch), tell(sink) {}

    void Tell(const ScriptLine& line, const std::string& failure) {
        if (!tell)
            return;
        if (line.verb == Verb::Remark) {
            tell("");
            tell(line.text);
            return;
        }
        const std::string verdict = !failure.empty() ? "  FAILED: " + failure : Expects(line.verb) ? "  holds" : "";
        tell("  " + Time() + "  " + line.source + verdict);
        TellChange("title", title, ce::ToUtf8(shell.Title()));
        const GButton* info = shell.Element(kInfoElement);
        TellChange("message", message, info != nullptr && info->IsVisible() ? ce::ToUtf8(info->GetText()) : "");
    }

    void End(int expectations) const {
        if (tell) {
            tell("");
            tell("Every one of " + std::to_string(expectations) + " expectations held.");
        }
    }

private:
    std::string Time() const {
        const auto passed = std::chrono::steady_clock::now() - begin;
        const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(passed).count() / 100;
        const std::string seconds = std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
        return std::string(seconds.size() < 7 ? 7 - seconds.size() : 0, ' ') + seconds;
    }

    void TellChange(const char* what, std::string& known, const std::string& now) const {
        if (known == now)
            return;
        known = now;
        tell(std::string("             ") + what + (now.empty() ? " gone" : ": " + now));
    }

    shell::Shell& shell;
    const std::function<void(const std::string& line)>& tell;
    const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    std::string title;
    std::string message;
};

} // namespace

ModalPlan::ModalPlan(shell::Shell& shellToDrive) : shell(shellToDrive), valid(std::make_shared<bool>(true)) {}

ModalPlan::~ModalPlan() {
    *valid = false;
}

void ModalPlan::Add(std::function<void()> step) {
    shell.DuringModal([valid = valid, step = std::move(step)] {
        if (*valid)
            step();
    });
}

bool PressTool(shell::Shell& shell, UINT element) {
    if (shell.Press(element))
        return true;
    CVelPlayerView* view = shell.View();
    if (view == nullptr || shell.ModalDepth() > 0)
        return false;
    view->ShowControls(1, 1);
    return shell.Press(element);
}

void CancelUnanswered(shell::Shell& shell) {
    shell.SetIdleInput([&shell] { return shell.Press(kCancel) || shell.Press(kLoneOk) || shell.Press(kOk); });
}

std::string RunScript(shell::Shell& shell, const Script& script,
                      const std::function<void(const std::string& line)>& tell) {
    Runner runner(shell);
    CancelUnanswered(shell);
    Transcript transcript(shell, tell);
    int expectations = 0;
    for (const ScriptLine& line : script.lines) {
        if (line.verb == Verb::Quit)
            break;
        const std::string failure = runner.Carry(line);
        transcript.Tell(line, failure);
        if (!failure.empty())
            return "line " + std::to_string(line.line) + " (" + line.source + "): " + failure;
        expectations += Expects(line.verb) ? 1 : 0;
    }
    transcript.End(expectations);
    return {};
}

} // namespace dmbtv
