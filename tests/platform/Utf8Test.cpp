#include "platform/Utf8.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace tq::platform;

TEST(Utf8, EveryCharacterComesBackExceptSurrogates) {
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        char bytes[kMaxUtf8Length + 1] = {};
        char encoded[kMaxUtf8Length];
        const std::size_t length = encodeUtf8(c, encoded);
        std::memcpy(bytes, encoded, length);
        ASSERT_EQ(length, c < 0x80      ? 1U
                          : c < 0x800   ? 2U
                          : c < 0x10000 ? 3U
                                        : 4U)
            << std::hex << static_cast<unsigned>(c);
        char32_t decoded = 0xFFFFFFFF;
        if (c >= 0xD800 && c <= 0xDFFF) {
            ASSERT_EQ(decodeUtf8(bytes, decoded), 0U);
            ASSERT_TRUE(decoded == 0xFFFFFFFF);
        } else {
            ASSERT_EQ(decodeUtf8(bytes, decoded), length) << std::hex << static_cast<unsigned>(c);
            ASSERT_TRUE(decoded == c);
        }
    }
    char encoded[kMaxUtf8Length];
    EXPECT_EQ(encodeUtf8(0x110000, encoded), 0U);
    EXPECT_EQ(encodeUtf8(0xFFFFFFFF, encoded), 0U);
}

TEST(Utf8, MalformedBytesAreRefusedWithoutReadingOn) {
    const std::string rows[] = {"\x80",
                                "\xBF",
                                "\xC3",
                                "\xC3\x41",
                                "\xC0\x80",
                                "\xC1\xBF",
                                "\xE0\x80\x80",
                                "\xE0\x9F\xBF",
                                "\xE4\xB8",
                                "\xE4",
                                "\xED\xA0\x80",
                                "\xF0\x8F\xBF\xBF",
                                "\xF4\x90\x80\x80",
                                "\xF8\x88\x80\x80",
                                "\xFF",
                                "\xF0\x9F\x98"};
    for (const std::string& row : rows) {
        char32_t decoded = 7;
        EXPECT_EQ(decodeUtf8(row.c_str(), decoded), 0U) << testing::PrintToString(row);
        EXPECT_TRUE(decoded == 7);
    }
}

} // namespace
