#include "reference/GuardedBuffer.h"

#include <TqOsBase/crtcompat/SecureFunctions.h>

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

constexpr wchar_t kUntouched = L'#';
const std::wstring kText = L"abcdefgh";

TEST(MemcpyS, EverySizeAndCount) {
    reference::GuardedBuffer<char> destination(16);
    reference::GuardedBuffer<char> source(16);
    for (std::size_t size = 0; size <= 6; ++size) {
        for (std::size_t count = 0; count <= 8; ++count) {
            for (const bool hasSource : {true, false}) {
                char* dst = destination.last(size);
                std::fill_n(dst, size, '#');
                const int result = memcpy_s(dst, size, hasSource ? source.place("abcdefgh", count) : nullptr, count);
                const bool fails = count > 0 && (!hasSource || size < count);
                std::string expected(size, fails ? '\0' : '#');
                if (!fails)
                    expected.replace(0, count, "abcdefgh", count);
                EXPECT_EQ(std::string(dst, size), expected) << size << " " << count << " " << hasSource;
                const auto address = static_cast<int>(reinterpret_cast<std::uintptr_t>(dst));
                EXPECT_EQ(result, fails ? -1 : count == 0 ? 0 : address);
            }
        }
    }
    EXPECT_EQ(memcpy_s(nullptr, 4, "abcd", 4), -1);
    EXPECT_EQ(memcpy_s(nullptr, 4, "abcd", 0), 0);
}

// The same through both names: the four-argument wcsncpy_s is this copy.
TEST(WmemcpyS, EverySizeCountAndLength) {
    reference::GuardedBuffer<wchar_t> destination(16);
    reference::GuardedBuffer<wchar_t> source(16);
    for (std::size_t size = 0; size <= 5; ++size) {
        for (std::size_t count = 0; count <= 7; ++count) {
            for (std::size_t length = 0; length <= 7; ++length) {
                for (const bool asString : {false, true}) {
                    wchar_t* dst = destination.last(size);
                    std::fill_n(dst, size, kUntouched);
                    const std::wstring text = kText.substr(0, length);
                    const wchar_t* src = source.place(text.c_str(), length + 1);
                    const int result = asString ? wcsncpy_s(dst, static_cast<int>(size), src, static_cast<int>(count))
                                                : wmemcpy_s(dst, size, src, count);
                    const bool isTooLong = count > size && length > size;
                    std::wstring expected = isTooLong ? L"" : text.substr(0, count);
                    expected.resize(size);
                    EXPECT_EQ(result, isTooLong ? -1 : 0) << size << " " << count << " " << length;
                    EXPECT_EQ(std::wstring(dst, size), expected) << size << " " << count << " " << length;
                }
            }
            // No terminator at all: nothing is read behind what may be copied, or one character more.
            const std::size_t readable = std::min(count, size + 1);
            const int result = wmemcpy_s(destination.last(size), size, source.place(kText.c_str(), readable), count);
            EXPECT_EQ(result, count > size ? -1 : 0) << size << " " << count;
        }
        wchar_t* dst = destination.last(size);
        std::fill_n(dst, size, kUntouched);
        EXPECT_EQ(wmemcpy_s(dst, size, nullptr, 0), -1);
        EXPECT_EQ(std::wstring(dst, size), std::wstring(size, L'\0'));
    }
    EXPECT_EQ(wmemcpy_s(nullptr, 4, L"ab", 2), -1);
}

TEST(WideStringCopies, AreThoseOfTheCLibrary) {
    reference::GuardedBuffer<wchar_t> destination(16);
    for (int size = 0; size <= 8; ++size) {
        for (const bool isCount : {false, true}) {
            const auto room = static_cast<std::size_t>(size);
            wchar_t* dst = destination.last(room);
            std::fill_n(dst, room, kUntouched);
            EXPECT_EQ(isCount ? wcsncpy_s(dst, L"abcd", size) : wcscpy_s(dst, size, L"abcd"), 0);
            std::wstring expected = kText.substr(0, std::min<std::size_t>(room, 4));
            expected.resize(room); // no terminator when the text fills it
            EXPECT_EQ(std::wstring(dst, room), expected);
        }
    }
    wchar_t* dst = destination.last(5);
    EXPECT_EQ(wcscpy_s(dst, L"abcd"), 0);
    EXPECT_STREQ(dst, L"abcd");
    EXPECT_EQ(wcscpy_s(dst, -1, L"x"), -1);
    EXPECT_EQ(wcsncpy_s(dst, L"x", -1), -1);
    EXPECT_EQ(wcsncpy_s(dst, -1, L"x", 1), -1);
    EXPECT_EQ(wcsncpy_s(dst, 5, L"x", -1), -1);
    EXPECT_EQ(wcscpy_s(dst, nullptr), -1);
    EXPECT_EQ(wcscpy_s(dst, 5, nullptr), -1);
    EXPECT_STREQ(dst, L"abcd") << "refused calls write nothing";
}

} // namespace
