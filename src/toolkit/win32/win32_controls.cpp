#include "toolkit/win32/win32_controls.h"

#include "system/windows_wide_text.h"
#include "toolkit/access_key.h"
#include "toolkit/win32/win32_picture.h"
#include "toolkit/window.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace quillmere {

namespace {

/// What CreateWindowEx makes a control from.
struct NativeKind {
    const wchar_t* className;
    DWORD style;
    DWORD extendedStyle = 0;
};

HWND MakeChild(HWND parent, const NativeKind& kind, const wchar_t* text) {
    return CreateWindowExW(kind.extendedStyle, kind.className, text, kind.style | WS_CHILD, 0, 0, 0, 0,
                           parent, nullptr, GetModuleHandleW(nullptr), nullptr);
}

HWND MakeNative(const Control& control, HWND parent, NativeKind kind) {
    kind.style |= WS_VISIBLE;
    if (control.CanHaveFocus()) kind.style |= WS_TABSTOP;
    return MakeChild(parent, kind, L"");
}

/// For controls without a caption. Screen readers call them by the label right before them in the Z order, so
/// a hidden label is made unless the window has one there.
HWND MakeNamedNative(const Control& control, HWND parent, const NativeKind& kind) {
    const auto& controls = control.OwnerWindow().Controls();
    const std::string name = control.AccessibleName();
    const auto self = std::ranges::find(controls, &control);
    const bool named = self != controls.begin() && (*(self - 1))->Caption() == name;
    if (!named) MakeChild(parent, {L"STATIC", SS_LEFT}, WideFromUtf8(name).c_str());
    return MakeNative(control, parent, kind);
}

std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

}  // namespace

Win32ControlView* Win32ControlView::Of(HWND child) {
    return reinterpret_cast<Win32ControlView*>(GetWindowLongPtrW(child, GWLP_USERDATA));
}

Win32ControlView::Win32ControlView(Control& control, HWND handle, EventGate& gate)
    : control_(control), handle_(handle), gate_(gate) {
    SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

void Win32ControlView::Refresh(Aspect aspect) {
    const EventGate::ProgramChange change(gate_);
    switch (aspect) {
        case Aspect::Caption:
            return ShowCaption();
        case Aspect::Enabled:
            EnableWindow(handle_, control_.Enabled() ? TRUE : FALSE);
            return;
        case Aspect::Focus:
            // In a window that is not active this would activate it. It sets the focus when it is activated.
            if (control_.HasFocus() && GetActiveWindow() == GetParent(handle_)) ::SetFocus(handle_);
            return;
        default:
            return ShowState(aspect);
    }
}

void Win32ControlView::ShowCaption() {
    SetWindowTextW(handle_, WideFromUtf8(control_.Caption()).c_str());
}

void Win32ControlView::Fit(const Metrics& metrics) {
    Twips place = control_.Place();
    for (const Control* frame = control_.Parent().AsControl(); frame != nullptr;
         frame = frame->Parent().AsControl()) {
        place.left += frame->Place().left;
        place.top += frame->Place().top;
    }
    Send(WM_SETFONT, reinterpret_cast<WPARAM>(metrics.Font()), FALSE);
    SetWindowPos(handle_, nullptr, metrics.Pixels(place.left), metrics.Pixels(place.top),
                 std::max(1, metrics.Pixels(place.width)), std::max(1, metrics.Pixels(place.height)),
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

namespace {

class LabelView : public Win32ControlView {
 public:
    LabelView(Control& label, HWND parent, EventGate& gate)
        : Win32ControlView(label, MakeNative(label, parent, {L"STATIC", SS_LEFTNOWORDWRAP | SS_NOPREFIX}),
                           gate) {}

    /// A label of one line does not wrap: a word slightly too long is cut off, not moved out of sight.
    void Fit(const Metrics& metrics) override {
        const bool wraps = metrics.Pixels(Model().Place().height) >= 2 * metrics.LineHeight();
        const LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_STYLE) & ~LONG_PTR{SS_TYPEMASK};
        SetWindowLongPtrW(Handle(), GWL_STYLE, style | (wraps ? SS_LEFT : SS_LEFTNOWORDWRAP));
        Win32ControlView::Fit(metrics);
    }
};

/// Common to the buttons of Windows. None has an automatic style: the control decides what is checked.
class ButtonView : public Win32ControlView {
 public:
    ButtonView(Control& control, HWND parent, EventGate& gate, DWORD style)
        : Win32ControlView(control, MakeNative(control, parent, {L"BUTTON", style}), gate) {}

    void Serve(WORD notification) override {
        if (notification == BN_CLICKED) Click();
    }

 protected:
    void Click() {
        Report(Aspect::Checked, [this] { Model().UserClicks(); });
    }
    void ShowCheck(bool checked) { Send(BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED); }
};

class CheckView : public ButtonView {
 public:
    CheckView(CheckBox& box, HWND parent, EventGate& gate)
        : ButtonView(box, parent, gate, BS_CHECKBOX), box_(box) {}

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) ShowCheck(box_.Checked());
    }

    CheckBox& box_;
};

class OptionView : public ButtonView {
 public:
    OptionView(OptionButton& option, HWND parent, EventGate& gate)
        : ButtonView(option, parent, gate, BS_RADIOBUTTON), option_(option) {
        // Else Windows would send a click whenever it gets the focus.
        Send(BM_SETDONTCLICK, TRUE);
    }

    bool ServeKey(WPARAM key) override {
        const bool forward = key == VK_DOWN || key == VK_RIGHT;
        if (!forward && key != VK_UP && key != VK_LEFT) return false;
        Report(Aspect::Checked, [&] { option_.UserPressesArrow(forward); });
        return true;
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) ShowCheck(option_.Selected());
    }

    OptionButton& option_;
};

/// A button that Enter presses, as Space does.
class PressView : public ButtonView {
 public:
    using ButtonView::ButtonView;

    bool ServeKey(WPARAM key) override {
        if (key != VK_RETURN) return false;
        Click();
        return true;
    }
};

class PushView : public PressView {
 public:
    PushView(Control& button, HWND parent, EventGate& gate)
        : PressView(button, parent, gate, BS_PUSHBUTTON) {}

    /// Draws the button that has the focus as the one that Enter presses.
    void NoteFocus(bool gained) override {
        Send(BM_SETSTYLE, gained ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
    }
};

class LinkView : public PressView {
 public:
    LinkView(Control& link, HWND parent, EventGate& gate) : PressView(link, parent, gate, BS_OWNERDRAW) {}

    void Fit(const Metrics& metrics) override {
        PressView::Fit(metrics);
        Send(WM_SETFONT, reinterpret_cast<WPARAM>(metrics.LinkFont()), TRUE);
    }

    void Draw(const DRAWITEMSTRUCT& drawing) override {
        constexpr COLORREF blue = RGB(0, 0, 255);
        RECT place = drawing.rcItem;
        FillRect(drawing.hDC, &place, GetSysColorBrush(COLOR_BTNFACE));
        SetBkMode(drawing.hDC, TRANSPARENT);
        SetTextColor(drawing.hDC, blue);
        DrawTextW(drawing.hDC, WideFromUtf8(Model().Caption()).c_str(), -1, &place,
                  DT_LEFT | DT_TOP | DT_SINGLELINE | DT_NOPREFIX);
        const bool showsFocus =
            (drawing.itemState & ODS_FOCUS) != 0 && (drawing.itemState & ODS_NOFOCUSRECT) == 0;
        if (showsFocus) DrawFocusRect(drawing.hDC, &place);
    }
};

class TextView : public Win32ControlView {
 public:
    TextView(TextBox& box, HWND parent, EventGate& gate, DWORD style)
        : Win32ControlView(box, MakeNamedNative(box, parent, {L"EDIT", style, WS_EX_CLIENTEDGE}), gate),
          box_(box) {
        Send(EM_SETLIMITTEXT, 0);
    }

    /// Ctrl+A, which not every version of Windows supports in every text box.
    bool ServeKey(WPARAM key) override {
        const bool control = GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
        if (key != 'A' || !control) return false;
        SelectAll();
        return true;
    }

 protected:
    TextBox& Box() const { return box_; }
    void SelectAll() { Send(EM_SETSEL, 0, -1); }

 private:
    TextBox& box_;
};

class LineTextView : public TextView {
 public:
    LineTextView(TextBox& box, HWND parent, EventGate& gate) : TextView(box, parent, gate, ES_AUTOHSCROLL) {}

    void Serve(WORD notification) override {
        if (notification != EN_CHANGE) return;
        Report(Aspect::Text, [this] { Box().UserTypes(Utf8FromWide(TextOf(Handle()))); });
    }
    void NoteTab() override { SelectAll(); }

 private:
    /// Sets the text only when it differs, since that moves the caret to the beginning. While only the first
    /// half of a surrogate pair has been typed, it does not differ.
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Text && Box().Text() != Utf8FromWide(TextOf(Handle())))
            SetWindowTextW(Handle(), WideFromUtf8(Box().Text()).c_str());
    }
};

/// Shows a new text only when the messages before its own are handled, so that a log which grows by thousands
/// of lines at once is shown once.
class LinesTextView : public TextView {
 public:
    LinesTextView(TextBox& box, HWND parent, EventGate& gate)
        : TextView(box, parent, gate,
                   ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL |
                       (box.TextStyle() == TextBox::Style::ReadOnlyLinesScrollable ? WS_VSCROLL : 0)) {}

    void NextRound() override {
        waits_ = false;
        SetWindowTextW(Handle(), WideFromUtf8(Box().Text()).c_str());
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Text && !waits_)
            waits_ = PostMessageW(Handle(), nextRoundMessage, 0, 0) != FALSE;
    }

    bool waits_ = false;
};

class ListView : public Win32ControlView {
 public:
    ListView(ListBox& box, HWND parent, EventGate& gate)
        : Win32ControlView(
              box,
              MakeNamedNative(box, parent,
                              {L"LISTBOX", LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL, WS_EX_CLIENTEDGE}),
              gate),
          box_(box) {}

    void Serve(WORD notification) override {
        if (notification != LBN_SELCHANGE) return;
        const auto row = static_cast<int>(Send(LB_GETCURSEL));
        Report(Aspect::Selection, [&] { box_.UserSelects(row); });
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Items) ShowItems();
        const auto row = static_cast<LRESULT>(box_.Selected());
        if (Send(LB_GETCURSEL) != row) Send(LB_SETCURSEL, static_cast<WPARAM>(row));
    }

    /// Changes only the rows that differ.
    void ShowItems() {
        const std::vector<std::string>& items = box_.Items();
        for (; shown_.size() > items.size(); shown_.pop_back())
            Send(LB_DELETESTRING, shown_.size() - 1);
        for (std::size_t row = 0; row < items.size(); ++row) {
            if (row < shown_.size() && shown_[row] == items[row]) continue;
            if (row < shown_.size()) Send(LB_DELETESTRING, row);
            Send(LB_INSERTSTRING, row, reinterpret_cast<LPARAM>(WideFromUtf8(items[row]).c_str()));
        }
        shown_ = items;
    }

    ListBox& box_;
    std::vector<std::string> shown_;
};

class PictureView : public Win32ControlView {
 public:
    PictureView(Picture& picture, HWND parent, EventGate& gate)
        : Win32ControlView(picture, MakeNative(picture, parent, {L"STATIC", SS_BITMAP | SS_CENTERIMAGE}),
                           gate),
          picture_(picture) {}

    void Fit(const Metrics& metrics) override {
        Win32ControlView::Fit(metrics);
        const Twips& place = Model().Place();
        bitmap_ =
            BitmapFromJpeg(picture_.Jpeg(), {metrics.Pixels(place.width), metrics.Pixels(place.height)});
        Send(STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap_.get()));
    }

 private:
    /// The window text of a picture is not shown, but screen readers read it.
    void ShowCaption() override { SetWindowTextW(Handle(), WideFromUtf8(picture_.AccessibleName()).c_str()); }

    Picture& picture_;
    UniqueBitmap bitmap_;
};

std::unique_ptr<Win32ControlView> MakeTextView(TextBox& box, HWND parent, EventGate& gate) {
    if (box.TextStyle() == TextBox::Style::SingleLine)
        return std::make_unique<LineTextView>(box, parent, gate);
    return std::make_unique<LinesTextView>(box, parent, gate);
}

}  // namespace

std::unique_ptr<Win32ControlView> MakeControlView(Control& control, HWND parent, EventGate& gate) {
    switch (control.Kind()) {
        case ControlKind::Frame:
            return std::make_unique<Win32ControlView>(
                control, MakeNative(control, parent, {L"BUTTON", BS_GROUPBOX}), gate);
        case ControlKind::Line:
            return std::make_unique<Win32ControlView>(
                control, MakeNative(control, parent, {L"STATIC", SS_BLACKRECT}), gate);
        case ControlKind::Label:
            return std::make_unique<LabelView>(control, parent, gate);
        case ControlKind::CheckBox:
            return std::make_unique<CheckView>(static_cast<CheckBox&>(control), parent, gate);
        case ControlKind::OptionButton:
            return std::make_unique<OptionView>(static_cast<OptionButton&>(control), parent, gate);
        case ControlKind::TextBox:
            return MakeTextView(static_cast<TextBox&>(control), parent, gate);
        case ControlKind::ListBox:
            return std::make_unique<ListView>(static_cast<ListBox&>(control), parent, gate);
        case ControlKind::PushButton:
            return std::make_unique<PushView>(control, parent, gate);
        case ControlKind::Picture:
            return std::make_unique<PictureView>(static_cast<Picture&>(control), parent, gate);
        case ControlKind::LinkLabel:
            return std::make_unique<LinkView>(control, parent, gate);
    }
    return nullptr;
}

}  // namespace quillmere
