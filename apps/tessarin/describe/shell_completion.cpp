#include "apps/tessarin/describe/command_tree.h"

namespace {

std::string Join(const std::vector<std::string>& words, const std::string& between) {
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : between) + word;
    }
    return joined;
}

/// Text inside single quotes of any of the shells.
std::string Quote(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string LastWord(const std::string& path) {
    return path.substr(path.rfind(' ') + 1);
}

/// The first part of a description, up to what only a reader of the manual needs.
std::string Summary(const std::string& description) {
    const std::string summary = description.substr(0, description.find_first_of(";[\n"));
    return summary.substr(0, summary.find_last_not_of(' ') + 1);
}

void AppendBashCases(const described_command& command, std::string& words, std::string& values) {
    std::vector<std::string> offered;
    for (const described_command& child : command.subcommands) {
        offered.push_back(LastWord(child.path));
    }
    for (const described_option& option : command.options) {
        offered.insert(offered.end(), option.names.begin(), option.names.end());
        for (const std::string& name : option.names) {
            if (!option.value.empty()) {
                values += "        '" + command.path + " " + name + "') values='" +
                          Join(option.choices, " ") + "' ;;\n";
            }
        }
    }
    words += "        '" + command.path + "') words='" + Join(offered, " ") + "' ;;\n";
    for (const described_command& child : command.subcommands) {
        AppendBashCases(child, words, values);
    }
}

void AppendPaths(const described_command& command, std::vector<std::string>& paths) {
    for (const described_command& child : command.subcommands) {
        paths.push_back(Quote(child.path));
        AppendPaths(child, paths);
    }
}

/// _arguments and _describe end a name at a colon and a description at a bracket.
std::string EscapeForZsh(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += std::string(c == ':' || c == '[' || c == ']' ? "\\" : "") + c;
    }
    return escaped;
}

void AppendZshFunction(const described_command& command, std::string& script) {
    std::string name = "_" + command.path;
    for (char& c : name) {
        c = c == ' ' ? '_' : c;
    }
    script += name + "() {\n";
    if (!command.subcommands.empty()) {
        script += "    local -a commands=(";
        for (const described_command& child : command.subcommands) {
            script += "\n        " +
                      Quote(LastWord(child.path) + ":" + EscapeForZsh(Summary(child.description)));
        }
        script += ")\n    if (( CURRENT == 2 )); then\n        _describe command commands\n"
                  "    else\n        shift words; (( CURRENT-- ))\n"
                  "        local function=\"" +
                  name + "_${words[1]}\"\n" +
                  "        (( $+functions[$function] )) && $function\n    fi\n}\n\n";
        for (const described_command& child : command.subcommands) {
            AppendZshFunction(child, script);
        }
        return;
    }
    script += "    _arguments -S";
    for (const described_option& option : command.options) {
        const std::string tail =
            option.value.empty()
                ? ""
                : ":" + EscapeForZsh(option.value) + ":" +
                      (option.choices.empty() ? std::string("_files")
                                              : "(" + Join(option.choices, " ") + ")");
        for (const std::string& flag : option.names) {
            script +=
                " \\\n        " +
                Quote("*" + flag + "[" + EscapeForZsh(Summary(option.description)) + "]" + tail);
        }
    }
    script += " \\\n        '*:file:_files'\n}\n\n";
}

void AppendFishLines(const described_command& command, std::string& script) {
    std::string seen; // the condition that the command stands on the line
    for (size_t at = command.path.find(' '); at != std::string::npos;) {
        const size_t next = command.path.find(' ', at + 1);
        seen += std::string(seen.empty() ? "" : "; and ") + "__fish_seen_subcommand_from " +
                command.path.substr(at + 1, next == std::string::npos ? next : next - at - 1);
        at = next;
    }
    std::vector<std::string> children;
    for (const described_command& child : command.subcommands) {
        children.push_back(LastWord(child.path));
    }
    const std::string list = Join(children, " ");
    for (const described_command& child : command.subcommands) {
        const std::string condition =
            (seen.empty() ? "" : seen + "; and ") + "not __fish_seen_subcommand_from " + list;
        script += "complete -c tessarin -f -n " + Quote(condition) + " -a " + LastWord(child.path) +
                  " -d " + Quote(Summary(child.description)) + "\n";
    }
    for (const described_option& option : command.options) {
        script += "complete -c tessarin";
        script += seen.empty() ? "" : " -n " + Quote(seen);
        for (const std::string& name : option.names) {
            const bool isLong = name.compare(0, 2, "--") == 0;
            script += (isLong ? " -l " : " -s ") + name.substr(isLong ? 2 : 1);
        }
        if (!option.choices.empty()) {
            script += " -x -a " + Quote(Join(option.choices, " "));
        } else if (!option.value.empty()) {
            script += " -r";
        }
        script += " -d " + Quote(Summary(option.description)) + "\n";
    }
    for (const described_command& child : command.subcommands) {
        AppendFishLines(child, script);
    }
}

} // namespace

std::string MakeBashCompletion(const described_command& tool) {
    std::string words, values;
    AppendBashCases(tool, words, values);
    std::vector<std::string> paths;
    AppendPaths(tool, paths);
    return R"(# bash completion of tessarin
_tessarin() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local path=tessarin word words= values=-
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case "$path $word" in
        )" +
           Join(paths, " | ") + R"() path="$path $word" ;;
        esac
    done
    case "$path $previous" in
)" + values +
           R"(    esac
    COMPREPLY=()
    if [ "$values" != - ]; then
        # An option's value: one of a list, or else a file.
        [ -z "$values" ] || mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
        return
    fi
    case "$path" in
)" + words +
           R"(    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -o bashdefault -F _tessarin tessarin
)";
}

std::string MakeZshCompletion(const described_command& tool) {
    std::string script = "#compdef tessarin\n\n";
    AppendZshFunction(tool, script);
    return script + "_tessarin \"$@\"\n";
}

std::string MakeFishCompletion(const described_command& tool) {
    std::string script = "# fish completion of tessarin\n";
    AppendFishLines(tool, script);
    return script;
}
