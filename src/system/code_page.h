#pragma once

#include <string>
#include <string_view>

namespace quillmere {

// The files that the program reads and writes hold text in a code page; its windows show UTF-8. These
// functions convert between the two. The page is the system's ANSI code page on Windows, windows-1252
// elsewhere.

/// In a page with one byte per character CodePageFromUtf8 gives the same bytes back. In a multi-byte page,
/// which only Windows may have, bytes that form no character are lost.
std::string Utf8FromCodePage(std::string_view bytes);
/// A character that the page lacks, and each byte that is not valid UTF-8, becomes "?".
std::string CodePageFromUtf8(std::string_view utf8);

}  // namespace quillmere
