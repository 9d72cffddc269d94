#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tessarin/error_codes.h"

namespace {

constexpr const char* kInternalErrorText =
    "Sorry, the operation could not be completed because an internal error occurred";

// Kept: hosts show these texts and compare them, so their odd wording and missing full stops stay.
TEST(ErrorMessage, TextsAreToTheLetter) {
    const std::map<int32_t, std::string> texts = {
        {0, "No Error"},
        {1, "Out of Memory"},
        {2, "Sorry, the operation could not be completed because an argument was invalid."},
        {3, "Sorry, the operation could not be completed. A specified value was out of range."},
        {5, "User Cancelled"},
        {6, "Sorry, This functionality is not available in this product"},
        {8, "Recognition failed. Please compare the text transcription to the audio file to look "
            "for error. or increase the beam width"},
        {9, "A file could not be opened because it is locked"},
        {10, "A required file could not be found."},
        {11, "A required file could not be opened because it is already open in another "
             "application"},
        {12, "Sorry, the specified audio file is not a valid WAV file"},
        {13, "Sorry, this program cannot work with compressed WAV files"},
        {15, "Sorry, the specified audio file could not be converted because the a system "
             "component is missing"},
        {20, "Sorry, failed to convert text because it is invalid UTF8"},
        {22, "Sorry, the operation could not be completed because an exception occurred."},
    };
    for (int32_t code = -2; code < 40; ++code) {
        SCOPED_TRACE(code);
        const auto known = texts.find(code);
        EXPECT_EQ(GetVisemixErrorMessage(code),
                  known == texts.end() ? std::string(kInternalErrorText) : known->second);
    }
}

} // namespace
