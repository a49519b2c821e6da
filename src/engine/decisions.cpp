#include "engine/decisions.h"

#include <utility>

namespace quillmere {

void Decisions::AddFirst(FilterKind kind, Direction direction, std::unique_ptr<BlockFilter> filter) {
    filters_.insert(filters_.begin(), {kind, direction, std::move(filter)});
}

Verdict Decisions::Judge(const WorldItem& item) {
    Verdict verdict;
    verdict.remove = true;
    for (const Filter& filter : filters_) {
        const bool selects = filter.filter->Matches(item) == (filter.direction == Direction::In);
        verdict.selectedBy[static_cast<std::size_t>(filter.kind)] = selects;
        verdict.remove = verdict.remove && selects;
    }
    return verdict;
}

}  // namespace quillmere
