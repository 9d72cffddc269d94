#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/system.h"
#include "apps/tessarin/describe/unknown_word.h"

namespace {

/// Leaves out what the library adds to an option: type, REQUIRED, Excludes ... The usage line says
/// what is required, and the description the rest.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override {
        if (!option->get_option_text().empty()) {
            return " " + option->get_option_text();
        }
        return option->get_positional() || option->get_items_expected_max() == 0 ? "" : " VALUE";
    }
};

int Run(int argc, char** argv) {
    CLI::App app("Speech engine that animates talking characters.", "tessarin");
    app.set_version_flag("--version", "tessarin " TESSARIN_VERSION);
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormatter>()); // before the commands, which inherit it
    app.get_formatter()->column_width(34);
    AddAlignCommand(app);
    AddRecognizeCommand(app);
    AddBatchCommand(app);
    AddAnimateCommand(app);
    AddViewCommand(app);
    AddSpectrogramCommand(app);
    AddCutCommand(app);
    AddCuesCommand(app);
    AddCommandsCommand(app);
    AddGateCommand(app);
    AddLiveCommand(app);
    AddTranscribeCommand(app);
    AddInspectCommand(app);
    AddLexiconCommand(app);
    AddDescribeCommand(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const std::string unknown = DescribeUnknownWord(app, argc, argv);
        if (error.get_exit_code() != 0 && !unknown.empty()) {
            throw Failure(kExitUsage, unknown);
        }
        return app.exit(error) == 0 ? kExitDone : kExitUsage;
    }
    return kExitDone;
}

} // namespace

int main(int argc, char** argv) {
    try {
        std::vector<std::string> arguments = PrepareConsole(argc, argv);
        std::vector<char*> texts;
        for (std::string& argument : arguments) {
            texts.push_back(argument.data());
        }
        texts.push_back(nullptr);
        return Run(static_cast<int>(arguments.size()), texts.data());
    } catch (const Failure& failure) {
        if (*failure.what() != '\0') { // else the command has said it in its own way
            std::fprintf(stderr, "tessarin: %s\n", failure.what());
        }
        return failure.exitCode;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "tessarin: %s\n", DescribeCode("memory", 1).c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessarin: %s\n", error.what());
    }
    return kExitFailed;
}
