#include "system/kept_input.h"

#include "base/failure.h"
#include "system/console.h"

#include <utility>
#include <vector>

namespace quillmere {

namespace {

constexpr std::size_t pieceSize = std::size_t{512} * 1024;  // bytes

constexpr const char* inputAdvice =
    "It cannot be read; connect it to a file or a pipe, or give a file's name instead of -.";
constexpr const char* folderAdvice =
    "Standard input is kept in this folder during the run; make room there, or name another folder with "
    "TMPDIR, on Windows with TMP.";

/// Whether more is known of such a failure than that a stream or a folder does not serve.
bool HasAnotherCause(FailureKind kind) {
    return kind == FailureKind::TooManyFiles || kind == FailureKind::OutOfMemory ||
           kind == FailureKind::FileChanged || kind == FailureKind::InputPastEnd;
}

/// Calls `operation`, whose failure gets the advice when it has none.
template <class Operation>
auto Advising(const char* advice, const Operation& operation) {
    try {
        return operation();
    } catch (const Failure& failure) {
        if (!failure.Advice().empty() || HasAnotherCause(failure.Kind())) throw;
        throw failure.Advised(advice);
    }
}

class KeptInputFile : public ReadableFile {
 public:
    KeptInputFile(std::shared_ptr<const ScratchFile> file, const FileState& state)
        : file_(std::move(file)), state_(state) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count =
            Advising(folderAdvice, [&] { return file_->ReadAt(position_, buffer, size); });
        position_ += static_cast<std::int64_t>(count);
        if (count == 0) CheckEnd();
        return count;
    }
    bool CanBeReadAgain() const override { return true; }
    FileState State() const override { return state_; }

 private:
    /// A disk may have lost a part.
    void CheckEnd() const {
        FileState now = state_;
        now.size = position_;
        CheckUnchanged(state_, now, standardInput);
    }

    std::shared_ptr<const ScratchFile> file_;
    FileState state_;
    std::int64_t position_ = 0;
};

}  // namespace

KeptInput::KeptInput(FileSystem& system) {
    const auto input = Advising(inputAdvice, [&] { return system.OpenStandardInput(); });
    const std::shared_ptr<ScratchFile> file =
        Advising(folderAdvice, [&] { return system.CreateScratchFile(); });
    std::vector<char> piece(pieceSize);
    for (;;) {
        const std::size_t count =
            Advising(inputAdvice, [&] { return input->Read(piece.data(), piece.size()); });
        if (InterruptRequested()) throw Cancelled();
        if (count == 0) break;
        Advising(folderAdvice, [&] { file->Append({piece.data(), count}); });
        state_.size += static_cast<std::int64_t>(count);
    }
    Advising(folderAdvice, [&] { file->FinishWriting(); });
    file_ = file;
}

std::unique_ptr<ReadableFile> KeptInput::Open() const {
    return std::make_unique<KeptInputFile>(file_, state_);
}

}  // namespace quillmere
