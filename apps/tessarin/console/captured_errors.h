#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// While it lives, what is written to standard error is kept, and only what is written to GetStream
/// is seen: programs read every line there.
class CapturedErrors {
public:
    CapturedErrors();
    ~CapturedErrors();
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    std::FILE* GetStream() const { return stream != nullptr ? stream : stderr; }
    /// The lines that were kept since the last call.
    std::vector<std::string> TakeLines();

private:
    std::FILE* stream = nullptr; ///< what standard error was
    std::FILE* kept = nullptr;
    long taken = 0; ///< bytes
};
