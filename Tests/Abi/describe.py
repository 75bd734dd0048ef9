#!/usr/bin/env python3
"""Describes what hosts are compiled against, for a file that people can read and compare: what the libraries
export, and the layouts of the types in the public headers. From abidw's account of the debug information.

Usage: describe.py HEADERS TYPES LIBRARY...
HEADERS: the public headers as paths from the project's root, with commas between; TYPES: a library that has the
debug information of all that the headers declare. That of the libraries themselves leaves out what only hosts
implement.
"""
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

FOREIGN = re.compile(r"(^|[ <])(std|__gnu_cxx|fmt|spdlog)::")


def demangled(names):
    """Mangled names, each with what people call it."""
    output = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True).stdout
    return dict(zip(names, output.splitlines()))


class Library:
    def __init__(self, path, *options):
        command = ["abidw", *options, "--no-corpus-path", "--no-comp-dir-path", path]
        self.root = ElementTree.fromstring(subprocess.run(command, capture_output=True, text=True, check=True).stdout)
        self.types = {}
        self.scopes = {}
        self.functions = {}
        self.variables = {}
        for unit in self.root.iter("abi-instr"):
            self.collect(unit, "")

    def collect(self, node, scope):
        for child in node:
            if "id" in child.attrib and child.get("is-declaration-only") != "yes":
                self.types[child.get("id")] = child
                self.scopes[child.get("id")] = scope
            elif "id" in child.attrib:
                self.types.setdefault(child.get("id"), child)
                self.scopes.setdefault(child.get("id"), scope)
            if child.get("elf-symbol-id") and child.tag == "function-decl":
                self.functions[child.get("elf-symbol-id")] = child
            if child.get("elf-symbol-id") and child.tag == "var-decl":
                self.variables[child.get("elf-symbol-id")] = child
            inner = scope
            if child.tag in ("namespace-decl", "class-decl", "union-decl"):
                inner = scope + child.get("name", "") + "::"
            self.collect(child, inner)

    def name_of(self, type_id):
        node = self.types.get(type_id)
        if node is None:
            return "?"
        inner = node.get("type-id")
        if node.tag == "pointer-type-def":
            return self.name_of(inner) + "*"
        if node.tag == "reference-type-def":
            return self.name_of(inner) + ("&" if node.get("kind") == "lvalue" else "&&")
        if node.tag == "qualified-type-def":
            words = [word for word in ("const", "volatile") if node.get(word) == "yes"]
            return " ".join([self.name_of(inner)] + words)
        if node.tag == "array-type-def":
            sizes = "".join("[%s]" % part.get("length") for part in node.iter("subrange"))
            return self.name_of(inner) + sizes
        if node.tag == "function-type":
            parameters = ", ".join(
                "..." if part.get("is-variadic") else self.name_of(part.get("type-id"))
                for part in node.iter("parameter"))
            return "%s (%s)" % (self.name_of(node.find("return").get("type-id")), parameters)
        return self.scopes[type_id] + node.get("name", "?")

    def symbols(self):
        """Exported functions and variables with their types. Templates of other libraries are left out: which of
        them are there depends on what the compiler has put inline, and nobody asks these libraries for them."""
        entries = [symbol.get("name") for symbol in self.root.iter("elf-symbol")]
        names = demangled(entries)
        for entry in entries:
            name = names[entry]
            if FOREIGN.search(name.split("(")[0]):
                continue
            if entry in self.functions:
                result = self.functions[entry].find("return")
                yield "%s -> %s" % (name, self.name_of(result.get("type-id")) if result is not None else "void")
            elif entry in self.variables:
                yield "%s: %s" % (name, self.name_of(self.variables[entry].get("type-id")))
            else:
                yield name

    def layouts(self, headers):
        """The types that these headers declare, by name."""
        described = {}
        endings = tuple("/" + header for header in headers)
        for type_id, node in self.types.items():
            if not node.get("filepath", "").endswith(endings) or node.get("is-declaration-only") == "yes":
                continue
            name = self.name_of(type_id)
            if node.tag == "enum-decl":
                described[name] = ["enum %s" % name] + [
                    "  %s = %s" % (value.get("name"), value.get("value")) for value in node.iter("enumerator")]
            elif node.tag in ("class-decl", "union-decl"):
                described[name] = self.layout_of(name, node)
            elif node.tag == "typedef-decl" and "anonymous" not in self.name_of(node.get("type-id")):
                described[name] = ["typedef %s = %s" % (name, self.name_of(node.get("type-id")))]
        return [described[name] for name in sorted(described)]

    def layout_of(self, name, node):
        lines = ["class %s: %d bytes" % (name, int(node.get("size-in-bits", 0)) // 8)]
        for base in node.findall("base-class"):
            offset = int(base.get("layout-offset-in-bits")) // 8
            lines.append("  at %d: base %s" % (offset, self.name_of(base.get("type-id"))))
        for member in node.findall("data-member"):
            if member.get("static") == "yes":
                continue
            variable = member.find("var-decl")
            offset = int(member.get("layout-offset-in-bits")) // 8
            lines.append("  at %d: %s %s" % (offset, self.name_of(variable.get("type-id")), variable.get("name")))
        slots = {}
        destructor = []
        for member in node.findall("member-function"):
            slot = int(member.get("vtable-offset", -1))
            if slot >= 0:
                slots[slot] = member.find("function-decl").get("mangled-name")
            elif member.get("vtable-offset"):
                destructor = ["  virtual destructor"]
        words = demangled(list(slots.values())) if slots else {}
        return lines + ["  virtual %d: %s" % (slot, words[slots[slot]]) for slot in sorted(slots)] + destructor


def main():
    for path in sys.argv[3:]:
        library = Library(path)
        print("==", library.root.get("soname"))
        print("\n".join(sorted(library.symbols())) + "\n")
    print("== types")
    for layout in Library(sys.argv[2], "--load-all-types").layouts(sys.argv[1].split(",")):
        print("\n".join(layout) + "\n")


main()
