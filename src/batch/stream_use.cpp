#include "batch/stream_use.h"

#include "batch/batch_file_system.h"
#include "system/console.h"

#include <algorithm>

namespace quillmere {

namespace {

/// "OUTPUT", "OUTPUT or the page", "OUTPUT, the removed file or the page".
std::string Alternatives(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 < names.size() ? ", " : " or ";
        text += names[i];
    }
    return text;
}

bool IsOneOf(const std::vector<std::string>& files, bool (&isStream)(const std::string&)) {
    return std::ranges::any_of(files, isStream);
}

/// Why what is printed would mix with what is written; empty when it would not.
std::string ReasonOfMixture(const StreamUse& use) {
    if (use.json && IsOneOf(use.written, IsStandardOutput))
        return "standard output is where the JSON object goes; write nothing else there";
    if (use.logs && IsOneOf(use.written, IsStandardOutput))
        return "standard output is where the log goes; --quiet keeps blocks and log apart";
    if (IsOneOf(use.written, IsStandardError) || (use.WritesToOutput() && StandardStreamsAreOne()))
        return "errors and warnings would go into " + use.namesOfWritten + "; send them elsewhere";
    return {};
}

}  // namespace

bool StreamUse::WritesToOutput() const {
    return !written.empty() && written.front() == standardStream;
}

StreamUse UseBy(const BatchOptions& options) {
    StreamUse use;
    use.read = {options.settings.strInputFile, options.listFile};
    use.namesOfRead = "INPUT or the list";
    std::vector<std::string> names;
    if (options.WritesOutput()) {
        use.written = {options.settings.strOutputFile, options.removedFile};
        names = {"OUTPUT", "the removed file"};
    }
    if (!options.pageFile.empty()) {
        use.written.push_back(options.pageFile);
        names.emplace_back("the page");
    }
    use.namesOfWritten = Alternatives(names);
    use.logs = !options.quiet && !options.json;
    use.json = options.json;
    use.quiet = options.quiet;
    return use;
}

StreamUse UseBy(const RestoreOptions& options) {
    StreamUse use;
    use.read = {options.inputFile, options.removedFile};
    use.namesOfRead = "INPUT or REMOVED";
    use.written = {options.outputFile};
    use.namesOfWritten = "OUTPUT";
    use.logs = !options.quiet;
    use.quiet = options.quiet;
    return use;
}

StreamUse UseBy(const ListOptions& options) {
    StreamUse use;
    (options.action == ListOptions::Action::Show ? use.read : use.written) = {options.listFile};
    use.namesOfRead = use.namesOfWritten = "the list";
    use.logs = !options.quiet;
    use.quiet = options.quiet;
    return use;
}

std::optional<StreamRefusal> RefusalOf(const StreamUse& use) {
    const bool outputIsRead = IsOneOf(use.read, IsStandardOutput);
    const bool errorIsRead = IsOneOf(use.read, IsStandardError);
    if (outputIsRead || errorIsRead) {
        return StreamRefusal{
            "the log or the errors would go into " + use.namesOfRead + "; send them to another file",
            !outputIsRead, !errorIsRead};
    }
    const std::string reason = ReasonOfMixture(use);
    if (reason.empty()) return std::nullopt;
    return StreamRefusal{reason, !use.WritesToOutput(), true};
}

}  // namespace quillmere
