#!/usr/bin/env python3
"""Plants single faults in the sources of the library and counts how many of them the tests find.

Usage: tools/mutate.py [--count N] [--seed S] [--build build/dev] [FILE...]
Takes the sources at the baseline level only: an object is compiled from the changed copy, the test program of the family is
linked with it in place of the other, and its tests run at that level alone, so that a comparison with the other levels finds
nothing. A fault counts as found when a test fails, crashes or does not end: first those of the functions in the source, then
all of the family, and only then the comparison with the results of earlier versions, which is counted apart ("pinned"), and
all once more with that source under the address and undefined-behaviour sanitizers ("sanitized"). The tree and its build
stay as they are; the programs test_FAMILY of the build must be up to date. Faults that do not compile, or to the same code,
are drawn again.
"""

import argparse
import hashlib
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parent.parent
LITERAL = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)(?![\w.'])")
# kind, pattern, replacements
RULES = [
    ("constant", LITERAL, [lambda m: number(m, 1), lambda m: number(m, -1)]),
    ("comparison", re.compile(r" (<|>|<=|>=|==|!=) "), [lambda m: f" {OTHER[m.group(1)]} "]),
    ("sign", re.compile(r" (\+|-) "), [lambda m: " - " if m.group(1) == "+" else " + "]),
    ("shift", re.compile(r" (<<|>>) (\d+)"), [lambda m: f" {m.group(1)} {int(m.group(2)) + 1}"]),
    ("index", re.compile(r"(?<=\w)\[([^\][]+)\](?! *\()"), [lambda m: f"[{m.group(1)} + 1]", lambda m: f"[{m.group(1)} - 1]"]),
    ("saturation dropped", re.compile(r"\b(sat_16s|Add_32s|Sub_32s|Cnvrt_64s32s|Add_16s|Sub_16s)\("),
     [lambda m: WRAPPING[m.group(1)]]),
    ("saturation added", re.compile(r"\b(Vsp16s|wrapAdd_32s|wrapSub_32s)\("), [lambda m: SATURATING[m.group(1)]]),
    ("rounding", re.compile(r" \+ 0x(4000|8000)\b|\b(mulRound_16s|round_32s)\("),
     [lambda m: "" if m.group(1) else {"mulRound_16s": "Mul_16s(", "round_32s": "high_32s("}[m.group(2)]]),
]  # fmt: skip
OTHER = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
WRAPPING = {"sat_16s": "Vsp16s(", "Add_32s": "wrapAdd_32s(", "Sub_32s": "wrapSub_32s(", "Cnvrt_64s32s": "Vsp32s(",
            "Add_16s": "Vsp16s(0 + wrapAdd_32s)(", "Sub_16s": "Vsp16s(0 + wrapSub_32s)("}  # fmt: skip
SATURATING = {"Vsp16s": "sat_16s(", "wrapAdd_32s": "Add_32s(", "wrapSub_32s": "Sub_32s("}
# The families whose tests run what is shared.
USERS = {"g7291": ["core"], "common": ["common", "gsmamr", "g729", "amrwb"], "vector": ["vector", "ec"]}
SANITIZE = ("-fsanitize=address,undefined", "-fno-sanitize-recover=all")
CHECK = re.compile(r"^ *if \(.*\) return (vspSts\w+Err);")


def number(match, change):
    text = match.group(1)
    value = int(text, 0 if text.startswith("0x") else 10) + change
    return hex(value) if text.startswith("0x") else str(value)


def mutations(path):
    """All faults of a source: line number, kind, the lines in place of that one."""
    lines = path.read_text().split("\n")
    found = []
    for i, line in enumerate(lines):
        code = line.split("//")[0]
        if code.lstrip().startswith(("#", "*", "static_assert", "namespace", "template", "using")) or not code.strip():
            continue
        following = CHECK.match(lines[i + 1]) if i + 1 < len(lines) else None
        if following and CHECK.match(line) and CHECK.match(line)[1] != following[1]:
            found.append((i, "order of checks", [lines[i + 1], line], 2))
        for kind, pattern, replacements in RULES:
            for match in pattern.finditer(code):
                for replacement in replacements:
                    found.append((i, kind, [code[: match.start()] + replacement(match) + code[match.end() :]], 1))
    return lines, found


class Build:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        self.commands = {}
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            if "-DVSP_LEVEL=y8" in entry["command"]:
                self.commands[entry["file"]] = (entry["command"], entry["output"] if "output" in entry else None)
        self.links = {}

    def compile(self, source, text, out, flags=()):
        command, _ = self.commands[str(source)]
        command = re.sub(r" -o \S+ -c \S+$", "", command).replace(" -g1 ", " ")
        copy = pathlib.Path(out.parent, source.name)
        copy.write_text(text)
        command = re.sub(r"^(?:\S*ccache )?", "", command)
        arguments = [*command.split(), f"-I{source.parent}", "-O1", "-w", *flags, "-o", str(out), "-c", str(copy)]
        return subprocess.run(arguments, cwd=self.folder, capture_output=True, check=False).returncode == 0

    def link(self, program, source, changed, out, flags=()):
        if program not in self.links:
            listed = subprocess.run(["ninja", "-C", str(self.folder), "-t", "commands", "-s", f"bin/{program}"], text=True,
                                    capture_output=True, check=True).stdout.strip().split("\n")[-1]  # fmt: skip
            self.links[program] = re.sub(r"^: && | && :$", "", listed)
        object_file = f"CMakeFiles/vspsc_y8.dir/{source.relative_to(SOURCE)}.o"
        command = self.links[program]
        assert f" {object_file} " in command, f"{program} is not linked with {object_file}"
        command = command.replace(f" {object_file} ", f" {changed} ")
        command = command.replace(f" -o bin/{program} ", f" {' '.join(flags)} -o {out} ")
        if subprocess.run(command, shell=True, cwd=self.folder, capture_output=True, check=False).returncode != 0:
            sys.exit(f"{program} cannot be linked: is the build up to date?")


def fails(program, tests, seconds, pinned=False):
    """Whether a test fails or does not end."""
    environment = {**os.environ, "VSPSC_LEVEL": "y8"}
    if not pinned:
        environment["VSPSC_PIN"] = "/dev/null"  # compares with nothing
    command = [str(program), "--gtest_fail_fast", "--gtest_brief=1", f"--gtest_filter={tests}"]
    try:
        return subprocess.run(command, env=environment, capture_output=True, timeout=seconds, check=False).returncode != 0
    except subprocess.TimeoutExpired:
        return True


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=20)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--build", default=str(SOURCE / "build/dev"))
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    options = parser.parse_args()
    chance = random.Random(options.seed)
    build = Build(options.build)
    files = [f.resolve() for f in options.files] or sorted(pathlib.Path(f) for f in build.commands)
    files = [f for f in files if str(f) in build.commands and f.parent.name not in ("rta", "version")]
    chance.shuffle(files)

    counts, survivors, drawn = {"found": 0, "pinned": 0, "sanitized": 0, "SURVIVED": 0}, [], 0
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        clean = {}  # the code of a file without a fault
        for turn in range(100 * options.count):
            if drawn == options.count:
                break
            source = files[turn % len(files)]
            lines, possible = mutations(source)
            if not possible:
                continue
            kind = chance.choice(sorted({m[1] for m in possible}))  # not mostly constants
            line, kind, replaced, length = chance.choice([m for m in possible if m[1] == kind])
            text = "\n".join([*lines[:line], *replaced, *lines[line + length :]])
            changed = work / "changed.o"
            if source not in clean:
                build.compile(source, "\n".join(lines), changed)
                clean[source] = digest(changed)
            if not build.compile(source, text, changed) or digest(changed) == clean[source]:
                continue
            drawn += 1
            own = ":".join(f"*{name}*" for name in re.findall(r"^VspStatus (vsps\w+)\(", "\n".join(lines), re.M))
            families = USERS.get(source.parent.name, [source.parent.name])
            programs = [work / f"test_{family}" for family in families]
            for each in programs:
                build.link(each.name, source, changed, each)
            rest = ":-*AnyLegal*"  # which compares with other levels and earlier versions only
            outcome = "SURVIVED"
            if any((own and fails(p, own + rest, 120)) or fails(p, "*" + rest, 600) for p in programs):
                outcome = "found"
            elif any(fails(p, "*AnyLegal*", 600, pinned=True) for p in programs):
                outcome = "pinned"
            elif build.compile(source, text, changed, SANITIZE):
                for each in programs:
                    build.link(each.name, source, changed, each, SANITIZE)
                outcome = "sanitized" if any(fails(p, "*", 900) for p in programs) else outcome
            counts[outcome] += 1
            what = f"{source.relative_to(SOURCE)}:{line + 1}: {kind}: {' / '.join(r.strip() for r in replaced)}"
            if outcome == "SURVIVED":
                survivors.append(what)
            print(f"{outcome:9} {what}", flush=True)
    caught = drawn - counts["SURVIVED"]
    print(f"{counts['found']} of {drawn} found, {counts['pinned']} by pinned results, {counts['sanitized']} by sanitizers: "
          f"{100 * caught / max(drawn, 1):.1f} %")  # fmt: skip
    for survivor in survivors:
        print("survived:", survivor)
    return 0


def digest(object_file):
    """Of the code and constants, without names and lines."""
    listing = subprocess.run(["objdump", "-d", "-s", "-j", ".text", "-j", ".rodata", str(object_file)], capture_output=True,
                             check=False).stdout  # fmt: skip
    return hashlib.sha256(listing.split(b"\n", 3)[-1]).hexdigest()


if __name__ == "__main__":
    sys.exit(main())
