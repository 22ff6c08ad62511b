"""Checks the public headers: C89 to C23 and C++ clean, each one self-contained, every function documented,
exported and tested.

Usage: check_interface.py SOURCE_DIR C_COMPILER CXX_COMPILER
"""

import pathlib
import re
import shutil
import subprocess
import sys

from exports import exported_names, voice_names

source, c_compiler, cxx_compiler = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
problems = []

headers = sorted((source / "include").rglob("*.h"))
assert headers, "no headers found"
def compile_as(standard, compiler, header, flags):
    language = "c++" if "++" in standard else "c"
    name = header.relative_to(source / "include")
    program = f"#include <{name}>\n#include <{name}>\nint main(void) {{ return vspStsNoErr; }}\n"
    command = [compiler, f"-std={standard}", "-pedantic", "-Wall", "-Wextra", "-Werror", *flags, "-fsyntax-only",
               "-I", str(source / "include"), "-x", language, "-"]  # fmt: skip
    result = subprocess.run(command, input=program, text=True, capture_output=True, check=False)
    if result.returncode != 0:
        problems.append(f"{name} as {standard} with {compiler}:\n{result.stderr}")


# Each one by itself, and all together with every warning of both compilers.
for header in headers:
    compile_as("c89", c_compiler, header, ["-Wstrict-prototypes"])
    compile_as("c++98", cxx_compiler, header, [])
GCC = ["-Wconversion", "-Wshadow", "-Wundef", "-Wcast-align", "-Wredundant-decls"]
CLANG = ["-Weverything", "-Wno-padded", "-Wno-c++98-compat-pedantic"]
for compiler, flags in [("gcc", GCC), ("clang", CLANG)]:
    if shutil.which(compiler):
        for header in [source / "include/vspsc.h", source / "include/vspsvoice.h"]:
            for standard in ["c89", "c11", "c2x", "c++98", "c++20"]:
                compile_as(standard, compiler, header, flags)

declared = {}
for header in headers:
    text = header.read_text()
    library = header.parent
    if library.name != "include" and f"{library.name}/{header.name}" not in library.with_suffix(".h").read_text():
        problems.append(f"{library.name}.h does not include {header.name}")
    for match in re.finditer(r"(/\*\*(?:(?!\*/).)*\*/\n)?^(?:const )?(\w+)\*? ?\b(vsp[sv]\w+)\(([^)]*)\);", text, re.M | re.S):
        comment, result, name, parameters = match.groups()
        if name in declared:
            problems.append(f"{name} is declared twice")
        declared[name] = header
        comment = comment or ""
        names = [] if parameters == "void" else [re.search(r"(\w+)$", p).group(1) for p in parameters.split(",")]
        documented = re.findall(r"@param\[(?:in|out|in,out)\]\s+(\w+)", comment)
        if documented != names:
            problems.append(f"{name}: parameters {names}, documented {documented}")
        if result == "VspStatus" and not re.search(r"@retval vspSts\w+Err ", comment):
            problems.append(f"{name}: the comment lists no error")
        if result == "VspStatus" and any("*" in p for p in parameters.split(",")) and "@retval vspStsNullPtrErr" not in comment:
            problems.append(f"{name}: the comment does not mention null pointers")

exports = exported_names(source) + voice_names(source)
if len(exports) != len(set(exports)):
    problems.append("a name is listed twice")
problems += [f"{name} is declared but not exported" for name in declared if name not in exports]
problems += [f"{name} is exported but not declared" for name in exports if name not in declared]
tested = {word for file in (source / "tests").rglob("*") if file.suffix in (".c", ".cpp", ".h") and "tools" not in file.parts
          for word in re.findall(r"\bvsp[sv]\w+", file.read_text())}  # fmt: skip
problems += [f"{name} is exported but not tested" for name in exports if name not in tested]

print(f"{len(headers)} headers, {len(declared)} functions")
sys.exit("\n".join(problems) if problems else 0)
