#include "toolkit/win32/win32_controls.h"

#include "system/windows_wide_text.h"
#include "toolkit/access_key.h"
#include "toolkit/win32/win32_picture.h"
#include "toolkit/window.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace quillmere {

namespace {

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
        case Aspect::Hint:
            return hint_.Show(WideFromUtf8(control_.Hint()));
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
    using Win32ControlView::Win32ControlView;

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
    using Win32ControlView::Win32ControlView;

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
    using ButtonView::ButtonView;
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) ShowCheck(Model<CheckBox>().Checked());
    }
};

class OptionView : public ButtonView {
 public:
    OptionView(Control& option, HWND handle, EventGate& gate) : ButtonView(option, handle, gate) {
        // Else Windows would send a click whenever it gets the focus.
        Send(BM_SETDONTCLICK, TRUE);
    }

    bool ServeKey(WPARAM key, bool /*repeats*/) override {
        const bool forward = key == VK_DOWN || key == VK_RIGHT;
        if (!forward && key != VK_UP && key != VK_LEFT) return false;
        Report(Aspect::Checked, [&] { Model<OptionButton>().UserPressesArrow(forward); });
        return true;
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) ShowCheck(Model<OptionButton>().Selected());
    }
};

/// A button that Enter presses, as Space does. A key that is held presses it once.
class PressView : public ButtonView {
 public:
    using ButtonView::ButtonView;

    bool ServeKey(WPARAM key, bool repeats) override {
        if (key == VK_SPACE) return repeats;
        if (key != VK_RETURN) return false;
        if (!repeats) Click();
        return true;
    }
};

class PushView : public PressView {
 public:
    using PressView::PressView;

    /// Draws the button that has the focus as the one that Enter presses.
    void NoteFocus(bool gained) override {
        Send(BM_SETSTYLE, gained ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
    }
};

class LinkView : public PressView {
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

class TextView : public Win32ControlView {
 public:
    TextView(Control& box, HWND handle, EventGate& gate) : Win32ControlView(box, handle, gate) {
        Send(EM_SETLIMITTEXT, 0);
    }

    /// Ctrl+A, which not every version of Windows supports in every text box.
    bool ServeKey(WPARAM key, bool /*repeats*/) override {
        const bool control = GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
        if (key != 'A' || !control) return false;
        SelectAll();
        return true;
    }

 protected:
    TextBox& Box() const { return Model<TextBox>(); }
    void SelectAll() { Send(EM_SETSEL, 0, -1); }
};

class LineTextView : public TextView {
 public:
    using TextView::TextView;

    void Serve(WORD notification) override {
        if (notification != EN_CHANGE) return;
        const std::wstring text = TextOf(Handle());
        DWORD caret = 0;
        Send(EM_GETSEL, 0, reinterpret_cast<LPARAM>(&caret));
        caret = std::min(caret, static_cast<DWORD>(text.size()));
        Report(Aspect::Text, [&] {
            Box().UserTypes(Utf8FromWide(text.substr(0, caret)), Utf8FromWide(text.substr(caret)));
        });
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
    using TextView::TextView;

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
    using Win32ControlView::Win32ControlView;

    void Serve(WORD notification) override {
        if (notification != LBN_SELCHANGE) return;
        const auto row = static_cast<int>(Send(LB_GETCURSEL));
        Report(Aspect::Selection, [&] { Model<ListBox>().UserSelects(row); });
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Items) ShowItems();
        const auto row = static_cast<LRESULT>(Model<ListBox>().Selected());
        if (Send(LB_GETCURSEL) != row) Send(LB_SETCURSEL, static_cast<WPARAM>(row));
    }

    /// Changes only the rows that differ.
    void ShowItems() {
        const std::vector<std::string>& items = Model<ListBox>().Items();
        for (; shown_.size() > items.size(); shown_.pop_back())
            Send(LB_DELETESTRING, shown_.size() - 1);
        for (std::size_t row = 0; row < items.size(); ++row) {
            if (row < shown_.size() && shown_[row] == items[row]) continue;
            if (row < shown_.size()) Send(LB_DELETESTRING, row);
            Send(LB_INSERTSTRING, row, reinterpret_cast<LPARAM>(WideFromUtf8(items[row]).c_str()));
        }
        shown_ = items;
    }

    std::vector<std::string> shown_;
};

class PictureView : public Win32ControlView {
 public:
    using Win32ControlView::Win32ControlView;

    void Fit(const Metrics& metrics) override {
        Win32ControlView::Fit(metrics);
        const Twips& place = Model().Place();
        bitmap_ = BitmapFromJpeg(Model<Picture>().Jpeg(),
                                 {metrics.Pixels(place.width), metrics.Pixels(place.height)});
        Send(STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap_.get()));
    }

 private:
    /// The window text of a picture is not shown, but screen readers read it.
    void ShowCaption() override { SetWindowTextW(Handle(), WideFromUtf8(Model().AccessibleName()).c_str()); }

    UniqueBitmap bitmap_;
};

template <class View>
std::unique_ptr<Win32ControlView> Make(Control& control, HWND handle, EventGate& gate) {
    return std::make_unique<View>(control, handle, gate);
}

/// How controls of one kind are shown.
struct NativeKind {
    const wchar_t* className;
    DWORD style;
    std::unique_ptr<Win32ControlView> (*makeView)(Control&, HWND, EventGate&);
    bool isField = false;  ///< has a sunken edge, and a label instead of a caption
};

/// In the order of ControlKind.
constexpr std::array nativeKinds = {
    NativeKind{L"STATIC", SS_LEFTNOWORDWRAP | SS_NOPREFIX, Make<LabelView>},
    NativeKind{L"BUTTON", BS_GROUPBOX, Make<Win32ControlView>},
    NativeKind{L"BUTTON", BS_CHECKBOX, Make<CheckView>},
    NativeKind{L"BUTTON", BS_RADIOBUTTON, Make<OptionView>},
    NativeKind{L"EDIT", ES_AUTOHSCROLL, Make<LineTextView>, true},
    NativeKind{L"EDIT", ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, Make<LinesTextView>, true},
    NativeKind{L"LISTBOX", LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL, Make<ListView>, true},
    NativeKind{L"BUTTON", BS_PUSHBUTTON, Make<PushView>},
    NativeKind{L"STATIC", SS_BLACKRECT, Make<Win32ControlView>},
    NativeKind{L"STATIC", SS_BITMAP | SS_CENTERIMAGE, Make<PictureView>},
    NativeKind{L"BUTTON", BS_OWNERDRAW, Make<LinkView>},
};
static_assert(nativeKinds.size() == controlKindCount);

HWND MakeChild(HWND parent, const wchar_t* className, const wchar_t* text, DWORD style, DWORD extendedStyle) {
    return CreateWindowExW(extendedStyle, className, text, style | WS_CHILD, 0, 0, 0, 0, parent, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
}

/// Screen readers call a field by the label right before it in the Z order, so a hidden label is made unless
/// the window has one there.
void NameField(const Control& field, HWND parent) {
    const auto& controls = field.OwnerWindow().Controls();
    const std::string name = field.AccessibleName();
    const auto self = std::ranges::find(controls, &field);
    const bool named = self != controls.begin() && (*(self - 1))->Caption() == name;
    if (!named) MakeChild(parent, L"STATIC", WideFromUtf8(name).c_str(), SS_LEFT, 0);
}

bool Scrolls(const Control& control) {
    return control.Kind() == ControlKind::TextLines &&
           static_cast<const TextBox&>(control).TextStyle() == TextBox::Style::ReadOnlyLinesScrollable;
}

}  // namespace

std::unique_ptr<Win32ControlView> MakeControlView(Control& control, HWND parent, EventGate& gate) {
    const NativeKind& kind = nativeKinds.at(static_cast<std::size_t>(control.Kind()));
    DWORD style = kind.style | WS_VISIBLE;
    if (control.CanHaveFocus()) style |= WS_TABSTOP;
    if (Scrolls(control)) style |= WS_VSCROLL;
    if (kind.isField) NameField(control, parent);
    const DWORD edge = kind.isField ? WS_EX_CLIENTEDGE : 0;
    return kind.makeView(control, MakeChild(parent, kind.className, L"", style, edge), gate);
}

}  // namespace quillmere
