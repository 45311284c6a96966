#!/usr/bin/env python3
"""Whether the project's own checks see what they are there for:  check_faults.py CHECKOUT

Each row puts one fault into a copy of the checkout, in which the checks see none, and the check has to name it. Part of `make lint`.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(sys.argv[1]).resolve()
LAYERS, SLOTS, IDENTITIES = "layers/check_layers.py", "abi/check_slots.py", "core/baselib/identity/check_identities.py"
OPERATIONS, QUOTES = "library/check_operations.py", "docs/check_quotes.py"
READER, REPORT, SMALL = "core/xml/XmlbinReader.cpp", "shell/services/Report.h", "shell/Plugin.h"
CLASS = "\nnamespace corvix { class INew : public IBTransportable {\n CORVIX_IDENTITY(INew, %s, IBTransportable)\n public: virtual int f() = 0; }; }\n"
KNOWN = "0xD71094B5, 0xEE8736F9, 0x9C39E9A6, 0x97C86C7D"  # of IBReport

# The check, the file, what stands there, what stands there instead. Of nothing: in front, or as a new file.
ROWS = [
    (LAYERS, READER, "", '#include "shell/Plugin.h"\n'),
    (LAYERS, READER, "", "#if 1\n  # include <shell/Plugin.h>\n#endif\n"),
    (LAYERS, "core/baselib/text/WideString.cpp", "", '#include "core/baselib/objects/Ref.h"\n'),
    (LAYERS, "core/baselib/text/sub/X.cpp", "", '#include "core/baselib/memory/MemoryManager.h"\n'),
    (LAYERS, "core/baselib/another/X.cpp", "", '#include "core/baselib/memory/MemoryManager.h"\n'),
    (LAYERS, "graphics/path/Path.cpp", "", '#include "core/suppliers/decoding/Decoders_p.h"\n'),
    (LAYERS, "plugins/gui/Frame.cpp", "", '#include "shell/modules/PeImage_p.h"\n'),
    (LAYERS, "plugins/windows/Look.h", "", '#include "plugins/gui/Frame.h"\n'),
    (LAYERS, SMALL, "", '#include "core/baselib/text/NameTable_p.h"\n'),
    (LAYERS, SMALL, "", "#include <Unknwn.h>\n"),
    (LAYERS, READER, "", "#include <winnt.h>\n"),
    (LAYERS, READER, "", "const auto& named = typeid (int);\n"),
    (LAYERS, READER, "", "void* wholeOf(A* a) { return dynamic_cast<void*>(a); }\n"),
    (LAYERS, "shell/Loose.h", "", "#pragma once\n"),
    (LAYERS, "shell/menus/More.cpp", "", "int unbuilt;\n"),
    (LAYERS, "tests/layers/check_layers.py", 'SHARED = """', 'SHARED = """ shell/guard/KeptStack_p.h'),
    (SLOTS, REPORT, "virtual void clear() noexcept = 0;", "virtual void clear() noexcept = 0;\nvirtual i32 more() const noexcept = 0;"),
    (SLOTS, REPORT, "virtual i32 lineCount() const", "virtual i64 lineCount() const"),
    (SLOTS, REPORT, "addLine(const wchar_t* text)", "addLine(int text)"),
    (SLOTS, REPORT, None, CLASS % "1, 2, 3, 4"),
    (IDENTITIES, REPORT, KNOWN, "0xC3A5F081, 0x4E279B6D, 0x86D01FE4, 0x5B7932AC"),
    (IDENTITIES, "tools/corvix/Check.cpp", None, CLASS % KNOWN),
    (OPERATIONS, "core/baselib/heap/Heap.h", None, "\nnamespace corvix {\nCORVIX_API std::unique_ptr<int>\nquiteNew(int);\n}\n"),
    (OPERATIONS, "core/baselib/heap/Heap.h", None, "\nnamespace corvix {\nstruct CORVIX_API QuiteNew { int f(); };\n}\n"),
    (QUOTES, "sdk/template/IMyInterface.h", "int twice(int number)", "int twice(int n)"),
    (QUOTES, "README.md", "docs/plugins.md", "docs/plugin.md"),
    (QUOTES, "docs/testing.md", "smooth.md#how-good-it-is", "smooth.md#how-bad-it-is"),
]



def sees(check, folder):
    """Whether the check has a fault to tell of; None when it breaks down."""
    done = subprocess.run([sys.executable, pathlib.Path(folder, "tests", check), folder], capture_output=True, text=True, check=False)
    return None if "Traceback" in done.stderr else done.returncode == 1


unseen = []
with tempfile.TemporaryDirectory() as folder:
    names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                           stdout=subprocess.PIPE, text=True).stdout.split("\0")
    for name in filter(None, names):
        copy = pathlib.Path(folder, name)
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, copy)
    unseen += [f"{check} has its faults without ours" for check in dict.fromkeys(row[0] for row in ROWS) if sees(check, folder) is not False]
    for number, (check, name, old, new) in enumerate(ROWS, 1):
        file = pathlib.Path(folder, name)
        before = file.read_text(encoding="utf-8") if file.exists() else None
        text = before or ""
        if old and old not in text:
            unseen.append(f"{number}: {name} has no {old!r} any more")
            continue
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text + new if old is None else text.replace(old, new, 1), encoding="utf-8")
        if not sees(check, folder):
            unseen.append(f"{number}: {check} does not see in {name}: {new.strip()}")
        if before is None:
            file.unlink()
        else:
            file.write_text(before, encoding="utf-8")
print(*unseen, f"{len(ROWS)} faults, {len(unseen)} unseen", sep="\n")
sys.exit(1 if unseen else 0)
