#pragma once

/** @file
 * Audio that is still coming in, and the mouth for it. Part of tessarin_c.h.
 */

#include "tessarin/tessarin_c.h"

typedef struct tessarin_live tessarin_live; /**< audio that is still coming in */

/** What the samples of live audio are. */
enum tessarin_sample_format {
    TESSARIN_INT16 = 0, /**< little-endian */
    TESSARIN_UINT8 = 1, /**< 128 is silence */
    TESSARIN_FLOAT = 2  /**< from -1 to 1, in the byte order of the machine */
};

/** How live audio is followed. */
typedef struct tessarin_live_options {
    uint32_t size;         /**< of this struct, in bytes */
    uint32_t rate_hz;      /**< 4000 to 50000; 0: 16000 */
    uint32_t format;       /**< a tessarin_sample_format */
    uint32_t channels;     /**< interleaved, to 1024, of which the first is heard; 0: 1 */
    int32_t delay_ms;      /**< how long a sound is weighed before it is final, 20 to 10000; results
                                lag by up to twice that; 0: 25 */
    int32_t overlap_ms;    /**< how much of the past is weighed again, to 10000 */
    float frame_rate;      /**< frames a second, 1 to 1000; 0: 30 */
    int32_t look_ahead_ms; /**< how far ahead of a sound the mouth prepares for it, to 120, for
                                which frames wait; 0: 20, and -1: not at all */
    uint32_t strength_count;            /**< of the strengths */
    const tessarin_strength* strengths; /**< how far parts of the mouth leave rest, multiplied in
                                             their order; read at the creation alone */
} tessarin_live_options;

/** A sound of live audio. Times are milliseconds since the audio began. */
typedef struct tessarin_live_phoneme {
    int64_t start_ms; /**< where it begins */
    int64_t end_ms;   /**< where it ends */
    float score;      /**< strength of the sound, 0 to 100; not a confidence */
    char label[8];    /**< zero-terminated; "x" is silence */
} tessarin_live_phoneme;

/** A frame of live audio; else as tessarin_frame. */
typedef struct tessarin_live_frame {
    int64_t start_ms;            /**< where it begins */
    int64_t end_ms;              /**< where it ends */
    int32_t count;               /**< of the weights in use */
    tessarin_weight weights[10]; /**< the heaviest first */
} tessarin_live_frame;

/** What became final: the next phonemes and the next frames, without gaps from one stretch to the
   next. Phonemes and frames become final at their own pace, frames somewhat later. */
typedef struct tessarin_live_stretch {
    int64_t start_ms;                      /**< where the stretch before ended */
    int64_t end_ms;                        /**< how far the audio was heard */
    int64_t waiting_ms;                    /**< how much more audio was pushed than was heard */
    const tessarin_live_phoneme* phonemes; /**< null when there are none */
    const tessarin_live_frame* frames;     /**< null when there are none */
    uint32_t phoneme_count;
    uint32_t frame_count;
} tessarin_live_stretch;

/** How many visemes there are: sil PP FF TH DD kk CH SS nn RR aa E ih oh ou, the shapes of the set
   "visemes" in their order. */
#define TESSARIN_VISEME_COUNT 15

/** The time of tessarin_take_live_weights for the newest weights that there are. */
#define TESSARIN_LIVE_NEWEST INT64_MAX

/** Begins to follow audio that is still coming in; `options` may be null. A thread of the library
   does the search. The model may be freed before. One thread may push while another takes; else one
   thread at a time. OUT_OF_RANGE for options that are not in their ranges and for a model of more
   than 256 states; INVALID_ARGUMENT for a format that does not exist; OUT_OF_MEMORY, also when
   there is no thread. */
TESSARIN_API int32_t tessarin_create_live(const tessarin_model* model,
                                          const tessarin_live_options* options,
                                          tessarin_live** out);

/** Takes a copy of `size` bytes of samples; a block may end within a sample. Never waits for the
   search: to push what comes faster than it was recorded, hold back while `waiting_ms` is large.
   OUT_OF_RANGE for 2 GiB and more; OUT_OF_MEMORY; NOT_AVAILABLE once it is finished. */
TESSARIN_API int32_t tessarin_push_live_audio(tessarin_live* live, const void* samples,
                                              uint32_t size);

/** The same from an audio callback: takes `count` samples of each channel, and never waits, locks
   or allocates. Two seconds have room between the callback and the search. OUT_OF_RANGE when there
   was no room for all: the last samples of the block are then lost, as if they had never been, so
   times count what was taken. A thread of the library carries the samples on from the first call
   that takes. Push one live audio in one way, and from one thread. NOT_AVAILABLE once it is
   finished. */
TESSARIN_API int32_t tessarin_push_live_samples(tessarin_live* live, const void* samples,
                                                uint32_t count);

/** How much of what tessarin_push_live_samples was given was lost, in milliseconds. Any thread may
   ask. */
TESSARIN_API int64_t tessarin_get_lost_live_ms(const tessarin_live* live);

/** Writes the weight of each of the fifteen visemes, 0 to 1, that sum to 1, to `weights`. They are
   for `time_ms`: a time since the audio began, TESSARIN_LIVE_NEWEST, or, below 0, a time before the
   end of what was pushed, such as -120 for a mouth that follows 120 ms after the voice. Weights
   between two frames lie on a straight line between theirs. A time that is not known yet gets the
   newest ones. `at_ms`, which may be null, receives the time that the weights are for. Before the
   first frame the mouth rests. Does not wait; for the thread that takes. It takes what became final
   as tessarin_take_live does, unless that was called for `live` before; call it then for new
   frames. OUT_OF_RANGE, with a mouth at rest, for what is more than ten seconds older than the
   newest; OUT_OF_MEMORY, with zeros, when the search has ended for want of it. */
TESSARIN_API int32_t tessarin_take_live_weights(tessarin_live* live, int64_t time_ms,
                                                float* weights, int64_t* at_ms);

/** Replaces `*out` by what became final since the last call, which may be nothing. Does not wait.
   The phonemes and frames are borrowed until the next call for `live` other than a push. Failures
   leave zeros in `*out`: OUT_OF_MEMORY when the search has ended for want of it. */
TESSARIN_API int32_t tessarin_take_live(tessarin_live* live, tessarin_live_stretch* out);

/** Ends the audio, waits until all of it was heard, and replaces `*out` by what was not yet taken.
   Else as tessarin_take_live. */
TESSARIN_API int32_t tessarin_finish_live(tessarin_live* live, tessarin_live_stretch* out);

/** Stops at once. Null is allowed. */
TESSARIN_API void tessarin_free_live(tessarin_live* live);
