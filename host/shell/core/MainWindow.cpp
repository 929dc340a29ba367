#include "host/shell/core/MainWindow.h"

#include "host/shell/core/HomeText.h"
#include "host/shell/core/ShellCore.h"

namespace shell {

namespace {

// Elements of the home screen.
constexpr UINT kClock = 20, kDate = 21, kTile = 30, kLine = 31, kLeave = 32;
constexpr UINT_PTR kHomeTimer = 1;
constexpr UINT kHomeTick = 500; // ms

constexpr UINT kReturn = 13, kEscape = 27, kBlank = 32, kOkKey = 195;

} // namespace

MainWindow::MainWindow() {
    SetMessageResource(GetResourceName());
}

MainWindow::~MainWindow() = default;

const GMessageMap* MainWindow::GetMessageMap() const {
    return &messageMap;
}

void MainWindow::OnDraw(HDC dc) {
    DoPaint(dc);
}

void MainWindow::Locale() {
    GFactory::Locale();
    Refresh();
}

void MainWindow::Begin() {
    SetTimer(m_hWnd, kHomeTimer, kHomeTick, nullptr);
    Refresh();
}

void MainWindow::Say(UINT element, const WString& text) {
    GButton* found = Find(element);
    if (found && text != found->GetText()) {
        found->SetText(text.c_str(), 0);
    }
}

void MainWindow::Refresh() {
    const ShellCore& core = *ShellCore::Current();
    const LocalTime time = LocalTimeOf(CurrentTime());
    Say(kClock, FormatW(u"%d:%02d", time.hour, time.minute));
    const WString month = GetMessageW(static_cast<WORD>(kHomeMonth + time.month - 1));
    const WString weekday = GetMessageW(static_cast<WORD>(kHomeWeekday + WeekdayOf(time.year, time.month, time.day)));
    const WString day = FormatW(u"%d", time.day);
    Say(kDate, FillPattern(GetMessageW(kHomeDate), {{u"month", month}, {u"weekday", weekday}, {u"day", day}}));
    const WORD line =
        HomeLineFor(core.view != nullptr, core.view ? core.view->GetPlayMode() : 0, !core.lastTitle.empty());
    Say(kLine, FillPattern(GetMessageW(line), {{u"", core.lastTitle}}));
}

void MainWindow::OnTimer(UINT_PTR /*id*/) {
    Refresh();
    ShellCore::Current()->RefreshReason();
}

void MainWindow::OnKeyUp(UINT key, UINT /*repeatCount*/, UINT /*flags*/) {
    if (key == kReturn || key == kBlank || key == kOkKey) {
        OnTile();
    } else if (key == kEscape) {
        (void)ShellCore::Current()->boxes.Force(kDialogCancel);
    }
}

void MainWindow::OnTile() {
    (void)ShellCore::Current()->ShowView();
}

void MainWindow::OnLeave() {
    ShellCore::Current()->Quit();
}

void MainWindow::OnRestore() {
    ShellCore::Current()->Restore();
}

const GMessageMap MainWindow::messageMap = [] {
    static const GMessageEntry rows[] = {
        {kBoxMessage, 0, 0,
         [](GView* self, WPARAM textId, LPARAM style) -> LRESULT {
             auto* main = static_cast<MainWindow*>(self);
             const auto id = static_cast<WORD>(textId);
             ShellCore::Current()->boxes.Post(main, main->GetResourceName(), id, main->GetMessageW(id),
                                              static_cast<int>(style));
             return 0;
         }},
        {kCloseViewMessage, 0, 0,
         [](GView*, WPARAM, LPARAM) -> LRESULT {
             ShellCore::Current()->CloseView();
             return 0;
         }},
        GMap::OnCommand<&MainWindow::OnRestore>(kCommandFullSize),
        GMap::OnCommand<&MainWindow::OnTile>(kTile),
        GMap::OnCommand<&MainWindow::OnLeave>(kLeave),
        GMap::OnTimer<&MainWindow::OnTimer>(),
        GMap::OnKeyUp<&MainWindow::OnKeyUp>(),
    };
    return GMessageMap{&GView::messageMap, rows, 7};
}();

} // namespace shell
