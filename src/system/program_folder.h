#pragma once

#include <string>
#include <vector>

namespace quillmere {

/// The folders of the program's settings, without a separator at their end. They are saved in the first one:
/// the executable's folder or, if no file can be created there, one of the program's own in the user's
/// configuration folder, which is created when it is missing. Settings that are not there are looked for in
/// the others: whoever set the program up may have put some beside it.
std::vector<std::string> FoldersForSettings();

}  // namespace quillmere
