#pragma once

/// \file
/// A map from wide strings to wide strings that stores nothing.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/CStdStr.h>

/// Position in a string list or map: an opaque pointer, null meaning none.
struct __POSITION;

/// The interface of a map from strings to strings, without storage: the members are there to be linked against, store
/// nothing and find nothing. They keep these odd answers, which callers have seen: IsEmpty is false although the count
/// is 0, and RemoveKey is true. No argument is read or written.
class TQ_API CMapStringToString {
public:
    using String = CStdStr<wchar_t>; ///< What keys and values would be.

    struct CPair;  ///< Never complete: no pair is ever given out.
    struct CAssoc; ///< Never complete: no entry is ever given out.

    explicit CMapStringToString(long long nBlockSize);
    CMapStringToString(const CMapStringToString&) = delete;
    CMapStringToString& operator=(const CMapStringToString&) = delete;
    ~CMapStringToString();

    long long GetCount() const; ///< 0.
    long long GetSize() const;  ///< 0.
    bool IsEmpty() const;       ///< False.

    unsigned int GetHashTableSize() const;                        ///< 0.
    unsigned int HashKey(const wchar_t* key) const;               ///< 0.
    void InitHashTable(unsigned int count, bool allocNow = true); ///< Nothing.

    bool Lookup(const wchar_t* key, String& value) const;             ///< False.
    bool LookupKey(const wchar_t* key, const wchar_t*& stored) const; ///< False.
    const CPair* PLookup(const wchar_t* key) const;                   ///< Null.
    CPair* PLookup(const wchar_t* key);                               ///< Null.

    /// The thread's one string for this purpose, emptied by every call: what is written to it is lost with the next.
    String& operator[](const wchar_t* key);
    void SetAt(const wchar_t* key, const wchar_t* value); ///< Nothing.
    bool RemoveKey(const wchar_t* key);                   ///< True.
    void RemoveAll();                                     ///< Nothing.

    __POSITION* GetStartPosition() const;                                  ///< Null.
    void GetNextAssoc(__POSITION*& pos, String& key, String& value) const; ///< Nothing.
    const CPair* PGetFirstAssoc() const;                                   ///< Null.
    CPair* PGetFirstAssoc();                                               ///< Null.
    const CPair* PGetNextAssoc(const CPair* assocPrev) const;              ///< Null.
    CPair* PGetNextAssoc(const CPair* assocPrev);                          ///< Null.

    CAssoc* NewAssoc();                                                                     ///< Null.
    void FreeAssoc(CAssoc* assoc);                                                          ///< Nothing.
    CAssoc* GetAssocAt(const wchar_t* key, unsigned int& bucket, unsigned int& hash) const; ///< Null.
};
