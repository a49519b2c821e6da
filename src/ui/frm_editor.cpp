#include "ui/frm_editor.h"

#include "base/number_text.h"
#include "filters/list_file.h"
#include "ui/list_dialogs.h"
#include "ui/mod_translucent.h"

#include <array>
#include <cstdint>
#include <string>

namespace quillmere {

namespace {

constexpr int clientWidth = 6255;   // twips
constexpr int clientHeight = 5190;  // twips

constexpr const char* plainCaption = "Rectangle and Item List Editor";
constexpr const char* changedCaption = "Rectangle and Item List Editor*";
constexpr const char* saveQuestion = "Do you want to save before exiting?";

/// Copies every slot that is not free into the slot with the same number.
template <class Table>
void CopyLiveSlots(const Table& from, Table& to) {
    for (std::size_t slot = 0; slot < from.size(); ++slot) {
        if (!from[slot].name.empty()) to[slot] = from[slot];
    }
}

}  // namespace

void RectangleHalf::Show(const RectangleFilter& entry) {
    Field(0).SetText(Utf8FromCodePage(entry.name));
    Field(1).SetText(std::to_string(entry.X1));
    Field(2).SetText(std::to_string(entry.Y1));
    Field(3).SetText(std::to_string(entry.X2));
    Field(4).SetText(std::to_string(entry.Y2));
}

/// Converts all four coordinates before anything changes. The focus goes to the first that is not a number.
std::optional<RectangleFilter> RectangleHalf::EntryFromFields() {
    RectangleFilter entry{CodePageFromUtf8(Field(0).Text())};
    const std::array<std::int32_t*, 4> bounds = {&entry.X1, &entry.Y1, &entry.X2, &entry.Y2};
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        TextBox& field = Field(i + 1);
        if (TrapFailure([&] { *bounds[i] = NumberFromText(field.Text()); })) {
            Refuse("A coordinate has to be a number.");
            field.SetFocus();
            return std::nullopt;
        }
    }
    return entry;
}

void ItemHalf::Show(const ItemFilter& entry) {
    Field(0).SetText(Utf8FromCodePage(entry.name));
    Field(1).SetText(Utf8FromCodePage(entry.code));
}

std::optional<ItemFilter> ItemHalf::EntryFromFields() {
    return ItemFilter{CodePageFromUtf8(Field(0).Text()), CodePageFromUtf8(Field(1).Text())};
}

frmEditor::frmEditor(Backend& backend, modGlobal& shared, Log& log, bool blnTranslucent)
    : Window(backend, "frmEditor", plainCaption, clientWidth, clientHeight),
      shared_(shared),
      log_(log),
      blnTranslucent_(blnTranslucent),
      rectangles_(backend,
                  {lstRectangle,
                   mnuAddRect,
                   mnuEditRect,
                   mnuRemoveRect,
                   {&txtRectangleName, &txtX1, &txtY1, &txtX2, &txtY2}},
                  working_.arrRectangles, [this](bool replaced) { NoteChange(replaced); }),
      items_(backend, {lstItem, mnuAddItem, mnuEditItem, mnuRemoveItem, {&txtItemName, &txtItem}},
             working_.arrItems, [this](bool replaced) { NoteChange(replaced); }) {
    mnuLoad.OnClick = [this] { mnuLoad_Click(); };
    mnuSave.OnClick = [this] { mnuSave_Click(); };
    mnuClose.OnClick = [this] { Close(); };
}

void frmEditor::Load() {
    ApplyTranslucency(OwnerBackend().Calls(), Handle(), blnTranslucent_);
    SetChanged(false);
    working_ = shared_.filterSet;
    FillLists();
}

bool frmEditor::Unload() {
    if (blnChanged_ && !OfferToSave("Si teh save?", saveQuestion)) return false;
    shared_.filterSet.Clear();
    CopyLiveSlots(working_.arrRectangles, shared_.filterSet.arrRectangles);
    CopyLiveSlots(working_.arrItems, shared_.filterSet.arrItems);
    return true;
}

std::string frmEditor::ReasonAgainstSessionEnd() const {
    return blnChanged_ ? saveQuestion : "";
}

bool frmEditor::OfferToSave(const std::string& title, const std::string& text) {
    const MessageResult answer =
        OwnerBackend().ShowMessage({title, text, MessageIcon::Question, MessageButtons::YesNoCancel});
    if (answer == MessageResult::Yes) SaveList();
    return answer != MessageResult::Cancel;
}

void frmEditor::SetChanged(bool changed) {
    blnChanged_ = changed;
    SetCaption(changed ? changedCaption : plainCaption);
}

/// Logs only the first replaced character, since the list boxes show them all.
void frmEditor::NoteChange(bool replaced) {
    SetChanged(true);
    if (!replaced || toldOfReplacement_) return;
    toldOfReplacement_ = true;
    log_.LogInfo(
        "A character that the code page does not have was stored as \"?\"; an item code with it never "
        "matches.");
}

/// A list file that was edited by hand may leave gaps between entries. They are closed first, so that the
/// positions in the list boxes are slot numbers.
void frmEditor::FillLists() {
    CloseGaps(working_.arrRectangles);
    CloseGaps(working_.arrItems);
    for (std::size_t slot = 0; slot < filterSlots; ++slot) {
        rectangles_.ShowSlot(working_.arrRectangles, slot);
        items_.ShowSlot(working_.arrItems, slot);
    }
}

void frmEditor::LoadList() {
    const std::string strFile = OwnerBackend().ShowFileDialog(ListToLoadDialog());
    if (strFile.empty()) return;
    lstItem.Clear();
    lstRectangle.Clear();
    if (LoadFilterList(shared_.objReader, strFile, working_, log_)) return FillLists();
    OwnerBackend().AskForAttention(*this);  // the log is behind the window
}

void frmEditor::SaveList() {
    const std::string strFile = OwnerBackend().ShowFileDialog(ListToSaveDialog());
    if (strFile.empty() || SaveFilterList(shared_.objWriter, strFile, working_, log_)) return;
    OwnerBackend().AskForAttention(*this);
}

void frmEditor::mnuLoad_Click() {
    if (blnChanged_ && !OfferToSave("And teh munky says....", "Do you want to save your current list?"))
        return;
    SetChanged(false);
    LoadList();
}

void frmEditor::mnuSave_Click() {
    SetChanged(false);
    SaveList();
}

}  // namespace quillmere
