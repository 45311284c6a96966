#!/usr/bin/env python3
"""Checks every module and program of an unpacked package: check_binaries.py FOLDER

Version information in each; symbols in a file beside it that the debugger's check sum fits; a manifest in programs.
"""
import pathlib
import sys
import zlib

VERSION = "VS_VERSION_INFO".encode("utf-16-le")


def faults(path):
    image = path.read_bytes()
    if VERSION not in image:
        yield "no version information"
    if b".debug_info" in image:
        yield "symbols inside"
    debug = path.with_name(path.name + ".debug")
    if not debug.exists():
        yield "no symbols beside it"
    elif zlib.crc32(debug.read_bytes()).to_bytes(4, "little") not in image:
        yield "the symbols beside it are of another build"
    if path.suffix == ".exe":
        for setting in (b">UTF-8</activeCodePage>", b">PerMonitorV2"):
            if setting not in image:
                yield f"no {setting.decode()} in a manifest"


modules = [path for path in pathlib.Path(sys.argv[1]).rglob("*") if path.suffix in (".dll", ".exe")]
own = [path for path in modules if not path.name.startswith("lib")]  # those are the compiler's
found = [f"{path.name}: {fault}" for path in own for fault in faults(path)]
print(*found, f"{len(own)} modules and programs, {len(found)} faults", sep="\n")
sys.exit(1 if found or len(own) < 9 or len(modules) - len(own) != 3 else 0)
