// The base of every player view of the shell.
//
// Virtual operations stand in the order of their slots; a test compares them with the compiler's own listing. "The view" is the
// derived class in a module. All calls are made on the window thread.
#pragma once

#include "platform/types.h"
#include "platform/velshell/GEngine.h"
#include "platform/velshell/GWorkspace.h"

struct IBasicAudio;
struct IGraphBuilder;
struct IMediaControl;
struct IMediaEventEx;
struct IMediaSeeking;
struct IVideoWindow;

// Play modes of a view.
enum VelPlayMode : int {
    kPlayModeStopped = 2,
    kPlayModePlaying = 4,
    kPlayModePaused = 5,
    kPlayModeRecording = 8,
};

// Box styles of MsgBox and of the posted message box request.
enum VelBoxStyle : int {
    kBoxOkCancel = 1, // asks; 1 is OK, anything else is not
    kBoxNotice = 2,   // closes by itself
    kBoxError = 3,    // closes with OK
};

// Answers of MsgBox.
enum VelBoxAnswer : int { kAnswerOk = 1, kAnswerCancel = 2 };

// Is the memory card present and usable?
[[nodiscard]] DMB_HOST_API int IsAccessableSDMMC();

// What every view of the shell has: its place, its title, its life, its small form.
class DMB_HOST_API CVelBaseView : public GView, public GFactory, public GMessage {
public:
    const GRuntimeClass* GetRuntimeClass() const override;
    ~CVelBaseView() override;
    const GMessageMap* GetMessageMap() const override;
    void OnDraw(HDC dc) override;

    // Display name of the view for menus and the title bar.
    [[nodiscard]] virtual const WCHAR* GetAlias() const;
    // May the user close the view now?
    virtual int IsClosable();
    // Is the view deleted when it is closed?
    virtual int IsVolatile();
    // Takes the view down before it is deleted: calls ReleaseInterface(0), then lets go of every graph interface.
    virtual void Destroy();
    virtual void Active();
    virtual void Deactive();
    // hold non-zero: another view comes to the front; zero: this view is back.
    virtual void HoldForBackView(int hold);
    // A null text clears.
    virtual void SetTitle(const WCHAR* title);
    virtual void SetFMTStatus(int status);
    virtual void SetAudioLevel(int level);

    // May the view become a small window of the given rectangle?
    virtual int CanMinimize(const RECT* rect);
    // The view becomes small, moves while small, and returns to full size.
    virtual void TransferToPIP();
    virtual void MoveToPIPWindow(const RECT* oldRect, const RECT* newRect);
    virtual void RestoreFromPIP(const RECT* rect);
    // The stored small rectangle (the object itself) and its reset to the shell's default place.
    virtual const RECT* GetPIPRect();
    virtual void ResetPIPosition();

    [[nodiscard]] int IsActivated() const;
    // Switches a button between its normal (0) and its alternative (1) face.
    void SwapPIPButton(GButton* button, int alternative, int redraw);
    // Asks the shell to close this view.
    void OnCloseView();
    // Shows a text of this view's table in a modal message box; 1 is OK.
    int MsgBox(WORD textId, int style);
    // Close an open message box with OK or Cancel; non-zero when there was one.
    int ForceIDOKtoMsgBox();
    int ForceIDCancelToMsgBox();
    // Period after which the controls hide by themselves, in ms, and its restart.
    [[nodiscard]] UINT GetMenuTimeout() const;
    void ResetMenuTimeout(UINT milliseconds);

    static const GRuntimeClass classCVelBaseView;
    static const GMessageMap messageMap;
    struct BaseImpl;

protected:
    CVelBaseView();
    int OnCreate(CREATESTRUCTW* parameters);
    void OnKeyUp(UINT key, UINT repeatCount, UINT flags);

    RECT m_rcPIP = {};        // stored small rectangle: left, top, right, bottom
    LONG m_bProfileDirty = 0; // settings differ from the stored profile
    BaseImpl* m_pBase = nullptr;
    friend class VelShellAccess;
};

// A view with a tool bar and a title.
class DMB_HOST_API CVelToolView : public CVelBaseView {
public:
    const GRuntimeClass* GetRuntimeClass() const override;
    ~CVelToolView() override;
    const GMessageMap* GetMessageMap() const override;

    virtual void ShowControls(int show, int redraw);
    // Enables the button that switches the source of the view.
    virtual void EnableToggle(int enable);
    virtual int IsTitleVisibled();
    virtual int IsToolVisibled();

    [[nodiscard]] int IsToggleEnabled() const;

    static const GRuntimeClass classCVelToolView;
    static const GMessageMap messageMap;

protected:
    CVelToolView();
    // Ids of the two bar elements that ShowControls repaints (title bar, tool bar).
    [[nodiscard]] const GButton* GetBarElement(int index) const;
};

// A view that plays through a filter graph.
class DMB_HOST_API CVelPlayerView : public CVelToolView {
public:
    const GRuntimeClass* GetRuntimeClass() const override;
    ~CVelPlayerView() override;
    const GMessageMap* GetMessageMap() const override;
    void OnDraw(HDC dc) override;
    void Destroy() override;

    // Does this view play the file? Returns its type, or 0.
    virtual int AllowFileList(const WCHAR* path);
    // Queries control, event, video window and the two further interfaces from m_pGraph and binds the events to the window.
    virtual int ConnectInterface();
    // Lets go of the event interface and of what is left of the others; the graph builder stays.
    virtual void ReleaseInterface(int argument);
    virtual void MoveVideoWindow(const RECT* rect);
    virtual void Play();
    virtual void Pause();
    virtual int Stop();
    virtual void Jump(int milliseconds);
    virtual void Resume();
    virtual void ForceMute(int mute);
    // Read and write the view's settings file.
    virtual void LoadProfile();
    virtual void SaveProfile();

    [[nodiscard]] int GetPlayMode() const;
    void SetPlayMode(int mode);
    [[nodiscard]] int IsPreserveAspectRatio() const;
    void SetPreserveAspectRatio(int preserve);

    static const GRuntimeClass classCVelPlayerView;
    static const GMessageMap messageMap;
    struct PlayerImpl;

protected:
    CVelPlayerView();
    int OnCreate(CREATESTRUCTW* parameters);
    void OnTimer(UINT_PTR id);
    void OnCmdPreload();

    IGraphBuilder* m_pGraph = nullptr;
    IMediaEventEx* m_pEvent = nullptr;
    IMediaControl* m_pControl = nullptr;
    IVideoWindow* m_pVideoWindow = nullptr;
    IMediaSeeking* m_pSeeking = nullptr;
    IBasicAudio* m_pAudio = nullptr;
    PlayerImpl* m_pPlayer = nullptr;
    friend class VelShellAccess;
};
