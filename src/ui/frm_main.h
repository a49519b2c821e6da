#pragma once

#include "engine/filter_pass.h"
#include "engine/mod_global.h"
#include "engine/progress_display.h"
#include "engine/status_log.h"
#include "toolkit/backend.h"
#include "toolkit/control.h"
#include "toolkit/menu.h"
#include "toolkit/timer.h"
#include "toolkit/window.h"
#include "ui/options_file.h"

#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace quillmere {

/// The main window, open as long as the program runs: the filter settings, the choice of the two files, the
/// Status log and the info line, and the commands that start and halt a pass.
class frmMain : public Window, private PassWindow {
 public:
    /// `backend` and `shared` must outlive the window. The options are saved in the first of `folders` and
    /// loaded from the first one that has an options file. The paths have no separator at their end.
    frmMain(Backend& backend, modGlobal& shared, const std::vector<std::string>& folders);

    Label lblInfo{*this, "lblInfo", "(Pacing like a mindless robot)", {480, 240, 3135, 255}};

    Frame frmRectangle{*this, "frmRectangle", "Rectangle Settings", {120, 600, 3855, 975}};
    CheckBox chkRectangles{frmRectangle, "chkRectangles", "Filter Rectangles", {120, 240, 1695, 255}};
    OptionButton optRectangleIn{frmRectangle, "optRectangleIn", "In Rectangle", {120, 600, 1335, 255}};
    OptionButton optRectangleNotIn{
        frmRectangle, "optRectangleNotIn", "Not In Rectangle", {1920, 600, 1575, 255}};

    Frame frmItems{*this, "frmItems", "Item Settings", {120, 1680, 3855, 1095}};
    CheckBox chkItems{frmItems, "chkItems", "Filter Items", {120, 240, 1215, 255}};
    OptionButton optItemIn{frmItems, "optItemIn", "Equal To", {120, 600, 1095, 255}};
    OptionButton optItemNotIn{frmItems, "optItemNotIn", "Not Equal", {1200, 600, 1095, 255}};

    Frame frmFacet{*this, "frmFacet", "Facet Settings", {120, 2880, 3855, 1335}};
    CheckBox chkFacet{frmFacet, "chkFacet", "Filter Faucets", {120, 240, 2415, 255}};
    OptionButton optFacetIn{frmFacet, "optFacetIn", "In Facet", {120, 600, 1095, 255}};
    OptionButton optFacetNotIn{frmFacet, "optFacetNotIn", "Not in Facet", {1440, 600, 1335, 255}};
    Label mnuFaucetText{frmFacet, "mnuFaucetText", "Facet Number:", {120, 960, 1215, 255}};
    TextBox txtFacet{frmFacet, "txtFacet", "Facet Number:", {1440, 960, 1095, 285}};

    TextBox txtInfo{*this, "txtInfo", "Status log", {4200, 120, 3015, 2895}, TextBox::Style::ReadOnlyLines};
    PushButton cmdEditor{*this, "cmdEditor", "Rec&tangle and Item List Editor", {4200, 3240, 2895, 375}};
    PushButton cmdRun{*this, "cmdRun", "&Run", {4200, 3720, 855, 375}};
    PushButton cmdHalt{*this, "cmdHalt", "&Halt", {5280, 3720, 735, 375}};
    PushButton cmdExit{*this, "cmdExit", "E&xit", {6240, 3720, 855, 375}};
    Timer Timer1{*this, std::chrono::milliseconds(100)};

    Menu mnuFileRoot{*this, "mnuFileRoot", "&File"};
    MenuItem mnuLoadList{mnuFileRoot, "mnuLoadList", "L&oad a List"};
    MenuItem mnuBreak002{mnuFileRoot, "mnuBreak002", "-"};
    MenuItem mnuLoad{mnuFileRoot, "mnuLoad", "&File to Read"};
    MenuItem mnuSave{mnuFileRoot, "mnuSave", "&Save Output As"};
    MenuItem mnuBreak003{mnuFileRoot, "mnuBreak003", "-"};
    MenuItem mnuRun{mnuFileRoot, "mnuRun", "&Run"};
    MenuItem mnuBreak01{mnuFileRoot, "mnuBreak01", "-"};
    MenuItem mnuExit{mnuFileRoot, "mnuExit", "E&xit"};
    Menu mnuMiscRoot{*this, "mnuMiscRoot", "Misc"};
    MenuItem mnuTranslucent{mnuMiscRoot, "mnuTranslucent", "Translucency"};
    Menu mnuHelpRoot{*this, "mnuHelpRoot", "&Help"};
    MenuItem mnuHelp{mnuHelpRoot, "mnuHelp", "Help"};
    MenuItem mnuBreak02{mnuHelpRoot, "mnuBreak02", "-"};
    MenuItem mnuAbout{mnuHelpRoot, "mnuAbout", "&About"};

 private:
    // Window
    void Load() override;
    bool Unload() override;
    void SessionEnds() override { EndAtOnce(); }
    /// Halt is enabled at the start, too, but has its key only during a pass. Otherwise Help has it.
    bool TakesAccessKey(const Control& control) const override {
        return &control != &cmdHalt || !shared_.blnIdle;
    }
    void FilesDropped(const std::vector<std::string>& paths) override;

    // PassWindow
    void Yield() override { OwnerBackend().Yield(); }
    double TimeOfDay() override { return OwnerBackend().TimeOfDay(); }
    void Refuse(std::string_view title, std::string_view text) override;
    void FocusFilter(FilterKind kind) override;
    void ShowPassActive(bool active) override;

    /// The controls that set one filter.
    struct FilterControls {
        FilterKind kind;
        CheckBox& use;
        OptionButton& in;
        OptionButton& notIn;
        TextBox* text;  ///< what the filter compares with; null when that is a list
    };

    void ConnectEvents();
    void EnableFilter(const FilterControls& filter);
    FilterSettings SettingsFromControls() const;
    void ShowHints();
    void ChooseInputFile();
    void UseInputFile(const std::string& path);
    void UseList(const std::string& path);
    void EndAtOnce();

    void cmdEditor_Click();
    void mnuLoadList_Click();
    void mnuSave_Click();
    void mnuTranslucent_Click();
    void mnuHelp_Click();
    void mnuAbout_Click();
    void cmdRun_Click();
    void Timer1_Timer();

    const std::array<FilterControls, filterTypeCount> filters_ = {{
        {FilterKind::Item, chkItems, optItemIn, optItemNotIn, nullptr},
        {FilterKind::Rectangle, chkRectangles, optRectangleIn, optRectangleNotIn, nullptr},
        {FilterKind::Facet, chkFacet, optFacetIn, optFacetNotIn, &txtFacet},
    }};
    modGlobal& shared_;
    StatusLog statusLog_;
    ProgressDisplay progress_;
    FilterPass pass_;
    std::vector<std::string> optionsFiles_;  ///< one for each folder
    Options options_;                        ///< blnTranslucent, strInputFile, strOutputFile
};

}  // namespace quillmere
