#include "apps/tessarin/describe/unknown_word.h"

#include <algorithm>
#include <numeric>

namespace {

/// Levenshtein's distance, row by row of its table.
size_t DistanceOf(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

std::vector<std::string> NamesOfCommands(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command :
         app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); })) {
        names.push_back(command->get_name());
    }
    return names;
}

std::vector<std::string> NamesOfOptions(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// `path` is what comes before the word: empty, or commands, each with a blank after it.
std::string Describe(const std::string& path, const std::string& word,
                     const std::vector<std::string>& names) {
    const std::string nearest = FindNearest(word, names);
    return (path.empty() ? "" : path.substr(0, path.size() - 1) + ": ") + "there is no " +
           (word.starts_with("-") ? "option " : "command ") + word +
           (nearest.empty() ? "; see tessarin " + path + "--help"
                            : "; did you mean " + nearest + "?");
}

} // namespace

std::string FindNearest(const std::string& word, const std::vector<std::string>& names) {
    std::string nearest;
    size_t least = std::max<size_t>(word.size() / 3, 2) + 1;
    for (const std::string& name : names) {
        if (const size_t distance = DistanceOf(word, name); distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}

std::string DescribeUnknownWord(const CLI::App& app, int argc, const char* const* argv) {
    const CLI::App* command = &app;
    std::string path;
    for (int i = 1; i < argc && argv[i] != std::string("--"); ++i) {
        const std::string word = argv[i];
        if (word.starts_with("--")) {
            const std::string name = word.substr(0, word.find('='));
            if (command->get_option_no_throw(name) == nullptr) {
                return Describe(path, name, NamesOfOptions(*command));
            }
        } else if (!word.starts_with("-") && !NamesOfCommands(*command).empty()) {
            const auto found = command->get_subcommands(
                [&](const CLI::App* each) { return each->get_name() == word; });
            if (found.empty()) {
                return Describe(path, word, NamesOfCommands(*command));
            }
            command = found.front();
            path += word + " ";
        }
    }
    return {};
}
