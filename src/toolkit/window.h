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

/// A backend's side of one window. Owned by the backend.
class WindowView {
 public:
    virtual ~WindowView() = default;
    virtual void RefreshCaption() = 0;
};

/// A window of fixed size: a class derived from this one declares its controls, menus and timers as members.
/// All windows have a title bar with a close box and neither minimize nor maximize button. A window is closed
/// before it is destroyed, unless its backend went first.
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

    /// Loads the window and shows it beside the others; returns at once.
    void Show();
    /// Loads the window, shows it, shuts the other windows out, and returns when it is closed.
    void ShowModal();
    /// Unloads the window as its close box does: Unload may forbid it. Does nothing when the window is not
    /// shown.
    void Close();
    bool IsShown() const { return shown_; }
    /// Whether the window is shown and no modal window shuts it out.
    bool TakesInput() const;

    // What the window does at the turns of its life.
    virtual void Load() {}
    /// Returns whether the window may close.
    virtual bool Unload() { return true; }
    /// The window is no longer the active one of the program or of the system.
    virtual void Deactivate() {}

    // Doors.
    void UserCloses();
    void UserDeactivates();
    /// Alt and a letter. The first enabled control with that key, searched from behind the focused one, does
    /// what its kind does at a click; returns the menu to open when no control has the key; null when there
    /// is neither.
    Menu* UserPressesAccessKey(char key);
    /// Escape: presses the button that was named for it. Returns whether there is one.
    bool UserPressesEscape();
    /// Whether UserPressesAccessKey would do anything.
    bool HasAccessKey(char key) const;
    /// Tab, or Shift+Tab: gives the focus to the next tab stop, around the end, and returns it for the
    /// backend to do the same; null when no control can have the focus now.
    Control* UserPressesTab(bool backwards);

    const std::string& Name() const { return name_; }
    const std::string& Caption() const { return caption_; }
    void SetCaption(std::string_view caption);
    int Width() const { return width_; }
    int Height() const { return height_; }
    Border BorderStyle() const { return border_; }
    /// In the order in which they were declared; a frame stands before what it holds.
    const std::vector<Control*>& Controls() const { return controls_; }
    const std::vector<Menu*>& Menus() const { return menus_; }
    const std::vector<Timer*>& Timers() const { return timers_; }
    Control* Focused() const { return focused_; }

    Window& OwnerWindow() override { return *this; }
    const Window& OwnerWindow() const override { return *this; }
    Control* AsControl() override { return nullptr; }

    /// The backend's; the handle is 0 and the view null while the window is not loaded.
    void SetView(WindowView* view, WindowHandle handle);
    WindowHandle Handle() const { return handle_; }

 protected:
    Backend& OwnerBackend() const { return backend_; }
    /// Sets the focus order, which is otherwise the order in which the controls that take the focus were
    /// declared. Controls that are not in `controls` cannot have the focus.
    void SetTabOrder(std::initializer_list<Control*> controls) { tabOrder_ = controls; }
    /// The button that Escape presses.
    void SetCancelButton(PushButton& button) { cancelButton_ = &button; }

 private:
    friend class Control;
    friend class Menu;
    friend class Timer;

    void LoadAndFocus();
    void GiveFocus(Control& control);
    Control* NextTabStop(const Control* control, bool backwards = false) const;
    Control* ControlWithKey(char key) const;

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
    Control* focused_ = nullptr;
    bool shown_ = false;
    WindowView* view_ = nullptr;
    WindowHandle handle_ = 0;
};

}  // namespace quillmere
