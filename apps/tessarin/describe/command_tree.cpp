#include "apps/tessarin/describe/command_tree.h"

#include <sstream>

namespace {

/// The checks on an option describe themselves as {a,b,c} when only listed values pass.
std::vector<std::string> ListChoices(const CLI::Option& option) {
    std::vector<std::string> choices;
    const std::string type = option.get_type_name();
    const size_t open = type.find('{');
    const size_t close = type.find('}', open == std::string::npos ? 0 : open);
    if (open == std::string::npos || close == std::string::npos) {
        return choices;
    }
    std::istringstream list(type.substr(open + 1, close - open - 1));
    for (std::string choice; std::getline(list, choice, ',');) {
        choices.push_back(choice);
    }
    return choices;
}

std::string DescribeValue(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0) {
        return "";
    }
    const std::string& text = option.get_option_text();
    return text.empty() || text == " " ? "VALUE" : text;
}

described_option DescribeOption(const CLI::Option& option) {
    described_option described;
    described.description = option.get_description();
    described.choices = ListChoices(option);
    if (option.get_positional()) {
        described.names.push_back(option.get_name(true));
        return described;
    }
    described.value = DescribeValue(option);
    for (const std::string& name : option.get_snames()) {
        described.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        described.names.push_back("--" + name);
    }
    return described;
}

std::string DescribeArgument(const CLI::Option& option) {
    std::string name = option.get_name(true);
    if (option.get_expected_max() > 1) {
        name += "...";
    }
    return option.get_required() ? name : "[" + name + "]";
}

described_command Describe(const CLI::App& app, const std::string& parent) {
    described_command command;
    command.path = parent.empty() ? app.get_name() : parent + " " + app.get_name();
    command.description = app.get_description();
    command.usage = command.path;
    const auto shown = [](const CLI::Option* option) { return !option->get_group().empty(); };
    for (const CLI::Option* option : app.get_options(shown)) {
        if (option->get_positional()) {
            command.usage += " " + DescribeArgument(*option);
            command.arguments.push_back(DescribeOption(*option));
        } else {
            command.options.push_back(DescribeOption(*option));
        }
    }
    const auto visible = [](const CLI::App* child) { return !child->get_group().empty(); };
    for (const CLI::App* child : app.get_subcommands(visible)) {
        command.subcommands.push_back(Describe(*child, command.path));
    }
    command.usage += command.subcommands.empty() ? " [OPTIONS]" : " COMMAND ...";
    return command;
}

} // namespace

described_command DescribeApp(const CLI::App& app) {
    return Describe(app, "");
}
