#include "apps/tessarin/batch/batch_report.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/word_list.h"

namespace {

namespace fs = std::filesystem;

std::string JsonText(const batch_record& record) {
    return record.dump(-1, ' ', false, batch_record::error_handler_t::replace);
}

/// JSON without any `<`, which would begin the end of the script that carries it.
std::string WithoutTags(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '<' ? std::string("\\u003c") : std::string(1, c);
    }
    return escaped;
}

/// The page with its style and its script: what comes before its data, and what after.
std::pair<std::string, std::string> PageAroundData() {
    std::string page = kReportSources.page;
    const auto fillIn = [&page](std::string_view place, std::string_view by) {
        const size_t at = page.find(place);
        page.replace(at, place.size(), by);
    };
    fillIn("{{style}}", kReportSources.style);
    fillIn("{{script}}", kReportSources.script);
    constexpr std::string_view kData = "{{data}}";
    const size_t at = page.find(kData);
    return {page.substr(0, at), page.substr(at + kData.size())};
}

/// An entry of a report that is to be joined with others.
struct report_entry {
    uint64_t line;
    std::string name;
    batch_record record;
};

/// The reports of a folder: those of its shards, or else that of the whole.
std::vector<fs::path> ReportsIn(const std::string& folder, std::set<std::string>* missing) {
    std::vector<fs::path> reports;
    std::set<std::string> shards;
    std::set<uint32_t> counts;
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(folder, failure)) {
        uint32_t index = 0;
        uint32_t count = 0;
        char rest = '\0';
        const std::string name = entry.path().filename().string();
        if (std::sscanf(name.c_str(), "report-%9u-of-%9u.json%c", &index, &count, &rest) == 3 &&
            name.ends_with(".jsonl")) {
            reports.push_back(entry.path());
            shards.insert(std::to_string(index) + "/" + std::to_string(count));
            counts.insert(count);
        }
    }
    for (const uint32_t count : counts) {
        for (uint32_t i = 1; i <= count; ++i) {
            const std::string shard = std::to_string(i) + "/" + std::to_string(count);
            if (!shards.contains(shard)) {
                missing->insert(shard);
            }
        }
    }
    if (reports.empty()) {
        reports.push_back(fs::path(folder) / "report.jsonl");
    }
    std::ranges::sort(reports);
    return reports;
}

/// Has the paths of a record count from another folder.
void MovePaths(const fs::path& prefix, batch_record* record) {
    for (const char* list : {"outputs", "page"}) {
        const auto paths = record->find(list);
        if (paths != record->end() && paths->is_string()) {
            *paths = (prefix / paths->get<std::string>()).lexically_normal().generic_string();
        } else if (paths != record->end() && paths->is_array()) {
            for (auto& path : *paths) {
                path = (prefix / path.get<std::string>()).lexically_normal().generic_string();
            }
        }
    }
}

void ReadReport(const fs::path& path, const fs::path& prefix,
                std::map<std::string, report_entry>* entries) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw Failure(kExitFailed, path.string() + ": cannot be opened; --merge joins the reports "
                                                   "of folders that batch has written");
    }
    std::string text;
    for (size_t number = 1; std::getline(file, text); ++number) {
        batch_record record = batch_record::parse(text, nullptr, false);
        try {
            report_entry entry{record.at("line"), record.at("name"), {}};
            MovePaths(prefix, &record);
            entry.record = std::move(record);
            (*entries)[entry.name] = std::move(entry);
        } catch (const batch_record::exception&) {
            throw Failure(kExitFailed, path.string() + ": line " + std::to_string(number) +
                                           " is not an entry of a report");
        }
    }
}

} // namespace

UnfinishedFile::UnfinishedFile(const std::string& filePath)
    : path(filePath), file(fs::path(filePath + ".part"), std::ios::binary | std::ios::trunc) {
    if (!file) {
        throw Failure(kExitFailed,
                      path + ": cannot be written: " + std::generic_category().message(errno));
    }
}

void UnfinishedFile::Finish() {
    file.close();
    std::error_code failure;
    if (file) {
        fs::rename(path + ".part", path, failure);
    }
    if (!file || failure) {
        throw Failure(kExitFailed, path + ": cannot be written");
    }
}

ReportWriter::ReportWriter(const std::string& folder, const std::string& suffix)
    : lines((fs::path(folder) / ("report" + suffix + ".jsonl")).string()),
      page((fs::path(folder) / ("report" + suffix + ".html")).string()),
      words((fs::path(folder) / ("unknown-words" + suffix + ".txt")).string()) {
    auto [begin, end] = PageAroundData();
    page.Write(begin);
    pageEnd = std::move(end);
}

void ReportWriter::Add(batch_record record) {
    record.erase("key");
    if (const auto outputs = record.find("outputs"); outputs != record.end()) {
        for (auto& output : *outputs) {
            output = output.is_object() ? output.at("file") : output;
        }
    }
    for (const batch_record& each : record.value("unknown", batch_record::array())) {
        unknown_word& word = unknown[InUpperCase(each.value("word", ""))];
        if (word.count++ == 0) {
            word.phonemes = each.value("phonemes", "");
            word.first = record.value("name", "");
        }
    }
    const std::string text = JsonText(record);
    lines.Write(text + "\n");
    page.Write((isFirst ? "" : ",\n") + WithoutTags(text));
    isFirst = false;
}

void ReportWriter::Finish() {
    words.Write(
        ";;; Words that the lexicon lacks, and what its rules made of them. Correct what is "
        "wrong,\n;;; remove what is right, and give the file to --words.\n");
    for (const auto& [word, said] : unknown) {
        words.Write(";;; " + std::to_string(said.count) + " x, first in " + said.first + "\n" +
                    word + "=" + said.phonemes + "\n");
    }
    page.Write(pageEnd);
    lines.Finish();
    page.Finish();
    words.Finish();
}

size_t MergeReports(const std::vector<std::string>& folders, const std::string& out,
                    std::vector<std::string>* missing) {
    std::map<std::string, report_entry> entries;
    std::set<std::string> found;
    std::set<std::string> absent;
    std::error_code failure;
    fs::create_directories(out, failure);
    for (const std::string& folder : folders) {
        const fs::path prefix = fs::relative(folder, out, failure);
        for (const fs::path& report : ReportsIn(folder, &absent)) {
            ReadReport(report, prefix, &entries);
            found.insert(report.filename().string());
        }
    }
    // What one folder lacks another may have.
    for (const std::string& shard : absent) {
        const size_t slash = shard.find('/');
        if (!found.contains("report-" + shard.substr(0, slash) + "-of-" + shard.substr(slash + 1) +
                            ".jsonl")) {
            missing->push_back(shard);
        }
    }
    std::vector<report_entry> ordered;
    for (auto& [name, entry] : entries) {
        ordered.push_back(std::move(entry));
    }
    std::ranges::stable_sort(ordered, {}, &report_entry::line);
    ReportWriter writer(out, "");
    size_t failed = 0;
    for (report_entry& entry : ordered) {
        failed += entry.record.value("status", "") == "failed" ? 1 : 0;
        writer.Add(std::move(entry.record));
    }
    writer.Finish();
    return failed;
}
