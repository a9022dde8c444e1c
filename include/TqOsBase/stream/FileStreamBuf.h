#pragma once

/// \file
/// Streams over files, and the functions that make them.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/CStringList.h>
#include <TqOsBase/diag/ErrorStatus.h>
#include <TqOsBase/stream/MoveBytes.h>
#include <TqOsBase/stream/TqFlatMemBuf.h>
#include <TqOsBase/stream/TqIO.h>
#include <TqOsBase/stream/TqStreamBuf.h>

#include <cstdint>
#include <cstdio>

namespace tq {
struct StreamCloser;
}

/// A stream over a file. Run-time failures are thrown as bare `const wchar_t*` texts: "File internal error!" (a refused
/// move), "Write file error!", "Out of file stream buffer!" and "End of file!" (mapped input only). A buffer without a
/// file answers 0 to tell() and length(), throws "End of file!" from reads and gets, "Write file error!" from writes
/// and sets, "File internal error!" from moves; closing it does nothing.
class TQ_API TqFileStreamBuf : public TqStreamBuf {
public:
    ~TqFileStreamBuf() override;

    /// The name as it was given to open(); null without one. Owned by the buffer, valid until it closes.
    virtual const wchar_t* fileName() const = 0;
    /// As it was given to open(); 0 without a file.
    virtual TqIO::ShareMode shareMode() const = 0;
    /// The C stream (a FILE*). No file: all bits set; after an open that was refused with 72 or 433 because the file is
    /// in use: null. Who reads or writes through it positions it before using the buffer again.
    virtual void* fileHandle() const = 0;
    /// Gives the file up. Throws "Write file error!", with the file closed nevertheless, when bytes that a call had
    /// accepted could not be written, now or before; a write that was refused as a whole is no such loss. Destroying a
    /// buffer closes it too; there a loss that no call has thrown yet ends the process: call close() first where the
    /// disk may be full.
    virtual void close() = 0;

protected:
    TqFileStreamBuf() = default;
    TqFileStreamBuf(const TqFileStreamBuf&) = delete;
    TqFileStreamBuf& operator=(const TqFileStreamBuf&) = delete;
};

/// Reads and writes a file through a C stream, at 64-bit positions. Not thread-safe, and neither is the registry of
/// exclusive opens, which all buffers share.
///
/// Every open takes a read lock over the whole file, which other processes see; failing to get it is ignored. These are
/// the system's record locks: closing any stream of a file gives up this process's lock on it.
class TQ_API TqFileStreamBufImpl : public TqFileStreamBuf {
public:
    /// No file.
    TqFileStreamBufImpl() = default;
    /// Opens as open() does but never throws: what open() throws is dropped, and a result other than kOk is stored in
    /// `status` (which may be null). On success nothing is stored, so the caller sets it to kOk before.
    TqFileStreamBufImpl(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access, TqIO::ShareMode share,
                        TqIO::CreationDisposition creation);
    /// Takes over `handle`, an open FILE* of the caller's, which close() will close: no name, share mode 0, no lock.
    /// What the caller has written to it goes to the file now; where that fails, close() throws. A mark of an earlier
    /// error stays, and refuses writes. Null and the all-ones value mean no file.
    explicit TqFileStreamBufImpl(void* handle);
    ~TqFileStreamBufImpl() override;

    /// Closes what is open (close() may throw) and opens `name`, in the encoding of the current locale where that holds
    /// it exactly, else and in the locale "C" as UTF-8.
    /// Returned: kOk; kFileOpenFailed, the system refuses the file, or an existing one may not be read and written as
    /// kCreateNew or kOpenAlways needs, or the name has no encoding; kFileNotAccessible, kOpenExisting and the file is
    /// missing or refused, or already open exclusively here; kFileLockedByProcess. Thrown by value as
    /// Lumo::ErrorStatus: kInvalidFileTarget, a directory, kCreateNew of a file that is there, or kTruncateExisting of
    /// a missing file or without write access; kInvalidDisposition. A null or empty name throws the text "No filename!"
    /// and leaves what is open as it was. After any other failure there is no file.
    ///
    /// An open for kAccessReadWrite, kShareDenyWrite, kOpenExisting is exclusive: its name, compared as it was given,
    /// is in the registry until it closes, and it is refused when another process holds any lock on the file. Reading
    /// alone with any share mode but kShareDenyNone opens for update, so it needs write permission, and writing is not
    /// refused then. A name with a character below 0 or above U+10FFFF gives kFileOpenFailed whatever else is asked; a
    /// surrogate is encoded like any other character.
    Lumo::ErrorStatus open(const wchar_t* name, TqIO::AccessMode access, TqIO::ShareMode share,
                           TqIO::CreationDisposition creation);

    const wchar_t* fileName() const override;
    TqIO::ShareMode shareMode() const override;
    void* fileHandle() const override;
    void close() override;

    /// All bits set where the stream has no position (a pipe).
    std::uint64_t tell() const override;
    /// Size of the file, the bytes that are still in the C stream included. A move past the end and an empty write
    /// there add nothing.
    std::uint64_t length() const override;
    /// Deliberately does not shorten the file: moves to its end.
    void truncate() override;
    /// kSeekEnd adds the offset to the end (pass a negative one as its 64-bit pattern), unlike in memory. A type that
    /// is none of the four counts as kSeekStart. Returns 0, not the position. A refused move throws "File internal
    /// error!", or, when the low 32 bits of the offset are all set, returns all bits set. Moving writes out what the C
    /// stream holds; where that fails the move is refused, and close() throws.
    std::uint64_t seek(std::uint64_t offset, TqIO::SeekType type) override;

    /// Reading less than `n` bytes, at the end of the file or because it was opened for writing only, is not reported;
    /// the rest of `buf` is left as it was. What is appended to the file later is read by the next call.
    void readBytes(unsigned char* buf, std::uint32_t n) override;
    /// As TqStreamBuf's, with a file; so is the positioned write.
    void readBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) override;
    /// Throws "Write file error!" when the stream does not take all bytes (a signal that interrupts the system's write
    /// counts), and always after it has once failed. Bytes accepted before that were still in the C stream then count
    /// as lost.
    void writeBytes(const unsigned char* buf, std::uint32_t n) override;
    void writeBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) override;
    /// Reads and puts the position back. Failing to put it back ends the process.
    void getBytes(unsigned char* buf, std::uint32_t n) override;
    /// Deliberately leaves the position after the bytes.
    void getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) override;
    /// Writes through to the file and puts the position back. Failing to put it back ends the process.
    void setBytes(const unsigned char* buf, std::uint32_t n) override;
    /// Deliberately leaves the position after the bytes.
    void setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) override;

    /// Names of the files that this process holds open exclusively. Usable before the first and after the last static
    /// object of the program: constant-initialised, and destroyed after everything that initialises later.
    /// Reading it is for moments in which no other thread opens or closes exclusively.
    static CStringList m_cstrAlreadyOpenFiles;

protected:
    /// For destructors: close(), whose failure ends the process unless a call before has thrown it.
    void closeForGood() noexcept;
    /// True when accepted bytes could not be written: no more are accepted.
    bool hasLost() const noexcept { return m_accepted >= Accepted::kLost; }
    /// A call is about to throw that accepted bytes are lost.
    void reportLoss() noexcept { m_accepted = Accepted::kReported; }
    /// True between an open that succeeded and close().
    bool hasFile() const noexcept;
    /// True while nothing was written, and the last thing done was not a read.
    bool isUntouched() const noexcept {
        return m_lastOperation == LastOperation::kMove && m_accepted == Accepted::kNone;
    }
    /// Throws `text` when there is no file.
    void requireFile(const wchar_t* text) const;
    /// The system's number of the file, -1 without one.
    int descriptor() const noexcept { return m_descriptor; }

private:
    friend struct tq::StreamCloser;
    enum class LastOperation : unsigned char { kMove, kRead, kWrite };
    // What became of the bytes that calls have accepted. kPending: some may still be in the C stream. kReported: lost,
    // and a call has thrown it.
    enum class Accepted : unsigned char { kNone, kStored, kPending, kLost, kReported };
    class PositionKeeper;

    static std::FILE* noFile() noexcept { return reinterpret_cast<std::FILE*>(~std::uintptr_t{0}); }
    void forget() noexcept;
    [[gnu::visibility("hidden")]] bool settle() noexcept;
    [[gnu::visibility("hidden"), noreturn]] void refuse(const wchar_t* text);

    std::FILE* m_stream = noFile();
    wchar_t* m_name = nullptr;
    TqIO::ShareMode m_shareMode = TqIO::ShareMode{};
    bool m_isDirty = false;
    LastOperation m_lastOperation = LastOperation::kMove; // C streams want a move between reading and writing
    Accepted m_accepted = Accepted::kNone;
    std::int32_t m_descriptor = -1;
    std::int32_t m_isRegistered = 0;
};

/// Reads a file that it maps into memory as a whole. Should someone shrink the file meanwhile, reading the part that is
/// gone raises SIGBUS, as with any mapping; nothing is thrown. What cannot be mapped (an empty file, a pipe, a device,
/// a file opened for writing only) is read through the C stream, and then behaves as TqFileStreamBufImpl does, except
/// that all gets advance. It never writes.
class TQ_API TqFileIStreamBuf : public TqFileStreamBufImpl {
public:
    /// As the base's; in addition, a status other than kOk, even one that the caller left there, closes the file.
    TqFileIStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access, TqIO::ShareMode share,
                     TqIO::CreationDisposition creation);
    ~TqFileIStreamBuf() override;

    void close() override;
    std::uint64_t tell() const override;
    std::uint64_t length() const override;
    /// Always throws "File internal error!".
    void truncate() override;
    /// Mapped: as in memory (kSeekEnd goes back from the end) and the new position is returned; beyond the end throws
    /// "Out of file stream buffer!"; an unknown type moves to 0 and returns 0.
    std::uint64_t seek(std::uint64_t offset, TqIO::SeekType type) override;

    using TqFileStreamBufImpl::readBytes;
    using TqFileStreamBufImpl::writeBytes;
    /// Mapped: throws "End of file!" when fewer than `n` bytes are left. Inline where the object's own type is known.
    TQ_API void readBytes(unsigned char* buf, std::uint32_t n) override {
        if (std::uint64_t{n} - 1 < m_viewLength - m_viewPosition) {
            const unsigned char* const from = m_view + m_viewPosition;
            m_viewPosition += n;
            tq::detail::moveBytes(buf, from, n);
        } else {
            readSlowly(buf, n);
        }
    }
    /// Deliberately the same as readBytes: it advances.
    void getBytes(unsigned char* buf, std::uint32_t n) override;
    void getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) override;
    /// Writes and sets always throw "Write file error!"; the positioned write checks its range first.
    void writeBytes(const unsigned char* buf, std::uint32_t n) override;
    void setBytes(const unsigned char* buf, std::uint32_t n) override;
    void setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) override;

private:
    void readSlowly(unsigned char* buf, std::uint32_t n);

    [[maybe_unused]] void* m_mapping = reinterpret_cast<void*>(~std::uintptr_t{0});
    unsigned char* m_view = nullptr;
    std::uint64_t m_viewLength = 0;   // 0 without a view
    std::uint64_t m_viewPosition = 0; // <= m_viewLength
};

/// Writes a file through a buffer of 16,384 bytes in memory. The buffer goes to the C stream when it is full and before
/// every read, and to the file on every move and at close(); other processes see what is in the file.
/// tell() and length() count what is pending. A write that fails may take along what was pending before it: close()
/// throws then, and no write is accepted any more.
class TQ_API TqFileOStreamBuf : public TqFileStreamBufImpl {
public:
    /// As the base's; in addition `bufferSize` bytes, at most those 16,384, are reserved at once, and a status other
    /// than kOk, even one that the caller left there, closes the file. Throws std::bad_alloc.
    TqFileOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access, TqIO::ShareMode share,
                     TqIO::CreationDisposition creation, unsigned bufferSize);
    ~TqFileOStreamBuf() override;

    /// For programs that write much: from now on, until close(), what leaves the buffer collects in the C stream and
    /// reaches the file in blocks of `size` bytes, rounded down to a multiple of 4,096, at most 1 MiB. Moves, reads and
    /// close() write out a block that is not full. The system takes less than half of the time for blocks of 65,536.
    /// To be called right after opening: returns false, with nothing changed, when there is no file, after a write,
    /// directly after a read, and for a size below 4,096. Throws std::bad_alloc.
    bool setBlockSize(std::uint32_t size);

    void close() override;
    std::uint64_t tell() const override;
    /// The larger of the file's size and tell(), so a move past the end counts.
    std::uint64_t length() const override;
    std::uint64_t seek(std::uint64_t offset, TqIO::SeekType type) override;

    using TqFileStreamBufImpl::readBytes;
    using TqFileStreamBufImpl::writeBytes;
    void readBytes(unsigned char* buf, std::uint32_t n) override;
    /// As the base's, through the buffer. Inline where the object's own type is known.
    TQ_API void writeBytes(const unsigned char* buf, std::uint32_t n) override {
        if (n - 1 < m_limit - m_pending.m_position) { // 0 is not below: a missing file shows in the slow way
            tq::detail::moveBytes(m_pending.advanceUnshared(n), buf, n);
        } else {
            writeSlowly(buf, n);
        }
    }
    void getBytes(unsigned char* buf, std::uint32_t n) override;
    void getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) override;
    /// Both store the bytes at the stated place, extending the data where they pass its end, and leave the position.
    /// A start beyond the end of the data (which a move does not extend) throws a TqException, "Out of stream buffer!",
    /// and writes nothing, with n = 0 as well.
    void setBytes(const unsigned char* buf, std::uint32_t n) override;
    void setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) override;

private:
    class AppendGuard;

    void writeSlowly(const unsigned char* buf, std::uint32_t n);
    void flushPending();
    void dropPending();

    // Its position is the number of pending bytes. The limit is 16,384 where more can be appended, so that one
    // comparison decides; else the position: without a file, until the first write, and after a failure.
    [[no_unique_address]] TqFlatMemBuf m_pending;
    std::uint32_t m_limit = 0;
};

/// Reads and writes a file through a C stream: its base under a name of its own.
class TQ_API TqFileIOStreamBuf : public TqFileStreamBufImpl {
public:
    using TqFileStreamBufImpl::TqFileStreamBufImpl;
    ~TqFileIOStreamBuf() override;
};

/// @{
/// The factories return a new object of the named class, also when opening failed: see the constructors for `status`.
/// Release it with destoryFileIOStreamBuf() or delete. Throw std::bad_alloc.
TQ_API TqFileStreamBuf* createFileStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                            TqIO::ShareMode share, TqIO::CreationDisposition creation);
TQ_API TqFileStreamBuf* createFileIStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                             TqIO::ShareMode share, TqIO::CreationDisposition creation);
TQ_API TqFileStreamBuf* createFileOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                             TqIO::ShareMode share, TqIO::CreationDisposition creation,
                                             unsigned bufferSize);
TQ_API TqFileStreamBuf* createFileIOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                              TqIO::ShareMode share, TqIO::CreationDisposition creation);
/// @}
/// Over an open C stream; the buffer owns it from now on.
TQ_API TqFileStreamBuf* createFileIOStreamBuf(void* handle);
/// Deletes the buffer; null is ignored. (The spelling is what callers link against.)
TQ_API void destoryFileIOStreamBuf(TqFileStreamBuf* p);
