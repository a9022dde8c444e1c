"""How debuggers show the library's types: one description for gdb (tq_gdb.py) and lldb (tq_lldb.py).

A description has a pattern for the type's name, a summary, and maybe children. It sees a value through these operations,
which each debugger's file implements:

    field(name)        a member, its base classes' included; None when there is none
    number()           as an integer; of a pointer, its address
    at(index)          what lies `index` elements after where a pointer, or the start of an array, points
    pointer_to(name)   a pointer, as one to the type with that name
    memory(count)      `count` bytes from where a pointer points, or from the start of an array or object
    shown()            as the debugger itself shows it
"""

import codecs
import sys

# What a corrupt length must not exceed.
LONGEST_TEXT = 4096


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n") + '"'


def wide(pointer, length):
    cut = min(length, LONGEST_TEXT)
    encoding = "utf-32-le" if sys.byteorder == "little" else "utf-32-be"
    text = pointer.memory(4 * cut).decode(encoding, "backslashreplace") if cut > 0 else ""
    return "L" + quoted(text) + ("..." if length > cut else "")


def plural(count, what):
    return f"{count} {what}{'' if count == 1 else 's'}"


class StringA:
    pattern = r"^TqStringT<char, TqStrHeaderA ?>$|^TqStringA$"

    @staticmethod
    def summary(value):
        data = value.field("m_data").field("m_pData")
        header = data.pointer_to("TqStrHeaderA").at(-1)
        length = max(header.field("m_usedLength").number() - 1, 0)
        code_page = header.field("m_codePage").number()
        encoding = f"cp{code_page}" if code_page != 65001 else "utf-8"
        try:
            codecs.lookup(encoding)
        except LookupError:
            encoding = "latin-1"
        text = data.memory(min(length, LONGEST_TEXT)).decode(encoding, "backslashreplace") if length else ""
        return f"{quoted(text)} (code page {code_page})"


class StdStr:
    pattern = r"^CStdStr<wchar_t>$"

    @staticmethod
    def summary(value):
        length = value.field("_M_string_length")
        if length is None:  # another C++ library than libstdc++
            return value.shown()
        return wide(value.field("_M_dataplus").field("_M_p"), length.number())


class Vector:
    pattern = r"^TqVector<.*>$"

    @staticmethod
    def record(value):
        return value.field("m_data").field("m_data").at(0)

    @staticmethod
    def summary(value):
        record = Vector.record(value)
        logical, physical, grow = (record.field(f"m_{name}Length").number() for name in ("logical", "physical", "grow"))
        holders = record.field("m_refCount")
        holders = (holders.field("m_count") or holders).memory(4)
        shared = int.from_bytes(holders, sys.byteorder)
        return f"{plural(logical, 'element')} of {physical}, grows by {grow}" + (
            f", shared by {shared}" if shared > 1 and physical > 0 else "")

    @staticmethod
    def children(value):
        record = Vector.record(value)
        elements = record.field("m_elements")
        for index in range(record.field("m_logicalLength").number() if record.field("m_physicalLength").number() else 0):
            yield f"[{index}]", elements.at(index)


class StringArray:
    pattern = r"^CStringArray$"

    @staticmethod
    def summary(value):
        return plural(value.field("m_nSize").number(), "string")

    @staticmethod
    def children(value):
        data = value.field("m_pData")
        for index in range(value.field("m_nSize").number()):
            yield f"[{index}]", data.at(index)


class StringList:
    pattern = r"^CStringList$"

    @staticmethod
    def summary(value):
        return plural(value.field("m_nCount").number(), "string")

    @staticmethod
    def children(value):
        node = value.field("m_pNodeHead")
        for index in range(value.field("m_nCount").number()):
            if node.number() == 0:
                return
            yield f"[{index}]", node.at(0).field("data")
            node = node.at(0).field("pNext")


class MapStringToPtr:
    pattern = r"^CMapStringToPtr$"

    @staticmethod
    def summary(value):
        count = value.field("m_nCount").number()
        return ("1 entry" if count == 1 else f"{count} entries") + \
            f" in {plural(value.field('m_nHashTableSize').number(), 'bucket')}"

    @staticmethod
    def children(value):
        table = value.field("m_pHashTable")
        if table.number() == 0:
            return
        for bucket in range(value.field("m_nHashTableSize").number()):
            entry = table.at(bucket)
            while entry.number() != 0:
                assoc = entry.at(0)
                yield f"[{wide(assoc.field('key'), assoc.field('nLength').number())}]", assoc.field("value")
                entry = assoc.field("pNext")


class Heap:
    pattern = r"^tq::detail::TqHeap<.*>$"
    IN_USE, OF_UNITS, SEGMENTS = 1, 8, 8192

    @staticmethod
    def summary(value):
        states = value.field("m_segments").field("m_states").memory(Heap.SEGMENTS)
        used = [state for state in states if state & Heap.IN_USE]
        units = sum(1 for state in used if state & Heap.OF_UNITS)
        return f"{plural(len(used) - units, 'segment')} of blocks, {plural(units, 'segment')} of page units"


TYPES = [StringA, StdStr, Vector, StringArray, StringList, MapStringToPtr, Heap]
