#include "system/posix_extensions.h"
#include "system/program_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace quillmere {

namespace {

namespace fs = std::filesystem;

fs::path PathFromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? fs::path() : fs::path(value);
}

/// Follows the XDG rules for base directories: a relative XDG_CONFIG_HOME is ignored.
fs::path FolderOfUser() {
    const fs::path named = PathFromEnvironment("XDG_CONFIG_HOME");
    const fs::path config = named.is_absolute() ? named : "/" / PathFromEnvironment("HOME") / ".config";
    return config / "quillmere";
}

}  // namespace

std::vector<std::string> FoldersForSettings() {
    const fs::path beside = posix::ExecutablePath().parent_path();
    if (!beside.empty() && access(beside.c_str(), W_OK) == 0) return {beside.string()};
    const fs::path own = FolderOfUser();
    std::error_code error;
    fs::create_directories(own, error);
    if (beside.empty()) return {own.string()};
    return {own.string(), beside.string()};
}

}  // namespace quillmere
