#pragma once

#include <TqOsBase/stream/TqStreamBuf.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The lines of an input buffer, one at a time and in constant memory.
class LineReader {
public:
    explicit LineReader(TqStreamBuf& in) : m_in(in), m_left(in.length()) {}

    /// Whether there is another line; it is then in text(), without its end.
    bool next();
    std::string_view text() const { return m_line; }
    /// A line longer than kMaxLine is cut there.
    bool isCut() const { return m_isCut; }
    int number() const { return m_number; }

    static constexpr std::size_t kMaxLine = 4096;

private:
    bool fill();

    TqStreamBuf& m_in;
    std::uint64_t m_left;
    std::string m_block;
    std::size_t m_at = 0;
    std::string m_line;
    bool m_isCut = false;
    int m_number = 0;
};
