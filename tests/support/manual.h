#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace quillmere::test {

/// The words of the batch program's manual page, as they are typed.
inline std::string Manual() {
    std::ifstream page(QUILLMERE_MANUAL);
    EXPECT_TRUE(page) << QUILLMERE_MANUAL;
    std::string text;
    for (std::string line; std::getline(page, line);)
        text += line + ' ';
    return text;
}

/// The text with "N" for each number and "OPTION" for each option.
inline std::string WithoutValues(const std::string& text) {
    return std::regex_replace(std::regex_replace(text, std::regex("[0-9]+"), "N"), std::regex("--[a-z-]+"),
                              "OPTION");
}

/// Expects that the manual page has each clause of an error line, a warning or a note, apart from its values.
inline void ExpectInManual(const std::string& said) {
    static const std::string manual = WithoutValues(Manual());
    std::string clauses = WithoutValues(said);
    for (const auto& [value, shown] : std::vector<std::pair<const char*, const char*>>{
             {"^quillmere-batch: |\n.*| \\(N\\): \".*|\"[^\"]*\"", ""},
             {"(world|gone|out~?|(out|gone).tmp|list|absent|pipe[^:]*|scratch|standard (in|out)put)(, line "
              "N)?: |(is "
              "also|but not:) .*",
              ""},
             {"specify any rectangles", "specify any items"},
             {"list list", "list FILE"},
             {"[:;.] ", "\n"}})
        clauses = std::regex_replace(clauses, std::regex(value), shown);
    std::istringstream stream(clauses);
    for (std::string clause; std::getline(stream, clause);)
        EXPECT_NE(manual.find(clause), std::string::npos) << "not in the manual page: " << clause;
}

}  // namespace quillmere::test
