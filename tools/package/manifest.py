"""Writes Paylodge.manifest, with which an application uses the component without registration.

Everything in it comes from what registering uses too: the registry scripts, the interface definitions and the
control's misc status.
"""

from __future__ import annotations

import re
import sys
from dataclasses import dataclass
from pathlib import Path
from xml.sax.saxutils import quoteattr

from registry_script import Key, read_script

ARCHITECTURES = {"AMD64": "amd64", "X86": "x86"}
# The platform's own: what marshals through type information.
DUAL_MARSHALER = "{00020424-0000-0000-C000-000000000046}"
DISPATCH_MARSHALER = "{00020420-0000-0000-C000-000000000046}"

# Attributes and name of what has an id.
DEFINITION = re.compile(
    r"\[(?P<attributes>[^][]*\buuid\([^][]*)\]\s*(?P<kind>interface|dispinterface|library)\s+(?P<name>\w+)"
)


@dataclass(frozen=True)
class Definition:
    """An interface or the library, as the interface definitions have it."""

    kind: str
    name: str
    attributes: str

    def attribute(self, name: str) -> str:
        match = re.search(rf"\b{name}\(([^)]*)\)", self.attributes)
        if not match:
            raise ValueError(f"{self.name} has no {name} in the interface definitions")
        return match[1]

    @property
    def id(self) -> str:
        return "{" + self.attribute("uuid").upper() + "}"


def element(name: str, attributes: dict[str, str | None], depth: int) -> str:
    """An empty element; attributes without text are left out."""
    present = {key: text for key, text in attributes.items() if text is not None}
    indent = "    " * depth
    lines = [f"{indent}    {key}={quoteattr(text)}" for key, text in present.items()]
    return f"{indent}<{name}\n" + "\n".join(lines) + "/>\n"


def class_element(class_id: str, key: Key, misc_status: str) -> str:
    in_content_view = key.at("MiscStatus", "1").text == "%OLEMISC%"
    return element(
        "comClass",
        {
            "description": key.text,
            "clsid": class_id,
            "progid": key.at("ProgID").text,
            "threadingModel": key.at("InprocServer32").values.get("ThreadingModel"),
            "tlbid": key.at("TypeLib").text,
            "miscStatusContent": misc_status if in_content_view else None,
        },
        2,
    )


def library_element(library: Definition) -> str:
    return element("typelib", {"tlbid": library.id, "version": library.attribute("version"), "helpdir": ""}, 2)


def interface_element(interface: Definition, library: Definition) -> str:
    marshaler = DISPATCH_MARSHALER if interface.kind == "dispinterface" else DUAL_MARSHALER
    return element(
        "comInterfaceExternalProxyStub",
        {"name": interface.name, "iid": interface.id, "tlbid": library.id, "proxyStubClsid32": marshaler},
        1,
    )


def read_definitions(file: Path) -> list[Definition]:
    text = re.sub(r"//.*", "", file.read_text(encoding="ascii"))
    return [Definition(match["kind"], match["name"], match["attributes"]) for match in DEFINITION.finditer(text)]


def read_misc_status(file: Path) -> str:
    """The names of the bits, which a manifest writes in lower case."""
    return ",".join(name.lower() for name in re.findall(r"\bOLEMISC_(\w+)", file.read_text(encoding="ascii")))


def write_manifest(processor: str, top: Path) -> str:
    definitions = read_definitions(top / "idl" / "paylodge.idl")
    library = next(definition for definition in definitions if definition.kind == "library")
    interfaces = [definition for definition in definitions if definition.kind != "library"]
    misc_status = read_misc_status(top / "bridge" / "misc_status.hpp")
    scripts = [read_script(top / "frame" / "module" / name) for name in ("paylodge.rgs", "paylodge_ctrl.rgs")]
    classes = [item for script in scripts for item in script.at("CLSID").keys.items()]
    # An application's manifest names this version. It changes with the interfaces, not with every release.
    version = library.attribute("version") + ".0.0"
    return (
        '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
        '<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">\n'
        f'    <assemblyIdentity type="win32" name="Paylodge" version="{version}" '
        f'processorArchitecture="{ARCHITECTURES[processor]}"/>\n'
        '    <file name="Paylodge.dll">\n'
        + "".join(class_element(class_id, key, misc_status) for class_id, key in classes)
        + library_element(library)
        + "    </file>\n"
        + "".join(interface_element(interface, library) for interface in interfaces)
        + "</assembly>\n"
    )


def main() -> int:
    if len(sys.argv) != 4 or sys.argv[1] not in ARCHITECTURES:
        print(f"usage: manifest.py {'|'.join(ARCHITECTURES)} TOP_OF_THE_SOURCES FILE", file=sys.stderr)
        return 2
    Path(sys.argv[3]).write_text(write_manifest(sys.argv[1], Path(sys.argv[2])), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
