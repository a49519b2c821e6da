#include "batch/usage_errors.h"

#include <CLI/CLI.hpp>

namespace quillmere {

namespace {

/// `text` ends with a colon and the words that mean nothing. One that looks like an option is at fault, even
/// if what was to be its value comes first.
std::string SentenceOfExtras(const std::string& text) {
    const std::string words = text.substr(text.find(": ") + 1);
    const std::size_t option = words.find(" -");
    if (option == std::string::npos) return "only INPUT and OUTPUT are expected, but not:" + words;
    return "there is no option " + words.substr(option + 1, words.find(' ', option + 1) - option - 1);
}

/// What the library says, in a sentence for the user. Its texts begin with the name of an option or argument.
std::string Sentence(const CLI::ParseError& error) {
    std::string text = error.what();
    const std::string name = text.substr(0, text.find_first_of(": "));
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) return name + " is missing";
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr)
        return name + " and " + text.substr(text.rfind(' ') + 1) + " cannot be given together";
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) return SentenceOfExtras(text);
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        return text.find("received") != std::string::npos ? name + " can be given only once"
                                                          : name + " needs a value after it";
    }
    if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) {
        const std::size_t option = text.find("--");
        return text.substr(option, text.find(' ', option) - option) + " takes no such value";
    }
    return text;
}

}  // namespace

std::string UsageErrorText(const CLI::ParseError& error) {
    return "quillmere-batch: " + Sentence(error) + "\nquillmere-batch --help lists the options.\n";
}

}  // namespace quillmere
