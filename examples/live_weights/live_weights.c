/* The mouth of a voice that is still being heard, as a game takes it: create, push, take, free.
   Here a recording stands for the microphone.
   usage: live_weights_c DATA_FOLDER AUDIO [SECONDS] */
#if !defined(_WIN32)
#define _POSIX_C_SOURCE 199309L
#endif
#include <stdio.h>
#include <stdlib.h>
#if defined(_WIN32)
#include <windows.h>
#else
#include <time.h>
#endif

#include <tessarin/tessarin_c.h>

static const char* const kVisemes[TESSARIN_VISEME_COUNT] = {
    "sil", "PP", "FF", "TH", "DD", "kk", "CH", "SS", "nn", "RR", "aa", "E", "ih", "oh", "ou"};

static void SleepMs(int ms) {
#if defined(_WIN32)
    Sleep((DWORD)ms);
#else
    const struct timespec time = {0, ms * 1000000L};
    nanosleep(&time, NULL);
#endif
}

/* A sound card calls this from a thread of its own, where nothing may wait. */
static void OnAudio(void* user, const int16_t* samples, uint32_t count) {
    tessarin_push_live_samples(user, samples, count);
}

/* A game calls this for each frame that it draws. */
static void OnFrame(tessarin_live* live) {
    float weights[TESSARIN_VISEME_COUNT];
    int64_t at = 0;
    int most = 0;
    int bar;
    tessarin_take_live_weights(live, TESSARIN_LIVE_NEWEST, weights, &at);
    for (int i = 1; i < TESSARIN_VISEME_COUNT; ++i) {
        most = weights[i] > weights[most] ? i : most;
    }
    printf("%6d  %-3s ", (int)at, kVisemes[most]); /* all fifteen go to the face */
    for (bar = 0; bar < (int)(weights[most] * 40); ++bar) {
        putchar('#');
    }
    putchar('\n');
}

int main(int argc, char** argv) {
    char path[4096];
    tessarin_model* model = NULL;
    tessarin_audio* audio = NULL;
    tessarin_live* live = NULL;
    tessarin_live_options options = {0};
    if (argc < 3) {
        fputs("usage: live_weights_c DATA_FOLDER AUDIO [SECONDS]\n", stderr);
        return 1;
    }
    snprintf(path, sizeof path, "%s/en-us-hearing.model", argv[1]);
    int32_t code = tessarin_create_model_from_file(path, &model);
    if (code == TESSARIN_OK) {
        code = tessarin_create_audio_from_file(argv[2], 1, &audio);
    }
    if (code == TESSARIN_OK) {
        options.size = sizeof options;
        options.rate_hz = tessarin_get_audio_rate_hz(audio);
        options.format = TESSARIN_INT16;
        options.frame_rate = 60.0f;
        code = tessarin_create_live(model, &options, &live);
    }
    if (code == TESSARIN_OK) {
        uint32_t count = 0;
        const int16_t* samples = tessarin_get_audio_samples(audio, &count);
        const uint32_t block = options.rate_hz / 50;
        uint32_t most = argc > 3 ? (uint32_t)atoi(argv[3]) * options.rate_hz : count;
        most = most < count ? most : count;
        for (uint32_t at = 0; at + block <= most; at += block) {
            SleepMs(20);
            OnAudio(live, samples + at, block);
            OnFrame(live);
        }
        printf("lost %d ms\n", (int)tessarin_get_lost_live_ms(live));
    } else {
        fprintf(stderr, "%s\n", tessarin_get_error_text(code));
    }
    tessarin_free_live(live);
    tessarin_free_audio(audio);
    tessarin_free_model(model);
    return code;
}
