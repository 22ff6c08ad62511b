"""Compares the interface that the headers declare with the one that was promised: tests/core/data/<library>.abi. Nothing may be
taken away or changed, sizes and layouts of structures and values of enumerations included; more functions are welcome.

Usage: check_abi.py SOURCE_DIR C_COMPILER ABIDW ABIDIFF [--write]
With --write what the headers declare now is promised from now on.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

source, compiler, abidw, abidiff = pathlib.Path(sys.argv[1]), *sys.argv[2:5]
write = "--write" in sys.argv[5:]
PROTOTYPE = re.compile(r"^((?:const )?\w+\*? ?\bvsp[sv]\w+\([^)]*\));", re.M)
status = 0

with tempfile.TemporaryDirectory() as folder:
    for name, headers in [("vspscy8", "vspsc"), ("vspsvoice", "vspsvoice")]:
        # The exported functions are reached through tables and have no types there: bodies for the prototypes.
        texts = [h.read_text() for h in sorted((source / "include" / headers).glob("**/*.h"))]
        declared = [p for text in texts for p in PROTOTYPE.findall(text)]
        program = f"#include <{headers}.h>\n" + "".join(f"{p} {{ return 0; }}\n" for p in declared)
        # No function has the enumerations in its type: their values as sizes of arrays.
        bodies = [e for text in texts for e in re.findall(r"^enum {([^}]*)};", re.sub(r"/\*.*?\*/", "", text, flags=re.S), re.M)]
        constants = [c.split()[0] for body in bodies for c in body.split(",") if c.strip()]
        program += "".join(f"char value_of_{c}[1000 + {c}];\n" for c in constants)
        library, promised = pathlib.Path(folder, f"lib{name}.so"), source / "tests/core/data" / f"lib{name}.abi"
        command = [compiler, "-g", "-shared", "-fPIC", "-w", "-I", str(source / "include"), "-x", "c", "-", "-o", str(library)]
        subprocess.run(command, input=program, text=True, check=True)
        if write:
            options = ["--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--no-architecture", "--type-id-style", "hash"]
            subprocess.run([abidw, *options, "--out-file", str(promised), str(library)], check=True)
        ignored = ["--no-added-syms", "--harmless", "--no-show-locs", "--no-architecture"]
        result = subprocess.run([abidiff, *ignored, str(promised), str(library)], text=True, capture_output=True, check=False)
        print(f"lib{name}: {len(declared)} functions, {len(constants)} constants", flush=True)
        if result.returncode != 0:
            print(result.stdout, result.stderr)
            status = 1
sys.exit(status)
