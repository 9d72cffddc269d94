#include "audio/files/audio_file_registry.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/counted_ptr.h"
#include "host_stream.h"
#include "sphere_builder.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"

namespace tessarin {
namespace {

using test::bytes;
using test::HostStream;
using test::SphereFile;
using test::TempFile;
using testing::ElementsAre;

/// A host's reader that answers as a test wants and notes what it is asked.
class HostReader : public IInstallableAudioFileReader {
public:
    virtual ~HostReader() = default;

    uint32_t CanOpen(const char* path) override {
        asked.emplace_back(path);
        return canOpen;
    }
    error_code OpenFile(const char*, IInstallableAudioStream** out) override {
        if (code == kNoError && stream != nullptr) {
            stream->AddRef();
            *out = stream;
        }
        return code;
    }
    int32_t AddRef() override { return ++references; }
    int32_t Release() override { return --references; }

    uint32_t canOpen = 1;
    error_code code = kNoError;
    HostStream* stream = nullptr;
    int32_t references = 0;
    std::vector<std::string> asked;
};

struct AudioFileRegistry : testing::Test {
    ~AudioFileRegistry() override { GetFileFormatList().Remove(nullptr); }

    /// Opens `path` and returns the code; `stream` is what it gave.
    error_code Open(const char* path) {
        CPCMRdrStream* opened = reinterpret_cast<CPCMRdrStream*>(this);
        const error_code code = OpenAudioFileStream(path, &opened);
        EXPECT_EQ(opened != nullptr, code == kNoError);
        stream = counted_ptr<CPCMRdrStream>::Adopt(opened);
        return code;
    }

    error_code OpenContent(const bytes& content, std::string_view suffix) {
        return Open(TempFile(content, suffix).Path());
    }

    HostStream audio{{8000, 16, 1}, bytes(20)};
    HostReader reader;
    counted_ptr<CPCMRdrStream> stream;
    const bytes wav = test::WavFile(16000, 1, std::vector<int16_t>(3));
    const bytes sphere = SphereFile("sample_count -i 5\n", bytes(10));
};

TEST_F(AudioFileRegistry, ChoosesTheReaderByExtension) {
    for (const char* suffix : {".wav", ".WAV", ".Wav", ".tmp", ".TMP"}) {
        SCOPED_TRACE(suffix);
        ASSERT_EQ(OpenContent(wav, suffix), 0);
        EXPECT_EQ(stream->GetNumSamples(), 3u);
    }
    for (const char* suffix : {".wav", ".sph", ".SPH"}) {
        SCOPED_TRACE(suffix);
        ASSERT_EQ(OpenContent(sphere, suffix), 0);
        EXPECT_EQ(stream->GetNumSamples(), 5u);
    }
    EXPECT_EQ(OpenContent(sphere, ".tmp"), 12);
    EXPECT_EQ(OpenContent(wav, ".sph"), 12);
    EXPECT_EQ(OpenContent(wav, ".wave"), 12);
    EXPECT_EQ(OpenContent(wav, ""), 12);
}

TEST_F(AudioFileRegistry, ErrorIsThatOfTheLastAttempt) {
    const bytes compressed =
        test::RiffFile("WAVE", {test::RiffChunk("fmt ", test::PcmFormat(8000, 8, 1, 17)),
                                test::RiffChunk("data", bytes(4))});
    EXPECT_EQ(OpenContent(compressed, ".tmp"), 13);
    EXPECT_EQ(OpenContent(compressed, ".wav"), 12); // the Sphere reader's
    EXPECT_EQ(Open("no-such.tmp"), 4);
    EXPECT_EQ(Open("no-such.wav"), 10);
    EXPECT_EQ(Open("no-such"), 12);
    EXPECT_EQ(Open(nullptr), 2);
    EXPECT_EQ(OpenAudioFileStream("no-such.wav", nullptr), 2);

    GetFileFormatList().Add(&reader);
    reader.code = 7;
    EXPECT_EQ(Open("no-such.wav"), 7);
    reader.code = 0; // but it makes nothing
    EXPECT_EQ(Open("no-such.wav"), 2);
    reader.canOpen = 0x100; // only the low byte counts
    EXPECT_EQ(Open("no-such.wav"), 10);
}

TEST_F(AudioFileRegistry, InstalledReaderServesWhatNoBuiltinTakes) {
    reader.stream = &audio;
    GetFileFormatList().Add(&reader);
    ASSERT_EQ(OpenContent(wav, ".wav"), 0);
    EXPECT_TRUE(reader.asked.empty());
    for (const char* path : {"a.b/speech", "speech", "speech.flac", "missing.wav", "", "."}) {
        SCOPED_TRACE(path);
        reader.asked.clear();
        ASSERT_EQ(Open(path), 0);
        EXPECT_THAT(reader.asked, ElementsAre(path));
        EXPECT_EQ(stream->GetSampleRate(), 8000u << 16);
        EXPECT_EQ(stream->GetNumSamples(), 10u);
        EXPECT_EQ(audio.references, 2); // the stream's own
        stream.reset();
        EXPECT_EQ(audio.references, 1);
    }
}

TEST_F(AudioFileRegistry, AsksReadersInOrderUntilOneOpens) {
    HostReader refusing;
    refusing.canOpen = 0;
    HostReader failing;
    failing.code = 9;
    HostStream unusable({8000, 24, 1}, bytes(20));
    HostReader misfit;
    misfit.stream = &unusable;
    HostReader last;
    reader.stream = &audio;
    for (HostReader* each : {&refusing, &failing, &misfit, &reader, &last}) {
        GetFileFormatList().Add(each);
    }
    ASSERT_EQ(Open("speech.flac"), 0);
    EXPECT_EQ(failing.asked.size(), 1u);
    EXPECT_EQ(unusable.references, 1);
    EXPECT_TRUE(last.asked.empty());
    GetFileFormatList().Remove(&reader);
    last.canOpen = 0;
    EXPECT_EQ(Open("speech.flac"), 12); // of the misfit
    GetFileFormatList().Remove(nullptr);
}

TEST_F(AudioFileRegistry, InstalledTwiceIsAskedTwiceAndRemovedAtOnce) {
    HostReader other;
    reader.code = 9;
    other.code = 9;
    for (HostReader* each : {&reader, &other, &reader}) {
        GetFileFormatList().Add(each);
    }
    GetFileFormatList().Add(nullptr);
    EXPECT_EQ(reader.references, 2);
    Open("x");
    EXPECT_EQ(reader.asked.size(), 2u);
    GetFileFormatList().Remove(&reader);
    EXPECT_EQ(reader.references, 0);
    Open("x");
    EXPECT_EQ(reader.asked.size(), 2u);
    EXPECT_EQ(other.asked.size(), 2u);
    GetFileFormatList().Add(&reader);
    GetFileFormatList().Remove(nullptr);
    EXPECT_EQ(reader.references, 0);
    EXPECT_EQ(other.references, 0);
    EXPECT_EQ(Open("x"), 12);
}

TEST(FileFormatList, ReleasesWhatIsLeftWhenItGoes) {
    HostReader reader;
    {
        file_format_list list;
        list.Add(&reader);
        list.Add(&reader);
    }
    EXPECT_EQ(reader.references, 0);
}

} // namespace
} // namespace tessarin
