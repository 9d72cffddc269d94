#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/console/silenced_output.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/lexicon_summary.h"
#include "apps/tessarin/readers/word_list.h"

namespace {

using tessarin::ILexiconEditor;
using tessarin::IPronunciationRecord;

struct lexicon_options {
    std::string file;
    std::string output; ///< empty: the file itself
    std::vector<std::string> words;
    std::string word;
    std::string phonemes;
    std::string list;
    std::string language; ///< lexicon file whose rules and words a new one gets
    data_options data;
    std::string format = "words";
    bool quiet = false;
};

tessarin::editor_owner Open(const std::string& path) {
    ILexiconEditor* editor = nullptr;
    const int32_t code = CreateLexiconEditor(path.c_str(), &editor);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    return tessarin::editor_owner(editor);
}

void Save(ILexiconEditor& editor, const lexicon_options& options) {
    const std::string& path = options.output.empty() ? options.file : options.output;
    CatchInterrupts();
    ProgressBar progress(options.quiet);
    progress.SetStatus("Saving");
    const bool isReplaceable = IsReplaceable(path);
    const int32_t code = editor.Save(path.c_str(), &progress);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    if (!isReplaceable) {
        SayWrittenInPlace(path);
    }
}

IPronunciationRecord* Find(ILexiconEditor& editor, const std::string& word, int32_t index) {
    return editor.FindRecord(word.c_str(), static_cast<int32_t>(word.size()), index);
}

bool Holds(ILexiconEditor& editor, const word_entry& entry) {
    for (int32_t index = 0;; ++index) {
        IPronunciationRecord* record = Find(editor, entry.word, index);
        if (record == nullptr || entry.phonemes == record->GetPronunciationText()) {
            return record != nullptr;
        }
    }
}

std::vector<word_entry> AllEntries(ILexiconEditor& editor) {
    std::vector<word_entry> entries;
    for (int32_t index = 0; index < editor.GetRecordCount(); ++index) {
        IPronunciationRecord* record = editor.GetRecordAt(index);
        entries.push_back({record->GetWord(), record->GetPronunciationText()});
    }
    return entries;
}

/// Adds what is not there yet. A new record goes in front of its word, so the last one is added
/// first. Returns how many were new.
size_t Import(ILexiconEditor& editor, const std::vector<word_entry>& entries, bool quiet) {
    ProgressBar progress(quiet);
    progress.SetStatus("Importing");
    size_t added = 0;
    for (size_t left = entries.size(); left > 0; --left) {
        const word_entry& entry = entries[left - 1];
        if (!Holds(editor, entry)) {
            const int32_t code = editor.AddRecord(entry.word.c_str(), entry.phonemes.c_str());
            if (code != tessarin::kNoError) {
                throw EngineFailure(entry.word, code);
            }
            ++added;
        }
        if (progress.OnProgress(static_cast<uint32_t>(entries.size() - left),
                                static_cast<uint32_t>(entries.size()))) {
            throw EngineFailure("import", tessarin::kUserCancelled);
        }
    }
    return added;
}

void RemoveAll(ILexiconEditor& editor) {
    while (editor.GetRecordCount() > 0) {
        const std::string word = editor.GetRecordAt(editor.GetRecordCount() - 1)->GetWord();
        const int32_t code = editor.RemoveRecord(word.c_str(), nullptr);
        if (code != tessarin::kNoError) {
            throw EngineFailure(word, code);
        }
    }
}

/// Makes a lexicon file of a word list and the language of another lexicon file.
void RunBuild(const lexicon_options& options) {
    const auto entries = ReadWordList(options.list, ReadWholeFile(options.list));
    const tessarin::editor_owner editor =
        Open(DataPathOr(options.language, options.data, kLexiconName));
    CatchInterrupts();
    RemoveAll(*editor);
    const size_t added = Import(*editor, entries, options.quiet);
    Save(*editor, options);
    std::printf("%zu entries\n", added);
}

void RunShow(const lexicon_options& options) {
    std::fputs(DescribeLexicon(options.file).c_str(), stdout);
}

void RunFind(const lexicon_options& options) {
    const tessarin::editor_owner editor = Open(options.file);
    std::string missing;
    for (const std::string& word : options.words) {
        IPronunciationRecord* record = nullptr;
        int32_t index = 0;
        for (; (record = Find(*editor, word, index)) != nullptr; ++index) {
            std::printf("%s=%s\n", record->GetWord(), record->GetPronunciationText());
        }
        missing += index == 0 ? " " + word : "";
    }
    if (!missing.empty()) {
        throw Failure(kExitFailed, "not in the lexicon:" + missing);
    }
}

/// A file is saved by way of lines `WORD=phonemes`, which would make another word of these.
void RequireWord(const std::string& word) {
    if (word.find_first_not_of(" \t") != 0 || word.find_first_of("=\r\n") != std::string::npos) {
        throw Failure(kExitUsage, "'" + word + "' cannot be the word of a line WORD=phonemes");
    }
}

void RunAdd(const lexicon_options& options) {
    RequireWord(options.word);
    if (!ArePhonemes(options.phonemes)) {
        throw Failure(kExitUsage, options.phonemes + " are not phonemes, such as hEHlOW");
    }
    const tessarin::editor_owner editor = Open(options.file);
    const int32_t code = editor->AddRecord(options.word.c_str(), options.phonemes.c_str());
    if (code != tessarin::kNoError) {
        throw EngineFailure(options.word, code);
    }
    Save(*editor, options);
}

void RunRemove(const lexicon_options& options) {
    const tessarin::editor_owner editor = Open(options.file);
    const int32_t code = editor->RemoveRecord(
        options.word.c_str(), options.phonemes.empty() ? nullptr : options.phonemes.c_str());
    if (code != tessarin::kNoError) {
        throw EngineFailure(options.word, code);
    }
    Save(*editor, options);
}

void RunPrune(const lexicon_options& options) {
    const tessarin::editor_owner editor = Open(options.file);
    const int32_t before = editor->GetRecordCount();
    {
        std::optional<SilencedOutput> silence;
        if (options.quiet) {
            silence.emplace();
        }
        editor->RemoveRedundantRecords(); // shows its own progress
    }
    std::printf("%d of %d entries removed\n", before - editor->GetRecordCount(), before);
    Save(*editor, options);
}

void RunExport(const lexicon_options& options) {
    WriteOutput(options.output.empty() ? "-" : options.output,
                WriteWordList(AllEntries(*Open(options.file)), options.format == "cmu"));
}

void RunImport(const lexicon_options& options) {
    const auto entries = ReadWordList(options.list, ReadWholeFile(options.list));
    const tessarin::editor_owner editor = Open(options.file);
    CatchInterrupts();
    const size_t added = Import(*editor, entries, options.quiet);
    Save(*editor, options);
    std::printf("%zu of %zu entries added\n", added, entries.size());
}

CLI::App* AddAction(CLI::App& command, const std::shared_ptr<lexicon_options>& options,
                    const char* name, const char* description,
                    void (*run)(const lexicon_options&)) {
    CLI::App* action = command.add_subcommand(name, description);
    action->add_option("FILE", options->file, "Lexicon file")->required();
    action->callback([options, run] { run(*options); });
    return action;
}

void AddSaveOptions(CLI::App& action, lexicon_options& options) {
    action.add_option("-o,--output", options.output, "Lexicon file to write [FILE itself]")
        ->option_text("FILE");
    action.add_flag("-q,--quiet", options.quiet, "Show no progress bar");
}

} // namespace

void AddLexiconCommand(CLI::App& app) {
    const auto options = std::make_shared<lexicon_options>();
    CLI::App* command = app.add_subcommand("lexicon", "Look into a lexicon file, or change it");
    command->require_subcommand(1);

    AddAction(*command, options, "show", "Show what a lexicon file says about itself", RunShow);
    AddAction(*command, options, "find", "Show the pronunciations of words", RunFind)
        ->add_option("WORD", options->words, "Words to look up")
        ->required();

    CLI::App* add = AddAction(*command, options, "add",
                              "Add a pronunciation before the others of its word", RunAdd);
    add->add_option("WORD", options->word, "Word")->required();
    add->add_option("PHONEMES", options->phonemes, "Phonemes, such as hEHlOW")->required();
    AddSaveOptions(*add, *options);

    CLI::App* remove =
        AddAction(*command, options, "remove",
                  "Remove the first pronunciation of a word, or the given one", RunRemove);
    remove->add_option("WORD", options->word, "Word")->required();
    remove->add_option("PHONEMES", options->phonemes, "Phonemes");
    AddSaveOptions(*remove, *options);

    AddSaveOptions(*AddAction(*command, options, "prune",
                              "Remove the entries that the rules would pronounce in the same way",
                              RunPrune),
                   *options);

    CLI::App* exporting =
        AddAction(*command, options, "export", "Write all pronunciations as a text", RunExport);
    exporting->add_option("-o,--output", options->output, "File to write [-, standard output]")
        ->option_text("FILE");
    exporting->add_option("--format", options->format, "words (WORD=phonemes) or cmu [words]")
        ->check(CLI::IsMember({"words", "cmu"}))
        ->option_text("FORMAT");

    CLI::App* import =
        AddAction(*command, options, "import",
                  "Add those pronunciations of a text that are not there yet", RunImport);
    import->add_option("LIST", options->list, "Lines WORD=phonemes, or lines of the CMU dictionary")
        ->required();
    AddSaveOptions(*import, *options);

    CLI::App* build = AddAction(*command, options, "build",
                                "Write a lexicon file from the pronunciations in a text", RunBuild);
    build->add_option("LIST", options->list, "Lines WORD=phonemes, or lines of the CMU dictionary")
        ->required();
    build
        ->add_option("--language", options->language,
                     "Lexicon file to take the rules and number words from [the project's own]")
        ->option_text("FILE");
    AddDataFolderOption(*build, &options->data);
    build->add_flag("-q,--quiet", options->quiet, "Show no progress bar");
}
