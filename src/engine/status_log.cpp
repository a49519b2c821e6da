#include "engine/status_log.h"

#include <ranges>

namespace quillmere {

void StatusLog::LogInfo(std::string_view text) {
    entries_.emplace_back(text);
}

void StatusLog::EmptyLog() {
    entries_.clear();
}

void StatusLog::ShowInfo(std::string_view text) {
    infoLine_ = text;
}

std::string StatusLog::Text() const {
    std::string text;
    for (const std::string& entry : entries_ | std::views::reverse)
        text.append(entry).append("\r\n\r\n");
    return text;
}

}  // namespace quillmere
