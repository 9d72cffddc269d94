#pragma once

/** @file
 * Texts as people write them, read without a recording. Part of tessarin_c.h.
 */

#include "tessarin/tessarin_c.h"

typedef struct tessarin_script tessarin_script; /**< what is said of a text */

/** A stretch of a script, and what it is. */
typedef struct tessarin_script_part {
    int32_t kind;        /**< a tessarin_span_kind */
    int32_t text_offset; /**< place in the text that was given */
    int32_t text_length; /**< in bytes */
    uint32_t flags;      /**< of a word: tessarin_word_flags */
    int32_t start_ms;    /**< of a subtitle; -1 otherwise */
    int32_t end_ms;      /**< of a subtitle; -1 otherwise */
    const char* spoken;  /**< the words that are said for it; empty for events */
} tessarin_script_part;

/** Reads a text without transcribing it. `language` may be null; with one, its lexicon
   decides what is a word and what is letters or a sound. LITERAL is not an option of it.
   INVALID_ARGUMENT; INVALID_FILE for a table that does not read; INVALID_UTF8; NOT_AVAILABLE for a
   language that has no table, when the options have none: its texts are read literally. */
TESSARIN_API int32_t tessarin_create_script(tessarin_language* language, const char* text,
                                            const tessarin_script_options* options,
                                            tessarin_script** out);

/** Checks the entries that a `table` of tessarin_script_options has. INVALID_FILE for a line that
   does not read: `reason`, which may be null, then receives up to `reason_size` bytes of a
   zero-terminated text that names the line and says what is wrong. */
TESSARIN_API int32_t tessarin_check_script_table(const char* table, char* reason,
                                                 uint32_t reason_size);

/** The words to be said, with pauses and tags, in UTF-8: a text for a transcriber. */
TESSARIN_API const char* tessarin_get_script_text(const tessarin_script* script);

/** The words, or null when there are none; `*count` receives how many. */
TESSARIN_API const tessarin_script_part* tessarin_get_script_words(const tessarin_script* script,
                                                                   uint32_t* count);
/** What a reader may say for word number `word`, from 0, instead of its `spoken`, of which in an
   alignment the recording chooses: zero-terminated texts, or null when there are none. */
TESSARIN_API const char* const* tessarin_get_script_readings(const tessarin_script* script,
                                                             uint32_t word, uint32_t* count);
/** What is not said, likewise. */
TESSARIN_API const tessarin_script_part* tessarin_get_script_events(const tessarin_script* script,
                                                                    uint32_t* count);
/** The lines of subtitles with their times, likewise; their kind is 0. */
TESSARIN_API const tessarin_script_part* tessarin_get_script_cues(const tessarin_script* script,
                                                                  uint32_t* count);
/** The characters that have no name and are not said, likewise; their kind is 0. */
TESSARIN_API const tessarin_script_part* tessarin_get_script_unsaid(const tessarin_script* script,
                                                                    uint32_t* count);

/** What a stretch of the text of tessarin_get_script_text stands for, with its place in the text
   that was given. The `spoken` of `*out` lives as long as the script. OUT_OF_RANGE for a stretch
   that is not in it. */
TESSARIN_API int32_t tessarin_find_script_part(const tessarin_script* script, int32_t offset,
                                               int32_t length, tessarin_script_part* out);

/** What was said for word number `word` of an alignment, from 0, of several ways to read it; empty
   for a word that has one, and beyond the last. */
TESSARIN_API const char* tessarin_get_word_reading(const tessarin_result* result, uint32_t word);

/** Null is allowed. */
TESSARIN_API void tessarin_free_script(tessarin_script* script);
