#pragma once

#include "batch/batch_console.h"
#include "system/file_system.h"

#include <span>
#include <string>
#include <string_view>

namespace quillmere {

// One file under two names would be written while it is read, or written twice. Links are followed to find
// that out. An empty name stands for no file.

/// Two names that must not lead to one file.
struct NamePair {
    const std::string& one;
    const std::string& other;
    std::string_view advice;
};

/// Prints a refusal, with its advice, if a pair leads to one file. Returns whether one does.
bool RefuseSharedNames(std::span<const NamePair> pairs, FileSystem& system, BatchConsole& console);

/// The same if the old `output` would be kept where one of the `others` is.
bool RefuseBackup(const std::string& output, std::span<const std::string> others, FileSystem& system,
                  BatchConsole& console);

}  // namespace quillmere
