"""How debuggers show the library's types: one description for gdb (tq_gdb.py) and lldb (tq_lldb.py).

A description has a pattern for the type's name, a summary, and maybe children; and, for the debuggers that read natvis
files, the type's name and what shows it there (make_natvis.py writes the file). It sees a value through these operations,
which each debugger's file implements:

    field(name)        a member, its base classes' included; None when there is none
    number()           as an integer; of a pointer, its address
    at(index)          what lies `index` elements after where a pointer, or the start of an array, points
    pointer_to(name)   a pointer, as one to the type with that name
    memory(count)      `count` bytes from where a pointer points, or from the start of an array or object
    bytes_at(offset, count)  `count` bytes from `offset` bytes after the start of an object, whose type may be incomplete
    process(address, count)  `count` bytes of the process
    shown()            as the debugger itself shows it
"""

import codecs
import sys

# What a corrupt length must not exceed.
LONGEST_TEXT = 4096


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n").replace("\0", "\\0") + '"'


def wide_text(read, length):
    """The text of `length` wide characters that `read` gives as bytes."""
    cut = min(length, LONGEST_TEXT)
    encoding = "utf-32-le" if sys.byteorder == "little" else "utf-32-be"
    text = read(4 * cut).decode(encoding, "backslashreplace") if cut > 0 else ""
    return "L" + quoted(text) + ("..." if length > cut else "")


def wide(pointer, length):
    return wide_text(pointer.memory, length)


# Programs know the members of a class with virtual functions only where they have the library's debugging symbols, those
# of the standard string not with clang++. What is shown of these is read at its place in the object.
POINTER = 8


def number_at(value, offset, size):
    return int.from_bytes(value.bytes_at(offset, size), sys.byteorder)


def terminated(value, address):
    """The wide text at an address, read no further than the page in which it ends."""
    if address == 0:
        return "null"
    text = b""
    while len(text) < 4 * LONGEST_TEXT:
        part = value.process(address + len(text), 4096 - (address + len(text)) % 4096)
        end = next((i for i in range(0, len(part) - 3, 4) if part[i:i + 4] == b"\0\0\0\0"), -1)
        if end >= 0 or not part:
            text += part[:max(end, 0)]
            break
        text += part
    return wide_text(lambda count: text[:count], len(text) // 4)


def plural(count, what):
    return f"{count} {what}{'' if count == 1 else 's'}"


class StringA:
    pattern = r"^TqStringT<char, TqStrHeaderA ?>$|^TqStringA$"
    natvis = ("TqStringT&lt;char,TqStrHeaderA&gt;", """
    <DisplayString>{m_data.m_pData,s}</DisplayString>
    <StringView>m_data.m_pData,s</StringView>
    <Expand>
      <Item Name="length with terminator">((TqStrHeaderA*)m_data.m_pData - 1)-&gt;m_usedLength</Item>
      <Item Name="code page">((TqStrHeaderA*)m_data.m_pData - 1)-&gt;m_codePage</Item>
    </Expand>""")

    HEADER, USED, CODE_PAGE = 40, 8, 32  # bytes of the header, which ends where the text begins; places in it

    @staticmethod
    def summary(value):
        data = number_at(value, 0, POINTER)
        header = value.process(data - StringA.HEADER, StringA.HEADER)
        length = int.from_bytes(header[StringA.USED:StringA.USED + 8], sys.byteorder)
        code_page = int.from_bytes(header[StringA.CODE_PAGE:StringA.CODE_PAGE + 4], sys.byteorder)
        length = max(length - 1, 0)
        encoding = f"cp{code_page}" if code_page != 65001 else "utf-8"
        try:
            codecs.lookup(encoding)
        except LookupError:
            encoding = "latin-1"
        text = value.process(data, min(length, LONGEST_TEXT)).decode(encoding, "backslashreplace") if length else ""
        return f"{quoted(text)} (code page {code_page})"


class StdStr:
    pattern = r"^CStdStr<wchar_t>$"

    @staticmethod
    def summary(value):
        if value.field("__r_") is not None:  # libc++
            return value.shown()
        address, length = number_at(value, 0, POINTER), number_at(value, POINTER, POINTER)
        return wide_text(lambda count: value.process(address, count), length)


class Vector:
    pattern = r"^TqVector<.*>$"
    natvis = ("TqVector&lt;*&gt;", """
    <DisplayString>{m_data.m_data-&gt;m_logicalLength} of {m_data.m_data-&gt;m_physicalLength}</DisplayString>
    <Expand>
      <ArrayItems>
        <Size>m_data.m_data-&gt;m_logicalLength</Size>
        <ValuePointer>m_data.m_data-&gt;m_elements</ValuePointer>
      </ArrayItems>
    </Expand>""")

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
        text = ""
        if value.is_of_wide_characters() and physical > 0:
            text = wide(record.field("m_elements"), logical) + ", "  # its terminating 0 is an element
        return text + f"{plural(logical, 'element')} of {physical}, grows by {grow}" + (
            f", shared by {shared}" if shared > 1 and physical > 0 else "")

    @staticmethod
    def children(value):
        record = Vector.record(value)
        elements = record.field("m_elements")
        for index in range(record.field("m_logicalLength").number() if record.field("m_physicalLength").number() else 0):
            yield f"[{index}]", elements.at(index)


class StringArray:
    pattern = r"^CStringArray$"
    natvis = ("CStringArray", """
    <DisplayString>{m_nSize} strings</DisplayString>
    <Expand>
      <ArrayItems>
        <Size>m_nSize</Size>
        <ValuePointer>m_pData</ValuePointer>
      </ArrayItems>
    </Expand>""")

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
    natvis = ("CStringList", """
    <DisplayString>{m_nCount} strings</DisplayString>
    <Expand>
      <LinkedListItems>
        <Size>m_nCount</Size>
        <HeadPointer>m_pNodeHead</HeadPointer>
        <NextPointer>pNext</NextPointer>
        <ValueNode>data</ValueNode>
      </LinkedListItems>
    </Expand>""")

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
    natvis = ("CMapStringToPtr", """
    <DisplayString>{m_nCount} entries in {m_nHashTableSize} buckets</DisplayString>
    <Expand>
      <ArrayItems>
        <Size>m_pHashTable == nullptr ? 0 : m_nHashTableSize</Size>
        <ValuePointer>m_pHashTable</ValuePointer>
      </ArrayItems>
    </Expand>""")

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


class Exception_:
    pattern = r"^TqException$"
    natvis = ("TqException", """
    <DisplayString>at {m_pszFile,su} line {m_nLine}</DisplayString>""")

    @staticmethod
    def place(value):
        return f"{terminated(value, number_at(value, 24, POINTER))} line {number_at(value, 32, 4)}"

    @staticmethod
    def summary(value):
        # Streams throw it with a reason in place of a file, and no line.
        return ("at " if number_at(value, 32, 4) else "") + Exception_.place(value)


class ExceptionWithMsg:
    pattern = r"^TqExceptionWithMsg$"
    natvis = ("TqExceptionWithMsg", """
    <DisplayString>{m_pszMessage,su} at {m_pszFile,su} line {m_nLine}</DisplayString>""")

    @staticmethod
    def summary(value):
        return f"{terminated(value, number_at(value, 40, POINTER))} at {Exception_.place(value)}"


class ErrorStatus:
    pattern = r"^TqErrorStatus$"
    natvis = ("TqErrorStatus", """
    <DisplayString>{m_errorType}: {m_pszMessage,su} at {m_pszFile,su} line {m_nLine}</DisplayString>""")

    @staticmethod
    def summary(value):
        return f"{number_at(value, 56, 4)}: {terminated(value, number_at(value, 40, POINTER))} at {Exception_.place(value)}"


class FlatMemBuf:
    pattern = r"^TqFlatMemBuf$"
    natvis = ("TqFlatMemBuf", """
    <DisplayString>position {m_position} of {m_bytes.m_data.m_data-&gt;m_logicalLength} bytes</DisplayString>""")
    MOST_BYTES = 32

    @staticmethod
    def summary(value):
        record = number_at(value, 8, POINTER)
        logical, position = int.from_bytes(value.process(record + 4, 4), sys.byteorder), number_at(value, 16, 4)
        physical = int.from_bytes(value.process(record + 8, 4), sys.byteorder)
        elements = int.from_bytes(value.process(record + 16, POINTER), sys.byteorder)
        first = value.process(elements, min(logical, FlatMemBuf.MOST_BYTES)) if physical and logical else b""
        return f"position {position} of {plural(logical, 'byte')}" + (f": {first.hex(' ')}" if first else "") + (
            " ..." if logical > len(first) else "")


class Heap:
    pattern = r"^tq::detail::TqHeap<.*>$"
    IN_USE, OF_UNITS, SEGMENTS = 1, 8, 8192

    @staticmethod
    def summary(value):
        states = value.field("m_segments").field("m_states").memory(Heap.SEGMENTS)
        used = [state for state in states if state & Heap.IN_USE]
        units = sum(1 for state in used if state & Heap.OF_UNITS)
        return f"{plural(len(used) - units, 'segment')} of blocks, {plural(units, 'segment')} of page units"


TYPES = [StringA, StdStr, Vector, StringArray, StringList, MapStringToPtr, Exception_, ExceptionWithMsg, ErrorStatus,
         FlatMemBuf, Heap]
