#pragma once

#include <string>

namespace quillmere::posix {

/// The name of a temporary file. A signal handler that ends the program at once removes the file, as long as
/// the object lives.
class TemporaryName {
 public:
    /// A name that nobody can guess, in the open folder `folder`, which must outlive the object. There need
    /// not be a file yet.
    explicit TemporaryName(int folder);
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    const std::string& Text() const { return text_; }

 private:
    std::string text_;
    int place_ = -1;  ///< in the table of the signal handler; -1 when that is full
};

/// Removes the files with such names. For a signal handler that is about to end the program.
void RemoveTemporaryFiles() noexcept;

}  // namespace quillmere::posix
