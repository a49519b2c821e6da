#include "engine/decisions.h"

namespace quillmere {

namespace {

/// Whether a filter selects a record that does or does not match.
bool Selects(const std::optional<Direction>& direction, bool matches) {
    return direction && matches == (*direction == Direction::In);
}

}  // namespace

Verdict Decisions::Judge(const WorldItem& item, const FilterSettings& settings, std::int32_t facet) {
    Verdict verdict;
    if (settings.items) verdict.item = Selects(settings.items, IsInItemList(item.Code()));
    if (settings.rectangles) verdict.rectangle = Selects(settings.rectangles, IsInRectangleList(item));
    verdict.facet = Selects(settings.facet, item.Facet == facet);
    const bool spared = (settings.items && !verdict.item) || (settings.rectangles && !verdict.rectangle) ||
                        (settings.facet && !verdict.facet);
    verdict.remove = !spared;
    return verdict;
}

}  // namespace quillmere
