#include "toolkit/window.h"

#include "toolkit/access_key.h"
#include "toolkit/backend.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

/// The first wanted control in `order` after `control`, which itself comes last; null when there is none.
template <class Predicate>
Control* FirstAfter(const Control* control, std::vector<Control*> order, Predicate isWanted) {
    const auto at = std::ranges::find(order, control);
    if (at != order.end()) std::rotate(order.begin(), at + 1, order.end());
    const auto found = std::ranges::find_if(order, isWanted);
    return found == order.end() ? nullptr : *found;
}

}  // namespace

Window::Window(Backend& backend, std::string name, std::string caption, int width, int height, Border border)
    : backend_(backend),
      name_(std::move(name)),
      caption_(std::move(caption)),
      width_(width),
      height_(height),
      border_(border) {}

/// The controls are members of the derived class and already destroyed, so no view of them may be left.
Window::~Window() = default;

void Window::LoadAndFocus() {
    backend_.Realize(*this);
    shown_ = true;
    Load();
    focused_ = nullptr;
    if (Control* const first = NextTabStop(nullptr)) first->SetFocus();
    backend_.MakeVisible(*this);
}

void Window::Show() {
    if (!shown_) LoadAndFocus();
}

void Window::ShowModal() {
    if (shown_) return;
    backend_.PushModal(*this);
    LoadAndFocus();
    backend_.RunModal(*this);
    backend_.PopModal();
}

void Window::Close() {
    if (!shown_ || !Unload()) return;
    shown_ = false;
    backend_.Discard(*this);
}

bool Window::TakesInput() const {
    return shown_ && backend_.Admits(*this);
}

void Window::UserCloses() {
    if (TakesInput()) Close();
}

void Window::UserDeactivates() {
    if (TakesInput()) Deactivate();
}

void Window::UserDropsFiles(const std::vector<std::string>& paths) {
    if (takesFiles_ && TakesInput()) FilesDropped(paths);
}

void Window::SetCaption(std::string_view caption) {
    caption_ = caption;
    if (view_ != nullptr) view_->RefreshCaption();
}

void Window::SetView(WindowView* view, WindowHandle handle) {
    view_ = view;
    handle_ = handle;
}

void Window::GiveFocus(Control& control) {
    if (control.CanHaveFocus()) focused_ = &control;
}

Control* Window::NextTabStop(const Control* control, bool backwards) const {
    std::vector<Control*> order = tabOrder_;
    if (backwards) std::ranges::reverse(order);
    return FirstAfter(control, std::move(order), &Control::IsTabStop);
}

Control* Window::ControlWithKey(char key) const {
    return FirstAfter(focused_, tabOrder_, [&](const Control* control) {
        return control->Enabled() && AccessKeyOf(control->Caption()) == key && TakesAccessKey(*control);
    });
}

Menu* Window::MenuWithKey(char key) const {
    const auto hasKey = [key](const Menu* menu) { return AccessKeyOf(menu->Caption()) == key; };
    const auto found = std::ranges::find_if(menus_, hasKey);
    return found == menus_.end() ? nullptr : *found;
}

Control* Window::UserPressesTab(bool backwards) {
    Control* const next = TakesInput() ? NextTabStop(focused_, backwards) : nullptr;
    if (next != nullptr) GiveFocus(*next);
    return next;
}

Menu* Window::UserPressesAccessKey(char key) {
    if (!TakesInput()) return nullptr;
    if (Control* const control = ControlWithKey(key)) {
        control->SetFocus();
        control->UserClicks();
        return nullptr;
    }
    return MenuWithKey(key);
}

bool Window::UserPressesEscape() {
    if (cancelButton_ == nullptr) return false;
    cancelButton_->UserClicks();
    return true;
}

bool Window::HasAccessKey(char key) const {
    return ControlWithKey(key) != nullptr || MenuWithKey(key) != nullptr;
}

}  // namespace quillmere
