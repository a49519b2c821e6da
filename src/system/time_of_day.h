#pragma once

namespace quillmere {

/// Local time of day in seconds since midnight, with a fraction.
double SecondsSinceMidnight();

}  // namespace quillmere
