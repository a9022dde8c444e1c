#include "stream/StreamTest.h"

#include <TqOsBase/stream/FileStreamBuf.h>

#include <fcntl.h>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace streamtest;
using BufPtr = std::unique_ptr<TqFileStreamBuf>;

BufPtr openExclusively(const std::wstring& name, Lumo::ErrorStatus& status) {
    status = Lumo::eOk;
    return BufPtr(createFileIOStreamBuf(name.c_str(), &status, TqIO::kAccessReadWrite, TqIO::kShareDenyWrite,
                                        TqIO::kOpenExisting));
}

// Another process that opens a file, holds it as it is told, and answers what it sees. One byte each way per step.
class OtherProcess {
public:
    explicit OtherProcess(std::string path) : m_path(std::move(path)) {
        if (::pipe(m_commands) != 0 || ::pipe(m_answers) != 0)
            std::abort();
        m_child = ::fork();
        if (m_child == 0)
            serve();
        ::close(m_commands[0]);
        ::close(m_answers[1]);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() {
        ::close(m_commands[1]);
        ::close(m_answers[0]);
        ::waitpid(m_child, nullptr, 0);
    }

    /// 'r' / 'w' take a read or write lock, 'u' releases it, 'g' asks what a write lock would meet: answers F_UNLCK,
    /// F_RDLCK or F_WRLCK, and -1 for a failure.
    int ask(char command) {
        signed char answer = -2;
        if (::write(m_commands[1], &command, 1) != 1 || ::read(m_answers[0], &answer, 1) != 1)
            return -3;
        return answer;
    }

private:
    [[noreturn]] void serve() {
        ::close(m_commands[1]);
        ::close(m_answers[0]);
        const int file = ::open(m_path.c_str(), O_RDWR);
        char command = 0;
        while (::read(m_commands[0], &command, 1) == 1) {
            struct flock lock = {};
            lock.l_whence = SEEK_SET;
            lock.l_type = static_cast<short>(command == 'r' ? F_RDLCK : command == 'u' ? F_UNLCK : F_WRLCK);
            const int result = ::fcntl(file, command == 'g' ? F_GETLK : F_SETLK, &lock);
            const auto answer = static_cast<signed char>(result != 0 ? -1 : command == 'g' ? lock.l_type : 0);
            if (::write(m_answers[1], &answer, 1) != 1)
                break;
        }
        ::_exit(0);
    }

    std::string m_path;
    int m_commands[2] = {};
    int m_answers[2] = {};
    pid_t m_child = -1;
};

TEST(FileLock, EveryOpenReadableFileIsReadLockedUntilItCloses) {
    const TempFolder folder;
    writeFile(folder.path("f"), bytesOf("0123456789"));
    OtherProcess other(folder.path("f"));
    EXPECT_EQ(other.ask('g'), F_UNLCK);
    for (const TqIO::ShareMode share : {TqIO::kShareDenyWrite, TqIO::kShareDenyNone})
        for (const auto create : {createFileStreamBuf, createFileIStreamBuf, createFileIOStreamBuf}) {
            Lumo::ErrorStatus status = Lumo::eOk;
            const BufPtr buf(create(folder.wide("f").c_str(), &status, TqIO::kAccessRead, share, TqIO::kOpenExisting));
            ASSERT_EQ(status, 0);
            EXPECT_EQ(other.ask('g'), F_RDLCK);
            EXPECT_EQ(other.ask('w'), -1);
            buf->close();
            EXPECT_EQ(other.ask('g'), F_UNLCK);
        }
    EXPECT_EQ(other.ask('w'), 0);
    Lumo::ErrorStatus status = Lumo::eOk;
    const BufPtr buf(createFileStreamBuf(folder.wide("f").c_str(), &status, TqIO::kAccessRead, TqIO::kShareDenyNone,
                                         TqIO::kOpenExisting));
    EXPECT_EQ(status, 0) << "only an exclusive open minds the lock of another";
}

TEST(FileLock, ExclusiveOpenIsRefusedWhileAnotherProcessHoldsAnyLock) {
    const TempFolder folder;
    writeFile(folder.path("f"), bytesOf("0123456789"));
    const std::wstring name = folder.wide("f");
    OtherProcess other(folder.path("f"));
    Lumo::ErrorStatus status = Lumo::eOk;
    for (const char lock : {'r', 'w'}) {
        ASSERT_EQ(other.ask(lock), 0);
        BufPtr refused = openExclusively(name, status);
        EXPECT_EQ(status, 433);
        EXPECT_EQ(refused->fileHandle(), nullptr);
        EXPECT_EQ(refused->length(), 0U);
        EXPECT_EQ(thrownBy([&] { refused->readByte(); }), kEndOfFile);
        refused->close();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(refused->fileHandle()), ~std::uintptr_t{0});
        EXPECT_TRUE(TqFileStreamBufImpl::m_cstrAlreadyOpenFiles.IsEmpty()) << "a refused name is not registered";
        ASSERT_EQ(other.ask('u'), 0);
        const BufPtr granted = openExclusively(name, status);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(other.ask('g'), F_RDLCK);
    }
    EXPECT_EQ(other.ask('g'), F_UNLCK);
}

TEST(FileLock, SecondExclusiveOpenInTheProcessIsRefusedAndKeepsTheLockOfTheFirst) {
    const TempFolder folder;
    writeFile(folder.path("f"), bytesOf("0123456789"));
    writeFile(folder.path("g"), {});
    const std::wstring name = folder.wide("f");
    OtherProcess other(folder.path("f"));
    const CStringList& registry = TqFileStreamBufImpl::m_cstrAlreadyOpenFiles;
    Lumo::ErrorStatus status = Lumo::eOk;
    const BufPtr first = openExclusively(name, status);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(registry.GetCount(), 1);
    EXPECT_EQ(registry.GetHead(), name);
    {
        const BufPtr second = openExclusively(name, status);
        EXPECT_EQ(status, 72);
        EXPECT_EQ(second->fileHandle(), nullptr);
        const BufPtr another = openExclusively(folder.wide("g"), status);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(registry.GetCount(), 2);
    }
    EXPECT_EQ(other.ask('g'), F_RDLCK) << "the refused open must not cost the first its lock";
    EXPECT_EQ(registry.GetCount(), 1);
    const TqIO::ShareMode shares[] = {TqIO::kShareDenyWrite, TqIO::kShareDenyNone};
    for (const TqIO::ShareMode share : shares) {
        const auto access = share == TqIO::kShareDenyNone ? TqIO::kAccessReadWrite : TqIO::kAccessWrite;
        status = Lumo::eOk;
        const BufPtr shared(createFileIOStreamBuf(name.c_str(), &status, access, share, TqIO::kOpenExisting));
        EXPECT_EQ(status, 0) << "not an exclusive open";
    }
    first->close();
    EXPECT_TRUE(registry.IsEmpty());
    TqFileStreamBufImpl third;
    EXPECT_EQ(third.open(name.c_str(), TqIO::kAccessReadWrite, TqIO::kShareDenyWrite, TqIO::kOpenExisting), 0);
    EXPECT_EQ(third.open(name.c_str(), TqIO::kAccessReadWrite, TqIO::kShareDenyWrite, TqIO::kOpenExisting), 0)
        << "the buffer's own file is closed first";
    EXPECT_EQ(registry.GetCount(), 1);
    EXPECT_EQ(third.open(name.c_str(), TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting), 0);
    EXPECT_TRUE(registry.IsEmpty());
}

} // namespace
