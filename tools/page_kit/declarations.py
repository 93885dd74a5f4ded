"""Writes docs/page-kit/paylodge.d.ts: TypeScript declarations of the component's objects, made from the interface
definitions, with documentation comments from the script reference."""

from __future__ import annotations

import argparse
import re
import sys
import textwrap
from dataclasses import dataclass
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
PAGE = Path("docs/page-kit/paylodge.d.ts")
TYPES = {"BSTR": "string", "VARIANT_BOOL": "boolean", "INT": "number", "LONG": "number"}

HEAD = """\
// What page script can call on Paylodge's objects. Made from idl/paylodge.idl and docs/script-reference.md by
// tools/page_kit/declarations.py; a test compares.
//
// In a page's TypeScript, or in JavaScript that the compiler checks:
//
//     /// <reference path="paylodge.d.ts" />
//     var lh = new ActiveXObject("Paylodge.Paylodge");

/// <reference lib="scripthost" />

interface ActiveXObject {
    new (name: "Paylodge.Paylodge"): Paylodge;
}

/** Under './dev run' only: the accounting object. */
declare var paylodge: Paylodge;
/** Under './dev run' only: the control, which a page has as an element of its own. */
declare var paylodgeControl: PaylodgeControl;
"""


@dataclass(frozen=True)
class Argument:
    name: str
    type: str
    is_result: bool
    is_out: bool


@dataclass(frozen=True)
class Member:
    name: str
    help: str
    kind: str  # "method", "propget" or "propput"
    arguments: list[Argument]

    @property
    def result(self) -> str:
        return next((argument.type for argument in self.arguments if argument.is_result), "void")


def read_argument(text: str) -> Argument:
    match = re.fullmatch(r"\[([^\]]*)\]\s*(\w+)\s*\*?\s*(\w+)", text.strip())
    if not match:
        raise ValueError(f"this argument is not understood: {text}")
    attributes = [word.strip() for word in match[1].split(",")]
    return Argument(match[3], TYPES[match[2]], "retval" in attributes, "out" in attributes)


def read_members(body: str) -> list[Member]:
    members = []
    for match in re.finditer(r"\[([^\]]*)\]\s*HRESULT\s+(\w+)\s*\((.*?)\)\s*;", body, re.DOTALL):
        words = re.search(r'helpstring\("([^"]*)"\)', match[1])
        kind = next((kind for kind in ("propget", "propput") if kind in match[1]), "method")
        pieces = re.findall(r"\[[^\]]*\][^,\[]*", match[3])
        arguments = [read_argument(piece) for piece in pieces]
        members.append(Member(match[2], words[1] if words else "", kind, arguments))
    return members


def read_interfaces(idl: str) -> dict[str, list[Member]]:
    """The members that each interface adds, by its name, in the order of the file."""
    pattern = r"(?:interface|dispinterface)\s+(\w+)\s*(?::\s*\w+\s*)?\{(.*?)\n\s*\};"
    return {match[1]: read_members(match[2]) for match in re.finditer(pattern, idl, re.DOTALL)}


def read_reference(page: str) -> dict[str, str]:
    """What the script reference says of each member: its first paragraph, its result and its HRESULTs."""
    texts = {}
    for section in re.split(r"^### ", page, flags=re.MULTILINE)[1:]:
        name = re.match(r"\w+", section)
        body = section.split("\n", 1)[1].split("```")[0].split("\n## ")[0]
        body = re.sub(r"Dispatch id 0x[0-9a-f]+(, [^.]*)?\. ?", "", body)
        if name:
            texts[name[0]] = body.strip()
    return texts


def comment(text: str, indent: str) -> str:
    lines = []
    for paragraph in re.split(r"\n\s*\n", text.strip()):
        for piece in re.split(r"\n(?=- )", paragraph):
            flat = " ".join(piece.split()).replace("*/", "* /")
            follow = "  " if flat.startswith("- ") else ""
            lines += textwrap.wrap(flat, 110 - len(indent), subsequent_indent=follow)
        lines.append("")
    lines = lines[:-1]
    if len(lines) == 1:
        return f"{indent}/** {lines[0]} */\n"
    return f"{indent}/**\n" + "".join(f"{indent} * {line}".rstrip() + "\n" for line in lines) + f"{indent} */\n"


def declare_method(member: Member) -> str:
    arguments = ", ".join(f"{argument.name}: {argument.type}" for argument in member.arguments if not argument.is_result)
    return f"    {member.name}({arguments}): {member.result};\n"


def declare(members: list[Member], reference: dict[str, str]) -> str:
    writable = {member.name for member in members if member.kind == "propput"}
    text = ""
    for member in members:
        if member.kind == "propput":
            continue
        words = reference.get(member.name) or member.help
        text += comment(words, "    ") if words else ""
        if member.kind == "propget":
            text += f"    {'' if member.name in writable else 'readonly '}{member.name}: {member.result};\n"
        else:
            text += declare_method(member)
    return text


def make_declarations(top: Path) -> str:
    interfaces = read_interfaces((top / "idl/paylodge.idl").read_text(encoding="utf-8"))
    reference = read_reference((top / "docs/script-reference.md").read_text(encoding="utf-8"))

    def chain(prefix: str) -> list[Member]:
        names = [name for name in interfaces if re.fullmatch(prefix + r"\d*", name)]
        return [member for name in names for member in interfaces[name]]

    objects = (
        ("Paylodge", "The accounting object.", chain("IPaylodge"), reference),
        ("PaylodgeControl", "The control: the card reader, the account services, and what the host pushes.",
         chain("IPaylodgeCtrl"), reference),
        ("PaylodgeControlEvents", "The events of the control, for pages whose host does not push by script.",
         interfaces["_IPaylodgeCtrlEvents"], {}),
    )
    text = HEAD
    for name, words, members, texts in objects:
        text += f"\n/** {words} */\ninterface {name} {{\n{declare(members, texts)}}}\n"
    return text


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--top", type=Path, default=TOP, help="the top of the checkout")
    top = parser.parse_args().top
    (top / PAGE).write_text(make_declarations(top), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
