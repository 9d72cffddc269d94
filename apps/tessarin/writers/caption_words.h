#pragma once

#include <string_view>

/// Titles, whose full stop does not end a sentence and whose name should follow on the line.
inline constexpr std::string_view kTitles[] = {"capt", "dr",   "lt",  "mr",  "mrs",
                                               "ms",   "prof", "rev", "sgt", "st"};

/// Words that open a clause: a line likes to begin with one.
inline constexpr std::string_view kClauseOpeners[] = {
    "after",   "although", "and",   "as",    "because", "before",   "but",   "if",
    "how",     "nor",      "or",    "since", "so",      "than",     "that",  "then",
    "though",  "unless",   "until", "what",  "when",    "whenever", "where", "whereas",
    "whether", "which",    "while", "who",   "whom",    "whose",    "why",   "yet"};

/// Words that open a phrase: a line may begin with one rather than with a noun or a verb.
inline constexpr std::string_view kPrepositions[] = {
    "about",  "above", "across",  "against", "along",   "among", "around", "at",
    "behind", "below", "beside",  "between", "beyond",  "by",    "down",   "during",
    "for",    "from",  "in",      "inside",  "into",    "like",  "near",   "of",
    "on",     "onto",  "outside", "over",    "through", "to",    "toward", "towards",
    "under",  "upon",  "with",    "within",  "without"};

/// Articles and possessives, which never stand without the noun that follows.
inline constexpr std::string_view kArticles[] = {"a",  "an",  "her", "his",   "its",
                                                 "my", "our", "the", "their", "your"};

/// Subjects, auxiliaries and words of degree, which mostly belong to the word that follows.
inline constexpr std::string_view kLeaningWords[] = {
    "am",   "any",   "are",   "be",  "been", "being", "can", "could",  "did",  "do",    "does",
    "each", "every", "had",   "has", "have", "he",    "i",   "is",     "just", "may",   "might",
    "more", "most",  "must",  "no",  "not",  "shall", "she", "should", "some", "there", "these",
    "they", "this",  "those", "too", "very", "was",   "we",  "were",   "will", "would", "you"};

/// Ends of contractions, which lean on the next word like the auxiliary in them.
inline constexpr std::string_view kLeaningEndings[] = {"'d",  "'ll", "'m", "n't",
                                                       "'re", "'s",  "'ve"};
