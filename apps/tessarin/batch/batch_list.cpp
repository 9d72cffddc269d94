#include "apps/tessarin/batch/batch_list.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <string_view>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/separated_values.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::string InLowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return text;
}

/// The column that a name stands for, among ours; empty for one that is passed over.
std::string ColumnOf(const std::string& name) {
    static const std::map<std::string, std::string> kColumns = {
        {"audio", "audio"},     {"audio_file", "audio"}, {"file", "audio"},
        {"filename", "audio"},  {"path", "audio"},       {"wav", "audio"},
        {"name", "name"},       {"id", "name"},          {"text", "text"},
        {"transcript", "text"}, {"sentence", "text"},    {"text_file", "text_file"},
        {"words", "words"},     {"speaker", "speaker"},  {"character", "speaker"},
        {"options", "options"}};
    const auto found = kColumns.find(InLowerCase(name));
    return found != kColumns.end() ? found->second : "";
}

using named_cells = std::map<std::string, std::string>;

std::string PathIn(const fs::path& folder, const std::string& path) {
    return path.empty() ? "" : (folder / path).lexically_normal().string();
}

batch_line LineOf(const named_cells& cells, const fs::path& folder) {
    const auto cell = [&cells](const char* name) {
        const auto found = cells.find(name);
        return found != cells.end() ? found->second : "";
    };
    batch_line line;
    line.audio = PathIn(folder, cell("audio"));
    line.name = cell("name");
    line.textFile = PathIn(folder, cell("text_file"));
    line.words = PathIn(folder, cell("words"));
    line.speaker = cell("speaker");
    line.options = cell("options");
    if (const std::string text = cell("text"); !text.empty()) {
        line.text = text;
    }
    if (line.audio.empty()) {
        line.fault = "names no recording";
    } else if (line.text && !line.textFile.empty()) {
        line.fault = "has a text and a text_file; give one of them";
    }
    return line;
}

batch_line FaultyLine(const std::string& path, size_t number, const std::string& fault) {
    batch_line line;
    line.fault = path + ": line " + std::to_string(number) + ": " + fault;
    return line;
}

/// The separator of a table, which its first row shows where commas are not the custom.
char SeparatorOf(const std::string& path, std::string_view text) {
    if (InLowerCase(fs::path(path).extension().string()) == ".tsv") {
        return '\t';
    }
    const std::string_view first = text.substr(0, text.find('\n'));
    for (const char each : {'\t', ',', ';', '|'}) {
        if (first.find(each) != std::string_view::npos) {
            return each;
        }
    }
    return ',';
}

std::vector<batch_line> ReadTable(const std::string& path, std::string_view text) {
    const fs::path folder = fs::path(path).parent_path();
    const std::vector<separated_row> rows = ReadSeparatedValues(text, SeparatorOf(path, text));
    std::vector<std::string> columns;
    for (const std::string& name : rows.empty() ? std::vector<std::string>() : rows[0].cells) {
        columns.push_back(ColumnOf(name));
    }
    if (std::ranges::find(columns, "audio") == columns.end()) {
        throw Failure(kExitFailed,
                      path + ": its first row names no column audio; a list has a row of names, "
                             "such as audio,text, and a row for each recording");
    }
    std::vector<batch_line> lines;
    for (size_t i = 1; i < rows.size(); ++i) {
        const separated_row& row = rows[i];
        if (row.isOpen || row.cells.size() > columns.size()) {
            lines.push_back(FaultyLine(path, row.line,
                                       row.isOpen ? "quotes that are never closed"
                                                  : "has more cells than the first row"));
            continue;
        }
        named_cells cells;
        for (size_t k = 0; k < row.cells.size(); ++k) {
            cells.emplace(columns[k], row.cells[k]);
        }
        lines.push_back(LineOf(cells, folder));
        if (!lines.back().fault.empty()) {
            lines.back().fault = FaultyLine(path, row.line, lines.back().fault).fault;
        }
    }
    return lines;
}

batch_line ReadJsonLine(const std::string& path, size_t number, std::string_view text) {
    const json entry = json::parse(text, nullptr, false);
    if (!entry.is_object()) {
        return FaultyLine(path, number, "is not a JSON object");
    }
    named_cells cells;
    for (const auto& [name, value] : entry.items()) {
        const std::string column = ColumnOf(name);
        if (column.empty() || value.is_null()) {
            continue;
        }
        if (!value.is_string() && !value.is_number()) {
            return FaultyLine(path, number, name + " is not a text");
        }
        cells.emplace(column, value.is_string() ? value.get<std::string>() : value.dump());
    }
    batch_line line = LineOf(cells, fs::path(path).parent_path());
    if (!line.fault.empty()) {
        line.fault = FaultyLine(path, number, line.fault).fault;
    }
    return line;
}

std::vector<batch_line> ReadJsonLines(const std::string& path, std::string_view text) {
    std::vector<batch_line> lines;
    for (size_t number = 1; !text.empty(); ++number) {
        const std::string_view row = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(row.size() + 1, text.size()));
        if (row.find_first_not_of(" \t\r") != std::string_view::npos) {
            lines.push_back(ReadJsonLine(path, number, row));
        }
    }
    return lines;
}

bool HasEnding(const fs::path& path, std::initializer_list<std::string_view> endings) {
    const std::string ending = InLowerCase(path.extension().string());
    return std::ranges::find(endings, ending) != endings.end();
}

bool IsList(const fs::path& path) {
    return HasEnding(path, {".csv", ".tsv", ".jsonl", ".ndjson"});
}

bool IsRecording(const fs::path& path) {
    return HasEnding(path, {".wav", ".flac", ".ogg", ".oga", ".opus", ".mp3", ".aif", ".aiff",
                            ".aifc", ".au", ".snd", ".caf", ".w64", ".rf64", ".sph", ".nist"});
}

/// The endings of texts, in the order of preference.
constexpr std::array kTextEndings = {".txt", ".lab", ".textgrid", ".srt", ".vtt", ".fountain"};

/// The files of a folder and of those below it, in order of their names.
std::vector<fs::path> FilesIn(const std::string& folder, const std::string& except) {
    std::error_code failure;
    const fs::path excluded = except.empty() ? "" : fs::weakly_canonical(except, failure);
    std::vector<fs::path> files;
    fs::recursive_directory_iterator each(folder, fs::directory_options::skip_permission_denied,
                                          failure);
    for (; !failure && each != fs::recursive_directory_iterator(); each.increment(failure)) {
        const bool isHidden = each->path().filename().string().starts_with('.');
        std::error_code ignored;
        if (each->is_directory(ignored)) {
            if (isHidden || fs::weakly_canonical(each->path(), ignored) == excluded) {
                each.disable_recursion_pending();
            }
        } else if (!isHidden && each->is_regular_file(ignored)) {
            files.push_back(each->path());
        }
    }
    if (failure) {
        throw Failure(kExitFailed, folder + ": cannot be read: " + failure.message());
    }
    std::ranges::sort(files);
    return files;
}

/// What the one list in a folder says. Empty without one.
std::vector<batch_line> ReadSheet(const std::string& folder, const std::vector<fs::path>& files) {
    std::vector<fs::path> lists;
    std::ranges::copy_if(files, std::back_inserter(lists), [&](const fs::path& file) {
        return file.parent_path() == fs::path(folder) && IsList(file);
    });
    if (lists.size() > 1) {
        throw Failure(kExitUsage, folder + ": has several lists, such as " + lists[0].string() +
                                      " and " + lists[1].string() + "; name the one to work on");
    }
    return lists.empty() ? std::vector<batch_line>() : ReadBatchList(lists[0].string());
}

/// The path of a line below `root`; one that is elsewhere is known by its whole path.
fs::path PathBelow(const fs::path& root, const std::string& audio) {
    const fs::path whole = fs::absolute(audio).lexically_normal();
    const fs::path below = whole.lexically_relative(fs::absolute(root).lexically_normal());
    return below.empty() || *below.begin() == ".." ? whole.relative_path() : below;
}

bool StaysBelow(const fs::path& name) {
    const fs::path normal = name.lexically_normal();
    return normal.is_relative() && !normal.empty() && *normal.begin() != ".." && normal != "." &&
           normal.has_filename();
}

} // namespace

std::vector<batch_line> ReadBatchList(const std::string& path) {
    const std::string text = ReadUtf8File(path);
    const bool isJson = HasEnding(path, {".jsonl", ".ndjson", ".json"});
    return isJson ? ReadJsonLines(path, text) : ReadTable(path, text);
}

std::vector<batch_line> ReadBatchFolder(const std::string& path, const std::string& except) {
    const std::string folder = fs::path(path + "/").lexically_normal().parent_path().string();
    const std::vector<fs::path> files = FilesIn(folder, except);
    std::map<fs::path, std::map<std::string, fs::path>> texts;
    for (const fs::path& file : files) {
        const std::string ending = InLowerCase(file.extension().string());
        if (std::ranges::find(kTextEndings, ending) != kTextEndings.end()) {
            texts[fs::path(file).replace_extension()].emplace(ending, file);
        }
    }
    std::vector<batch_line> sheet = ReadSheet(folder, files);
    std::map<fs::path, size_t> rows; // by the paths of recordings, which may lack their endings
    for (size_t i = 0; i < sheet.size(); ++i) {
        rows.emplace(IsRecording(sheet[i].audio) ? fs::path(sheet[i].audio).replace_extension()
                                                 : fs::path(sheet[i].audio),
                     i);
    }
    std::vector<bool> isUsed(sheet.size());
    std::vector<batch_line> lines;
    for (const fs::path& file : files) {
        if (!IsRecording(file)) {
            continue;
        }
        const fs::path stem = fs::path(file).replace_extension();
        batch_line line;
        if (const auto row = rows.find(stem); row != rows.end()) {
            line = sheet[row->second];
            isUsed[row->second] = true;
        }
        line.audio = file.string();
        const auto beside = texts.find(stem);
        if (!line.HasText() && beside != texts.end()) {
            const auto* const best = std::ranges::find_if(
                kTextEndings, [&](const char* ending) { return beside->second.contains(ending); });
            line.textFile = beside->second.at(*best).string();
        }
        lines.push_back(std::move(line));
    }
    if (lines.empty()) {
        throw Failure(kExitFailed, path + ": has no recordings, in it or below");
    }
    for (size_t i = 0; i < sheet.size(); ++i) {
        if (!isUsed[i]) {
            lines.push_back(std::move(sheet[i])); // its recording is missing, which is to be said
        }
    }
    return lines;
}

void NameBatchLines(const std::string& root, std::vector<batch_line>* lines) {
    // Names that differ in case alone are one file on some systems.
    std::map<std::string, size_t> stems;
    const auto stemOf = [&root](const batch_line& line) {
        return PathBelow(root, line.audio).replace_extension().string();
    };
    for (const batch_line& line : *lines) {
        if (line.name.empty() && !line.audio.empty()) {
            ++stems[InLowerCase(stemOf(line))];
        }
    }
    std::map<std::string, size_t> taken;
    for (size_t i = 0; i < lines->size(); ++i) {
        batch_line& line = (*lines)[i];
        line.number = i + 1;
        if (line.name.empty() && line.audio.empty()) {
            line.name = "line-" + std::to_string(line.number);
        } else if (line.name.empty()) {
            const std::string stem = stemOf(line);
            // Recordings that differ in their endings alone keep them.
            line.name = stems[InLowerCase(stem)] > 1 ? PathBelow(root, line.audio).string() : stem;
        }
        if (!StaysBelow(line.name)) {
            line.fault = line.name + ": is not a name for outputs below their folder";
            line.name = "line-" + std::to_string(line.number);
        }
        line.name = fs::path(line.name).lexically_normal().generic_string();
        const auto [other, isNew] = taken.emplace(InLowerCase(line.name), line.number);
        if (!isNew) {
            line.fault = "its outputs would be those of line " + std::to_string(other->second) +
                         ", " + line.name + "; give it another name";
            line.name += "-line-" + std::to_string(line.number);
        }
    }
}
