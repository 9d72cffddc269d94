#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::Ge;
using testing::Le;

constexpr int kSamplesPerMs = 16;

/// The silence of the demo recording between "In this mode" and "everything you say".
constexpr int kPauseStart = 3540;
constexpr int kPauseEnd = 3775;
constexpr int kInPause = 3600;

std::string DemoWords() {
    std::string text = ReadFile(DemoText());
    text.resize(text.find_last_not_of('\n') + 1);
    return text;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

/// What a tag does shows in the search that believes all of the text.
json Align(const std::string& recording, const std::string& text) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("text.txt"), text);
    const tool_run run =
        RunTool("align -q --match exact " + recording + " --text-file " + scratch.Path("text.txt"));
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    return json::parse(run.output);
}

/// The entry of a list whose text begins so.
json Find(const json& list, const std::string& text) {
    for (const json& entry : list) {
        if (entry["text"].get<std::string>().starts_with(text)) {
            return entry;
        }
    }
    ADD_FAILURE() << text << " is not there";
    return {{"start_ms", -1}, {"end_ms", -1}};
}

int Start(const json& entry) {
    return entry["start_ms"];
}

int End(const json& entry) {
    return entry["end_ms"];
}

/// The phonemes that were heard within a word or an event.
std::string Heard(const json& result, const json& entry) {
    std::string labels;
    for (const json& phoneme : result["phonemes"]) {
        if (Start(phoneme) >= Start(entry) && End(phoneme) <= End(entry)) {
            labels += phoneme["label"];
        }
    }
    return labels;
}

TEST(Tags, ACutSplitsTheWork) {
    // The second sentence of the recording is not in the text: only the cut says where to go on.
    const std::string text = DemoWords();
    const std::string first = text.substr(0, text.find("In this mode"));
    const std::string last = text.substr(text.find("The purpose"));
    const json whole = Align(DemoRecording(), text);
    const json parted = Align(DemoRecording(), first + "<cut 8100> " + last);
    const json lost = Align(DemoRecording(), first + last);
    for (const char* word : {"purpose", "latency", "machine", "hanging"}) {
        SCOPED_TRACE(word);
        const int known = Start(Find(whole["words"], word));
        EXPECT_NEAR(Start(Find(parted["words"], word)), known, 30);
        EXPECT_LT(Start(Find(lost["words"], word)), known - 1000);
    }

    // A cut in the wrong place is believed.
    const json late =
        Align(DemoRecording(), Replaced(text, "The purpose", "<cut 9000> The purpose"));
    EXPECT_LE(End(Find(late["words"], "received")), 9010);
    EXPECT_GE(Start(Find(late["words"], "The")), 8990);
}

TEST(Tags, APronTagChangesWhatIsAligned) {
    const json plain = Align(DemoRecording(), DemoWords());
    const json tagged =
        Align(DemoRecording(), Replaced(DemoWords(), "In this", "In <pron say=\"these\"> this"));
    EXPECT_EQ(Heard(plain, Find(plain["words"], "this")), "DHIHs");
    EXPECT_EQ(Heard(tagged, Find(tagged["words"], "this")), "DHIYz");
    EXPECT_NEAR(Start(Find(tagged["words"], "this")), Start(Find(plain["words"], "this")), 30);
}

TEST(Tags, APauseMustBePassedThrough) {
    const std::string text = DemoWords();
    const json real = Align(DemoRecording(), Replaced(text, "mode every", "mode <pause> every"));
    const json silence = Find(real["events"], "<pause>");
    EXPECT_NEAR(Start(silence), kPauseStart, 30);
    EXPECT_NEAR(End(silence), kPauseEnd, 30);
    EXPECT_EQ(Heard(real, silence), "xx");

    // Where nobody pauses it takes the least that its two silences can: three states each.
    const json forced = Align(DemoRecording(), Replaced(text, "this mode", "this <pause> mode"));
    EXPECT_EQ(Heard(forced, Find(forced["events"], "<pause>")), "xx");
    EXPECT_THAT(End(Find(forced["events"], "<pause>")) - Start(Find(forced["events"], "<pause>")),
                AllOf(Ge(60), Le(80)));
}

using samples = std::vector<int16_t>;

/// Sounds of the demo recording, to make others of.
class DemoSounds {
public:
    samples Between(int startMs, int endMs) const {
        return {all.begin() + startMs * kSamplesPerMs, all.begin() + endMs * kSamplesPerMs};
    }
    /// The first syllable of "hanging".
    samples Ha() const { return Between(19075, 19235); }
    samples Silence() const { return Between(3560, 3700); }

    /// Writes the recording with other sounds in its pause after "mode".
    void Write(const std::string& path, const std::vector<samples>& inserted) const {
        samples made = Between(0, kInPause);
        for (const samples& sound : inserted) {
            made.insert(made.end(), sound.begin(), sound.end());
        }
        made.insert(made.end(), all.begin() + kInPause * kSamplesPerMs, all.end());
        WriteWav(path, made);
    }

private:
    samples all = SamplesOf(ReadFile(DemoRecording()));
};

TEST(Tags, OfLaughsTheAudioChooses) {
    const DemoSounds sounds;
    const ScratchFolder scratch;
    const std::string path = scratch.Path("laughing.wav");
    for (const int laughs : {1, 3, 5}) {
        SCOPED_TRACE(laughs);
        std::vector<samples> inserted;
        std::string expected;
        for (int count = 0; count < laughs; ++count) {
            inserted.push_back(sounds.Silence());
            inserted.push_back(sounds.Ha());
            expected += "hAHx";
        }
        inserted.push_back(sounds.Silence());
        sounds.Write(path, inserted);
        const json result = Align(path, Replaced(DemoWords(), "mode every", "mode <laugh> every"));
        EXPECT_EQ(Heard(result, Find(result["events"], "<laugh>")), expected);
    }
}

TEST(Tags, OfBreathsTheAudioChooses) {
    const DemoSounds sounds;
    const ScratchFolder scratch;
    const std::string path = scratch.Path("breathing.wav");
    const std::string tagged = Replaced(DemoWords(), "mode every", "mode <breath> every");
    const std::string automatic =
        "<auto-breath-detection> " + Replaced(DemoWords(), "mode every", "mode, every");
    sounds.Write(path, {sounds.Silence(), sounds.Ha(), sounds.Silence()});
    const json one = Align(path, tagged);
    EXPECT_EQ(Heard(one, Find(one["events"], "<breath>")), "hEY");

    sounds.Write(path, {sounds.Silence(), sounds.Ha(), sounds.Ha(), sounds.Silence()});
    const json two = Align(path, tagged);
    EXPECT_EQ(Heard(two, Find(two["events"], "<breath>")), "hAEhAE");
    const json found = Align(path, automatic);
    EXPECT_EQ(Heard(found, Find(found["events"], ",")), "xhAEhAE");
    EXPECT_EQ(Heard(found, Find(found["events"], ".")), "xx") << "nobody breathes here";

    const json without = Align(DemoRecording(), automatic);
    EXPECT_EQ(Heard(without, Find(without["events"], ",")), "xx");
}

} // namespace
