#pragma once

#include <string>

namespace CLI {
class ParseError;
}

namespace quillmere {

/// The two lines for a command line that is wrong: what is wrong with it, and how to get help.
std::string UsageErrorText(const CLI::ParseError& error);

}  // namespace quillmere
