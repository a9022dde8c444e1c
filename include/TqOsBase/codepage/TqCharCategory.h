#pragma once

/// \file
/// The punctuation of Western and East Asian text, for laying out lines.

#include <TqOsBase/Export.h>

#include <vector>

/// The punctuation of Western and East Asian text in sorted lists, for callers that lay out lines of text. Every list
/// ascends by code point and can be searched by bisection; a character that a list names twice is deliberately there
/// twice. Lists read only may be read from any thread.
class TQ_API TqCharCategory {
public:
    /// Builds the five lists. Throws std::bad_alloc.
    TqCharCategory();

    /// Opening brackets and signs before numbers, 29 entries; U+FF08 and U+FFE5 twice.
    const std::vector<wchar_t>& leftPuncts() const { return built().m_leftPuncts; }
    /// Closing brackets, 13 entries.
    const std::vector<wchar_t>& rightPuncts() const { return built().m_rightPuncts; }
    /// Other punctuation and signs after numbers, 45 entries; U+00B0 and U+FFE0 twice. The full-width closing
    /// parenthesis U+FF09 is here and among the closing brackets.
    const std::vector<wchar_t>& normalPuncts() const { return built().m_normalPuncts; }
    /// Quotation marks, 10 entries.
    const std::vector<wchar_t>& quotationPuncts() const { return built().m_quotationPuncts; }
    /// All of the above, 97 entries, with what is in several lists as often as they name it.
    const std::vector<wchar_t>& allPuncts() const { return built().m_allPuncts; }

    /// @{
    /// Each writes its list anew, whatever was in it. allPuncts stays as it is.
    void initLeftPuncts();
    void initRightPuncts();
    void initNormalPuncts();
    void initQuotationPuncts();
    /// @}

    /// The process-wide object, usable from the first static initialiser on.
    static TqCharCategory s_instance;

private:
    struct Unbuilt {};
    constexpr explicit TqCharCategory(Unbuilt) noexcept;
    void build();
    const TqCharCategory& built() const;

    std::vector<wchar_t> m_leftPuncts;
    std::vector<wchar_t> m_normalPuncts;
    std::vector<wchar_t> m_rightPuncts;
    std::vector<wchar_t> m_quotationPuncts;
    std::vector<wchar_t> m_allPuncts;
};
