#pragma once

#include <windows.h>

#include <string>

namespace quillmere::windows {

/// Gives `file`, just created, the access list of the file at the path `replaced`, if the file system has
/// such lists. Returns whether both files now allow the same. That may be so even when the system refuses:
/// `file` may have got the same list from its folder.
bool TakeOverAccessList(HANDLE file, const std::wstring& replaced);

}  // namespace quillmere::windows
