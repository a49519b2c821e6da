#include "engine/decisions.h"

#include <utility>

namespace quillmere {

void Decisions::Add(FilterKind kind, Direction direction, BlockTest test, bool placedOnly) {
    filters_.push_back({kind, direction, std::move(test), placedOnly});
}

Verdict Decisions::Judge(const WorldItem& item) {
    Verdict verdict;
    verdict.remove = !filters_.empty();
    for (const Filter& filter : filters_) {
        const bool selects =
            (item.Placed || !filter.placedOnly) && filter.test(item) == (filter.direction == Direction::In);
        verdict.selectedBy[static_cast<std::size_t>(filter.kind)] = selects;
        verdict.remove = verdict.remove && selects;
    }
    return verdict;
}

}  // namespace quillmere
