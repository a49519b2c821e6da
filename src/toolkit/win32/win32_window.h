#pragma once

#include "toolkit/win32/win32_controls.h"
#include "toolkit/win32/win32_prompts.h"
#include "toolkit/window.h"

#include <shellapi.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace quillmere {

/// The system window that shows `model`, with its child windows, menus and running timers. Sets the views of
/// the controls; that of the window itself is set by the backend.
class Win32Window final : public WindowView {
 public:
    /// Hidden. `model` is not used after LetGo, nor by the destructor. While one of `prompts` is open, the
    /// window does not count as deactivated.
    Win32Window(Window& model, const Win32Prompts& prompts);
    ~Win32Window() override;
    Win32Window(const Win32Window&) = delete;
    Win32Window& operator=(const Win32Window&) = delete;

    HWND Handle() const { return handle_.get(); }
    /// Shows and activates the window: centered on `owner` and always in front of it, or, if that is null,
    /// where Windows puts new windows.
    void Show(HWND owner);
    /// Hides the window and clears the views of the controls. `whenIdle` is called as soon as
    /// no event of the window is being handled. The object may be destroyed when the messages that are being
    /// handled then are done, too.
    void LetGo(std::function<void()> whenIdle);

    void RefreshCaption() override;
    void RefreshCheckMark(const MenuItem& item) override;

 private:
    static LRESULT CALLBACK WindowProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK ControlProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam,
                                             UINT_PTR id, DWORD_PTR window);
    static ATOM WindowClass();

    // Construction.
    void MakeControls();
    void MakeMenus();
    void MakeMenu(HMENU bar, Menu& menu);
    void StartTimers();
    void TakeFiles();

    // Size and place.
    SIZE ClientSize(const Metrics& metrics) const;  ///< in pixels
    SIZE OuterSize(const Metrics& metrics) const;   ///< with frame, title bar and a menu bar of one line
    void Resize(SIZE size);
    void FitContents();
    void MoveToMiddleOf(HWND owner);

    // One function for each message.
    LRESULT Serve(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT ServeCommand(WORD code, WORD id, HWND control);
    LRESULT ServeDrawItem(const DRAWITEMSTRUCT& drawing);
    LRESULT ServeGetDpiScaledSize(UINT dpi, SIZE& size);
    LRESULT ServeDpiChanged(UINT dpi, const RECT& suggested);
    LRESULT ServeTimer(UINT_PTR id);
    LRESULT ServeClose();
    LRESULT ServeQueryEndSession();
    LRESULT ServeEndSession(bool ends);
    LRESULT ServeSetFocus();
    LRESULT ServeDropFiles(HDROP drop);
    void NoteActivation(WORD state);
    LRESULT ReportDeactivation();
    bool ServesSetCursor(HWND control);
    bool ServesControlColor(HDC drawing, HWND control);

    LRESULT ServeControl(Win32ControlView& view, UINT message, WPARAM wParam, LPARAM lParam);
    bool ServesControlMessage(Win32ControlView& view, UINT message, WPARAM wParam, LPARAM lParam);

    // Keys pressed on the window itself or on one of its controls.
    bool ServesKey(UINT message, WPARAM wParam, LPARAM lParam);
    bool ServesKeyDown(WPARAM key);
    bool ServesAccessKey(WPARAM character, LPARAM details);
    bool ServesEscape();
    void MoveFocus(bool backwards);
    void PressAccessKey(char key);
    void ShowKeyboardCues();

    Window& model_;
    const Win32Prompts& prompts_;
    EventGate gate_;
    UniqueWindow handle_;
    Metrics metrics_;
    std::map<const Control*, std::unique_ptr<Win32ControlView>> views_;
    std::vector<MenuItem*> items_;  ///< of all menus; the command of an item is firstCommand + its index
    bool deactivated_ = false;      ///< and ReportDeactivation is still to come
};

}  // namespace quillmere
