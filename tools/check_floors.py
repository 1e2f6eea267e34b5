#!/usr/bin/env python3
"""Checks the storeys of the house: an include goes to a smaller number only.

Every header begins with `// Floor F.K - floor name: what it holds`. A header may include headers with
a smaller (F, K) only; a source file counts as its own header (src/X.cpp, or src/X/room.cpp with
incl/X/room.h or incl/X.h). Offenders are named and the exit status is 1.
"""
import re
import sys
from pathlib import Path

FIRST_LINE = re.compile(r"^// Floor (\d+)\.(\d+) - (ground|mathematics|materials|simulator|workshop|entry): \S")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')
NAMES = ["ground", "mathematics", "materials", "simulator", "workshop", "entry"]


def floor_of(header, root, problems):
    first = header.read_text(encoding="utf-8").split("\n", 1)[0]
    match = FIRST_LINE.match(first)
    if not match:
        problems.append(f"{header.relative_to(root)}: the first line names no floor")
        return None
    number = (int(match[1]), int(match[2]))
    if NAMES[number[0]] != match[3]:
        problems.append(f"{header.relative_to(root)}: floor {number[0]} is not '{match[3]}'")
    return number


def own_header(source, root, floors):
    """The header that a source file belongs to: its room's, or its module's."""
    name = source.relative_to(root / "src").with_suffix("")
    for candidate in [name, *name.parents]:
        header = f"{candidate}.h"
        if header in floors:
            return header
    return None


def check_includes(path, number, root, floors, problems, own=None):
    for line_number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match or match[1] == own:
            continue
        target = floors.get(match[1])
        if target is not None and target >= number:
            problems.append(f"{path.relative_to(root)}:{line_number}: floor {number[0]}.{number[1]} includes "
                            f"{match[1]} of floor {target[0]}.{target[1]}")


def main(argv):
    root = Path(argv[1] if len(argv) > 1 else ".").resolve()
    problems = []
    headers = sorted((root / "incl").rglob("*.h"))
    floors = {}
    for header in headers:
        number = floor_of(header, root, problems)
        if number is None:
            continue
        name = header.relative_to(root / "incl").as_posix()
        twin = next((other for other, taken in floors.items() if taken == number), None)
        if twin:
            problems.append(f"{name}: floor {number[0]}.{number[1]} is taken by {twin}")
        floors[name] = number
    for header in headers:
        name = header.relative_to(root / "incl").as_posix()
        if name in floors:
            check_includes(header, floors[name], root, floors, problems)
    for source in sorted((root / "src").rglob("*.cpp")) + sorted((root / "src").rglob("*.h")):
        own = own_header(source, root, floors)
        if own:
            check_includes(source, floors[own], root, floors, problems, own)
        text = source.read_text(encoding="utf-8")
        if "korplatform" not in source.parts and re.search(r"_WIN32|<windows\.h>|<unistd\.h>", text):
            problems.append(f"{source.relative_to(root)}: system code outside src/korplatform")
    for problem in problems:
        print(problem)
    print(f"{len(floors)} headers, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
