#include <TqOsBase/containers/TqStringA.h>

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using MemData = TqMemData<char, TqStrHeaderA, TqMemDataAllocator, TqPodReallocator<char>>;

static_assert(sizeof(TqStringA) == sizeof(char*));

const TqStrHeaderA& headerOf(const TqStringA& s) {
    return reinterpret_cast<const TqStrHeaderA*>(s.c_str())[-1];
}

TEST(TqStringA, ThePublishedEmptyInstancesStandReady) {
    const auto& empty = TqStrHeaderA::sm_EmptyStrA;
    EXPECT_GE(empty.m_refCount, 1U);
    EXPECT_EQ(empty.m_usedLength + empty.m_capacity + static_cast<unsigned>(empty.m_codePage), 0U);
    EXPECT_EQ(empty.m_growStep, 8U);
    EXPECT_EQ(reinterpret_cast<const char*>(&empty) + sizeof(TqStrHeaderA), &empty.m_terminator);
    EXPECT_EQ(TqMemDataHeader::sm_EmptyHeader.m_refCount, 1U);
    EXPECT_EQ(TqMemDataHeader::sm_EmptyHeader.m_growStep, 8U);
    EXPECT_STREQ(TqStringA::kEmptyStr, "");
    EXPECT_EQ(TqStringA().c_str(), TqStringA::kEmptyStr);
}

TEST(TqStringA, AssigningSharesNothingAndRoundsUpFromTheSharedEmptyString) {
    const std::uint32_t holders = TqStrHeaderA::sm_EmptyStrA.m_refCount;
    {
        TqStringA s;
        EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_refCount, holders + 1);
        s.assign("");
        s.assign(nullptr);
        EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_refCount, holders + 1);
        s.assign("abc");
        EXPECT_EQ(headerOf(s).m_usedLength, 4U);
        EXPECT_EQ(s.capacity(), 8U);
        EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_refCount, holders);
        s.assign("abcdefgh");
        EXPECT_EQ(s.capacity(), 16U) << "8, doubled";
        s.assign("x");
        EXPECT_EQ(s.capacity(), 16U) << "never shrinks";
        s.assign(std::string(200, 'y').c_str());
        EXPECT_EQ(s.capacity(), 16U + 201U - 2U) << "by what is missing";
        s.assign(nullptr);
        EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_refCount, holders + 1);

        const TqStringA fromEmpty("");
        EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_refCount, holders + 1) << "a private header carries the code page";
        EXPECT_EQ(fromEmpty.capacity(), 0U);
        EXPECT_TRUE(fromEmpty.isEmpty());
        EXPECT_EQ(fromEmpty.codePage(), 0);
    }
    EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_refCount, holders);
}

TEST(TqMemData, GrowthStepReaches64KiBAndIsKeptThere) {
    MemData data;
    data.copyBeforeWrite(65536);
    ASSERT_EQ(data.header().m_capacity, 65536U);
    data.copyBeforeWrite(65537);
    ASSERT_EQ(data.header().m_capacity, 131072U);
    data.copyBeforeWrite(131073);
    ASSERT_EQ(data.header().m_capacity, 196608U);
    data.copyBeforeWrite(1000000);
    ASSERT_EQ(data.header().m_capacity, 196608U + (1000000U - 131073U));
}

TEST(TqMemData, APermanentHeaderIsNeitherCountedNorFreed) {
    MemData data;
    data.copyBeforeWrite(4);
    TqStrHeaderA& header = data.header();
    header.m_refCount = TqMemDataHeader::kPermanentCount;
    for (int i = 0; i < 3; ++i) {
        MemData holder(data);
        MemData other;
        other = holder;
        EXPECT_EQ(header.m_refCount, TqMemDataHeader::kPermanentCount);
        holder.copyBeforeWrite(4);
        EXPECT_NE(&holder.header(), &header) << "always taken as shared";
    }
    std::memcpy(data.data(), "abc", 4);
    header.m_refCount = 1;
}

TEST(TqMemData, SizesThatWouldWrapChangeNothing) {
    MemData data;
    data.copyBeforeWrite(4);
    const char* const text = data.data();
    EXPECT_FALSE(data.reallocData(SIZE_MAX - 8, 0));
    for (std::size_t less = 0; less < 64; ++less)
        EXPECT_THROW(data.copyBeforeWrite(SIZE_MAX - less), std::bad_alloc) << less;
    EXPECT_EQ(data.data(), text);
    EXPECT_EQ(data.header().m_usedLength, 4U);
    EXPECT_TRUE(tq::detail::isInOrder(data.header()));
    data.header().m_usedLength = data.header().m_capacity + 1;
    EXPECT_FALSE(tq::detail::isInOrder(data.header())) << "damage is seen by what assertions rely on";
    data.header().m_usedLength = 4;
}

TEST(TqStringA, BuffersKeepTheTextAndAreCutToTheBlock) {
    TqStringA s;
    EXPECT_EQ(s.getBuffer(-1), nullptr);
    char* buffer = s.getBuffer(5);
    EXPECT_STREQ(buffer, "") << "a terminated text from the start";
    std::memcpy(buffer, "ab", 3);
    s.releaseBuffer(-1);
    EXPECT_EQ(headerOf(s).m_usedLength, 3U);
    EXPECT_STREQ(s.c_str(), "ab");

    const TqStringA sharer = s;
    buffer = s.getBuffer(1);
    EXPECT_STREQ(buffer, "ab");
    buffer[0] = 'x';
    EXPECT_STREQ(sharer.c_str(), "ab");
    buffer = s.getBuffer(20);
    std::memset(buffer, 'q', s.capacity());
    s.releaseBuffer(-1);
    EXPECT_EQ(s.length(), s.capacity() - 1) << "an unterminated text ends with its block";
    s.releaseBuffer(INT_MAX);
    EXPECT_EQ(s.length(), s.capacity() - 1);
    s.releaseBuffer(-2);
    EXPECT_EQ(s.length(), s.capacity() - 1);
    std::memcpy(s.getBuffer(0), "a\0b", 4);
    s.releaseBuffer(3);
    EXPECT_EQ(s.length(), 3U) << "zero bytes stay part of the text";
    s.releaseBuffer(0);
    EXPECT_TRUE(s.isEmpty());
    for (const int count : {-1, 0, 7})
        s.releaseBuffer(count);
    TqStringA carrier("");
    carrier.releaseBuffer(7);
    EXPECT_TRUE(s.isEmpty());
    EXPECT_TRUE(carrier.isEmpty());
    EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_usedLength, 0U);
}

TEST(TqStringA, ReleasingWithoutGetBufferShowsInTheOtherHolders) {
    TqStringA s("abcdef");
    const TqStringA holder = s;
    s.releaseBuffer(3);
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(holder.length(), 3U);
    EXPECT_STREQ(holder.c_str(), "abcdef") << "the characters are not touched";
}

TEST(TqStringA, ComparesBytesAsUnsignedAndTakesNullAsEmpty) {
    const TqStringA a("a");
    const TqStringA high("\xE9");
    EXPECT_TRUE(a < high);
    EXPECT_TRUE(a < "ab");
    EXPECT_TRUE("A" < a);
    EXPECT_FALSE(a < a);
    EXPECT_TRUE(a == "a" && "a" == a && a == TqStringA("a"));
    EXPECT_TRUE(a != high && a != "" && "b" != a);
    EXPECT_TRUE(TqStringA() == static_cast<const char*>(nullptr));
    EXPECT_STREQ((a + "b" + TqStringA("c")).c_str(), "abc");
    EXPECT_STREQ(("x" + a).c_str(), "xa");
    EXPECT_STREQ((a + static_cast<const char*>(nullptr)).c_str(), "a");
}

// A crowd of strings that copy, change and feed each other, and themselves, against the standard string.
TEST(TqStringA, BehavesLikeAStringWhateverIsShared) {
    constexpr std::size_t kCrowd = 5;
    TqStringA strings[kCrowd];
    std::string models[kCrowd];
    std::mt19937 random(7);
    for (int step = 0; step < 30000; ++step) {
        const std::size_t i = random() % kCrowd;
        const std::size_t j = random() % kCrowd;
        const std::string fresh(random() % 30, static_cast<char>('a' + random() % 26));
        const std::size_t from = random() % (models[i].size() + 1);
        switch (random() % 7) {
        case 0:
            strings[i] = strings[j];
            models[i] = models[j];
            break;
        case 1:
            strings[i] = fresh.c_str();
            models[i] = fresh;
            break;
        case 2:
            strings[i] += strings[j];
            models[i] += models[j];
            break;
        case 3:
            strings[i] += fresh.c_str();
            models[i] += fresh;
            break;
        case 4:
            strings[i].assign(strings[i].c_str() + from);
            models[i] = models[i].substr(from);
            break;
        case 5:
            strings[i] += strings[i].c_str() + from;
            models[i] += models[i].substr(from);
            break;
        default: {
            char* buffer = strings[i].getBuffer(static_cast<int>(from));
            if (!models[i].empty())
                buffer[0] = models[i][0] = '*';
            strings[i].releaseBuffer();
        }
        }
        if (models[i].size() > 2000) {
            strings[i] = nullptr;
            models[i].clear();
        }
        for (std::size_t k = 0; k < kCrowd; ++k)
            ASSERT_EQ(models[k], strings[k].c_str()) << "step " << step;
        ASSERT_EQ(strings[i] < strings[j], models[i] < models[j]);
    }
}

} // namespace
