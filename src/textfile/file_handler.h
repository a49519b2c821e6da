#pragma once

#include "textfile/open_file_table.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace quillmere {

/// Reads and writes text files line by line, under the numbers of an OpenFileTable. An object remembers one
/// file name; opening returns a file number, which every later operation takes, so that one object can have
/// several files open at once. Failures pass through to the caller and leave other open files as they were.
/// Code that asks more of a file uses the table's LineReader for its number.
class fileHandler {
 public:
    /// `table` is the program's open-file table and must outlive the object.
    explicit fileHandler(OpenFileTable& table) : table_(table) {}

    void SetFileName(std::string strFile) { strFile_ = std::move(strFile); }
    const std::string& GetFileName() const { return strFile_; }

    /// Opens the stored name for reading, at its first line; the file must exist.
    std::int32_t OpenFile(LineEnd lineEnd = LineEnd::CrLf) { return table_.OpenForRead(strFile_, lineEnd); }
    /// The next line's text without its end; the view is good until the next operation on that number, the
    /// end-of-file test included. Fails with InputPastEnd when nothing is left.
    std::string_view GetNextLine(std::int32_t number) { return table_.Reader(number).NextLine(); }
    void CloseFile(std::int32_t number) { table_.Close(number); }

    /// Opens the stored name for writing: a missing file is created, an existing one is emptied.
    std::int32_t OpenFileForWrite(LineEnd lineEnd = LineEnd::CrLf) {
        return table_.OpenForWrite(strFile_, lineEnd);
    }
    /// Writes `strData` and a line end. A failure may show only at a later write or at the close.
    void WriteNextLine(std::string_view strData, std::int32_t number) {
        table_.Writer(number).WriteLine(strData);
    }
    /// Writes whole lines that already contain their line ends, with the same effect as one WriteNextLine for
    /// each.
    void WriteText(std::string_view strLines, std::int32_t number) {
        table_.Writer(number).WriteText(strLines);
    }
    /// Returns only when the system has taken everything that was written.
    void CloseWriteFile(std::int32_t number) { table_.Close(number); }

 private:
    OpenFileTable& table_;
    std::string strFile_;
};

}  // namespace quillmere
