#pragma once

#include "toolkit/geometry.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

// The toolkit: the controls that the program's windows are made of. A control holds its own state; a backend
// shows it. When the user does something, which is an event, the backend calls the control's function for it:
// UserClicks, UserTypes and so on. Backends need not know these rules, which are kept here:
//
// - A disabled control ignores events, and so does every control of a window that a modal window blocks. The
//   view then shows the unchanged state again.
// - Of the option buttons in one container, at most one is selected.
// - A change that the program makes never raises OnClick.
//
// Text is UTF-8.

class Window;
class Control;
class OptionButton;

/// What of a control's state has changed.
enum class Aspect { Caption, Hint, Text, Enabled, Checked, Items, Selection, Focus };

/// What shows one control on a backend, which owns it.
class ControlView {
 public:
    virtual ~ControlView() = default;
    /// This part of the control's state has changed.
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
    TextBox,    ///< of one line
    TextLines,  ///< a read-only TextBox of many lines
    ListBox,
    PushButton,
    Line,
    Picture,
    LinkLabel
};
inline constexpr auto controlKindCount = static_cast<std::size_t>(ControlKind::LinkLabel) + 1;

/// Common to all controls. A control is a member of its window's class.
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
    /// A control that is disabled while it has the focus gives it to the next one in the focus order.
    void SetEnabled(bool enabled);
    /// What a screen reader calls the control: the name it was given, else its caption.
    std::string AccessibleName() const;
    /// What there is to know about the control now. It is shown while the mouse rests on the control, and
    /// screen readers read it. Lines are separated by CR LF.
    const std::string& Hint() const { return hint_; }
    void SetHint(std::string_view hint);

    /// Whether the control responds to events now: it is enabled, and no modal window blocks its window.
    bool TakesInput() const;
    /// Gives the control the keyboard focus, if it is enabled and can have it.
    void SetFocus();
    bool HasFocus() const;
    /// Whether the control has a place in its window's focus order, enabled or not.
    bool CanHaveFocus() const;
    /// Whether the Tab key stops here now.
    virtual bool IsTabStop() const { return enabled_; }
    /// Event: the focus has moved here.
    void UserFocuses();
    /// Raised by the kinds of control that can be clicked.
    std::function<void()> OnClick = [] {};
    /// Event: a click, or a key that does the same.
    virtual void UserClicks();

    /// Called by the backend; null while the window is not loaded. The view then shows all but the focus.
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
    std::string hint_;
    Twips place_;
    bool enabled_ = true;
    ControlView* view_ = nullptr;
};

/// A control whose caption is all that it is made with.
template <ControlKind kind>
class CaptionedControl : public Control {
 public:
    CaptionedControl(Container& parent, std::string name, std::string caption, const Twips& place)
        : Control(kind, parent, std::move(name), std::move(caption), place) {}
};

using Label = CaptionedControl<ControlKind::Label>;
/// Raises OnClick.
using PushButton = CaptionedControl<ControlKind::PushButton>;
/// A label that looks like a web link. Raises OnClick.
using LinkLabel = CaptionedControl<ControlKind::LinkLabel>;

class Frame : public CaptionedControl<ControlKind::Frame>, public Container {
 public:
    using CaptionedControl::CaptionedControl;

    Window& OwnerWindow() override { return Parent().OwnerWindow(); }
    const Window& OwnerWindow() const override { return Parent().OwnerWindow(); }
    Control* AsControl() override { return this; }
};

class CheckBox : public CaptionedControl<ControlKind::CheckBox> {
 public:
    using CaptionedControl::CaptionedControl;

    bool Checked() const { return checked_; }
    void SetChecked(bool checked);
    /// Event: sets or clears the check mark, and raises OnClick.
    void UserClicks() override;

 private:
    bool checked_ = false;
};

/// One of several choices: selecting it deselects the other option buttons in its container.
class OptionButton : public CaptionedControl<ControlKind::OptionButton> {
 public:
    OptionButton(Container& parent, std::string name, std::string caption, const Twips& place)
        : CaptionedControl(parent, std::move(name), std::move(caption), place) {
        parent.options_.push_back(this);
    }

    /// Tab stops only at the selected one of the container's option buttons, or at each if none is selected.
    bool IsTabStop() const override;
    bool Selected() const { return selected_; }
    void Select();
    /// Event: selects it, and gives it the focus because a click by assistive technology does not.
    void UserClicks() override;
    /// Event: an arrow key, which clicks the next enabled option button of the container, around the end.
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
    /// `accessibleName` is the caption of the label beside the box, or what such a label would say.
    TextBox(Container& parent, std::string name, std::string accessibleName, const Twips& place,
            Style style = Style::SingleLine)
        : Control(style == Style::SingleLine ? ControlKind::TextBox : ControlKind::TextLines, parent,
                  std::move(name), "", place, std::move(accessibleName)),
          style_(style) {}

    Style TextStyle() const { return style_; }
    const std::string& Text() const;
    void SetText(std::string_view text);
    /// From now on the text is what `source` returns. It is called only when the text is needed, so that a
    /// text may change more often than it is shown.
    void SetTextSource(std::function<std::string()> source);
    /// The source would now return another text.
    void SourceChanged();
    /// Event: the user has changed the text. It is given in two parts, before and after the caret, since a
    /// pasted text ends at the caret: only its first line is taken. Read-only boxes ignore the event.
    void UserTypes(std::string_view text, std::string_view textAfterCaret = "");

 private:
    Style style_;
    mutable std::string text_;  ///< with a source: what it returned last
    std::function<std::string()> source_;
    mutable bool sourceChanged_ = false;  ///< text_ is not what the source returns now
};

/// Single selection; entries stay in the order in which they were added.
class ListBox : public Control {
 public:
    ListBox(Container& parent, std::string name, std::string accessibleName, const Twips& place)
        : Control(ControlKind::ListBox, parent, std::move(name), "", place, std::move(accessibleName)) {}

    static constexpr int none = -1;

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
    /// Event: selects the entry, by click or arrow key, and raises OnClick.
    void UserSelects(int index);

 private:
    std::vector<std::string> items_;
    int selected_ = none;
};

/// A straight line: vertical when the width of `place` is 0, else horizontal.
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

}  // namespace quillmere
