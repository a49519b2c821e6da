#include "batch/first_look.h"

#include "batch/input_sample.h"

namespace quillmere {

namespace {

/// With the wrong kind of line end the whole file is taken for one line or one block. That need not be a
/// failure, but it is hardly what the user wants.
void NoteUnusualLineEnds(const NamedWorldScript& script, std::string_view sample, BatchConsole& console) {
    const std::string has = std::string(script.argument) + " has ";
    if (script.lineEnd == LineEnd::Lf && sample.find('\r') != std::string_view::npos) {
        console.Note(has + "carriage returns; with --lf they are text of the lines");
    } else if (script.lineEnd == LineEnd::CrLf && LineEndIn(sample) == LineEnd::Lf) {
        console.Note(has + "no carriage returns; lines that end with line feeds need --lf");
    } else if (!script.lineEnd && HasMixedLineEnds(sample)) {
        console.Warning(has + "carriage returns, but also line feeds without them; give --lf or --crlf");
    }
}

}  // namespace

std::optional<LineEnd> LookAtWorldScript(const NamedWorldScript& script, FileSystem& system,
                                         BatchConsole& console) {
    const std::string sample = FirstBytes(system, script.path);
    const std::string_view remark = script.mayBeOtherFile ? "" : NoWorldScript(sample);
    if (!remark.empty()) {
        console.ErrorIn(script.path, remark);
        return std::nullopt;
    }
    NoteUnusualLineEnds(script, sample, console);
    return script.lineEnd.value_or(LineEndIn(sample));
}

}  // namespace quillmere
