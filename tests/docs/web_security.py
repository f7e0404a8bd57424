#!/usr/bin/env python3
"""web_security.py ROOT: whether the tests that docs/web-security.md names are there, and each of its lines names one."""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
sources = "".join(path.read_text() for path in sorted((root / "tests").rglob("*.cpp")))
known = {f"{suite}.{name}" for suite, name in re.findall(r"^TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", sources, re.M)}
known |= {path.name.removesuffix(".mjs") for path in (root / "tests/web/page").glob("*.spec.mjs")}
known |= set(re.findall(r"add_test\(NAME (page\.\w+)", (root / "tests/web/CMakeLists.txt").read_text()))

failures = []
rows = 0
for number, line in enumerate((root / "docs/web-security.md").read_text().splitlines(), 1):
    cells = [cell.strip() for cell in line.strip("|").split("|")] if line.startswith("|") else []
    if len(cells) != 3 or not cells[0][0].isdigit():
        continue
    rows += 1
    names = re.findall(r"`([^`]+)`", cells[2])
    failures += [f"{number}: {cells[0]} names no test"] if not names else []
    failures += [f"{number}: there is no test {name}" for name in names if name not in known]
if rows < 20:
    failures.append(f"only {rows} lines were read")
print("\n".join(failures), end="\n" if failures else "")
sys.exit(bool(failures))
