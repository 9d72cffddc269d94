#pragma once

#include <cstdint>

#include "tessarin/acoustic_model.h"
#include "tessarin/export.h"

// What is known of the language can be added to a model, before recognizers use it: statistics of
// phoneme sequences, which serve recognition without a text, and limits to the phonemes' lengths,
// which serve every search. Each of these returns 0; 10 when the file does not open (the text is
// null or its length negative); 2 for a null model; 12 when the text does not fit the model or
// fails to read in the middle; or 1 without memory. After 12 and 1 nothing of the kind is in force.

/// Reads phoneme statistics from a file: pairs of a key and a number, separated by white space. A
/// key is one, two or three phoneme labels written together. With `normalise` the numbers are
/// counts of sequences; otherwise they are weights, or, when the text begins with `version 1`, the
/// numbers of three labels are counts and the others only say what is possible. Keys that the
/// model's labels do not spell are passed over. Replaces statistics that were loaded before.
TESSARIN_API int32_t LoadTrigramFileIntoHMM(tessarin::CAccousticHMM* model, const char* path,
                                            uint8_t normalise);

/// As LoadTrigramFileIntoHMM, from `length` bytes of text.
TESSARIN_API int32_t LoadTrigramIntoHMM(tessarin::CAccousticHMM* model, const char* text,
                                        int32_t length, uint8_t normalise);

/// Reads duration limits from a file: pairs of phoneme labels written together and the longest time
/// that each of those phonemes may last, in whole milliseconds. Replaces limits that were loaded
/// before; an empty text leaves every phoneme without a limit. A label that the model does not have
/// answers 12 and leaves no limit in force. `reserved` has no effect.
TESSARIN_API int32_t LoadPhoneConstraintsFileIntoHMM(tessarin::CAccousticHMM* model,
                                                     const char* path, uint32_t reserved);

/// As LoadPhoneConstraintsFileIntoHMM, from `length` bytes of text.
TESSARIN_API int32_t LoadPhoneConstraintsIntoHMM(tessarin::CAccousticHMM* model, const char* text,
                                                 int32_t length, uint32_t reserved);
