#pragma once

#include "toolkit/prompts.h"

#include <QString>
#include <string>

namespace quillmere {

/// Message boxes and file dialogs. Both shut the program's windows out while they are open; timers go on.
class QtPrompts {
 public:
    /// `nativeDialogs`: file dialogs are those of the user's desktop environment, where it has any.
    explicit QtPrompts(bool nativeDialogs) : nativeDialogs_(nativeDialogs) {}

    MessageResult ShowMessage(const Message& message);
    /// Opens in the folder that was used last.
    std::string ShowFileDialog(const FileDialog& dialog);

    /// The name of the question whether a file may be replaced, which is part of a file dialog.
    static constexpr const char* overwriteQuestion = "overwriteQuestion";

 private:
    bool nativeDialogs_;
    QString lastFolder_;
};

}  // namespace quillmere
