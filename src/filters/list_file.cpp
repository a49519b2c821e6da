#include "filters/list_file.h"

#include "base/number_text.h"
#include "base/utf8.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

constexpr std::string_view itemsBegin = "<ITEMS>";
constexpr std::string_view itemsEnd = "</ITEMS>";
constexpr std::string_view rectanglesBegin = "<RECTANGLES>";
constexpr std::string_view rectanglesEnd = "</RECTANGLES>";

/// Reads an open list file into a filter set.
class ListReader {
 public:
    ListReader(fileHandler& objReader, FilterSet& target, LineEnd lineEnd, bool skipMark)
        : objReader_(objReader),
          number_(objReader.OpenFile(lineEnd)),
          target_(target),
          markMayFollow_(skipMark) {}

    void ReadItems() {
        ReadSection(itemsEnd, target_.arrItems, [this](ItemFilter& item) {
            item.code = Line();
            if (item.code == itemsEnd && lineMisread_ == 0) lineMisread_ = linesRead_;
        });
    }

    void ReadRectangles() {
        ReadSection(rectanglesEnd, target_.arrRectangles, [this](RectangleFilter& rectangle) {
            rectangle.X1 = NumberFromText(Line());
            rectangle.X2 = NumberFromText(Line());
            rectangle.Y1 = NumberFromText(Line());
            rectangle.Y2 = NumberFromText(Line());
        });
    }

    void Close() { objReader_.CloseFile(number_); }
    std::uint64_t LinesRead() const { return linesRead_; }

    /// What is wrong with the list; empty when the file or the memory is the cause.
    std::string AdviceFor(FailureKind kind) const {
        switch (kind) {
            case FailureKind::InputPastEnd:
                return "The list ends before " + std::string(closing_) +
                       (lineMisread_ == 0 ? "; it is cut short, or no filter list."
                                          : "; before line " + std::to_string(lineMisread_) +
                                                " a line is missing, or one is too many.");
            case FailureKind::SubscriptOutOfRange:
                return "A list holds up to " + std::to_string(filterSlots) +
                       " items and as many rectangles; divide it, unless it is no filter list at all.";
            case FailureKind::TypeMismatch:
                return "A number is expected here; a rectangle has five lines: name, X1, X2, Y1 and Y2.";
            case FailureKind::Overflow:
                return "The number has more than 32 bits; correct it.";
            default:
                return {};
        }
    }

 private:
    std::string_view Line() {
        std::string_view line = objReader_.GetNextLine(number_);
        ++linesRead_;
        if (std::exchange(markMayFollow_, false) && line.starts_with(byteOrderMark))
            line.remove_prefix(byteOrderMark.size());
        return line;
    }

    /// Fills the slots of `table` up to the line `closing`: a line that does not begin with "<" is a name,
    /// and `readRest` reads the other fields of its entry.
    template <class Table, class ReadRest>
    void ReadSection(std::string_view closing, Table& table, ReadRest readRest) {
        std::size_t slot = 0;
        closing_ = closing;
        for (std::string_view line = Line(); line != closing; line = Line()) {
            if (line.starts_with('<')) continue;
            if (slot == table.size()) throw Failure(FailureKind::SubscriptOutOfRange);
            auto& entry = table[slot++];
            entry.name = line;
            readRest(entry);
        }
    }

    fileHandler& objReader_;
    std::int32_t number_;
    FilterSet& target_;
    bool markMayFollow_;
    std::uint64_t linesRead_ = 0;
    std::string_view closing_ = itemsEnd;  ///< the line that ends what is read
    std::uint64_t lineMisread_ = 0;        ///< the first that looks like that line, but was taken for a code
};

void WriteItems(fileHandler& objWriter, std::int32_t number, const ItemTable& arrItems) {
    for (const ItemFilter& item : arrItems) {
        if (item.code.empty()) break;
        objWriter.WriteNextLine(item.name, number);
        objWriter.WriteNextLine(item.code, number);
    }
}

void WriteRectangles(fileHandler& objWriter, std::int32_t number, const RectangleTable& arrRectangles) {
    for (const RectangleFilter& rectangle : arrRectangles) {
        if (rectangle.name.empty()) break;
        objWriter.WriteNextLine(rectangle.name, number);
        for (const std::int32_t bound : {rectangle.X1, rectangle.X2, rectangle.Y1, rectangle.Y2}) {
            objWriter.WriteNextLine(std::to_string(bound), number);
        }
    }
}

}  // namespace

bool LoadFilterList(fileHandler& objReader, const std::string& strFile, FilterSet& target, Log& log,
                    LineEnd lineEnd, bool skipMark) {
    target.Clear();
    std::optional<ListReader> list;
    const auto failure = TrapFailure([&] {
        objReader.SetFileName(strFile);
        list.emplace(objReader, target, lineEnd, skipMark);
        list->ReadItems();
        list->ReadRectangles();
        list->Close();
    });
    if (!failure) return true;
    std::string where = strFile;
    std::string advice;
    if (list) {
        where += ", line " + std::to_string(list->LinesRead());
        advice = list->AdviceFor(failure->Kind());
        IgnoreFailure([&] { list->Close(); });
    }
    ReportFailure(log, failure->At(where).Advised(advice), "Error in list loading module.  Pffft....");
    return false;
}

bool SaveFilterList(fileHandler& objWriter, const std::string& strFile, const FilterSet& source, Log& log) {
    std::optional<std::int32_t> number;
    const auto failure = TrapFailure([&] {
        objWriter.SetFileName(strFile);
        number = objWriter.OpenFileForWrite();
        objWriter.WriteNextLine(itemsBegin, *number);
        WriteItems(objWriter, *number, source.arrItems);
        objWriter.WriteNextLine(itemsEnd, *number);
        objWriter.WriteNextLine(rectanglesBegin, *number);
        WriteRectangles(objWriter, *number, source.arrRectangles);
        objWriter.WriteNextLine(rectanglesEnd, *number);
        objWriter.CloseWriteFile(*number);
    });
    if (!failure) return true;
    if (number) IgnoreFailure([&] { objWriter.CloseWriteFile(*number); });
    ReportFailure(log, failure->At(strFile), "Error in list saving module.  Pffft....");
    return false;
}

}  // namespace quillmere
