#pragma once

#include "files/Files.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The lines of an input, one at a time and in constant memory.
class LineReader {
public:
    explicit LineReader(files::Input& in) : m_in(in) {}

    /// Whether there is another line; it is then in text(), without its end.
    bool next();
    std::string_view text() const { return m_line; }
    /// A line longer than kMaxLine is cut there.
    bool isCut() const { return m_isCut; }
    int number() const { return m_number; }

    static constexpr std::size_t kMaxLine = 4096;

private:
    bool fill();

    files::Input& m_in;
    std::string m_block;
    std::size_t m_at = 0;
    std::string m_line;
    bool m_isCut = false;
    int m_number = 0;
};
