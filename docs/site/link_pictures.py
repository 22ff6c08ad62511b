#!/usr/bin/python3
"""Leads the boxes of pictures that name functions to the places that doxygen has given these.

Usage: link_pictures.py TAG_FILE FOLDER
"""

import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

places = {}
for member in ElementTree.parse(sys.argv[1]).iterfind("compound[@kind='group']/member[@kind='function']"):
    places[member.findtext("name")] = f"{member.findtext('anchorfile')}#{member.findtext('anchor')}"
for path in pathlib.Path(sys.argv[2]).glob("group__*.html"):
    text = path.read_text()
    linked = re.sub(r'(?<= href=")vsp\w+(?=")', lambda m: places[m[0]], text)
    if linked != text:
        path.write_text(linked)
