// A program whose static objects convert before the digit allocator is built and after it is gone, with numbers that
// need big integers. Ends with 0 when that works.

#include "platform/StaticInit.h"

#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::_Exit(1);
    }
}

void convert() {
    int point = 0;
    int sign = 0;
    const std::string digits = TqGdImpl::dtoa(5e-324, 2, 2000, &point, &sign, nullptr);
    require(point == -323 && digits.size() == 751 && digits.starts_with("49406564584124654417"), "the smallest double");
    const std::string aboveTheMiddle = "9007199254740993." + std::string(900, '0') + "1";
    require(tqStrToD(aboveTheMiddle.c_str(), nullptr) == 9007199254740994, "a number of many digits");
}

class Converter {
public:
    explicit Converter(bool outlivesAllocator) : m_outlivesAllocator(outlivesAllocator) { convert(); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        require((G_Pow5Data == nullptr) == m_outlivesAllocator, "the cache is there, or gone");
        require((tqFCvtAllocator()->m_cursor == nullptr) == m_outlivesAllocator, "and so is the cursor");
        convert();
        std::printf(m_outlivesAllocator ? "after the allocator\n" : "before the end of the allocator\n");
        std::fflush(stdout);
    }

private:
    bool m_outlivesAllocator;
};

// This file comes before the library in the link, so among objects of the first priority its own is the first to be
// constructed and the last to be destroyed.
TQ_INIT_FIRST Converter g_outer(true);

} // namespace

int main() {
    static const Converter inner(false);
    require(G_Pow5Data != nullptr && G_Pow5Data->words[0] == 625, "the cache in main");
    convert();
}
