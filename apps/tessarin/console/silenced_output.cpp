#include "apps/tessarin/console/silenced_output.h"

#include <cstdio>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

#if defined(_WIN32)
constexpr int kStandardOutput = 1;
int OpenNothing() {
    return _open("NUL", _O_WRONLY);
}
int Duplicate(int file) {
    return _dup(file);
}
void Replace(int file, int by) {
    _dup2(by, file);
}
void Close(int file) {
    _close(file);
}
#else
constexpr int kStandardOutput = STDOUT_FILENO;
int OpenNothing() {
    return open("/dev/null", O_WRONLY | O_CLOEXEC);
}
int Duplicate(int file) {
    return dup(file);
}
void Replace(int file, int by) {
    dup2(by, file);
}
void Close(int file) {
    close(file);
}
#endif

} // namespace

SilencedOutput::SilencedOutput() {
    std::fflush(stdout);
    const int nothing = OpenNothing();
    if (nothing < 0) {
        return;
    }
    original = Duplicate(kStandardOutput);
    if (original >= 0) {
        Replace(kStandardOutput, nothing);
    }
    Close(nothing);
}

SilencedOutput::~SilencedOutput() {
    std::fflush(stdout);
    if (original >= 0) {
        Replace(kStandardOutput, original);
        Close(original);
    }
}
