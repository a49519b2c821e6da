// Fuzz target: any bytes as a world script. The last byte chooses line ends, filters and how much a read
// returns. The pass is compared with a second, simple and slow implementation below, which keeps all lines in
// memory. It reads the file at once, which lets it parse whole blocks, and in pieces, so that it parses line
// by line.

#include "base/number_text.h"
#include "batch/batch_run.h"
#include "batch/restore_run.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/pass_rig.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <vector>

namespace quillmere::test {
namespace {

struct Block {
    std::string code;
    std::vector<std::string> lines;  ///< the header first; none in the empty record
    std::vector<std::int32_t> position = std::vector<std::int32_t>(4);
    bool endMet = false;  ///< the empty record after the line "[EOF]"
    bool operator==(const Block& other) const {
        return code == other.code && lines == other.lines && position == other.position;
    }
};

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
        }
    }
    return pieces;
}

/// The lines of a file; what follows the last line end is a line unless it is empty.
std::vector<std::string> LinesOf(const std::string& file, LineEnd lineEnd) {
    std::vector<std::string> lines = Split(file, LineEndText(lineEnd).front());
    if (lineEnd == LineEnd::CrLf) {
        for (std::size_t i = 1; i < lines.size(); ++i) {
            if (lines[i].starts_with('\n')) lines[i].erase(0, 1);
        }
    }
    if (lines.back().empty()) lines.pop_back();
    return lines;
}

/// The lines without the spaces at their ends, sorted; empty ones are left out. A run of the batch program
/// must not lose or double any: OUTPUT and the removed file together have those of INPUT.
std::vector<std::string> SortedLines(const std::string& file, LineEnd lineEnd) {
    std::vector<std::string> lines;
    for (const std::string& line : LinesOf(file, lineEnd)) {
        const std::string_view trimmed = TrimSpaces(line);
        if (!trimmed.empty()) lines.emplace_back(trimmed);
    }
    std::ranges::sort(lines);
    return lines;
}

/// The preamble and the blocks of a file, as a pass has to read them.
class PlainReading {
 public:
    PlainReading(const std::string& file, LineEnd lineEnd) : lines_(LinesOf(file, lineEnd)) {
        while (next_ < lines_.size() && !lines_[next_].starts_with('[')) {
            const std::string& line = lines_[next_++];
            if (!line.empty()) preamble.push_back(line);
        }
        // In a file without any header line the pass reads the last line once more, as one between blocks.
        if (next_ == lines_.size() && next_ > 0) --next_;
        try {
            while (next_ < lines_.size())
                blocks.push_back(NextBlock());
        } catch (const Failure& thrown) {
            failure = thrown.At("in, line " + std::to_string(next_));
        }
    }

    std::vector<std::string> preamble;
    std::vector<Block> blocks;
    std::optional<Failure> failure;  ///< after the last of the blocks

 private:
    Block NextBlock() {
        Block block;
        while (next_ < lines_.size()) {
            const std::string line(TrimSpaces(lines_[next_++]));
            if (line == "[EOF]") {
                block = {};
                block.endMet = true;
                break;
            }
            if (!line.starts_with('[')) continue;
            block = {};
            block.code = CodeOf(line);
            block.lines = {line};
            if (TakeBody(block)) break;
        }
        return block;
    }
    static std::string CodeOf(const std::string& header) {
        const auto pieces = Split(header, ' ');
        if (pieces.size() < 2) return {};
        if (pieces[1].empty()) throw Failure(FailureKind::InvalidProcedureCall);
        return pieces[1].substr(0, pieces[1].size() - 1);
    }
    bool TakeBody(Block& block) {
        while (next_ < lines_.size()) {
            const std::string& line = lines_[next_++];
            if (line.empty()) return true;
            if (line.starts_with("P=")) {
                const auto numbers = Split(line.substr(2), ',');
                if (numbers.size() < 2) return false;
                for (std::size_t i = 0; i < numbers.size() && i < block.position.size(); ++i)
                    block.position[i] = NumberFromText(numbers[i]);
            }
            if (block.lines.size() > BlockLines::mostBodyLines)
                throw Failure(FailureKind::SubscriptOutOfRange);
            block.lines.push_back(line);
        }
        return false;
    }

    std::vector<std::string> lines_;
    std::size_t next_ = 0;
};

/// The settings of a pass, chosen by the bits of `choice`, and what its filters have to remove. Each filter
/// has one entry: a code, a rectangle, a facet.
class Filters {
 public:
    explicit Filters(unsigned choice) {
        const Direction direction = Bit(choice, 0) ? Direction::NotIn : Direction::In;
        if (Bit(choice, 1)) settings.filters[FilterKind::Item] = {direction};
        if (Bit(choice, 2)) settings.filters[FilterKind::Rectangle] = {direction};
        if (Bit(choice, 3) || settings.filters.empty())
            settings.filters[FilterKind::Facet] = {direction, "1"};
        settings.lineEnd = Bit(choice, 4) ? LineEnd::Lf : LineEnd::CrLf;
        settings.strInputFile = "in";
        settings.strOutputFile = "out";
    }
    static bool Bit(unsigned choice, unsigned bit) { return (choice >> bit & 1U) != 0; }

    bool Remove(const Block& block) const {
        const auto keeps = [this](FilterKind kind, bool matches) {
            const auto on = settings.filters.find(kind);
            return on != settings.filters.end() && matches != (on->second.direction == Direction::In);
        };
        const auto& p = block.position;
        return !keeps(FilterKind::Item, block.code == "i_torch") &&
               !keeps(FilterKind::Rectangle, p[0] >= 0 && p[0] <= 100 && p[1] >= 0 && p[1] <= 100) &&
               !keeps(FilterKind::Facet, p[3] == 1);
    }

    FilterSettings settings;
};

/// The output that a pass over `reading` has to write. Adds the number of blocks it has to remove to
/// `removed`.
std::string ExpectedOutput(const PlainReading& reading, const Filters& filters, std::size_t& removed) {
    const std::string_view lineEnd = LineEndText(filters.settings.lineEnd);
    std::string output;
    const auto write = [&](std::string_view line) { output.append(line).append(lineEnd); };
    for (const std::string& line : reading.preamble)
        write(line);
    write("");
    for (const Block& block : reading.blocks) {
        if (block.endMet) write("[EOF]");
        if (filters.Remove(block)) {
            ++removed;
            continue;
        }
        for (const std::string& line : block.lines)
            write(line);
        write("");
    }
    return output;
}

std::vector<Block> BlocksIn(const std::string& file, LineEnd lineEnd) {
    auto blocks = PlainReading(file, lineEnd).blocks;
    std::erase_if(blocks, [](const Block& block) { return block.lines.empty(); });
    return blocks;
}

/// Every record that a pass reads.
class Records : public PassObserver {
 public:
    std::vector<Block> read;
    LineEnd lineEnd = LineEnd::CrLf;

 private:
    void RecordJudged(const WorldItem& item, const Verdict& /*verdict*/) override {
        Block& block = read.emplace_back();
        block.code = item.Code();
        block.lines = LinesOf(std::string(item.Lines.Text()), lineEnd);
        block.lines.pop_back();  // the empty line at the end
        Require(block.lines.size() == item.Lines.Count(), "the lines of a record are counted");
        block.position = {item.X, item.Y, item.Z, item.Facet};
    }
};

struct Rig : Records, PassRig {
    Rig() : PassRig(this) {
        AddItem("i_torch");
        AddRectangle(0, 0, 100, 100);
        onYield = [this] { ++yields; };
    }
    int yields = 0;
};

/// The entries that report the failure of a pass over a damaged file.
std::vector<std::string> ReportOfPass(FailureKind kind) {
    std::vector<std::string> entries = Report(kind, readerModule);
    std::ranges::copy(Report(FailureKind::BadFileNameOrNumber, passModule), std::back_inserter(entries));
    return entries;
}

/// Returns how often the pass yielded.
int CleanAndCompare(Rig& rig, const std::string& file, const Filters& filters, const PlainReading& reading) {
    rig.read.clear();
    rig.lineEnd = filters.settings.lineEnd;
    rig.yields = 0;
    std::size_t removed = 0;
    const std::string expected = ExpectedOutput(reading, filters, removed);
    const std::string output = rig.Clean(file);
    Require(output == expected, "the output holds what is kept of the blocks read, and nothing else");
    Require(rig.fileSystem.openFiles == 0, "no file is left open");
    auto blocks = reading.blocks;
    const auto& log = rig.log.entries;
    if (reading.failure) {
        blocks.emplace_back();  // a failure leaves the empty record
        const auto report = ReportOfPass(reading.failure->Kind());
        Require(rig.outcome == PassOutcome::Failed && rig.log.failedWhere == reading.failure->Where() &&
                    std::equal(report.rbegin(), report.rend(), log.rbegin()),
                "the pass reports what is wrong, and the line");
    } else {
        Require(rig.outcome == PassOutcome::Complete &&
                    log[log.size() - 4] == "Removed " + std::to_string(removed) + " items." &&
                    log.back() == "Processed " + std::to_string(blocks.size()) + " items.",
                "kept and removed blocks account for every block read");
    }
    Require(rig.read == blocks, "every record has the lines, the code and the position of its block");
    return rig.yields;
}

/// A pass that removes nothing gives the same blocks again, also on its own output.
void CopyTwice(Rig& rig, const std::string& file, LineEnd lineEnd) {
    rig.settings.filters = {{FilterKind::Item, {Direction::In}}};
    rig.shared.filterSet.arrItems[0].code = "no code has a blank";
    const std::string copy = rig.Clean(file);
    const std::string again = rig.Clean(copy);
    rig.shared.filterSet.arrItems[0].code = "i_torch";
    const auto blocks = BlocksIn(file, lineEnd);
    Require(BlocksIn(copy, lineEnd) == blocks && BlocksIn(again, lineEnd) == blocks,
            "copies hold the same blocks");
}

/// The blocks without the line "[EOF]", before which others are put back.
std::vector<Block> BlocksBeforeEnd(const std::string& file, LineEnd lineEnd) {
    auto blocks = BlocksIn(file, lineEnd);
    for (Block& block : blocks)
        std::erase_if(block.lines, [](const std::string& line) { return TrimSpaces(line) == "[EOF]"; });
    return blocks;
}

/// The output of a run and its removed file give back what was in the input.
void Restore(MemoryFileSystem& system, const std::string& file, BatchConsole& console, LineEnd lineEnd) {
    RestoreOptions options{"gone", "out", "back", lineEnd};
    options.force = true;
    const auto halted = [] { return false; };
    Require(RestoreRun(options, system, console, halted).Run() == exitComplete, "what was removed goes back");
    const std::string& back = system.files["back"];
    Require(SortedLines(back, lineEnd) == SortedLines(file, lineEnd), "each line is back");
    options.force = false;
    if (RestoreRun(options, system, console, halted).Run() != exitComplete) return;
    const auto before = BlocksBeforeEnd(file, lineEnd);
    const auto after = BlocksBeforeEnd(back, lineEnd);
    Require(std::ranges::is_permutation(before, after), "the same blocks are back");
}

/// A run of the batch program neither loses nor doubles a line.
void KeepEveryLine(const std::string& file, const PlainReading& reading, const Filters& filters) {
    MemoryFileSystem system;
    system.files = {{"in", file},
                    {"list", "x\r\ni_torch\r\n</ITEMS>\r\nx\r\n0\r\n100\r\n0\r\n100\r\n</RECTANGLES>\r\n"}};
    BatchOptions options;
    options.settings = filters.settings;
    options.lineEnd = filters.settings.lineEnd;
    options.listFile = "list";
    options.removedFile = "gone";
    options.force = options.quiet = true;
    std::ostringstream output;
    std::ostringstream error;
    BatchConsole console(output, error, {false, false, false});
    const ExitCode code = BatchRun(options, system, console, [] { return false; }).Run();
    if (code != exitComplete) return Require(reading.failure.has_value(), "a run fails when its input does");
    Require(SortedLines(system.files["out"] + system.files["gone"], *options.lineEnd) ==
                SortedLines(file, *options.lineEnd),
            "each line is in the output or in the removed file, as often as in the input");
    Restore(system, file, console, *options.lineEnd);
}

void Test(const std::string& file, unsigned choice) {
    static Rig* const rig = new Rig;
    const Filters filters(choice);
    const PlainReading reading(file, filters.settings.lineEnd);
    rig->settings = filters.settings;
    rig->fileSystem.mostBytesPerRead = Filters::Bit(choice, 5) ? 1 + file.size() % 64 : 1;
    const int yields = CleanAndCompare(*rig, file, filters, reading);
    rig->fileSystem.mostBytesPerRead = std::string::npos;
    Require(CleanAndCompare(*rig, file, filters, reading) == yields,
            "whole blocks yield as often as lines do");
    if (!reading.failure) CopyTwice(*rig, file, filters.settings.lineEnd);
    KeepEveryLine(file, reading, filters);
}

}  // namespace
}  // namespace quillmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) quillmere::test::Test(quillmere::test::Bytes(data, size - 1), data[size - 1]);
    return 0;
}
