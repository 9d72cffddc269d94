#include "apps/tessarin/options/text_options.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include <utf8.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"

namespace {

/// For a text whose code page is found out: where it stops being UTF-8 and so is read as the
/// lexicon's code page. Every other accent may then be wrong.
void WarnOfBadUtf8(const std::string& source, std::string_view bytes,
                   tessarin::IVisemixTranscriber& transcriber) {
    const bool isUtf16 = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
                         bytes.find('\0') != std::string_view::npos;
    const auto* const bad = utf8::find_invalid(bytes.begin(), bytes.end());
    if (isUtf16 || bad == bytes.end()) {
        return;
    }
    const std::string_view before(bytes.begin(), bad);
    const std::string_view line = before.substr(before.rfind('\n') + 1); // npos + 1 is 0
    tessarin::TranscriberInfo info = {};
    transcriber.getTranscriberInfo(&info);
    std::fprintf(stderr,
                 "tessarin: %s: line %td, column %td: the byte %02X is not UTF-8, so the whole "
                 "text is read in code page %d; save it as UTF-8, or say --encoding local\n",
                 source.c_str(), std::ranges::count(before, '\n') + 1,
                 utf8::distance(line.begin(), line.end()) + 1,
                 static_cast<unsigned>(static_cast<unsigned char>(*bad)),
                 static_cast<int>(info.code_page));
}

} // namespace

void AddTextOptions(CLI::App& command, text_options* options) {
    auto* text = command.add_option("-t,--text", options->text, "What is said");
    text->option_text("TEXT");
    auto* file = command.add_option("-f,--text-file", options->file,
                                    "File with what is said; - is standard input");
    file->option_text("FILE");
    text->excludes(file);
    command
        .add_option(
            "--encoding", options->encoding,
            "Encoding of the text: utf-8, utf-16, local (the lexicon's code page) or auto [auto]")
        ->check(CLI::IsMember({"auto", "utf-8", "utf-16", "local"}))
        ->option_text("NAME");
}

SpokenText ReadSpokenText(const std::string& source, std::string bytes, const std::string& encoding,
                          tessarin::IVisemixTranscriber& transcriber) {
    if (encoding == "auto") {
        WarnOfBadUtf8(source, bytes, transcriber);
    }
    return {source, std::move(bytes), encoding, transcriber};
}

SpokenText ReadText(const text_options& options, tessarin::IVisemixTranscriber& transcriber) {
    const std::string source = options.file.value_or("--text");
    SpokenText text = ReadSpokenText(
        source, options.file ? ReadWholeFile(*options.file) : options.text.value_or(""),
        options.encoding, transcriber);
    if (text.GetNumLost() > 0) {
        std::fprintf(stderr, "tessarin: %s: %zu characters that cannot be read count as blanks\n",
                     source.c_str(), text.GetNumLost());
    }
    if (text.GetLocal().find_first_not_of(" \t\r\n\f\v\xA0") == std::string::npos) {
        throw Failure(options.file ? kExitFailed : kExitUsage,
                      source + (text.GetNumLost() > 0
                                    ? ": has no character that the lexicon's language can read; "
                                      "give the text in that language, or another --lexicon"
                                    : ": is empty; give the words that are said"));
    }
    return text;
}
