#include <memory>
#include <string>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/describe/command_tree.h"

namespace {

std::string Describe(const CLI::App& app, const std::string& form) {
    const described_command tool = DescribeApp(app);
    if (form == "bash") {
        return MakeBashCompletion(tool);
    }
    if (form == "zsh") {
        return MakeZshCompletion(tool);
    }
    if (form == "fish") {
        return MakeFishCompletion(tool);
    }
    return MakeManualPage(tool, TESSARIN_VERSION);
}

} // namespace

// Not shown in the help: packages call it, so that manual and completion are never out of date.
void AddDescribeCommand(CLI::App& app) {
    auto form = std::make_shared<std::string>();
    CLI::App* command =
        app.add_subcommand("describe", "Write the manual page or a shell's completion");
    command->group("");
    command->add_option("FORM", *form, "man, bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"man", "bash", "zsh", "fish"}));
    command->callback([&app, form] { WriteOutput("-", Describe(app, *form)); });
}
