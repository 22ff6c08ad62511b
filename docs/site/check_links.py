#!/usr/bin/python3
"""Whether every link of a site leads somewhere: to a file of it, and to a place in that file; and whether no page shows commands
of doxygen.

Usage: check_links.py FOLDER
"""

import html.parser
import pathlib
import re
import sys
from urllib.parse import unquote


class Page(html.parser.HTMLParser):
    def __init__(self, path: pathlib.Path) -> None:
        super().__init__()
        self.places: set[str] = set()
        self.links: list[str] = []
        text = path.read_text()
        self.leftover = re.findall(r"\\ilinebr|[@\\](?:subpage|ref|include|htmlonly)\b", text)
        self.feed(text)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        for name, value in attrs:
            if name in ("id", "name") and value:
                self.places.add(value)
            elif name in ("href", "src") or (name, tag) == ("data", "object"):
                self.links.append(value or "")


folder = pathlib.Path(sys.argv[1])
pages = {path.name: Page(path) for path in folder.glob("*.html")}
count, faults = 0, []
for name, page in pages.items():
    faults += [f"{name}: shows {command}" for command in page.leftover]
    for link in page.links:
        if link.startswith(("http:", "https:", "mailto:", "javascript:")):
            continue
        count += 1
        file, _, place = unquote(link).partition("#")
        file = file or name
        if not (folder / file).is_file() or (place and file in pages and place not in pages[file].places):
            faults.append(f"{name}: {link}")
print(f"{len(pages)} pages, {count} links within the site, {len(faults)} faults")
print("\n".join(sorted(set(faults))), end="\n" if faults else "")
sys.exit(bool(faults or not count))
