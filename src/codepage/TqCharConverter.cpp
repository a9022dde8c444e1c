#include "codepage/Escapes.h"

#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>

template <typename Char>
bool TqCharConverter::parseMIFString(Char* p, wchar_t& value, code_page_id& codePage) {
    if (p == nullptr)
        return false;
    const int code = tq::detail::mifEscapeValue(p);
    if (code == tq::detail::kNoEscape)
        return false;
    codePage = mapCodepage(p[3]);
    value = static_cast<wchar_t>(code);
    return true;
}

template TQ_API bool TqCharConverter::parseMIFString<unsigned char const>(unsigned char const* p, wchar_t& value,
                                                                          code_page_id& codePage);
