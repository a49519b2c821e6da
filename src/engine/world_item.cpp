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

}  // namespace quillmere
