#pragma once

#include "toolkit/control.h"
#include "toolkit/event_gate.h"
#include "toolkit/win32/win32_hint.h"
#include "toolkit/win32/win32_metrics.h"

#include <memory>

namespace quillmere {

/// Shows one control in a child window and passes its events to the control through the gate. All controls
/// are children of the window itself, including those in a frame.
class Win32ControlView : public ControlView {
 public:
    /// The parent of `handle` owns it.
    Win32ControlView(Control& control, HWND handle, EventGate& gate);
    /// The view that shows its control in `child`; null for a child without a view.
    static Win32ControlView* Of(HWND child);
    /// When it arrives at the child window, NextRound is called.
    static constexpr UINT nextRoundMessage = WM_APP;

    /// As the kind of control that it is.
    template <class Kind = Control>
    Kind& Model() const {
        return static_cast<Kind&>(control_);
    }
    HWND Handle() const { return handle_; }
    void Refresh(Aspect aspect) final;
    /// Sets place, size and font.
    virtual void Fit(const Metrics& metrics);

    // Called by the window.

    /// The child window has sent this notification.
    virtual void Serve(WORD /*notification*/) {}
    /// A key was pressed on the control, or is held and repeats. Returns whether it has been handled; if not,
    /// Windows handles it.
    virtual bool ServeKey(WPARAM /*key*/, bool /*repeats*/) { return false; }
    virtual void NextRound() {}
    virtual void Draw(const DRAWITEMSTRUCT& /*drawing*/) {}
    virtual void NoteFocus(bool /*gained*/) {}
    /// The Tab key has moved the focus here.
    virtual void NoteTab() {}

 protected:
    virtual void ShowCaption();
    /// Shows one of the aspects that only some kinds of control have.
    virtual void ShowState(Aspect /*aspect*/) {}
    /// Calls `event`, which reports an event to the control; then shows `aspect` of the control, since the
    /// event may have changed only the child window.
    template <class Event>
    void Report(Aspect aspect, Event event) {
        gate_.Pass([&] {
            event();
            if (gate_.IsOpen()) Refresh(aspect);
        });
    }
    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(handle_, message, wParam, lParam);
    }

 private:
    Control& control_;
    HWND handle_;
    EventGate& gate_;
    Win32Hint hint_{handle_};
};

/// Makes the child window of `parent` that shows `control`, after those made before in the Z order. Fit has
/// to be called next.
std::unique_ptr<Win32ControlView> MakeControlView(Control& control, HWND parent, EventGate& gate);

}  // namespace quillmere
