#include <TqOsBase/diag/Exceptions.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <utility>

namespace {

constexpr wchar_t kEmptyWide[] = L"";

// Room for a description, its terminator included.
constexpr std::size_t kDescriptionCapacity = 512;

wchar_t* copyMessage(const wchar_t* message) {
    if (message == nullptr)
        message = kEmptyWide;
    const std::size_t count = std::wcslen(message) + 1;
    auto* copy = new wchar_t[count];
    std::wmemcpy(copy, message, count);
    return copy;
}

} // namespace

TqException::~TqException() = default;

const wchar_t* TqException::description() const {
    return L"TqException";
}

int TqException::code() const {
    return 0;
}

TqExceptionWithMsg::TqExceptionWithMsg(const wchar_t* file, int line, const wchar_t* message)
    : TqExceptionWithMsg(file, line, message, nullptr) {}

TqExceptionWithMsg::TqExceptionWithMsg(const wchar_t* file, int line, const wchar_t* message, TqException* inner)
    : TqException(file, line, inner), m_pszMessage(copyMessage(message)) {}

TqExceptionWithMsg::TqExceptionWithMsg(const TqExceptionWithMsg& other)
    : TqException(other), m_pszMessage(copyMessage(other.m_pszMessage)) {}

TqExceptionWithMsg& TqExceptionWithMsg::operator=(const TqExceptionWithMsg& other) {
    if (this != &other) {
        wchar_t* copy = copyMessage(other.m_pszMessage);
        TqException::operator=(other);
        delete[] std::exchange(m_pszMessage, copy);
    }
    return *this;
}

TqExceptionWithMsg::~TqExceptionWithMsg() {
    delete[] m_pszMessage;
}

const wchar_t* TqExceptionWithMsg::description() const {
    return m_pszMessage;
}

TqErrorStatus::TqErrorStatus(Lumo::ErrorStatus status) : TqErrorStatus(status, kEmptyWide, kEmptyWide, 0) {}

TqErrorStatus::TqErrorStatus(Lumo::ErrorStatus status, const wchar_t* message, const wchar_t* file, int line)
    : TqException(file, line), m_pszMessage(message), m_pszDescription(nullptr), m_errorType(status) {}

TqErrorStatus::TqErrorStatus(Lumo::ErrorStatus status, const wchar_t* file, int line)
    : TqErrorStatus(status, kEmptyWide, file, line) {}

TqErrorStatus::TqErrorStatus(const TqErrorStatus& other)
    : TqException(other), m_pszMessage(other.m_pszMessage),
      m_pszDescription(other.m_pszDescription ? ::wcsdup(other.m_pszDescription) : nullptr),
      m_errorType(other.m_errorType) {
    m_pInner = nullptr;
}

TqErrorStatus& TqErrorStatus::operator=(const TqErrorStatus& other) {
    if (this != &other) {
        TqErrorStatus copy(other);
        TqException::operator=(copy);
        m_pszMessage = copy.m_pszMessage;
        m_errorType = copy.m_errorType;
        std::swap(m_pszDescription, copy.m_pszDescription);
    }
    return *this;
}

TqErrorStatus::~TqErrorStatus() {
    std::free(m_pszDescription);
    m_pszDescription = nullptr;
}

const wchar_t* TqErrorStatus::description() const {
    if (m_pszDescription == nullptr) {
        const wchar_t* message = m_pszMessage ? m_pszMessage : kEmptyWide;
        wchar_t text[kDescriptionCapacity];
        const int prefix = std::swprintf(text, kDescriptionCapacity, L"error type: %d\tmessage:", int{m_errorType});
        if (prefix < 0)
            return nullptr; // a C library may need memory for it
        const auto start = static_cast<std::size_t>(prefix);
        const std::size_t count = std::min(std::wcslen(message), kDescriptionCapacity - 1 - start);
        std::wmemcpy(text + start, message, count);
        text[start + count] = L'\0';
        m_pszDescription = ::wcsdup(text);
    }
    return m_pszDescription;
}

Lumo::ErrorStatus TqErrorStatus::errorType() const {
    return m_errorType;
}
