"""clang as the Microsoft compiler would see the public headers: its rules for classes, the stubs for its library."""
import pathlib

STUBS = pathlib.Path(__file__).resolve().parents[1] / "abi" / "stubs"


def command(checkout, processor="i686"):
    return ["clang++", f"--target={processor}-pc-windows-msvc", "-std=c++17", "-ffreestanding", "-nostdinc++", "-fexceptions",
            "-fcxx-exceptions", "-fno-rtti", "-w", "-isystem", str(STUBS), "-I", str(checkout), "-DCORVIX_BUILDING"]
