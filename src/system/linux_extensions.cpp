#include "system/posix_descriptor.h"
#include "system/posix_extensions.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <charconv>
#include <system_error>

namespace quillmere::posix {

namespace fs = std::filesystem;

FileAttributes AttributesOf(const std::string& path) {
    struct statx file {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS, &file) != 0) return {};
    return {(file.stx_attributes & STATX_ATTR_APPEND) != 0,
            (file.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0};
}

void StartWritingToDisk(int descriptor, off_t offset, off_t size) {
    sync_file_range(descriptor, offset, size, SYNC_FILE_RANGE_WRITE);
}

/// An entry of /proc/self/fd, or of a folder such as /dev/fd that leads there.
std::optional<int> DescriptorNamed(const fs::path& path) {
    const std::string name = path.filename().string();
    int number = -1;
    const auto [end, problem] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (problem != std::errc() || end != name.data() + name.size()) return std::nullopt;
    std::error_code error;
    const fs::path folder = fs::canonical(FolderOf(path.string()), error);
    if (error || folder != fs::canonical("/proc/self/fd", error)) return std::nullopt;
    return number;
}

fs::path ExecutablePath() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

}  // namespace quillmere::posix
