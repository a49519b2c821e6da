#pragma once

#include "base/log.h"
#include "engine/mod_global.h"

#include <string>

namespace quillmere {

/// Loads the list `path` into the filter set of `shared`, as LoadFilterList does. The list may come from an
/// editor of any system.
bool LoadAnyList(modGlobal& shared, const std::string& path, Log& log);

}  // namespace quillmere
