"""Lists the methods of the dual interfaces in a header that widl made, in slot order, for com/script_entry.hpp.

Usage: list_methods.py HEADER.h OUTPUT.hpp
"""
import re
import sys
from pathlib import Path

INTERFACE = re.compile(r"^MIDL_INTERFACE\([^)]*\)\n(\w+) : public (\w+)\n\{\n(.*?)^\};$", re.MULTILINE | re.DOTALL)
METHOD = re.compile(r"^ {4}virtual \w+ STDMETHODCALLTYPE (\w+)\(", re.MULTILINE)


def dual_interfaces(header: str) -> dict[str, list[str]]:
    """The methods of each interface that extends IDispatch, those of the interfaces that it extends before its own."""
    methods: dict[str, list[str]] = {"IDispatch": []}
    for name, base, body in INTERFACE.findall(header):
        if base in methods:
            methods[name] = methods[base] + METHOD.findall(body)
    del methods["IDispatch"]
    return methods


def listing(header_name: str, methods: dict[str, list[str]]) -> str:
    text = f'#pragma once\n\n#include "com/method_list.hpp"\n#include "{header_name}"\n\nnamespace paylodge {{\n'
    for interface, names in methods.items():
        slots = ",\n        ".join(f"&{interface}::{name}" for name in names)
        text += (f"\ntemplate <>\nstruct ScriptMembers<{interface}> {{\n    using Methods = MethodList<\n"
                 f"        {slots}>;\n}};\n" if names else "")
    return text + "\n}  // namespace paylodge\n"


def main() -> None:
    header, output = map(Path, sys.argv[1:])
    methods = dual_interfaces(header.read_text(encoding="ascii"))
    if not any(methods.values()):
        sys.exit(f"{header}: no dual interface in it")
    output.write_text(listing(header.name, methods), encoding="ascii")


main()
