#pragma once

#include <string>
#include <vector>

namespace quillmere {

// What a console program asks of the operating system beyond files.

/// From here on an interrupt, a request to terminate or a lost terminal sets the flag behind
/// InterruptRequested; a second one ends the program at once.
void CatchInterrupts();
bool InterruptRequested();

/// The words behind the program's name, as paths are: bytes on POSIX systems, UTF-8 on Windows. `count` and
/// `arguments` are those of main.
std::vector<std::string> ProgramArguments(int count, const char* const* arguments);

/// Has a terminal show the program's texts as what they are, until the program ends.
void PrepareTerminal();
bool StandardErrorIsTerminal();
/// Whether what is written to `path` would mix with what the program prints.
bool IsStandardOutput(const std::string& path);

}  // namespace quillmere
