#include "ui/options_file.h"

#include "base/number_text.h"
#include "base/utf8.h"
#include "system/code_page.h"
#include "textfile/line_stream.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace quillmere {

namespace {

constexpr std::string_view trueWord = "True";
constexpr std::string_view falseWord = "False";

/// Whether the number in `text`, which may be of any size, is not 0.
bool IsNotZero(std::string_view text) {
    const auto failure = TrapFailure([&] { NumberFromText(text); });
    if (failure && failure->Kind() != FailureKind::Overflow) throw *failure;
    return text.find_first_of("123456789") != std::string_view::npos;
}

bool BooleanFromText(std::string_view text) {
    const std::string_view word = TrimSpaces(text);
    if (SameLetters(word, trueWord)) return true;
    return !SameLetters(word, falseWord) && IsNotZero(word);
}

/// Whether there is such a file, as far as the system tells.
bool Exists(FileSystem& fileSystem, const std::string& path) {
    bool exists = false;
    TrapFailure([&] { exists = fileSystem.KindOf(path) != FileKind::Missing; });
    return exists;
}

/// A line that is not valid UTF-8 is in the code page, unless there is a file with exactly these bytes as its
/// name.
std::string PathFromLine(FileSystem& fileSystem, std::string_view line) {
    std::string bytes(line);
    if (IsValidUtf8(bytes) || Exists(fileSystem, bytes)) return bytes;
    return Utf8FromCodePage(bytes);
}

/// The path in the code page if that is read back as the same path, else unchanged.
std::string LineFromPath(FileSystem& fileSystem, const std::string& path) {
    if (path.find('\r') != std::string::npos) throw Failure(FailureKind::BadFileNameOrNumber, path);
    std::string line = CodePageFromUtf8(path);
    return PathFromLine(fileSystem, line) == path ? line : path;
}

}  // namespace

void LoadOptions(FileSystem& fileSystem, const std::vector<std::string>& files, Options& options, Log& log) {
    std::string strOptionsFile;
    const auto failure = TrapFailure([&] {
        const auto exists = [&](const std::string& path) {
            strOptionsFile = path;
            return fileSystem.KindOf(path) == FileKind::Regular;
        };
        if (std::ranges::none_of(files, exists)) {
            log.LogInfo("No options found, using defaults.");
            return;
        }
        LineReader reader(fileSystem.OpenForRead(strOptionsFile), strOptionsFile, LineEnd::CrLf);
        options.blnTranslucent = BooleanFromText(reader.NextLine());
        options.strInputFile = PathFromLine(fileSystem, reader.NextLine());
        options.strOutputFile = PathFromLine(fileSystem, reader.NextLine());
    });
    if (failure)
        ReportFailure(log, failure->At(strOptionsFile), "Error in options loading module.  Pffft....");
}

void SaveOptions(FileSystem& fileSystem, const std::string& strOptionsFile, const Options& options,
                 Log& log) {
    const auto failure = TrapFailure([&] {
        const std::string inputLine = LineFromPath(fileSystem, options.strInputFile);
        const std::string outputLine = LineFromPath(fileSystem, options.strOutputFile);
        LineWriter writer(fileSystem.OpenForWrite(strOptionsFile), LineEnd::CrLf);
        writer.WriteLine(options.blnTranslucent ? trueWord : falseWord);
        writer.WriteLine(inputLine);
        writer.WriteLine(outputLine);
        writer.Close();
    });
    if (failure)
        ReportFailure(log, failure->At(strOptionsFile), "Error in options saving module.  Pffft....");
}

}  // namespace quillmere
