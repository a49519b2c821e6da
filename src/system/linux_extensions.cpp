#include "system/posix_descriptor.h"
#include "system/posix_extensions.h"

#include <endian.h>
#include <fcntl.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace quillmere::posix {

namespace fs = std::filesystem;

namespace {

constexpr const char* accessList = "system.posix_acl_access";

/// A path that leads to the open file, where /proc is mounted.
std::string PathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Whether the file can be reached under PathOfDescriptor.
bool HasPath(int descriptor) {
    struct stat file {};
    const auto found = Status(PathOfDescriptor(descriptor));
    return found && fstat(descriptor, &file) == 0 && StateOf(*found).IsSameFile(StateOf(file));
}

std::optional<AccessList> ListNamed(const char* name, int descriptor) {
    constexpr std::size_t mostBytes = 65536;
    AccessList list(mostBytes, '\0');
    const ssize_t size = fgetxattr(descriptor, name, list.data(), list.size());
    if (size < 0 && errno != ENODATA && errno != ENOTSUP) return std::nullopt;
    list.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return list;
}

/// Calls `change` with the tag and the permissions, which it may change, of each row.
template <class Change>
void ForEachRow(AccessList& list, const Change& change) {
    posix_acl_xattr_entry row{};
    for (std::size_t at = sizeof(posix_acl_xattr_header); at + sizeof row <= list.size(); at += sizeof row) {
        std::memcpy(&row, &list[at], sizeof row);
        mode_t permissions = le16toh(row.e_perm);
        change(le16toh(row.e_tag), permissions);
        row.e_perm = htole16(static_cast<std::uint16_t>(permissions));
        std::memcpy(&list[at], &row, sizeof row);
    }
}

}  // namespace

FileAttributes AttributesOf(int descriptor) {
    struct statx file {};
    if (statx(descriptor, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &file) != 0) return {};
    return {(file.stx_attributes & STATX_ATTR_APPEND) != 0,
            (file.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0};
}

bool MayBeWritten(int folder, const std::string& name) {
    if (getuid() != geteuid() || getgid() != getegid())
        return faccessat(folder, name.c_str(), W_OK, AT_EACCESS) == 0;
    // The C library makes a system call that is younger than the filters of some containers.
    return syscall(SYS_faccessat, folder, name.c_str(), W_OK) == 0;
}

void StartWritingToDisk(int descriptor, off_t offset, off_t size) {
    sync_file_range(descriptor, offset, size, SYNC_FILE_RANGE_WRITE);
}

int CreateUnnamed(int folder) {
    Descriptor file(OpenNumberIn(folder, ".", O_RDWR | O_TMPFILE, S_IRUSR | S_IWUSR), "");
    if (file.Number() < 0 || !HasPath(file.Number())) return -1;
    return file.Release();
}

bool GiveName(int descriptor, int folder, const std::string& name) {
    const std::string path = PathOfDescriptor(descriptor);
    return linkat(AT_FDCWD, path.c_str(), folder, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool RenameToFreeName(int folder, const std::string& from, const std::string& to) {
    return renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0;
}

std::optional<AccessList> AccessListOf(int descriptor) {
    return ListNamed(accessList, descriptor);
}

AccessList ListForNewFiles(int folder) {
    return ListNamed("system.posix_acl_default", folder).value_or("");
}

bool SetAccessList(int descriptor, const AccessList& list) {
    if (!list.empty()) return fsetxattr(descriptor, accessList, list.data(), list.size(), 0) == 0;
    return fremovexattr(descriptor, accessList) == 0 || errno == ENODATA || errno == ENOTSUP;
}

mode_t PermissionsIn(const AccessList& list) {
    mode_t owner = 0;
    mode_t group = 0;
    mode_t mask = S_IRWXO;
    mode_t others = 0;
    AccessList copy = list;
    ForEachRow(copy, [&](int tag, mode_t permissions) {
        if (tag == ACL_USER_OBJ) owner = permissions;
        if (tag == ACL_GROUP_OBJ) group = permissions;
        if (tag == ACL_MASK) mask = permissions;
        if (tag == ACL_OTHER) others = permissions;
    });
    return owner << 6 | (group & mask) << 3 | others;
}

void SetGroupAndOthers(AccessList& list, mode_t permissions) {
    ForEachRow(list, [&](int tag, mode_t& row) {
        if (tag == ACL_GROUP_OBJ) row = permissions >> 3 & S_IRWXO;
        if (tag == ACL_OTHER) row = permissions & S_IRWXO;
    });
}

fs::path ExecutablePath() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

}  // namespace quillmere::posix
