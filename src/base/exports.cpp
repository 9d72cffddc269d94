#include "base/error_messages.h"
#include "base/log_file.h"
#include "tessarin/error_codes.h"
#include "tessarin/logging.h"

int32_t StartLogging(const char* name) {
    return tessarin::OpenLog(name);
}

void EndLogging() {
    tessarin::CloseLog();
}

const char* GetVisemixErrorMessage(int32_t code) {
    return tessarin::ErrorMessage(code);
}
