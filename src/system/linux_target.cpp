#include "system/posix_target.h"

#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <string_view>
#include <utility>

namespace quillmere::posix {

namespace {

constexpr int toTell = O_PATH | O_NOFOLLOW;

struct SplitPath {
    std::string folder;  ///< "." when the path is a name alone
    std::string name;    ///< with the slashes at the path's end
};

SplitPath Split(const std::string& path) {
    const std::size_t lastOfName = path.find_last_not_of('/');
    if (lastOfName == std::string::npos) return {path, "."};
    const std::size_t slash = path.rfind('/', lastOfName);
    if (slash == std::string::npos) return {".", path};
    return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

bool IsMissing(int error) {
    return error == ENOENT || error == ENOTDIR;
}

/// Opens `folder`, a path relative to the folder that `target` has so far.
void OpenFolder(Target& target, const std::string& folder) {
    const int base = target.folder.Number() < 0 ? AT_FDCWD : target.folder.Number();
    int number = OpenNumberIn(base, folder, O_RDONLY | O_DIRECTORY);
    target.folderCanBeRead = number >= 0;
    if (number < 0 && errno == EACCES) number = OpenNumberIn(base, folder, O_PATH | O_DIRECTORY);
    if (number < 0 && !IsMissing(errno)) throw OpenFailure(errno, target.path, Access::Read);
    target.folder = Descriptor(number, target.path);
}

/// The descriptor of this process that an entry of /proc/self/fd stands for; /dev/fd leads there, too.
std::optional<int> DescriptorNamed(const Target& target) {
    int number = -1;
    std::from_chars(target.name.data(), target.name.data() + target.name.size(), number);
    if (number < 0 || std::to_string(number) != target.name) return std::nullopt;
    const auto descriptors = Status("/proc/self/fd");
    if (!descriptors || !StateOf(*descriptors).IsSameFile(StateOf(target.folder.Status())))
        return std::nullopt;
    return number;
}

/// Opens the entry `target.name` of the folder, with `flags`, to tell what it is.
void OpenEntry(Target& target, int flags) {
    const int number = OpenNumberIn(target.folder.Number(), target.name, flags);
    if (number < 0 && !IsMissing(errno)) throw OpenFailure(errno, target.path, Access::Read);
    target.file = Descriptor(number, target.path);
    if (number >= 0) target.status = target.file.Status();
}

void CheckLinkOwner(const Target& target) {
    constexpr mode_t shared = S_ISVTX | S_IWOTH;
    const struct stat folder = target.folder.Status();
    const uid_t owner = target.status.st_uid;
    if ((folder.st_mode & shared) != shared || owner == geteuid() || owner == folder.st_uid) return;
    throw Failure(FailureKind::PermissionDenied,
                  target.path + " (a link that somebody else put into a shared folder)");
}

std::string TextOfLink(const Target& target) {
    char text[PATH_MAX];
    const ssize_t size = readlinkat(target.file.Number(), "", text, sizeof text);
    if (size < 0) throw OpenFailure(errno, target.path, Access::Read);
    return {text, static_cast<std::size_t>(size)};
}

/// Links in /proc to pipes and devices have a text that is no path.
bool IsSystemLink(Target& target) {
    struct statfs system {};
    if (fstatfs(target.folder.Number(), &system) != 0 || system.f_type != PROC_SUPER_MAGIC) return false;
    const std::string text = TextOfLink(target);
    OpenEntry(target, O_PATH);
    const mode_t mode = target.status.st_mode;
    if (target.file.Number() >= 0 && !S_ISREG(mode) && !S_ISDIR(mode)) return true;
    OpenEntry(target, toTell);
    return false;
}

}  // namespace

Target Resolve(const std::string& path) {
    CheckName(path);
    constexpr int mostLinks = 40;
    Target target;
    target.path = path;
    std::string current = path;
    for (int links = 0; links <= mostLinks; ++links) {
        const auto [folder, name] = Split(current);
        OpenFolder(target, folder);
        target.name = name;
        if (target.FolderIsMissing()) return target;
        target.descriptor = DescriptorNamed(target);
        if (target.descriptor) return target;
        OpenEntry(target, toTell);
        if (target.IsMissing() || !S_ISLNK(target.status.st_mode)) return target;
        CheckLinkOwner(target);
        target.throughSystemLink = IsSystemLink(target);
        if (target.throughSystemLink) return target;
        current = TextOfLink(target);
        target.file = Descriptor(-1, path);
    }
    throw OpenFailure(ELOOP, path, Access::Read);
}

}  // namespace quillmere::posix
