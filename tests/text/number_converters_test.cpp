#include "text/spoken.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace tessarin {
namespace {

/// The phonemes of a number that is written out; other words stand for themselves.
std::string Spoken(const std::string& words) {
    static const std::map<std::string, std::string> phonemes = {
        {"zero", "zIHrOW"},
        {"one", "wAHn"},
        {"two", "tUW"},
        {"three", "THrIY"},
        {"four", "fOWr"},
        {"five", "fAYv"},
        {"eight", "EYt"},
        {"eleven", "IYlEHvAHn"},
        {"twelve", "twEHlv"},
        {"thirteen", "THERtIYn"},
        {"nineteen", "nAYntIYn"},
        {"twenty", "twEHntIY"},
        {"forty", "fAOrtIY"},
        {"fifty", "fIHftIY"},
        {"eighty", "EYtIY"},
        {"ninety", "nAYntIY"},
        {"first", "fERst"},
        {"second", "sEHkAHnd"},
        {"third", "THERd"},
        {"fifth", "fIHfTH"},
        {"eleventh", "IYlEHvEHnTH"},
        {"zeroth", "zIHrOWEHTH"},
        {"fourteenth", "fAOrtIYnTH"},
        {"twentieth", "twEHntIYEHTH"},
        {"hundred", "hAHndrEHd"},
        {"hundredth", "hAHndrEHdTH"},
        {"thousand", "THAWzAEnd"},
        {"thousandth", "THAWzAEndTH"},
        {"million", "mIHlIYAHn"},
        {"millionth", "mIHlIYAHnTH"},
        {"billion", "bIHlIYAHn"},
        {"billionth", "bIHlIYAHnTH"},
        {"and", "AEnd"},
        {"point", "pOYnt"},
        {"dollar", "dAAlER"},
        {"dollars", "dAAlAArz"},
        {"cent", "sEHnt"},
        {"cents", "sEHnts"},
        {"minus", "mAYnAHs"},
        {"minusth", "mAHnAHs"},
        {"infinity", "IHnfIHnIHtIY"},
        {"percent", "pERsEHnt"},
        {"stop", "/ x"},
        {"T", "tIY"},
        {"H", "EYtCH"},
        {"S", "EHz"},
        {"K", "kEY"},
        {"M", "EHm"},
    };
    std::string result;
    std::istringstream list(words);
    for (std::string word; list >> word;) {
        const auto found = phonemes.find(word);
        result += (result.empty() ? "" : " ") + (found == phonemes.end() ? word : found->second);
    }
    return result;
}

void ExpectSaid(const std::vector<std::pair<const char*, const char*>>& numbers) {
    for (const auto& [text, words] : numbers) {
        EXPECT_EQ(Said(text), Spoken(words)) << text;
    }
}

TEST(Numbers, AreSaidByHundreds) {
    ExpectSaid({
        {"0", "zero"},
        {"007", "sEHvAHn"},
        {"13", "thirteen"},
        {"40", "forty"},
        {"100", "one hundred"},
        {"101", "one hundred one"},
        {"1000", "one thousand"},
        {"1001", "one thousand and one"},
        {"1099", "one thousand and ninety nAYn"},
        {"1100", "eleven hundred"},
        {"1984", "nineteen hundred eighty four"},
        {"2000", "two thousand"},
        {"2101", "two thousand one hundred one"},
        {"1000000", "one million"},
        {"5000012", "five million and twelve"},
        {"1001000", "one million one thousand"},
        {"2147483647", "two billion one hundred forty sEHvAHn million four hundred eighty three "
                       "thousand sIHks hundred forty sEHvAHn"},
    });
}

TEST(Numbers, SeparatorsStandBeforeDigitsOnly) {
    ExpectSaid({
        {"1,000", "one thousand"},
        {"1,00", "one hundred"},
        {"-5", "x / five"},
        {"3.14", "three point one four"},
        {"3.", "three stop"},
        {"3.5.1", "three point five / x / one"},
        {"50%", "fifty percent"},
        {"5km", "five K M"},
        {"5 k", "five / kEY"},
    });
    EXPECT_EQ(Said("1,"), "wAHn / x");
    EXPECT_EQ(Said("1,,0"), "wAHn / x / x / zIHrOW");
}

TEST(Numbers, WrapAt32Bits) {
    ExpectSaid({
        {"4294967295", "minus one"},
        {"4294967296", "zero"},
        {"2147483648", "minus infinity"},
        {"2147483648th", "minusth infinity"},
        {"4294967295th", "minusth first"},
    });
}

TEST(Ordinals, GoByTheLastDigit) {
    ExpectSaid({
        {"0th", "zeroth"},
        {"1st", "first"},
        {"2nd", "second"},
        {"3RD", "third"},
        {"14th", "fourteenth"},
        {"20th", "twentieth"},
        {"21st", "twenty first"},
        {"22nd", "twenty second"},
        {"1th", "one T H"},
        {"11th", "eleven T H"},
        {"12th", "twelve T H"},
        {"13th", "thirteen T H"},
        {"11ST", "eleventh"},
        {"5ths", "five T H S"},
        {"5th5", "five T H / five"},
        {"1st.", "first stop"},
    });
}

TEST(Ordinals, TakeOrdinalWordsBeforeARest) {
    ExpectSaid({
        {"100th", "one hundredth"},
        {"125th", "one hundredth twenty fifth"},
        {"1000th", "one thousandth"},
        {"1001st", "one thousand and first"},
        {"1100th", "eleven hundredth"},
        {"1000000th", "one millionth"},
        {"1000001st", "one millionth and first"},
        {"1000000000th", "one billionth"},
        {"2000000100th", "two billionth one hundredth"},
    });
}

TEST(Money, HasDollarsAndCents) {
    ExpectSaid({
        {"$1", "one dollar"},
        {"$1.00", "one dollar"},
        {"$2", "two dollars"},
        {"$1.50", "one dollar and fifty cents"},
        {"$2.01", "two dollars and one cent"},
        {"$1.5", "one point five dollars"},
        {"$1.505", "one point five zero five dollars"},
        {"$1,000.", "one thousand dollars stop"},
        {"$", "x"},
        {"$a", "x / EY"},
    });
}

TEST(Numbers, UnitsMayStandBeforeTens) {
    const auto transcriber = EnglishTranscriber();
    TranscriberInfo info = {};
    info.flags = kUnitsBeforeTens;
    transcriber->setTranscriberInfo(&info);
    const auto said = [&](const char* text) {
        return Pronunciation(TokensOf(*transcriber, text).at(0));
    };
    EXPECT_EQ(said("21"), Spoken("one and twenty"));
    EXPECT_EQ(said("20"), Spoken("twenty"));
    EXPECT_EQ(said("21st"), Spoken("first and twenty"));
    EXPECT_EQ(said("20th"), Spoken("twentieth"));
}

} // namespace
} // namespace tessarin
