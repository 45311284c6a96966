#!/usr/bin/env python3
"""What the compiler says to code that does not fit its descriptor: header_test.py CHECKOUT SCRATCH COMPILER XMLBINC...

Every sentence names plugin.xml and its line. All in C++17.
"""
import pathlib
import subprocess
import sys

checkout, scratch, compiler, xmlbinc = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3], sys.argv[4:]
scratch.mkdir(parents=True, exist_ok=True)
(scratch / "plugin.xml").write_text("""<CorvixRC Version="1.00">
  <Plugin Name="My \\&quot;plug-in" Version="1.0" Manufacturer="Me" GUID="0x9E6A31D4, 0x4F5BC807, 0xB2C7D950, 0x613F08EA">
    <Interface Name="My.Interface" GUID="0xC3A5F081, 0x4E279B6D, 0x86D01FE4, 0x5B7932AC"/>
    <Interface Name="My.Interface" GUID="1, 2, 3, 4"/>
    <Interface Name="1. &quot;\\?\u00e9\U0001f600" GUID="-1, 010, 0x10, 10"/>
    <Interface Name="Skipped" GUID="1, 2"/>
    <Interface Name="class" GUID="1, 2, 3, 5"/>
    <Interface Name="name" GUID="1, 2, 3, 6"/>
  </Plugin>
</CorvixRC>
""", encoding="utf-8")
subprocess.run([*xmlbinc, str(scratch / "plugin.xml"), "--header", str(scratch / "descriptor.h")], check=True)

CODE = """#include "IMyInterface.h"
#include "descriptor.h"
#include "shell/Plugin.h"
class Mine : public corvix::BSmartObject, public IMyInterface {
  CORVIX_IDENTITY(Mine, 0x18D64F7A, 0x43B0C2E5, 0xA9F58316, 0xD07E2B94, corvix::BSmartObject, IMyInterface)
 public:
  int twice(int number) const override { return 2 * number; }
};
class Other : public corvix::BSmartObject {
  CORVIX_DECLARED_IDENTITY(Other, descriptor::My_Interface_2, corvix::BSmartObject)
};
CORVIX_PLUGIN(ROWS)
"""
MINE = "corvix::rowFor<descriptor::My_Interface, Mine>()"
OTHER = "corvix::rowFor<descriptor::My_Interface_2, Other>()"
ODD = ",\n".join(f"{{{name}, [] {{ return corvix::create<Other>(); }}}}" for name in (
    'L"1. \\"\\\\?\\u00e9\\U0001f600"', "descriptor::class_::name", "descriptor::name_::name"))
ROWS = [
    ("all rows", [MINE, OTHER, ODD], ""),
    ("one missing", [MINE], "plugin.xml:5:"),
    ("none of a name", [ODD], "plugin.xml:3:"),
    ("one too many", [MINE, ODD, '{L"My.Interfase", corvix::create<Mine>}'], "plugin.xml:2:"),
    ("of another identity", ["corvix::rowFor<descriptor::My_Interface, Other>()", ODD], "plugin.xml:3:"),
]
wrong = 0
for name, rows, place in ROWS:
    source = scratch / "MyPlugin.cpp"
    source.write_text(CODE.replace("ROWS", ",\n".join(rows)), encoding="utf-8")
    said = subprocess.run([compiler, "-std=c++17", "-pedantic-errors", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", "-I", str(checkout),
                           "-I", str(checkout / "sdk/template"), "-I", str(scratch), str(source)],
                          capture_output=True, text=True, check=False)
    if (said.returncode == 0) != (not place) or (place and f"{place}" not in said.stderr):
        wrong += 1
        print(f"{name}: exit code {said.returncode}, wanted {place or 'no error'}:\n{said.stderr}")
print(f"{len(ROWS)} modules, {wrong} faults")
sys.exit(1 if wrong else 0)
