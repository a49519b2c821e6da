#include "batch/shared_names.h"

#include "engine/filter_pass.h"

namespace quillmere {

bool RefuseSharedNames(std::span<const NamePair> pairs, FileSystem& system, BatchConsole& console) {
    for (const auto& [one, other, advice] : pairs) {
        if (one.empty() || other.empty() || !system.SameFile(one, other)) continue;
        console.Error(std::string(sameFileRefusal) + " " + std::string(advice));
        return true;
    }
    return false;
}

bool RefuseBackup(const std::string& output, std::span<const std::string> others, FileSystem& system,
                  BatchConsole& console) {
    const std::string backup = system.BackupPath(output);
    for (const std::string& other : others) {
        if (other.empty() || !system.SameFile(backup, other)) continue;
        console.Error("OUTPUT~, where --backup keeps the old OUTPUT, is also " + other + ".");
        return true;
    }
    return false;
}

}  // namespace quillmere
