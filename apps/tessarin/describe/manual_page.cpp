#include <string_view>

#include "apps/tessarin/describe/command_tree.h"

namespace {

/// Text as troff reads it: backslashes and hyphens shown, no line taken for a request.
std::string Escape(std::string_view text) {
    std::string escaped;
    bool atLineStart = true;
    for (const char c : text) {
        if (atLineStart && (c == '.' || c == '\'')) {
            escaped += "\\&";
        }
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
        atLineStart = c == '\n';
    }
    return escaped;
}

void AppendItem(const described_option& option, std::string& page) {
    page += ".TP\n";
    for (const std::string& name : option.names) {
        page += (&name == &option.names.front() ? "\\fB" : ", \\fB") + Escape(name) + "\\fR";
    }
    if (!option.value.empty()) {
        page += " \\fI" + Escape(option.value) + "\\fR";
    }
    page += "\n" + Escape(option.description) + "\n";
}

void AppendCommand(const described_command& command, std::string& page) {
    if (command.subcommands.empty()) {
        page += ".SS \"" + Escape(command.usage) + "\"\n" + Escape(command.description) + ".\n";
        for (const described_option& argument : command.arguments) {
            AppendItem(argument, page);
        }
        for (const described_option& option : command.options) {
            if (option.names.back() != "--help") {
                AppendItem(option, page);
            }
        }
    }
    for (const described_command& child : command.subcommands) {
        AppendCommand(child, page);
    }
}

constexpr std::string_view kExitStatus = R"(.SH EXIT STATUS
.TP
0
All is done.
.TP
1
The command line is wrong.
.TP
2
It failed; the message names the file and the reason.
.TP
4
Text and recording do not fit, or it cannot be judged whether they do, with \-\-strict.
.TP
5
Cancelled with Ctrl\-C.
)";

constexpr std::string_view kFiles = R"(.SH FILES
.I share/tessarin
beside the folder of the tool holds the model, the lexicon and the statistics that are used when
none are named.
.SH EXAMPLES
.nf
tessarin align speech.wav \-\-text "What is said in it." \-o speech.json
tessarin recognize speech.wav \-o speech.json
tessarin transcribe \-\-text "Mr. Smith paid $2.50"
.fi
)";

} // namespace

std::string MakeManualPage(const described_command& tool, const std::string& version) {
    std::string page = ".TH TESSARIN 1 \"\" \"Tessarin " + Escape(version) + "\"\n";
    page += ".SH NAME\ntessarin \\- align speech with its text and animate a mouth\n";
    page += ".SH SYNOPSIS\n.B tessarin\n.I COMMAND\n[\\fIOPTIONS\\fR]\n";
    page += ".SH DESCRIPTION\n" + Escape(tool.description) +
            "\nIt finds when every phoneme and word of a recording was spoken, with or without the "
            "text, and turns the timings into a track of mouth\\-shape weights. Each command "
            "explains itself with\n.BR \\-\\-help .\n.SH COMMANDS\n";
    AppendCommand(tool, page);
    page += kExitStatus;
    page += kFiles;
    return page;
}
