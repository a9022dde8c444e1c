#pragma once

#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/TqAnsiTextIterator.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/format/LumoAppUnitSets.h>
#include <TqOsBase/format/OutputWithFormat.h>
#include <TqOsBase/format/QMode.h>
#include <TqOsBase/memory/Allocation.h>
#include <TqOsBase/stream/FileStreamBuf.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>
#include <string_view>
#include <utility>

namespace workload {

/// Everything of this library.
struct Ours {
    struct Text : TqStringA {
        std::size_t size() const noexcept { return length(); }
    };

    // A block with the characters and a terminator, kept for other texts that fit. Blocks of 257 to 499 bytes have no
    // pool; texts of 64 to 127 characters take the next one that has.
    class Wide {
    public:
        Wide() = default;
        Wide(const Wide& other) { *this = other; }
        Wide& operator=(const Wide& other) {
            if (this != &other)
                assign(other.m_text, other.m_size);
            return *this;
        }
        ~Wide() { tqFree(m_text); }
        void assign(const wchar_t* text, std::size_t size) {
            if (size >= m_capacity) {
                tqFree(m_text);
                m_capacity = size >= 64 && size < 128 ? 128 : size + 1;
                m_text = static_cast<wchar_t*>(tqMalloc(m_capacity * sizeof(wchar_t)));
            }
            m_size = size;
            std::wmemcpy(m_text, text, size);
            m_text[size] = 0;
        }
        const wchar_t* c_str() const { return m_text; }
        std::size_t size() const { return m_size; }

    private:
        wchar_t* m_text = nullptr;
        std::size_t m_size = 0;
        std::size_t m_capacity = 0;
    };

    static void* allocate(std::size_t size) { return tqMalloc(size); }
    static void release(void* block) { tqFree(block); }

    static std::wstring nameOf(const std::string& path) { return {path.begin(), path.end()}; }

    class Reader {
    public:
        explicit Reader(const std::string& path)
            : m_stream(nameOf(path).c_str(), nullptr, TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting) {}
        void read(void* bytes, std::size_t count) {
            m_stream.readBytes(static_cast<unsigned char*>(bytes), static_cast<std::uint32_t>(count));
        }

    private:
        TqFileIStreamBuf m_stream;
    };

    class Writer {
    public:
        explicit Writer(const std::string& path)
            : m_stream(nameOf(path).c_str(), nullptr, TqIO::kAccessWrite, TqIO::kShareDenyNone, TqIO::kCreateAlways,
                       0) {
            m_stream.setBlockSize(kBlock);
        }
        void write(const void* bytes, std::size_t count) {
            m_stream.writeBytes(static_cast<const unsigned char*>(bytes), static_cast<std::uint32_t>(count));
        }
        void close() { m_stream.close(); }

    private:
        static constexpr std::uint32_t kBlock = 65536;
        TqFileOStreamBuf m_stream;
    };

    class Names {
    public:
        void reserve(std::size_t count) { m_map.InitHashTable(static_cast<unsigned>(count * 5 / 4 | 1)); }
        void insert(const wchar_t* name, std::size_t number) { m_map.SetAt(name, reinterpret_cast<void*>(number + 1)); }
        std::size_t find(const wchar_t* name) const {
            void* number = nullptr;
            m_map.Lookup(name, number);
            return reinterpret_cast<std::size_t>(number);
        }
        void clear() { m_map.RemoveAll(); }

    private:
        CMapStringToPtr m_map{200};
    };

    static void readText(Reader& reader, std::size_t count, Text& text) {
        reader.read(text.getBuffer(static_cast<int>(count)), count);
        text.releaseBuffer(static_cast<int>(count));
    }
    static void setText(Text& text, const std::string& value) { text.assign(value.c_str()); }

    static std::uint64_t sumOfCharacters(const Text& text) {
        std::uint64_t sum = 0;
        if (TqAnsiTextIteratorNotRequired(text, kCodePageWestern)) {
            for (const char character : std::string_view(text.c_str(), text.size()))
                sum += static_cast<unsigned char>(character);
            return sum;
        }
        TqAnsiTextIterator it(text, kCodePageWestern);
        while (const unsigned character = it.nextChar())
            sum += character;
        return sum;
    }

    // One vector for all texts.
    static void toWide(const Text& text, Wide& wide) {
        static TqVector<wchar_t> characters;
        characters.setLogicalLength(0);
        TqCharMapper::multiByteToWideChar(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), characters);
        wide.assign(std::as_const(characters).asArrayPtr(), static_cast<std::size_t>(characters.logicalLength()) - 1);
    }

    static std::size_t print(wchar_t* out, std::size_t capacity, const wchar_t* format, ...) {
        std::va_list args;
        va_start(args, format);
        const int length = OutputWithFormat(&out, static_cast<int>(capacity), format, args);
        va_end(args);
        return static_cast<std::size_t>(length);
    }
    static std::size_t formatDimension(wchar_t* out, std::size_t capacity, const wchar_t* layer, double x, double y,
                                       int number, double length, double angle) {
        return print(out, capacity, L"%s: %.4f x %.4f, no. %d, %.30q*, %.30q*", layer, x, y, number, kQTypeLength,
                     length, kQTypeAngle, angle);
    }
    static void prepare() {
        LumoAppUnitSets units;
        units.linearUnitMode = kLinearArchitectural;
        units.angularUnitMode = kAngularDegreesMinutesSeconds;
        initOsBaseUnits(units);
    }

    class Index {
    public:
        void add(const Wide& text) {
            TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), m_bytes);
        }
        const char* data() const { return std::as_const(m_bytes).asArrayPtr(); }
        std::size_t size() const { return static_cast<std::size_t>(m_bytes.logicalLength()); }

    private:
        TqVector<char> m_bytes;
    };

    static char* numberToText(char* out, double number) {
        tqFltToG(out, number, 16, 'e', 0);
        return out + std::strlen(out);
    }
    static double textToNumber(const char*& at, const char*) {
        char* end = nullptr;
        const double number = tqStrToD(at, &end);
        at = end;
        return number;
    }
};

} // namespace workload
