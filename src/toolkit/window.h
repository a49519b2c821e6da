#pragma once

#include "system/system_calls.h"
#include "toolkit/control.h"
#include "toolkit/menu.h"
#include "toolkit/timer.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

class Backend;

/// What shows one window on a backend, which owns it.
class WindowView {
 public:
    virtual ~WindowView() = default;
    virtual void RefreshCaption() = 0;
    virtual void RefreshCheckMark(const MenuItem& item) = 0;
};

/// A window of fixed size, whose title bar has a close box but no minimize or maximize button. A derived
/// class declares the controls, menus and timers as members. A window has to be closed before it is
/// destroyed, unless its backend is gone.
class Window : public Container {
 public:
    enum class Border {
        FixedSingle,
        FixedDialog  ///< and not shown in the taskbar
    };
    /// `width` and `height` are those of the client area, in twips, without title bar and menu bar.
    Window(Backend& backend, std::string name, std::string caption, int width, int height,
           Border border = Border::FixedSingle);
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Loads and shows the window. Returns at once.
    void Show();
    /// Loads and shows the window, which blocks all others, and returns when it is closed.
    void ShowModal();
    /// Unloads the window as its close box does, unless Unload forbids it. Does nothing when the window is
    /// not shown.
    void Close();
    bool IsShown() const { return shown_; }
    /// Whether the window is shown and no modal window blocks it.
    bool TakesInput() const;

    /// Called when the views are set, before the window is visible.
    virtual void Load() {}
    /// Called before the window closes. Returns whether it may.
    virtual bool Unload() { return true; }
    /// Called when another window has become the active one, of this program or another.
    virtual void Deactivate() {}
    /// Called when the user logs off or shuts the system down. Returns what the user should decide first;
    /// empty when the session may end. A modal window above this one makes no difference.
    virtual std::string ReasonAgainstSessionEnd() const { return {}; }
    /// Called when the session ends, whatever reasons there were. The system ends the program soon after.
    virtual void SessionEnds() {}
    /// Called with the full paths of the files that the user has dropped on the window, if it takes files.
    virtual void FilesDropped(const std::vector<std::string>& /*paths*/) {}

    /// Whether the access key of that control, which is enabled, leads to it now. If not, the key is left to
    /// others and to the menus.
    virtual bool TakesAccessKey(const Control& /*control*/) const { return true; }

    // Events.

    void UserCloses();
    void UserDeactivates();
    void UserDropsFiles(const std::vector<std::string>& paths);
    /// Alt and a letter or digit. Focuses and clicks the next enabled control with that access key, after the
    /// focused one and around the end. If there is none, returns the menu to open, or null.
    Menu* UserPressesAccessKey(char key);
    /// Whether a control or menu has that access key.
    bool HasAccessKey(char key) const;
    /// Clicks the cancel button. Returns whether there is one.
    bool UserPressesEscape();
    /// Tab, or Shift+Tab: gives the focus to the next control in the focus order, around the end. Returns
    /// that control, for the backend to give it the focus too; null when there is none.
    Control* UserPressesTab(bool backwards);

    const std::string& Name() const { return name_; }
    const std::string& Caption() const { return caption_; }
    void SetCaption(std::string_view caption);
    int Width() const { return width_; }
    int Height() const { return height_; }
    Border BorderStyle() const { return border_; }
    bool TakesFiles() const { return takesFiles_; }
    /// In the order in which they were declared, so a frame comes before what it holds.
    const std::vector<Control*>& Controls() const { return controls_; }
    const std::vector<Menu*>& Menus() const { return menus_; }
    const std::vector<Timer*>& Timers() const { return timers_; }
    Control* Focused() const { return focused_; }

    Window& OwnerWindow() override { return *this; }
    const Window& OwnerWindow() const override { return *this; }
    Control* AsControl() override { return nullptr; }

    /// Called by the backend; the view is null and the handle 0 while the window is not loaded.
    void SetView(WindowView* view, WindowHandle handle);
    WindowHandle Handle() const { return handle_; }

 protected:
    Backend& OwnerBackend() const { return backend_; }
    /// Sets the focus order, in which Tab moves; the first enabled control has the focus when the window
    /// opens. Without a call it is the order in which the controls were declared. A control left out cannot
    /// have the focus.
    void SetTabOrder(std::initializer_list<Control*> controls) { tabOrder_ = controls; }
    /// The button that Escape presses.
    void SetCancelButton(PushButton& button) { cancelButton_ = &button; }
    /// The window takes files that are dropped on it. To be called before it is shown.
    void SetTakesFiles() { takesFiles_ = true; }

 private:
    friend class Control;
    friend class Menu;
    friend class MenuItem;
    friend class Timer;

    void LoadAndFocus();
    void GiveFocus(Control& control);
    Control* NextTabStop(const Control* control, bool backwards = false) const;
    Control* ControlWithKey(char key) const;
    Menu* MenuWithKey(char key) const;

    Backend& backend_;
    std::string name_;
    std::string caption_;
    int width_;
    int height_;
    Border border_;
    std::vector<Control*> controls_;
    std::vector<Menu*> menus_;
    std::vector<Timer*> timers_;
    std::vector<Control*> tabOrder_;
    PushButton* cancelButton_ = nullptr;
    bool takesFiles_ = false;
    Control* focused_ = nullptr;
    bool shown_ = false;
    WindowView* view_ = nullptr;
    WindowHandle handle_ = 0;
};

}  // namespace quillmere
