#pragma once

#include <map>
#include <memory>
#include <string>

#include "apps/tessarin/batch/batch_journal.h"
#include "apps/tessarin/batch/batch_line.h"
#include "apps/tessarin/batch/line_options.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/writers/outputs.h"
#include "tessarin/owned.h"

/// For which lines a page is written.
enum class batch_pages { kNone, kFlagged, kAll };

/// What all threads of a batch share; read-only once made.
struct batch_engine {
    line_options common;
    sound_search_options sounds;
    std::string outputFolder;
    batch_pages pages = batch_pages::kNone;
    OutputForms forms;
    tessarin::model_owner model;      ///< null when no line has a text
    tessarin::model_owner soundModel; ///< null when each has
};

/// Works on one line after the other; each thread has its own.
class BatchWorker {
public:
    explicit BatchWorker(const batch_engine& shared) : engine(shared) {}

    /// Searches the recording and writes its outputs. What goes wrong stands in the record. Throws
    /// Failure only when the user cancelled.
    batch_record Run(const batch_line& line);

private:
    void Work(const batch_line& line, batch_record* record);
    timed_result Search(const batch_line& line, const line_options& options, batch_record* record);
    const EngineLanguage& LanguageWith(const std::string& words);
    void AddUnknownWords(const SpokenText& text, const EngineLanguage& language,
                         batch_record* record);
    void Write(const batch_line& line, const line_options& options, const timed_result& result,
               batch_record* record);

    const batch_engine& engine;
    std::map<std::string, EngineLanguage> languages; ///< by the file of own words
    ProgressBar progress{true};                      ///< shows nothing, and cancels after Ctrl-C
};

/// Whether a person ought to look at the line of a record.
bool IsFlagged(const batch_record& record);
