#include "ui/frm_main.h"

#include "base/utf8.h"
#include "filters/list_file.h"
#include "ui/frm_about.h"
#include "ui/frm_editor.h"
#include "ui/frm_help.h"
#include "ui/list_dialogs.h"
#include "ui/mod_translucent.h"

#include <algorithm>
#include <filesystem>

namespace quillmere {

namespace {

constexpr int clientWidth = 7335;   // twips
constexpr int clientHeight = 4335;  // twips

std::vector<std::string> OptionsFilesIn(std::vector<std::string> folders) {
    for (std::string& folder : folders) {
        folder += static_cast<char>(std::filesystem::path::preferred_separator);
        folder += "DSCPOPTS.INI";
    }
    return folders;
}

/// By the extension, in any letter case.
bool IsList(std::string_view path) {
    constexpr std::string_view extension = ".lst";
    return SameLetters(path.substr(path.size() - std::min(path.size(), extension.size())), extension);
}

std::string PathOrNothing(const std::string& path) {
    return path.empty() ? "nothing chosen yet" : path;
}

}  // namespace

frmMain::frmMain(Backend& backend, modGlobal& shared, const std::vector<std::string>& folders)
    : Window(backend, "frmMain", "Quillmere", clientWidth, clientHeight),
      shared_(shared),
      pass_(shared, statusLog_, *this),
      optionsFiles_(OptionsFilesIn(folders)) {
    for (const FilterControls& filter : filters_)
        EnableFilter(filter);
    SetTabOrder({&txtInfo, &chkRectangles, &optRectangleIn, &optRectangleNotIn, &chkItems, &optItemIn,
                 &optItemNotIn, &chkFacet, &optFacetIn, &optFacetNotIn, &cmdEditor, &cmdRun, &cmdHalt,
                 &cmdExit, &txtFacet});
    SetTakesFiles();
    ConnectEvents();
}

void frmMain::ConnectEvents() {
    txtInfo.SetTextSource([this] { return statusLog_.Text(); });
    statusLog_.OnLogChanged = [this] { txtInfo.SourceChanged(); };
    statusLog_.OnInfoChanged = [this] { lblInfo.SetCaption(statusLog_.InfoLine()); };
    for (const FilterControls& filter : filters_)
        filter.use.OnClick = [this, &filter] { EnableFilter(filter); };
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
    LoadOptions(shared_.openFiles.System(), optionsFiles_, options_, statusLog_);
    ApplyTranslucency(OwnerBackend().Calls(), Handle(), options_.blnTranslucent);
    mnuTranslucent.SetChecked(options_.blnTranslucent);
    ShowHints();
}

/// While a pass runs, the close box acts as Exit.
bool frmMain::Unload() {
    if (!shared_.blnIdle) EndAtOnce();
    return true;
}

void frmMain::EndAtOnce() {
    shared_.openFiles.CloseAll();
    OwnerBackend().EndProgram();
}

/// The controls of a filter can be used while its box is checked; checking it always selects the first
/// option.
void frmMain::EnableFilter(const FilterControls& filter) {
    const bool on = filter.use.Checked();
    filter.in.SetEnabled(on);
    if (on) filter.in.Select();
    filter.notIn.SetEnabled(on);
    if (filter.text != nullptr) filter.text->SetEnabled(on);
}

/// Tells what the buttons would work with now. To be called after each change of that.
void frmMain::ShowHints() {
    const FilterSet& lists = shared_.filterSet;
    cmdRun.SetHint("Reads: " + PathOrNothing(options_.strInputFile) +
                   "\r\nWrites: " + PathOrNothing(options_.strOutputFile));
    cmdEditor.SetHint("Rectangles loaded: " + std::to_string(lists.arrRectangles.EntryCount()) +
                      "\r\nItems loaded: " + std::to_string(lists.arrItems.EntryCount()));
}

void frmMain::ChooseInputFile() {
    UseInputFile(
        OwnerBackend().ShowFileDialog({FileDialog::Purpose::Open, "Select a script file to shread",
                                       "Script Files (*.scp)|*.scp|All Files (*.*)|*.*", "*.SCP", false}));
}

void frmMain::UseInputFile(const std::string& path) {
    options_.strInputFile = path;
    if (!options_.strInputFile.empty()) statusLog_.LogInfo("File to load: " + options_.strInputFile);
    ShowHints();
}

void frmMain::mnuSave_Click() {
    options_.strOutputFile =
        OwnerBackend().ShowFileDialog({FileDialog::Purpose::Save, "Select a file to save the output to",
                                       "Script Files (*.SCP)|*.SCP|All Files (*.*)|*.*", "*.SCP", true});
    if (!options_.strOutputFile.empty()) statusLog_.LogInfo("File to save: " + options_.strOutputFile);
    ShowHints();
}

void frmMain::mnuLoadList_Click() {
    const std::string strFile = OwnerBackend().ShowFileDialog(ListToLoadDialog());
    if (!strFile.empty()) UseList(strFile);
}

void frmMain::UseList(const std::string& path) {
    LoadFilterList(shared_.objReader, path, shared_.filterSet, statusLog_);
    ShowHints();
}

/// Each file in turn, so of several lists or worlds the last one counts.
void frmMain::FilesDropped(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        if (IsList(path)) {
            UseList(path);
        } else {
            UseInputFile(path);
        }
    }
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
    SaveOptions(shared_.openFiles.System(), optionsFiles_.front(), options_, statusLog_);
}

void frmMain::mnuHelp_Click() {
    frmHelp(OwnerBackend()).ShowModal();
}

void frmMain::mnuAbout_Click() {
    frmAbout(OwnerBackend(), options_.blnTranslucent).ShowModal();
}

void frmMain::cmdEditor_Click() {
    frmEditor(OwnerBackend(), shared_, statusLog_, options_.blnTranslucent).ShowModal();
    ShowHints();
}

void frmMain::cmdRun_Click() {
    pass_.Run(SettingsFromControls());
}

FilterSettings frmMain::SettingsFromControls() const {
    FilterSettings settings;
    settings.strInputFile = options_.strInputFile;
    settings.strOutputFile = options_.strOutputFile;
    for (const FilterControls& filter : filters_) {
        if (!filter.use.Checked()) continue;
        settings.filters[filter.kind] = {filter.in.Selected() ? Direction::In : Direction::NotIn,
                                         filter.text == nullptr ? "" : filter.text->Text()};
    }
    return settings;
}

void frmMain::Timer1_Timer() {
    progress_.Tick(shared_.blnIdle, pass_.Processed(), statusLog_);
}

void frmMain::Refuse(std::string_view title, std::string_view text) {
    OwnerBackend().ShowMessage(
        {std::string(title), std::string(text), MessageIcon::Information, MessageButtons::Ok});
}

void frmMain::FocusFilter(FilterKind kind) {
    for (const FilterControls& filter : filters_) {
        if (filter.kind == kind && filter.text != nullptr) filter.text->SetFocus();
    }
}

/// The focus leaves Halt for the Status log: the next button is Exit, and Enter may be pressed once more.
void frmMain::ShowPassActive(bool active) {
    if (!active && cmdHalt.HasFocus()) txtInfo.SetFocus();
    cmdEditor.SetEnabled(!active);
    cmdHalt.SetEnabled(active);
}

}  // namespace quillmere
