#include "base/module_resource.h"

#include <gtest/gtest.h>

#include <string>

extern "C" {
__attribute__((visibility("default"))) extern const char tessarin_text_greeting[];
__attribute__((visibility("default"))) extern const uint32_t tessarin_text_greeting_size;
const char tessarin_text_greeting[] = "hello";
const uint32_t tessarin_text_greeting_size = 5;
}

namespace tessarin {
namespace {

TEST(LoadModuleResource, FindsWhatTheProgramCarries) {
    for (const bool copy : {false, true}) {
        int32_t size = 0;
        const resource_bytes bytes = LoadModuleResource(nullptr, "text", "greeting", &size, copy);
        ASSERT_NE(bytes, nullptr);
        EXPECT_EQ(std::string(bytes.get(), bytes.get() + size), "hello");
        EXPECT_EQ(bytes.get() != reinterpret_cast<const uint8_t*>(tessarin_text_greeting), copy);
    }
}

TEST(LoadModuleResource, IsNullForWhatIsNotThere) {
    int32_t size = 7;
    EXPECT_EQ(LoadModuleResource(nullptr, "text", "farewell", &size, true), nullptr);
    EXPECT_EQ(LoadModuleResource("libnowhere.so", "text", "greeting", &size, true), nullptr);
    EXPECT_EQ(LoadModuleResource(nullptr, nullptr, "greeting", &size, true), nullptr);
    EXPECT_EQ(size, 7);
}

} // namespace
} // namespace tessarin
