#include "system/posix_access.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quillmere::posix {

namespace {

constexpr mode_t permissionBits = 0777;
constexpr uid_t sameOwner = static_cast<uid_t>(-1);

bool TakeGroup(const Descriptor& file, gid_t group) {
    return fchown(file.Number(), sameOwner, group) == 0 || file.Status().st_gid == group;
}

/// Leaves the group, which is not the old one, and everyone else what both the old group and everyone had.
void ForAnotherGroup(FileAccess& access) {
    const mode_t both = access.permissions & access.permissions >> 3 & S_IRWXO;
    access.permissions = (access.permissions & S_IRWXU) | both << 3 | both;
    SetGroupAndOthers(access.list, access.permissions);
}

void SetAccess(const Descriptor& file, const FileAccess& access, mode_t least, mode_t most) {
    bool done = SetAccessList(file.Number(), access.list);
    const mode_t mode = access.list.empty() ? access.permissions : file.Status().st_mode & permissionBits;
    done = done && fchmod(file.Number(), (mode | least) & most) == 0;
    if (!done) throw OpenFailure(errno, file.Path(), Access::Write);
}

/// The permissions that a new file in `folder` gets at most.
mode_t MostInFolder(const Descriptor& folder) {
    const AccessList list = ListForNewFiles(folder.Number());
    if (!list.empty()) return newFileMode & PermissionsIn(list);
    const mode_t mask = umask(0);
    umask(mask);
    return newFileMode & ~mask;
}

}  // namespace

FileAccess AccessTo(const Descriptor& file) {
    const struct stat status = file.Status();
    const auto list = AccessListOf(file.Number());
    if (!list) throw OpenFailure(errno, file.Path(), Access::Read);
    const mode_t permissions = list->empty() ? status.st_mode & permissionBits : PermissionsIn(*list);
    return {status.st_uid, status.st_gid, permissions, *list};
}

void GiveSameAccess(const Descriptor& file, const FileAccess& replaced) {
    FileAccess access = replaced;
    const bool kept = fchown(file.Number(), replaced.owner, replaced.group) == 0;
    if (!kept && !TakeGroup(file, replaced.group)) ForAnotherGroup(access);
    SetAccess(file, access, 0, permissionBits);
}

void GiveNoMoreAccess(const Descriptor& file, const FileAccess& source, const Descriptor& folder) {
    FileAccess access = source;
    const bool groupIsSpecial = (access.permissions >> 3 & S_IRWXO) != (access.permissions & S_IRWXO);
    if (groupIsSpecial && !TakeGroup(file, source.group)) ForAnotherGroup(access);
    SetAccess(file, access, S_IRUSR | S_IWUSR, MostInFolder(folder));
}

}  // namespace quillmere::posix
