#include "reference/GuardedBuffer.h"

#include <TqOsBase/crtcompat/SecureFunctions.h>

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

const std::wstring kText = L"abcdefgh";

// `size` characters that border on a guard, all number signs.
wchar_t* freshRoom(std::size_t size) {
    static reference::GuardedBuffer<wchar_t> room(16);
    return std::fill_n(room.last(size), size, L'#') - size;
}

TEST(MemcpyS, EverySizeAndCount) {
    reference::GuardedBuffer<char> destination(16);
    reference::GuardedBuffer<char> source(16);
    for (std::size_t size = 0; size <= 6; ++size) {
        for (std::size_t count = 0; count <= 8; ++count) {
            for (const bool hasSource : {true, false}) {
                char* dst = std::fill_n(destination.last(size), size, '#') - size;
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
}

// The four-argument wcsncpy_s is the same copy.
TEST(WmemcpyS, EverySizeCountAndLength) {
    reference::GuardedBuffer<wchar_t> source(16);
    for (std::size_t size = 0; size <= 5; ++size) {
        for (std::size_t count = 0; count <= 7; ++count) {
            for (std::size_t length = 0; length <= 7; ++length) {
                const std::wstring text = kText.substr(0, length);
                const bool isTooLong = count > size && length > size;
                std::wstring expected = isTooLong ? L"" : text.substr(0, count);
                expected.resize(size);
                const wchar_t* src = source.place(text.c_str(), length + 1);
                wchar_t* dst = freshRoom(size);
                EXPECT_EQ(wmemcpy_s(dst, size, src, count), isTooLong ? -1 : 0);
                EXPECT_EQ(std::wstring(dst, size), expected) << size << " " << count << " " << length;
                dst = freshRoom(size);
                EXPECT_EQ(wcsncpy_s(dst, static_cast<int>(size), src, static_cast<int>(count)), isTooLong ? -1 : 0);
                EXPECT_EQ(std::wstring(dst, size), expected) << size << " " << count << " " << length;
            }
            // No terminator at all: nothing is read after what may be copied, or one character more.
            const wchar_t* src = source.place(kText.c_str(), std::min(count, size + 1));
            EXPECT_EQ(wmemcpy_s(freshRoom(size), size, src, count), count > size ? -1 : 0) << size << " " << count;
        }
    }
    wchar_t* dst = freshRoom(3);
    EXPECT_EQ(wmemcpy_s(dst, 3, nullptr, 0), -1);
    EXPECT_EQ(std::wstring(dst, 3), std::wstring(3, L'\0'));
    EXPECT_EQ(wmemcpy_s(nullptr, 4, L"ab", 2), -1);
}

TEST(WideStringCopies, AreThoseOfTheCLibrary) {
    for (int size = 0; size <= 8; ++size) {
        const auto room = static_cast<std::size_t>(size);
        std::wstring expected = kText.substr(0, std::min<std::size_t>(room, 4));
        expected.resize(room); // no terminator when the text fills it
        wchar_t* dst = freshRoom(room);
        EXPECT_EQ(wcsncpy_s(dst, L"abcd", size), 0);
        EXPECT_EQ(std::wstring(dst, room), expected);
        dst = freshRoom(room);
        EXPECT_EQ(wcscpy_s(dst, size, L"abcd"), 0);
        EXPECT_EQ(std::wstring(dst, room), expected);
    }
    wchar_t* dst = freshRoom(5);
    EXPECT_EQ(wcscpy_s(dst, L"abcd"), 0);
    for (const int refused : {wcscpy_s(dst, -1, L"x"), wcsncpy_s(dst, L"x", -1), wcsncpy_s(dst, -1, L"x", 1),
                              wcsncpy_s(dst, 5, L"x", -1), wcscpy_s(dst, nullptr), wcscpy_s(dst, 5, nullptr)})
        EXPECT_EQ(refused, -1);
    EXPECT_STREQ(dst, L"abcd") << "refused calls write nothing";
}

} // namespace
