#include "engine/status_log.h"

namespace quillmere {

void StatusLog::LogInfo(std::string_view text) {
    entries_.emplace_back(text);
    OnLogChanged();
}

void StatusLog::EmptyLog() {
    entries_.clear();
    OnLogChanged();
}

void StatusLog::ShowInfo(std::string_view text) {
    infoLine_ = text;
    OnInfoChanged();
}

std::string StatusLog::Text() const {
    std::string text;
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        text.append(*entry).append("\r\n\r\n");
    }
    return text;
}

}  // namespace quillmere
