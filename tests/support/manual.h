#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>

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

}  // namespace quillmere::test
