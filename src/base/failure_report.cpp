#include "base/failure_report.h"

#include "base/number_text.h"

#include <string>

namespace quillmere {

void ReportFailure(Log& log, const Failure& failure, std::string_view moduleLine) {
    log.FailureReported(failure);
    log.LogInfo(std::string("Oops description: ") + failure.Description());
    log.LogInfo("Oops number:" + DecimalWithSignPosition(failure.Number()));
    log.LogInfo(moduleLine);
}

}  // namespace quillmere
