// Fuzz target: any bytes as a filter list file.

#include "engine/mod_global.h"
#include "filters/list_file.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"

#include <algorithm>

namespace quillmere::test {
namespace {

/// What a save keeps of a list: the items up to the first without a code, the rectangles up to the first
/// without a name.
FilterSet Kept(FilterSet filters) {
    auto& [rectangles, items] = filters;
    std::fill(std::ranges::find(items, "", &ItemFilter::code), items.end(), ItemFilter{});
    std::fill(std::ranges::find(rectangles, "", &RectangleFilter::name), rectangles.end(), RectangleFilter{});
    return filters;
}

void ReadWriteAndReadAgain(const std::string& content) {
    static MemoryFileSystem system;
    static modGlobal shared(system);
    static FilterSet read;
    static FilterSet again;
    RecordingLog log;
    system.files["list"] = content;
    system.mostBytesPerRead = 1 + content.size() % 7;

    const bool whole = LoadFilterList(shared.objReader, "list", read, log);
    Require(log.entries.size() == (whole ? 0 : 3), "a list is read whole or a failure reported");
    log.EmptyLog();
    Require(SaveFilterList(shared.objWriter, "saved", read, log), "what was read can be saved");
    Require(LoadFilterList(shared.objReader, "saved", again, log), "what was saved can be read");
    const FilterSet kept = Kept(read);
    Require(again.arrItems == kept.arrItems && again.arrRectangles == kept.arrRectangles,
            "writing what was read and reading it again gives the same");
    Require(log.entries.empty() && system.openFiles == 0, "nothing reported, nothing left open");
}

}  // namespace
}  // namespace quillmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillmere::test::ReadWriteAndReadAgain(quillmere::test::Bytes(data, size));
    return 0;
}
