#pragma once

#include <string>

namespace quillmere {

/// The folder for the program's own settings, without a separator at its end: where the executable lies or,
/// where no file can be made there, a folder of the program's own in the user's configuration folder, which
/// is made when it is missing.
std::string FolderForSettings();

}  // namespace quillmere
