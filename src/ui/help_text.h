#pragma once

namespace quillmere {

/// What the help window shows: UTF-8, lines ended by CR LF.
extern const char* const helpText;

}  // namespace quillmere
