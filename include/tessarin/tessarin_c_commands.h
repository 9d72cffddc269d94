#pragma once

/** @file
 * Spoken commands: which one of a few phrases was said. Part of tessarin_c.h.
 */

#include "tessarin/tessarin_c.h"

typedef struct tessarin_commands tessarin_commands; /**< a few commands, one of which is said */

/** How commands are known. */
typedef struct tessarin_command_options {
    uint32_t size;    /**< of this struct, in bytes */
    uint32_t rate_hz; /**< of what tessarin_push_command_audio takes, 8000 to 65535; 0: 16000 */
    float floor_db;   /**< what is not louder is ignored, 0 to 100; 0 keeps everything. Live audio
                           wants the noise of its room: 35 is above that of a quiet one */
} tessarin_command_options;

/** A command, and how well it fits what was said. */
typedef struct tessarin_command_match {
    double score;     /**< of a command that is known by its sounds: a logarithm, the higher the
                           better; of one that is known by samples: a distance, 0 for the same
                           recording */
    const char* name; /**< of the command */
} tessarin_command_match;

/** Makes an empty list of commands; `options` may be null. Its commands are all known by their
   sounds or all by samples, since scores of the two kinds do not compare. The model may be freed
   before. One thread at a time may use it. OUT_OF_RANGE for options that are not in their ranges.
 */
TESSARIN_API int32_t tessarin_create_commands(const tessarin_model* model,
                                              const tessarin_command_options* options,
                                              tessarin_commands** out);

/** Adds a command that is said as `text` in `language`. A name may come again, for another way to
   say the command. INVALID_ARGUMENT for a text that cannot be said, or when there are samples;
   INVALID_UTF8. */
TESSARIN_API int32_t tessarin_add_command_text(tessarin_commands* commands,
                                               tessarin_language* language, const char* name,
                                               const char* text);

/** Adds a command that is said as `phonemes`; blanks and commas between them are skipped.
   INVALID_ARGUMENT for what is not phonemes, or when there are samples. */
TESSARIN_API int32_t tessarin_add_command_phonemes(tessarin_commands* commands, const char* name,
                                                   const char* phonemes);

/** Adds a sample of a command, which may be in any language; a name may have several. Of the
   `options`, which may be null, only the stretch counts. INVALID_ARGUMENT for a recording that
   cannot be used, or when there are commands of sounds; OUT_OF_RANGE for a stretch that is not in
   the audio. */
TESSARIN_API int32_t tessarin_add_command_sample(tessarin_commands* commands, const char* name,
                                                 const tessarin_audio* audio,
                                                 const tessarin_search_options* options);

/** Adds all samples of the `size` bytes at `data`: those that tessarin_pack_command_samples made,
   or a file that the tool saved. Samples without names are named by their numbers. INVALID_FILE
   for anything else, and nothing is added. */
TESSARIN_API int32_t tessarin_add_packed_command_samples(tessarin_commands* commands,
                                                         const void* data, uint64_t size);

/** Lends all samples with their names as one block of `*size` bytes, until the next call for
   `commands`, to keep them in a file. INVALID_ARGUMENT without `size`; NOT_AVAILABLE when there
   are no samples. */
TESSARIN_API int32_t tessarin_pack_command_samples(tessarin_commands* commands, uint64_t* size,
                                                   const void** out);

/** Ranks the commands for a recording of one of them, for tessarin_get_command_ranking. Of the
   `options` only the stretch counts; both they and `progress`, which commands of samples do not
   have, may be null. CANCELLED; OUT_OF_RANGE for a stretch that is not in the audio. */
TESSARIN_API int32_t tessarin_rank_commands(tessarin_commands* commands,
                                            const tessarin_audio* audio,
                                            const tessarin_search_options* options,
                                            const tessarin_progress* progress);

/** Takes `count` 16-bit samples of one channel of live audio. `*has_ended` receives 1 when the
   utterance has ended: with the speech, or after 20 seconds. What is pushed then is not heard
   until tessarin_rank_utterance. OUT_OF_RANGE for 2 GiB and more; NOT_AVAILABLE for a rate other
   than the model's, when that is not 16000 Hz. */
TESSARIN_API int32_t tessarin_push_command_audio(tessarin_commands* commands,
                                                 const int16_t* samples, uint32_t count,
                                                 int32_t* has_ended);

/** Ends the utterance that was pushed, ranks the commands for it, and has the next one begin. Else
   as tessarin_rank_commands. */
TESSARIN_API int32_t tessarin_rank_utterance(tessarin_commands* commands,
                                             const tessarin_progress* progress);

/** The commands of the last ranking, the best one first; null when there are none, as when the
   utterance is too short. There is no threshold: the best one is the nearest, however far it is.
   `*count` receives how many. They live until the next call for `commands`. */
TESSARIN_API const tessarin_command_match*
tessarin_get_command_ranking(const tessarin_commands* commands, uint32_t* count);

/** Null is allowed. */
TESSARIN_API void tessarin_free_commands(tessarin_commands* commands);
