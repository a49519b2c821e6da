#include "toolkit/control.h"

#include "toolkit/access_key.h"
#include "toolkit/window.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

/// Whether controls of this kind have a place in the focus order of a window that does not set its own.
bool TakesFocus(ControlKind kind) {
    return kind != ControlKind::Label && kind != ControlKind::Frame && kind != ControlKind::Line &&
           kind != ControlKind::Picture;
}

std::string FirstLine(std::string_view text) {
    std::size_t end = text.size();
    for (const std::string_view lineBreak : {"\r", "\n", "\u2028", "\u2029"})
        end = std::min(end, text.find(lineBreak));
    return std::string(text.substr(0, end));
}

}  // namespace

Control::Control(ControlKind kind, Container& parent, std::string name, std::string caption,
                 const Twips& place, std::string accessibleName)
    : kind_(kind),
      parent_(parent),
      name_(std::move(name)),
      caption_(std::move(caption)),
      accessibleName_(std::move(accessibleName)),
      place_(place) {
    Window& window = parent.OwnerWindow();
    window.controls_.push_back(this);
    if (TakesFocus(kind)) window.tabOrder_.push_back(this);
}

void Control::SetView(ControlView* view) {
    view_ = view;
    for (const Aspect aspect : {Aspect::Caption, Aspect::Hint, Aspect::Text, Aspect::Enabled, Aspect::Checked,
                                Aspect::Items, Aspect::Selection})
        Changed(aspect);
}

void Control::Changed(Aspect aspect) {
    if (view_ != nullptr) view_->Refresh(aspect);
}

void Control::SetCaption(std::string_view caption) {
    caption_ = caption;
    Changed(Aspect::Caption);
}

void Control::SetHint(std::string_view hint) {
    if (hint == hint_) return;
    hint_ = hint;
    Changed(Aspect::Hint);
}

void Control::SetEnabled(bool enabled) {
    if (enabled == enabled_) return;
    enabled_ = enabled;
    if (!enabled && HasFocus()) {
        Control* const next = OwnerWindow().NextTabStop(this);
        if (next != nullptr) next->SetFocus();
    }
    Changed(Aspect::Enabled);
}

std::string Control::AccessibleName() const {
    return accessibleName_.empty() ? WithoutAccessKey(caption_) : accessibleName_;
}

bool Control::TakesInput() const {
    return enabled_ && OwnerWindow().TakesInput();
}

void Control::SetFocus() {
    if (!enabled_) return;
    OwnerWindow().GiveFocus(*this);
    Changed(Aspect::Focus);
}

bool Control::HasFocus() const {
    return OwnerWindow().Focused() == this;
}

bool Control::CanHaveFocus() const {
    const auto& order = OwnerWindow().tabOrder_;
    return std::ranges::find(order, this) != order.end();
}

void Control::UserFocuses() {
    if (TakesInput()) OwnerWindow().GiveFocus(*this);
}

void Control::UserClicks() {
    if (TakesInput()) OnClick();
}

void CheckBox::SetChecked(bool checked) {
    if (checked == checked_) return;
    checked_ = checked;
    Changed(Aspect::Checked);
}

void CheckBox::UserClicks() {
    if (!TakesInput()) return Changed(Aspect::Checked);
    SetChecked(!checked_);
    OnClick();
}

bool OptionButton::IsTabStop() const {
    return Enabled() && (selected_ || std::ranges::none_of(Parent().options_, &OptionButton::selected_));
}

void OptionButton::Select() {
    for (OptionButton* const other : Parent().options_) {
        if (other == this || !other->selected_) continue;
        other->selected_ = false;
        other->Changed(Aspect::Checked);
    }
    if (selected_) return;
    selected_ = true;
    Changed(Aspect::Checked);
}

void OptionButton::UserClicks() {
    if (!TakesInput()) return Changed(Aspect::Checked);
    SetFocus();
    Select();
}

void OptionButton::UserPressesArrow(bool forward) {
    if (!TakesInput()) return Changed(Aspect::Checked);
    std::vector<OptionButton*> ring = Parent().options_;
    if (!forward) std::ranges::reverse(ring);
    std::rotate(ring.begin(), std::ranges::find(ring, this) + 1, ring.end());
    (*std::ranges::find_if(ring, &OptionButton::Enabled))->UserClicks();
}

const std::string& TextBox::Text() const {
    if (sourceChanged_) text_ = source_();
    sourceChanged_ = false;
    return text_;
}

void TextBox::SetText(std::string_view text) {
    text_ = text;
    sourceChanged_ = false;
    Changed(Aspect::Text);
}

void TextBox::SetTextSource(std::function<std::string()> source) {
    source_ = std::move(source);
    SourceChanged();
}

void TextBox::SourceChanged() {
    sourceChanged_ = true;
    Changed(Aspect::Text);
}

void TextBox::UserTypes(std::string_view text, std::string_view textAfterCaret) {
    if (!TakesInput() || style_ != Style::SingleLine) return Changed(Aspect::Text);
    text_ = FirstLine(text) + FirstLine(textAfterCaret);
}

void ListBox::Add(std::string_view item) {
    items_.emplace_back(item);
    Changed(Aspect::Items);
}

void ListBox::Replace(int index, std::string_view item) {
    items_.at(static_cast<std::size_t>(index)) = item;
    Changed(Aspect::Items);
}

void ListBox::Remove(int index) {
    items_.erase(items_.begin() + index);
    selected_ = none;
    Changed(Aspect::Items);
}

void ListBox::Clear() {
    items_.clear();
    selected_ = none;
    Changed(Aspect::Items);
}

void ListBox::Select(int index) {
    selected_ = index;
    Changed(Aspect::Selection);
}

void ListBox::UserSelects(int index) {
    if (!TakesInput() || index < 0 || index >= Count()) return Changed(Aspect::Selection);
    Select(index);
    OnClick();
}

}  // namespace quillmere
