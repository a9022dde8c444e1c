"""Shows the library's types in gdb. In gdb or a .gdbinit: source FOLDER/tq_gdb.py"""

import os
import pathlib
import sys

import gdb
import gdb.printing

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import tq_types  # noqa: E402


class Value:
    def __init__(self, raw):
        self.raw = raw

    def field(self, name):
        try:
            return Value(self.raw[name])
        except gdb.error:
            return None

    def number(self):
        return int(self.raw)

    def at(self, index):
        return Value(self.raw[index])

    def pointer_to(self, name):
        return Value(self.raw.cast(gdb.lookup_type(name).pointer()))

    def memory(self, count):
        is_pointer = self.raw.type.strip_typedefs().code == gdb.TYPE_CODE_PTR
        address = int(self.raw if is_pointer else self.raw.address)
        return bytes(gdb.selected_inferior().read_memory(address, count))

    def process(self, address, count):
        return bytes(gdb.selected_inferior().read_memory(address, count))

    def bytes_at(self, offset, count):
        return self.process(int(self.raw.address) + offset, count)

    def is_of_wide_characters(self):
        return str(self.raw.type.strip_typedefs().template_argument(0)) == "wchar_t"

    def shown(self):
        return str(self.raw.cast(self.raw.type.strip_typedefs().fields()[0].type))


def printer(described):
    class Printer:
        def __init__(self, raw):
            self.value = Value(raw)

        def to_string(self):
            return described.summary(self.value)

    if hasattr(described, "children"):
        Printer.children = lambda self: ((name, child.raw) for name, child in described.children(self.value))
    return Printer


# Where no program has its memory: the object is there for its types alone.
NOWHERE = "0xffff800000000000"


def add_types():
    """Reads the types that programs do not describe themselves, where this file is installed."""
    prefix = pathlib.Path(__file__).resolve().parents[3]
    for types in [*prefix.glob("lib*/TqOsBase/debugger-types.o"), *prefix.glob("lib*/*/TqOsBase/debugger-types.o")]:
        if not any(known.filename == str(types) for known in gdb.objfiles()):
            gdb.execute(f"add-symbol-file {types} -o {NOWHERE}", to_string=True)


def register():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("TqOsBase")
    for described in tq_types.TYPES:
        collection.add_printer(described.__name__, described.pattern, printer(described))
    gdb.printing.register_pretty_printer(gdb.current_objfile(), collection, replace=True)
    add_types()


register()
