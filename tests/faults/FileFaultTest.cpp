#include "faults/FailingCalls.h"
#include "reference/CountingNew.h"
#include "stream/StreamTest.h"

namespace {

using namespace streamtest;
using faults::Call;
using faults::Fault;
using faults::FaultyStreams;

// A session that writes: pieces of a length at a position, and reading one byte between.
constexpr std::pair<std::size_t, std::size_t> kSteps[] = {{0, 100}, {100, 9000}, {9100, 40000},
                                                          {50, 0},  {60, 3},     {49100, 7}};

// Writes the session and says whether what it accepted can be trusted: with no error from close() the file holds what
// was accepted before the step that failed, and of that step what the system had taken.
std::wstring expectNoSilentLoss(Kind kind, const std::wstring& name, const std::string& path) {
    Bytes accepted, attempted;
    const BufPtr buf = openForUpdate(kind, name, TqIO::kCreateAlways);
    for (const auto& [at, length] : kSteps) {
        const Bytes data = pattern(length);
        attempted = accepted;
        attempted.resize(std::max(accepted.size(), at + length));
        std::copy(data.begin(), data.end(), attempted.begin() + static_cast<std::ptrdiff_t>(at));
        const auto act = [&, start = at] {
            buf->seek(start, TqIO::kSeekStart);
            data.empty() ? static_cast<void>(buf->readByte())
                         : buf->writeBytes(data.data(), static_cast<std::uint32_t>(data.size()));
        };
        if (!thrownBy(act).empty())
            break;
        accepted = attempted;
    }
    const std::wstring thrown = thrownBy([&] { buf->close(); });
    EXPECT_EQ(buf->fileName(), nullptr) << "closed nevertheless";
    if (thrown.empty()) {
        const Bytes stored = readFile(path);
        bool isSound = stored.size() >= accepted.size() && stored.size() <= attempted.size();
        for (std::size_t i = 0; isSound && i < stored.size(); ++i)
            isSound = stored[i] == attempted[i] || (i < accepted.size() && stored[i] == accepted[i]);
        EXPECT_TRUE(isSound);
    }
    EXPECT_TRUE(thrown.empty() || thrown == kWriteError);
    return thrown;
}

TEST(FileFaults, NoAcceptedByteIsLostInSilence) {
    const TempFolder folder;
    for (const Kind kind : {kPlain, kOutput})
        for (const Call call : {Call::kWrite, Call::kMove, Call::kRead, Call::kClose})
            for (const Fault fault : {Fault::kInterrupted, Fault::kShort, Fault::kBroken}) {
                int nth = 0;
                for (bool isMet = true; isMet && !HasFailure(); ++nth) {
                    SCOPED_TRACE(testing::Message() << "kind " << kind << " call " << static_cast<int>(call)
                                                    << " fault " << static_cast<int>(fault) << " at " << nth);
                    const FaultyStreams faulty(call, fault, nth);
                    const std::wstring thrown = expectNoSilentLoss(kind, folder.wide(L"f"), folder.path("f"));
                    isMet = faulty.wasMet();
                    EXPECT_TRUE(call != Call::kClose || !isMet || !thrown.empty()) << "a failing close is reported";
                }
                EXPECT_GT(nth, 1) << "nothing was tried";
            }
}

TEST(FileFaults, InterruptedAndShortReadsBringEverything) {
    const TempFolder folder;
    const Bytes stored = pattern(20000);
    writeFile(folder.path("f"), stored);
    for (const Kind kind : {kPlain, kOutput})
        for (int nth = 0; nth < 12; ++nth) {
            const FaultyStreams faulty(Call::kRead, nth % 2 == 0 ? Fault::kInterrupted : Fault::kShort, nth / 2);
            const BufPtr buf = openForUpdate(kind, folder.wide(L"f"), TqIO::kOpenExisting);
            Bytes got(20000);
            buf->readBytes(got.data(), 5);
            buf->getBytes(got.data() + 5, 9000);
            buf->readBytes(got.data() + 5, 19995);
            EXPECT_TRUE(got == stored && (faulty.wasMet() || nth > 5)) << nth;
        }
    // A device that fails: what could not be read is left alone, and a later write is not blamed for it.
    const FaultyStreams broken(Call::kRead, Fault::kBroken, 1);
    const BufPtr buf = openForUpdate(kPlain, folder.wide(L"f"), TqIO::kOpenExisting);
    Bytes got(20000, 0xC5);
    buf->readBytes(got.data(), 20000);
    const auto count = std::mismatch(got.begin(), got.end(), stored.begin()).first - got.begin();
    EXPECT_LT(count, 20000);
    EXPECT_TRUE(std::all_of(got.begin() + count, got.end(), [](unsigned char byte) { return byte == 0xC5; }));
    buf->seek(0, TqIO::kSeekStart);
    buf->writeByte('x');
    buf->close();
    EXPECT_EQ(readFile(folder.path("f"))[0], 'x');
}

TEST(FileFaults, FailingCloseIsNoErrorWhereNothingWasWritten) {
    const TempFolder folder;
    folder.write("f", "ab");
    for (const Kind kind : {kPlain, kOutput}) {
        const FaultyStreams faulty(Call::kClose, Fault::kBroken, 0);
        const BufPtr buf = openForUpdate(kind, folder.wide(L"f"), TqIO::kOpenExisting);
        EXPECT_EQ(thrownBy([&] { buf->readByte(), buf->close(); }), L"");
        EXPECT_TRUE(faulty.wasMet() && buf->fileName() == nullptr);
    }
}

// The exit code of a child that does this, -1 when it is aborted.
int exitCodeOf(const std::function<int()>& session) {
    const pid_t child = ::fork();
    if (child == 0)
        std::_Exit(session());
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? -1 : WEXITSTATUS(status);
}

TEST(FileFaults, PositionThatCannotBePutBackEndsTheProcess) {
    const TempFolder folder;
    writeFile(folder.path("f"), pattern(20000));
    enum { kReported, kWrongPosition, kNotMet };
    for (const Kind kind : {kPlain, kOutput})
        for (const bool isGet : {true, false}) {
            int aborted = 0;
            for (int nth = 0, code = 0; code != kNotMet && nth < 100; ++nth) {
                code = exitCodeOf([&] {
                    const FaultyStreams faulty(Call::kMove, Fault::kBroken, nth);
                    const BufPtr buf = openForUpdate(kind, folder.wide(L"f"), TqIO::kOpenExisting);
                    Bytes got(9000, 'x');
                    try {
                        buf->seek(10000, TqIO::kSeekStart);
                        isGet ? buf->getBytes(got.data(), 9000) : buf->setBytes(got.data(), 9000);
                    } catch (...) {
                        return kReported;
                    }
                    const std::uint64_t position = buf->tell(); // all bits set: reported too
                    const bool isRight = position == 10000 || position == UINT64_MAX;
                    return !isRight ? kWrongPosition : faulty.wasMet() ? kReported : kNotMet;
                });
                EXPECT_NE(code, kWrongPosition) << "kind " << kind << " get " << isGet << " move " << nth;
                aborted += code == -1;
            }
            EXPECT_GT(aborted, 0) << "kind " << kind << " get " << isGet;
        }
}

TEST(FileFaults, InputThatCannotBeMappedIsReadThroughTheStream) {
    const TempFolder folder;
    folder.write("f", "input");
    faults::g_failsMapping = true;
    const BufPtr buf = openForInput(folder.wide(L"f"));
    faults::g_failsMapping = false;
    Bytes got(6, '#');
    buf->readBytes(got.data(), 6);
    EXPECT_EQ(got, bytesOf("input#")) << "short, as through a stream";
    EXPECT_EQ(buf->length(), 5U);
}

TEST(FileFaults, OpeningWithoutMemoryLeavesNothingBehind) {
    const TempFolder folder;
    writeFile(folder.path("f"), pattern(10));
    const std::wstring name = folder.wide(L"f");
    const CStringList& registry = TqFileStreamBufImpl::m_cstrAlreadyOpenFiles;
    counting_new::sweepAllocations([&](int failing) {
        BufPtr buf;
        const bool ranOut = counting_new::runsOut(failing, [&] {
            buf.reset(createFileOStreamBuf(name.c_str(), nullptr, TqIO::kAccessReadWrite, TqIO::kShareDenyWrite,
                                           TqIO::kOpenExisting, 100));
        });
        const bool isOpen = !ranOut && buf->fileName() != nullptr;
        EXPECT_EQ(registry.GetCount(), isOpen ? 1 : 0);
        if (!isOpen)
            return false;
        EXPECT_TRUE(counting_new::runsOut(0, [&] { buf->writeBytes(pattern(400).data(), 400); }));
        EXPECT_EQ(buf->tell(), 0U) << "nothing was accepted";
        buf->close();
        return true;
    });
    counting_new::sweepAllocations([&](int failing) {
        tq::StreamPointer owned;
        const bool ranOut =
            counting_new::runsOut(failing, [&] { owned = tq::openUpdate(name, TqIO::kShareDenyWrite); });
        EXPECT_EQ(ranOut, owned == nullptr);
        EXPECT_EQ(registry.GetCount(), owned != nullptr ? 1 : 0);
        return owned != nullptr;
    });
    EXPECT_EQ(readFile(folder.path("f")), pattern(10));
}

} // namespace
