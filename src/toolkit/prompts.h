#pragma once

#include <string>
#include <vector>

namespace quillmere {

enum class MessageIcon { Information, Question, Critical };
enum class MessageButtons { Ok, YesNoCancel };
/// Closing a box without pressing a button counts as Cancel where there is one, else as Ok.
enum class MessageResult { Ok, Yes, No, Cancel };

/// A message box.
struct Message {
    std::string title;
    std::string text;  ///< lines joined by CR LF
    MessageIcon icon = MessageIcon::Information;
    MessageButtons buttons = MessageButtons::Ok;
    bool operator==(const Message&) const = default;
};

/// The system's dialog that asks for a file.
struct FileDialog {
    enum class Purpose { Open, Save };
    Purpose purpose = Purpose::Open;
    std::string title;
    /// Pairs of description and pattern, all joined by "|", for instance "List Files (*.LST)|*.LST".
    std::string filter;
    /// For instance "*.LST": a file to save whose name has no extension gets ".LST".
    std::string defaultExtension;
    /// Ask before an existing file is chosen to be overwritten.
    bool overwritePrompt = false;
};

/// One pair of a dialog's filter.
struct FilePattern {
    std::string description;
    std::string pattern;
};

std::vector<FilePattern> PatternsOf(const FileDialog& dialog);
/// `path`, with the dialog's default extension if the file is to be saved and its name has none.
std::string WithDefaultExtension(const FileDialog& dialog, const std::string& path);

}  // namespace quillmere
