#pragma once

#include "report/report.h"

#include <string>

namespace quillmere {

/// The report as one HTML page.
std::string PageText(const Report& report);

}  // namespace quillmere
