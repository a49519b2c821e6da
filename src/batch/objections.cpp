#include "batch/objections.h"

namespace quillmere {

namespace {

std::string WarningOfLinesOutside(const Facts& facts) {
    const std::string first = std::to_string(facts.firstOutside);
    if (facts.linesOutside == 1)
        return "1 line outside blocks was left out, line " + first + "; --removed FILE keeps it";
    return std::to_string(facts.linesOutside) + " lines outside blocks were left out, the first is line " +
           first + "; --removed FILE keeps them";
}

}  // namespace

std::vector<std::string> WarningsOfPass(const Facts& facts, const BatchOptions& options) {
    std::vector<std::string> warnings;
    if (facts.linesOutside > 0 && options.removedFile.empty())
        warnings.push_back(WarningOfLinesOutside(facts));
    if (facts.removedWithHeader > 0) {
        warnings.push_back(
            "removed blocks that hold a second header: " + std::to_string(facts.removedWithHeader) +
            "; an empty line may be missing before it");
    }
    return warnings;
}

std::string Objection(const Facts& facts, const BatchOptions& options) {
    const Tally& all = facts.all;
    if (!options.force && all.blocks == 0)
        return "no block was found, so this may be no save; --force goes on";
    if (!options.force && !facts.endsWithSentinel) {
        return "the last line is not [EOF], so the save may be cut short; save again, or --force goes on";
    }
    if (!options.force && facts.sentinelRemoved) {
        return "the last block would go, and with it the line [EOF], since no empty line is before it; "
               "put one there, or --force goes on";
    }
    if (options.maxRemoved && all.removed * 100 > all.blocks * *options.maxRemoved) {
        return std::to_string(all.removed) + " of " + std::to_string(all.blocks) +
               " blocks would go, which is more than " + std::to_string(*options.maxRemoved) +
               "%; check list and filters, or raise --max-removed";
    }
    return {};
}

}  // namespace quillmere
