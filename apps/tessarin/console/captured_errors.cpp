#include "apps/tessarin/console/captured_errors.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

#if defined(_WIN32)
int Duplicate(int file) {
    return _dup(file);
}
void Replace(int file, int by) {
    _dup2(by, file);
}
int NumberOf(std::FILE* file) {
    return _fileno(file);
}
std::FILE* OpenNumber(int file) {
    return _fdopen(file, "w");
}
void Close(int file) {
    _close(file);
}
#else
int Duplicate(int file) {
    return dup(file);
}
void Replace(int file, int by) {
    dup2(by, file);
}
int NumberOf(std::FILE* file) {
    return fileno(file);
}
std::FILE* OpenNumber(int file) {
    return fdopen(file, "w");
}
void Close(int file) {
    close(file);
}
#endif

} // namespace

CapturedErrors::CapturedErrors() {
    std::fflush(stderr);
    kept = std::tmpfile();
    if (kept == nullptr) {
        return; // then the lines are seen among the others
    }
    const int original = Duplicate(NumberOf(stderr));
    if (original < 0) {
        return;
    }
    stream = OpenNumber(original);
    if (stream == nullptr) {
        Close(original);
        return;
    }
    Replace(NumberOf(stderr), NumberOf(kept));
}

CapturedErrors::~CapturedErrors() {
    std::fflush(stderr);
    if (stream != nullptr) {
        std::fflush(stream);
        Replace(NumberOf(stderr), NumberOf(stream));
        std::fclose(stream);
    }
    if (kept != nullptr) {
        std::fclose(kept);
    }
}

std::vector<std::string> CapturedErrors::TakeLines() {
    std::vector<std::string> lines;
    std::fflush(stderr);
    if (stream == nullptr || std::fseek(kept, taken, SEEK_SET) != 0) {
        return lines;
    }
    std::string line;
    for (int c = std::fgetc(kept); c != EOF; c = std::fgetc(kept)) {
        ++taken;
        if (c != '\n') {
            line += static_cast<char>(c);
        } else {
            lines.push_back(line);
            line.clear();
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    std::fseek(kept, 0, SEEK_END); // both files share their place
    return lines;
}
