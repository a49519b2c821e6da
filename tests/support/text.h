#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quillmere::test {

/// The lines as a file holds them, each ended by CR LF.
inline std::string Lines(std::initializer_list<std::string_view> lines) {
    std::string text;
    for (const std::string_view line : lines)
        text.append(line).append("\r\n");
    return text;
}

/// The same text with LF line ends.
inline std::string WithLineFeeds(std::string text) {
    std::erase(text, '\r');
    return text;
}

}  // namespace quillmere::test
