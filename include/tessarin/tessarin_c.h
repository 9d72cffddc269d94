#pragma once

/** @file
 * The library for callers that are not C++: opaque handles, plain structs, no virtual tables.
 *
 * Ownership is in the names. tessarin_create_X gives an object to the caller through its last
 * parameter, to be freed by tessarin_free_X, which allows null. What tessarin_get_X returns is
 * borrowed: it belongs to the object that it was asked of and lives as long as that object. Nothing
 * that is passed in is kept.
 *
 * Functions that can fail return a tessarin_code; unless stated otherwise, a failed one leaves null
 * in its last parameter. A null pointer where an object or a text is needed gives
 * TESSARIN_INVALID_ARGUMENT.
 *
 * Texts and paths are zero-terminated; texts are UTF-8, and a place in a text is a number of bytes.
 * Times are milliseconds from the beginning of the audio.
 *
 * Threads: models, languages and audio may be used by several threads at once, each with a call of
 * its own. Results, tracks and transcripts are read-only once made, except that
 * tessarin_set_loudness changes a result: no other call for that result may run meanwhile.
 *
 * Option structs grow at their end in later versions. Fill one with zeros, which stand for the
 * defaults, and put its size into `size`; null gives the defaults too. A size that the library does
 * not know gives TESSARIN_INVALID_ARGUMENT.
 *
 * This header includes those of its parts: commands, facts, the mouth, scripts and live audio.
 */

#include <stdint.h>

#include "tessarin/export.h"

/** The numbers of error_codes.h. */
enum tessarin_code {
    TESSARIN_OK = 0,
    TESSARIN_OUT_OF_MEMORY = 1,
    TESSARIN_INVALID_ARGUMENT = 2,
    TESSARIN_OUT_OF_RANGE = 3,
    TESSARIN_INTERNAL_ERROR = 4,
    TESSARIN_CANCELLED = 5,
    TESSARIN_NOT_AVAILABLE = 6,
    TESSARIN_RECOGNITION_FAILED = 8, /**< the search lost the text */
    TESSARIN_FILE_NOT_FOUND = 10,
    TESSARIN_INVALID_FILE = 12,
    TESSARIN_INVALID_UTF8 = 20,
    TESSARIN_NEWER_VERSION = 21,
    TESSARIN_EXCEPTION = 22
};

typedef struct tessarin_model tessarin_model;           /**< how phonemes sound */
typedef struct tessarin_language tessarin_language;     /**< how texts are said */
typedef struct tessarin_audio tessarin_audio;           /**< a recording in memory */
typedef struct tessarin_transcript tessarin_transcript; /**< how one text is said */
typedef struct tessarin_result tessarin_result;         /**< when what was said */
typedef struct tessarin_track tessarin_track;           /**< the mouth, frame by frame */

/** Follows a search, on the thread of the call. Either function may be null. */
typedef struct tessarin_progress {
    void* user;                                      /**< passed on to both */
    void (*on_status)(void* user, const char* text); /**< a phase begins */
    /** `done` of `total` steps are done. Anything but 0 cancels with TESSARIN_CANCELLED. */
    int32_t (*on_progress)(void* user, uint32_t done, uint32_t total);
} tessarin_progress;

/** Flags of tessarin_search_options. */
enum tessarin_search_flags {
    /** An alignment that loses the text slides its window ahead instead of ending. */
    TESSARIN_SEARCH_RETRY = 1
};

/** The form of a script. */
enum tessarin_script_format {
    TESSARIN_AUTO_SCRIPT = 0,     /**< found out by its marks */
    TESSARIN_PLAIN_SCRIPT = 1,    /**< lines as people write them */
    TESSARIN_FOUNTAIN_SCRIPT = 2, /**< a screenplay: only dialogue is said */
    TESSARIN_SUBRIP_SCRIPT = 3,   /**< subtitles, .srt */
    TESSARIN_WEBVTT_SCRIPT = 4,   /**< subtitles, .vtt */
    TESSARIN_TEXTGRID_SCRIPT = 5  /**< the words or the text of a Praat TextGrid */
};

/** Flags of tessarin_script_options. */
enum tessarin_script_flags {
    /** The text is read as it stands, as the classes read it: numbers as numbers, no roles. */
    TESSARIN_SCRIPT_LITERAL = 1,
    /** The times of subtitles divide the text where there is a pause between two. */
    TESSARIN_SCRIPT_CUE_TIMES = 2,
    /** What may be said in several ways is said in the usual one, and unknown words in the
       likeliest; otherwise, in an alignment, the recording chooses. */
    TESSARIN_SCRIPT_ONE_READING = 4
};

/** How a text is read. People write 1905, Dr. and (sighs), and names before lines: what is said of
   that is found out, and what is not said becomes events. */
typedef struct tessarin_script_options {
    uint32_t size;       /**< of this struct, in bytes */
    uint32_t flags;      /**< tessarin_script_flags */
    uint32_t format;     /**< a tessarin_script_format */
    const char* speaker; /**< whose lines are said; null or empty: everybody's */
    const char* table;   /**< entries in the form of data/en-us.script, on top of its own; null */
} tessarin_script_options;

/** How far an alignment trusts its text. */
enum tessarin_match_mode {
    TESSARIN_MATCH_AUTO = 0,  /**< as exact where the text is what was said, else as loose */
    TESSARIN_MATCH_EXACT = 1, /**< all of the text was said and nothing else; nothing is judged */
    TESSARIN_MATCH_LOOSE = 2  /**< words may be missing, and other speech may stand between them */
};

/** Whether a recognition fits the model to the voice of the audio first. It takes another pass over
   the audio, and the model stays as it is. */
enum tessarin_adapt_mode {
    TESSARIN_ADAPT_AUTO = 0, /**< to voices that the model does not know */
    TESSARIN_ADAPT_OFF = 1,
    TESSARIN_ADAPT_ON = 2
};

/** How audio is searched. */
typedef struct tessarin_search_options {
    uint32_t size;       /**< of this struct, in bytes */
    int32_t beam_width;  /**< of an alignment in states, 500 to 8000; 0: 2000 */
    int32_t from_ms;     /**< the stretch of the audio that is searched */
    int32_t to_ms;       /**< 0: to its end */
    uint32_t flags;      /**< tessarin_search_flags; not in the struct of 16 bytes, which is taken,
                              too */
    uint32_t match_mode; /**< of an alignment, a tessarin_match_mode; a struct of 20 or 16 bytes,
                              which is taken, too, stands for TESSARIN_MATCH_EXACT */
    const tessarin_script_options* script; /**< how the text is read; null, or a struct of 24, 20
                                                or 16 bytes, gives the defaults */
    uint32_t adapt_mode; /**< of a recognition, a tessarin_adapt_mode; a struct that ends before
                              stands for TESSARIN_ADAPT_AUTO */
} tessarin_search_options;

/** A sound. */
typedef struct tessarin_phoneme {
    int32_t start_ms; /**< where it begins */
    int32_t end_ms;   /**< where it ends */
    float score;      /**< strength of the sound, 0 to 100; not a confidence */
    char label[8];    /**< zero-terminated; "x" is silence */
} tessarin_phoneme;

/** What a span or a token is. */
enum tessarin_span_kind {
    TESSARIN_WORD = 1,
    TESSARIN_TAG = 2, /**< text in brackets, or a tag */
    TESSARIN_CUT = 3, /**< a tag that divides the text */
    TESSARIN_PUNCTUATION = 4,
    TESSARIN_UNSCRIPTED = 5, /**< speech that is not in the text; its place is where that goes on */
    TESSARIN_SPEAKER = 6,    /**< the name before a line */
    TESSARIN_DIRECTION = 7,  /**< how or where a line is said, in parentheses or by itself */
    TESSARIN_ACTION = 8,     /**< between stars */
    TESSARIN_HEADING = 9     /**< of a scene */
};

/** Flags of a word. */
enum tessarin_word_flags {
    TESSARIN_WORD_EMPHASIS = 1, /**< written in capitals or between stars */
    TESSARIN_WORD_DRAWL = 2     /**< drawn out: with a letter three times or more */
};

/** A word or an event of a text that was aligned. */
typedef struct tessarin_span {
    int32_t kind;        /**< a tessarin_span_kind */
    int32_t start_ms;    /**< where it begins */
    int32_t end_ms;      /**< where it ends */
    int32_t text_offset; /**< place in the text that was given */
    int32_t text_length; /**< in bytes */
    const char* text;    /**< as it was spelled there */
} tessarin_span;

/** A piece of a text with its pronunciation. */
typedef struct tessarin_token {
    int32_t kind;        /**< a tessarin_span_kind */
    int32_t text_offset; /**< place in the text that was given */
    int32_t text_length; /**< in bytes */
    int32_t cut_ms;      /**< the time of a cut, otherwise -1 */
    const char* text;    /**< as it was spelled there */
    const char*
        phonemes; /**< stretches separated by blanks, alternatives within a stretch by bars */
} tessarin_token;

/** A phoneme and its share of the mouth shape. */
typedef struct tessarin_weight {
    char label[4]; /**< of a phoneme, zero-terminated */
    float weight;  /**< 0 to 1 */
} tessarin_weight;

/** The parts of a mouth that a strength is for. */
enum tessarin_mouth_part {
    TESSARIN_VOWELS = 1,
    TESSARIN_CONSONANTS = 2, /**< all but those of lips and teeth */
    TESSARIN_LIPS = 4,       /**< p, b and m */
    TESSARIN_TEETH = 8       /**< f and v */
};

/** How far parts of the mouth leave rest. */
typedef struct tessarin_strength {
    uint32_t parts; /**< tessarin_mouth_part, added up */
    float factor;   /**< 1 is as it is spoken; 0 to 4 */
} tessarin_strength;

/** The constant text of a code; never null. */
TESSARIN_API const char* tessarin_get_error_text(int32_t code);

/** The version of the library, such as "0.1.0". */
TESSARIN_API const char* tessarin_get_version(void);

/** What to say for a character that a code page lacks: the letter without its accent, a plain
   quote, dash or blank; empty for what is not seen, such as a combining accent; null when nothing
   is near. `character` is its number in Unicode. */
TESSARIN_API const char* tessarin_get_near_text(uint32_t character);

/** Reads a model. FILE_NOT_FOUND; INVALID_FILE for what is not a model; OUT_OF_MEMORY. */
TESSARIN_API int32_t tessarin_create_model_from_file(const char* path, tessarin_model** out);

/** The same from the `size` bytes at `data`. */
TESSARIN_API int32_t tessarin_create_model_from_memory(const void* data, uint32_t size,
                                                       tessarin_model** out);

/** Adds statistics of phoneme sequences, which tessarin_create_recognition then uses: lines of one
   to three phonemes written together and a number, which is a count where `are_counts` is not 0. No
   other thread may use the model meanwhile. FILE_NOT_FOUND; INVALID_FILE. */
TESSARIN_API int32_t tessarin_read_model_statistics(tessarin_model* model, const char* path,
                                                    int32_t are_counts);

/** The same from the `size` bytes at `data`. */
TESSARIN_API int32_t tessarin_set_model_statistics(tessarin_model* model, const void* data,
                                                   uint32_t size, int32_t are_counts);

/** Adds limits to the lengths of phonemes: lines of phonemes and milliseconds. Else as
   tessarin_read_model_statistics. */
TESSARIN_API int32_t tessarin_read_model_limits(tessarin_model* model, const char* path);

/** Adds what is known of the model's scores, from the file .calibration beside it: alignments then
   have confidences and a verdict. No other thread may use the model meanwhile. FILE_NOT_FOUND;
   INVALID_FILE; INVALID_ARGUMENT for that of another model. A failure leaves none. */
TESSARIN_API int32_t tessarin_read_model_calibration(tessarin_model* model, const char* path);

/** The same from the `size` bytes at `data`. */
TESSARIN_API int32_t tessarin_set_model_calibration(tessarin_model* model, const void* data,
                                                    uint32_t size);

/** Null is allowed. */
TESSARIN_API void tessarin_free_model(tessarin_model* model);

/** Reads a lexicon file, or a text of lines WORD=phonemes for the built-in English rules.
   FILE_NOT_FOUND; INVALID_FILE; NEWER_VERSION; NOT_AVAILABLE for a form that is not supported. */
TESSARIN_API int32_t tessarin_create_language_from_file(const char* path, tessarin_language** out);

/** The same from the `size` bytes at `data`, which may be none: the built-in rules alone. */
TESSARIN_API int32_t tessarin_create_language_from_memory(const void* data, uint32_t size,
                                                          tessarin_language** out);

/** Has a word of one's own said as `phonemes`, in place of what the lexicon says: alternatives are
   separated by bars, the preferred one first. Calls that have begun keep the words that they know.
   INVALID_ARGUMENT for what is not a word or not phonemes; INVALID_UTF8. */
TESSARIN_API int32_t tessarin_set_word(tessarin_language* language, const char* word,
                                       const char* phonemes);

/** The name of the language; empty when the lexicon has none. */
TESSARIN_API const char* tessarin_get_language_name(const tessarin_language* language);

/** Null is allowed. */
TESSARIN_API void tessarin_free_language(tessarin_language* language);

/** Reads a WAV file of 8, 16 or 24 bits, a Sphere file of little-endian samples, or one that an
   installed reader takes. `channel` counts from 1; 0 is the mean of all. OUT_OF_RANGE for a channel
   that the file does not have; FILE_NOT_FOUND; NOT_AVAILABLE for 24 bits of several channels;
   INVALID_FILE, or another code of its reader. Decode other files yourself. */
TESSARIN_API int32_t tessarin_create_audio_from_file(const char* path, uint32_t channel,
                                                     tessarin_audio** out);

/** Takes a copy of `count` samples of one channel. OUT_OF_RANGE for a rate that is not 1 to 65535
   Hz, and for more than 2^30 samples. */
TESSARIN_API int32_t tessarin_create_audio_from_int16(const int16_t* samples, uint32_t count,
                                                      uint32_t rate_hz, tessarin_audio** out);

/** The same of samples from -1 to 1. What is beyond is held to that, and NaN becomes silence. */
TESSARIN_API int32_t tessarin_create_audio_from_float(const float* samples, uint32_t count,
                                                      uint32_t rate_hz, tessarin_audio** out);

/** The samples, or null when there are none; `*count` receives how many. */
TESSARIN_API const int16_t* tessarin_get_audio_samples(const tessarin_audio* audio,
                                                       uint32_t* count);

/** Samples a second. */
TESSARIN_API uint32_t tessarin_get_audio_rate_hz(const tessarin_audio* audio);

/** Null is allowed. */
TESSARIN_API void tessarin_free_audio(tessarin_audio* audio);

/** Reports how a text is said. INVALID_UTF8. */
TESSARIN_API int32_t tessarin_create_transcript(tessarin_language* language, const char* text,
                                                tessarin_transcript** out);

/** The same with options, which may be null. INVALID_ARGUMENT for an option that does not exist;
   INVALID_FILE for a table that does not read; INVALID_UTF8. */
TESSARIN_API int32_t tessarin_create_script_transcript(tessarin_language* language,
                                                       const char* text,
                                                       const tessarin_script_options* options,
                                                       tessarin_transcript** out);

/** The tokens in order, or null when there are none; `*count` receives how many. */
TESSARIN_API const tessarin_token*
tessarin_get_transcript_tokens(const tessarin_transcript* transcript, uint32_t* count);

/** Null is allowed. */
TESSARIN_API void tessarin_free_transcript(tessarin_transcript* transcript);

/** Finds when each phoneme and word of `text` was spoken. `options` and `progress` may be null.
   RECOGNITION_FAILED when the search loses the text: `*out` then holds what was found before, and
   is the caller's. CANCELLED; INVALID_UTF8; OUT_OF_RANGE for a stretch that is not in the audio. */
TESSARIN_API int32_t tessarin_create_alignment(const tessarin_model* model,
                                               tessarin_language* language,
                                               const tessarin_audio* audio, const char* text,
                                               const tessarin_search_options* options,
                                               const tessarin_progress* progress,
                                               tessarin_result** out);

/** Hears the phonemes without a text. Else as tessarin_create_alignment. */
TESSARIN_API int32_t tessarin_create_recognition(const tessarin_model* model,
                                                 const tessarin_audio* audio,
                                                 const tessarin_search_options* options,
                                                 const tessarin_progress* progress,
                                                 tessarin_result** out);

/** The phonemes in order of time, or null when there are none; `*count` receives how many. */
TESSARIN_API const tessarin_phoneme* tessarin_get_phonemes(const tessarin_result* result,
                                                           uint32_t* count);
/** The words, likewise. */
TESSARIN_API const tessarin_span* tessarin_get_words(const tessarin_result* result,
                                                     uint32_t* count);
/** The tessarin_word_flags of word number `word`, from 0; 0 beyond the last. */
TESSARIN_API uint32_t tessarin_get_word_flags(const tessarin_result* result, uint32_t word);
/** The punctuation, tags, events of the script and other speech, likewise. */
TESSARIN_API const tessarin_span* tessarin_get_events(const tessarin_result* result,
                                                      uint32_t* count);

/** By how much the logarithm of the likelihood of an observation of a recognition grew, on average,
   when the model was fitted to the voice; -1 when it was not. */
TESSARIN_API float tessarin_get_adaptation_gain(const tessarin_result* result);

/** Whether a text belongs to a recording. */
enum tessarin_verdict {
    TESSARIN_MATCH_UNKNOWN = 0,  /**< the model has no calibration, or no word was looked at */
    TESSARIN_MATCH_GOOD = 1,     /**< all of the text was said and nothing else */
    TESSARIN_MATCH_DOUBTFUL = 2, /**< words are missing, other speech was heard, or it fits badly */
    TESSARIN_MATCH_POOR = 3      /**< it is hardly the text of this recording */
};

/** How well a text and a recording fit. */
typedef struct tessarin_match {
    int32_t verdict;       /**< a tessarin_verdict */
    float score;           /**< how likely it is that they belong together, 0 to 1; -1 unknown */
    int32_t is_loose;      /**< 1 when times are those of the search that may leave words out */
    int32_t unscripted_ms; /**< of other speech */
    float margin;          /**< mean of the words' margins, each held to 0 to 100 */
    float fit;             /**< mean over the speech of how much better the text explains it than
                                phonemes heard without a text, as a natural logarithm of the
                                likelihood for each observation: the higher the better, and hardly
                                above 0 */
    float duration;        /**< mean distance of the phonemes' lengths from usual ones, in standard
                                deviations: the lower the better; -1 unknown */
    float spread;          /**< of the scores: 1 for voices that the model knows, up to 2.2 */
} tessarin_match;

/** A word of the text and the evidence for it. */
typedef struct tessarin_word_match {
    int32_t is_said;  /**< 1, or 0 for one that was not heard */
    uint32_t index;   /**< among the words, or among the unsaid words */
    float confidence; /**< how likely it is that it was said there, 0 to 1; -1 unknown */
    float margin;     /**< the evidence for that: how much likelier the audio is with the word than
                           without it, as a natural logarithm, divided by the match's spread; below
                           0 it speaks against the word; -1e9 for a word that was not looked at */
} tessarin_word_match;

/** How well text and audio fit, or null where that was not looked for. */
TESSARIN_API const tessarin_match* tessarin_get_match(const tessarin_result* result);

/** All words of the text in order, or null when there are none or the mode was exact; `*count`
   receives how many. */
TESSARIN_API const tessarin_word_match* tessarin_get_word_matches(const tessarin_result* result,
                                                                  uint32_t* count);

/** The words that were not said, with times of -1; else as tessarin_get_words. */
TESSARIN_API const tessarin_span* tessarin_get_unsaid_words(const tessarin_result* result,
                                                            uint32_t* count);

/** A confidence for each phoneme, 0 to 1: that of its word, or of hearing without a text; -1 for
   silence and where it is unknown. Else as tessarin_get_word_matches. */
TESSARIN_API const float* tessarin_get_phoneme_confidences(const tessarin_result* result,
                                                           uint32_t* count);

/** Null is allowed. */
TESSARIN_API void tessarin_free_result(tessarin_result* result);

/** How quiet stretches are silenced. */
typedef struct tessarin_gate_options {
    uint32_t size;        /**< of this struct, in bytes */
    float threshold_db;   /**< below it is quiet, in dB of full scale; 0: `percentile` decides */
    float percentile;     /**< the share of the audio that is quiet, 0 to 1; 0: 0.28 */
    int32_t ramp_ms;      /**< how long a stretch fades out and in */
    int32_t max_blip_ms;  /**< shorter sounds go with the quiet around them; 0: 150 */
    int32_t min_quiet_ms; /**< how long that quiet is on both sides; 0: 220 */
} tessarin_gate_options;

/** Makes a copy of `audio` whose quiet stretches are silenced, to hear what a gate does before a
   search. `options` may be null; `level_db`, too, else it receives the level below which a stretch
   is quiet. OUT_OF_RANGE for a threshold above 0, a share that is not 0 to 1, or a negative time.
 */
TESSARIN_API int32_t tessarin_create_gated_audio(const tessarin_audio* audio,
                                                 const tessarin_gate_options* options,
                                                 float* level_db, tessarin_audio** out);

typedef struct tessarin_sentence_search tessarin_sentence_search; /**< which sentences were said */

/** A sentence of a text. */
typedef struct tessarin_sentence {
    double score;        /**< how much better it fits than noise, for each 10 ms or so */
    const char* text;    /**< as it was spelled in the text that was given */
    int32_t is_found;    /**< 1, or 0 for one that was not said: its times are -1 */
    int32_t start_ms;    /**< where it begins */
    int32_t end_ms;      /**< where it ends */
    int32_t text_offset; /**< place in the text that was given */
    int32_t text_length; /**< in bytes */
} tessarin_sentence;

/** Finds which sentences of `text` were said, and when, in audio that may hold anything else, too.
   They are looked for in the order of the text. A sentence is found when it scores `min_score`; 0
   stands for 5.5. Of the `options`, flags do not count. CANCELLED; INVALID_UTF8; OUT_OF_RANGE for a
   stretch that is not in the audio, or a score that is not a number; RECOGNITION_FAILED. */
TESSARIN_API int32_t tessarin_create_sentence_search(
    const tessarin_model* model, tessarin_language* language, const tessarin_audio* audio,
    const char* text, float min_score, const tessarin_search_options* options,
    const tessarin_progress* progress, tessarin_sentence_search** out);

/** The sentences in the order of the text, or null when there are none; `*count` receives how many.
 */
TESSARIN_API const tessarin_sentence* tessarin_get_sentences(const tessarin_sentence_search* search,
                                                             uint32_t* count);

/** Null is allowed. */
TESSARIN_API void tessarin_free_sentence_search(tessarin_sentence_search* search);

#include "tessarin/tessarin_c_commands.h"
#include "tessarin/tessarin_c_facts.h"
#include "tessarin/tessarin_c_live.h"
#include "tessarin/tessarin_c_mouth.h"
#include "tessarin/tessarin_c_script.h"
