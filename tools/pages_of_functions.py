#!/usr/bin/python3
"""Makes a manual page of section 3 for every function from the comments of the headers.

Usage: pages_of_functions.py HEADER_FOLDER MAN3_FOLDER
"""

import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "python"))
from generate import Function, functions, headers, without_preprocessor  # noqa: E402


def roff(text: str) -> str:
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("^", "\\(ha").replace("~", "\\(ti").replace("`", "\\(ga")
    return "\\&" + text if text.startswith((".", "\\(aq")) else text


def page(f: Function, prototype: str) -> str:
    body, _, tags = f.comment.partition("@param")
    if not tags:
        body, _, tags = f.comment.partition("@ret")
    tags = f.comment[len(body) :]
    entries = [" ".join(entry.split()) for entry in re.split(r"(?:^|\n)@", "\n" + tags) if entry.strip()]
    paragraphs = [p for p in body.strip().split("\n\n") if p]
    first = " ".join(paragraphs[0].split())
    voice = f.name.startswith("vspv")
    end = re.search(r"[.:](?= |$)", first)
    out = [f'.TH {f.name} 3 "" vspsc "Functions"', ".SH NAME", f"{f.name} \\- {roff(first[: end.start()] if end else first)}", ".SH SYNOPSIS",
           ".nf", f"#include <{'vspsvoice' if voice else 'vspsc'}.h>", "", *map(roff, prototype.split("\n")), "",
           f"Link with \\-l{'vspsvoice' if voice else 'vspscy8'}.", ".fi", ".SH DESCRIPTION"]  # fmt: skip
    for i, paragraph in enumerate(paragraphs):
        out += [".PP"] * (i > 0)
        out += [roff(line.strip()) for line in re.sub(r"@\w+ ?", "", paragraph).split("\n") if line.strip()]
    parameters, statuses, returned = [], [], []
    for entry in entries:
        if found := re.match(r"param\[([\w,]+)\] (\w+) (.*)", entry):
            parameters += [".TP", f"\\fI{found[2]}\\fR ({found[1].replace(',', ', ')})", roff(found[3])]
        elif found := re.match(r"retval (\w+) (.*)", entry):
            statuses += [".TP", f"\\fB{found[1]}\\fR", roff(found[2])]
        elif entry.startswith("return "):
            returned = [roff(entry.removeprefix("return "))]
    if parameters:
        out += [".SH PARAMETERS", *parameters]
    out += [".SH RETURN VALUE", *(returned or ["vspStsNoErr (0), or by the first of these that is so:", *statuses])]
    out += [".SH SEE ALSO", ".BR vspsc (7)", ""]
    return "\n".join(out)


def main() -> None:
    text, folder = headers(pathlib.Path(sys.argv[1])), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    prototypes = {m[2]: m[0].strip() for m in re.finditer(r"^([\w ]+[ *]+)(vsp\w+)\([^)]*\);", without_preprocessor(text), re.M)}
    for f in functions(text):
        (folder / f"{f.name}.3").write_text(page(f, prototypes[f.name]))


if __name__ == "__main__":
    main()
