#include "stream/StreamErrors.h"

#include <TqOsBase/diag/Exceptions.h>

namespace tq::detail {

void throwOutOfStreamBuffer() {
    throw TqException(L"Out of stream buffer!");
}

void throwEndOfStreamBuffer() {
    throw TqException(L"End of stream buffer!");
}

void throwFileError(const wchar_t* text) {
    throw text;
}

} // namespace tq::detail
