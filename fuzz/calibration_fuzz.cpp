#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "recognition/loose/calibration.h"
#include "support/tiny_model.h"

using namespace tessarin;

/// The calibration of a model, after the lines that every one has: what reads gives confidences.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static CAccousticHMM* model = test::tiny_model{}.Make().release();
    char head[64];
    std::snprintf(head, sizeof(head), "tessarin calibration 1\nmodel %llx\n",
                  static_cast<unsigned long long>(ModelFingerprint(*model)));
    const std::string text = head + std::string(reinterpret_cast<const char*>(data), size);
    std::optional<calibration> read;
    if (calibration::Read(text, *model, read) != kNoError) {
        return 0;
    }
    const float confidence = read->WordConfidence(10.0);
    match_summary summary{};
    summary.words = 1;
    const float score = read->FileScore(summary);
    static_cast<void>(read->Verdict(score, false));
    static_cast<void>(read->DurationDistance(1, 80.0));
    if (!(confidence >= 0.0f && confidence <= 1.0f && score >= 0.0f && score <= 1.0f)) {
        std::abort();
    }
    return 0;
}
