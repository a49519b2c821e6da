#pragma once

#include "system/posix_descriptor.h"
#include "system/posix_temporary_names.h"

#include <optional>
#include <string>

namespace quillmere::posix {

/// A new file, open for reading and writing, that may get its name later. Where the system can make a file
/// without a name, nothing is left of it even when the program is killed. Elsewhere it is named
/// quillmere-….tmp.
class TemporaryFile {
 public:
    /// Creates it in the open folder `folder`, which must outlive the object. Only the user has access to it.
    /// Failures name `path`.
    TemporaryFile(const Descriptor& folder, const std::string& path);
    /// Removes the file unless it was put in place.
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const Descriptor& File() const { return file_; }

    /// For a file that is not to be put in place: from now on nothing is left of it even when the program is
    /// killed.
    void RemoveName();

    /// Gives the file the name `name` in its folder, in one step. To be called once, and after the file was
    /// brought to the disk. Where it does not replace another file, it fails if the name is taken.
    void PutInPlace(const std::string& name, bool replaces);

 private:
    void CreateNamed();
    void GiveFirstName();
    void Rename(const std::string& name, bool replaces);
    void Check(bool done) const;

    const Descriptor& folder_;
    std::string path_;
    std::optional<TemporaryName> name_;  ///< nothing as long as the file has no name
    Descriptor file_;
};

}  // namespace quillmere::posix
