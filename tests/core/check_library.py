"""Checks the built shared library: names, dependencies, protection of its data, instructions of each level,
endbr64 at each export, stack.

Usage: check_library.py LIBRARY SOURCE_DIR
The library is libvspscy8 or libvspsvoice, which has one level, calls the former and may do so from anywhere.
"""

import pathlib
import re
import subprocess
import sys

from elftools.elf.elffile import ELFFile
from exports import exported_names, voice_names
from stack_use import StackUse, exported_bytes, pointers

path, source = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
VOICE = path.name.startswith("libvspsvoice")
SONAME = "libvspsvoice.so.1" if VOICE else "libvspscy8.so.6.1"
VERSION = SONAME.replace(".so.", "_").upper()  # of all symbols
SYMBOLS = source / "debian" / ("libvspsvoice1.symbols" if VOICE else "libvspscy8-6.1.symbols")
NEEDED = {"libc.so.6", "libm.so.6"} | ({"libvspscy8.so.6.1"} if VOICE else set())
# No memory management, environment, locks, files or output.
IMPORTS = {"memcpy", "memmove", "memset", "memcmp", "pow", "sqrt", "exp", "log", "log10", "cos", "sin", "sincos", "__stack_chk_fail"}
STACK = 64 << 10 if VOICE else 16 << 10  # bytes, without libc and libm
if VOICE:
    IMPORTS |= set(exported_names(source))

exports = set(voice_names(source) if VOICE else exported_names(source))
problems = []


def check(good, problem):
    if not good:
        problems.append(problem)


check(path.resolve().name == SONAME, f"the file is called {path.resolve().name}")
link = path.resolve().parent / re.sub(r"\.so\..*", ".so", SONAME)
check(link.is_symlink() and link.resolve() == path.resolve(), "the development link is missing or wrong")

elf = ELFFile(path.open("rb"))
tags = list(elf.get_section_by_name(".dynamic").iter_tags())
flags = {t.entry.d_tag: t.entry.d_val for t in tags}
check([t.soname for t in tags if t.entry.d_tag == "DT_SONAME"] == [SONAME], "wrong SONAME")
needed = {t.needed for t in tags if t.entry.d_tag == "DT_NEEDED"}
check(needed <= NEEDED, f"needs {needed - NEEDED}")
check(flags.get("DT_FLAGS", 0) & 0x8 and flags.get("DT_FLAGS_1", 0) & 0x1, "not bound immediately")
check("DT_TEXTREL" not in flags and not flags.get("DT_FLAGS", 0) & 0x4, "relocations in the code")
for tag in ["DT_INIT", "DT_FINI", "DT_INIT_ARRAY", "DT_FINI_ARRAY", "DT_PREINIT_ARRAY", "DT_RPATH", "DT_RUNPATH"]:
    check(tag not in flags or (VOICE and tag == "DT_RUNPATH"), f"has {tag}")  # to libvspscy8 beside it

symbols = list(elf.get_section_by_name(".dynsym").iter_symbols())[1:]
defined = {s.name: s.entry.st_info.type for s in symbols if s.entry.st_shndx not in ("SHN_UNDEF", "SHN_ABS")}
undefined = {s.name for s in symbols if s.entry.st_shndx == "SHN_UNDEF"}
check(exports and set(defined) == exports, f"exports differ: {sorted(set(defined) ^ exports)}")
packaged = set(re.findall(r"^ (vsp\w+)@", SYMBOLS.read_text(), re.M))
check(packaged == exports, f"{SYMBOLS.name} differs: {sorted(packaged ^ exports)}")
check(set(defined.values()) == {"STT_FUNC"}, f"not all exports are functions: {defined}")
check(undefined <= IMPORTS, f"imports {sorted(undefined - IMPORTS)}")
definitions = elf.get_section_by_name(".gnu.version_d")
versions = [next(names).name for _, names in definitions.iter_versions()][1:] if definitions else []  # the first is the SONAME
check(versions == [VERSION], f"versions {versions}, not {VERSION}")
numbers = [s["ndx"] for s in elf.get_section_by_name(".gnu.version").iter_symbols()][1:]
check({n for n, s in zip(numbers, symbols) if s.name in defined} == {2}, "symbols without that version")

symtab = list(elf.get_section_by_name(".symtab").iter_symbols())
weak = [s.name for s in symtab + symbols if s.entry.st_info.bind in ("STB_WEAK", "STB_LOOS")]
check(not weak, f"weak symbols: {weak}")

segments = list(elf.iter_segments())
relro = [s.header for s in segments if s.header.p_type == "PT_GNU_RELRO"]
check(len(relro) == 1, "no read-only relocation segment")
for section in elf.iter_sections():
    header = section.header
    if header.sh_flags & 0x1 and header.sh_size > 0:  # writable
        inside = any(r.p_vaddr <= header.sh_addr and header.sh_addr + header.sh_size <= r.p_vaddr + r.p_memsz for r in relro)
        check(inside, f"{section.name} stays writable ({header.sh_size} bytes)")
        check(not header.sh_flags & 0x400, f"{section.name} is thread-local")
        check(not header.sh_flags & 0x4, f"{section.name} is writable and executable")
stack_flags = [s.header.p_flags for s in segments if s.header.p_type == "PT_GNU_STACK"]
check(stack_flags and not stack_flags[0] & 0x1, "executable stack")
properties = [p for s in elf.iter_sections("SHT_NOTE") for n in s.iter_notes() if n["n_type"] == "NT_GNU_PROPERTY_TYPE_0"
              for p in n["n_desc"] if p.pr_type == "GNU_PROPERTY_X86_FEATURE_1_AND"]  # fmt: skip
check(any(p.pr_data & 0x3 == 0x3 for p in properties), "not marked for indirect branch tracking and shadow stack")

# Where both ways of rounding lead to the same integer.
FUSED = r"_GLOBAL__N_19Recursion\d|vspsLevinsonDurbin_G728"

# In 64-bit mode the first byte tells: C4 and C5 begin AVX instructions, 62 those of AVX-512.
FORBIDDEN = {"y8": {"c4", "c5", "62"}, "v3": {"62"}, "v4": set()}
listing = subprocess.run(["objdump", "-d", "-w", str(path)], text=True, capture_output=True, check=True).stdout
function, level, functions = "", "y8", {"y8": 0, "v3": 0, "v4": 0}
stack = StackUse(dict.fromkeys(exported_names(source), 16 << 10) if VOICE else None)
landed, entered = set(), False
for line in listing.splitlines():
    if start := re.match(r"[0-9a-f]+ <(.+)>:$", line):
        function = start.group(1)
        named = re.search(r"3vsp2(y8|v3|v4)", function)
        level = named.group(1) if named else "y8"  # the dispatcher is baseline code
        functions[level] += 1
        stack.function(function)
        entered = False
    elif instruction := re.match(r"\s+[0-9a-f]+:\t([0-9a-f]{2}) ", line):
        if not entered and line.endswith("endbr64"):
            landed.add(function)
        entered = True
        stack.line(line)
        check(instruction.group(1) not in FORBIDDEN[level], f"{function}: {line.strip()}")
        fused = re.search(r"\tvfn?m(add|sub)", line)
        check(not fused or re.search(FUSED, function), f"{function}: a contraction rounds once: {line.strip()}")
        check(VOICE or not re.search(r"<vsps\w+(@plt)?>$", line), f"{function}: a call leaves its level: {line.strip()}")
check(functions["y8"] > 0 and (VOICE or all(functions.values())), f"no code found of a level: {functions}")

check(exports <= landed, f"no endbr64 at {sorted(exports - landed)}")

stack.address_taken |= pointers(path)
check(not stack.unknown, f"stack pointer: {stack.unknown}")
used = exported_bytes(stack, exports)
deepest = max(used, key=used.get)
check(0 < used[deepest] <= STACK, f"{deepest} takes {used[deepest]} bytes of the stack, more than {STACK}")

print(f"{len(exports)} exports, {functions} functions, at most {used[deepest]} bytes of the stack: {deepest}")
sys.exit("\n".join(problems) if problems else 0)
