#!/usr/bin/python3
"""Makes the manual pages of the program vsps and its completions for bash and zsh from what its --help says.

Usage: pages_of_vsps.py VSPS FOLDER     writes man1/*.1, bash/vsps and zsh/_vsps there
"""

import pathlib
import re
import subprocess
import sys
from typing import NamedTuple


class Item(NamedTuple):
    """An option or argument: names, what it takes, and what it does."""

    names: list[str]
    value: str
    text: str

    @property
    def choices(self) -> list[str]:
        """Of a value like 1|2 or subband|fullband=subband."""
        return self.value.partition("=")[0].split("|") if re.fullmatch(r"[a-z0-9]+(\|[a-z0-9]+)+(=.*)?", self.value) else []

    @property
    def is_file(self) -> bool:
        return bool(re.match(r"(FAR|NEAR|FILE|ORIGINAL|d2\.\.d9\|FILE)", self.value))


class Help(NamedTuple):
    command: str  # "" is the program itself
    summary: str
    usage: str
    sections: dict[str, list[Item]]
    notes: list[list[str]]  # paragraphs
    examples: list[str]


def items(lines: list[str]) -> list[Item]:
    found: list[Item] = []
    for line in lines:
        name, text = line[2:30].rstrip(), line[30:].strip()
        if line.startswith("   ") or not name:  # goes on
            found[-1] = found[-1]._replace(text=f"{found[-1].text} {line.strip()}".strip())
            continue
        if len(line) > 30 and line[28:30] != "  ":  # too long for its column
            name, text = line.strip(), ""
        names, _, value = name.partition(" ")
        found.append(Item(names.split(","), value.replace(" REQUIRED", "").strip(), text))
    return found


def read_help(vsps: str, command: str) -> Help:
    output = subprocess.run([vsps, *command.split(), "--help"], capture_output=True, text=True, check=True).stdout
    blocks = [block.split("\n") for block in output.strip("\n").split("\n\n")]
    summary, usage = blocks[0][0], blocks[0][1].removeprefix("Usage: ")
    sections: dict[str, list[Item]] = {}
    notes, examples = [], []
    for block in blocks[1:]:
        title = block[0].removesuffix(":")
        if title in ("Positionals", "Options", "Subcommands"):
            sections[title] = items(block[1:])
        elif title == "Examples":
            examples = [line.strip() for line in block[1:]]
        elif not block[0].startswith("Exit codes"):
            notes.append(block)
    return Help(command, summary, usage, sections, notes, examples)


def roff(text: str) -> str:
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("^", "\\(ha").replace("~", "\\(ti")
    return "\\&" + text if text.startswith((".", "\\(aq")) else text


def manual_page(h: Help, commands: list[Help]) -> str:
    name = f"vsps {h.command}".replace(" ", "-") if h.command else "vsps"
    out = [f'.TH {name.upper()} 1 "" vspsc "User Commands"', ".SH NAME", f"{roff(name)} \\- {roff(h.summary[0].lower() + h.summary[1:].rstrip('.'))}",
           ".SH SYNOPSIS", ".B " + roff("vsps" + (f" {h.command}" if h.command else "")), roff(h.usage.removeprefix("vsps").removeprefix(f" {h.command}").strip()),
           ".SH DESCRIPTION", roff(h.summary)]  # fmt: skip
    for note in h.notes:
        if any(line.startswith("  ") for line in note):
            out += [".PP", ".nf", *map(roff, note), ".fi"]
        elif not note[0].startswith('"vsps COMMAND'):
            out += [".PP", *map(roff, note)]
    for section, title in (("Positionals", "ARGUMENTS"), ("Options", "OPTIONS"), ("Subcommands", "COMMANDS")):
        if section in h.sections:
            out.append(f".SH {title}")
            for item in h.sections[section]:
                names = ", ".join(f"\\fB{roff(n)}\\fR" for n in item.names)
                out += [".TP", names + (f" \\fI{roff(item.value)}\\fR" if item.value and section == "Options" else ""), roff(item.text)]
    if h.examples:
        out += [".SH EXAMPLES", ".nf", *map(roff, h.examples), ".fi"]
    out += [".SH EXIT STATUS", ".TP", "0", "done", ".TP", "1", "a file that cannot be used; one line says which and why", ".TP", "2",
            "wrong usage"]  # fmt: skip
    if not h.command:
        out += [".SH ENVIRONMENT", ".TP", "\\fBNO_COLOR\\fR",
                "makes no difference: reports have no colours, on terminals neither; progress is shown on terminals only"]  # fmt: skip
    others = [""] + [c.command for c in commands] if h.command else [c.command for c in commands]
    see = ", ".join(f"\\fB{roff('vsps-' + o if o else 'vsps')}\\fR(1)" for o in others if o != h.command)
    out += [".SH SEE ALSO", see + ", \\fBvspsc\\fR(7)", ""]
    return "\n".join(out)


def bash_completion(commands: list[Help]) -> str:
    cases, values = [], []
    for c in commands:
        options = [n for i in c.sections.get("Options", []) for n in i.names if n.startswith("--")]
        cases.append(f'        {c.command}) options="{" ".join(options)}" ;;')
        for i in c.sections.get("Options", []):
            if i.choices:
                values.append(f'        "{c.command} {i.names[-1]}") COMPREPLY=($(compgen -W "{" ".join(i.choices)}" -- "$word")) && return ;;')
            elif i.value and not i.is_file and not i.value.startswith("["):
                values.append(f'        "{c.command} {i.names[-1]}") return ;;')
    names = " ".join(c.command for c in commands)
    return f"""# bash completion for vsps
_vsps() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} command=${{COMP_WORDS[1]}} options
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W "{names} --help --version" -- "$word"))
        return
    fi
    case "$command $previous" in
{chr(10).join(values)}
    esac
    case $command in
{chr(10).join(cases)}
    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$word"))
    else
        compopt -o filenames 2>/dev/null
        COMPREPLY=($(compgen -f -- "$word"))
    fi
}}
complete -F _vsps vsps
"""


def zsh_completion(commands: list[Help]) -> str:
    def quoted(text: str) -> str:
        return re.sub(r"([\[\]:'\\])", r"\\\1", text).replace("\\'", "'\\''")

    cases = []
    for c in commands:
        lines = []
        for i in c.sections.get("Options", []):
            action = f":{quoted(i.value)}:({' '.join(i.choices)})" if i.choices else f":{quoted(i.value)}:_files" if i.is_file else f":{quoted(i.value)}:" if i.value else ""
            lines += [f"'{n}[{quoted(i.text)}]{action}'" for n in i.names]
        joined = " \\\n            ".join([*lines, "'*:file:_files'"])
        cases.append(f"        {c.command}) _arguments \\\n            {joined} ;;")
    described = "\n".join(f"        '{c.command}:{quoted(c.summary)}'" for c in commands)
    return f"""#compdef vsps
_vsps() {{
    local -a commands
    commands=(
{described}
    )
    if ((CURRENT == 2)); then
        _describe command commands
        return
    fi
    local command=$words[2]
    shift words
    ((CURRENT--))
    case $command in
{chr(10).join(cases)}
    esac
}}
_vsps "$@"
"""


def main() -> None:
    vsps, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    program = read_help(vsps, "")
    commands = [read_help(vsps, item.names[0]) for item in program.sections["Subcommands"]]
    pages = {f"man1/{f'vsps-{h.command}' if h.command else 'vsps'}.1": manual_page(h, commands) for h in [program, *commands]}
    for name, text in {**pages, "bash/vsps": bash_completion(commands), "zsh/_vsps": zsh_completion(commands)}.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_text(text)


if __name__ == "__main__":
    main()
