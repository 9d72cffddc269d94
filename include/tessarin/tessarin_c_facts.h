#pragma once

/** @file
 * What models, lexicons and recordings hold. Part of tessarin_c.h.
 */

#include "tessarin/tessarin_c.h"

/** What a model holds. */
typedef struct tessarin_model_facts {
    int32_t version;           /**< of its form */
    int32_t num_phonemes;      /**< the number of `labels` */
    int32_t num_states;        /**< of a phoneme */
    int32_t num_mixtures;      /**< of a state */
    int32_t num_features;      /**< values of an observation */
    int32_t num_cepstra;       /**< that they are made from */
    int32_t num_bands;         /**< of the filter bank */
    uint32_t flags;            /**< of the analysis */
    int32_t window_size;       /**< of an observation, in samples */
    int32_t window_overlap;    /**< of one with the next, in samples */
    float rate_hz;             /**< to which audio is brought */
    float pre_emphasis;        /**< of the samples, 0 to 1 */
    const char* const* labels; /**< of the phonemes */
} tessarin_model_facts;

/** What the model holds, or null without a model. */
TESSARIN_API const tessarin_model_facts* tessarin_get_model_facts(const tessarin_model* model);

/** How phonemes can be written. The labels are what the library itself reads and writes. */
enum tessarin_alphabet {
    TESSARIN_LABELS = 0,  /**< forty symbols: b, CH, AA ... */
    TESSARIN_IPA = 1,     /**< of the International Phonetic Association, in UTF-8 */
    TESSARIN_ARPABET = 2, /**< as in the CMU pronouncing dictionary, without stress */
    TESSARIN_SAMPA = 3    /**< of English */
};

/** The label of phoneme number `index`, from 0 to 39; null beyond the last. The first is silence.
 */
TESSARIN_API const char* tessarin_get_phoneme_label(uint32_t index);

/** How a phoneme, given by its label, is written in an alphabet of tessarin_alphabet; null when
   either is not known. Silence is `(.)` in IPA, `SIL` in ARPAbet and `_` in SAMPA. */
TESSARIN_API const char* tessarin_get_phoneme_symbol(const char* label, uint32_t alphabet);

typedef struct tessarin_lexicon tessarin_lexicon; /**< a lexicon file that was looked into */

/** What a lexicon file says of itself and holds. */
typedef struct tessarin_lexicon_facts {
    int32_t version;         /**< of its form */
    int32_t rules_version;   /**< of the form of its rules */
    uint32_t language;       /**< primary language number: 9 English, 7 German, 12 French ... */
    uint32_t code_page;      /**< of its words and rules; 0 when it is not known */
    uint32_t flags;          /**< transcriber_info_flags of transcriber.h */
    uint32_t entry_count;    /**< pronunciations */
    uint32_t word_count;     /**< that these are of, without regard to the case of A to Z */
    uint32_t rule_count;     /**< for words that are not in it; 0 with a tree */
    uint32_t leaf_count;     /**< of the decision tree for such words; 0 without one */
    int32_t has_tree;        /**< 1 when such words go through a decision tree, else 0 */
    const char* name;        /**< of the language; these texts are empty when the file has none */
    const char* locale;      /**< that it works under */
    const char* comment;     /**< for people */
    const char* information; /**< for programs */
} tessarin_lexicon_facts;

/** Looks into a lexicon file, also into one whose form tessarin_create_language_from_file does not
   support. FILE_NOT_FOUND; INVALID_FILE, also for a text of words; NEWER_VERSION. */
TESSARIN_API int32_t tessarin_create_lexicon_from_file(const char* path, tessarin_lexicon** out);

/** The same from the `size` bytes at `data`. */
TESSARIN_API int32_t tessarin_create_lexicon_from_memory(const void* data, uint32_t size,
                                                         tessarin_lexicon** out);

/** What the lexicon holds, or null without a lexicon. */
TESSARIN_API const tessarin_lexicon_facts*
tessarin_get_lexicon_facts(const tessarin_lexicon* lexicon);

/** Null is allowed. */
TESSARIN_API void tessarin_free_lexicon(tessarin_lexicon* lexicon);

/** What a recording is like, before anything is looked for in it. Levels are in dB of full scale,
    -100 to 0. */
typedef struct tessarin_audio_facts {
    int32_t duration_ms;      /**< its length in whole milliseconds */
    uint32_t rate_hz;         /**< samples a second */
    float level_db;           /**< of the speech: the mean power of all 10 ms that are at most 25 dB
                                   below the loud ones */
    float noise_db;           /**< of the pauses: what the quietest tenth stays below */
    float peak_db;            /**< of the largest sample */
    uint32_t clip_count;      /**< how often the wave is cut off at its top or its bottom */
    uint32_t clipped_samples; /**< how many samples that are */
} tessarin_audio_facts;

/** Measures a recording. INVALID_ARGUMENT without one. */
TESSARIN_API int32_t tessarin_measure_audio(const tessarin_audio* audio, tessarin_audio_facts* out);

/** Whether the lexicon has a word, or the words of tessarin_set_word do: `*out` receives 1, or 0
   for one that is said by rules, or by the tree for words that no lexicon has. INVALID_UTF8. */
TESSARIN_API int32_t tessarin_has_word(tessarin_language* language, const char* word, int32_t* out);
