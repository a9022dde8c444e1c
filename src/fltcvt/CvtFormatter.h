#pragma once

namespace tq::detail {

/// Lays digits out as text. `digits` are `ndig` characters of the number 0.d1d2d3... * 10^decpt, without zeros at the
/// end; `sign` asks for a '-'. `out` gets the text with its terminator, and its address is returned. The notations are
/// those of FloatText.h; counts are 0 or more.
template <class CharT>
struct CvtFormatter {
    static CharT* formatF(CharT* out, const char* digits, int ndig, int nfrac, int decpt, int sign);
    /// `ndig` is 1 or more.
    static CharT* formatE(CharT* out, const char* digits, int ndig, int nfrac, int decpt, int sign, int expChar);
    /// Zero is the digit "0" with `decpt` 1; it is cut from `digits` for some styles.
    static CharT* formatG(CharT* out, char* digits, int ndig, int nsig, int decpt, int sign, int expChar, int style);
};

extern template struct CvtFormatter<char>;
extern template struct CvtFormatter<wchar_t>;

} // namespace tq::detail
