#include "toolkit/window.h"

#include "toolkit/access_key.h"
#include "toolkit/backend.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

/// What a click does to a control of its kind; a control without a click takes the focus.
void ClickOrFocus(Control& control) {
    if (auto* const button = dynamic_cast<PushButton*>(&control)) return button->UserClicks();
    if (auto* const box = dynamic_cast<CheckBox*>(&control)) return box->UserClicks();
    if (auto* const option = dynamic_cast<OptionButton*>(&control)) return option->UserClicks();
    control.SetFocus();
}

/// Of the option buttons of one container only the selected one, if any, is a stop of the Tab key.
bool IsTabStop(const Control& control) {
    if (!control.Enabled()) return false;
    const auto* const option = dynamic_cast<const OptionButton*>(&control);
    if (option == nullptr || option->Selected()) return true;
    return std::ranges::none_of(control.OwnerWindow().Controls(), [&](const Control* other) {
        const auto* const sibling = dynamic_cast<const OptionButton*>(other);
        return sibling != nullptr && &sibling->Parent() == &option->Parent() && sibling->Selected();
    });
}

}  // namespace

Window::Window(Backend& backend, std::string name, std::string caption, int width, int height, Border border)
    : backend_(backend),
      name_(std::move(name)),
      caption_(std::move(caption)),
      width_(width),
      height_(height),
      border_(border) {}

/// The controls, members of the derived class, are gone by now, so the backend must have let go of them
/// before.
Window::~Window() = default;

void Window::LoadAndFocus() {
    backend_.Realize(*this);
    shown_ = true;
    Load();
    focused_ = nullptr;
    if (Control* const first = NextInTabOrder(nullptr)) first->SetFocus();
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

void Window::SetCaption(std::string_view caption) {
    caption_ = caption;
    if (view_ != nullptr) view_->RefreshCaption();
}

void Window::SetView(WindowView* view, WindowHandle handle) {
    view_ = view;
    handle_ = handle;
}

void Window::GiveFocus(Control& control) {
    const bool canHaveIt = std::ranges::find(tabOrder_, &control) != tabOrder_.end();
    if (canHaveIt) focused_ = &control;
}

Control* Window::NextInTabOrder(const Control* control, bool backwards) const {
    std::vector<Control*> order = tabOrder_;
    if (backwards) std::ranges::reverse(order);
    const auto at = std::ranges::find(order, control);
    if (at != order.end()) std::rotate(order.begin(), at + 1, order.end());
    const auto next = std::ranges::find_if(order, [](const Control* c) { return IsTabStop(*c); });
    return next == order.end() ? nullptr : *next;
}

Control* Window::ControlWithKey(char key) const {
    std::vector<Control*> candidates = tabOrder_;
    const auto focused = std::ranges::find(candidates, focused_);
    if (focused != candidates.end()) std::rotate(candidates.begin(), focused + 1, candidates.end());
    const auto found = std::ranges::find_if(candidates, [key](const Control* control) {
        return control->Enabled() && AccessKeyOf(control->Caption()) == key;
    });
    return found == candidates.end() ? nullptr : *found;
}

Menu* Window::UserPressesAccessKey(char key) {
    if (!TakesInput()) return nullptr;
    if (Control* const control = ControlWithKey(key)) {
        control->SetFocus();
        ClickOrFocus(*control);
        return nullptr;
    }
    const auto menu =
        std::ranges::find_if(menus_, [key](const Menu* m) { return AccessKeyOf(m->Caption()) == key; });
    return menu == menus_.end() ? nullptr : *menu;
}

bool Window::UserPressesEscape() {
    if (cancelButton_ == nullptr) return false;
    cancelButton_->UserClicks();
    return true;
}

bool Window::HasAccessKey(char key) const {
    return ControlWithKey(key) != nullptr || std::ranges::any_of(menus_, [key](const Menu* menu) {
               return AccessKeyOf(menu->Caption()) == key;
           });
}

}  // namespace quillmere
