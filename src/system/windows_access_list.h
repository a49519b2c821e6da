#pragma once

#include <windows.h>

#include <string>

namespace quillmere::windows {

/// Gives `file`, just created, the access list of the one at the path `replaced`, where the file system keeps
/// any. Where that is refused, the list that it got from its folder may be the same already. Returns whether
/// both files now allow the same.
bool TakeOverAccessList(HANDLE file, const std::wstring& replaced);

}  // namespace quillmere::windows
