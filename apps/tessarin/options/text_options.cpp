#include "apps/tessarin/options/text_options.h"

#include <cstdio>

#include "apps/tessarin/console/file_io.h"

void AddTextOptions(CLI::App& command, text_options* options) {
    auto* text = command.add_option("-t,--text", options->text, "What is said");
    text->option_text("TEXT");
    auto* file = command.add_option("-f,--text-file", options->file,
                                    "File with what is said; - reads standard input");
    file->option_text("FILE");
    text->excludes(file);
    command
        .add_option("--encoding", options->encoding,
                    "Of the text: utf-8, utf-16, local (the lexicon's code page) or auto [auto]")
        ->check(CLI::IsMember({"auto", "utf-8", "utf-16", "local"}))
        ->option_text("NAME");
}

SpokenText ReadText(const text_options& options, tessarin::IVisemixTranscriber& transcriber) {
    const std::string source = options.file.value_or("--text");
    SpokenText text(source, options.file ? ReadWholeFile(*options.file) : options.text.value_or(""),
                    options.encoding, transcriber);
    if (text.GetNumLost() > 0) {
        std::fprintf(stderr, "tessarin: %s: %zu characters that cannot be read count as blanks\n",
                     source.c_str(), text.GetNumLost());
    }
    return text;
}
