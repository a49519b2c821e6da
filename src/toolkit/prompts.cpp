#include "toolkit/prompts.h"

#include <string_view>

namespace quillmere {

std::vector<FilePattern> PatternsOf(const FileDialog& dialog) {
    std::vector<FilePattern> patterns;
    std::string_view rest = dialog.filter;
    while (!rest.empty()) {
        const std::size_t bar = rest.find('|');
        if (bar == std::string_view::npos) break;
        const std::size_t end = rest.find('|', bar + 1);
        patterns.push_back(
            {std::string(rest.substr(0, bar)), std::string(rest.substr(bar + 1, end - bar - 1))});
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    return patterns;
}

std::string WithDefaultExtension(const FileDialog& dialog, const std::string& path) {
    if (dialog.purpose != FileDialog::Purpose::Save || path.empty()) return path;
    const std::size_t name = path.find_last_of("/\\") + 1;  // 0 when there is no folder
    const std::size_t dot = dialog.defaultExtension.rfind('.');
    if (name == path.size() || dot == std::string::npos || path.find('.', name) != std::string::npos)
        return path;
    return path + dialog.defaultExtension.substr(dot);
}

}  // namespace quillmere
