#include "apps/tessarin/console/failure.h"

#include "tessarin/error_codes.h"

std::string DescribeCode(const std::string& subject, int code) {
    return subject + ": " + GetVisemixErrorMessage(code) + " (code " + std::to_string(code) + ")";
}

Failure EngineFailure(const std::string& subject, int code) {
    return {code == tessarin::kUserCancelled ? kExitCancelled : kExitFailed,
            DescribeCode(subject, code)};
}
