#include "apps/tessarin/readers/recording_failure.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "apps/tessarin/readers/lexicon_summary.h"
#include "tessarin/error_codes.h"

namespace {

constexpr std::string_view kModelMagic = "mmhz"; // a model file begins so
/// Enough to distinguish a text from the bytes of some other format.
constexpr size_t kHeadBytes = 4096;

std::string ReadHead(const std::string& path) {
    std::string head(kHeadBytes, '\0');
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(file.gcount()));
    return head;
}

bool LooksLikeText(std::string_view head) {
    if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF")) {
        return true; // the marks of UTF-16
    }
    return std::ranges::none_of(head, [](char each) {
        const auto byte = static_cast<unsigned char>(each);
        return byte == 0x7F || (byte < ' ' && std::string_view("\t\n\f\r\x1A").find(each) ==
                                                  std::string_view::npos);
    });
}

/// MP4, M4A and MOV name their kind after a length of four bytes; Matroska and WebM begin with the
/// mark of EBML.
bool LooksLikeVideo(std::string_view head) {
    return head.substr(0, 8).ends_with("ftyp") || head.starts_with("\x1A\x45\xDF\xA3");
}

/// What a file is that is not a recording, and what to do; empty when its bytes do not show it.
std::string DescribeOther(const std::string& path) {
    std::error_code failure;
    if (std::filesystem::is_directory(path, failure)) {
        return "it is a folder, not a recording; name a file in it";
    }
    if (!std::filesystem::is_regular_file(path, failure)) {
        return {};
    }
    const std::string head = ReadHead(path);
    if (head.empty()) {
        return "it is an empty file, not a recording; record or copy it again";
    }
    if (head.starts_with(kModelMagic)) {
        return "it is an acoustic model, not a recording; give it with --model";
    }
    if (LooksLikeLexicon(head)) {
        return "it is a lexicon file, not a recording; give it with --lexicon";
    }
    if (LooksLikeVideo(head)) {
        return "it is an MP4 or Matroska file; convert its sound to WAV or FLAC first, for "
               "example with ffmpeg";
    }
    if (LooksLikeText(head)) {
        return "it is a text file, not a recording; give a text with --text-file";
    }
    return {};
}

} // namespace

Failure NotARecording(const std::string& path, const std::string& reason) {
    const std::string other = DescribeOther(path);
    return {kExitFailed, path + ": " + reason + (other.empty() ? "" : "\n  " + other)};
}

Failure NotARecording(const std::string& path, int code) {
    const Failure failure = EngineFailure(path, code);
    const std::string other = DescribeOther(path);
    return {failure.exitCode, failure.what() + (other.empty() ? "" : "\n  " + other)};
}

void RequireSamples(const std::string& path, int64_t numSamples) {
    if (numSamples <= 0) {
        throw Failure(kExitFailed, path + ": has no samples, so that there is nothing to hear; "
                                          "record or copy it again");
    }
}
