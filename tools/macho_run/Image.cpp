#include "Image.h"

#include "ThreadLocals.h"
#include "UnwindTables.h"
#include "shims/Imports.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace macho {

ProgramArguments g_arguments{};

namespace {

constexpr std::size_t kLargestPage = 65536;
constexpr std::string_view kUnmapped = "__PAGEZERO";

enum RebaseCommand : std::uint8_t {
    kRebaseDone = 0x00,
    kRebaseSetType = 0x10,
    kRebaseSetPlace = 0x20,
    kRebaseAdd = 0x30,
    kRebaseAddPointers = 0x40,
    kRebaseTimes = 0x50,
    kRebaseManyTimes = 0x60,
    kRebaseOnceAndAdd = 0x70,
    kRebaseTimesSkipping = 0x80,
};

enum BindCommand : std::uint8_t {
    kBindDone = 0x00,
    kBindSetName = 0x40,
    kBindSetLibraryNumber = 0x20,
    kBindSetAddend = 0x60,
    kBindSetPlace = 0x70,
    kBindAdd = 0x80,
    kBindOnce = 0x90,
    kBindOnceAndAdd = 0xA0,
    kBindOnceAndAddPointers = 0xB0,
    kBindTimesSkipping = 0xC0,
};

} // namespace

Image::Image(const char* path) : m_file(path), m_path(path) {
    map();
    rebase();
    bind(m_file.bindCommands(), false, false);
    bind(m_file.weakBindCommands(), true, false);
    bind(m_file.lazyBindCommands(), false, true);
    prepareSections();
    protect();
}

void Image::map() {
    std::uint64_t highest = 0;
    m_lowest = ~std::uint64_t{0};
    for (const Segment& segment : m_file.segments()) {
        if (segment.name == kUnmapped)
            continue;
        m_lowest = std::min(m_lowest, segment.address);
        highest = std::max(highest, segment.address + segment.size);
        if (segment.name == "__TEXT")
            m_text = segment.address;
    }
    void* const room =
        ::mmap(nullptr, highest - m_lowest + kLargestPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (room == MAP_FAILED)
        refuse(m_path, "no room for it in memory");
    const auto address = reinterpret_cast<std::uintptr_t>(room);
    m_base = reinterpret_cast<std::uint8_t*>((address + kLargestPage - 1) & ~(kLargestPage - 1));
    for (const Segment& segment : m_file.segments()) {
        if (segment.name != kUnmapped)
            std::memcpy(at(segment.address), m_file.bytes(segment.fileOffset, segment.fileSize).data(),
                        segment.fileSize);
    }
}

// Pointers into the image itself move with it.
void Image::rebase() const {
    const std::uint64_t slide = reinterpret_cast<std::uint64_t>(m_base) - m_lowest;
    std::uint64_t place = 0;
    const auto move = [&] {
        const auto moved = valueAt<std::uint64_t>(at(place)) + slide;
        std::memcpy(at(place), &moved, sizeof moved);
        place += sizeof moved;
    };
    for (Reader commands(m_file.rebaseCommands()); !commands.atEnd();) {
        const auto byte = commands.take<std::uint8_t>();
        const unsigned operand = byte & 0x0F;
        switch (byte & 0xF0) {
        case kRebaseDone:
            return;
        case kRebaseSetType:
            break;
        case kRebaseSetPlace:
            place = m_file.segments()[operand].address + commands.takeUleb();
            break;
        case kRebaseAdd:
            place += commands.takeUleb();
            break;
        case kRebaseAddPointers:
            place += operand * sizeof(void*);
            break;
        case kRebaseTimes:
            for (unsigned i = 0; i < operand; ++i)
                move();
            break;
        case kRebaseManyTimes:
            for (std::uint64_t i = commands.takeUleb(); i > 0; --i)
                move();
            break;
        case kRebaseOnceAndAdd:
            move();
            place += commands.takeUleb();
            break;
        case kRebaseTimesSkipping: {
            std::uint64_t times = commands.takeUleb();
            const std::uint64_t skipped = commands.takeUleb();
            for (; times > 0; --times) {
                move();
                place += skipped;
            }
            break;
        }
        default:
            refuse(m_path, "unknown command for moving pointers");
        }
    }
}

// Lazy bindings are made at once; their list has an end mark after each.
void Image::bind(Bytes bytes, bool isWeak, bool isLazy) const {
    std::string_view name;
    std::uint64_t place = 0;
    std::int64_t addend = 0;
    const auto bindOne = [&] {
        const auto target = reinterpret_cast<std::uint64_t>(resolve(name, isWeak)) + static_cast<std::uint64_t>(addend);
        std::memcpy(at(place), &target, sizeof target);
        place += sizeof target;
    };
    for (Reader commands(bytes); !commands.atEnd();) {
        const auto byte = commands.take<std::uint8_t>();
        const unsigned operand = byte & 0x0F;
        switch (byte & 0xF0) {
        case kBindDone:
            if (!isLazy)
                return;
            break;
        case kBindSetLibraryNumber:
            commands.takeUleb();
            break;
        case kBindSetName:
            name = commands.takeText();
            break;
        case kBindSetAddend:
            addend = commands.takeSleb();
            break;
        case kBindSetPlace:
            place = m_file.segments()[operand].address + commands.takeUleb();
            break;
        case kBindAdd:
            place += commands.takeUleb();
            break;
        case kBindOnce:
            bindOne();
            break;
        case kBindOnceAndAdd:
            bindOne();
            place += commands.takeUleb();
            break;
        case kBindOnceAndAddPointers:
            bindOne();
            place += operand * sizeof(void*);
            break;
        case kBindTimesSkipping: {
            std::uint64_t times = commands.takeUleb();
            const std::uint64_t skipped = commands.takeUleb();
            for (; times > 0; --times) {
                bindOne();
                place += skipped;
            }
            break;
        }
        default: // the library's number in the command itself, the type of the pointer
            break;
        }
    }
}

// A weak name is the image's own where it has one; any other one is a shim first.
void* Image::resolve(std::string_view name, bool isWeak) const {
    void* const own = find(name);
    if (isWeak && own != nullptr)
        return own;
    if (const auto shim = findImport(name))
        return *shim;
    return own != nullptr ? own : missingImport(name);
}

void* Image::find(std::string_view name) const {
    for (const Symbol& symbol : m_file.symbols()) {
        if (symbol.name == name)
            return at(symbol.address);
    }
    return nullptr;
}

void Image::prepareSections() {
    UnwindSource unwind{m_base, m_text - m_lowest, nullptr, {}};
    std::uint8_t* locals = nullptr;
    std::uint8_t* localsEnd = nullptr;
    for (const Section& section : m_file.sections()) {
        std::uint8_t* const begin = at(section.address);
        std::uint8_t* const end = begin + section.size;
        if (section.name == "__unwind_info")
            unwind.compact = begin;
        else if (section.name == "__eh_frame")
            unwind.frames = {begin, section.size};
        switch (section.kind) {
        case Section::kInitialisers:
            for (const std::uint8_t* entry = begin; entry < end; entry += sizeof(void*))
                m_initialisers.push_back(valueAt<Initialiser>(entry));
            break;
        case Section::kThreadLocalData:
        case Section::kThreadLocalZeros:
            locals = locals == nullptr ? begin : std::min(locals, begin);
            localsEnd = std::max(localsEnd, end);
            break;
        default:
            break;
        }
    }
    if (locals != nullptr) {
        const ThreadLocals variables(locals, static_cast<std::size_t>(localsEnd - locals));
        for (const Section& section : m_file.sections()) {
            if (section.kind == Section::kThreadLocalDescriptors)
                variables.prepare(at(section.address), section.size);
        }
    }
    if (unwind.compact != nullptr)
        registerUnwindTables(unwind);
}

void Image::protect() const {
    for (const Segment& segment : m_file.segments()) {
        if (!segment.isExecutable || segment.name == kUnmapped)
            continue;
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        if (::mprotect(at(segment.address), (segment.size + page - 1) & ~(page - 1), PROT_READ | PROT_EXEC) != 0)
            refuse(m_path, "its code cannot be made executable");
    }
}

void Image::initialise() const {
    char* apple[] = {nullptr};
    for (const Initialiser run : m_initialisers)
        run(g_arguments.count, g_arguments.values, environ, apple);
}

int Image::runProgram() const {
    if (!m_file.isProgram())
        refuse(m_path, "is no program");
    char* apple[] = {nullptr};
    using Main = int (*)(int, char**, char**, char**);
    const auto start = reinterpret_cast<Main>(at(m_text + m_file.entryOffset()));
    return start(g_arguments.count, g_arguments.values, environ, apple);
}

} // namespace macho
