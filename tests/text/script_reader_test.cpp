#include "text/script/script_reader.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/script/built_in_script.h"
#include "text/script/script_layout.h"

using namespace tessarin;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A lexicon of a few words.
bool IsInLexicon(std::string_view word) {
    static const std::set<std::string, std::less<>> kWords = {
        "no",   "so",   "goal", "hello", "please", "sweet", "what", "is",  "it",
        "move", "nasa", "orc",  "i",     "a",      "beep",  "stop", "you", "mix"};
    return kWords.contains(InLowerCase(word));
}

ScriptReading ReadIt(std::string_view text, const script_options& options = {}) {
    return ReadScript(text, BuiltInEnglishScript(), options, IsInLexicon);
}

/// The words that are said, in lower case.
std::string Said(const ScriptReading& reading) {
    std::string words;
    for (const script_word& word : reading.GetWords()) {
        AddWords(InLowerCase(word.spoken), words);
    }
    return words;
}

std::string Said(std::string_view text, const script_options& options = {}) {
    return Said(ReadIt(text, options));
}

std::string_view At(std::string_view text, script_place place) {
    return text.substr(place.offset, place.length);
}

/// Each event as its kind and its text.
std::vector<std::string> Events(std::string_view text, const script_options& options = {}) {
    constexpr const char* kNames[] = {"", "speaker", "direction", "action", "note", "heading"};
    std::vector<std::string> events;
    const ScriptReading reading = ReadIt(text, options);
    for (const script_event& event : reading.GetEvents()) {
        events.push_back(std::string(kNames[static_cast<int>(event.kind)]) + " " +
                         std::string(At(text, event.place)));
    }
    return events;
}

struct reading_case {
    const char* written;
    const char* spoken;
};

void ExpectSaid(std::initializer_list<reading_case> cases) {
    for (const reading_case& each : cases) {
        EXPECT_EQ(Said(each.written), each.spoken) << each.written;
    }
}

std::vector<std::string> WrittenLines() {
    std::ifstream file(TESSARIN_SOURCE_DIR "/tests/text/script_lines.tsv");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        const size_t tab = line.find('\t');
        if (tab == std::string::npos) {
            continue;
        }
        std::string written = line.substr(0, tab);
        for (size_t at = 0; (at = written.find("\\n", at)) != std::string::npos;) {
            written.replace(at, 2, "\n");
        }
        lines.push_back(written);
    }
    return lines;
}

TEST(ScriptReader, SaysNumbersByTheirKind) {
    ExpectSaid({
        {"in 1905, 2026, 2001 and 1066", "in nineteen oh five twenty twenty six two thousand "
                                         "one and ten sixty six"},
        {"the 1990s, '80s, '67 and 1800s",
         "the nineteen nineties eighties sixty seven and eighteen hundreds"},
        {"3:45 9:00 10:05 p.m. 17:30",
         "three forty five nine uh clock ten oh five p m seventeen thirty"},
        {"12/25/1999", "december twenty fifth nineteen ninety nine"},
        {"1999-12-25", "december twenty fifth nineteen ninety nine"},
        {"Nov. 5th, Nov 5, 5 Nov", "november fifth november fifth the fifth of november"},
        {"11th 12th 21st 125th", "eleventh twelfth twenty first one hundred twenty fifth"},
        {"3/4 1/2 11/10 9 1/2 1½ 24/7", "three quarters one half eleven out of ten nine and a half "
                                        "one and a half twenty four seven"},
        {"3.14 v2.0 3.11.2", "three point one four version two point zero three point eleven point "
                             "two"},
        {"10-20 and 1939-1945", "ten to twenty and nineteen thirty nine to nineteen forty five"},
        {"555-0142 or 9-1-1", "five five five oh one four two or nine one one"},
        {"Room 101, 221B, agent 007", "room one oh one two twenty one b agent double oh seven"},
        {"-5 or +10", "minus five or plus ten"},
        {"12,345,678 4294967297", "twelve million three hundred forty five thousand six hundred "
                                  "seventy eight four billion two hundred ninety four million nine "
                                  "hundred sixty seven thousand two hundred ninety seven"},
        {"a 2 x 4 and a 4x4, 3x daily", "a two by four and a four by four three times daily"},
        {"#1 and 5K", "number one and five k"},
    });
}

TEST(ScriptReader, SaysWhatNumbersCount) {
    ExpectSaid({
        {"$20, $2.50, $1.01, $0.05, $1.00", "twenty dollars two dollars and fifty cents one dollar "
                                            "and one cent five cents one dollar"},
        {"$5M $1.2 billion a $3M deal",
         "five million dollars one point two billion dollars a three million dollar deal"},
        {"€20 £3m 50¢ 20€", "twenty euros three million pounds fifty cents twenty euros"},
        {"5 kg, 1 km, 60 mph, 343 m/s, 6 ft. 7 in. tall",
         "five kilograms one kilometer sixty miles per hour three hundred forty three meters per "
         "second six feet seven inches tall"},
        {"20 km² and 9 sq. ft.", "twenty square kilometers and nine square feet"},
        {"6'2\" and 3' and 1/4\"", "six foot two and three feet and one quarter inches"},
        {"25 °C, 350°F, -40°, a 45° angle",
         "twenty five degrees celsius three hundred fifty degrees fahrenheit minus forty degrees a "
         "forty five degree angle"},
        {"50% of 3.5 %", "fifty percent of three point five percent"},
        {"$9/mo. or 10-km runs", "nine dollars per month or ten kilometer runs"},
        {"\"I have 3\" he said, 'and 6' or 1 in 10", "i have three he said and six or one in ten"},
        {"an 80 lb dog, Mon-Wed", "an eighty pound dog monday to wednesday"},
        {"Look: it's so. Here: 5", "look it's so here five"},
        {"5 ft 2 in tall, $1-2 million, $5-10, 20%-30%",
         "five feet two inches tall one to two million dollars five to ten dollars twenty percent "
         "to thirty percent"},
    });
}

TEST(ScriptReader, SaysAbbreviationsAndLetters) {
    ExpectSaid({
        {"Mr. Smith, Prof. Lang and Sgt. Hill", "mister smith professor lang and sergeant hill"},
        {"St. Aldric's on 1428 Elm St.", "saint aldric's on fourteen twenty eight elm street"},
        {"No. 5 said no.", "number five said no"},
        {"me vs. you, e.g., w/o me", "me versus you e g without me"},
        {"The U.N. met the FBI and NASA", "the u n met the f b i and nasa"},
        {"C-3PO and R2-D2", "c three p o and r two d two"},
        {"Henry VIII in World War II, Chapter IV",
         "henry the eighth in world war two chapter four"},
        {"I am MIX", "i am mix"},
        {"mail help@example.org or www.example.com",
         "mail help at example dot org or w w w dot example dot com"},
        {"Mon.-Fri. at AT&T", "monday to friday at a t and t"},
    });
}

TEST(ScriptReader, KeepsEventsOutOfWhatIsSaid) {
    EXPECT_THAT(
        Events("JOHN (softly): Hi. (beat) Well... *sighs* [door] bye"),
        ElementsAre("speaker JOHN (softly):", "direction (beat)", "action *sighs*", "note [door]"));
    EXPECT_THAT(Events("INT. KITCHEN - NIGHT\nMom?\nCUT TO:\n"),
                ElementsAre("heading INT. KITCHEN - NIGHT", "heading CUT TO:"));
    EXPECT_THAT(Events("SARAH (CONT'D)\nI never loved him."),
                ElementsAre("speaker SARAH (CONT'D)"));
    EXPECT_THAT(Events("Enter HAMLET.\nHAMLET. To be."),
                ElementsAre("direction Enter HAMLET.", "speaker HAMLET."));
    ExpectSaid({
        {"MAN: Hey!\nWOMAN #2: Yes?", "hey yes"},
        {"Step 1: Unplug it. Distance: 4", "step one unplug it distance four"},
        {"my sister (who was there) saw it", "my sister who was there saw it"},
        {"it's *my* turn, <i>mine</i> **now**", "it's my turn mine now"},
        {"an open ( or [ or * or < is read", "an open or or or is read"},
        {"\xE2\x99\xAA la la \xE2\x99\xAA", "la la"},
    });
}

TEST(ScriptReader, MarksStressAndDrawl) {
    const auto flags = [](std::string_view text) {
        std::string all;
        const ScriptReading reading = ReadIt(text);
        for (const script_word& word : reading.GetWords()) {
            all += std::to_string(word.flags);
        }
        return all;
    };
    EXPECT_EQ(flags("I will NEVER stop, *you* know, nooo"), "0010102");
    EXPECT_EQ(flags("ALL OF IT IS LOUD"), "00000"); // a line of capitals stresses no word
    ExpectSaid({
        {"Nooooo Goooooal Pleeease Sweeet helloooo Boooom", "no goal please sweet hello boom"},
        {"Shhhh! Grrrr", "sh gr"},
        {"Y-you, I-I, S-stop, N-no", "yh you i i sce stop nnn no"},
    });
}

TEST(ScriptReader, TakesTheLinesOfOneRole) {
    script_options options;
    options.speaker = "john";
    EXPECT_EQ(Said("JOHN: One.\nMARY: Two.\nJohn: Three,\nfour.\n\nFive.", options),
              "one three four");
    EXPECT_EQ(Said("INT. ROOM\n\nMARY\nOne.\n\nJOHN (V.O.)\nTwo.\n\nHe goes.", options), "two");
}

TEST(ScriptReader, ReadsOnlyDialogueOfAScreenplay) {
    const char* const play = "Title: A Play\nAuthor: Me\n\nEXT. LOT - DAY\n\nA car stops.\n\n"
                             "FRANK\n(low)\nGet in.\nNow.\n\n@McAvoy\nNo.\n\n> FADE OUT.\n";
    script_options options;
    options.format = script_format::kFountain;
    EXPECT_EQ(Said(play, options), "get in now no");
    EXPECT_THAT(Events(play, options),
                ElementsAre("heading EXT. LOT - DAY", "direction A car stops.", "speaker FRANK",
                            "direction (low)", "speaker @McAvoy", "heading > FADE OUT."));
}

TEST(ScriptReader, ReadsSubtitlesWithTheirTimes) {
    const char* const subtitles = "1\r\n00:00:01,500 --> 00:00:02,000\r\n- Where?\r\n- Out.\r\n\r\n"
                                  "2\r\n00:01:00,000 --> 00:01:02,250\r\nBOB: 12 men.\r\n";
    const ScriptReading reading = ReadIt(subtitles);
    EXPECT_EQ(Said(reading), "where out twelve men");
    ASSERT_EQ(reading.GetCues().size(), 2u);
    EXPECT_EQ(reading.GetCues()[1].startMs, 60000);
    EXPECT_EQ(reading.GetCues()[1].endMs, 62250);

    script_options options;
    options.hasCueTimes = true;
    EXPECT_THAT(ReadIt(subtitles, options).GetSpoken(),
                testing::AllOf(testing::HasSubstr("<cut 375> <cut 1125>"),
                               testing::HasSubstr("<cut 2500> <cut 59500>")));
    EXPECT_EQ(Said("WEBVTT\n\nNOTE no\n\nintro\n00:01.000 --> 00:02.000 align:left\n<v Bob>Hi"),
              "hi");
    options.speaker = "Bob";
    EXPECT_EQ(Said("WEBVTT\n\n00:01.000 --> 00:02.000\n<v Ann>Hi\n\n"
                   "00:03.000 --> 00:04.000\n<v Bob>Ho",
                   options),
              "ho");
}

TEST(ScriptReader, ReadsTheWordsOfATextGrid) {
    const std::string head = "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n\n"
                             "xmin = 0\nxmax = 1\ntiers? <exists>\nsize = 2\nitem []:\n";
    const std::string grid =
        head + "item [1]:\nclass = \"IntervalTier\"\nname = \"phones\"\nxmin = 0\nxmax = 1\n"
               "intervals: size = 1\nintervals [1]:\nxmin = 0\nxmax = 1\ntext = \"AH\"\n"
               "item [2]:\nclass = \"IntervalTier\"\nname = \"words\"\nxmin = 0\nxmax = 1\n"
               "intervals: size = 2\nintervals [1]:\nxmin = 0\nxmax = 0.25\ntext = \"\"\n"
               "intervals [2]:\nxmin = 0.25\nxmax = 1\ntext = \"12 men\"\n";
    EXPECT_EQ(Said(grid), "twelve men");
    ASSERT_EQ(ReadIt(grid).GetCues().size(), 1u);
    EXPECT_EQ(ReadIt(grid).GetCues()[0].startMs, 250);
    for (size_t length = 0; length < grid.size(); ++length) {
        ReadIt(std::string_view(grid).substr(0, length)); // a file cut short is read as far
    }
}

TEST(ScriptReader, PassesOnTheTagsOfTranscribers) {
    EXPECT_EQ(ReadIt("one <cut 1500> two <pause>").GetSpoken(), "one <cut 1500> two <pause>\n");
    EXPECT_THAT(ReadIt("<pron say=\"x\"> Dr. who").GetSpoken(),
                testing::StartsWith(" <pron say=\"x\"> Dr. who"));
}

// Every word's place in the text contains what is written for it, and nothing that is written is in
// no place.
TEST(ScriptReader, CoversTheTextWithPlaces) {
    std::vector<std::string> lines = WrittenLines();
    ASSERT_GT(lines.size(), 400u);
    std::string page;
    for (const std::string& line : lines) {
        page += line + "\n\n";
    }
    lines.push_back(page);
    for (const std::string& line : lines) {
        SCOPED_TRACE(line.substr(0, 100));
        if (line.find('<') != std::string::npos && line.size() < 200) {
            continue; // markup has no place
        }
        const ScriptReading reading = ReadIt(line);
        std::vector<bool> isCovered(line.size());
        const auto cover = [&](script_place place) {
            ASSERT_GT(place.length, 0u);
            ASSERT_LE(place.offset + place.length, line.size());
            std::fill_n(isCovered.begin() + place.offset, place.length, true);
        };
        uint32_t end = 0;
        for (const script_word& word : reading.GetWords()) {
            cover(word.place);
            EXPECT_LE(end, word.place.offset);
            end = word.place.offset + word.place.length;
            const std::string written(At(line, word.place));
            const bool isPlain = written.size() > 1 && std::ranges::all_of(written, [](char c) {
                                     return (c >= 'a' && c <= 'z') || c == '\'';
                                 });
            if (isPlain && word.flags == 0 && word.spoken.find(' ') == std::string::npos &&
                !BuiltInEnglishScript().Has(script_section::kAbbreviations, written)) {
                EXPECT_EQ(word.spoken, written);
            }
            EXPECT_FALSE(written.starts_with(' ') || written.ends_with(' ')) << written;
        }
        for (const script_event& event : reading.GetEvents()) {
            cover(event.place);
        }
        for (size_t i = 0; i < line.size(); ++i) {
            const bool isWritten = std::isalnum(static_cast<unsigned char>(line[i])) != 0;
            EXPECT_TRUE(isCovered[i] || !isWritten || page == line) << line.substr(i);
        }
    }
}

TEST(ScriptReader, FindsThePlacesOfWhatItSays) {
    const std::string text = "At 9:05 (beat) Dr. X — paid $5!";
    const ScriptReading reading = ReadIt(text);
    const std::string& spoken = reading.GetSpoken();
    std::vector<std::string> found;
    for (size_t at = 0; at < spoken.size(); ++at) {
        const ScriptReading::source source = reading.FindSource(at, 1);
        const std::string written(At(text, source.place));
        if (!written.empty() && (found.empty() || found.back() != written)) {
            found.push_back(written);
        }
    }
    EXPECT_THAT(found, ElementsAre("At", "9:05", "(beat)", "Dr.", "X", "—", "paid", "$5", "!"));
    const script_place all = reading.FindSource(0, spoken.size()).place;
    EXPECT_EQ(At(text, all), text);
}

TEST(ScriptReader, WarnsOfSymbolsWithoutANameAndReadsAnyBytes) {
    EXPECT_EQ(ReadIt("hi \xF0\x9F\x99\x84 you").GetUnsaid().size(), 1u);
    EXPECT_EQ(Said("hi \xFF\xC3( you \xE2\x82"), "hi you");
    EXPECT_EQ(Said(std::string_view("a\0b", 3)), "a b");
    EXPECT_THAT(ReadIt("").GetWords(), IsEmpty());
}

TEST(ScriptReader, KeepsTheWaysInWhichPeopleSayIt) {
    struct ways {
        const char* written;
        std::vector<std::string> spoken; ///< some of them, the usual one first
    };
    for (const ways& each : std::initializer_list<ways>{
             {"0", {"zero", "oh"}},
             {"100", {"one hundred", "a hundred"}},
             {"101", {"one hundred one", "one oh one", "one hundred and one"}},
             {"Room 101", {"one oh one", "one hundred one"}},
             {"1905", {"nineteen oh five", "nineteen hundred five", "nineteen five"}},
             {"2010", {"twenty ten", "two thousand ten", "two thousand and ten"}},
             {"1,905", {"one thousand nine hundred five", "one thousand nine hundred and five"}},
             {"007", {"double oh seven", "oh oh seven", "zero zero seven", "seven"}},
             {"0.5", {"zero point five", "point five"}},
             {"9:00", {"nine uh clock", "nine"}},
             {"10:05", {"ten oh five", "ten five", "five past ten"}},
             {"12:45", {"twelve forty five", "a quarter to one", "quarter to one"}},
             {"3:30", {"three thirty", "half past three"}},
             {"$2.50", {"two dollars and fifty cents", "two fifty", "two dollars fifty"}},
             {"May 5", {"fifth", "the fifth", "five"}},
         }) {
        const ScriptReading reading = ReadIt(each.written);
        const script_word& word = reading.GetWords().back();
        EXPECT_EQ(word.spoken, each.spoken.front()) << each.written;
        EXPECT_LT(word.others.size(), kMostReadings);
        for (size_t i = 1; i < each.spoken.size(); ++i) {
            EXPECT_THAT(word.others, testing::Contains(each.spoken[i])) << each.written;
        }
        EXPECT_THAT(word.others, testing::Not(testing::Contains(word.spoken)));
    }
    for (const char* const written : {"42", "10-20", "9:00-5", "3rd", "5 kg", "v2.0"}) {
        EXPECT_THAT(ReadIt(written).GetWords()[0].others, IsEmpty()) << written;
    }
}

TEST(ScriptReader, ComparesNamesInAnyCase) {
    script_options options;
    for (const char* const name : {"josé", "José", "JOSÉ"}) {
        options.speaker = name;
        EXPECT_EQ(Said("José: One.\nMary: Two.\nJOSÉ: Three.", options), "one three") << name;
    }
    options.speaker = "ÿñ дёд ςάω ŻŽ";
    EXPECT_EQ(Said("WEBVTT\n\n00:01.000 --> 00:02.000\n<v ŸÑ ДЁД ΣΆΩ żž>Hi", options), "hi");
    // Of a name of any length the beginning counts, cut between characters.
    const std::string name(60, 'x');
    options.speaker = name + "y";
    options.format = script_format::kFountain;
    EXPECT_EQ(Said("\n@" + name + "z\nHi.", options), "hi");
    EXPECT_THAT(Events("\n@(x)\nHi.\n", options), IsEmpty()); // nobody's name
    EXPECT_EQ(SpeakerName(std::string(39, 'x') + "é"), std::string(39, 'X'));
}

TEST(ScriptReader, ReadsCharacterReferencesOfSubtitles) {
    const std::string head = "WEBVTT\n\n00:01.000 --> 00:02.000\n";
    const std::string text = head + "Don&#39;t &lt;go&nbsp;to AT&amp;T &#x2014; &bogus; &#0; R&D";
    const ScriptReading reading = ReadIt(text);
    std::vector<std::string> written;
    for (const script_word& word : reading.GetWords()) {
        written.emplace_back(At(text, word.place));
    }
    EXPECT_THAT(written, ElementsAre("Don&#39;t", "go", "to", "AT", "&amp;", "T", "&", "bogus", "&",
                                     "#", "0", "R", "&", "D"));
    EXPECT_EQ(reading.GetWords()[0].spoken, "Don't");
    EXPECT_EQ(Said("Don&#39;t"), "don and number thirty nine t"); // only subtitles have them
}

TEST(ScriptReader, LeavesOutTheCommentsOfAScreenplay) {
    script_options options;
    options.format = script_format::kFountain;
    const char* const play = "/*/ no\n\nBOB\nnot this\n*/\nBOB\nThis.\n\n/*";
    EXPECT_EQ(Said(play, options), "this");
}

TEST(ScriptTable, TakesEntriesOfOnesOwn) {
    ScriptTable table = BuiltInEnglishScript();
    EXPECT_EQ(table
                  .Add("# mine\r\n#old\tentry\n[units]\r\nlg\tleague\tleagues\r\n"
                       "[symbols]\n#\thash\n[words]\nper\t<a> \"b\"\n")
                  .line,
              0u);
    EXPECT_EQ(Said(ReadScript("20 lg and 5 kg", table, {}, {})),
              "twenty leagues and five kilograms");
    EXPECT_THAT(ReadScript("# 5 kg/s", table, {}, {}).GetSpoken(),
                testing::StartsWith("hash <pron say=\"five kilograms a b second\"> _"));
}

TEST(ScriptTable, SaysWhatIsWrongWithALine) {
    struct wrong_table {
        const char* text;
        size_t line;
        const char* reason;
    };
    for (const wrong_table& each : std::initializer_list<wrong_table>{
             {"[units]\n\n[nonsense]\n", 3, "no section"},
             {"lg\tleague\n", 1, "before the first section"},
             {"[roman]\n123456789012345678901234567890123\n", 2, "32 bytes"},
             {"[units]\n#\n°c\n", 3, "a field after its key"},
             {"[fractions]\n3\tthird\n", 2, "two fields"},
         }) {
        ScriptTable table;
        const script_table_error error = table.Add(each.text);
        EXPECT_EQ(error.line, each.line) << each.text;
        EXPECT_THAT(error.reason, testing::HasSubstr(each.reason));
    }
    EXPECT_EQ(ScriptTable().Add(kBuiltInScripts.english).line, 0u);
}

// A unit without words is not an entry; texts that ask for one are read without it.
TEST(ScriptTable, DoesWithoutAnyEntry) {
    ScriptTable table;
    for (const char* const entry : {"°c", "x/y", "min", "$", "½"}) {
        static_cast<void>(table.Add(std::string("[units]\n") + entry));
        static_cast<void>(table.Add(std::string("[currencies]\n") + entry));
    }
    ASSERT_EQ(table.Add("[units]\nh\thour\nm\tmeter\n[currencies]\n$\tdollar\n").line, 0u);
    for (const char* const text : {"½ °C", "$5/x/y", "5h 3m", "$1.01 1/2 kg 6'2\" 3/4/2026"}) {
        EXPECT_FALSE(ReadScript(text, table, {}, {}).GetSpoken().empty()) << text;
    }
}

} // namespace
