#pragma once

namespace quillmere {

inline constexpr const char* programVersion = "0.99b";
inline constexpr const char* programBuild = "3";
inline constexpr const char* programBuildDate = "01/11/03";

}  // namespace quillmere
