#pragma once

/// \file
/// GoogleTest, the public headers, and what the tests share: folders, locales, and memory that ends at a guard page.

#include <TqOsBase/TqOsBase.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwctype>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <tuple>
#include <unistd.h> // mkdtemp, on macOS
#include <utility>
#include <vector>

namespace reference {

#if defined(__APPLE__)
/// A locale of this system whose encoding is UTF-8, for all categories.
inline constexpr const char* kUtf8Locale = "en_US.UTF-8";
/// The one that the library makes the process's own, for characters alone.
inline constexpr const char* kUtf8Characters = "UTF-8";
#else
inline constexpr const char* kUtf8Locale = "C.UTF-8";
inline constexpr const char* kUtf8Characters = "C.UTF-8";
#endif

/// A fresh folder that goes with the object. Whatever was opened or mapped meanwhile must be closed by then.
class TempFolder {
public:
    TempFolder() {
        ::close(m_nextDescriptor);
        std::string pattern = (std::filesystem::temp_directory_path() / "tqtestXXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_path = pattern;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        EXPECT_EQ(::dup(STDOUT_FILENO), m_nextDescriptor);
        ::close(m_nextDescriptor);
        const std::string mapped(std::istreambuf_iterator<char>(std::ifstream("/proc/self/maps").rdbuf()), {});
        EXPECT_EQ(mapped.find(m_path.filename().string()), std::string::npos); // no such list on macOS
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(const std::string& name) const { return (m_path / name).string(); }
    /// The folder's own path is ASCII; the name may be anything.
    std::wstring wide(const std::wstring& name) const { return m_path.wstring() + L"/" + name; }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

private:
    const int m_nextDescriptor = ::dup(STDOUT_FILENO);
    std::filesystem::path m_path;
};

/// A locale of all categories for as long as the object lives.
struct LocaleScope {
    explicit LocaleScope(const char* name) { EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name; }
    ~LocaleScope() { std::setlocale(LC_ALL, "C"); }
};

/// Every byte as the character of its value.
inline std::wstring widened(const std::string& text) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    return std::wstring(bytes, bytes + text.size());
}

/// `call(format, list)` with the arguments after the format as a list.
template <class Call, class Char>
int withList(const Call& call, const Char* format, ...) {
    std::va_list list;
    va_start(list, format);
    const int result = call(format, list);
    va_end(list);
    return result;
}

/// Memory whose last element borders on a page that cannot be touched: reading or writing one element too far ends the
/// test. One buffer serves many texts in turn.
template <class T>
class GuardedBuffer {
public:
    explicit GuardedBuffer(std::size_t capacity) {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        m_usable = (capacity * sizeof(T) + page - 1) / page * page;
        m_size = m_usable + page;
        void* memory = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            std::abort();
        m_memory = static_cast<char*>(memory);
        if (::mprotect(m_memory + m_usable, page, PROT_NONE) != 0)
            std::abort();
    }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer() { ::munmap(m_memory, m_size); }

    /// The last `count` elements before the guard.
    T* last(std::size_t count) {
        if (count * sizeof(T) > m_usable)
            std::abort();
        return reinterpret_cast<T*>(m_memory + m_usable) - count;
    }

    /// A copy of `count` elements that ends at the guard.
    const T* place(const T* data, std::size_t count) {
        T* copy = last(count);
        if (count != 0)
            std::memcpy(copy, data, count * sizeof(T));
        return copy;
    }

private:
    char* m_memory = nullptr;
    std::size_t m_usable = 0, m_size = 0;
};

/// The text that the engine writes; the test fails unless the result is its length.
template <class... Arguments>
std::wstring format(const wchar_t* format, Arguments... arguments) {
    wchar_t buffer[4096];
    const int length = FormatUtil::outputStringWithFormat(buffer, 4096, format, arguments...);
    const std::wstring text(buffer);
    EXPECT_EQ(length, static_cast<int>(text.size())) << "format " << std::string(format, format + std::wcslen(format));
    return text;
}

/// One number for a long sequence (64-bit FNV-1a, a whole number at a time). A test holds it where a table would only
/// be typed a second time. The numbers in the tests were made from the published facts by other programs, not by the
/// library.
class Checksum {
public:
    void add(std::int64_t value) { m_sum = (m_sum ^ static_cast<std::uint64_t>(value)) * 0x100000001B3; }
    std::uint64_t sum() const { return m_sum; }

private:
    std::uint64_t m_sum = 0xCBF29CE484222325;
};

/// Of what a function gives for each of a range of numbers, both ends included.
template <class Function>
std::uint64_t checksum(int first, int last, const Function& valueOf) {
    Checksum result;
    for (int i = first; i <= last; ++i)
        result.add(valueOf(i));
    return result.sum();
}

} // namespace reference
