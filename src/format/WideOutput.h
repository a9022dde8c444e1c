#pragma once

#include "fltcvt/WideDigits.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

/// Room for the text of one directive, strings excepted.
inline constexpr int kWorkBufferSize = 2048;

namespace tq::detail {

/// The caller's buffer. A text is written whole, or refused when it would leave no place for the terminating 0.
class WideOutput {
public:
    WideOutput(wchar_t* begin, int capacity) : m_begin(begin), m_cursor(begin), m_last(begin + capacity - 1) {
        assert(capacity >= 1);
    }

    /// Copies up to the next `%` or the end of the text, where `text` is left.
    bool putLiteral(const wchar_t*& text) {
        wchar_t* cursor = m_cursor;
        for (; *text != L'%' && *text != L'\0'; ++text) {
            if (cursor == m_last)
                return false;
            *cursor++ = *text;
        }
        m_cursor = cursor;
        return true;
    }

    /// A text that already stands at cursor() is not copied.
    bool put(const wchar_t* text, std::size_t count) {
        if (count > room())
            return false;
        if (text != m_cursor)
            copy(m_cursor, text, count);
        m_cursor += count;
        return true;
    }

    /// Calls `write` with the place for its `count` characters (fewer than kWorkBufferSize); it may change
    /// kDigitsAtOnce more after them.
    template <class Write>
    bool putNumber(std::size_t count, Write write) {
        assert(count < kWorkBufferSize);
        if (count > room())
            return false;
        if (room() - count >= kDigitsAtOnce) [[likely]]
            write(m_cursor);
        else
            writeAside(m_cursor, count, write);
        m_cursor += count;
        return true;
    }

    /// Writes in runs of 30. Runs that fit stay when a later one does not.
    bool fill(wchar_t c, unsigned count) {
        constexpr unsigned kRun = 30;
        while (count > 0) {
            const unsigned run = std::min(count, kRun);
            if (run > room())
                return false;
            m_cursor = std::fill_n(m_cursor, run, c);
            count -= run;
        }
        return true;
    }

    /// Without the place of the 0.
    std::size_t room() const { return static_cast<std::size_t>(m_last - m_cursor); }
    wchar_t* cursor() const { return m_cursor; }
    wchar_t* terminate() {
        *m_cursor = L'\0';
        return m_cursor;
    }
    int written() const { return static_cast<int>(m_cursor - m_begin); }

private:
    // Short texts are copied in eight blocks, whatever their length: the length cannot be predicted, and a loop over as
    // many blocks as it needs would be mispredicted. Blocks past the end are moved back to the last full one, so that
    // they overlap. All are read before the first is written, because the text may lie in the buffer.
    static void copy(wchar_t* out, const wchar_t* text, std::size_t count) {
        struct Block {
            std::uint64_t halves[2];
        };
        constexpr std::size_t kInBlock = sizeof(Block) / sizeof(wchar_t);
        constexpr std::size_t kBlocks = 8;
        if (count < kInBlock || count > kInBlock * kBlocks) {
            std::wmemmove(out, text, count);
            return;
        }
        Block blocks[kBlocks];
        const auto place = [count](std::size_t i) { return std::min(i * kInBlock, count - kInBlock); };
        for (std::size_t i = 0; i < kBlocks; ++i)
            std::memcpy(&blocks[i], text + place(i), sizeof(Block));
        for (std::size_t i = 0; i < kBlocks; ++i)
            std::memcpy(out + place(i), &blocks[i], sizeof(Block));
    }

    // Static, so that the cursor can stay in a register.
    template <class Write>
    [[gnu::noinline]] static void writeAside(wchar_t* cursor, std::size_t count, Write write) {
        wchar_t text[kWorkBufferSize + kDigitsAtOnce];
        write(text);
        std::wmemcpy(cursor, text, count);
    }

    wchar_t* m_begin;
    wchar_t* m_cursor;
    wchar_t* m_last;
};

} // namespace tq::detail
