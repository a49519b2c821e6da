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

/// A kind of control as the system makes it.
struct NativeKind {
    const wchar_t* className;
    DWORD style;
    DWORD extendedStyle = 0;
};

NativeKind KindOf(TextBox::Style style) {
    constexpr DWORD lines = ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL;
    switch (style) {
        case TextBox::Style::SingleLine:
            return {L"EDIT", ES_AUTOHSCROLL, WS_EX_CLIENTEDGE};
        case TextBox::Style::ReadOnlyLines:
            return {L"EDIT", lines, WS_EX_CLIENTEDGE};
        case TextBox::Style::ReadOnlyLinesScrollable:
            break;
    }
    return {L"EDIT", lines | WS_VSCROLL, WS_EX_CLIENTEDGE};
}

/// The buttons never mark themselves: what is marked is the model's to say.
NativeKind KindOf(const Control& control) {
    switch (control.Kind()) {
        case ControlKind::Label:
            return {L"STATIC", SS_LEFTNOWORDWRAP | SS_NOPREFIX};
        case ControlKind::Frame:
            return {L"BUTTON", BS_GROUPBOX};
        case ControlKind::CheckBox:
            return {L"BUTTON", BS_CHECKBOX};
        case ControlKind::OptionButton:
            return {L"BUTTON", BS_RADIOBUTTON};
        case ControlKind::TextBox:
            return KindOf(static_cast<const TextBox&>(control).TextStyle());
        case ControlKind::ListBox:
            return {L"LISTBOX", LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL, WS_EX_CLIENTEDGE};
        case ControlKind::PushButton:
            return {L"BUTTON", BS_PUSHBUTTON};
        case ControlKind::Line:
            return {L"STATIC", SS_BLACKRECT};
        case ControlKind::Picture:
            return {L"STATIC", SS_BITMAP | SS_CENTERIMAGE};
        case ControlKind::LinkLabel:
            break;
    }
    return {L"BUTTON", BS_OWNERDRAW};
}

HWND MakeChild(HWND parent, const NativeKind& kind, const wchar_t* text) {
    return CreateWindowExW(kind.extendedStyle, kind.className, text, kind.style | WS_CHILD, 0, 0, 0, 0,
                           parent, nullptr, GetModuleHandleW(nullptr), nullptr);
}

/// Screen readers take a control's name from the label right before it. Where the window shows none, a hidden
/// one stands there.
void NameForScreenReaders(const Control& control, HWND parent) {
    const auto& controls = control.OwnerWindow().Controls();
    const auto self = std::ranges::find(controls, &control);
    const bool named = self != controls.begin() && (*(self - 1))->Caption() == control.Caption();
    if (!named) MakeChild(parent, {L"STATIC", SS_LEFT}, WideFromUtf8(control.AccessibleName()).c_str());
}

HWND MakeNative(const Control& control, HWND parent) {
    const bool namedByLabel =
        control.Kind() == ControlKind::TextBox || control.Kind() == ControlKind::ListBox;
    if (namedByLabel) NameForScreenReaders(control, parent);
    NativeKind kind = KindOf(control);
    kind.style |= WS_VISIBLE;
    if (control.CanHaveFocus()) kind.style |= WS_TABSTOP;
    return MakeChild(parent, kind, L"");
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
            if (ShowsCaption()) SetWindowTextW(handle_, WideFromUtf8(control_.Caption()).c_str());
            return;
        case Aspect::Enabled:
            EnableWindow(handle_, control_.Enabled() ? TRUE : FALSE);
            return;
        case Aspect::Focus:
            // Elsewhere it would take the activation along; the window gives the focus when it is activated.
            if (control_.HasFocus() && GetActiveWindow() == GetParent(handle_)) ::SetFocus(handle_);
            return;
        default:
            return ShowState(aspect);
    }
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

/// A control of which at most the caption is shown.
class CaptionView : public Win32ControlView {
 public:
    using Win32ControlView::Win32ControlView;
};

class LabelView : public Win32ControlView {
 public:
    using Win32ControlView::Win32ControlView;

    /// On a label of one line a word a pixel too long is cut; wrapping would hide all of it.
    void Fit(const Metrics& metrics) override {
        const bool wraps = metrics.Pixels(Model().Place().height) >= 2 * metrics.LineHeight();
        const LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_STYLE) & ~LONG_PTR{SS_TYPEMASK};
        SetWindowLongPtrW(Handle(), GWL_STYLE, style | (wraps ? SS_LEFT : SS_LEFTNOWORDWRAP));
        Win32ControlView::Fit(metrics);
    }
};

class CheckView : public Win32ControlView {
 public:
    CheckView(CheckBox& box, HWND handle, EventGate& gate) : Win32ControlView(box, handle, gate), box_(box) {}

    void Serve(WORD notification) override {
        if (notification == BN_CLICKED) ByUser(Aspect::Checked, [this] { box_.UserClicks(); });
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) Send(BM_SETCHECK, box_.Checked() ? BST_CHECKED : BST_UNCHECKED);
    }

    CheckBox& box_;
};

class OptionView : public Win32ControlView {
 public:
    OptionView(OptionButton& option, HWND handle, EventGate& gate)
        : Win32ControlView(option, handle, gate), option_(option) {
        // Getting the focus is no click.
        Send(BM_SETDONTCLICK, TRUE);
    }

    void Serve(WORD notification) override {
        if (notification == BN_CLICKED) ByUser(Aspect::Checked, [this] { option_.UserClicks(); });
    }
    bool ServeKey(WPARAM key) override {
        const bool forward = key == VK_DOWN || key == VK_RIGHT;
        if (!forward && key != VK_UP && key != VK_LEFT) return false;
        ByUser(Aspect::Checked, [&] { option_.UserPressesArrow(forward); });
        return true;
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) Send(BM_SETCHECK, option_.Selected() ? BST_CHECKED : BST_UNCHECKED);
    }

    OptionButton& option_;
};

/// Common to the controls that Enter presses, and the system when Space is pressed.
template <class Pressable>
class PressView : public Win32ControlView {
 public:
    PressView(Pressable& model, HWND handle, EventGate& gate)
        : Win32ControlView(model, handle, gate), model_(model) {}

    void Serve(WORD notification) override {
        if (notification == BN_CLICKED) Press();
    }
    bool ServeKey(WPARAM key) override {
        if (key != VK_RETURN) return false;
        Press();
        return true;
    }

 private:
    void Press() {
        ByUser(Aspect::Enabled, [this] { model_.UserClicks(); });
    }

    Pressable& model_;
};

class PushView : public PressView<PushButton> {
 public:
    using PressView::PressView;

    /// Shows which button Enter presses.
    void NoteFocus(bool gained) override {
        Send(BM_SETSTYLE, gained ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
    }
};

class LinkView : public PressView<LinkLabel> {
 public:
    using PressView::PressView;

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

/// Ctrl+A, which not every version of the system knows in every text box.
bool SelectAllServed(HWND edit, WPARAM key) {
    const bool control = GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
    if (key != 'A' || !control) return false;
    SendMessageW(edit, EM_SETSEL, 0, -1);
    return true;
}

class LineTextView : public Win32ControlView {
 public:
    LineTextView(TextBox& box, HWND handle, EventGate& gate)
        : Win32ControlView(box, handle, gate), box_(box) {
        Send(EM_SETLIMITTEXT, 0);
    }

    void Serve(WORD notification) override {
        if (notification != EN_CHANGE) return;
        ByUser(Aspect::Text, [this] { box_.UserTypes(Utf8FromWide(TextOf(Handle()))); });
    }
    bool ServeKey(WPARAM key) override { return SelectAllServed(Handle(), key); }
    void NoteTab() override { Send(EM_SETSEL, 0, -1); }

 private:
    bool ShowsCaption() const override { return false; }
    /// A character of two halves is typed one half at a time: the first is no reason to set the text, which
    /// would put the caret at its beginning.
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Text && box_.Text() != Utf8FromWide(TextOf(Handle())))
            SetWindowTextW(Handle(), WideFromUtf8(box_.Text()).c_str());
    }

    TextBox& box_;
};

/// Shows a text at the next round of messages, so that a log may grow by thousands of lines between two
/// rounds.
class LinesTextView : public Win32ControlView {
 public:
    LinesTextView(TextBox& box, HWND handle, EventGate& gate)
        : Win32ControlView(box, handle, gate), box_(box) {
        Send(EM_SETLIMITTEXT, 0);
    }

    bool ServeKey(WPARAM key) override { return SelectAllServed(Handle(), key); }
    void NextRound() override {
        waits_ = false;
        SetWindowTextW(Handle(), WideFromUtf8(box_.Text()).c_str());
    }

 private:
    bool ShowsCaption() const override { return false; }
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Text && !waits_)
            waits_ = PostMessageW(Handle(), nextRoundMessage, 0, 0) != FALSE;
    }

    TextBox& box_;
    bool waits_ = false;
};

class ListView : public Win32ControlView {
 public:
    ListView(ListBox& box, HWND handle, EventGate& gate) : Win32ControlView(box, handle, gate), box_(box) {}

    void Serve(WORD notification) override {
        if (notification != LBN_SELCHANGE) return;
        const auto row = static_cast<int>(Send(LB_GETCURSEL));
        ByUser(Aspect::Selection, [&] { box_.UserSelects(row); });
    }

 private:
    bool ShowsCaption() const override { return false; }
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Items) ShowItems();
        const auto row = static_cast<LRESULT>(box_.Selected());
        if (Send(LB_GETCURSEL) != row) Send(LB_SETCURSEL, static_cast<WPARAM>(row));
    }

    /// Touches the rows that differ, and no other.
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
    PictureView(Picture& picture, HWND handle, EventGate& gate)
        : Win32ControlView(picture, handle, gate), picture_(picture) {}

    void Fit(const Metrics& metrics) override {
        Win32ControlView::Fit(metrics);
        const Twips& place = Model().Place();
        bitmap_ =
            BitmapFromJpeg(picture_.Jpeg(), {metrics.Pixels(place.width), metrics.Pixels(place.height)});
        Send(STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap_.get()));
    }

 private:
    Picture& picture_;
    UniqueBitmap bitmap_;
};

std::unique_ptr<Win32ControlView> MakeTextView(TextBox& box, HWND handle, EventGate& gate) {
    if (box.TextStyle() == TextBox::Style::SingleLine)
        return std::make_unique<LineTextView>(box, handle, gate);
    return std::make_unique<LinesTextView>(box, handle, gate);
}

std::unique_ptr<Win32ControlView> MakeOfKind(Control& control, HWND handle, EventGate& gate) {
    switch (control.Kind()) {
        case ControlKind::Frame:
        case ControlKind::Line:
            return std::make_unique<CaptionView>(control, handle, gate);
        case ControlKind::Label:
            return std::make_unique<LabelView>(control, handle, gate);
        case ControlKind::CheckBox:
            return std::make_unique<CheckView>(static_cast<CheckBox&>(control), handle, gate);
        case ControlKind::OptionButton:
            return std::make_unique<OptionView>(static_cast<OptionButton&>(control), handle, gate);
        case ControlKind::TextBox:
            return MakeTextView(static_cast<TextBox&>(control), handle, gate);
        case ControlKind::ListBox:
            return std::make_unique<ListView>(static_cast<ListBox&>(control), handle, gate);
        case ControlKind::PushButton:
            return std::make_unique<PushView>(static_cast<PushButton&>(control), handle, gate);
        case ControlKind::Picture:
            return std::make_unique<PictureView>(static_cast<Picture&>(control), handle, gate);
        case ControlKind::LinkLabel:
            return std::make_unique<LinkView>(static_cast<LinkLabel&>(control), handle, gate);
    }
    return nullptr;
}

}  // namespace

std::unique_ptr<Win32ControlView> MakeControlView(Control& control, HWND parent, EventGate& gate) {
    std::unique_ptr<Win32ControlView> view = MakeOfKind(control, MakeNative(control, parent), gate);
    for (const Aspect aspect :
         {Aspect::Caption, Aspect::Text, Aspect::Enabled, Aspect::Checked, Aspect::Items, Aspect::Selection})
        view->Refresh(aspect);
    return view;
}

}  // namespace quillmere
