#pragma once

#include "batch/batch_console.h"
#include "batch/batch_file_system.h"
#include "batch/exit_codes.h"
#include "batch/failure_log.h"
#include "batch/restore_options.h"
#include "engine/item_reader.h"
#include "engine/mod_global.h"
#include "engine/world_end.h"
#include "report/facts.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace quillmere {

/// One run that puts removed blocks back, from the options to the exit code. INPUT is copied byte by byte,
/// and REMOVED is read block by block, so the output is a world script whatever the two end with.
class RestoreRun : private ScanObserver {
 public:
    /// `interrupted` tells whether the user asked to stop; it is called often. `system` and `console` must
    /// outlive the object.
    RestoreRun(RestoreOptions options, FileSystem& system, BatchConsole& console,
               std::function<bool()> interrupted);

    ExitCode Run();

 private:
    ExitCode RunToItsEnd();
    bool RefuseNames();
    bool LookAtFiles();
    void WriteOutput();
    WorldEnd OpenInput();
    void OpenRemoved();
    void CopyInput(std::uint64_t size);
    void WriteRemoved();
    void WriteBlock(std::string_view lines);
    void WriteLine(std::string_view line);
    bool Objects();
    void Report();

    // ScanObserver
    void Yield() override;
    void LineSkipped(std::string_view line, std::uint64_t number) override;
    void SentinelCopied() override { facts_.SentinelCopied(); }

    RestoreOptions options_;
    BatchConsole& console_;
    FailureLog failureLog_;  ///< of the item reader, whose report would be one of a pass
    std::function<bool()> interrupted_;
    BatchFileSystem fileSystem_;
    modGlobal shared_;
    ItemReader reader_;
    LineEnd lineEnd_ = LineEnd::CrLf;         ///< of INPUT and OUTPUT
    LineEnd removedLineEnd_ = LineEnd::CrLf;  ///< of REMOVED
    std::int32_t inputNumber_ = 0;
    std::int32_t removedNumber_ = 0;
    std::int32_t outputNumber_ = 0;
    Facts facts_;  ///< of REMOVED; but whether the last line is "[EOF]" is told of the output
    std::uint32_t yields_ = 0;
};

}  // namespace quillmere
