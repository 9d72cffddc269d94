#pragma once

/** @file
 * The mouth of a result: tracks, their levels and strength, mouth shapes and 2-D switches. Part of
 * tessarin_c.h.
 */

#include "tessarin/tessarin_c.h"

/** Flags of tessarin_track_options. */
enum tessarin_track_flags {
    TESSARIN_TRACK_SMOOTH = 1,       /**< closed lips close in at least one frame; no shape jumps */
    TESSARIN_TRACK_COMMON_KEYS = 2,  /**< all curves have keys at the same times */
    TESSARIN_TRACK_EXCESS_LEVEL = 4, /**< the part of a phoneme's level above 1 counts */
    TESSARIN_TRACK_CURVES = 256,     /**< also make the curves, for tessarin_get_curves */
    TESSARIN_TRACK_PLAIN = 512 /**< as the articulator makes it by itself: levels are the scores,
                                    and its own rules are the built-in ones */
};

/** What is added to the level of phonemes, which is their loudness from 0 to 1. The level stays
   below 1, so gains open what is soft; for a factor see tessarin_strength. */
typedef struct tessarin_gain {
    const char* phonemes; /**< labels written together, such as "pbm"; null or empty: all */
    float factor;         /**< added; 0 changes nothing; not negative */
} tessarin_gain;

/** How a track is made. */
typedef struct tessarin_track_options {
    uint32_t size;              /**< of this struct, in bytes */
    uint32_t flags;             /**< tessarin_track_flags */
    float frame_rate;           /**< frames a second, 1 to 1000; 0: that of the rules */
    float slope;                /**< with SMOOTH, the largest change of a weight a frame; 0: 0.25 */
    int32_t max_weights;        /**< in a frame, 1 to 10; 0: 10 */
    int32_t rules_length;       /**< bytes of the rules */
    const char* rules;          /**< articulation rules; null: those of the library */
    const tessarin_gain* gains; /**< applied in their order; may be null when there are none */
    uint32_t gain_count;        /**< of them */
    const tessarin_strength* strengths; /**< multiplied in their order; ignored with PLAIN */
    uint32_t strength_count;            /**< of them */
} tessarin_track_options;

/** One video frame: the phonemes that shape the mouth, the heaviest first. The weights sum to 1. */
typedef struct tessarin_frame {
    int32_t start_ms;            /**< where it begins */
    int32_t end_ms;              /**< where it ends */
    int32_t count;               /**< of the weights in use */
    tessarin_weight weights[10]; /**< the heaviest first */
} tessarin_frame;

/** A key of a curve. */
typedef struct tessarin_key {
    int32_t time_ms; /**< when */
    float weight;    /**< 0 to 1; straight lines lead from key to key */
} tessarin_key;

/** The weight of one occurrence of a phoneme over time. */
typedef struct tessarin_curve {
    char label[8];            /**< of the phoneme, zero-terminated */
    int32_t start_ms;         /**< where it begins to show */
    int32_t end_ms;           /**< where it has gone */
    uint32_t key_count;       /**< of the keys */
    const tessarin_key* keys; /**< in order of time; they live as long as the track */
} tessarin_curve;

/** From here on a mouth of one shape at a time shows this shape. */
typedef struct tessarin_switch {
    int32_t start_ms; /**< when */
    uint32_t shape;   /**< number of the shape in its set, from 0 */
} tessarin_switch;

typedef struct tessarin_shapes tessarin_shapes;     /**< from phonemes to a set of mouth shapes */
typedef struct tessarin_switches tessarin_switches; /**< one mouth shape at a time */

/** Makes a result of the `count` phonemes at `phonemes`, in order of time, so that timings from
   elsewhere can move a mouth. INVALID_ARGUMENT for a label that is not a phoneme's or an end before
   its start. */
TESSARIN_API int32_t tessarin_create_result_from_phonemes(const tessarin_phoneme* phonemes,
                                                          uint32_t count, tessarin_result** out);

/** The loudness of the audio of a result: for each 10 ms the mean square of the samples about their
   mean, in dB of full scale, -100 to 0, in tenths. Null when it is not known; `*count` receives how
   many. */
TESSARIN_API const float* tessarin_get_loudness(const tessarin_result* result, uint32_t* count);

/** Gives a result of timings from elsewhere the loudness of its audio, from its beginning, `count`
   values at `db`; none takes it away. No other call for this result may run meanwhile, and what
   tessarin_get_loudness returned before is no longer valid. OUT_OF_RANGE for a value that is not a
   number. */
TESSARIN_API int32_t tessarin_set_loudness(tessarin_result* result, const float* db,
                                           uint32_t count);

/** Measures the loudness of `count` samples, and writes a value to `db` for each 10 ms, the last of
   which may be shorter. `*values` has the room at `db`, and receives how many there are. Blocks of
   whole seconds may be measured one by one. OUT_OF_RANGE when there is not enough room, and for a
   rate below 100 Hz. */
TESSARIN_API int32_t tessarin_measure_loudness(const int16_t* samples, uint32_t count,
                                               uint32_t rate_hz, float* db, uint32_t* values);

/** Makes the frames of mouth weights of a result. A phoneme is as strong as it is loud against the
   voice itself, so the level of the recording does not matter; without a loudness, its score says
   how loud it is. Each phoneme that the rules name in `closed` has a frame that shows it closed,
   before the strengths are applied. With TESSARIN_TRACK_PLAIN there is none of this, and strengths
   are ignored. OUT_OF_RANGE for a frame rate or a number of weights that is outside its range, and
   for a gain or a strength that is; INVALID_ARGUMENT for a gain of what is not phonemes, and a
   strength of no part; INVALID_FILE or NEWER_VERSION for rules that do not read. */
TESSARIN_API int32_t tessarin_create_track(const tessarin_result* result,
                                           const tessarin_track_options* options,
                                           tessarin_track** out);

/** The frames in order of time, or null when there are none; `*count` receives how many. */
TESSARIN_API const tessarin_frame* tessarin_get_track_frames(const tessarin_track* track,
                                                             uint32_t* count);

/** The curves, one for each occurrence of a phoneme, in order of their beginnings; null when the
   track was made without TESSARIN_TRACK_CURVES. `*count` receives how many. */
TESSARIN_API const tessarin_curve* tessarin_get_curves(const tessarin_track* track,
                                                       uint32_t* count);

/** Finds the one mixture of at most `max_weights` phonemes (0: as many as the track has) that
   stands best for the frames from `from_ms` to `to_ms`; -1 is the first or the last frame.
   OUT_OF_RANGE when no frame lies there; `*out` then stays. Calls for one track take turns. */
TESSARIN_API int32_t tessarin_quantize_track(const tessarin_track* track, int32_t from_ms,
                                             int32_t to_ms, int32_t max_weights,
                                             tessarin_frame* out);

/** Null is allowed. */
TESSARIN_API void tessarin_free_track(tessarin_track* track);

/** A built-in map from phonemes to mouth shapes, by the name of its set: "visemes" (15 shapes, sil
   to ou), "arkit" (52 blend shapes), "vrm" (aa ih ou ee oh), "switches" (A to H and X) or
   "preston-blair". NOT_AVAILABLE for another name. */
TESSARIN_API int32_t tessarin_create_shapes(const char* set, tessarin_shapes** out);

/** Reads a map of your own. Its text has the lines "set NAME", "shapes NAME ...", "closed NAME
   ...", "rest NAME" and, for each phoneme, "PHONEME SHAPE [WEIGHT] ..."; # begins a comment.
   INVALID_FILE when the text is not such a map: `reason`, which may be null, then receives up to
   `reason_size` bytes of a zero-terminated text that names the line. */
TESSARIN_API int32_t tessarin_create_shapes_from_text(const char* text, char* reason,
                                                      uint32_t reason_size, tessarin_shapes** out);

/** The same from a file. FILE_NOT_FOUND. */
TESSARIN_API int32_t tessarin_create_shapes_from_file(const char* path, char* reason,
                                                      uint32_t reason_size, tessarin_shapes** out);

/** The name of the set; empty when the map gives none. */
TESSARIN_API const char* tessarin_get_shape_set(const tessarin_shapes* shapes);

/** How many shapes the set has. */
TESSARIN_API uint32_t tessarin_get_shape_count(const tessarin_shapes* shapes);

/** The name of shape number `shape`, from 0; null beyond the last. */
TESSARIN_API const char* tessarin_get_shape_name(const tessarin_shapes* shapes, uint32_t shape);

/** 1 for a shape of closed lips, else 0. */
TESSARIN_API int32_t tessarin_is_closed_shape(const tessarin_shapes* shapes, uint32_t shape);

/** The number of the shape of a resting mouth. */
TESSARIN_API uint32_t tessarin_get_rest_shape(const tessarin_shapes* shapes);

/** Writes the weight of each shape, 0 to 1, for the `count` frames at `frames`: a row for each
   frame of as many weights as the set has shapes, so `weights` needs room for count times
   tessarin_get_shape_count. The frames may be a track's or your own; INVALID_ARGUMENT for a frame
   with a count outside 0 to 10. */
TESSARIN_API int32_t tessarin_mix_shapes(const tessarin_shapes* shapes,
                                         const tessarin_frame* frames, uint32_t count,
                                         double* weights);

/** Finds the keys that tracks of weights need: straight lines between them stay within `tolerance`
   (0 to 1) of every weight. `weights` has a row of `width` weights for each of the `count` times,
   as tessarin_mix_shapes writes them; all of a row share their keys, so reduce each column by
   itself, with a width of 1, where each curve may have its own. `kept`, with room for `count`,
   receives the numbers of the times that stay keys, the first and the last among them, and
   `*kept_count` how many. INVALID_ARGUMENT when the times do not rise or the width is 0;
   OUT_OF_RANGE for another tolerance and for a weight that is not a number. */
TESSARIN_API int32_t tessarin_reduce_keys(const int32_t* times_ms, const double* weights,
                                          uint32_t count, uint32_t width, double tolerance,
                                          uint32_t* kept, uint32_t* kept_count);

/** Null is allowed. */
TESSARIN_API void tessarin_free_shapes(tessarin_shapes* shapes);

/** Chooses one shape at a time, for 2-D mouths. The first switch is at 0 ms, and each shape stays
   until the next switch: for at least 50 ms, and for at least `hold_ms` (0 to 10000) unless closed
   lips come or the frames end. Both times are rounded up to whole frames of the length of the first
   one. OUT_OF_RANGE for another hold; frames as in tessarin_mix_shapes. */
TESSARIN_API int32_t tessarin_create_switches(const tessarin_shapes* shapes,
                                              const tessarin_frame* frames, uint32_t count,
                                              int32_t hold_ms, tessarin_switches** out);

/** The switches in order of time; `*count` receives how many. */
TESSARIN_API const tessarin_switch* tessarin_get_switches(const tessarin_switches* switches,
                                                          uint32_t* count);

/** Null is allowed. */
TESSARIN_API void tessarin_free_switches(tessarin_switches* switches);
