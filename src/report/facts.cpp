#include "report/facts.h"

#include "base/number_text.h"
#include "engine/block_parser.h"

namespace quillmere {

namespace {

/// All maps together take 32 MB at most, a tile 8 KB.
constexpr std::size_t mostTiles = 4096;

/// Whether the last line of a block is "[EOF]", which belongs to the block when no empty line comes before
/// it.
bool EndsWithSentinel(const WorldItem& item) {
    std::string_view text = item.Lines.Text();
    const std::string_view lineEnd = text.ends_with("\r\n\r\n") ? "\r\n" : "\n";
    text.remove_suffix(2 * lineEnd.size());
    if (text.back() != endSentinel.back() && text.back() != ' ') return false;  // nearly always, so first
    text = TrimSpaces(text);
    if (!text.ends_with(endSentinel)) return false;
    text.remove_suffix(endSentinel.size());
    return TrimSpaces(text).ends_with(lineEnd);
}

/// Whether a line after the header looks like a header, too. "[EOF]" may come without an empty line before
/// it.
bool HoldsSecondHeader(const WorldItem& item) {
    const std::string_view text = item.Lines.Text();
    const std::size_t lineFeed = text.find("\n[");
    return lineFeed != std::string_view::npos && !text.substr(lineFeed + 1).starts_with(endSentinel);
}

/// The first word of a block's header, without the bracket.
std::string_view FirstWord(const WorldItem& item) {
    const std::string_view header = item.Lines.Text().substr(1);
    return header.substr(0, header.find_first_of(" ]\r\n"));
}

}  // namespace

std::vector<std::pair<std::string_view, Tally>> SortedTallies(const TallyTable& table,
                                                              std::int64_t Tally::*count) {
    std::vector<std::pair<std::string_view, Tally>> rows;
    for (const auto& [key, tally] : table) {
        if (tally.*count != 0) rows.emplace_back(key, tally);
    }
    std::ranges::sort(rows, [count](const auto& one, const auto& other) {
        return one.second.*count != other.second.*count ? one.second.*count > other.second.*count
                                                        : one.first < other.first;
    });
    return rows;
}

/// The empty record is no block.
void Facts::RecordJudged(const WorldItem& item, const Verdict& verdict) {
    if (item.Lines.Count() == 0) return;
    all.Add(verdict.remove);
    for (std::size_t kind = 0; kind < selected.size(); ++kind)
        selected[kind] += verdict.selectedBy[kind] ? 1 : 0;
    removedWithHeader += verdict.remove && HoldsSecondHeader(item) ? 1 : 0;
    endsWithSentinel = EndsWithSentinel(item);
    sentinelRemoved = verdict.remove && endsWithSentinel;
    if (detail_ != Detail::Sums) CountInTables(item, verdict.remove);
}

void Facts::LineSkipped(std::uint64_t number) {
    firstOutside = linesOutside++ == 0 ? number : std::min(firstOutside, number);
    endsWithSentinel = false;
}

void Facts::CountInTables(const WorldItem& item, bool remove) {
    const std::string_view header = FirstWord(item);
    if (lastHeader_ == nullptr || lastHeader_->first != header) lastHeader_ = &byHeader.RowOf(header);
    lastHeader_->second.Add(remove);
    byCode.RowOf(item.Code()).second.Add(remove);
    if (item.Placed) {
        CountPlaced(item, remove);
    } else {
        unplaced.Add(remove);
    }
}

void Facts::CountPlaced(const WorldItem& item, bool remove) {
    FacetFacts* const facet = FacetOf(item.Facet);
    if (facet == nullptr) return otherFacets.Add(remove);
    facet->tally.Add(remove);
    facet->bounds.Include(item.X, item.Y);
    if (detail_ != Detail::Maps) return;
    facet->density.Prepare(item.X, item.Y);
    Placed& longest = waiting_[nextWaiting_++ % waiting_.size()];
    CountOnMap(std::exchange(longest, {facet, item.X, item.Y, remove}));
}

void Facts::Finish() {
    for (Placed& placed : waiting_)
        CountOnMap(std::exchange(placed, {}));
}

void Facts::CountOnMap(const Placed& placed) {
    if (placed.facet == nullptr) return;
    DensityGrid& density = placed.facet->density;
    const std::size_t before = density.TileCount();
    density.Count(placed.x, placed.y, placed.remove);
    if (density.TileCount() > before) LimitMaps();
}

/// Null for one facet too many.
FacetFacts* Facts::FacetOf(std::int32_t number) {
    if (lastFacetFacts_ != nullptr && number == lastFacet_) return lastFacetFacts_;
    const auto found = facets.find(number);
    if (found == facets.end() && facets.size() == mostFacets) return nullptr;
    lastFacet_ = number;
    return lastFacetFacts_ = found != facets.end() ? &found->second : &facets[number];
}

/// Called when a map may have grown. While all of them take too much memory, makes the cells of the largest
/// one larger.
void Facts::LimitMaps() {
    if (++tiles_ <= mostTiles) return;
    for (;;) {
        tiles_ = 0;
        DensityGrid* largest = &facets.begin()->second.density;
        for (auto& [number, facet] : facets) {
            tiles_ += facet.density.TileCount();
            if (facet.density.TileCount() > largest->TileCount()) largest = &facet.density;
        }
        if (tiles_ <= mostTiles) return;
        largest->Coarsen();
    }
}

}  // namespace quillmere
