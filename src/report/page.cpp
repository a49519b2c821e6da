#include "report/page.h"

#include "report/json_report.h"

#include <nlohmann/json.hpp>

namespace quillmere {

std::string PageText(const Report& report) {
    return "<!doctype html><title>Quillmere</title><pre>" + JsonText(JsonReport(report), JsonLayout::Lines);
}

}  // namespace quillmere
