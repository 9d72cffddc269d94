#pragma once

#include <string>

#if defined(__GNUC__)
#define TESSARIN_PRINTF(formatIndex, firstIndex)                                                   \
    __attribute__((format(printf, formatIndex, firstIndex)))
#else
#define TESSARIN_PRINTF(formatIndex, firstIndex)
#endif

namespace tessarin {

/// Trace of one call: the constructor writes the "Enter" line to the trace log and the destructor
/// the "Leave" line, also when the stack unwinds. Costs one pointer test while no log is open, and
/// never throws. Safe from any thread.
class flog {
public:
    explicit flog(const char* function) noexcept;
    flog(const char* function, const char* format, ...) noexcept TESSARIN_PRINTF(3, 4);
    flog(const flog&) = delete;
    flog& operator=(const flog&) = delete;
    virtual ~flog();

    /// Writes one line to the log, if one is open.
    static void Message(const char* format, ...) noexcept TESSARIN_PRINTF(1, 2);

private:
    void Remember(const char* function) noexcept;

    std::string name;
};

} // namespace tessarin
