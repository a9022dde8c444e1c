// What callers are compiled for: the order of virtual functions and of members. A change here breaks every program that
// was built before it.

#include "reference/TempFolder.h"

#include <TqOsBase/TqOsBase.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace {

using std::uint32_t;
using std::uint64_t;
using u8 = unsigned char;

// The place of a virtual function in its table: a pointer to it holds one more than its offset there. A virtual
// destructor takes two places.
template <class Class, class Function>
long slotOf(Function Class::*function) {
    std::ptrdiff_t value = 0;
    std::memcpy(&value, &function, sizeof value);
#if !defined(__aarch64__)
    value -= 1; // the mark of a virtual function, which on arm64 stands in the second half
#endif
    return value / static_cast<long>(sizeof(void*));
}

// Where a member lies in its object.
template <class Object, class Member>
long placeOf(const Object& object, const Member& member) {
    return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&object);
}

// What an object holds at a place, whether or not it can be named.
template <class Member, class Object>
Member heldAt(const Object& object, std::size_t place) {
    Member value;
    std::memcpy(&value, reinterpret_cast<const char*>(&object) + place, sizeof value);
    return value;
}

TEST(Slots, Streams) {
    using S = TqStreamBuf;
    const long slots[] = {
        slotOf<S>(&S::isEOS),
        slotOf<S>(&S::tell),
        slotOf<S>(&S::length),
        slotOf<S>(&S::setlength),
        slotOf<S>(&S::truncate),
        slotOf<S>(&S::rewind),
        slotOf<S>(static_cast<u8* (S::*)()>(&S::buffer)),
        slotOf<S>(static_cast<const u8* (S::*)() const>(&S::buffer)),
        slotOf<S>(&S::seek),
        slotOf<S>(static_cast<u8 (S::*)()>(&S::readByte)),
        slotOf<S>(static_cast<u8 (S::*)(uint64_t)>(&S::readByte)),
        slotOf<S>(static_cast<void (S::*)(u8)>(&S::writeByte)),
        slotOf<S>(static_cast<void (S::*)(uint64_t, u8)>(&S::writeByte)),
        slotOf<S>(static_cast<u8 (S::*)()>(&S::getByte)),
        slotOf<S>(static_cast<u8 (S::*)(uint64_t)>(&S::getByte)),
        slotOf<S>(static_cast<void (S::*)(u8)>(&S::setByte)),
        slotOf<S>(static_cast<void (S::*)(uint64_t, u8)>(&S::setByte)),
        slotOf<S>(static_cast<void (S::*)(u8*, uint32_t)>(&S::readBytes)),
        slotOf<S>(static_cast<void (S::*)(uint64_t, u8*, uint32_t)>(&S::readBytes)),
        slotOf<S>(static_cast<void (S::*)(const u8*, uint32_t)>(&S::writeBytes)),
        slotOf<S>(static_cast<void (S::*)(uint64_t, const u8*, uint32_t)>(&S::writeBytes)),
        slotOf<S>(static_cast<void (S::*)(u8*, uint32_t)>(&S::getBytes)),
        slotOf<S>(static_cast<void (S::*)(uint64_t, u8*, uint32_t)>(&S::getBytes)),
        slotOf<S>(static_cast<void (S::*)(const u8*, uint32_t)>(&S::setBytes)),
        slotOf<S>(static_cast<void (S::*)(uint64_t, const u8*, uint32_t)>(&S::setBytes)),
        slotOf<S>(&S::copyFrom),
        slotOf<S>(&S::copyTo),
    };
    long expected = 2;
    for (const long slot : slots)
        EXPECT_EQ(slot, expected++);
    using M = TqMemStreamBuf;
    EXPECT_EQ(slotOf<M>(&M::bufSize), expected);
    EXPECT_EQ(slotOf<M>(&M::resize), expected + 1);
    EXPECT_EQ(slotOf<M>(&M::reserve), expected + 2);
    EXPECT_EQ(slotOf<M>(&M::moveTo), expected + 3);
    EXPECT_EQ(slotOf<M>(&M::open), expected + 4);
    EXPECT_EQ(slotOf<M>(&M::close), expected + 5);
    using F = TqFileStreamBuf;
    EXPECT_EQ(slotOf<F>(&F::fileName), expected);
    EXPECT_EQ(slotOf<F>(&F::shareMode), expected + 1);
    EXPECT_EQ(slotOf<F>(&F::fileHandle), expected + 2);
    EXPECT_EQ(slotOf<F>(&F::close), expected + 3);
}

TEST(Slots, Others) {
    EXPECT_EQ(slotOf(&TqException::description), 2);
    EXPECT_EQ(slotOf(&TqException::code), 3);
    EXPECT_EQ(slotOf(&TqLock::lock), 2);
    EXPECT_EQ(slotOf(&TqLock::unlock), 3);
    EXPECT_EQ(slotOf(&CReadUserDefBigfontIni::ReadIni), 0);
    EXPECT_EQ(slotOf(&CReadUserDefBigfontIni::FindIniFile), 1);
}

static_assert(sizeof(TqStreamBuf) == 8 && sizeof(TqMemStreamBuf) == 8 && sizeof(TqFlatMemBuf) == 24);
static_assert(sizeof(TqFileStreamBuf) == 8 && sizeof(TqFileStreamBufImpl) == 40 && sizeof(TqFileIOStreamBuf) == 40);
static_assert(sizeof(TqFileIStreamBuf) == 72 && sizeof(TqFileOStreamBuf) == 64);
static_assert(sizeof(TqException) == 40 && sizeof(TqExceptionWithMsg) == 48 && sizeof(TqErrorStatus) == 64);
static_assert(sizeof(TqLock) == 8 && sizeof(TqImpLock_mac) == 8 && sizeof(TqLocker) == 8);
static_assert(sizeof(TqVector<wchar_t>) == 8 && sizeof(TqVector<wchar_t>::Data) == 24 && sizeof(TqStringA) == 8);
static_assert(sizeof(CStringList) == 48 && sizeof(CStringArray) == 32 && sizeof(CMapStringToPtr) == 48);
static_assert(sizeof(TqAnsiTextIterator) == 56 && sizeof(TqCharCategory) == 5 * sizeof(std::vector<wchar_t>));

// Members in their order, each with the place where callers look for it.
static_assert(offsetof(TqVector<wchar_t>::Data, m_refCount) == 0);
static_assert(offsetof(TqVector<wchar_t>::Data, m_logicalLength) == 4);
static_assert(offsetof(TqVector<wchar_t>::Data, m_physicalLength) == 8);
static_assert(offsetof(TqVector<wchar_t>::Data, m_growLength) == 12);
static_assert(offsetof(TqVector<wchar_t>::Data, m_elements) == 16);

static_assert(offsetof(FormatParameters, value) == 8 && sizeof(FormatParameters) == 16);

static_assert(offsetof(Bigint, next) == 0 && offsetof(Bigint, k) == 8 && offsetof(Bigint, capacity) == 12);
static_assert(offsetof(Bigint, sign) == 16 && offsetof(Bigint, used) == 20 && offsetof(Bigint, words) == 24);
static_assert(offsetof(TqFCvtAllocator, m_locker) == 0 && offsetof(TqFCvtAllocator, m_pool) == 8);
static_assert(offsetof(TqFCvtAllocator, m_cursor) == 3952 && offsetof(TqFCvtAllocator, m_freeLists) == 3960);

static_assert(offsetof(LumoAppUnitSets, flags) == 0 && offsetof(LumoAppUnitSets, linearUnitMode) == 2);
static_assert(offsetof(LumoAppUnitSets, linearPrecision) == 4 && offsetof(LumoAppUnitSets, alternateUnitMode) == 6);
static_assert(offsetof(LumoAppUnitSets, alternatePrecision) == 8 && offsetof(LumoAppUnitSets, angularUnitMode) == 10);
static_assert(offsetof(LumoAppUnitSets, angularPrecision) == 12);
static_assert(offsetof(LumoAppUnitSets, fractionStackStyle) == 14 && offsetof(LumoAppUnitSets, fractionHeight) == 16);
static_assert(offsetof(LumoAppUnitSets, angleBase) == 24 && offsetof(LumoAppUnitSets, angleDirection) == 32);

static_assert(offsetof(CMapStringToPtr::CAssoc, pNext) == 0 && offsetof(CMapStringToPtr::CAssoc, nBucket) == 8);
static_assert(offsetof(CMapStringToPtr::CAssoc, key) == 12 && offsetof(CMapStringToPtr::CAssoc, value) == 2064);

TEST(Members, Exceptions) {
    const TqExceptionWithMsg withMessage(L"file", 7, L"message");
    EXPECT_EQ(placeOf(withMessage, withMessage.m_pInner), 8);
    EXPECT_EQ(placeOf(withMessage, withMessage.m_flag), 16);
    EXPECT_EQ(placeOf(withMessage, withMessage.m_pszFile), 24);
    EXPECT_EQ(placeOf(withMessage, withMessage.m_nLine), 32);
    EXPECT_EQ(placeOf(withMessage, withMessage.m_pszMessage), 40);
    const TqErrorStatus status(Lumo::kOk);
    EXPECT_EQ(placeOf(status, status.m_pszMessage), 40);
    EXPECT_EQ(placeOf(status, status.m_pszDescription), 48);
    EXPECT_EQ(placeOf(status, status.m_errorType), 56);
}

TEST(Members, Collections) {
    CStringList list(3);
    list.AddTail(L"a");
    list.AddTail(L"b");
    EXPECT_EQ(heldAt<__POSITION*>(list, 0), list.GetHeadPosition());
    EXPECT_EQ(heldAt<__POSITION*>(list, 8), list.GetTailPosition());
    EXPECT_EQ(heldAt<std::int64_t>(list, 16), 2);
    EXPECT_NE(heldAt<void*>(list, 24), nullptr) << "the free node";
    EXPECT_NE(heldAt<CPlex*>(list, 32), nullptr);
    EXPECT_EQ(heldAt<std::int64_t>(list, 40), 3);
    // A node: next, previous, string.
    const auto* head = reinterpret_cast<const char*>(list.GetHeadPosition());
    EXPECT_EQ(heldAt<__POSITION*>(*head, 0), list.GetTailPosition());
    EXPECT_EQ(heldAt<__POSITION*>(*head, 8), nullptr);
    EXPECT_EQ(placeOf(*head, list.GetHead()), 16);

    CStringArray array;
    array.SetSize(5, 9);
    array.SetSize(2);
    EXPECT_EQ(heldAt<CStringArray::String*>(array, 0), &array[0]);
    EXPECT_EQ(heldAt<std::int64_t>(array, 8), 2);
    EXPECT_EQ(heldAt<std::int64_t>(array, 16), 5);
    EXPECT_EQ(heldAt<std::int64_t>(array, 24), 9);

    CMapStringToPtr map(4);
    map.SetAt(L"k", &map);
    unsigned bucket = 0;
    unsigned hash = 0;
    auto* const table = heldAt<CMapStringToPtr::CAssoc**>(map, 0);
    ASSERT_NE(table, nullptr);
    auto* const entry = map.GetAssocAt(L"k", bucket, hash);
    EXPECT_EQ(table[bucket], entry);
    EXPECT_EQ(heldAt<uint32_t>(map, 8), 17U);
    EXPECT_EQ(heldAt<std::int64_t>(map, 16), 1);
    EXPECT_EQ(heldAt<CMapStringToPtr::CAssoc*>(map, 24), entry + 1) << "the next free entry";
    EXPECT_NE(heldAt<CPlex*>(map, 32), nullptr);
    EXPECT_EQ(heldAt<std::int64_t>(map, 40), 4);
}

TEST(Members, Texts) {
    const TqStringA string("pier");
    const auto* header = reinterpret_cast<const TqStrHeaderA*>(string.c_str()) - 1;
    EXPECT_EQ(heldAt<uint32_t>(*header, 0), 1U);
    EXPECT_EQ(heldAt<uint64_t>(*header, 8), 5U);
    EXPECT_EQ(heldAt<uint64_t>(*header, 16), string.capacity());
    EXPECT_EQ(placeOf(*header, header->m_codePage), 32);

    const TqCharCategory& puncts = TqCharCategory::s_instance;
    const std::vector<wchar_t>* const inOrder[] = {&puncts.leftPuncts(), &puncts.normalPuncts(), &puncts.rightPuncts(),
                                                   &puncts.quotationPuncts(), &puncts.allPuncts()};
    for (std::size_t i = 0; i < std::size(inOrder); ++i)
        EXPECT_EQ(placeOf(puncts, *inOrder[i]), static_cast<long>(i * sizeof(std::vector<wchar_t>)));

    struct Walk : TqAnsiTextIterator {
        using TqAnsiTextIterator::TqAnsiTextIterator;
        void check() const {
            EXPECT_EQ(placeOf(*this, m_start), 0);
            EXPECT_EQ(placeOf(*this, m_position), 8);
            EXPECT_EQ(placeOf(*this, m_length), 16);
            EXPECT_EQ(placeOf(*this, m_codePage), 20);
            EXPECT_EQ(placeOf(*this, m_current), 24);
            EXPECT_EQ(placeOf(*this, m_characterStart), 32);
            EXPECT_EQ(placeOf(*this, m_end), 40);
            EXPECT_EQ(placeOf(*this, m_multiByte), 48);
        }
    };
    Walk(string, kCodePageWestern).check();
}

TEST(Members, Streams) {
    TqFlatMemBuf memory;
    memory.writeBytes(reinterpret_cast<const u8*>("abc"), 3);
    const auto* record = heldAt<const TqByteVector::Data*>(memory, 8);
    EXPECT_EQ(record->m_elements, memory.buffer());
    EXPECT_EQ(heldAt<uint32_t>(memory, 16), 3U) << "the position";

    const std::wstring name = L"/dev/zero";
    const TqFileIOStreamBuf file(name.c_str(), nullptr, TqIO::kAccessReadWrite, TqIO::kShareDenyWrite,
                                 TqIO::kOpenExisting);
    ASSERT_NE(file.fileName(), nullptr);
    EXPECT_EQ(heldAt<void*>(file, 8), file.fileHandle());
    EXPECT_EQ(heldAt<const wchar_t*>(file, 16), file.fileName());
    EXPECT_EQ(heldAt<uint32_t>(file, 24), 0x20U) << "the share mode";
    EXPECT_EQ(heldAt<u8>(file, 28), 0) << "not dirty";
    EXPECT_EQ(heldAt<std::int32_t>(file, 32), ::fileno(static_cast<std::FILE*>(file.fileHandle())));
    EXPECT_EQ(heldAt<std::int32_t>(file, 36), 1) << "open exclusively";

    const reference::TempFolder folder;
    folder.write("input", "abc");
    const TqFileIStreamBuf input(folder.wide(L"input").c_str(), nullptr, TqIO::kAccessRead, TqIO::kShareDenyNone,
                                 TqIO::kOpenExisting);
    EXPECT_EQ(heldAt<std::uintptr_t>(input, 40), ~std::uintptr_t{0});
    EXPECT_NE(heldAt<void*>(input, 48), nullptr) << "the view";
    EXPECT_EQ(heldAt<uint64_t>(input, 56), input.length());
    EXPECT_EQ(heldAt<uint64_t>(input, 64), 0U) << "the position";

    TqFileOStreamBuf output(L"/dev/null", nullptr, TqIO::kAccessReadWrite, TqIO::kShareDenyNone, TqIO::kOpenExisting,
                            0);
    output.writeBytes(reinterpret_cast<const u8*>("abc"), 3);
    EXPECT_EQ(heldAt<uint32_t>(output, 40 + 16), 3U) << "pending in a memory stream after the base";
    output.close();
}

} // namespace
