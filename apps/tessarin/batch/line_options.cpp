#include "apps/tessarin/batch/line_options.h"

#include "apps/tessarin/console/failure.h"

void AddLineOptions(CLI::App& command, line_options* options) {
    AddHearingOptions(command, &options->recording);
    AddReadingOptions(command, &options->text);
    AddTextSearchOptions(command, &options->search);
    AddAdaptOption(command, &options->recording);
}

line_options ReadLineOptions(const std::string& own, const line_options& common) {
    line_options options = common;
    if (own.find_first_not_of(" \t") == std::string::npos) {
        return options;
    }
    CLI::App reader;
    reader.set_help_flag();
    AddLineOptions(reader, &options);
    try {
        reader.parse(own);
    } catch (const CLI::ParseError& error) {
        throw Failure(kExitUsage, "options " + own + ": " + error.what());
    }
    return options;
}
