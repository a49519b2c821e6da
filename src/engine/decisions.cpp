#include "engine/decisions.h"

namespace quillmere {

namespace {

/// Whether a filter selects a record that does or does not match.
bool Selects(const std::optional<Direction>& direction, bool matches) {
    return direction && matches == (*direction == Direction::In);
}

}  // namespace

bool IsInRectangleList(const WorldItem& item, const RectangleTable& arrRectangles) {
    for (const RectangleFilter& rectangle : arrRectangles) {
        if (rectangle.name.empty()) return false;
        if (rectangle.X1 <= item.X && item.X <= rectangle.X2 &&  //
            rectangle.Y1 <= item.Y && item.Y <= rectangle.Y2) {
            return true;
        }
    }
    return false;
}

bool IsInItemList(std::string_view code, const ItemTable& arrItems) {
    for (const ItemFilter& item : arrItems) {
        if (item.name.empty()) return false;
        if (item.code == code) return true;
    }
    return false;
}

Verdict Judge(const WorldItem& item, const FilterSettings& settings, std::int32_t facet,
              const FilterSet& filters) {
    Verdict verdict;
    if (settings.items) {
        verdict.item = Selects(settings.items, IsInItemList(item.Code, filters.arrItems));
    }
    if (settings.rectangles) {
        verdict.rectangle = Selects(settings.rectangles, IsInRectangleList(item, filters.arrRectangles));
    }
    verdict.facet = Selects(settings.facet, item.Facet == facet);
    const bool spared = (settings.items && !verdict.item) || (settings.rectangles && !verdict.rectangle) ||
                        (settings.facet && !verdict.facet);
    verdict.remove = !spared;
    return verdict;
}

}  // namespace quillmere
