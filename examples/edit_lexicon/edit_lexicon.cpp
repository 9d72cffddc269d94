// Adds a word to a lexicon file and shows how it is said before and after.
// usage: edit_lexicon LEXICON NEW_LEXICON WORD PHONEMES
#include <cstdio>
#include <string>

#include <tessarin/tessarin.h>

namespace {

/// Prints the first pronunciation of a word.
void Say(const char* when, tessarin::IVisemixTranscriber* transcriber, const char* word) {
    uint32_t count = 0;
    transcriber->Transcribe(word);
    const tessarin::CTxMarker* tokens = transcriber->GetOutputMarkers(&count);
    const bool isSaid = count > 0 && tokens[0].group_count > 0;
    std::printf("%s: %s = %s\n", when, word, isSaid ? tokens[0].groups[0].alternatives[0] : "?");
}

int32_t AddWord(const char* path, const char* newPath, const char* word, const char* phonemes) {
    tessarin::ILexiconEditor* editor = nullptr;
    int32_t code = CreateLexiconEditor(path, &editor);
    if (code != 0) {
        return code;
    }
    tessarin::IVisemixTranscriber* transcriber = editor->GetTranscriber();
    Say("before", transcriber, word);
    // The lexicon's own pronunciations go; without this the new one would only be preferred.
    while (editor->RemoveRecord(word, nullptr) == 0) {
    }
    code = editor->AddRecord(word, phonemes);
    if (code == 0) {
        code = editor->Save(newPath, nullptr);
    }
    DestroyTranscriber(transcriber);
    DestroyLexiconEditor(editor); // after the transcriber that looks its words up in it
    return code;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        return 1;
    }
    int32_t code = AddWord(argv[1], argv[2], argv[3], argv[4]);
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    if (code == 0) {
        code = CreateTranscriberFromLexiconFile(argv[2], &transcriber);
    }
    if (code != 0) {
        std::fprintf(stderr, "%s\n", GetVisemixErrorMessage(code));
        return code;
    }
    Say("after", transcriber, argv[3]);
    DestroyTranscriber(transcriber);
    return 0;
}
