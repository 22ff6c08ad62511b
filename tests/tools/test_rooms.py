"""Who includes whom in the sources of vsps."""
import pathlib
import re

SOURCES = pathlib.Path(__file__).parents[2] / "tools/vsps"
# Each folder may include those before it, and itself.
ROOMS = ["console", "audio", "plot"]


def includes(file):
    return re.findall(r'#include [<"](.*)[>"]', file.read_text())


def test_no_room_looks_up():
    for i, room in enumerate(ROOMS):
        above = {path.name for path in SOURCES.iterdir() if path.is_dir()} - set(ROOMS[: i + 1])
        files = list((SOURCES / room).iterdir())
        assert len(files) > 3
        for file in files:
            assert not above & {name.split("/")[0] for name in includes(file)}, file


def test_what_takes_long_to_compile_is_included_once():
    for header, only in (("CLI/CLI.hpp", "console/options.cpp"), ("nlohmann/json.hpp", "console/json.cpp")):
        assert [file.relative_to(SOURCES).as_posix() for file in SOURCES.rglob("*.[ch]*") if header in includes(file)] == [only]
