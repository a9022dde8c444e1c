#include "platform/File.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tq::platform {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "file offsets are 64-bit");

namespace {

// What fopen gives a file it creates, before the process's mask.
constexpr mode_t kNewFileMode = 0666;

int openFlags(const OpenMode& mode) noexcept {
    int flags = O_CLOEXEC;
    flags |= mode.read && mode.write ? O_RDWR : mode.write ? O_WRONLY : O_RDONLY;
    if (mode.truncate)
        flags |= O_TRUNC;
    if (mode.creation != Creation::kNever)
        flags |= O_CREAT;
    if (mode.creation == Creation::kExclusive)
        flags |= O_EXCL;
    return flags;
}

// fdopen neither creates nor truncates: its letters only have to agree with the descriptor.
const char* streamMode(const OpenMode& mode) noexcept {
    return mode.read && mode.write ? "r+b" : mode.write ? "wb" : "rb";
}

bool isDirectory(int descriptor) noexcept {
    struct stat info = {};
    return ::fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

bool canAccess(const char* path, bool toRead, bool toWrite) noexcept {
    const int mode = (toRead ? R_OK : 0) | (toWrite ? W_OK : 0);
    return ::access(path, mode == 0 ? F_OK : mode) == 0;
}

bool isDirectory(const char* path) noexcept {
    struct stat info = {};
    return ::stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

std::FILE* openStream(const char* path, const OpenMode& mode) noexcept {
    int descriptor = -1;
    do
        descriptor = ::open(path, openFlags(mode), kNewFileMode);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return nullptr;
    const bool canStream = !isDirectory(descriptor);
    std::FILE* stream = canStream ? ::fdopen(descriptor, streamMode(mode)) : nullptr;
    if (stream == nullptr) {
        ::close(descriptor);
        if (!canStream)
            errno = EISDIR;
    }
    return stream;
}

void setStreamBuffer(std::FILE* stream, unsigned char* buffer, std::size_t size) noexcept {
    std::setvbuf(stream, reinterpret_cast<char*>(buffer), size != 0 ? _IOFBF : _IONBF, size);
}

bool closeStream(std::FILE* stream) noexcept {
    return std::fclose(stream) == 0;
}

bool flushStream(std::FILE* stream) noexcept {
    return std::fflush(stream) == 0;
}

bool hasFailed(std::FILE* stream) noexcept {
    return std::ferror(stream) != 0;
}

std::size_t readStream(std::FILE* stream, void* buffer, std::size_t n) noexcept {
    if (n == 0)
        return 0;
    const bool hadFailed = std::ferror(stream) != 0;
    std::size_t done = std::fread(buffer, 1, n, stream);
    while (done < n && !hadFailed && std::ferror(stream) != 0) {
        const bool wasInterrupted = errno == EINTR;
        std::clearerr(stream);
        if (!wasInterrupted)
            break;
        done += std::fread(static_cast<char*>(buffer) + done, 1, n - done, stream);
    }
    if (done < n) {
        if (hadFailed)
            ::fseeko(stream, 0, SEEK_CUR); // takes the mark of the end alone
        else
            std::clearerr(stream);
    }
    return done;
}

bool writeStream(std::FILE* stream, const void* buffer, std::size_t n) noexcept {
    if (std::ferror(stream) != 0)
        return false;
    return n == 0 || (std::fwrite(buffer, 1, n, stream) == n && std::ferror(stream) == 0);
}

bool seekStream(std::FILE* stream, std::int64_t offset, int whence) noexcept {
    return ::fseeko(stream, offset, whence) == 0;
}

std::int64_t tellStream(std::FILE* stream) noexcept {
    return ::ftello(stream);
}

int descriptorOf(std::FILE* stream) noexcept {
    return ::fileno(stream);
}

void writeDescriptor(int descriptor, const char* bytes, std::size_t n) noexcept {
    while (n > 0) {
        const ssize_t done = ::write(descriptor, bytes, n);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return;
        bytes += done;
        n -= static_cast<std::size_t>(done);
    }
}

std::uint64_t fileSize(int descriptor) noexcept {
    struct stat info = {};
    return ::fstat(descriptor, &info) == 0 && info.st_size > 0 ? static_cast<std::uint64_t>(info.st_size) : 0;
}

unsigned char* mapFile(int descriptor, std::uint64_t& length) noexcept {
    struct stat info = {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size <= 0)
        return nullptr;
    void* view = ::mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ, MAP_SHARED, descriptor, 0);
    if (view == MAP_FAILED)
        return nullptr;
    length = static_cast<std::uint64_t>(info.st_size);
    return static_cast<unsigned char*>(view);
}

void unmapFile(unsigned char* view, std::uint64_t length) noexcept {
    ::munmap(view, static_cast<std::size_t>(length));
}

} // namespace tq::platform
