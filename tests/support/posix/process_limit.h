#pragma once

#include <csignal>
#include <sys/resource.h>

namespace tessarin::test {

/// Sets a limit of the process for the length of a scope. One on the size of files is met by a
/// failed write, as on a full disk, not by a signal.
class process_limit {
public:
    process_limit(decltype(RLIMIT_FSIZE) limitOf, rlim_t value) : resource(limitOf) {
        getrlimit(resource, &before);
        const rlimit limit = {value, before.rlim_max};
        setrlimit(resource, &limit);
        handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~process_limit() {
        setrlimit(resource, &before);
        std::signal(SIGXFSZ, handler);
    }
    process_limit(const process_limit&) = delete;
    process_limit& operator=(const process_limit&) = delete;

private:
    decltype(RLIMIT_FSIZE) resource;
    rlimit before = {};
    void (*handler)(int) = nullptr;
};

} // namespace tessarin::test
