#include "text/pronunciation/pronunciation_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessarin {
namespace {

using testing::ElementsAre;
using group = PronunciationBuilder::group;

TEST(PronunciationBuilder, LettersRunTogetherAndWordsStandAlone) {
    PronunciationBuilder builder;
    builder.AppendPhonemes("AE", false);
    builder.AppendPhonemes("", false);
    builder.AppendPhonemes("n", false);
    builder.AppendPhonemes("jIY  ", false);
    builder.AppendPhonemes(" ", false);
    builder.AppendPhonemes("d AHb", false);
    EXPECT_THAT(builder.GetGroups(), ElementsAre(group{"AEn"}, group{"jIYdAHb"}));
}

TEST(PronunciationBuilder, AChoiceIsNeverContinued) {
    PronunciationBuilder builder;
    builder.BeginAlternatives();
    builder.CommitAlternatives();
    builder.AddAlternative("AH ");
    builder.AddAlternative("EY");
    builder.CommitAlternatives();
    builder.CommitAlternatives();
    builder.AppendSegment("n", false);
    builder.BeginAlternatives();
    builder.AddAlternative("t");
    builder.CommitAlternatives();
    builder.AppendSegment("s", false);
    EXPECT_THAT(builder.GetGroups(), ElementsAre(group{"AH ", "EY"}, group{"n"}, group{"ts"}));
}

TEST(PronunciationBuilder, BreathMayBeSilent) {
    PronunciationBuilder builder;
    builder.AddBreathAlternatives(false);
    builder.AddBreathAlternatives(true);
    EXPECT_THAT(builder.GetGroups(), ElementsAre(group{"hEY", "hAEhAE", "hUHh", "hEYhEYhEY"},
                                                 group{"hEY", "hAEhAE", "hUHh", "hEYhEYhEY", "x"}));
}

} // namespace
} // namespace tessarin
