// Fuzz target: any bytes as an options file.

#include "ui/options_file.h"

#include "fuzz/fuzz_target.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"

namespace quillmere::test {
namespace {

void ReadWriteAndReadAgain(const std::string& content) {
    MemoryFileSystem system;
    RecordingLog log;
    system.files["ini"] = content;
    system.mostBytesPerRead = 1 + content.size() % 7;

    Options read;
    LoadOptions(system, {"ini"}, read, log);
    Require(log.entries.empty() || log.entries.size() == 3, "options are read whole or a failure reported");
    log.EmptyLog();
    SaveOptions(system, "ini", read, log);
    Options again;
    LoadOptions(system, {"ini"}, again, log);
    Require(log.entries.empty(), "what was read can be saved and read");
    Require(again == read, "writing what was read and reading it again gives the same");
    Require(system.openFiles == 0, "nothing is left open");
}

}  // namespace
}  // namespace quillmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillmere::test::ReadWriteAndReadAgain(quillmere::test::Bytes(data, size));
    return 0;
}
