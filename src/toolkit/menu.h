#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillmere {

class Window;
class MenuItem;

/// One menu of a window's menu bar. A menu and its items are members of their window's class.
class Menu {
 public:
    Menu(Window& window, std::string name, std::string caption);
    Menu(const Menu&) = delete;
    Menu& operator=(const Menu&) = delete;

    const std::string& Name() const { return name_; }
    const std::string& Caption() const { return caption_; }
    Window& OwnerWindow() const { return window_; }
    /// In the order in which they were declared.
    const std::vector<MenuItem*>& Items() const { return items_; }

 private:
    friend class MenuItem;

    Window& window_;
    std::string name_;
    std::string caption_;
    std::vector<MenuItem*> items_;
};

class MenuItem {
 public:
    /// The caption "-" makes it a separator.
    MenuItem(Menu& menu, std::string name, std::string caption);
    MenuItem(const MenuItem&) = delete;
    MenuItem& operator=(const MenuItem&) = delete;

    std::function<void()> OnClick = [] {};

    const std::string& Name() const { return name_; }
    const std::string& Caption() const { return caption_; }
    Menu& Parent() const { return menu_; }
    bool IsSeparator() const { return caption_ == "-"; }
    bool Checked() const { return checked_; }
    void SetChecked(bool checked);
    /// Event: raises OnClick unless a modal window blocks the item's window.
    void UserChooses();

 private:
    Menu& menu_;
    std::string name_;
    std::string caption_;
    bool checked_ = false;
};

}  // namespace quillmere
