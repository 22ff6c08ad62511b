"""How much of the stack each exported function takes at most, read from the disassembly of a built library.

Usage: stack_use.py LIBRARY...
Prints bytes and name, deepest first, of every exported function at the level that takes most; a library that another one
calls comes first. What functions of libc and libm take is not counted.
"""

import re
import subprocess
import sys

LINE = re.compile(r"\s+[0-9a-f]+:\t(?:[0-9a-f]{2} )+\s*\t?(?:notrack |bnd )?(\w+) *([^#<]*)(?:# [0-9a-f]+ )?(?:<([^>]+)>)?")


class StackUse:
    """Takes a listing of objdump -d -w line by line."""

    def __init__(self, callees=None):
        self.callees = callees or {}  # bytes of the functions of other libraries
        self.frames, self.calls = {}, {}
        self.indirect, self.address_taken = set(), set()
        self.unknown = []
        self.name, self.depth, self.before_epilogue = None, 0, None
        self.measured = {}

    def function(self, name):
        self.name, self.depth, self.before_epilogue = name, 0, None
        self.frames[name] = 0
        self.calls[name] = set()

    def line(self, text):
        """One instruction of the current function."""
        if not ("%rsp" in text or "push" in text or "pop" in text or "<" in text or "ret" in text or "call" in text or "leave" in text):
            return
        match = LINE.match(text)
        if match is None or self.name is None:
            return
        code, operands, target = match.groups()
        operands = operands.strip()
        released = True  # an epilogue: a run of such instructions up to the return
        before = self.depth
        if code == "push":
            self.depth += 8
            released = False
        elif code == "pop":
            self.depth -= 8
        elif operands.endswith(",%rsp") and code in ("sub", "add", "and", "lea"):
            released = self.move(code, operands)
        elif operands.endswith(",%rsp") and not (code.startswith(("mov", "test", "cmp")) and operands != "%rbp,%rsp"):
            self.unknown.append(f"{self.name}: {text.strip()}")
        elif code == "leave" or operands == "%rbp,%rsp":
            pass
        elif code == "ret" or (code == "jmp" and self.before_epilogue is not None):
            if self.before_epilogue is not None:
                self.depth = self.before_epilogue
            self.before_epilogue = None
            released = None
        else:
            released = None if code.startswith("vzero") or code == "endbr64" else False
        if released:
            if self.before_epilogue is None:
                self.before_epilogue = before
        elif released is False:
            self.before_epilogue = None
        self.frames[self.name] = max(self.frames[self.name], self.depth)
        if code in ("call", "jmp") and operands.startswith("*"):
            if code == "call" or "(" in operands:
                self.indirect.add(self.name)
        elif target:
            self.refer(code, target)

    def move(self, code, operands):
        """Of the stack pointer; whether it goes back."""
        constant = re.match(r"\$?(-?0x[0-9a-f]+)", operands)
        if constant is None:
            self.unknown.append(f"{self.name}: {operands}")
            return False
        number = int(constant.group(1), 16)
        if number >= 1 << 63:
            number -= 1 << 64
        if code == "and":
            self.depth += -number - 8  # at worst
        elif code == "lea" and "(%rsp)" not in operands:
            return True  # back to where the frame began
        else:
            self.depth += number if code == "sub" else -number
            return (number < 0) == (code == "sub")
        return False

    def refer(self, code, target):
        name = re.sub(r"(@plt)?([+-]0x[0-9a-f]+)?$", "", target)
        if name == self.name or re.search(r"@[A-Z]|^_GLOBAL", name):
            return
        if code == "call" or code.startswith("j"):
            self.calls[self.name].add(name)
        elif "+0x" not in target:
            self.address_taken.add(name)

    def bytes(self, name, path=(), indirect=False):
        """Of a function and all that it calls, without the return address of its caller."""
        if name in self.measured:
            return self.measured[name]
        if name not in self.frames:
            return self.callees.get(name, 0)
        if name in path:
            if not indirect:
                raise ValueError(f"{name} calls itself")
            return 0  # one that a pointer cannot be meant to reach
        path = (*path, name)
        deepest = max((8 + self.bytes(callee, path, indirect) for callee in self.calls[name]), default=0)
        if name in self.indirect:  # any whose address is taken at the level
            level = level_of(name)
            candidates = [f for f in self.address_taken if f in self.frames and level_of(f) == level and f not in path]
            deepest = max([deepest, *(8 + self.bytes(f, path, True) for f in candidates)])
        total = self.frames[name] + deepest
        if not self.reaches_indirect(name):
            self.measured[name] = total
        return total

    def reaches_indirect(self, name):
        seen, rest = set(), [name]
        while rest:
            f = rest.pop()
            if f in self.indirect:
                return True
            if f not in seen:
                seen.add(f)
                rest += self.calls.get(f, ())
        return False


def level_of(function):
    named = re.search(r"3vsp2(y8|v3|v4)", function)
    return named.group(1) if named else ""


def exported_bytes(use, names):
    """Bytes of each of these names, at the worst of its levels."""
    result = dict.fromkeys(names, 0)
    for function in use.frames:
        level = level_of(function)
        mangled = re.match(r"_ZN3vsp2\w\w(\d+)(\w+)$", function) if level else None
        name = mangled.group(2)[: int(mangled.group(1))] if mangled else function
        if name in result:
            result[name] = max(result[name], use.bytes(function))
    return result


def listing(library):
    return subprocess.run(["objdump", "-d", "-w", str(library)], text=True, capture_output=True, check=True).stdout.splitlines()


def pointers(library):
    """The functions that tables of the library point to."""
    table = subprocess.run(["objdump", "-t", str(library)], text=True, capture_output=True, check=True).stdout
    at = {int(fields[0], 16): fields[-1] for fields in map(str.split, table.splitlines()) if len(fields) > 3 and ".text" in fields}
    found = subprocess.run(["readelf", "-rW", str(library)], text=True, capture_output=True, check=True).stdout
    return {at[int(a, 16)] for a in re.findall(r"R_X86_64_RELATIVE +([0-9a-f]+)", found) if int(a, 16) in at}


def measure(library, names, callees=None):
    """Bytes of each of these names, and instructions that are not understood."""
    use = StackUse(callees)
    for line in listing(library):
        if start := re.match(r"[0-9a-f]+ <(.+)>:$", line):
            use.function(start.group(1))
        else:
            use.line(line)
    use.address_taken |= pointers(library)
    return exported_bytes(use, names), use.unknown


def main():
    callees = {}
    for library in sys.argv[1:]:
        dynamic = subprocess.run(["nm", "-D", "--defined-only", library], text=True, capture_output=True, check=True).stdout
        callees, unknown = measure(library, {line.split()[-1].partition("@")[0] for line in dynamic.splitlines()}, callees)
        for name, size in sorted(callees.items(), key=lambda item: -item[1]):
            print(f"{size:8} {name}")
        if unknown:
            sys.exit("not understood: " + "; ".join(unknown))


if __name__ == "__main__":
    main()
