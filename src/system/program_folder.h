#pragma once

#include <string>

namespace quillmere {

/// The folder for the program's settings, without a separator at its end: the executable's folder or, if no
/// file can be created there, one of the program's own in the user's configuration folder, which is created
/// when it is missing.
std::string FolderForSettings();

}  // namespace quillmere
