#include "stream/StreamTest.h"

#include <sys/socket.h>
#include <sys/un.h>

namespace {

using namespace streamtest;
using FS = TqFileSystem;

constexpr std::uint64_t kNoSize = ~std::uint64_t{0};

void makeSocket(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
}

TEST(FileSystem, EveryKindOfPath) {
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("12345"));
    writeFile(folder.path("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"), bytesOf("123"));
    ::mkfifo(folder.path("pipe").c_str(), 0666);
    makeSocket(folder.path("socket"));
    ::symlink("missing", folder.path("link").c_str());
    const struct {
        std::wstring path;
        bool isThere, isExisting, isAccessible; // existing by the one bit of the mode that is tested
    } rows[] = {{folder.wide(L"file"), true, true, true},
                {folder.wide(L"\u00E9\u4E2D\U0001F600"), true, true, true},
                {std::wstring(3000, L'/') + folder.wide(L"file"), true, true, true},
                {folder.wide(L""), true, false, false},
                {folder.wide(L"pipe"), true, true, true},
                {folder.wide(L"socket"), true, false, true}, // its code has that bit too
                {folder.wide(L"link"), false, false, false},
                {folder.wide(L"file/none"), false, false, false},
                {folder.wide(L"file") + static_cast<wchar_t>(0x110000), false, false, false},
                {L"", false, false, false}};
    for (const char* locale : {"C", reference::kUtf8Locale})
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(locale) + " row " + std::to_string(&row - rows));
            const wchar_t* path = row.path.c_str();
            struct stat info = {};
            std::setlocale(LC_ALL, locale);
            EXPECT_EQ(FS::accessFile(path, TqIO::kAccessReadWrite), row.isAccessible);
            EXPECT_EQ(FS::accessFile(path, TqIO::kAccessNone), row.isAccessible);
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), locale);
            EXPECT_EQ(FS::waccess(path, F_OK), row.isThere ? 0 : -1);
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), reference::kUtf8Characters);
            EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), locale);
            std::setlocale(LC_ALL, locale);
            EXPECT_EQ(FS::wstat(path, &info), row.isThere ? 0 : -1);
            EXPECT_EQ(FS::getFileSize(path), row.isThere ? static_cast<std::uint64_t>(info.st_size) : kNoSize);
            EXPECT_EQ(FS::isFileExisting(path), row.isExisting);
        }
    EXPECT_EQ(FS::waccess(nullptr, 0), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(FS::isFileExisting(nullptr) || FS::accessFile(nullptr, TqIO::kAccessNone));
    EXPECT_EQ(FS::getFileSize(static_cast<const wchar_t*>(nullptr)), kNoSize);
    std::setlocale(LC_ALL, "C");
}

TEST(FileSystem, BuffersByAccess) {
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("12345"));
    for (const TqIO::AccessMode access : {TqIO::kAccessRead, TqIO::kAccessWrite, TqIO::kAccessReadWrite}) {
        const auto create = [&](const wchar_t* path) {
            return BufPtr(FS::createFileBuf(path, access, TqIO::kShareDenyNone, TqIO::kOpenExisting));
        };
        const BufPtr buffer = create(folder.wide(L"file").c_str());
        const bool isInput = access == TqIO::kAccessRead;
        EXPECT_EQ(dynamic_cast<TqFileIStreamBuf*>(buffer.get()) != nullptr, isInput);
        EXPECT_EQ(dynamic_cast<TqFileOStreamBuf*>(buffer.get()) != nullptr, !isInput);
        EXPECT_TRUE(buffer->length() == 5 && buffer->shareMode() == TqIO::kShareDenyNone);
        EXPECT_EQ(create(folder.wide(L"missing").c_str()), nullptr);
        EXPECT_EQ(thrownBy([&] { create(L""); }) + thrownBy([&] { create(nullptr); }), L"status 365status 365");
        // What opening throws is no status: the buffer comes back, without a file.
        EXPECT_EQ(create(folder.wide(L"").c_str())->fileName(), nullptr);
    }
}

TEST(FileSystem, WhatIsNotProvidedDoesNothing) {
    const TempFolder folder;
    folder.write("file", "12345");
    const std::wstring path = folder.wide(L"file"), other = folder.wide(L"other");
    for (const auto function : {FS::isDirectory, FS::createFile, FS::deleteFile, FS::createDirectory,
                                FS::deleteDirectory, FS::setCurrentDirectory})
        EXPECT_FALSE(function(path.c_str()) || function(other.c_str()) || function(folder.wide(L"").c_str()));
    for (const auto function : {FS::getCreationTime, FS::getAccessingTime, FS::getModificationTime,
                                FS::getDiskAvailableSpace, FS::getDiskFreeSpace, FS::getDiskTotalSpace})
        EXPECT_EQ(function(path.c_str()), 0U);
    wchar_t out[] = L"#";
    for (const auto function : {FS::getCurrentDirectory, FS::getOSDirectory, FS::getSystemDirectory,
                                FS::getTempDirectory, FS::getRunDirectory})
        EXPECT_TRUE(!function(out) && out[0] == L'#');
    EXPECT_FALSE(FS::renameFile(path.c_str(), other.c_str()) || FS::getFileSize(static_cast<void*>(out)) != 0);
    EXPECT_TRUE(readFile(folder.path("file")).size() == 5 && !std::filesystem::exists(folder.path("other")));
}

} // namespace
