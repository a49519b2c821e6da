#include "toolkit/menu.h"

#include "toolkit/window.h"

#include <utility>

namespace quillmere {

Menu::Menu(Window& window, std::string name, std::string caption)
    : window_(window), name_(std::move(name)), caption_(std::move(caption)) {
    window.menus_.push_back(this);
}

MenuItem::MenuItem(Menu& menu, std::string name, std::string caption)
    : menu_(menu), name_(std::move(name)), caption_(std::move(caption)) {
    menu.items_.push_back(this);
}

void MenuItem::SetChecked(bool checked) {
    checked_ = checked;
    if (WindowView* const view = menu_.OwnerWindow().view_) view->RefreshCheckMark(*this);
}

void MenuItem::UserChooses() {
    if (!IsSeparator() && menu_.OwnerWindow().TakesInput()) OnClick();
}

}  // namespace quillmere
