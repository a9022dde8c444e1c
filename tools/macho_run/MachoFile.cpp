#include "MachoFile.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace macho {

namespace {

constexpr std::uint32_t kMagic = 0xFEEDFACF;
#if defined(__aarch64__)
constexpr std::uint32_t kProcessor = 0x0100000C;
#else
constexpr std::uint32_t kProcessor = 0x01000007;
#endif
constexpr std::uint32_t kProgram = 2;

enum CommandKind : std::uint32_t {
    kSymbolTable = 0x02,
    kSegment = 0x19,
    kLinkInformation = 0x22,
    kLinkInformationOnly = 0x80000022,
    kEntryPoint = 0x80000028,
    kChainedFixups = 0x80000034,
};

struct Header {
    std::uint32_t magic, processor, subtype, type, commandCount, commandBytes, flags, reserved;
};

struct Command {
    std::uint32_t kind, size;
};

struct SegmentCommand {
    Command command;
    char name[16];
    std::uint64_t address, size, fileOffset, fileSize;
    std::uint32_t mostRights, rights, sectionCount, flags;
};

struct SectionRecord {
    char name[16], segment[16];
    std::uint64_t address, size;
    std::uint32_t fileOffset, alignment, relocations, relocationCount, flags, reserved[3];
};

struct LinkInformation {
    Command command;
    struct Range {
        std::uint32_t offset, size;
    } rebase, bind, weakBind, lazyBind, exports;
};

struct SymbolTableCommand {
    Command command;
    std::uint32_t symbols, symbolCount, names, nameBytes;
};

struct SymbolRecord {
    std::uint32_t name;
    std::uint8_t type, section;
    std::uint16_t description;
    std::uint64_t value;
};

constexpr std::uint32_t kExecutable = 4;

template <std::size_t N>
std::string nameOf(const char (&field)[N]) {
    return {field, ::strnlen(field, N)};
}

bool isVisibleDefinition(std::uint8_t type) {
    constexpr std::uint8_t kDebugging = 0xE0, kKind = 0x0E, kInSection = 0x0E, kExternal = 0x01;
    return (type & kDebugging) == 0 && (type & kKind) == kInSection && (type & kExternal) != 0;
}

} // namespace

void refuse(const char* path, const std::string& reason) {
    std::fprintf(stderr, "macho_run: %s: %s\n", path, reason.c_str());
    std::_Exit(96);
}

MachoFile::MachoFile(const char* path) {
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0)
        refuse(path, std::strerror(errno));
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const view = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    ::close(descriptor);
    if (view == MAP_FAILED || size < sizeof(Header))
        refuse(path, "cannot be mapped");
    m_bytes = {static_cast<const std::uint8_t*>(view), size};

    const auto header = valueAt<Header>(m_bytes.data());
    if (header.magic != kMagic || header.processor != kProcessor)
        refuse(path, "is no Mach-O file for this processor");
    m_isProgram = header.type == kProgram;
    const std::uint8_t* at = m_bytes.data() + sizeof header;
    for (std::uint32_t i = 0; i < header.commandCount; ++i) {
        const auto command = valueAt<Command>(at);
        switch (command.kind) {
        case kSegment: {
            const auto segment = valueAt<SegmentCommand>(at);
            m_segments.push_back({nameOf(segment.name), segment.address, segment.size, segment.fileOffset,
                                  segment.fileSize, (segment.rights & kExecutable) != 0});
            for (std::uint32_t k = 0; k < segment.sectionCount; ++k) {
                const auto section = valueAt<SectionRecord>(at + sizeof segment + k * sizeof(SectionRecord));
                m_sections.push_back({nameOf(section.name), section.address, section.size,
                                      static_cast<std::uint8_t>(section.flags & 0xFF)});
            }
            break;
        }
        case kLinkInformation:
        case kLinkInformationOnly: {
            const auto link = valueAt<LinkInformation>(at);
            m_rebase = bytes(link.rebase.offset, link.rebase.size);
            m_bind = bytes(link.bind.offset, link.bind.size);
            m_weakBind = bytes(link.weakBind.offset, link.weakBind.size);
            m_lazyBind = bytes(link.lazyBind.offset, link.lazyBind.size);
            break;
        }
        case kSymbolTable: {
            const auto table = valueAt<SymbolTableCommand>(at);
            for (std::uint32_t k = 0; k < table.symbolCount; ++k) {
                const auto symbol = valueAt<SymbolRecord>(m_bytes.data() + table.symbols + k * sizeof(SymbolRecord));
                if (isVisibleDefinition(symbol.type))
                    m_symbols.push_back(
                        {reinterpret_cast<const char*>(m_bytes.data() + table.names + symbol.name), symbol.value});
            }
            break;
        }
        case kEntryPoint:
            m_entryOffset = valueAt<std::uint64_t>(at + sizeof(Command));
            break;
        case kChainedFixups:
            refuse(path, "is bound by chained fixups, which are not understood here");
        default:
            break;
        }
        at += command.size;
    }
}

const char* Reader::takeText() {
    const auto* text = reinterpret_cast<const char*>(m_at);
    m_at += std::strlen(text) + 1;
    return text;
}

} // namespace macho
