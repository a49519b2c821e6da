#pragma once

#include <string>

namespace quillmere {

/// Where the executable lies or, where no file can be made, a folder of the program's own among the user's
/// application data, which is made when it is missing. Without a separator at its end.
std::string FolderForSettings();

}  // namespace quillmere
