// A program whose static objects convert before the digit allocator is built and after it is gone, with numbers that
// need big integers. Ends with 0 when that works.

#include "platform/StaticInit.h"

#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

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
    char* const digits = TqGdImpl::dtoa(5e-324, 2, 2000, &point, &sign, nullptr);
    require(point == -323 && std::strlen(digits) == 751, "all digits of the smallest double");
    require(std::strncmp(digits, "4940656458412465441765687928682213723650598", 43) == 0, "and their values");
    TqGdImpl::freedtoa(digits);
    require(tqStrToD("2.47032822920623272088284396434110686182529901307162382212792841250337753635104375932649918180"
                     "8179961898982823477228588654633283551779698981993873980053909390631503565951557022639229085839"
                     "2449105184435931802849936536152500319370457678249219365623669863658480757001585769269903706311"
                     "9282795585513329278343384093519780155312465972635795746227664652728272200563740064854999770965"
                     "9947045402082816622623785739345073633900796773056355391134560100e-324",
                     nullptr) == 0,
            "just below half of it");
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
