#pragma once

#include "toolkit/geometry.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

// The controls that the program's windows are made of. A control's state lives here; a backend shows it and
// reports what the user did through the control's door, a function named after the deed (UserClicks,
// UserTypes, ...). The rules that hold on every backend stand here once: a disabled control does nothing,
// neither does one on a window shut out by a modal one, option buttons of one frame exclude each other, and a
// change made by the program never raises an event. A door that refuses what the user did has the view show
// the model again. Text is UTF-8.

class Window;
class Control;
class OptionButton;

/// What of a control's state has changed.
enum class Aspect { Caption, Text, Enabled, Checked, Items, Selection, Focus };

/// A backend's side of one control: told of every change of the model. Owned by the backend.
class ControlView {
 public:
    virtual ~ControlView() = default;
    virtual void Refresh(Aspect aspect) = 0;
};

/// What can hold controls: a window, or a frame on it.
class Container {
 public:
    virtual ~Container() = default;
    virtual Window& OwnerWindow() = 0;
    virtual const Window& OwnerWindow() const = 0;
    /// The frame itself when the container is one; null for a window.
    virtual Control* AsControl() = 0;

 private:
    friend class OptionButton;

    std::vector<OptionButton*> options_;  ///< in the order in which they were declared
};

enum class ControlKind {
    Label,
    Frame,
    CheckBox,
    OptionButton,
    TextBox,
    ListBox,
    PushButton,
    Line,
    Picture,
    LinkLabel
};

/// Common to all controls. A control is a member of its window's class and lives as long as the window.
class Control {
 public:
    virtual ~Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    ControlKind Kind() const { return kind_; }
    const std::string& Name() const { return name_; }
    /// Relative to the container.
    const Twips& Place() const { return place_; }
    Container& Parent() const { return parent_; }
    Window& OwnerWindow() const { return parent_.OwnerWindow(); }

    const std::string& Caption() const { return caption_; }
    void SetCaption(std::string_view caption);
    bool Enabled() const { return enabled_; }
    /// A control that loses the focus in this way hands it to the next one in the focus order.
    void SetEnabled(bool enabled);
    /// What a screen reader calls the control: the name it was given, else its caption.
    std::string AccessibleName() const;

    /// Whether the user can act on the control now: it is enabled, and no modal window shuts its window out.
    bool TakesInput() const;
    /// Moves the keyboard focus here unless the control is disabled or takes none.
    void SetFocus();
    bool HasFocus() const;
    /// Whether the control has a place in its window's focus order.
    bool CanHaveFocus() const;
    /// Whether the Tab key stops here now.
    virtual bool IsTabStop() const { return enabled_; }
    /// The door for a focus that the user moved, by mouse or Tab.
    void UserFocuses();
    /// Door: what a click does, or a key that stands for one. On most kinds, nothing.
    virtual void UserClicks() {}

    /// The backend's; null while the window is not shown. Has the view show everything but the focus.
    void SetView(ControlView* view);

 protected:
    Control(ControlKind kind, Container& parent, std::string name, std::string caption, const Twips& place,
            std::string accessibleName = "");
    void Changed(Aspect aspect);

 private:
    ControlKind kind_;
    Container& parent_;
    std::string name_;
    std::string caption_;
    std::string accessibleName_;
    Twips place_;
    bool enabled_ = true;
    ControlView* view_ = nullptr;
};

class Label : public Control {
 public:
    Label(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(ControlKind::Label, parent, std::move(name), std::move(caption), place) {}
};

class Frame : public Control, public Container {
 public:
    Frame(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(ControlKind::Frame, parent, std::move(name), std::move(caption), place) {}

    Window& OwnerWindow() override { return Parent().OwnerWindow(); }
    const Window& OwnerWindow() const override { return Parent().OwnerWindow(); }
    Control* AsControl() override { return this; }
};

class CheckBox : public Control {
 public:
    CheckBox(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(ControlKind::CheckBox, parent, std::move(name), std::move(caption), place) {}

    std::function<void()> OnClick = [] {};

    bool Checked() const { return checked_; }
    void SetChecked(bool checked);
    /// Door: turns the check mark over and raises OnClick.
    void UserClicks() override;

 private:
    bool checked_ = false;
};

/// One of the choices in its container; choosing one clears the others there.
class OptionButton : public Control {
 public:
    OptionButton(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(ControlKind::OptionButton, parent, std::move(name), std::move(caption), place) {
        parent.options_.push_back(this);
    }

    /// While one of the container's option buttons is selected, Tab stops at none of the others.
    bool IsTabStop() const override;
    bool Selected() const { return selected_; }
    void Select();
    /// Door: selects it and gives it the focus, since assistive technology clicks without moving that.
    void UserClicks() override;
    /// Door: an arrow key leads to the next enabled one of the container, around the end, and selects it.
    void UserPressesArrow(bool forward);

 private:
    bool selected_ = false;
};

class TextBox : public Control {
 public:
    enum class Style {
        SingleLine,
        ReadOnlyLines,           ///< many lines, no scroll bar
        ReadOnlyLinesScrollable  ///< many lines, a vertical scroll bar
    };
    /// `accessibleName` is the caption of the label that stands beside it, or what one would say.
    TextBox(Container& parent, std::string name, std::string accessibleName, const Twips& place,
            Style style = Style::SingleLine)
        : Control(ControlKind::TextBox, parent, std::move(name), "", place, std::move(accessibleName)),
          style_(style) {}

    Style TextStyle() const { return style_; }
    const std::string& Text() const;
    void SetText(std::string_view text);
    /// Makes the text what `source` returns, for a text that changes more often than anyone looks at it.
    void SetTextSource(std::function<std::string()> source);
    /// The source has another text now.
    void SourceChanged();
    /// Door: the text is now what the user made of it. Read-only boxes stay as they are.
    void UserTypes(std::string_view text);

 private:
    Style style_;
    mutable std::string text_;  ///< with a source: what it returned last
    std::function<std::string()> source_;
    mutable bool sourceChanged_ = false;  ///< text_ is out of date
};

/// Single selection; entries stay in the order in which they were added.
class ListBox : public Control {
 public:
    ListBox(Container& parent, std::string name, std::string accessibleName, const Twips& place)
        : Control(ControlKind::ListBox, parent, std::move(name), "", place, std::move(accessibleName)) {}

    static constexpr int none = -1;
    std::function<void()> OnClick = [] {};

    const std::vector<std::string>& Items() const { return items_; }
    int Count() const { return static_cast<int>(items_.size()); }
    void Add(std::string_view item);
    /// `index` must be that of an entry.
    void Replace(int index, std::string_view item);
    /// Removes the entry at `index`; nothing is selected afterwards.
    void Remove(int index);
    void Clear();
    /// The selected entry, counted from 0, or `none`.
    int Selected() const { return selected_; }
    void Select(int index);
    /// Door: selects the entry, by click or arrow key, and raises OnClick.
    void UserSelects(int index);

 private:
    std::vector<std::string> items_;
    int selected_ = none;
};

class PushButton : public Control {
 public:
    PushButton(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(ControlKind::PushButton, parent, std::move(name), std::move(caption), place) {}

    std::function<void()> OnClick = [] {};

    /// Door: raises OnClick.
    void UserClicks() override;
};

/// A straight line; `place` spans it, with a width of 0 for a vertical one.
class Line : public Control {
 public:
    Line(Container& parent, std::string name, const Twips& place)
        : Control(ControlKind::Line, parent, std::move(name), "", place) {}
};

/// A picture stored with the program.
class Picture : public Control {
 public:
    /// `jpeg` holds the bytes of a JPEG image; `description` says what it shows.
    Picture(Container& parent, std::string name, std::string description, const Twips& place,
            std::string_view jpeg)
        : Control(ControlKind::Picture, parent, std::move(name), "", place, std::move(description)),
          jpeg_(jpeg) {}

    std::string_view Jpeg() const { return jpeg_; }

 private:
    std::string_view jpeg_;
};

/// A label that looks and points like a web link.
class LinkLabel : public Control {
 public:
    LinkLabel(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(ControlKind::LinkLabel, parent, std::move(name), std::move(caption), place) {}

    std::function<void()> OnClick = [] {};

    /// Door: raises OnClick.
    void UserClicks() override;
};

}  // namespace quillmere
