#include "system/posix_temporary_file.h"

#include "system/posix_extensions.h"

#include <stdio.h>
#include <unistd.h>

#include <cerrno>

namespace quillmere::posix {

TemporaryFile::TemporaryFile(const Descriptor& folder, const std::string& path)
    : folder_(folder), path_(path), file_(CreateUnnamed(folder.Number()), path) {
    if (file_.Number() < 0) CreateNamed();
}

TemporaryFile::~TemporaryFile() {
    RemoveName();
}

void TemporaryFile::RemoveName() {
    if (name_ && unlinkat(folder_.Number(), name_->Text().c_str(), 0) == 0) name_.reset();
}

void TemporaryFile::CreateNamed() {
    int number = -1;
    do {
        name_.emplace(folder_.Number());
        number = OpenNumberIn(folder_.Number(), name_->Text(), O_RDWR | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    } while (number < 0 && errno == EEXIST);
    if (number < 0) {
        const int error = errno;
        name_.reset();
        if (error == EACCES) throw Failure(FailureKind::PermissionDenied, path_);
        throw OpenFailure(error, path_, Access::Write);
    }
    file_ = Descriptor(number, path_);
}

void TemporaryFile::PutInPlace(const std::string& name, bool replaces) {
    if (!name_) GiveFirstName();
    Rename(name, replaces);
}

/// Brings the file to the disk once more, since some file systems keep nothing of a file without a name. Only
/// after that may it get the target's name, so its first name is another one.
void TemporaryFile::GiveFirstName() {
    name_.emplace(folder_.Number());
    Check(GiveName(file_.Number(), folder_.Number(), name_->Text()));
    file_.Sync();
}

void TemporaryFile::Rename(const std::string& name, bool replaces) {
    bool done = !replaces && RenameToFreeName(folder_.Number(), name_->Text(), name);
    if (replaces || (!done && (errno == EINVAL || errno == ENOSYS)))
        done = renameat(folder_.Number(), name_->Text().c_str(), folder_.Number(), name.c_str()) == 0;
    Check(done);
    name_.reset();
}

void TemporaryFile::Check(bool done) const {
    if (done) return;
    if (errno == EEXIST) throw ReplacedMeanwhile(path_);
    throw OpenFailure(errno, path_, Access::Write);
}

}  // namespace quillmere::posix
