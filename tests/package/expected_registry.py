"""What registering writes, key by key and value by value."""

from __future__ import annotations

from package_support import Registry

PAYLODGE = "{F8A9E1FD-7DCD-4be8-B510-7CBB849364AB}"
CONTROL = "{00A0CCCE-89E6-4779-AACD-E774651CB5AD}"
LIBRARY = "{C29F0A7C-64E9-4345-A15A-EBCB89E54784}"
# The platform's own, for interfaces that are marshalled through type information.
DUAL = "{00020424-0000-0000-C000-000000000046}"
DISPATCH = "{00020420-0000-0000-C000-000000000046}"

INTERFACES = {
    "IPaylodge": "{39ACDAC8-64A5-4846-835A-DB0B27DBA7AC}",
    "IPaylodge2": "{0225ACB2-7D2C-42F9-B5E6-7279B99D131A}",
    "IPaylodge3": "{CB794A43-CD61-4B0E-B54A-E28447B33436}",
    "IPaylodge4": "{1F23C895-1C68-435C-B45E-88765563A79C}",
    "IPaylodge5": "{29979547-1737-47C9-990D-A28E8580AEE1}",
    "IPaylodge6": "{31B014B6-CE44-4501-9A66-B30EFB752AD1}",
    "IPaylodge7": "{76EA92D6-D223-481E-ABED-966782227C04}",
    "IPaylodge8": "{11615BE4-AC81-438D-9799-E1E1133AA463}",
    "IPaylodgeCtrl": "{C60D4849-9144-48D2-9501-5A50575902F2}",
    "IPaylodgeCtrl2": "{8B618718-EE13-4DD0-886F-E62EACFAD603}",
    "IPaylodgeCtrl3": "{FE8F447C-76E0-4C39-8CBC-B7033CA6926B}",
    "IPaylodgeCtrl4": "{B3A419B6-A238-4E7C-830A-4A6828331C54}",
    "IPaylodgeCtrl5": "{3E264B32-2350-4234-9BC2-7844790E2102}",
    "IPaylodgeCtrl6": "{A23DF4AB-38A0-4DBE-B76D-D0C81F227550}",
    "IPaylodgeCtrl7": "{1E56044F-A0EA-463E-B46B-C3ABD3CB1AB3}",
    "IPaylodgeCtrl8": "{D4DB0F3F-3A68-4FCC-B944-34776D0D6BD4}",
    "IPaylodgeCtrl9": "{F7CD45E6-C810-4B03-8E17-22F213048D25}",
    "IPaylodgeCtrl10": "{A4224828-4E89-4ADA-867B-B9E9CE936944}",
}
EVENTS = {"_IPaylodgeCtrlEvents": "{458632FF-9CFF-4A49-9571-94FB79D6352E}"}


MACHINE = "HKEY_LOCAL_MACHINE\\Software\\Classes"
USER = "HKEY_CURRENT_USER\\Software\\Classes"
# Where 64-bit and 32-bit programs look for what they do not share.
VIEWS = {"x64": "", "x86": "\\Wow6432Node"}
KINDS = {"x64": "win64", "x86": "win32"}


def expected_machine(architecture: str, module: str) -> Registry:
    """What registering for the machine adds."""
    return lower(program_id(MACHINE) | classes(MACHINE + VIEWS[architecture], module) | platform(architecture, module))


def expected_user(module: str) -> Registry:
    """What registering for the current user adds to the classes; the type library stands where the platform puts it."""
    return lower(program_id(USER) | classes(USER, module))


def expected_type_library(architecture: str, module: str) -> Registry:
    return lower(platform(architecture, module))


def lower(registry: Registry) -> Registry:
    """Letter case means nothing in the names of keys."""
    return {key.lower(): values for key, values in registry.items()}


def program_id(root: str) -> Registry:
    key = f"{root}\\Paylodge.Paylodge"
    return {
        key: {"": "Paylodge Class"},
        f"{key}\\CLSID": {"": PAYLODGE},
        f"{key}\\CurVer": {"": "Paylodge.Paylodge"},
    }


def classes(root: str, module: str) -> Registry:
    paylodge, control = f"{root}\\CLSID\\{PAYLODGE}", f"{root}\\CLSID\\{CONTROL}"
    return {
        paylodge: {"": "Paylodged Class"},
        f"{paylodge}\\InprocServer32": {"": module},
        f"{paylodge}\\ProgID": {"": "Paylodge.Paylodge"},
        f"{paylodge}\\Programmable": {},
        f"{paylodge}\\TypeLib": {"": LIBRARY},
        f"{paylodge}\\VersionIndependentProgID": {"": "Paylodge.Paylodge"},
        control: {"": "PaylodgeCtrl Class"},
        f"{control}\\Control": {},
        f"{control}\\InprocServer32": {"": module, "ThreadingModel": "Apartment"},
        f"{control}\\MiscStatus": {"": "0"},
        f"{control}\\MiscStatus\\1": {"": "131473"},
        f"{control}\\Programmable": {},
        f"{control}\\ToolboxBitmap32": {"": f"{module}, 103"},
        f"{control}\\TypeLib": {"": LIBRARY},
        f"{control}\\Version": {"": "1.0"},
    }


def platform(architecture: str, module: str) -> Registry:
    """What the platform writes of a type library, for programs of both kinds."""
    registry: Registry = {}
    for view in VIEWS.values():
        registry |= type_library(MACHINE + view, KINDS[architecture], module) | interfaces(MACHINE + view)
    return registry


def type_library(root: str, kind: str, module: str) -> Registry:
    key = f"{root}\\TypeLib\\{LIBRARY}"
    folder = module[: module.rindex("\\") + 1]
    return {
        key: {},
        f"{key}\\1.0": {"": "Paylodge 1.0 Type Library"},
        f"{key}\\1.0\\0": {},
        f"{key}\\1.0\\0\\{kind}": {"": module},
        f"{key}\\1.0\\FLAGS": {"": "8"},
        f"{key}\\1.0\\HELPDIR": {"": folder},
    }


def interfaces(root: str) -> Registry:
    registry: Registry = {}
    for interface in (*INTERFACES.items(), *EVENTS.items()):
        registry |= interface_keys(root, *interface)
    return registry


def interface_keys(root: str, name: str, interface_id: str) -> Registry:
    key = f"{root}\\Interface\\{interface_id}"
    marshaler = DISPATCH if name in EVENTS else DUAL
    return {
        key: {"": name},
        f"{key}\\ProxyStubClsid": {"": marshaler},
        f"{key}\\ProxyStubClsid32": {"": marshaler},
        f"{key}\\TypeLib": {"": LIBRARY, "Version": "1.0"},
    }
