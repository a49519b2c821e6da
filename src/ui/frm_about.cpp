#include "ui/frm_about.h"

#include "about_jpg.h"
#include "base/version.h"
#include "ui/mod_translucent.h"

#include <string>

namespace quillmere {

namespace {

constexpr int clientWidth = 4860;   // twips
constexpr int clientHeight = 2205;  // twips

}  // namespace

frmAbout::frmAbout(Backend& backend, bool blnTranslucent)
    : Window(backend, "frmAbout", "About....", clientWidth, clientHeight, Border::FixedDialog),
      Image1(*this, "Image1", "A quill over a mere", {120, 120, 1650, 510},
             {reinterpret_cast<const char*>(aboutJpeg), sizeof aboutJpeg}),
      blnTranslucent_(blnTranslucent) {
    SetTabOrder({&Command1, &lblSupportLink, &lblHomeLink});
    SetCancelButton(Command1);
    Command1.OnClick = [this] { Close(); };
    lblHomeLink.OnClick = [this] { OpenAddress(lblHomeLink.Caption()); };
    lblSupportLink.OnClick = [this] { OpenAddress("mailto:" + lblSupportLink.Caption()); };
}

void frmAbout::Load() {
    ApplyTranslucency(OwnerBackend().Calls(), Handle(), blnTranslucent_);
    lblVersion.SetCaption(programVersion);
    lblBuild.SetCaption(std::string(programBuild) + " (" + programBuildDate + ")");
}

void frmAbout::OpenAddress(const std::string& address) {
    constexpr int normalWindow = 1;
    OwnerBackend().Calls().ShellExecuteA(Handle(), "open", address, "", "C:\\", normalWindow);
}

}  // namespace quillmere
