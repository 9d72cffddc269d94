#include <string>

#include <gtest/gtest.h>

#include "host/shipped_data.h"
#include "tessarin/tessarin.h"

namespace {

TEST(CommandFactories, AnswerWhatIsMissing) {
    const shipped_model shipped;
    auto* controller = reinterpret_cast<tessarin::IQuibCmdCtrl*>(1);
    EXPECT_EQ(CreateQuibCmdCtrl(nullptr, shipped.model, 0.0f, nullptr), 1);
    EXPECT_EQ(CreateQuibCmdCtrl(nullptr, nullptr, 0.0f, &controller), 2);
    EXPECT_EQ(controller, nullptr);
    auto* acoustic = reinterpret_cast<tessarin::IQuibAcousticCmdCtrl*>(1);
    EXPECT_EQ(CreateQuibAcousticCmdCtrl(nullptr, shipped.model, 0.0f, nullptr), 1);
    EXPECT_EQ(CreateQuibAcousticCmdCtrl(nullptr, nullptr, 0.0f, &acoustic), 2);
    EXPECT_EQ(acoustic, nullptr);
}

TEST(CommandFactories, MakeAControllerOfText) {
    const shipped_model shipped;
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    ASSERT_EQ(CreateDefaultTranscriber(nullptr, 0, &transcriber), 0);
    tessarin::IQuibCmdCtrl* controller = nullptr;
    ASSERT_EQ(CreateQuibCmdCtrl(nullptr, shipped.model, 0.0f, &controller), 0);
    controller->AddRef();
    EXPECT_EQ(controller->AddCommandFromTranscriber("You are about to enter", transcriber), 1u);
    EXPECT_EQ(controller->AddCommandFromPhonemes("yEHs"), 2u);
    EXPECT_EQ(controller->Release(), 0);
    DestroyTranscriber(transcriber);
}

TEST(CommandFactories, MakeAControllerOfSamples) {
    const shipped_model shipped;
    tessarin::IQuibAcousticCmdCtrl* controller = nullptr;
    ASSERT_EQ(CreateQuibAcousticCmdCtrl(nullptr, shipped.model, 0.0f, &controller), 0);
    controller->AddRef();
    const tessarin::PCMFormat format{16000u << 16, 16, 1};
    EXPECT_EQ(controller->BeginUtterance(&format), 0);
    EXPECT_EQ(controller->RecognizeLive(true, nullptr), 0u);
    EXPECT_EQ(controller->Release(), 0);
}

} // namespace
