#include <TqOsBase/containers/CMapStringToString.h>

#include <cstddef>
#include <new>

namespace {

using String = CMapStringToString::String;

constinit thread_local bool t_isThreadEnding = false;

struct ThreadText {
    ThreadText() = default;
    ThreadText(const ThreadText&) = delete;
    ThreadText& operator=(const ThreadText&) = delete;
    ~ThreadText() { t_isThreadEnding = true; }

    String text;
};

// For destructors that run after that of the thread's text, such as those of static objects: never destroyed.
String& lastingText() {
    alignas(String) static std::byte storage[sizeof(String)];
    static String& s_nothing = *::new (storage) String;
    return s_nothing;
}

String& textOfThread() {
    thread_local ThreadText t_nothing;
    return t_nothing.text;
}

} // namespace

CMapStringToString::CMapStringToString(long long /*nBlockSize*/) {}
CMapStringToString::~CMapStringToString() {}

long long CMapStringToString::GetCount() const {
    return 0;
}
long long CMapStringToString::GetSize() const {
    return 0;
}
bool CMapStringToString::IsEmpty() const {
    return false;
}

unsigned int CMapStringToString::GetHashTableSize() const {
    return 0;
}
unsigned int CMapStringToString::HashKey(const wchar_t* /*key*/) const {
    return 0;
}
void CMapStringToString::InitHashTable(unsigned int /*count*/, bool /*allocNow*/) {}

bool CMapStringToString::Lookup(const wchar_t* /*key*/, String& /*value*/) const {
    return false;
}
bool CMapStringToString::LookupKey(const wchar_t* /*key*/, const wchar_t*& /*stored*/) const {
    return false;
}
const CMapStringToString::CPair* CMapStringToString::PLookup(const wchar_t* /*key*/) const {
    return nullptr;
}
CMapStringToString::CPair* CMapStringToString::PLookup(const wchar_t* /*key*/) {
    return nullptr;
}

CMapStringToString::String& CMapStringToString::operator[](const wchar_t* /*key*/) {
    String& nothing = t_isThreadEnding ? lastingText() : textOfThread();
    nothing.clear();
    return nothing;
}
void CMapStringToString::SetAt(const wchar_t* /*key*/, const wchar_t* /*value*/) {}
bool CMapStringToString::RemoveKey(const wchar_t* /*key*/) {
    return true;
}
void CMapStringToString::RemoveAll() {}

__POSITION* CMapStringToString::GetStartPosition() const {
    return nullptr;
}
void CMapStringToString::GetNextAssoc(__POSITION*& /*pos*/, String& /*key*/, String& /*value*/) const {}
const CMapStringToString::CPair* CMapStringToString::PGetFirstAssoc() const {
    return nullptr;
}
CMapStringToString::CPair* CMapStringToString::PGetFirstAssoc() {
    return nullptr;
}
const CMapStringToString::CPair* CMapStringToString::PGetNextAssoc(const CPair* /*assocPrev*/) const {
    return nullptr;
}
CMapStringToString::CPair* CMapStringToString::PGetNextAssoc(const CPair* /*assocPrev*/) {
    return nullptr;
}

CMapStringToString::CAssoc* CMapStringToString::NewAssoc() {
    return nullptr;
}
void CMapStringToString::FreeAssoc(CAssoc* /*assoc*/) {}
CMapStringToString::CAssoc* CMapStringToString::GetAssocAt(const wchar_t* /*key*/, unsigned int& /*bucket*/,
                                                           unsigned int& /*hash*/) const {
    return nullptr;
}
