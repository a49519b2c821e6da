#include "system/time_of_day.h"

#include <chrono>
#include <ctime>

namespace quillmere {

double SecondsSinceMidnight() {
    const auto now = std::chrono::system_clock::now();
    const auto wholeSeconds = std::chrono::floor<std::chrono::seconds>(now);
    const std::time_t time = std::chrono::system_clock::to_time_t(wholeSeconds);
    const std::tm local = *std::localtime(&time);
    const std::chrono::duration<double> fraction = now - wholeSeconds;
    return local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec + fraction.count();
}

}  // namespace quillmere
