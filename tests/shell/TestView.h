// A player view that writes down what the shell does with it.
#pragma once

#include "platform/velshell/VelDocument.h"
#include "platform/velshell/VelPlayerView.h"

#include <functional>
#include <string>
#include <vector>

class TestView final : public CVelPlayerView {
public:
    TestView() { Live() = this; }
    ~TestView() override {
        Calls().push_back("~");
        Live() = nullptr;
    }

    // What happened to the views of this copy of the class, in order, and the view that lives.
    static std::vector<std::string>& Calls() {
        static std::vector<std::string> calls;
        return calls;
    }
    static TestView*& Live() {
        static TestView* live = nullptr;
        return live;
    }

    const GRuntimeClass* GetRuntimeClass() const override { return &classTestView; }
    const GMessageMap* GetMessageMap() const override { return &messageMap; }
    const WCHAR* GetResourceName() const override { return u"VelDMB"; }
    const WCHAR* GetAlias() const override { return u"Test"; }
    void Theme() override {
        Calls().push_back("Theme");
        CVelPlayerView::Theme();
    }
    void LoadProfile() override { Calls().push_back("LoadProfile"); }
    void SaveProfile() override { Calls().push_back("SaveProfile"); }
    void HoldForBackView(int hold) override {
        Calls().push_back("HoldForBackView " + std::to_string(hold) + (IsActivated() ? " active" : ""));
    }
    void Active() override { Calls().push_back("Active"); }
    void Deactive() override { Calls().push_back("Deactive"); }
    void Destroy() override {
        Calls().push_back("Destroy");
        CVelPlayerView::Destroy();
    }
    void ReleaseInterface(int argument) override {
        Calls().push_back("ReleaseInterface " + std::to_string(argument));
        CVelPlayerView::ReleaseInterface(argument);
    }
    int IsClosable() override { return closable; }
    int OnPreClick(UINT id) override { return static_cast<int>(id == refused); }
    void OnDraw(HDC dc) override {
        CVelPlayerView::OnDraw(dc);
        ++paints;
        if (onDraw) {
            onDraw(dc);
        }
    }
    int AllowFileList(const WCHAR* path) override {
        const int type = GetDocument()->CheckFileType(path);
        return (type == kFileTypeDMB || type == kFileTypeTS) && path != refusedFile ? type : 0;
    }
    void TransferToPIP() override {
        Calls().push_back("TransferToPIP");
        CVelPlayerView::TransferToPIP();
    }
    void MoveToPIPWindow(const RECT* from, const RECT* to) override {
        Calls().push_back("MoveToPIPWindow");
        CVelPlayerView::MoveToPIPWindow(from, to);
    }
    void RestoreFromPIP(const RECT* rect) override {
        Calls().push_back(rect == &m_rcPIP ? "RestoreFromPIP own" : "RestoreFromPIP other");
        CVelPlayerView::RestoreFromPIP(rect);
    }

    int OnCreate(CREATESTRUCTW* parameters) {
        Calls().push_back("OnCreate");
        return CVelPlayerView::OnCreate(parameters) == -1 || RefuseCreate() ? -1 : 0;
    }
    static bool& RefuseCreate() {
        static bool refuse = false;
        return refuse;
    }
    void OnCmdPreload() {
        Calls().push_back("Preload");
        CVelPlayerView::OnCmdPreload();
    }
    void OnCommand(UINT id) {
        Calls().push_back("command " + std::to_string(id));
        if (onCommand) {
            onCommand(id);
        }
    }
    void OnTimer(UINT_PTR id) {
        Calls().push_back("timer " + std::to_string(id));
        CVelPlayerView::OnTimer(id);
    }
    LRESULT OnUser(WPARAM wParam, LPARAM) { return static_cast<LRESULT>(wParam) + 1; }

    IGraphBuilder*& Graph() { return m_pGraph; }
    IMediaControl* Control() { return m_pControl; }
    RECT& SmallPlace() { return m_rcPIP; }
    using CVelPlayerView::GetBarElement;

    UINT refused = 0;
    WString refusedFile;
    int closable = 1;
    int paints = 0;
    std::function<void(UINT)> onCommand;
    std::function<void(HDC)> onDraw;

    static GObject* CreateObject() { return new TestView; }
    inline static const GRuntimeClass classTestView = {"TestView", &TestView::CreateObject,
                                                       &CVelPlayerView::classCVelPlayerView};
    static const GMessageMap& Map() {
        static const GMessageEntry rows[] = {
            GMap::OnCreate<&TestView::OnCreate>(),
            GMap::OnCommand<&TestView::OnCmdPreload>(64954),
            GMap::OnCommandRange<&TestView::OnCommand>(20, 25),
            GMap::OnTimer<&TestView::OnTimer>(),
            GMap::OnMessage<&TestView::OnUser>(WM_USER + 100),
        };
        static const GMessageMap map = {&CVelPlayerView::messageMap, rows, 5};
        return map;
    }
    inline static const GMessageMap& messageMap = Map();
};
