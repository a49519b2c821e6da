#include "ui/frm_main.h"

#include "filters/list_file.h"
#include "ui/frm_about.h"
#include "ui/frm_editor.h"
#include "ui/frm_help.h"
#include "ui/list_dialogs.h"
#include "ui/mod_translucent.h"

#include <filesystem>

namespace quillmere {

namespace {

constexpr int clientWidth = 7335;   // twips
constexpr int clientHeight = 4335;  // twips

/// The direction of a filter from its check box and its first option button.
std::optional<Direction> DirectionOf(const CheckBox& filter, const OptionButton& first) {
    if (!filter.Checked()) return std::nullopt;
    return first.Selected() ? Direction::In : Direction::NotIn;
}

/// Switches a filter's option buttons; switching them on always selects the first.
void SwitchOptions(bool on, OptionButton& first, OptionButton& second) {
    first.SetEnabled(on);
    if (on) first.Select();
    second.SetEnabled(on);
}

std::string OptionsFileIn(const std::string& folder) {
    return folder + static_cast<char>(std::filesystem::path::preferred_separator) + "DSCPOPTS.INI";
}

}  // namespace

frmMain::frmMain(Backend& backend, modGlobal& shared, const std::string& folder)
    : Window(backend, "frmMain", "Quillmere", clientWidth, clientHeight),
      shared_(shared),
      pass_(shared, statusLog_, *this),
      strOptionsFile_(OptionsFileIn(folder)) {
    for (OptionButton* const option :
         {&optRectangleIn, &optRectangleNotIn, &optItemIn, &optItemNotIn, &optFacetIn, &optFacetNotIn}) {
        option->SetEnabled(false);
    }
    txtFacet.SetEnabled(false);
    SetTabOrder({&txtInfo, &chkRectangles, &optRectangleIn, &optRectangleNotIn, &chkItems, &optItemIn,
                 &optItemNotIn, &chkFacet, &optFacetIn, &optFacetNotIn, &cmdEditor, &cmdRun, &cmdHalt,
                 &cmdExit, &txtFacet});
    ConnectEvents();
}

void frmMain::ConnectEvents() {
    txtInfo.SetTextSource([this] { return statusLog_.Text(); });
    statusLog_.OnLogChanged = [this] { txtInfo.SourceChanged(); };
    statusLog_.OnInfoChanged = [this] { lblInfo.SetCaption(statusLog_.InfoLine()); };
    chkRectangles.OnClick = [this] { chkRectangles_Click(); };
    chkItems.OnClick = [this] { chkItems_Click(); };
    chkFacet.OnClick = [this] { chkFacet_Click(); };
    cmdEditor.OnClick = [this] { cmdEditor_Click(); };
    cmdRun.OnClick = mnuRun.OnClick = [this] { cmdRun_Click(); };
    cmdHalt.OnClick = [this] { pass_.Halt(); };
    cmdExit.OnClick = mnuExit.OnClick = [this] { EndAtOnce(); };
    mnuLoadList.OnClick = [this] { mnuLoadList_Click(); };
    mnuLoad.OnClick = [this] { ChooseInputFile(); };
    mnuSave.OnClick = [this] { mnuSave_Click(); };
    mnuTranslucent.OnClick = [this] { mnuTranslucent_Click(); };
    mnuHelp.OnClick = [this] { mnuHelp_Click(); };
    mnuAbout.OnClick = [this] { mnuAbout_Click(); };
    Timer1.OnTick = [this] { Timer1_Timer(); };
}

void frmMain::Load() {
    shared_.blnIdle = true;
    LoadOptions(shared_.openFiles.System(), strOptionsFile_, options_, statusLog_);
    ApplyTranslucency(OwnerBackend().Calls(), Handle(), options_.blnTranslucent);
    mnuTranslucent.SetChecked(options_.blnTranslucent);
}

/// The close box of a window whose pass is running acts as Exit.
bool frmMain::Unload() {
    if (!shared_.blnIdle) EndAtOnce();
    return true;
}

void frmMain::EndAtOnce() {
    shared_.openFiles.CloseAll();
    OwnerBackend().EndProgram();
}

void frmMain::chkRectangles_Click() {
    SwitchOptions(chkRectangles.Checked(), optRectangleIn, optRectangleNotIn);
}

void frmMain::chkItems_Click() {
    SwitchOptions(chkItems.Checked(), optItemIn, optItemNotIn);
}

void frmMain::chkFacet_Click() {
    SwitchOptions(chkFacet.Checked(), optFacetIn, optFacetNotIn);
    txtFacet.SetEnabled(chkFacet.Checked());
}

void frmMain::ChooseInputFile() {
    options_.strInputFile =
        OwnerBackend().ShowFileDialog({FileDialog::Purpose::Open, "Select a script file to shread",
                                       "Script Files (*.scp)|*.scp|All Files (*.*)|*.*", "*.SCP", false});
    if (!options_.strInputFile.empty()) statusLog_.LogInfo("File to load: " + options_.strInputFile);
}

void frmMain::mnuSave_Click() {
    options_.strOutputFile =
        OwnerBackend().ShowFileDialog({FileDialog::Purpose::Save, "Select a file to save the output to",
                                       "Script Files (*.SCP)|*.SCP|All Files (*.*)|*.*", "*.SCP", true});
    if (!options_.strOutputFile.empty()) statusLog_.LogInfo("File to save: " + options_.strOutputFile);
}

void frmMain::mnuLoadList_Click() {
    const std::string strFile = OwnerBackend().ShowFileDialog(ListToLoadDialog());
    if (!strFile.empty()) LoadFilterList(shared_.objReader, strFile, shared_.filterSet, statusLog_);
}

void frmMain::mnuTranslucent_Click() {
    if (!SupportsTranslucency(OwnerBackend().Calls())) {
        OwnerBackend().ShowMessage({"Incorrect Windows Version", "Requires Windows 2000 or later.",
                                    MessageIcon::Critical, MessageButtons::Ok});
        return;
    }
    options_.blnTranslucent = !options_.blnTranslucent;
    mnuTranslucent.SetChecked(options_.blnTranslucent);
    ApplyTranslucency(OwnerBackend().Calls(), Handle(), options_.blnTranslucent);
    SaveOptions(shared_.openFiles.System(), strOptionsFile_, options_, statusLog_);
}

void frmMain::mnuHelp_Click() {
    frmHelp(OwnerBackend()).ShowModal();
}

void frmMain::mnuAbout_Click() {
    frmAbout(OwnerBackend(), options_.blnTranslucent).ShowModal();
}

void frmMain::cmdEditor_Click() {
    frmEditor(OwnerBackend(), shared_, statusLog_, options_.blnTranslucent).ShowModal();
}

void frmMain::cmdRun_Click() {
    pass_.Run(SettingsFromControls());
}

FilterSettings frmMain::SettingsFromControls() const {
    FilterSettings settings;
    settings.strInputFile = options_.strInputFile;
    settings.strOutputFile = options_.strOutputFile;
    settings.items = DirectionOf(chkItems, optItemIn);
    settings.rectangles = DirectionOf(chkRectangles, optRectangleIn);
    settings.facet = DirectionOf(chkFacet, optFacetIn);
    settings.facetText = txtFacet.Text();
    return settings;
}

void frmMain::Timer1_Timer() {
    progress_.Tick(shared_.blnIdle, pass_.Processed(), statusLog_);
}

void frmMain::Yield() {
    OwnerBackend().Yield();
}

double frmMain::TimeOfDay() {
    return OwnerBackend().TimeOfDay();
}

void frmMain::Refuse(std::string_view title, std::string_view text) {
    OwnerBackend().ShowMessage(
        {std::string(title), std::string(text), MessageIcon::Information, MessageButtons::Ok});
}

void frmMain::FocusFacet() {
    txtFacet.SetFocus();
}

void frmMain::ShowPassActive(bool active) {
    cmdEditor.SetEnabled(!active);
    cmdHalt.SetEnabled(active);
}

}  // namespace quillmere
