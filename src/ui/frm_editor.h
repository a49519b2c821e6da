#pragma once

#include "base/failure_report.h"
#include "engine/mod_global.h"
#include "filters/filter_set.h"
#include "toolkit/backend.h"
#include "toolkit/control.h"
#include "toolkit/menu.h"
#include "toolkit/window.h"
#include "ui/list_half.h"

#include <optional>
#include <string>

namespace quillmere {

/// The left half of the list editor; its fields are name, X1, Y1, X2, Y2.
class RectangleHalf : public ListHalf<RectangleFilter> {
    using ListHalf::ListHalf;
    void Show(const RectangleFilter& entry) override;
    std::optional<RectangleFilter> EntryFromFields() override;
};

/// The right half of the list editor; its fields are name and code.
class ItemHalf : public ListHalf<ItemFilter> {
    using ListHalf::ListHalf;
    void Show(const ItemFilter& entry) override;
    std::optional<ItemFilter> EntryFromFields() override;
};

/// The list editor: the user edits a copy of the filter set, which replaces it when the window closes. It is
/// made anew for each opening.
class frmEditor : public Window {
 public:
    /// `backend`, `shared` and `log` must outlive the window.
    frmEditor(Backend& backend, modGlobal& shared, Log& log, bool blnTranslucent);

    Label Label1{*this, "Label1", "Rectangle Listing", {840, 0, 1335, 255}};
    ListBox lstRectangle{*this, "lstRectangle", "Rectangle Listing", {120, 360, 2895, 2595}};
    Label Label8{*this, "Label8", "Rectangle Name:", {600, 3000, 1335, 255}};
    TextBox txtRectangleName{*this, "txtRectangleName", "Rectangle Name:", {600, 3240, 2055, 285}};
    Label Label4{*this, "Label4", "X1:", {240, 3720, 255, 255}};
    TextBox txtX1{*this, "txtX1", "X1:", {600, 3690, 735, 285}};
    Label Label6{*this, "Label6", "Y1:", {1560, 3720, 255, 255}};
    TextBox txtY1{*this, "txtY1", "Y1:", {1920, 3690, 735, 285}};
    Label Label7{*this, "Label7", "X2:", {240, 4200, 255, 255}};
    TextBox txtX2{*this, "txtX2", "X2:", {600, 4170, 735, 285}};
    Label Label5{*this, "Label5", "Y2:", {1560, 4200, 255, 255}};
    TextBox txtY2{*this, "txtY2", "Y2:", {1920, 4170, 735, 285}};
    PushButton mnuAddRect{*this, "mnuAddRect", "Add", {240, 4680, 735, 375}};
    PushButton mnuEditRect{*this, "mnuEditRect", "Edit", {1200, 4680, 735, 375}};
    PushButton mnuRemoveRect{*this, "mnuRemoveRect", "Delete", {2160, 4680, 735, 375}};

    Line Line1{*this, "Line1", {3120, 0, 0, 5160}};

    Label Label2{*this, "Label2", "Item Listing", {4320, 0, 855, 255}};
    ListBox lstItem{*this, "lstItem", "Item Listing", {3240, 360, 2895, 2595}};
    Label Label9{*this, "Label9", "Item Name:", {3360, 3120, 975, 255}};
    TextBox txtItemName{*this, "txtItemName", "Item Name:", {3360, 3360, 2055, 285}};
    Label Label3{*this, "Label3", "Item Code:", {3360, 3840, 855, 255}};
    TextBox txtItem{*this, "txtItem", "Item Code:", {3360, 4080, 2055, 285}};
    PushButton mnuAddItem{*this, "mnuAddItem", "Add", {3360, 4680, 735, 375}};
    PushButton mnuEditItem{*this, "mnuEditItem", "Edit", {4320, 4680, 735, 375}};
    PushButton mnuRemoveItem{*this, "mnuRemoveItem", "Delete", {5280, 4680, 735, 375}};

    Menu mnuFileRoot{*this, "mnuFileRoot", "&File"};
    MenuItem mnuLoad{mnuFileRoot, "mnuLoad", "&Load a List"};
    MenuItem mnuSave{mnuFileRoot, "mnuSave", "&Save a List"};
    MenuItem mnuBreak0001{mnuFileRoot, "mnuBreak0001", "-"};
    MenuItem mnuClose{mnuFileRoot, "mnuClose", "&Close Window"};

    // A failure is logged, and the window asks for attention since it covers the log.

    /// Asks for a file and replaces the working lists by those in it. A failure leaves the list boxes empty.
    void LoadList();
    /// Asks for a file and writes the working lists to it.
    void SaveList();

 private:
    // Window
    void Load() override;
    bool Unload() override;
    std::string ReasonAgainstSessionEnd() const override;

    void SetChanged(bool changed);
    void NoteChange(bool replaced);
    void FillLists();
    /// Offers to save unsaved work. Returns whether to go on.
    bool OfferToSave(const std::string& title, const std::string& text);
    void mnuLoad_Click();
    void mnuSave_Click();

    modGlobal& shared_;
    Log& log_;
    bool blnTranslucent_;
    bool blnChanged_ = false;
    bool toldOfReplacement_ = false;  ///< since the window was opened
    FilterSet working_;
    RectangleHalf rectangles_;
    ItemHalf items_;
};

}  // namespace quillmere
