#pragma once

#include "toolkit/control.h"
#include "toolkit/event_gate.h"
#include "toolkit/win32/win32_metrics.h"

#include <memory>

namespace quillmere {

/// One control as the system has it: shows the model and reports the user through the gate. All of a window's
/// controls are children of the window itself, those in a frame too.
class Win32ControlView : public ControlView {
 public:
    /// `handle` belongs to its parent.
    Win32ControlView(Control& control, HWND handle, EventGate& gate);
    /// The view of a child window that MakeControlView made; null for other windows.
    static Win32ControlView* Of(HWND child);
    /// Posted to a control for NextRound.
    static constexpr UINT nextRoundMessage = WM_APP;

    Control& Model() const { return control_; }
    HWND Handle() const { return handle_; }
    void Refresh(Aspect aspect) final;
    /// Takes its place and font.
    virtual void Fit(const Metrics& metrics);

    // What the window passes on.

    /// A notification that the control sent.
    virtual void Serve(WORD /*notification*/) {}
    /// A key pressed on the control. Returns whether it was served; else the system serves it.
    virtual bool ServeKey(WPARAM /*key*/) { return false; }
    virtual void NextRound() {}
    virtual void Draw(const DRAWITEMSTRUCT& /*drawing*/) {}
    virtual void NoteFocus(bool /*gained*/) {}
    /// The Tab key has brought the focus here.
    virtual void NoteTab() {}

 protected:
    virtual void ShowCaption();
    /// The aspects that only some kinds have.
    virtual void ShowState(Aspect /*aspect*/) {}
    /// Tells the model what the user did; then the control shows `aspect` as the model has it, whatever came
    /// of it.
    template <class Act>
    void ByUser(Aspect aspect, Act act) {
        gate_.Pass([&] {
            act();
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
};

/// Makes the system's control for `control`, a child of `parent` behind those made before, and shows the
/// model in it. It has no place yet.
std::unique_ptr<Win32ControlView> MakeControlView(Control& control, HWND parent, EventGate& gate);

}  // namespace quillmere
