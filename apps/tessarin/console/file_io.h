#pragma once

#include <string>

/// The bytes of the file `path`, or of standard input for "-". Throws Failure.
std::string ReadWholeFile(const std::string& path);

/// The text of a file as UTF-8, without a byte order mark; UTF-16 is known by its mark. Throws
/// Failure.
std::string ReadUtf8File(const std::string& path);

/// Writes `content` to `path`, or to standard output for "-". A file is written beside its place
/// and renamed, so that a failure leaves what was there; one whose folder takes no new file is
/// written in place, which standard error says. Throws Failure.
void WriteOutput(const std::string& path, const std::string& content);

/// Whether a new file could take the place of the one at `path`, or nothing there needs to be
/// replaced.
bool IsReplaceable(const std::string& path);

/// One line on standard error, for a file that is not.
void SayWrittenInPlace(const std::string& path);
