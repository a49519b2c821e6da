#include "system/write_behind.h"

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace quillmere {

namespace {

/// Bytes that the writer's thread gets at once. Waking it takes about as long as writing a tenth of them.
constexpr std::size_t batchSize = std::size_t{512} * 1024;

class WriteBehindFile : public WritableFile {
 public:
    explicit WriteBehindFile(std::unique_ptr<WritableFile> file) : file_(std::move(file)) {}
    ~WriteBehindFile() override { StopWriter(); }
    WriteBehindFile(const WriteBehindFile&) = delete;
    WriteBehindFile& operator=(const WriteBehindFile&) = delete;

    void Write(std::string_view bytes) override {
        if (bytes.size() > batchSize) {  // too many to be worth a copy
            WriteWhatIsGathered();
            return WriteHere(bytes);
        }
        if (gathered_.size() + bytes.size() > batchSize) HandOver();
        gathered_ += bytes;
    }

    void Close() override {
        WriteWhatIsGathered();
        StopWriter();
        file_->Close();
    }

 private:
    /// Gives the gathered bytes to the writer as its next batch.
    void HandOver() {
        if (!StartWriter()) return WriteWhatIsGathered();
        std::unique_lock lock(mutex_);
        WaitForWriter(lock);
        batch_.swap(gathered_);
        gathered_.clear();
        writing_ = true;
        changed_.notify_all();
    }

    /// Returns whether there is a writer now: the system may have no thread left.
    bool StartWriter() {
        if (writer_.joinable()) return true;
        try {
            writer_ = std::thread([this] { WriteBatches(); });
        } catch (const std::system_error&) {
            return false;
        }
        return true;
    }

    void StopWriter() {
        if (!writer_.joinable()) return;
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        changed_.notify_all();
        writer_.join();
    }

    /// Returns when the writer is idle. Throws the failure of an earlier write when there was one.
    void WaitForWriter(std::unique_lock<std::mutex>& lock) {
        changed_.wait(lock, [this] { return !writing_; });
        if (failure_) std::rethrow_exception(failure_);
    }

    void WriteWhatIsGathered() {
        std::unique_lock lock(mutex_);
        WaitForWriter(lock);
        if (!gathered_.empty()) WriteHere(gathered_);
        gathered_.clear();
    }

    void WriteHere(std::string_view bytes) {
        try {
            file_->Write(bytes);
        } catch (...) {
            failure_ = std::current_exception();
            throw;
        }
    }

    /// What the writer's thread runs.
    void WriteBatches() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return writing_ || stopping_; });
            if (!writing_) return;
            lock.unlock();
            std::exception_ptr failure;
            try {
                file_->Write(batch_);
            } catch (...) {
                failure = std::current_exception();
            }
            lock.lock();
            failure_ = failure;
            writing_ = false;
            changed_.notify_all();
        }
    }

    std::unique_ptr<WritableFile> file_;  ///< only the writer uses it while writing_
    std::string gathered_;                ///< for the next batch
    std::string batch_;                   ///< only the writer uses it while writing_
    std::thread writer_;
    std::mutex mutex_;  ///< guards the members below
    std::condition_variable changed_;
    bool writing_ = false;
    bool stopping_ = false;
    std::exception_ptr failure_;  ///< of the first write that failed
};

}  // namespace

std::unique_ptr<WritableFile> WriteBehind(std::unique_ptr<WritableFile> file) {
    return std::make_unique<WriteBehindFile>(std::move(file));
}

}  // namespace quillmere
