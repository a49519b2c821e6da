#pragma once

#include "filters/filter_set.h"
#include "system/code_page.h"
#include "toolkit/backend.h"
#include "toolkit/control.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// One half of the list editor: a list box that shows the names in a working list, the text boxes of one
/// entry, and the commands Add, Edit and Delete. Every command changes both the list box and the working
/// list, so that entry i of the box is slot i of the list. `Entry` is RectangleFilter or ItemFilter; a
/// derived class adds what differs between the two.
///
/// Names and codes are in the code page in the working list, and UTF-8 in the controls.
template <class Entry>
class ListHalf {
 public:
    using Table = FilterTable<Entry>;

    struct Controls {
        ListBox& list;
        PushButton& add;
        PushButton& edit;
        PushButton& remove;
        std::vector<TextBox*> fields;  ///< the name first
    };
    /// Called after every command that has changed the working list, with whether it stored "?" for a
    /// character that the code page lacks.
    using Changed = std::function<void(bool replaced)>;
    /// `entries` is the working list. All but `changed` must outlive the object. Edit and Delete are disabled
    /// until an entry is selected.
    ListHalf(Backend& backend, Controls controls, Table& entries, Changed changed)
        : backend_(backend), controls_(std::move(controls)), entries_(entries), changed_(std::move(changed)) {
        SwitchEditAndDelete(false);
        controls_.list.OnClick = [this] { ShowSelected(); };
        controls_.add.OnClick = [this] { Add(); };
        controls_.edit.OnClick = [this] { Edit(); };
        controls_.remove.OnClick = [this] { Delete(); };
    }
    virtual ~ListHalf() = default;
    ListHalf(const ListHalf&) = delete;
    ListHalf& operator=(const ListHalf&) = delete;

    /// Adds the name in `slot` of `entries` to the list box, unless the slot is free.
    void ShowSlot(const Table& entries, std::size_t slot) {
        if (!entries[slot].name.empty()) controls_.list.Add(ShownName(entries[slot]));
    }

 protected:
    TextBox& Field(std::size_t index) { return *controls_.fields[index]; }
    void Refuse(const std::string& text) {
        backend_.ShowMessage({"Shiz....", text, MessageIcon::Information, MessageButtons::Ok});
    }

 private:
    /// Puts the entry into the text boxes.
    virtual void Show(const Entry& entry) = 0;
    /// The entry in the text boxes, none of which is empty. When they hold no valid entry, tells the user why
    /// and returns nothing.
    virtual std::optional<Entry> EntryFromFields() = 0;

    void ShowSelected() {
        if (controls_.list.Selected() == ListBox::none) return;
        Show(SelectedEntry());
        SwitchEditAndDelete(true);
    }

    void Add() {
        const auto entry = TestedEntry();
        if (!entry) return;
        if (controls_.list.Count() == static_cast<int>(filterSlots)) return Refuse("The list is full.");
        const bool replaced = FieldsLoseCharacters();
        controls_.list.Add(ShownName(*entry));
        entries_[static_cast<std::size_t>(controls_.list.Count() - 1)] = *entry;
        EmptyFields();
        changed_(replaced);
    }

    void Edit() {
        const int selected = controls_.list.Selected();
        if (selected == ListBox::none) return;
        const auto entry = TestedEntry();
        if (!entry) return;
        controls_.list.Replace(selected, ShownName(*entry));
        SelectedEntry() = *entry;
        SwitchEditAndDelete(false);
        changed_(FieldsLoseCharacters());
    }

    void Delete() {
        const int selected = controls_.list.Selected();
        if (selected == ListBox::none) return;
        Compact(static_cast<std::size_t>(selected));
        controls_.list.Remove(selected);
        EmptyFields();
        SwitchEditAndDelete(false);
        changed_(false);
    }

    /// CompactRectangles and CompactItems: removes the entry in `slot`. Those after it move up by one slot,
    /// and the slot of the last one becomes free.
    void Compact(std::size_t slot) {
        const auto count = static_cast<std::ptrdiff_t>(controls_.list.Count());
        const auto end = entries_.begin() + count;
        std::move(entries_.begin() + static_cast<std::ptrdiff_t>(slot) + 1, end,
                  entries_.begin() + static_cast<std::ptrdiff_t>(slot));
        *(end - 1) = {};
    }

    std::optional<Entry> TestedEntry() {
        const auto empty = [](const TextBox* field) { return field->Text().empty(); };
        const auto first = std::ranges::find_if(controls_.fields, empty);
        if (first == controls_.fields.end()) return EntryFromFields();
        Refuse("You didn't fill out all the fields");
        (*first)->SetFocus();
        return std::nullopt;
    }
    static std::string ShownName(const Entry& entry) { return Utf8FromCodePage(entry.name); }
    /// Whether the code page lacks a character in the text boxes.
    bool FieldsLoseCharacters() const {
        return std::ranges::any_of(controls_.fields, [](const TextBox* field) {
            return Utf8FromCodePage(CodePageFromUtf8(field->Text())) != field->Text();
        });
    }
    Entry& SelectedEntry() { return entries_[static_cast<std::size_t>(controls_.list.Selected())]; }
    void EmptyFields() {
        for (TextBox* const field : controls_.fields)
            field->SetText("");
    }
    void SwitchEditAndDelete(bool on) {
        controls_.edit.SetEnabled(on);
        controls_.remove.SetEnabled(on);
    }

    Backend& backend_;
    Controls controls_;
    Table& entries_;
    Changed changed_;
};

/// Moves entries that come after free slots up, so that there is no gap between entries.
template <class Table>
void CloseGaps(Table& table) {
    const auto live = [](const auto& entry) { return !entry.name.empty(); };
    const auto rest = std::stable_partition(table.begin(), table.end(), live);
    std::fill(rest, table.end(), typename Table::value_type{});
}

}  // namespace quillmere
