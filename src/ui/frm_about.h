#pragma once

#include "toolkit/backend.h"
#include "toolkit/control.h"
#include "toolkit/window.h"

namespace quillmere {

/// The about box: version, credits, and two links. Its button and Escape close it, and so does a change to
/// another window. It is made anew for each opening.
class frmAbout : public Window {
 public:
    /// `backend` must outlive the window.
    frmAbout(Backend& backend, bool blnTranslucent);

    Picture Image1;
    Label Label1{*this, "Label1", "Quillmere Version", {1920, 120, 2175, 255}};
    Label lblVersion{*this, "lblVersion", "", {4080, 120, 615, 255}};
    Label Label3{*this, "Label3", "Build:", {1920, 360, 495, 255}};
    Label lblBuild{*this, "lblBuild", "", {2400, 360, 1815, 255}};
    Label Label5{*this, "Label5", "Support:", {1920, 600, 735, 255}};
    LinkLabel lblSupportLink{*this, "lblSupportLink", "support@quillmere.example", {2640, 600, 2055, 255}};
    Label Label4{
        *this,
        "Label4",
        "Thanks to Wren Ashdown, who let every build loose on a world of her own before anyone else had to.",
        {120, 960, 4335, 495}};
    Label Label2{*this, "Label2", "By Rowan Thistle", {240, 1560, 1455, 255}};
    LinkLabel lblHomeLink{*this, "lblHomeLink", "https://quillmere.example/", {240, 1800, 2295, 255}};
    PushButton Command1{*this, "Command1", "&Ok", {3360, 1560, 1215, 495}};

 private:
    // Window
    void Load() override;
    void Deactivate() override { Close(); }

    /// Nothing happens when there is no program for `address`.
    void OpenAddress(const std::string& address);

    bool blnTranslucent_;
};

}  // namespace quillmere
