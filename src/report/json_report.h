#pragma once

#include "report/report.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace quillmere {

/// The report as one JSON object; JSON OUTPUT in quillmere-batch(1) describes it. All texts are UTF-8: what
/// is not valid in a path is replaced by U+FFFD.
nlohmann::ordered_json JsonReport(const Report& report);

enum class JsonLayout {
    Lines,  ///< for people
    Compact
};
/// `json` as UTF-8 text that ends with a line feed. No part of the text can end an HTML element: "<" is
/// written as an escape.
std::string JsonText(const nlohmann::ordered_json& json, JsonLayout layout);

}  // namespace quillmere
