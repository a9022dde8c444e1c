#pragma once

#include "bench/workload/Common.h"
#include "bench/workload/Drawing.h"

#include <absl/container/flat_hash_map.h>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fast_float/fast_float.h>
#include <fcntl.h>
#include <fmt/compile.h>
#include <fmt/xchar.h>
#include <functional>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unicode/utf8.h>
#include <unistd.h>

namespace workload {

/// The fast libraries of the field together, and the system's calls for files. malloc is mimalloc: the program is
/// started with it in front of the C library's.
struct Peers {
    using Text = std::string;
    using Wide = std::wstring;

    static void* allocate(std::size_t size) { return std::malloc(size); }
    static void release(void* block) { std::free(block); }

    // The file, mapped.
    class Reader {
    public:
        explicit Reader(const std::string& path) {
            const int file = ::open(path.c_str(), O_RDONLY);
            struct ::stat about {};
            if (::fstat(file, &about) != 0)
                std::abort();
            m_size = static_cast<std::size_t>(about.st_size);
            m_bytes = static_cast<char*>(::mmap(nullptr, m_size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0));
            m_at = m_bytes;
            ::close(file);
        }
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;
        ~Reader() { ::munmap(m_bytes, m_size); }
        void read(void* bytes, std::size_t count) {
            if (count > static_cast<std::size_t>(m_bytes + m_size - m_at))
                std::abort();
            std::memcpy(bytes, m_at, count);
            m_at += count;
        }

    private:
        char* m_bytes;
        char* m_at;
        std::size_t m_size = 0;
    };

    // Collects in a buffer of its own.
    class Writer {
    public:
        explicit Writer(const std::string& path) : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666)) {}
        void write(const void* bytes, std::size_t count) {
            if (m_count + count > sizeof m_bytes)
                flush();
            std::memcpy(m_bytes + m_count, bytes, count);
            m_count += count;
        }
        void close() {
            flush();
            ::close(m_file);
        }

    private:
        void flush() {
            if (::write(m_file, m_bytes, m_count) != static_cast<::ssize_t>(m_count))
                std::abort();
            m_count = 0;
        }

        int m_file;
        std::size_t m_count = 0;
        char m_bytes[65536];
    };

    // Takes a name as it is, without a string made of it.
    struct NameHash : absl::Hash<std::wstring_view> {
        using is_transparent = void;
    };

    class Names {
    public:
        void reserve(std::size_t count) { m_map.reserve(count); }
        void insert(const wchar_t* name, std::size_t number) { m_map.emplace(name, number + 1); }
        std::size_t find(const wchar_t* name) const {
            const auto found = m_map.find(std::wstring_view(name));
            return found == m_map.end() ? 0 : found->second;
        }
        void clear() { m_map = decltype(m_map)(); }

    private:
        absl::flat_hash_map<std::wstring, std::size_t, NameHash, std::equal_to<>> m_map;
    };

    static void readText(Reader& reader, std::size_t count, Text& text) {
        text.resize(count);
        reader.read(text.data(), count);
    }
    static void setText(Text& text, const std::string& value) { text = value; }

    static std::uint64_t sumOfCharacters(const Text& text) { return workload::sumOfCharacters(text.c_str()); }

    // Most texts have no escape: the C library looks for one faster than a loop.
    static void toWide(const Text& text, Wide& wide) {
        if (std::memchr(text.data(), '\\', text.size()) == nullptr) {
            wide.resize(text.size());
            for (std::size_t i = 0; i < text.size(); ++i)
                wide[i] = static_cast<unsigned char>(text[i]);
            return;
        }
        wide.resize(text.size());
        wchar_t* out = wide.data();
        for (const char* p = text.c_str(); *p != 0;)
            *out++ = static_cast<wchar_t>(nextCharacter(p));
        wide.resize(static_cast<std::size_t>(out - wide.data()));
    }

    static std::size_t formatDimension(wchar_t* out, std::size_t, const wchar_t* layer, double x, double y, int number,
                                       double length, double angle) {
        const LengthParts l = partsOfLength(length);
        const AngleParts a = partsOfAngle(angle);
        wchar_t* const end = fmt::format_to(
            out, FMT_COMPILE(L"{}: {:.4f} x {:.4f}, no. {}, {}'-{} {}/{}\", {}d{}'{}\""), std::wstring_view(layer), x,
            y, number, l.feet, l.inches, l.sixteenths, 16, a.degrees, a.minutes, a.seconds);
        return static_cast<std::size_t>(end - out);
    }
    static void prepare() {}

    class Index {
    public:
        void add(const Wide& text) {
            char room[kLongestText * 4 + 1];
            std::size_t count = 0;
            for (const wchar_t character : text)
                U8_APPEND_UNSAFE(room, count, static_cast<std::uint32_t>(character));
            room[count++] = 0;
            m_bytes.append(room, count);
        }
        const char* data() const { return m_bytes.data(); }
        std::size_t size() const { return m_bytes.size(); }

    private:
        std::string m_bytes;
    };

    static char* numberToText(char* out, double number) {
        return std::to_chars(out, out + 32, number, std::chars_format::general, 16).ptr; // ahead of fmt here
    }
    static double textToNumber(const char*& at, const char* end) {
        double number = 0;
        at = fast_float::from_chars(at, end, number).ptr;
        return number;
    }
};

} // namespace workload
