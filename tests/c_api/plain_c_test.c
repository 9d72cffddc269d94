/* Does with nothing but C what a program in C would: aligns a recording, reads all that comes back,
   watches, cancels, and makes a track. usage: plain_c_test DATA_FOLDER DEMO_WITHOUT_EXTENSION */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tessarin/tessarin_c.h"

static int failures = 0;

static void Check(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "does not hold: %s\n", what);
        ++failures;
    }
}

static const char* Join(char* buffer, size_t size, const char* first, const char* second) {
    snprintf(buffer, size, "%s%s", first, second);
    return buffer;
}

static void ReadText(const char* path, char* text, size_t size) {
    FILE* file = fopen(path, "rb");
    size_t length = file != NULL ? fread(text, 1, size - 1, file) : 0;
    text[length] = '\0';
    if (file != NULL) {
        fclose(file);
    }
}

typedef struct watcher {
    uint32_t calls;
    uint32_t last;
    uint32_t cancelAt;
} watcher;

static int32_t Watch(void* user, uint32_t done, uint32_t total) {
    watcher* self = user;
    self->calls++;
    Check(done <= total, "progress stays within its total");
    self->last = done;
    return self->cancelAt != 0 && self->calls >= self->cancelAt;
}

/* The fifteen visemes of each frame, and a 2-D mouth. */
static void MakeVisemes(const tessarin_track* track) {
    uint32_t count = 0;
    const tessarin_frame* frames = tessarin_get_track_frames(track, &count);
    tessarin_shapes* shapes = NULL;
    tessarin_switches* switches = NULL;
    tessarin_frame broken = {0};
    double weights[15];
    double sum = 0.0;
    broken.count = 11;
    Check(tessarin_create_shapes("visemes", &shapes) == TESSARIN_OK, "the visemes are built in");
    Check(tessarin_get_shape_count(shapes) == 15, "there are fifteen visemes");
    Check(tessarin_mix_shapes(shapes, &frames[count / 2], 1, weights) == TESSARIN_OK,
          "a frame shows in visemes");
    for (int i = 0; i < 15; ++i) {
        sum += weights[i];
    }
    Check(sum > 0.99 && sum < 1.01, "the visemes of a frame sum to 1");
    Check(tessarin_mix_shapes(shapes, &broken, 1, weights) == TESSARIN_INVALID_ARGUMENT,
          "a frame of eleven weights is refused");
    Check(tessarin_create_switches(shapes, frames, count, 80, &switches) == TESSARIN_OK,
          "one shape at a time");
    tessarin_get_switches(switches, &count);
    Check(count > 50, "the mouth moves");
    tessarin_free_switches(switches);
    tessarin_free_shapes(shapes);
}

static void CheckTrack(const tessarin_result* result) {
    tessarin_track_options options = {0};
    tessarin_track* track = NULL;
    uint32_t count = 0;
    uint32_t i;
    options.size = sizeof options;
    options.frame_rate = 25.0f;
    Check(tessarin_create_track(result, &options, &track) == TESSARIN_OK, "a track is made");
    {
        const tessarin_frame* frames = tessarin_get_track_frames(track, &count);
        Check(count > 100, "the track has frames");
        for (i = 0; i < count; ++i) {
            float sum = 0.0f;
            int32_t k;
            for (k = 0; k < frames[i].count; ++k) {
                sum += frames[i].weights[k].weight;
            }
            Check(sum > 0.999f && sum < 1.001f, "weights sum to 1");
            Check(frames[i].end_ms - frames[i].start_ms == 40, "a frame lasts as long as asked");
        }
    }
    MakeVisemes(track);
    tessarin_free_track(track);
}

static void CheckResult(const tessarin_result* result, const char* text) {
    uint32_t numWords = 0;
    uint32_t numPhonemes = 0;
    uint32_t i;
    const tessarin_span* words = tessarin_get_words(result, &numWords);
    const tessarin_phoneme* phonemes = tessarin_get_phonemes(result, &numPhonemes);
    Check(numWords > 20 && numPhonemes > numWords, "words and phonemes are found");
    for (i = 0; i < numWords; ++i) {
        Check(strncmp(text + words[i].text_offset, words[i].text, (size_t)words[i].text_length) ==
                  0,
              "a word stands at its place in the text");
        Check(i == 0 || words[i].start_ms >= words[i - 1].end_ms, "words follow each other");
    }
    Check(phonemes[0].label[0] != '\0', "phonemes have labels");
}

/* Which of two commands the first sentence of the recording is. */
static void KnowCommands(const tessarin_model* model, tessarin_language* language,
                         const tessarin_audio* audio) {
    tessarin_commands* commands = NULL;
    tessarin_search_options sentence = {0};
    uint32_t count = 0;
    const tessarin_command_match* ranking;
    sentence.size = sizeof sentence;
    sentence.to_ms = 2400;
    Check(tessarin_create_commands(model, NULL, &commands) == TESSARIN_OK, "commands are made");
    Check(tessarin_add_command_text(commands, language, "door", "Open the garage door.") ==
                  TESSARIN_OK &&
              tessarin_add_command_text(commands, language, "enter",
                                        "You are about to enter an echo test.") == TESSARIN_OK,
          "texts become commands");
    Check(tessarin_rank_commands(commands, audio, &sentence, NULL) == TESSARIN_OK,
          "commands are ranked");
    ranking = tessarin_get_command_ranking(commands, &count);
    Check(count == 2 && strcmp(ranking[0].name, "enter") == 0 &&
              ranking[0].score > ranking[1].score,
          "the command that is said comes first");
    tessarin_free_commands(commands);
}

static void LookIntoLexicons(const char* data) {
    char path[4096];
    tessarin_lexicon* lexicon = NULL;
    const tessarin_lexicon_facts* facts;
    Check(tessarin_create_lexicon_from_file(Join(path, sizeof path, data, "/en-us.lexicon"),
                                            &lexicon) == TESSARIN_OK,
          "a lexicon is looked into");
    facts = tessarin_get_lexicon_facts(lexicon);
    Check(facts->language == 9 && facts->code_page == 1252, "it is of English");
    Check(facts->entry_count > facts->word_count && facts->word_count > 50000,
          "some words have several pronunciations");
    Check(facts->has_tree ? facts->leaf_count > 0 : facts->rule_count > 0, "other words are said");
    tessarin_free_lexicon(lexicon);
    Check(tessarin_create_lexicon_from_file(Join(path, sizeof path, data, "/en-us.model"),
                                            &lexicon) == TESSARIN_INVALID_FILE &&
              lexicon == NULL,
          "a model is not a lexicon");
    Check(tessarin_create_lexicon_from_memory("TCID", 4, &lexicon) == TESSARIN_NEWER_VERSION &&
              tessarin_get_lexicon_facts(NULL) == NULL,
          "a lexicon that is cut short is refused");
}

int main(int argc, char** argv) {
    char path[4096];
    static char text[65536];
    tessarin_model* model = NULL;
    tessarin_language* language = NULL;
    tessarin_audio* audio = NULL;
    tessarin_result* result = NULL;
    watcher all = {0, 0, 0};
    watcher brief = {0, 0, 3};
    tessarin_progress progress = {NULL, NULL, Watch};
    if (argc != 3) {
        return 1;
    }
    Check(tessarin_create_model_from_file(Join(path, sizeof path, argv[1], "/en-us.model"),
                                          &model) == TESSARIN_OK,
          "the model opens");
    Check(tessarin_create_language_from_file(Join(path, sizeof path, argv[1], "/en-us.lexicon"),
                                             &language) == TESSARIN_OK,
          "the lexicon opens");
    Check(tessarin_create_audio_from_file(Join(path, sizeof path, argv[2], ".wav"), 1, &audio) ==
              TESSARIN_OK,
          "the recording opens");
    ReadText(Join(path, sizeof path, argv[2], ".txt"), text, sizeof text);

    progress.user = &all;
    Check(tessarin_create_alignment(model, language, audio, text, NULL, &progress, &result) ==
              TESSARIN_OK,
          "the text is found");
    Check(all.calls > 10, "progress is reported");
    CheckResult(result, text);
    CheckTrack(result);
    tessarin_free_result(result);

    progress.user = &brief;
    Check(tessarin_create_alignment(model, language, audio, text, NULL, &progress, &result) ==
              TESSARIN_CANCELLED,
          "an alignment is cancelled");
    Check(result == NULL && brief.calls == 3, "and leaves nothing, at once");

    Check(tessarin_create_alignment(model, NULL, audio, text, NULL, NULL, &result) ==
              TESSARIN_INVALID_ARGUMENT,
          "a missing language is reported");
    KnowCommands(model, language, audio);
    LookIntoLexicons(argv[1]);
    tessarin_free_audio(audio);
    tessarin_free_language(language);
    tessarin_free_model(model);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
