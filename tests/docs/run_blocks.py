#!/usr/bin/python3
"""Compiles and runs every code block of the README, of docs/ and of the manual pages, in a folder of its page.

- c, cpp: a file named as its first line says (/* name.c */) or as the next shell block calls it; compiled with warnings as errors,
  and run without arguments if no console block of the page builds it.
- sh: run by bash, which stops at the first failure. Commands that set up a machine, need a microphone or take long are listed instead.
- console: commands behind "$ ", and what they print; "..." stands for any number of lines, or for part of one.
- python: the blocks of a page one after the other.
- cmake: a project of the C file before it.
- text is no code; dot is drawn by the target `docs`.

Usage: run_blocks.py SOURCE BUILD [PAGE...]
"""

import fnmatch
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import wave

NOT_RUN = re.compile(r"(vsps g168(?!.*--test)|\./demo|\./test|cmake --preset|cmake --build|build/dev/bin/vspsc_bench|bench/|sudo |apt-get |git clone |.*\b(arecord|aplay)\b)")
WARNINGS = ["-Wall", "-Wextra", "-Werror", "-pedantic", "-O1"]
source, build = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
faults: list[str] = []
not_run: list[str] = []


class Block:
    def __init__(self, line: int, language: str, text: str) -> None:
        self.line, self.language, self.text = line, language, text


def blocks_of(path: pathlib.Path) -> list[Block]:
    text = path.read_text()
    if path.suffix == ".md":
        found = re.finditer(r"^```([^\n]*)\n(.*?)^```$", text, re.M | re.S)
        return [Block(text.count("\n", 0, m.start()) + 1, m[1], m[2]) for m in found]
    examples = re.search(r'^\.SH EXAMPLES\n\.nf\n(.*?)^\.fi', text, re.M | re.S)
    if not examples:
        return []
    code = examples[1]
    for roff, plain in ((r"\&", ""), (r"\-", "-"), (r"\(aq", "'"), (r"\(ti", "~"), (r"\(ha", "^"), (r"\e", "\\")):
        code = code.replace(roff, plain)
    return [Block(text.count("\n", 0, examples.start()) + 1, "c" if "#include" in code else "sh", code)]


def run(command: list[str], folder: pathlib.Path) -> tuple[int, str]:
    try:
        result = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                                text=True, errors="replace", timeout=120, check=False)  # fmt: skip
        return result.returncode, result.stdout
    except subprocess.TimeoutExpired:
        return -1, "not done after two minutes"


class Folder:
    """The blocks of a page, and the folder where they run."""

    def __init__(self, page: pathlib.Path, path: pathlib.Path) -> None:
        self.page, self.path, self.blocks, self.files = page, path, blocks_of(page), []
        self.shells = [b for b in self.blocks if b.language in ("sh", "console")]
        python = [b for b in self.blocks if b.language == "python"]
        for b in self.blocks:
            if b.language in ("c", "cpp"):
                self.compile(b)
            elif b.language == "sh":
                self.shell(b)
            elif b.language == "console":
                self.console(b)
            elif b.language == "cmake":
                self.cmake(b)
            elif b.language == "python" and b is python[-1]:
                (path / "page.py").write_text("\n".join(p.text for p in python))
                self.expect(b, [sys.executable, "-W", "error", "page.py"])
            elif b.language not in ("python", "text", "dot"):
                self.fail(b, f"the language {b.language!r} is not known")

    def fail(self, b: Block, why: str) -> None:
        faults.append(f"{name_of(self.page)}:{b.line}: {why}")

    def expect(self, b: Block, command: list[str]) -> str:
        status, output = run(command, self.path)
        if status != 0:
            self.fail(b, f"{' '.join(command)[:200]}: status {status}\n{output}")
        return output

    def compile(self, b: Block) -> None:
        called = next((s.text for s in self.shells if s.line > b.line), "")
        m = re.match(r"/\* (\w+\.c(?:pp)?) \*/", b.text) or re.search(r"\b(\w+\.c(?:pp)?)\b", called)
        name = m[1] if m else f"block.{b.language}"
        (self.path / name).write_text(b.text)
        self.files.append(name)
        compiler = [os.environ.get("CC", "cc"), "-std=c11"] if b.language == "c" else [os.environ.get("CXX", "c++"), "-std=c++20"]
        include = [f"-I{source}/include"]
        if any(name in s.text for s in self.shells if s.language == "console"):
            self.expect(b, [*compiler, *WARNINGS, *include, "-fsyntax-only", name])
        else:
            self.expect(b, [*compiler, *WARNINGS, *include, name, f"-L{build}/lib", "-lvspscy8", "-lvspsvoice", "-lm", "-o", "block"])
            self.expect(b, ["./block"])

    def lines_to_run(self, b: Block, text: str) -> str:
        kept = []
        for number, line in enumerate(text.splitlines(), b.line + 1):
            if NOT_RUN.match(line.strip()) or (line.startswith("qemu-") and not shutil.which("qemu-x86_64")):
                not_run.append(f"{name_of(self.page)}:{number}: {line.strip()}")
            else:
                kept.append(line)
        return "\n".join(kept)

    def shell(self, b: Block) -> None:
        self.expect(b, ["bash", "-euo", "pipefail", "-c", self.lines_to_run(b, b.text)])

    def console(self, b: Block) -> None:
        steps = [step.partition("\n") for step in re.split(r"^\$ ", b.text, flags=re.M)[1:]]
        script = "".join(f"{self.lines_to_run(b, command)}\nprintf '\\x1e'\n" for command, _, _ in steps)
        output = self.expect(b, ["bash", "-euo", "pipefail", "-c", script])
        for (command, _, expected), printed in zip(steps, output.split("\x1e"), strict=False):
            if NOT_RUN.match(command):
                continue
            pattern = re.sub(r"([\[\]?*])", r"[\1]", expected.rstrip("\n")).replace("...", "*")
            if not fnmatch.fnmatchcase(printed.rstrip("\n"), pattern):
                self.fail(b, f"$ {command}\nprints\n{printed}")

    def cmake(self, b: Block) -> None:
        target = re.search(r"target_link_libraries\((\w+)", b.text)[1]
        project = f"cmake_minimum_required(VERSION 3.25)\nproject(block C)\nadd_executable({target} {self.files[-1]})\n"
        find, link = re.split(r"(?=^target_link)", b.text, flags=re.M)
        (self.path / "CMakeLists.txt").write_text(project.replace("add_executable", find + "add_executable") + link)
        self.expect(b, ["cmake", "-B", "out", f"-DCMAKE_PREFIX_PATH={os.environ['PREFIX']}"])
        self.expect(b, ["cmake", "--build", "out"])


def name_of(page: pathlib.Path) -> str:
    return str(page.relative_to(build / "manual" if page.is_relative_to(build / "manual") else source))


def record(path: pathlib.Path, channels: int) -> None:
    """Four seconds of speech; of two channels the second one is the first, later and softer."""
    with wave.open(str(source / "tests/support/data/demo-echotest.wav")) as speech:
        parameters, samples = speech.getparams(), speech.readframes(32000)
    if channels == 2:
        late = bytes(800) + samples[:-800]
        samples = b"".join(samples[i : i + 2] + late[i : i + 2] for i in range(0, len(samples), 2))
    with wave.open(str(path), "wb") as file:
        file.setparams(parameters._replace(nchannels=channels, nframes=0))
        file.writeframes(samples)


def make_recordings(folder: pathlib.Path) -> None:
    """The files that examples of vsps name."""
    for name in ("call", "far", "near", "answer", "line", "room", "fax"):
        record(folder / f"{name}.wav", 1)
    for name in ("calls", "coded", "heard", "tables"):
        (folder / name).mkdir()
    for name in ("one", "two"):
        record(folder / f"calls/{name}.wav", 1)
    with wave.open(str(folder / "kitchen.wav"), "wb") as path:
        path.setparams((1, 2, 8000, 0, "NONE", ""))
        path.writeframes(bytes(40) + b"\x00\x40" + bytes(400))
    coding = "vsps encode call.wav {}.al; for i in one two; do vsps encode calls/$i.wav coded/$i.g726-32; done; vsps encode call.wav call.gsm; vsps encode call.wav call.g722;"
    flac = "for i in call far near; do vsps level $i.wav $i.flac; done"
    subprocess.run(["bash", "-ec", coding.format("trunk") + flac], cwd=folder, check=True, capture_output=True)


def main() -> None:
    pages = [source / "README.md", source / "python/README.md", *sorted((source / "docs").rglob("*.md")), source / "docs/man/vspsc.7"]
    pages += sorted((build / "manual/man1").glob("*.1"))
    if sys.argv[3:]:
        pages = [page for page in pages if name_of(page) in sys.argv[3:]]
    with tempfile.TemporaryDirectory() as temporary:
        home = pathlib.Path(temporary)
        (home / "build").mkdir()
        for preset in ("release", "dev"):
            (home / "build" / preset).symlink_to(build)
        prefix = home / "vspsc"
        subprocess.run(["cmake", "--install", str(build), "--prefix", str(prefix)], check=True, stdout=subprocess.DEVNULL)
        lib = next(prefix.rglob("libvspscy8.so")).parent
        os.environ.update(HOME=temporary, PREFIX=str(prefix), PKG_CONFIG_PATH=f"{lib}/pkgconfig", LD_LIBRARY_PATH=str(lib), LC_ALL="C.UTF-8",
                          PATH=f"{prefix}/bin:{os.environ['PATH']}", PYTHONPATH=f"{build}/python", VSPSC_LIBRARY_PATH=str(lib),
                          PYTHONDONTWRITEBYTECODE="1")  # fmt: skip
        recordings = home / "recordings"
        recordings.mkdir()
        make_recordings(recordings)
        count = 0
        for number, page in enumerate(pages):
            folder = home / f"{number}-{page.stem}"
            shutil.copytree(recordings, folder)
            if page.name == "vsps-echo.1":
                record(folder / "call.wav", 2)
            for name, target in (("build", home / "build"), ("tests", source / "tests")):
                (folder / name).symlink_to(target)
            count += len(Folder(page, folder).blocks)
    print(f"{count} blocks of {len(pages)} pages")
    print("\n".join(["Not run:", *not_run]))
    if faults:
        sys.exit("\n".join(["", "FAILED:", *faults]))
    if not count:
        sys.exit("no blocks")


main()
