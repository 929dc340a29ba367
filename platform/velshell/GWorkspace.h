// The shell's window framework: run-time classes, message maps, windows and localised texts.
//
// The shell owns every window and the one message loop. A module derives from these classes, answers messages through its
// map and lets everything else fall through to the base. All calls are made on the window thread.
#pragma once

#include "platform/types.h"
#include "platform/wince.h"

class CVelDocument;
class GObject;
class GView;
#ifndef _WIN32
// What a window is made with; handlers hand it to their base and look at nothing else.
struct CREATESTRUCTW {
    LONG x, y, cx, cy;
};
#endif

// ---- Run-time classes -------------------------------------------------------------------------------------------------

// Names a class so that the shell can create it without knowing it. One constant object per class, alive while its library is.
struct GRuntimeClass {
    const char* className;          // "CVelDMBView"
    GObject* (*createObject)();     // null when the class cannot be created by name
    const GRuntimeClass* baseClass; // null for GObject
};

// A loaded module's classes. The module announces one such record when it is loaded and withdraws it when it is unloaded; the
// record must outlive the registration.
struct GExtensionLibrary {
    const WCHAR* name;
    const GRuntimeClass* const* classes;
    UINT classCount;
};

// Announces or withdraws a library. Announcing twice and withdrawing an unknown library have no effect.
DMB_HOST_API void GRegisterExtension(const GExtensionLibrary* library);
DMB_HOST_API void GWithdrawExtension(const GExtensionLibrary* library);

// Root of all classes with run-time class information.
class DMB_HOST_API GObject {
public:
    virtual const GRuntimeClass* GetRuntimeClass() const;
    virtual ~GObject();

    // True when the object's class is, or derives from, the given one (compared by record, not by name).
    [[nodiscard]] bool IsKindOf(const GRuntimeClass* runtimeClass) const;

    GObject(const GObject&) = delete;
    GObject& operator=(const GObject&) = delete;

    static const GRuntimeClass classGObject;

protected:
    GObject() = default;
};

// ---- Message maps -----------------------------------------------------------------------------------------------------

// One row of a message map. A WM_COMMAND row names a range of command ids; every other row matches its message alone.
struct GMessageEntry {
    UINT message;
    UINT firstId;
    UINT lastId;
    LRESULT (*invoke)(GView* self, WPARAM wParam, LPARAM lParam);
};

// Rows in the order in which they are tried; then the base's rows.
struct GMessageMap {
    const GMessageMap* base;
    const GMessageEntry* entries;
    UINT count;
};

namespace GMap {

// Splits a member-function pointer into its class and its function type.
template <typename Member> struct MemberOf;
template <typename Class, typename Result, typename... Args> struct MemberOf<Result (Class::*)(Args...)> {
    using ClassType = Class;
};

template <auto Handler> using ClassOf = typename MemberOf<decltype(Handler)>::ClassType;

// A handler (WPARAM, LPARAM) -> LRESULT for one message.
template <auto Handler> constexpr GMessageEntry OnMessage(UINT message) {
    return {message, 0, 0, [](GView* self, WPARAM wParam, LPARAM lParam) -> LRESULT {
                return (static_cast<ClassOf<Handler>*>(self)->*Handler)(wParam, lParam);
            }};
}

// A handler () for one command id.
template <auto Handler> constexpr GMessageEntry OnCommand(UINT id) {
    return {WM_COMMAND, id, id, [](GView* self, WPARAM, LPARAM) -> LRESULT {
                (static_cast<ClassOf<Handler>*>(self)->*Handler)();
                return 0;
            }};
}

// A handler (UINT id) for a range of command ids.
template <auto Handler> constexpr GMessageEntry OnCommandRange(UINT firstId, UINT lastId) {
    return {WM_COMMAND, firstId, lastId, [](GView* self, WPARAM wParam, LPARAM) -> LRESULT {
                (static_cast<ClassOf<Handler>*>(self)->*Handler)(static_cast<UINT>(wParam & 0xFFFF));
                return 0;
            }};
}

// WM_CREATE: a handler (CREATESTRUCTW*) -> int; -1 refuses the window.
template <auto Handler> constexpr GMessageEntry OnCreate() {
    return {WM_CREATE, 0, 0, [](GView* self, WPARAM, LPARAM lParam) -> LRESULT {
                auto* parameters = reinterpret_cast<CREATESTRUCTW*>(lParam);
                return (static_cast<ClassOf<Handler>*>(self)->*Handler)(parameters);
            }};
}

// WM_TIMER: a handler (UINT_PTR id).
template <auto Handler> constexpr GMessageEntry OnTimer() {
    return {WM_TIMER, 0, 0, [](GView* self, WPARAM wParam, LPARAM) -> LRESULT {
                (static_cast<ClassOf<Handler>*>(self)->*Handler)(static_cast<UINT_PTR>(wParam));
                return 0;
            }};
}

// WM_KEYUP: a handler (UINT key, UINT repeatCount, UINT flags).
template <auto Handler> constexpr GMessageEntry OnKeyUp() {
    return {WM_KEYUP, 0, 0, [](GView* self, WPARAM wParam, LPARAM lParam) -> LRESULT {
                (static_cast<ClassOf<Handler>*>(self)->*Handler)(static_cast<UINT>(wParam),
                                                                 static_cast<UINT>(lParam & 0xFFFF),
                                                                 static_cast<UINT>((lParam >> 16) & 0xFFFF));
                return 0;
            }};
}

// WM_LBUTTONDOWN: a handler (UINT flags, POINT point), point in client coordinates.
template <auto Handler> constexpr GMessageEntry OnLButtonDown() {
    return {WM_LBUTTONDOWN, 0, 0, [](GView* self, WPARAM wParam, LPARAM lParam) -> LRESULT {
                const POINT point = {static_cast<SHORT>(lParam & 0xFFFF), static_cast<SHORT>((lParam >> 16) & 0xFFFF)};
                (static_cast<ClassOf<Handler>*>(self)->*Handler)(static_cast<UINT>(wParam), point);
                return 0;
            }};
}

} // namespace GMap

// ---- Windows ----------------------------------------------------------------------------------------------------------

// A window of the shell. The shell creates the native window and routes its messages through GetMessageMap; what no row
// takes goes to the shell's own default handling.
class DMB_HOST_API GView : public GObject {
public:
    const GRuntimeClass* GetRuntimeClass() const override;
    ~GView() override;
    virtual const GMessageMap* GetMessageMap() const;
    // Paints the window's surface; the context is clipped to the invalid area.
    virtual void OnDraw(HDC dc);

    // The native window; null before creation and after destruction.
    [[nodiscard]] HWND GetSafeHwnd() const { return m_hWnd; }
    // The shell's one document.
    [[nodiscard]] CVelDocument* GetDocument() const;
    // Puts the window at the top of the window order without moving, sizing or activating it.
    void BringToTop();

    // The shell's top-level window, and its rectangle on the screen.
    [[nodiscard]] static HWND GetMainWindow();
    [[nodiscard]] static RECT GetMainWindowRect();
    // The window in front: a dialog while one is open, else the active view.
    [[nodiscard]] static HWND GetFrontWindow();

    static const GRuntimeClass classGView;
    static const GMessageMap messageMap;

protected:
    GView();

    // Default handling of what a derived class may take and pass on.
    int OnCreate(CREATESTRUCTW* parameters);
    void OnTimer(UINT_PTR id);
    void OnKeyUp(UINT key, UINT repeatCount, UINT flags);
    void OnLButtonDown(UINT flags, POINT point);

    HWND m_hWnd = nullptr;

private:
    friend class VelShellAccess;
};

// ---- Localised texts --------------------------------------------------------------------------------------------------

// The message-text facet: numbered texts in the user's language. Each resource (a view, a dialog, the main window) has its own
// table, so the same number means different texts in different tables.
class DMB_HOST_API GMessage {
public:
    GMessage();
    virtual ~GMessage();

    // The text with this number, or an empty text. Valid for the life of the facet.
    [[nodiscard]] virtual const WCHAR* GetMessageW(WORD id) const;

    // Widens broadcast or file text in the device's code page. byteCount is the number of bytes (the text need not be
    // terminated and ends at its first zero byte); flags is 0. A broken lead byte becomes a replacement character.
    [[nodiscard]] static WString atou(const char* text, int byteCount, int flags);

    GMessage(const GMessage&) = delete;
    GMessage& operator=(const GMessage&) = delete;

protected:
    // Chooses the table; called by the framework once the resource name is known.
    void SetMessageResource(const WCHAR* resourceName);

private:
    WString m_strMessageResource;
};
