#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "base/little_endian.h"
#include "base/log_file.h"
#include "model/accoustic_hmm.h"
#include "support/tiny_model.h"
#include "tessarin/acoustic_model.h"
#include "tessarin/language_constraints.h"

namespace tessarin {
namespace {

using test::ImageOf;
using test::tiny_model;

constexpr std::string_view kUntouched = "as the caller left it";
constexpr const char* kNotAModel = "[01] The Specified model is not a valid model";
constexpr const char* kNewerModel =
    "[02] The Specified model is a newer version than this software supports.";
constexpr const char* kShortModel = "[03] The specified model is not valid. The size of the model "
                                    "is smaller than expected.";

struct creation {
    int32_t code = 0;
    std::string text = std::string(kUntouched);
    std::unique_ptr<CAccousticHMM> model;
};

creation Create(const test::bytes& image) {
    creation result;
    char errorText[kModelErrorTextSize] = {};
    kUntouched.copy(errorText, kUntouched.size());
    CAccousticHMM* model = nullptr;
    result.code =
        CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), errorText, &model);
    result.text = errorText;
    result.model.reset(model);
    return result;
}

/// Offsets into the image of the two-phoneme model below.
constexpr size_t kVersionAt = 4;
constexpr size_t kNumModelsAt = 6;
constexpr size_t kNumStatesAt = 10;
constexpr size_t kNumMixturesAt = 14;
constexpr size_t kDescriptorAt = 18;
constexpr size_t kWindowOverlapAt = kDescriptorAt + 18;
constexpr size_t kNumFeaturesAt = kDescriptorAt + 22;
constexpr size_t kNumBandsAt = kDescriptorAt + 26;
constexpr size_t kFirstModelAt = kDescriptorAt + 38;
constexpr size_t kMixtureBytes = 8 + 4 * 2 + 4 * 2 + 8;
constexpr size_t kModelBytes = 4 + 3 * (2 * kMixtureBytes + 4 * 3);
constexpr size_t kMatrixMarkerAt = kFirstModelAt + 2 * kModelBytes;
constexpr size_t kLabelsAt = kMatrixMarkerAt + 4 + 4 * 6 * 6;

class ModelImage : public testing::Test {
protected:
    ModelImage() { model->phonemeInfo1 = "first"; }

    test::bytes Image() { return ImageOf(*model); }

    template <class T> test::bytes ImageWith(size_t offset, T value) {
        test::bytes image = Image();
        StoreLittleEndian(image.data() + offset, value);
        return image;
    }

    std::unique_ptr<CAccousticHMM> model =
        tiny_model{.labels = {"x", "AA"}, .numMixtures = 2}.Make();
};

TEST_F(ModelImage, StandsAsDescribed) {
    const test::bytes image = Image();
    ASSERT_EQ(image.size(), kLabelsAt + std::string_view("x.AA.first.").size());
    EXPECT_EQ(LoadLittleEndian<uint32_t>(image.data()), 0x7A686D6Du);
    EXPECT_EQ(LoadLittleEndian<int16_t>(&image[kVersionAt]), 1);
    EXPECT_EQ(LoadLittleEndian<int32_t>(&image[kNumModelsAt]), 2);
    EXPECT_EQ(LoadLittleEndian<int32_t>(&image[kNumStatesAt]), 3);
    EXPECT_EQ(LoadLittleEndian<int32_t>(&image[kNumMixturesAt]), 2);
    EXPECT_EQ(LoadLittleEndian<int32_t>(&image[kNumFeaturesAt]), 2);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(&image[kFirstModelAt]), 4), "mmhz");
    const uint8_t* secondMixture = &image[kFirstModelAt + 4 + kMixtureBytes];
    EXPECT_EQ(LoadLittleEndian<double>(secondMixture), 0.5);
    EXPECT_EQ(LoadLittleEndian<float>(secondMixture + 8), 0.125f);
    EXPECT_EQ(LoadLittleEndian<float>(secondMixture + 16), 4.0f);
    const uint8_t* row = secondMixture + kMixtureBytes;
    EXPECT_EQ(LoadLittleEndian<float>(row + 4), 1.0f - 0.6f);
    EXPECT_EQ(LoadLittleEndian<float>(&image[kMatrixMarkerAt + 4 + 4 * 7]), 0.6f);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(&image[kLabelsAt + 2])), "AA");
}

TEST_F(ModelImage, ComesBackAsTheSameBytes) {
    for (const auto& info : {std::optional<std::string>(), std::optional<std::string>("")}) {
        model->phonemeInfo2 = info;
        const test::bytes image = Image();
        const creation read = Create(image);
        ASSERT_EQ(read.code, 0);
        EXPECT_EQ(read.text, kUntouched);
        EXPECT_EQ(ImageOf(*read.model), image);
        const float x[] = {1.0f, 2.0f};
        EXPECT_EQ(read.model->GetStateProbability(x, 4), model->GetStateProbability(x, 4));
    }
    model->phonemeInfo1.reset();
    model->phonemeInfo2.reset();
    EXPECT_EQ(Create(Image()).model->phonemeInfo1, std::nullopt);
}

TEST_F(ModelImage, CutAtAnyByteIsRefusedWithTheTextOfThePlace) {
    const test::bytes image = Image();
    for (size_t size = 0; size < image.size(); ++size) {
        SCOPED_TRACE(size);
        // A copy of its own, so that a read past the end is seen by the address sanitizer.
        const creation read = Create({image.begin(), image.begin() + static_cast<ptrdiff_t>(size)});
        const bool infoOnly = size >= image.size() - std::string_view("first.").size();
        EXPECT_EQ(read.code, infoOnly ? 0 : 12);
        EXPECT_EQ(read.model != nullptr, infoOnly);
        if (size < kVersionAt) {
            EXPECT_EQ(read.text, kNotAModel);
        } else if (size < kDescriptorAt) {
            EXPECT_EQ(read.text, kShortModel);
        } else if (size < kFirstModelAt) {
            EXPECT_EQ(read.text, "");
        } else if (size < kMatrixMarkerAt || infoOnly) {
            EXPECT_EQ(read.text, kUntouched);
        } else {
            EXPECT_EQ(read.text, kShortModel);
        }
    }
}

TEST_F(ModelImage, IsTracedAsItIsRead) {
    const test::TempFile log(".log");
    const test::bytes image = Image();
    ASSERT_GT(OpenLog(log.Path()), 0);
    Create(image);
    CloseLog();
    const std::string read = "Enter: CAccousticHMM::ReadSingleAccModel\n"
                             "Leave: CAccousticHMM::ReadSingleAccModel\n";
    EXPECT_THAT(log.Content(), testing::HasSubstr("Enter: CreateAccHMM\n"
                                                  "Enter: CAccousticHMM::CAccousticHMM\n"
                                                  "Leave: CAccousticHMM::CAccousticHMM\n"
                                                  "Enter: CAccousticHMM::Read\n"
                                                  "HMM Magic 7a686d6d " +
                                                  std::to_string(image.size() - 4) +
                                                  "\n"
                                                  "HMM: Read Features\n" +
                                                  read + read +
                                                  "Read State Transitions\n"
                                                  "Read Labels\n"
                                                  "Read Phoneme Info\n"
                                                  "Leave: CAccousticHMM::Read\n"
                                                  "Leave: CreateAccHMM\n"
                                                  "Enter: CAccousticHMM::~CAccousticHMM\n"
                                                  "Enter: CAccousticHMM::Destroy\n"
                                                  "Leave: CAccousticHMM::Destroy\n"
                                                  "Leave: CAccousticHMM::~CAccousticHMM\n"));
}

TEST_F(ModelImage, SaysWhatIsWrongWithTheHeader) {
    EXPECT_EQ(Create(ImageWith<uint8_t>(0, 'M')).text, kNotAModel);
    EXPECT_EQ(Create(ImageWith<int16_t>(kVersionAt, 2)).text, kNewerModel);
    EXPECT_EQ(Create(ImageWith<int16_t>(kDescriptorAt + 4, 2)).text, "");
    EXPECT_EQ(Create(ImageWith<uint32_t>(kMatrixMarkerAt, 0)).text, kShortModel);
    EXPECT_EQ(Create(ImageWith<uint32_t>(kFirstModelAt, 0)).text, kUntouched);
    for (const size_t offset : {kNumModelsAt, kNumStatesAt}) {
        EXPECT_EQ(Create(ImageWith<int32_t>(offset, 0)).text, kShortModel);
        EXPECT_EQ(Create(ImageWith<int32_t>(offset, -1)).text, kShortModel);
    }
}

TEST_F(ModelImage, RefusesCountsThatItHasNoBytesFor) {
    constexpr int32_t kMany[] = {1 << 16, 1 << 20, std::numeric_limits<int32_t>::max()};
    for (const size_t offset :
         {kNumModelsAt, kNumStatesAt, kNumMixturesAt, kNumFeaturesAt, kNumBandsAt}) {
        for (const int32_t count : kMany) {
            EXPECT_EQ(Create(ImageWith(offset, count)).code, 12) << offset << ", " << count;
        }
    }
    EXPECT_EQ(Create(ImageWith(kNumFeaturesAt, -1)).code, 12);
}

TEST_F(ModelImage, RefusesAnAnalysisOfEverySample) {
    const creation refused = Create(ImageWith<int32_t>(kWindowOverlapAt, 511)); // of 512
    EXPECT_EQ(refused.code, 12);
    EXPECT_EQ(refused.text, "");
}

TEST_F(ModelImage, LoadsWithoutGaussians) {
    for (const int32_t count : {0, -1}) {
        auto empty = tiny_model{.numMixtures = 0}.Make();
        empty->numMixtures = count;
        const creation read = Create(ImageOf(*empty));
        ASSERT_EQ(read.code, 0);
        EXPECT_EQ(read.model->numMixtures, 0);
    }
}

TEST_F(ModelImage, IsNotWrittenWhereThereIsNoPlace) {
    const test::TempFile file;
    EXPECT_FALSE(model->Write((std::string(file.Path()) + "/model").c_str()));
    EXPECT_FALSE(model->Write(nullptr));
}

TEST_F(ModelImage, AHostMayLeaveThingsOut) {
    const test::bytes image = Image();
    CAccousticHMM* out = model.get();
    EXPECT_EQ(CreateAccHMM("xx", 2, nullptr, &out), 12);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(CreateAccHMM(nullptr, 100, nullptr, &out), 12);
    EXPECT_EQ(CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, nullptr), 2);
    DestroyAccHMM(nullptr);
}

TEST_F(ModelImage, LanguageKnowledgeAnswersInOrder) {
    const test::TempFile file(".txt");
    const std::string directory = testing::TempDir();
    EXPECT_EQ(LoadTrigramFileIntoHMM(nullptr, file.Path(), 0), 10);
    EXPECT_EQ(LoadPhoneConstraintsFileIntoHMM(nullptr, directory.c_str(), 0), 10);
    EXPECT_EQ(LoadTrigramIntoHMM(nullptr, "x 1", -1, 0), 10);
    EXPECT_EQ(LoadPhoneConstraintsIntoHMM(nullptr, nullptr, 3, 0), 10);
    EXPECT_EQ(LoadTrigramIntoHMM(nullptr, "x 1", 3, 0), 2);
    EXPECT_EQ(LoadPhoneConstraintsIntoHMM(nullptr, "q 1", 3, 0), 2);
    EXPECT_EQ(LoadPhoneConstraintsIntoHMM(model.get(), "q 1", 3, 0), 12);
    EXPECT_EQ(LoadPhoneConstraintsIntoHMM(model.get(), "AA 90", 5, 0), 0);
    EXPECT_EQ(model->GetPhoneLimitMs("AA"), 30);

    file.Write(test::ByteBuilder().Text("x 3\nAA 1\n").Take());
    EXPECT_EQ(LoadTrigramFileIntoHMM(model.get(), file.Path(), 1), 0);
    EXPECT_EQ(model->unigrams[0], 0.75f);
    EXPECT_EQ(LoadPhoneConstraintsFileIntoHMM(model.get(), file.Path(), 0), 0);
    EXPECT_EQ(model->GetPhoneLimitMs("AA"), -1);
}

} // namespace
} // namespace tessarin
