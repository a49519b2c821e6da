#include "ui/frm_help.h"

#include "ui/help_text.h"

namespace quillmere {

namespace {

constexpr int clientWidth = 4890;   // twips
constexpr int clientHeight = 4785;  // twips

}  // namespace

frmHelp::frmHelp(Backend& backend)
    : Window(backend, "frmHelp", "Halp!  How does this thing work?", clientWidth, clientHeight) {
    SetCancelButton(cmdExit);
    Text1.SetText(helpText);
    cmdExit.OnClick = [this] { Close(); };
    cmdWtf.OnClick = [this] { cmdWtf_Click(); };
}

void frmHelp::cmdWtf_Click() {
    OwnerBackend().ShowMessage(
        {"WTF?!?",
         "Why in gods name would you click on this?  What if it did something horrible like\r\n"
         "blow your computer up?  you dont know if this button could have done\r\n"
         "that and you STILL clicked on it!  Wtf!  You are a crazy person!!!",
         MessageIcon::Critical, MessageButtons::Ok});
}

}  // namespace quillmere
