"""Shows the library's types in lldb. In lldb or a .lldbinit: command script import <path>/tools/debugger/tq_lldb.py"""

import itertools
import os
import sys

import lldb

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import tq_types  # noqa: E402

# lldb wants to know their number first.
MOST_CHILDREN = 1000


class Value:
    def __init__(self, raw):
        self.raw = raw.GetNonSyntheticValue()

    def field(self, name):
        child = self.raw.GetChildMemberWithName(name)
        return Value(child) if child.IsValid() else None

    def number(self):
        return self.raw.GetValueAsSigned()

    def element(self):
        kind = self.raw.GetType().GetCanonicalType()
        return kind.GetPointeeType() if kind.IsPointerType() else kind.GetArrayElementType()

    def address(self):
        is_pointer = self.raw.GetType().GetCanonicalType().IsPointerType()
        return self.raw.GetValueAsUnsigned() if is_pointer else self.raw.GetLoadAddress()

    def at(self, index):
        kind = self.element()
        return Value(self.raw.CreateValueFromAddress(f"[{index}]", self.address() + index * kind.GetByteSize(), kind))

    def pointer_to(self, name):
        return Value(self.raw.Cast(self.raw.GetTarget().FindFirstType(name).GetPointerType()))

    def memory(self, count):
        return self.process(self.address(), count)

    def process(self, address, count):
        error = lldb.SBError()
        return self.raw.GetProcess().ReadMemory(address, count, error) or b""

    def bytes_at(self, offset, count):
        # lldb also hands over pointers and references to what it shows; to follow them it wants the whole type.
        kind = self.raw.GetType().GetCanonicalType()
        is_elsewhere = kind.IsPointerType() or kind.IsReferenceType()
        return self.process((self.raw.GetValueAsUnsigned() if is_elsewhere else self.raw.GetLoadAddress()) + offset, count)

    def is_of_wide_characters(self):
        kind = self.raw.GetType().GetCanonicalType()
        if kind.IsPointerType() or kind.IsReferenceType():
            kind = kind.GetPointeeType() if kind.IsPointerType() else kind.GetDereferencedType()
        return kind.GetTemplateArgumentType(0).GetName() == "wchar_t"

    def shown(self):
        return self.raw.GetChildAtIndex(0).GetSummary()


def summary(described):
    return lambda raw, _: described.summary(Value(raw))


def synthetic(described):
    list_children = getattr(described, "children", lambda _: ())

    class Children:
        def __init__(self, raw, _):
            self.value = Value(raw)
            self.children = []

        def update(self):
            self.children = list(itertools.islice(list_children(self.value), MOST_CHILDREN))
            return False

        def has_children(self):
            return hasattr(described, "children")

        def num_children(self):
            return len(self.children)

        def get_child_index(self, name):
            return next((i for i, (known, _) in enumerate(self.children) if known == name), -1)

        def get_child_at_index(self, index):
            name, child = self.children[index]
            return child.raw.CreateValueFromData(name, child.raw.GetData(), child.raw.GetType()) \
                if child.raw.GetLoadAddress() == lldb.LLDB_INVALID_ADDRESS \
                else child.raw.CreateValueFromAddress(name, child.raw.GetLoadAddress(), child.raw.GetType())

    return Children


def __lldb_init_module(debugger, _):
    here = sys.modules[__name__]
    for described in tq_types.TYPES:
        name = described.__name__
        setattr(here, f"{name}_summary", summary(described))
        setattr(here, f"{name}_children", synthetic(described))
        types = f'-w TqOsBase -x "{described.pattern}"'
        debugger.HandleCommand(f"type summary add --expand -F {__name__}.{name}_summary {types}")
        debugger.HandleCommand(f"type synthetic add -l {__name__}.{name}_children {types}")
    debugger.HandleCommand("type category enable TqOsBase")
