#include "engine/world_item.h"

namespace quillmere {

void WorldItem::Clear() {
    Code.clear();
    Lines.Clear();
    X = Y = Z = Facet = 0;
}

}  // namespace quillmere
