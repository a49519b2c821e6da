#pragma once

#include "toolkit/backend.h"
#include "toolkit/control.h"
#include "toolkit/window.h"

namespace quillmere {

/// The help window, which is never translucent. It is made anew for each opening.
class frmHelp : public Window {
 public:
    /// `backend` must outlive the window.
    explicit frmHelp(Backend& backend);

    TextBox Text1{*this, "Text1", "Help text", {0, 0, 4815, 4215}, TextBox::Style::ReadOnlyLinesScrollable};
    PushButton cmdExit{*this, "cmdExit", "&Ok", {960, 4320, 1095, 375}};
    PushButton cmdWtf{*this, "cmdWtf", "????", {2760, 4320, 1095, 375}};

 private:
    void cmdWtf_Click();
};

}  // namespace quillmere
