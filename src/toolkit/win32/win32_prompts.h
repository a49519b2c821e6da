#pragma once

#include "toolkit/prompts.h"
#include "toolkit/win32/win32_api.h"

#include <string>

namespace quillmere {

/// The message boxes and file dialogs of Windows. Both block their owner while they are open; timers go on.
class Win32Prompts {
 public:
    /// Without an `owner` (null) the box blocks all windows of the program.
    MessageResult ShowMessage(HWND owner, const Message& message);
    /// Opens in the folder that was used last. Does not change the process's current folder.
    std::string ShowFileDialog(HWND owner, const FileDialog& dialog);
    /// Whether a box or dialog is open.
    bool IsOpen() const { return open_ > 0; }

 private:
    class Opened;

    int open_ = 0;
    std::wstring lastFolder_;
};

}  // namespace quillmere
