#pragma once

#include "files/Complaints.h"

#include <TqOsBase/codepage/CodePageId.h>

#include <cstdint>
#include <map>
#include <string>

/// What one conversion met, counted as it goes and printed at the end. All texts go to standard error.
class Report {
public:
    explicit Report(std::string fileName) : m_fileName(std::move(fileName)) {}

    /// Says at once what the other form cannot carry, and where in the input: nothing is dropped silently.
    void notCarried(const char* what, const char* outcome) {
        m_notCarried.add(m_fileName + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + what + ": " +
                         outcome);
    }
    unsigned long long countNotCarried() const { return m_notCarried.count(); }
    void printSummary(bool sameBack) const;

    unsigned long long line = 1;   ///< Of the character at hand, counted from 1.
    unsigned long long column = 1; ///< In characters, counted from 1.
    unsigned long long lines = 0;
    unsigned long long unicodeEscapes = 0;
    std::map<code_page_id, unsigned long long> mifEscapes;
    unsigned long long otherCharacters = 0; ///< Line ends left out.

private:
    std::string m_fileName;
    files::Complaints m_notCarried;
};
