"""The names that the library exports, from the lists of the families."""

import re


def exported_names(source):
    """The names in the order of their slots; source is the root of the tree."""
    lists = re.findall(r'^#include "(.+)"$', (source / "src/core/exports.def").read_text(), re.M)
    return [name for file in lists for name in re.findall(r"^VSPSC_EXPORT\(\w+, (\w+)\)$", (source / "src" / file).read_text(), re.M)]
