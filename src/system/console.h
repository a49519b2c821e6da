#pragma once

#include <string>
#include <vector>

namespace quillmere {

// What a console program asks of the operating system beyond files.

/// From now on an interrupt, a request to terminate or the loss of the terminal does not end the program, but
/// makes InterruptRequested true. A second one ends the program at once.
void CatchInterrupts();
bool InterruptRequested();

/// The arguments after the program's name, encoded as paths are: bytes on POSIX systems, UTF-8 on Windows.
/// `count` and `arguments` are those of main.
std::vector<std::string> ProgramArguments(int count, const char* const* arguments);

/// Makes a terminal show the program's texts correctly until the program ends.
void PrepareTerminal();
bool StandardErrorIsTerminal();
/// Whether `path` leads to the file or pipe that standard output goes to, so that what is written there would
/// mix with what the program prints.
bool IsStandardOutput(const std::string& path);
/// The same for standard error.
bool IsStandardError(const std::string& path);
/// Whether standard output and standard error go to the same file or pipe.
bool StandardStreamsAreOne();

}  // namespace quillmere
