#include "toolkit/access_key.h"

#include <cctype>

namespace quillmere {

char AccessKeyOf(std::string_view caption) {
    for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != '&') continue;
        const auto marked = static_cast<unsigned char>(caption[i + 1]);
        return std::isalnum(marked) != 0 ? static_cast<char>(std::tolower(marked)) : '\0';
    }
    return '\0';
}

std::string WithoutAccessKey(std::string_view caption) {
    std::string plain(caption);
    std::erase(plain, '&');
    return plain;
}

}  // namespace quillmere
