#pragma once

#include <cstddef>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "apps/tessarin/batch/batch_journal.h"

/// What is built into the tool from apps/tessarin/page for the report.
struct report_sources {
    const char* page; ///< with {{NAME}} where a part belongs
    const char* style;
    const char* script;
};
extern const report_sources kReportSources;

/// A file of which nothing is seen before it is whole.
class UnfinishedFile {
public:
    /// Throws Failure.
    explicit UnfinishedFile(const std::string& path);

    void Write(const std::string& text) { file << text; }
    /// Puts it in its place. Throws Failure.
    void Finish();

private:
    std::string path;
    std::ofstream file;
};

/// Writes the report of a batch: report.jsonl, with a record in each line; report.html, which shows
/// them; and unknown-words.txt, the words that no lexicon has, in the form of a file for --words.
class ReportWriter {
public:
    /// `suffix` stands after the names of the files. Throws Failure.
    ReportWriter(const std::string& folder, const std::string& suffix);

    /// Adds a record, of which what only a later run needs is left out.
    void Add(batch_record record);
    /// Throws Failure.
    void Finish();

private:
    struct unknown_word {
        std::string phonemes;
        size_t count = 0;
        std::string first; ///< the line that has it first
    };

    UnfinishedFile lines;
    UnfinishedFile page;
    UnfinishedFile words;
    std::map<std::string, unknown_word> unknown; ///< by the word in upper case
    std::string pageEnd;
    bool isFirst = true;
};

/// Joins the reports of `folders` into one in `out`. What two have a name for in common is taken
/// from the later one. Returns how many lines have failed, and adds to `*missing` the shards whose
/// reports are missing. Throws Failure.
size_t MergeReports(const std::vector<std::string>& folders, const std::string& out,
                    std::vector<std::string>* missing);
