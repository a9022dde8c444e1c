#include "format/ScanSource.h"

#include "base/CharacterClass.h"

#include <cassert>

ScanfSourceBuf::ScanfSourceBuf(const wchar_t* text, bool isStream)
    : fromStream(isStream), seenInput(false), current(0), consumed(0), position(text) {
    if (!fromStream)
        readCurrent();
}

void ScanfSourceBuf::readCurrent() {
    // A character with the code of kEnd ends the text too.
    current = *position != L'\0' ? static_cast<std::int32_t>(tq::detail::codeOf(*position)) : kEnd;
    if (atEnd())
        return;
    ++position;
    seenInput = seenInput || !atSpace();
}

void ScanfSourceBuf::advance() {
    if (fromStream || atEnd())
        return;
    ++consumed;
    readCurrent();
}

void ScanfSourceBuf::stepBack() {
    assert(consumed > 0);
    if (!atEnd())
        --position;
    --consumed;
    current = static_cast<std::int32_t>(tq::detail::codeOf(position[-1]));
}

bool ScanfSourceBuf::atSpace() const {
    return current > 0 && tq::detail::isSpace(static_cast<wchar_t>(current));
}

void ScanfSourceBuf::skipSpace() {
    while (atSpace())
        advance();
}
