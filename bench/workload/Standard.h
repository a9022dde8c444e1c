#pragma once

#include "bench/workload/Common.h"
#include "bench/workload/Drawing.h"

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <unordered_map>

namespace workload {

/// What the C and C++ libraries offer.
struct Standard {
    using Text = std::string;
    using Wide = std::wstring;

    static void* allocate(std::size_t size) { return std::malloc(size); }
    static void release(void* block) { std::free(block); }

    class Reader {
    public:
        explicit Reader(const std::string& path) : m_file(std::fopen(path.c_str(), "rb")) {}
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;
        ~Reader() { std::fclose(m_file); }
        void read(void* bytes, std::size_t count) {
            if (std::fread(bytes, 1, count, m_file) != count)
                std::abort();
        }

    private:
        std::FILE* m_file;
    };

    class Writer {
    public:
        explicit Writer(const std::string& path) : m_file(std::fopen(path.c_str(), "wb")) {}
        void write(const void* bytes, std::size_t count) {
            if (std::fwrite(bytes, 1, count, m_file) != count)
                std::abort();
        }
        void close() { std::fclose(m_file); }

    private:
        std::FILE* m_file;
    };

    class Names {
    public:
        void reserve(std::size_t count) { m_map.reserve(count); }
        void insert(const wchar_t* name, std::size_t number) { m_map.emplace(name, number + 1); }
        std::size_t find(const wchar_t* name) const {
            const auto found = m_map.find(name);
            return found == m_map.end() ? 0 : found->second;
        }
        void clear() { m_map = decltype(m_map)(); }

    private:
        std::unordered_map<std::wstring, std::size_t> m_map;
    };

    static void readText(Reader& reader, std::size_t count, Text& text) {
        text.resize(count);
        reader.read(text.data(), count);
    }
    static void setText(Text& text, const std::string& value) { text = value; }

    static std::uint64_t sumOfCharacters(const Text& text) { return workload::sumOfCharacters(text.c_str()); }

    static void toWide(const Text& text, Wide& wide) {
        wide.clear();
        wide.reserve(text.size());
        for (const char* p = text.c_str(); *p != 0;)
            wide += static_cast<wchar_t>(nextCharacter(p));
    }

    static std::size_t formatDimension(wchar_t* out, std::size_t capacity, const wchar_t* layer, double x, double y,
                                       int number, double length, double angle) {
        const LengthParts l = partsOfLength(length);
        const AngleParts a = partsOfAngle(angle);
        return static_cast<std::size_t>(
            std::swprintf(out, capacity, L"%ls: %.4f x %.4f, no. %d, %d'-%d %d/%d\", %dd%d'%d\"", layer, x, y, number,
                          l.feet, l.inches, l.sixteenths, 16, a.degrees, a.minutes, a.seconds));
    }
    static void prepare() { std::setlocale(LC_CTYPE, "C.UTF-8"); }

    class Index {
    public:
        void add(const Wide& text) {
            char room[kLongestText * 3 + 1];
            const std::size_t count = std::wcstombs(room, text.c_str(), sizeof room);
            m_bytes.append(room, count + 1);
        }
        const char* data() const { return m_bytes.data(); }
        std::size_t size() const { return m_bytes.size(); }

    private:
        std::string m_bytes;
    };

    static char* numberToText(char* out, double number) { return out + std::sprintf(out, "%.16g", number); }
    static double textToNumber(const char*& at, const char*) {
        char* end = nullptr;
        const double number = std::strtod(at, &end);
        at = end;
        return number;
    }
};

} // namespace workload
