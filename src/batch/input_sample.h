#pragma once

#include "system/file_system.h"
#include "textfile/line_stream.h"

#include <string>
#include <string_view>

namespace quillmere {

// What the first bytes of a file tell of it, before it is read for good.

/// The first 64 KiB of a regular file, fewer when it is shorter. Empty for anything else: a file that is
/// missing, and a pipe, whose bytes can be read only once. Fails as opening and reading fail.
std::string FirstBytes(FileSystem& system, const std::string& path);

/// How the lines end: with line feeds when there are some and no carriage returns.
LineEnd LineEndIn(std::string_view sample);

/// Whether there are carriage returns, and also line feeds right after something else. Then no choice of how
/// the lines end is sure to be right.
bool HasMixedLineEnds(std::string_view sample);

/// What the file is, and what to do with it, when it certainly is no world script; otherwise empty.
std::string_view NoWorldScript(std::string_view sample);

}  // namespace quillmere
