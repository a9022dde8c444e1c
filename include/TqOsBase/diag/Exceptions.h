#pragma once

/// \file
/// The exception classes.

#include <TqOsBase/Export.h>
#include <TqOsBase/diag/ErrorStatus.h>

/// Root of the exception classes, thrown by value. The stream layer throws it bare: it then carries the reason in
/// m_pszFile ("Out of stream buffer!", "End of stream buffer!") with m_nLine 0, while description() still answers
/// "TqException". The members are public because catchers read them; none is owned.
class TQ_API TQ_SHOWN TqException {
public:
    /// No inner exception, flag false. `file` is kept, not copied, so it must outlive the exception (a literal does).
    explicit TqException(const wchar_t* file = nullptr, int line = 0, TqException* inner = nullptr) noexcept
        : m_pInner(inner), m_flag(false), m_pszFile(file), m_nLine(line) {}
    /// Copies the pointers; nothing behind them.
    TqException(const TqException&) = default;
    TqException& operator=(const TqException&) = default;
    virtual ~TqException();

    /// A text for people; here always "TqException". The exception owns it.
    virtual const wchar_t* description() const;
    /// Always 0, in the descendants too.
    virtual int code() const;

    TqException* m_pInner;    ///< The exception that caused this one, or null. Never deleted by this class.
    bool m_flag;              ///< False after construction, copied on copy, not read by the library.
    const wchar_t* m_pszFile; ///< Source location text given at construction.
    int m_nLine;              ///< Line given at construction.
};

/// An exception with a message of its own. For the application's use; the library does not throw it.
class TQ_API TQ_SHOWN TqExceptionWithMsg : public TqException {
public:
    /// Copies `message` (null is taken as empty). Throws what the global array allocator throws.
    TqExceptionWithMsg(const wchar_t* file, int line, const wchar_t* message);
    /// As above, naming the exception that caused this one; `inner` is not owned.
    TqExceptionWithMsg(const wchar_t* file, int line, const wchar_t* message, TqException* inner);
    /// Copies everything, the pointer to the inner exception included; the message is duplicated.
    TqExceptionWithMsg(const TqExceptionWithMsg& other);
    TqExceptionWithMsg& operator=(const TqExceptionWithMsg& other);
    ~TqExceptionWithMsg() override;

    /// The message, owned by the exception.
    const wchar_t* description() const override;

    wchar_t* m_pszMessage; ///< This object's own copy of the message, never null.
};

/// An exception that carries a status number. For the application's use; the library names its pointer type only.
class TQ_API TQ_SHOWN TqErrorStatus : public TqException {
public:
    /// Empty message and location, line 0.
    explicit TqErrorStatus(Lumo::ErrorStatus status);
    /// `message` and `file` are kept, not copied, and must outlive the exception.
    TqErrorStatus(Lumo::ErrorStatus status, const wchar_t* message, const wchar_t* file, int line);
    /// Empty message; `file` is kept, not copied.
    TqErrorStatus(Lumo::ErrorStatus status, const wchar_t* file, int line);
    /// Copies everything but the inner exception, which a copy never has; a description that was already built is
    /// duplicated, one that was not is built by the copy when it is asked for.
    TqErrorStatus(const TqErrorStatus& other);
    TqErrorStatus& operator=(const TqErrorStatus& other);
    ~TqErrorStatus() override;

    /// "error type: <status>", a tab, "message:<message>"; at most 511 characters, a longer message is cut. Built on
    /// the first call and kept, so later changes of the members do not show. Null when no memory could be had. Not
    /// safe to call from two threads on one object.
    const wchar_t* description() const override;

    /// The status given at construction.
    Lumo::ErrorStatus errorType() const;

    const wchar_t* m_pszMessage;       ///< Not owned; null is read as empty.
    mutable wchar_t* m_pszDescription; ///< Cache of description(), owned; null until the first call.
    Lumo::ErrorStatus m_errorType;     ///< What errorType() returns.
};
