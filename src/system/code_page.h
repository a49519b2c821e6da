#pragma once

#include <string>
#include <string_view>

namespace quillmere {

// The files that the program reads and writes are bytes in an 8-bit code page, the texts that its windows
// show are UTF-8, and these functions stand between the two. The page is the system's ANSI code page on
// Windows and windows-1252 elsewhere.

/// The text that `bytes` stand for. In a page of one byte to a character CodePageFromUtf8 gives the same
/// bytes back; in one of several, which only Windows may have, bytes that form no character are lost.
std::string Utf8FromCodePage(std::string_view bytes);
/// A character that the page lacks, and each byte that is not UTF-8, becomes "?".
std::string CodePageFromUtf8(std::string_view utf8);

}  // namespace quillmere
