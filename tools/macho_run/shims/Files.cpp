// Files: flags, structures and commands whose numbers differ.

#include "shims/Files.h"

#include "shims/Imports.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace macho {

namespace {

struct Pair {
    int there;
    int here;
};

constexpr Pair kOpenFlags[] = {
    {0x0004, O_NONBLOCK}, {0x0008, O_APPEND}, {0x0100, O_NOFOLLOW},    {0x0200, O_CREAT},
    {0x0400, O_TRUNC},    {0x0800, O_EXCL},   {0x100000, O_DIRECTORY}, {0x1000000, O_CLOEXEC},
};
constexpr int kAccessMask = 3; // the same

int openFlags(int flags) {
    int result = flags & kAccessMask;
    for (const Pair& flag : kOpenFlags)
        result |= (flags & flag.there) != 0 ? flag.here : 0;
    return result;
}

int openFlagsForProgram(int flags) {
    int result = flags & kAccessMask;
    for (const Pair& flag : kOpenFlags)
        result |= (flags & flag.here) == flag.here ? flag.there : 0;
    return result;
}

constexpr int kCurrentFolder = -2;

int folderFromProgram(int descriptor) {
    return descriptor == kCurrentFolder ? AT_FDCWD : descriptor;
}

// A record lock, and the kinds of it.
struct Lock {
    std::int64_t start, length;
    std::int32_t process;
    std::int16_t kind, whence;
};
enum LockKind : std::int16_t { kReadLock = 1, kNoLock = 2, kWriteLock = 3 };

int lockFile(int descriptor, int command, Lock* lock) {
    struct flock here {};
    here.l_type = lock->kind == kReadLock ? F_RDLCK : lock->kind == kWriteLock ? F_WRLCK : F_UNLCK;
    here.l_whence = lock->whence;
    here.l_start = lock->start;
    here.l_len = lock->length;
    const int result = ::fcntl(descriptor, command, &here);
    if (result == 0 && command == F_GETLK)
        *lock = {here.l_start, here.l_len, here.l_pid,
                 here.l_type == F_RDLCK   ? kReadLock
                 : here.l_type == F_WRLCK ? kWriteLock
                                          : kNoLock,
                 here.l_whence};
    return result;
}

struct Status {
    std::int32_t device;
    std::uint16_t mode, links;
    std::uint64_t number;
    std::uint32_t user, group;
    std::int32_t specialDevice, padding;
    timespec read, written, changed, created;
    std::int64_t size, blocks;
    std::int32_t blockSize;
    std::uint32_t flags, generation;
    std::int32_t spare;
    std::int64_t spares[2];
};
static_assert(sizeof(Status) == 144);

int give(int result, const struct stat& here, Status* status) {
    if (result == 0)
        *status = {static_cast<std::int32_t>(here.st_dev),
                   static_cast<std::uint16_t>(here.st_mode),
                   static_cast<std::uint16_t>(here.st_nlink),
                   here.st_ino,
                   here.st_uid,
                   here.st_gid,
                   static_cast<std::int32_t>(here.st_rdev),
                   0,
                   here.st_atim,
                   here.st_mtim,
                   here.st_ctim,
                   here.st_ctim,
                   here.st_size,
                   here.st_blocks,
                   static_cast<std::int32_t>(here.st_blksize),
                   0,
                   0,
                   0,
                   {}};
    return result;
}

int statusOf(const char* path, Status* status) {
    struct stat here;
    return give(::stat(path, &here), here, status);
}
int statusOfLink(const char* path, Status* status) {
    struct stat here;
    return give(::lstat(path, &here), here, status);
}
int statusOfOpen(int descriptor, Status* status) {
    struct stat here;
    return give(::fstat(descriptor, &here), here, status);
}
int statusAt(int folder, const char* path, Status* status, int flags) {
    constexpr int kNoFollow = 0x20;
    struct stat here;
    return give(::fstatat(folderFromProgram(folder), path, &here, (flags & kNoFollow) != 0 ? AT_SYMLINK_NOFOLLOW : 0),
                here, status);
}

int removeAt(int folder, const char* path, int flags) {
    constexpr int kFolder = 0x80;
    return ::unlinkat(folderFromProgram(folder), path, (flags & kFolder) != 0 ? AT_REMOVEDIR : 0);
}
int changeModeAt(int folder, const char* path, mode_t mode, int) {
    return ::fchmodat(folderFromProgram(folder), path, mode, 0);
}
int changeTimesAt(int folder, const char* path, const timespec* times, int) {
    return ::utimensat(folderFromProgram(folder), path, times, 0);
}

struct Entry {
    std::uint64_t number, position;
    std::uint16_t recordLength, nameLength;
    std::uint8_t type;
    char name[1024];
};

Entry* nextEntry(DIR* folder) {
    thread_local Entry entry;
    const dirent* const here = ::readdir(folder);
    if (here == nullptr)
        return nullptr;
    entry = {};
    entry.number = here->d_ino;
    entry.type = here->d_type;
    entry.nameLength = static_cast<std::uint16_t>(std::strlen(here->d_name));
    entry.recordLength = sizeof entry;
    std::strcpy(entry.name, here->d_name);
    return &entry;
}

struct Room {
    unsigned long blockSize, fragmentSize;
    std::uint32_t blocks, freeBlocks, availableBlocks, files, freeFiles, availableFiles;
    unsigned long system, flags, longestName;
};

int roomOf(const char* path, Room* room) {
    struct statvfs here;
    const int result = ::statvfs(path, &here);
    const auto narrowed = [](auto count) { return static_cast<std::uint32_t>(count); };
    if (result == 0)
        *room = {here.f_bsize,
                 here.f_frsize,
                 narrowed(here.f_blocks),
                 narrowed(here.f_bfree),
                 narrowed(here.f_bavail),
                 narrowed(here.f_files),
                 narrowed(here.f_ffree),
                 narrowed(here.f_favail),
                 here.f_fsid,
                 here.f_flag,
                 here.f_namemax};
    return result;
}

// The first byte of an address is its length there.
int bindSocket(int socket, const std::uint8_t* address, unsigned length) {
    sockaddr_storage here{};
    here.ss_family = address[1];
    std::memcpy(reinterpret_cast<char*>(&here) + 2, address + 2, length - 2);
    return ::bind(socket, reinterpret_cast<sockaddr*>(&here), length);
}

std::FILE* g_input = stdin;
std::FILE* g_output = stdout;
std::FILE* g_errors = stderr;

} // namespace

int openFile(const char* path, int flags, int mode) {
    return ::open(path, openFlags(flags), mode);
}

int openFileAt(int folder, const char* path, int flags, int mode) {
    return ::openat(folderFromProgram(folder), path, openFlags(flags), mode);
}

int controlFile(int descriptor, int command, void* argument) {
    enum { kDuplicate, kGetDescriptorFlags, kSetDescriptorFlags, kGetFlags, kSetFlags };
    enum { kGetLock = 7, kSetLock = 8, kWaitForLock = 9, kDuplicateClosing = 67 };
    const auto number = reinterpret_cast<std::intptr_t>(argument);
    switch (command) {
    case kDuplicate:
        return ::fcntl(descriptor, F_DUPFD, number);
    case kGetDescriptorFlags:
        return ::fcntl(descriptor, F_GETFD);
    case kSetDescriptorFlags:
        return ::fcntl(descriptor, F_SETFD, number);
    case kGetFlags: {
        const int flags = ::fcntl(descriptor, F_GETFL);
        return flags < 0 ? flags : openFlagsForProgram(flags);
    }
    case kSetFlags:
        return ::fcntl(descriptor, F_SETFL, openFlags(static_cast<int>(number)));
    case kGetLock:
        return lockFile(descriptor, F_GETLK, static_cast<Lock*>(argument));
    case kSetLock:
        return lockFile(descriptor, F_SETLK, static_cast<Lock*>(argument));
    case kWaitForLock:
        return lockFile(descriptor, F_SETLKW, static_cast<Lock*>(argument));
    case kDuplicateClosing:
        return ::fcntl(descriptor, F_DUPFD_CLOEXEC, number);
    default:
        std::fprintf(stderr, "macho_run: fcntl command %d is not known here\n", command);
        errno = EINVAL;
        return -1;
    }
}

void addFileShims(ImportTable& table) {
    table.add("_open", openFile);
    table.add("_openat", openFileAt);
    table.add("_fcntl", controlFile);
    // On x86_64 the names of the 64-bit forms carry a mark; on arm64 there is no other form.
    for (const bool isMarked : {true, false}) {
        const auto name = [isMarked](const char* plain, const char* marked) { return isMarked ? marked : plain; };
        table.add(name("_stat", "_stat$INODE64"), statusOf);
        table.add(name("_lstat", "_lstat$INODE64"), statusOfLink);
        table.add(name("_fstat", "_fstat$INODE64"), statusOfOpen);
        table.add(name("_fstatat", "_fstatat$INODE64"), statusAt);
        table.add(name("_readdir", "_readdir$INODE64"), nextEntry);
        table.add(name("_opendir", "_opendir$INODE64"), ::opendir);
        table.add(name("_fdopendir", "_fdopendir$INODE64"), ::fdopendir);
    }
    table.add("_unlinkat", removeAt);
    table.add("_fchmodat", changeModeAt);
    table.add("_utimensat", changeTimesAt);
    table.add("_statvfs", roomOf);
    table.add("_realpath$DARWIN_EXTSN", ::realpath);
    table.add("_bind", bindSocket);
    table.add("___stdinp", &g_input);
    table.add("___stdoutp", &g_output);
    table.add("___stderrp", &g_errors);
}

} // namespace macho
