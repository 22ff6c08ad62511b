#!/usr/bin/python3
"""Makes the input of doxygen from the headers and the pages of docs/.

A header becomes a group of its family; docs/families/<family>.md is the text of that group, its `dot` blocks pictures whose boxes
lead to groups and functions, its C blocks examples. Links between pages become references, links to what is not in the site plain text,
function names in `backquotes` links to the functions.

Usage: prepare.py SOURCE OUTPUT
"""

import pathlib
import re
import shutil
import subprocess
import sys

TITLES = {  # of headers without a page of their own, where the name of the file is not good enough
    "blocks": "Building blocks", "g7291": "G.729.1", "rta": "RTA", "types": "Types and statuses", "cng": "Comfort noise",
    "dtx": "Discontinuous transmission", "isf quant": "ISF quantiser", "lsp quant": "LSP quantiser", "post filter": "Post-filter",
    "pre post process": "High-pass filters", "vad": "Voice activity", "amr": "AMR payloads", "amrwb": "AMR-WB payloads",
    "g723": "G.723.1 frames", "g728": "G.728 post-filter",
}  # fmt: skip
UPPER = {"isp", "lp", "lpc", "lsf", "lsp"}
PAGES = ("docs/site/index", "docs/guides/*", "python/README", "docs/*")  # in the order of the menu
source, output = map(pathlib.Path, sys.argv[1:])
source = source.resolve()
prototype = re.compile(r"^(?:const )?Vsp\w+\*? (vsp\w+)\(", re.M)


def group(path: pathlib.Path) -> str:
    """Of vspsc/g729/pitch.h g729_pitch, of vspsvoice/codec.h voice_codec."""
    return "_".join(path.with_suffix("").parts).removeprefix("vspsc_").replace("vspsvoice", "voice").replace("vspsc", "blocks")


def title_of(text: str) -> str:
    return text.partition("\n")[0].removeprefix("# ")


def picture(dot: str) -> str:
    """A drawing in the colours of the page, whose boxes are links to the groups and functions that their URLs name."""
    command = ["dot", "-Tsvg", *"-Nshape=box -Nstyle=rounded -Nfontname=Helvetica -Nfontsize=12 -Efontname=Helvetica -Efontsize=11 -Granksep=0.35".split()]
    svg = subprocess.run(command, input=dot, capture_output=True, text=True, check=True).stdout
    svg = re.sub(r"<!--.*?-->\n?|<title>.*?</title>\n?| id=.[^\"]*\"| xlink:title=\"[^\"]*\"", "", svg[svg.index("<svg") :], flags=re.S)
    svg = re.sub(r'xlink:href="(\w+)"', lambda m: m[0].removeprefix("xlink:") if m[1] in functions else f'href="group__{m[1].replace("_", "__")}.html"', svg)
    svg = svg.replace('"black"', '"currentColor"').replace("<svg", '<svg role="img" aria-label="signal flow"')
    return f'@htmlonly[block]\n<div class="flow">{svg}</div>\n@endhtmlonly\n'


def family_text(name: str) -> str:
    """Of docs/families/NAME.md, without its title."""
    text = (source / f"docs/families/{name}.md").read_text().partition("\n")[2]
    text = re.sub(r"^```dot\n(.*?)^```\n", lambda m: picture(m[1]), text, flags=re.M | re.S)
    for number, block in enumerate(re.findall(r"^```c\n(.*?)^```\n", text, re.M | re.S), 1):
        (output / f"{name}-{number}.c").write_text(block)
        text = text.replace(f"```c\n{block}```\n", f"@include {name}-{number}.c\n")
    return with_links(text, source / "docs/families")


def header(path: pathlib.Path) -> None:
    name, family = group(path), path.parts[1] if len(path.parts) > 2 else ""
    text = (source / "include" / path).read_text()
    comment, rest = re.fullmatch(r"/\*\*\n \* @file\n(.*?) \*/\n(.*)", text, re.S).groups()
    lines = [line.removeprefix(" *").removeprefix(" ") for line in comment.splitlines()]
    if has_page(name):
        title = title_of((source / f"docs/families/{name}.md").read_text())
        lines += ["", *family_text(name).splitlines()]
    else:
        words = " ".join(w.upper() if w in UPPER else w for w in path.stem.split("_"))
        title = TITLES.get(name) or TITLES.get(words.lower()) or words[0].upper() + words[1:]
    top = name in ("blocks", "voice")
    parent = "" if top else f"@ingroup {family or ('voice' if path.parts[0] == 'vspsvoice' else 'blocks')}"
    include = "" if top else f"`#include <{path}>`"
    doc = "\n".join(["/**", f"@defgroup {name} {title}", parent, *lines, "", include, "*/"])
    rest = re.sub(r"/\*\*.*?\*/", lambda m: linked(m[0]), rest, flags=re.S)
    target = output / "include" / path
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text(f"{linked(doc)}\n\n/** @{{ */\n{rest}\n/** @}} */\n")


def linked(comment: str) -> str:
    return re.sub(r'(?<![\w"#`])(vsp[sv]\w+)(?![\w"`])', lambda m: "#" + m[1] if m[1] in functions else m[1], comment)


def has_page(name: str) -> bool:
    return (source / f"docs/families/{name}.md").exists()


def page_id(path: pathlib.Path) -> str:
    return "page_" + "_".join(path.with_suffix("").parts).replace("-", "_")


def with_links(text: str, folder: pathlib.Path, kind: str = "@ref") -> str:
    def link(m: re.Match) -> str:
        if m[3].startswith("http"):
            return m[0]
        target = (folder / m[3].partition("#")[0]).resolve().relative_to(source)
        if target.suffix in (".svg", ".png"):
            return f"{m[1]}[{m[2]}]({target.name})"
        if target in pages:
            return f'{kind} {page_id(target)} "{m[2]}"'
        if target.parts[:2] == ("docs", "families"):
            return f'@ref {target.stem} "{m[2]}"'
        if target.parts[0] == "include" and target.suffix == ".h":
            return f'@ref {group(target.relative_to("include"))} "{m[2]}"'
        return m[2]

    parts = re.split(r"^(```.*?^```\n)", text, flags=re.M | re.S)
    for i in range(0, len(parts), 2):
        parts[i] = re.sub(r"(!?)\[([^]]*)\]\(([^)]*)\)", link, parts[i])
        parts[i] = re.sub(r"(?<!`)`([^`\n]*'[^`\n]*)`(?!`)", r"``\1``", parts[i])  # doxygen ends `it's here
        parts[i] = re.sub(r"`(vsp[sv]\w+)`", lambda m: f"#{m[1]}" if m[1] in functions else m[0], parts[i])
    return "".join(parts)


def page(path: pathlib.Path) -> None:
    title, _, text = (source / path).read_text().partition("\n")
    label = "" if path.stem == "index" and path.parent.name == "site" else f" {{#{page_id(path)}}}"
    text = with_links(text, (source / path).parent, "@subpage" if path.name == "index.md" and label else "@ref")
    (output / f"{pages.index(path):02}.md").write_text(("" if label else "@mainpage ") + (title if label else title_of(title)) + label + "\n" + text)


headers = sorted((p.relative_to(source / "include") for p in source.glob("include/**/*.h")), key=lambda p: (len(p.parts), p))
functions = {name for path in headers for name in prototype.findall((source / "include" / path).read_text())}
pages = [p.relative_to(source) for pattern in PAGES for p in sorted(source.glob(pattern + ".md"), key=lambda p: (p.stem != "index", p.stem))]
shutil.rmtree(output, ignore_errors=True)
output.mkdir(parents=True)
for p in headers:
    header(p)
for p in pages:
    page(p)
background = "\n".join(f"- @subpage {page_id(p)}" for p in pages if p.parent == pathlib.Path("docs"))
(output / "background.md").write_text(f"# Background {{#page_background}}\n\n{background}\n")
