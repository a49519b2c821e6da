// Micro-benchmarks of the parts of a pass, each on its own, on a world script in memory.

#include "base/byte_mask.h"
#include "bench/world_generator.h"
#include "engine/decisions.h"
#include "engine/item_reader.h"
#include "engine/mod_global.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

namespace quillmere {
namespace {

constexpr std::uint64_t blocks = 20'000;

const std::string& World() {
    static const std::string world = MakeWorld(blocks, 1);
    return world;
}

class TextAsFile : public ReadableFile {
 public:
    std::size_t Read(char* buffer, std::size_t size) override {
        size = std::min(size, World().size() - read_);
        std::memcpy(buffer, World().data() + read_, size);
        read_ += size;
        return size;
    }
    bool CanBeReadAgain() const override { return true; }
    FileState State() const override { return {}; }

 private:
    std::size_t read_ = 0;
};

class NoFile : public WritableFile {
 public:
    void Write(std::string_view bytes) override { benchmark::DoNotOptimize(bytes.data()); }
    void Close() override {}
};

class Files : public FileSystem {
 public:
    std::unique_ptr<ReadableFile> OpenForRead(const std::string& /*path*/) override {
        return std::make_unique<TextAsFile>();
    }
    std::unique_ptr<WritableFile> OpenForWrite(const std::string& /*path*/) override {
        return std::make_unique<NoFile>();
    }
    std::unique_ptr<ReadableFile> OpenStandardInput() override { return nullptr; }
    std::unique_ptr<WritableFile> OpenStandardOutput() override { return nullptr; }
    std::unique_ptr<ScratchFile> CreateScratchFile() override { return nullptr; }
    Replacement OpenReplacement(const std::string& /*path*/,
                                const std::optional<Source>& /*source*/) override {
        return {};
    }
    FileKind KindOf(const std::string& /*path*/) override { return FileKind::Regular; }
    bool SameFile(const std::string& /*one*/, const std::string& /*other*/) override { return false; }
};

class NoLog : public Log {
 public:
    void LogInfo(std::string_view /*text*/) override {}
    void EmptyLog() override {}
};

void CountBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(World().size()));
}

template <std::uint64_t (*mask)(const char*, char)>
void FindLineEnds(benchmark::State& state) {
    while (state.KeepRunning()) {
        std::uint64_t all = 0;
        for (std::size_t at = 0; at + maskedBytes <= World().size(); at += maskedBytes)
            all += mask(World().data() + at, '\r');
        benchmark::DoNotOptimize(all);
    }
    CountBytes(state);
}
BENCHMARK(FindLineEnds<PlainByteMask>);
BENCHMARK(FindLineEnds<ByteMask>);

void ReadLines(benchmark::State& state) {
    while (state.KeepRunning()) {
        LineReader reader(std::make_unique<TextAsFile>(), "", LineEnd::CrLf);
        while (!reader.AtEnd())
            benchmark::DoNotOptimize(reader.NextLine());
    }
    CountBytes(state);
}
BENCHMARK(ReadLines);

void ReadItems(benchmark::State& state) {
    Files files;
    modGlobal shared(files);
    NoLog log;
    ScanObserver scan;
    ItemReader reader(shared, log, scan);
    WorldItem item;
    while (state.KeepRunning()) {
        const std::int32_t input = shared.objReader.OpenFile();
        const std::int32_t output = shared.objWriter.OpenFileForWrite();
        while (!shared.openFiles.AtEnd(input)) {
            reader.GetNextItem(input, output, item);
            benchmark::DoNotOptimize(item.X);
        }
        shared.openFiles.CloseAll();
    }
    CountBytes(state);
}
BENCHMARK(ReadItems);

void WriteBlocks(benchmark::State& state) {
    constexpr std::size_t block = 70;  // bytes, as in most worlds
    LineWriter writer(std::make_unique<NoFile>(), LineEnd::CrLf);
    while (state.KeepRunning()) {
        for (std::size_t at = 0; at + block <= World().size(); at += block)
            writer.WriteText({World().data() + at, block});
    }
    CountBytes(state);
    writer.Close();
}
BENCHMARK(WriteBlocks);

/// Times one decision of the item and the rectangle filter together. The argument is the number of entries in
/// each list; none of them matches.
void Judge(benchmark::State& state) {
    FilterSet filters;
    for (int i = 0; i < state.range(0); ++i) {
        const auto slot = static_cast<std::size_t>(i);
        filters.arrItems[slot] = {"item", "i_nothing" + std::to_string(i)};
        filters.arrRectangles[slot] = {"area", i % 2 * 9000, i * 8, i % 2 * 9000 + 10, i * 8 + 50};
    }
    CodeUse use;
    Decisions decisions;
    for (const FilterKind kind : {FilterKind::Rectangle, FilterKind::Item}) {
        const FilterType& type = filterTypes[static_cast<std::size_t>(kind)];
        decisions.Add(kind, Direction::In, type.makeTest({}, filters, use), false);
    }
    WorldItem item;
    item.Lines.Append("[WORLDITEM i_ingot_iron]");
    item.code = {11, 12};
    item.X = 3000;
    while (state.KeepRunning()) {
        item.Y = (item.Y + 77) % 4096;
        benchmark::DoNotOptimize(decisions.Judge(item));
    }
}
BENCHMARK(Judge)->Arg(1)->Arg(50)->Arg(501);

}  // namespace
}  // namespace quillmere

BENCHMARK_MAIN();
