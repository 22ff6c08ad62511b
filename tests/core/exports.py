"""The names that the libraries export: from the lists of the families, and from the headers of the voice layer."""

import re


def exported_names(source):
    """The names in the order of their slots; source is the root of the tree."""
    lists = re.findall(r'^#include "(.+)"$', (source / "src/core/exports.def").read_text(), re.M)
    return [name for file in lists for name in re.findall(r"^VSPSC_EXPORT\(\w+, (\w+)\)$", (source / "src" / file).read_text(), re.M)]


def voice_names(source):
    """The functions that the headers of libvspsvoice declare."""
    headers = sorted((source / "include/vspsvoice").glob("*.h"))
    return [name for header in headers for name in re.findall(r"^\w[^(\n]*\b(vspv\w+)\(", header.read_text(), re.M)]
