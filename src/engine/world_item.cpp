#include "engine/world_item.h"

#include "base/failure.h"

#include <algorithm>

namespace quillmere {

void BlockLines::Append(std::string_view line) {
    if (count_ > mostBodyLines) throw Failure(FailureKind::SubscriptOutOfRange);
    const std::size_t begin = text_.size() - lineEnd_.size();
    const std::size_t size = begin + line.size() + 2 * lineEnd_.size();
    if (size > storage_.size()) storage_.resize(std::max(size, 2 * storage_.size()));
    char* const slot = storage_.data() + begin;
    line.copy(slot, line.size());
    lineEnd_.copy(slot + line.size(), lineEnd_.size());
    lineEnd_.copy(slot + line.size() + lineEnd_.size(), lineEnd_.size());
    text_ = {storage_.data(), size};
    ++count_;
}

std::string_view BlockLines::operator[](std::size_t slot) const {
    if (slot >= count_) return {};
    std::string_view rest = text_;
    for (; slot > 0; --slot)
        rest.remove_prefix(rest.find(lineEnd_.front()) + lineEnd_.size());
    return rest.substr(0, rest.find(lineEnd_.front()));
}

}  // namespace quillmere
