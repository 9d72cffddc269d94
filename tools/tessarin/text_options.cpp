#include "tools/tessarin/text_options.h"

#include "tools/tessarin/failure.h"
#include "tools/tessarin/file_io.h"

void AddTextOptions(CLI::App& command, text_options* options) {
    auto* text = command.add_option("-t,--text", options->text, "What is said");
    text->option_text("TEXT");
    auto* file = command.add_option("-f,--text-file", options->file,
                                    "File with what is said; - reads standard input");
    file->option_text("FILE");
    text->excludes(file);
}

std::optional<std::string> ReadText(const text_options& options) {
    if (options.text) {
        return options.text;
    }
    if (!options.file) {
        return std::nullopt;
    }
    std::string text = ReadWholeFile(*options.file);
    if (text.find('\0') != std::string::npos) {
        throw Failure(kExitFailed, *options.file + ": is not a plain text");
    }
    return text;
}
