// What callers are compiled for and the stored interface (abi/) does not show: the sizes on every system, and what the
// members that callers read directly hold. The order of members and of virtual functions stands there.

#include "reference/Testing.h"

namespace {

static_assert(sizeof(TqStreamBuf) == 8 && sizeof(TqMemStreamBuf) == 8 && sizeof(TqFlatMemBuf) == 24);
static_assert(sizeof(TqFileStreamBuf) == 8 && sizeof(TqFileStreamBufImpl) == 40 && sizeof(TqFileIOStreamBuf) == 40);
static_assert(sizeof(TqFileIStreamBuf) == 72 && sizeof(TqFileOStreamBuf) == 64);
static_assert(sizeof(TqException) == 40 && sizeof(TqExceptionWithMsg) == 48 && sizeof(TqErrorStatus) == 64);
static_assert(sizeof(TqLock) == 8 && sizeof(TqImpLock_mac) == 8 && sizeof(TqLocker) == 8);
static_assert(sizeof(TqVector<wchar_t>) == 8 && sizeof(TqVector<wchar_t>::Data) == 24 && sizeof(TqStringA) == 8);
static_assert(sizeof(CStringList) == 48 && sizeof(CStringArray) == 32 && sizeof(CMapStringToPtr) == 48);
static_assert(sizeof(TqAnsiTextIterator) == 56 && sizeof(TqCharCategory) == 5 * sizeof(std::vector<wchar_t>));
static_assert(sizeof(FormatParameters) == 16 && sizeof(LumoAppUnitSets) == 40 && sizeof(Bigint) == 32);

// What an object holds at a place, whether or not it can be named.
template <class Member, class Object>
Member heldAt(const Object& object, std::size_t place) {
    Member value;
    std::memcpy(&value, reinterpret_cast<const char*>(&object) + place, sizeof value);
    return value;
}

TEST(Members, HoldWhatTheirNamesSay) {
    using Numbers = std::vector<std::int64_t>;
    const auto numbersOf = [](const auto& object, std::initializer_list<std::size_t> places) {
        Numbers numbers;
        for (const std::size_t place : places)
            numbers.push_back(heldAt<std::int64_t>(object, place));
        return numbers;
    };
    CStringList list(3);
    list.AddTail(L"a");
    EXPECT_EQ(heldAt<__POSITION*>(list, 0), list.GetHeadPosition());
    EXPECT_EQ(numbersOf(list, {16, 40}), (Numbers{1, 3})) << "count and block size";
    CStringArray array;
    array.SetSize(5, 9);
    array.SetSize(2);
    EXPECT_EQ(heldAt<CStringArray::String*>(array, 0), &array[0]);
    EXPECT_EQ(numbersOf(array, {8, 16, 24}), (Numbers{2, 5, 9})) << "size, capacity, growth";
    CMapStringToPtr map(4);
    map.SetAt(L"k", &map);
    EXPECT_EQ(numbersOf(map, {16, 40}), (Numbers{1, 4})) << "count and block size";

    TqFlatMemBuf memory;
    memory.setlength(5);
    memory.moveTo(3);
    EXPECT_EQ(heldAt<const TqByteVector::Data*>(memory, 8)->m_elements, memory.buffer());
    EXPECT_EQ(heldAt<std::uint32_t>(memory, 16), 3U) << "the position";
    const TqFileIOStreamBuf file(L"/dev/zero", nullptr, TqIO::kAccessReadWrite, TqIO::kShareDenyWrite,
                                 TqIO::kOpenExisting);
    EXPECT_EQ(heldAt<void*>(file, 8), file.fileHandle());
    EXPECT_EQ(heldAt<std::int32_t>(file, 32), ::fileno(static_cast<std::FILE*>(file.fileHandle())));
    EXPECT_EQ(heldAt<std::int32_t>(file, 36), 1) << "open exclusively";
    const reference::TempFolder folder;
    folder.write("input", "abc");
    const TqFileIStreamBuf input(folder.wide(L"input").c_str(), nullptr, TqIO::kAccessRead, TqIO::kShareDenyNone,
                                 TqIO::kOpenExisting);
    EXPECT_EQ(numbersOf(input, {40, 56, 64}), (Numbers{-1, 3, 0})) << "no mapping, length, position";
}

} // namespace
