#pragma once

#include "toolkit/prompts.h"

#include <QString>
#include <string>

namespace quillmere {

/// Message boxes and file dialogs. Both block the program's windows while they are open; timers go on.
class QtPrompts {
 public:
    /// `nativeDialogs`: use the file dialogs of the user's desktop environment, where it has any.
    explicit QtPrompts(bool nativeDialogs) : nativeDialogs_(nativeDialogs) {}

    MessageResult ShowMessage(const Message& message);
    /// Opens in the folder that was used last.
    std::string ShowFileDialog(const FileDialog& dialog);

    /// The object name of the message box that asks whether a file may be replaced, for tests to find it.
    static constexpr const char* overwriteQuestion = "overwriteQuestion";

 private:
    bool nativeDialogs_;
    QString lastFolder_;
};

}  // namespace quillmere
