#include "UnwindTables.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

extern "C" void __register_frame(void*);

namespace macho {

namespace {

// An encoding of the compact form: 4 bits for the kind of frame, then what that kind needs.
constexpr std::uint32_t kKindMask = 0x0F000000;
constexpr std::uint32_t kHasData = 0x40000000; // of the language, for its personality
constexpr unsigned kPersonalityShift = 28;
constexpr std::uint32_t kPersonalityMask = 3;

// Instructions of DWARF's frame programs.
constexpr std::uint8_t kDefineFrame = 0x0C;     // register, offset
constexpr std::uint8_t kSavedAt = 0x80;         // + register; offset
constexpr std::uint8_t kSavedAtExtended = 0x05; // register, offset

constexpr unsigned kWord = 8;             // bytes; frames are described in words below the canonical address
constexpr std::uint8_t kMinusWord = 0x78; // -8 as a signed LEB128

#if defined(__aarch64__)
constexpr unsigned kReturnRegister = 30;
constexpr unsigned kFramePointer = 29;
constexpr unsigned kStackPointer = 31;
constexpr std::uint32_t kFrameless = 0x02000000;
constexpr std::uint32_t kInDwarf = 0x03000000;
#else
constexpr unsigned kReturnRegister = 16;
constexpr unsigned kFramePointer = 6;
constexpr unsigned kStackPointer = 7;
constexpr std::uint32_t kFramed = 0x01000000;
constexpr std::uint32_t kFramelessLarge = 0x03000000;
constexpr std::uint32_t kInDwarf = 0x04000000;
// The registers that a function keeps, as the compact form numbers them from 1, in DWARF's numbers.
constexpr std::uint8_t kKeptRegisters[] = {0, 3, 12, 13, 14, 15, 6};
#endif

// The format of a pointer in DWARF's augmentation data.
constexpr std::uint8_t kAbsent = 0xFF;
constexpr std::uint8_t kFormMask = 0x0F;
constexpr std::uint8_t kRelative = 0x10;
constexpr std::uint8_t kBaseMask = 0x70;
constexpr std::uint8_t kIndirect = 0x80;
constexpr std::uint8_t kAbsolute = 0x00;

// The records of the new table: all their pointers are absolute.
class FrameTable {
public:
    // A common record: personality 0 is none. Returns where it lies.
    std::size_t addCommon(std::uint64_t personality, std::uint64_t codeUnit, std::int8_t dataUnit,
                          unsigned returnRegister, Bytes program) {
        const std::size_t at = m_bytes.size();
        const std::size_t start = begin();
        put<std::uint32_t>(0);
        put<std::uint8_t>(1);
        const std::string_view augmentation = personality != 0 ? "zPLR" : "zR";
        m_bytes.insert(m_bytes.end(), augmentation.begin(), augmentation.end());
        put<std::uint8_t>(0);
        putUleb(codeUnit);
        put<std::uint8_t>(static_cast<std::uint8_t>(dataUnit & 0x7F));
        put<std::uint8_t>(static_cast<std::uint8_t>(returnRegister));
        if (personality != 0) {
            putUleb(11);
            put(kAbsolute);
            put(personality);
            put(kAbsolute); // of the language's data
        } else {
            putUleb(1);
        }
        put(kAbsolute); // of functions
        m_bytes.insert(m_bytes.end(), program.begin(), program.end());
        end(start);
        return at;
    }

    // Begins the record of a function; its program follows, then end().
    std::size_t beginFunction(std::size_t common, bool hasPersonality, std::uint64_t function, std::uint64_t length,
                              std::uint64_t data) {
        const std::size_t start = begin();
        put(static_cast<std::uint32_t>(start - common));
        put(function);
        put(length);
        putUleb(hasPersonality ? sizeof data : 0);
        if (hasPersonality)
            put(data);
        return start;
    }

    void end(std::size_t start) {
        while (m_bytes.size() % 4 != 0)
            put<std::uint8_t>(0); // does nothing in a program
        const auto length = static_cast<std::uint32_t>(m_bytes.size() - start);
        std::memcpy(&m_bytes[start - sizeof length], &length, sizeof length);
    }

    template <class T>
    void put(T value) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof value);
    }

    void putUleb(std::uint64_t value) {
        for (; value > 0x7F; value >>= 7)
            put(static_cast<std::uint8_t>(value | 0x80));
        put(static_cast<std::uint8_t>(value));
    }

    void defineFrame(unsigned reg, std::uint64_t offset) {
        put(kDefineFrame);
        putUleb(reg);
        putUleb(offset);
    }

    // The caller's value of a register lies that many bytes below the canonical frame address.
    void savedBelow(unsigned reg, std::uint64_t bytes) {
        if (reg < 64) {
            put(static_cast<std::uint8_t>(kSavedAt | reg));
        } else {
            put(kSavedAtExtended);
            putUleb(reg);
        }
        putUleb(bytes / kWord);
    }

    std::uint8_t* finish() {
        put<std::uint32_t>(0);
        return m_bytes.data();
    }

private:
    std::size_t begin() {
        put<std::uint32_t>(0); // the length comes later
        return m_bytes.size();
    }

    std::vector<std::uint8_t> m_bytes;
};

#if defined(__aarch64__)

void describeFrame(FrameTable& table, std::uint32_t encoding, const std::uint8_t*) {
    std::uint64_t below = kWord;
    const auto saved = [&](unsigned reg) {
        table.savedBelow(reg, below);
        below += kWord;
    };
    if ((encoding & kKindMask) == kFrameless) {
        table.defineFrame(kStackPointer, std::uint64_t{(encoding >> 12) & 0xFFF} * 16);
    } else {
        table.defineFrame(kFramePointer, 16);
        saved(kReturnRegister);
        saved(kFramePointer);
    }
    constexpr unsigned kFirstKept = 19, kFirstKeptFloat = 72;
    for (unsigned pair = 0; pair < 5; ++pair) {
        if ((encoding & (1U << pair)) != 0) {
            saved(kFirstKept + 2 * pair);
            saved(kFirstKept + 2 * pair + 1);
        }
    }
    for (unsigned pair = 0; pair < 4; ++pair) {
        if ((encoding & (0x100U << pair)) != 0) {
            saved(kFirstKeptFloat + 2 * pair);
            saved(kFirstKeptFloat + 2 * pair + 1);
        }
    }
}

#else

void describeFramed(FrameTable& table, std::uint32_t encoding) {
    table.defineFrame(kFramePointer, 16);
    table.savedBelow(kFramePointer, 16);
    table.savedBelow(kReturnRegister, 8);
    const std::uint64_t farthest = (encoding >> 16) & 0xFF; // words below the saved frame pointer
    std::uint32_t registers = encoding & 0x7FFF;            // three bits each, farthest first
    for (std::uint64_t i = 0; i < 5; ++i, registers >>= 3) {
        if ((registers & 7) != 0)
            table.savedBelow(kKeptRegisters[registers & 7], 16 + kWord * (farthest - i));
    }
}

// The order of the registers is a permutation, coded as the mixed-radix number of which of those left comes next.
void describeFrameless(FrameTable& table, std::uint32_t encoding, const std::uint8_t* code) {
    constexpr unsigned kKept = 6;
    std::uint64_t size = std::uint64_t{(encoding >> 16) & 0xFF} * kWord;
    if ((encoding & kKindMask) == kFramelessLarge) // the size stands in the instruction there
        size = valueAt<std::uint32_t>(code + ((encoding >> 16) & 0xFF)) + ((encoding >> 13) & 7) * kWord;
    const unsigned count = (encoding >> 10) & 7;
    std::uint32_t permutation = encoding & 0x3FF;
    std::uint32_t weight = 1;
    for (unsigned i = 1; i < count; ++i)
        weight *= kKept - i;
    table.defineFrame(kStackPointer, size);
    table.savedBelow(kReturnRegister, kWord);
    bool isUsed[kKept + 1] = {};
    for (unsigned i = 0; i < count; ++i) {
        std::uint32_t rank = weight != 0 ? permutation / weight : 0;
        permutation = weight != 0 ? permutation % weight : 0;
        if (kKept - 1 - i > 0)
            weight /= kKept - 1 - i;
        for (unsigned reg = 1; reg <= kKept; ++reg) {
            if (isUsed[reg] || rank-- != 0)
                continue;
            isUsed[reg] = true;
            table.savedBelow(kKeptRegisters[reg], kWord + kWord * (count - i));
            break;
        }
    }
}

void describeFrame(FrameTable& table, std::uint32_t encoding, const std::uint8_t* code) {
    if ((encoding & kKindMask) == kFramed)
        describeFramed(table, encoding);
    else
        describeFrameless(table, encoding, code);
}

#endif

// The compact table: a first level of pages of functions, each page an array of functions with their encodings or, in
// the compressed kind, with indices of encodings.
class CompactTable {
public:
    struct Function {
        std::uint32_t offset;
        std::uint32_t encoding;
    };

    explicit CompactTable(const std::uint8_t* table) : m_table(table) {
        const std::uint32_t encodings = word(4), encodingCount = word(8), index = word(20), pages = word(24) - 1;
        for (std::uint32_t i = 0; i < pages; ++i) {
            const std::uint32_t entry = index + i * kIndexBytes;
            for (std::uint32_t at = word(entry + 8); at < word(entry + kIndexBytes + 8); at += 8)
                m_languageData[word(at)] = word(at + 4);
            const std::uint32_t page = word(entry + 4);
            if (page != 0)
                addPage(page, word(entry), encodings, encodingCount);
        }
        m_functions.push_back({word(index + pages * kIndexBytes), 0}); // where the last one ends
    }

    const std::vector<Function>& functions() const { return m_functions; }
    std::uint32_t languageData(std::uint32_t function) const { return m_languageData.at(function); }
    std::uint32_t personalityCount() const { return word(16); }
    std::uint32_t personality(std::uint32_t i) const { return word(word(12) + 4 * i); }

private:
    static constexpr std::uint32_t kIndexBytes = 12;
    static constexpr std::uint32_t kRegularPage = 2;

    std::uint32_t word(std::uint64_t at) const { return valueAt<std::uint32_t>(m_table + at); }
    std::uint16_t half(std::uint64_t at) const { return valueAt<std::uint16_t>(m_table + at); }

    void addPage(std::uint32_t page, std::uint32_t base, std::uint32_t encodings, std::uint32_t encodingCount) {
        const std::uint32_t entries = page + half(page + 4), count = half(page + 6);
        for (std::uint32_t i = 0; i < count; ++i) {
            if (word(page) == kRegularPage) {
                m_functions.push_back({word(entries + 8 * i), word(entries + 8 * i + 4)});
                continue;
            }
            const std::uint32_t entry = word(entries + 4 * i), number = entry >> 24;
            const std::uint32_t own = page + half(page + 8);
            m_functions.push_back({base + (entry & 0xFFFFFF), number < encodingCount
                                                                  ? word(encodings + 4 * number)
                                                                  : word(own + 4 * (number - encodingCount))});
        }
    }

    const std::uint8_t* m_table;
    std::vector<Function> m_functions;
    std::map<std::uint32_t, std::uint32_t> m_languageData;
};

void addCompact(FrameTable& table, const UnwindSource& source) {
    const CompactTable compact(source.compact);
    std::uint8_t* const text = source.base + source.textOffset;
    const auto address = [text](std::uint32_t offset) { return reinterpret_cast<std::uint64_t>(text + offset); };
    const std::size_t plain = table.addCommon(0, 1, -8, kReturnRegister, {});
    std::vector<std::size_t> commons;
    for (std::uint32_t i = 0; i < compact.personalityCount(); ++i) {
        const auto personality = valueAt<std::uint64_t>(text + compact.personality(i));
        commons.push_back(table.addCommon(personality, 1, -8, kReturnRegister, {}));
    }
    const auto& functions = compact.functions();
    for (std::size_t i = 0; i + 1 < functions.size(); ++i) {
        const auto [offset, encoding] = functions[i];
        const std::uint32_t end = functions[i + 1].offset;
        if ((encoding & kKindMask) == 0 || (encoding & kKindMask) == kInDwarf || end <= offset)
            continue;
        const std::uint32_t personality = (encoding >> kPersonalityShift) & kPersonalityMask;
        const std::uint64_t data = (encoding & kHasData) != 0 ? address(compact.languageData(offset)) : 0;
        const std::size_t start = table.beginFunction(personality != 0 ? commons[personality - 1] : plain,
                                                      personality != 0, address(offset), end - offset, data);
        describeFrame(table, encoding, text + offset);
        table.end(start);
    }
}

// A pointer in one of DWARF's formats, made absolute.
std::uint64_t takePointer(Reader& reader, std::uint8_t format) {
    if (format == kAbsent)
        return 0;
    const auto here = reinterpret_cast<std::uint64_t>(reader.position());
    std::uint64_t value = 0;
    switch (format & kFormMask) {
    case 0x00:
    case 0x04:
    case 0x0C:
        value = reader.take<std::uint64_t>();
        break;
    case 0x03:
        value = reader.take<std::uint32_t>();
        break;
    case 0x0B:
        value = static_cast<std::uint64_t>(std::int64_t{reader.take<std::int32_t>()});
        break;
    default:
        refuse("unwind tables", "a pointer in an unknown format");
    }
    if (value != 0 && (format & kBaseMask) == kRelative)
        value += here;
    if (value != 0 && (format & kIndirect) != 0)
        value = valueAt<std::uint64_t>(reinterpret_cast<const void*>(value));
    return value;
}

void addDwarf(FrameTable& table, Bytes frames) {
    struct Common {
        std::size_t at;
        std::uint8_t functionFormat = kAbsolute;
        std::uint8_t dataFormat = kAbsent;
        bool hasPersonality = false;
    };
    std::map<const std::uint8_t*, Common> commons;
    Reader reader(frames);
    while (!reader.atEnd()) {
        const std::uint8_t* const record = reader.position();
        const auto length = reader.take<std::uint32_t>();
        if (length == 0)
            return;
        const std::uint8_t* const next = reader.position() + length;
        const std::uint8_t* const identifierAt = reader.position();
        const auto identifier = reader.take<std::uint32_t>();
        if (identifier == 0) {
            reader.take<std::uint8_t>(); // version
            const std::string_view augmentation = reader.takeText();
            const std::uint64_t codeUnit = reader.takeUleb();
            const std::int64_t dataUnit = reader.takeSleb();
            const auto returnRegister = reader.take<std::uint8_t>();
            Common common{};
            std::uint64_t personality = 0;
            if (!augmentation.empty()) {
                const std::uint64_t size = reader.takeUleb();
                const std::uint8_t* const program = reader.position() + size;
                for (const char letter : augmentation) {
                    if (letter == 'P')
                        personality = takePointer(reader, reader.take<std::uint8_t>());
                    else if (letter == 'L')
                        common.dataFormat = reader.take<std::uint8_t>();
                    else if (letter == 'R')
                        common.functionFormat = reader.take<std::uint8_t>();
                }
                reader.moveTo(program);
            }
            common.hasPersonality = personality != 0;
            common.at = table.addCommon(personality, codeUnit, static_cast<std::int8_t>(dataUnit), returnRegister,
                                        {reader.position(), next});
            commons[record] = common;
        } else {
            const Common& common = commons.at(identifierAt - identifier);
            const std::uint64_t function = takePointer(reader, common.functionFormat);
            const std::uint64_t size = takePointer(reader, common.functionFormat & kFormMask);
            const std::uint64_t augmentation = reader.takeUleb();
            const std::uint8_t* const program = reader.position() + augmentation;
            const std::uint64_t data = augmentation != 0 ? takePointer(reader, common.dataFormat) : 0;
            const std::size_t start = table.beginFunction(common.at, common.hasPersonality, function, size, data);
            for (const std::uint8_t* byte = program; byte < next; ++byte)
                table.put(*byte);
            table.end(start);
        }
        reader.moveTo(next);
    }
}

} // namespace

void registerUnwindTables(const UnwindSource& source) {
    auto* const table = new FrameTable; // stays with the image
    addCompact(*table, source);
    addDwarf(*table, source.frames);
    __register_frame(table->finish());
}

} // namespace macho
