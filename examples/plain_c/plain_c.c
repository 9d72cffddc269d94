/* Makes the mouth track of a recording through the flat interface, which any language can call:
   what tessarin_create_ gives is the caller's, what tessarin_get_ returns is borrowed.
   usage: plain_c DATA_FOLDER AUDIO TEXT */
#include <stdio.h>

#include <tessarin/tessarin_c.h>

static void PrintTrack(const tessarin_track* track) {
    uint32_t count = 0;
    const tessarin_frame* frames = tessarin_get_track_frames(track, &count);
    for (uint32_t i = 0; i < count; ++i) {
        printf("%d ms:", frames[i].start_ms);
        for (int32_t k = 0; k < frames[i].count; ++k) {
            printf(" %s %.2f", frames[i].weights[k].label, (double)frames[i].weights[k].weight);
        }
        printf("\n");
    }
}

int main(int argc, char** argv) {
    char path[4096];
    tessarin_model* model = NULL;
    tessarin_language* language = NULL;
    tessarin_audio* audio = NULL;
    tessarin_result* result = NULL;
    tessarin_track* track = NULL;
    tessarin_track_options options = {0};
    if (argc != 4) {
        return 1;
    }
    options.size = sizeof options;
    options.frame_rate = 24.0f;
    options.flags = TESSARIN_TRACK_SMOOTH;

    snprintf(path, sizeof path, "%s/en-us.model", argv[1]);
    int32_t code = tessarin_create_model_from_file(path, &model);
    if (code == TESSARIN_OK) {
        snprintf(path, sizeof path, "%s/en-us.lexicon", argv[1]);
        code = tessarin_create_language_from_file(path, &language);
    }
    if (code == TESSARIN_OK) {
        code = tessarin_create_audio_from_file(argv[2], 1, &audio);
    }
    if (code == TESSARIN_OK) {
        code = tessarin_create_alignment(model, language, audio, argv[3], NULL, NULL, &result);
    }
    if (code == TESSARIN_OK) {
        code = tessarin_create_track(result, &options, &track);
    }
    PrintTrack(track);
    if (code != TESSARIN_OK) {
        fprintf(stderr, "%s\n", tessarin_get_error_text(code));
    }
    tessarin_free_track(track);
    tessarin_free_result(result);
    tessarin_free_audio(audio);
    tessarin_free_language(language);
    tessarin_free_model(model);
    return code;
}
