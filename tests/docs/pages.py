#!/usr/bin/env python3
"""Runs and compiles what the documents show, and follows their links.

pages.py ROOT BINARIES LIBRARIES COMPILER NOT_RUN [FLAG...]

A fence's first word says what is in it:
  sh               run, all of a page's in one shell and one new folder; each must succeed
  text output      what the block before it prints on standard output
  text errors      what the block before it prints on standard error
  cpp              a program, compiled; `cpp file=NAME` is also written to NAME for the page's later blocks
  cpp fragment     statements, compiled inside a function with the variables of FRAGMENT
  sql, cmake, ...  shown only
`sh norun REASON` and `cpp norun REASON` are not run. They are listed, and there are NOT_RUN of them.
<!-- pages: example directory --> lets a page's commands begin with the example people imported, in $QVADMIN_DB.
<!-- pages: example directory, every engine --> does so on SQLite, and on each server of $QV_TEST_SERVERS.
"""
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT, BINARIES, LIBRARIES = (pathlib.Path(argument) for argument in sys.argv[1:4])
COMPILER, NOT_RUN, FLAGS = sys.argv[4], int(sys.argv[5]), sys.argv[6:]
PLAIN = {"text", "sql", "cmake", "csv", "json", "ini", "mermaid", "toml"}
ENGINES = ["sqlite", "postgresql", "mariadb"]
MODULES = "platform dbaccess basefun directory access documents admin schema testing".split()
FRAGMENT = """
[[maybe_unused]] void Fragment{number}(CAConnect& conn, CString login, CString name, CString path)
{{
    [[maybe_unused]] int id = 0;
    [[maybe_unused]] bool exists = false;
#line {line} "{page}"
{text}
    static_cast<void>(conn), static_cast<void>(login), static_cast<void>(name), static_cast<void>(path);
}}
"""

failures = []


def fail(page, line, what):
    failures.append(f"{page}:{line}: {what}")


class Block:
    def __init__(self, page, line, info, text):
        self.page, self.line, self.text = page, line, text
        self.words = info.split()
        self.kind = self.words[0] if self.words else ""
        self.norun = self.words[1:2] == ["norun"]


def blocks_of(page, lines):
    blocks, begin = [], None
    for number, line in enumerate(lines, 1):
        fence = re.match(r"( *)```(.*)$", line)
        if fence and begin is None:
            begin, indent, info = number, len(fence[1]), fence[2]
        elif fence:
            text = "".join(each[indent:] if each.strip() else "\n" for each in lines[begin:number - 1])
            blocks.append(Block(page, begin, info, text))
            begin = None
    return blocks


def checked(blocks):
    for block in blocks:
        if block.kind in ("sh", "cpp"):
            if block.norun and len(block.words) < 3:
                fail(block.page, block.line, "norun without a reason")
        elif block.kind not in PLAIN:
            fail(block.page, block.line, f"a fence for {block.kind!r}: use sh, cpp or one of {sorted(PLAIN)}")
    return blocks


def sandbox(folder):
    """A folder that looks like the project's after tools/quickstart, and the environment of its commands."""
    for name in MODULES + ["examples"]:
        (folder / name).symlink_to(ROOT / name)
    (folder / "build/run").mkdir(parents=True)
    (folder / "build/run/bin").symlink_to(BINARIES)
    (folder / "build/run/lib").symlink_to(LIBRARIES)
    (folder / "home").mkdir()
    tools = folder / "home/bin"
    tools.mkdir()
    (tools / "g++").write_text("#!/bin/sh\nexec {} {} \"$@\"\n".format(COMPILER, " ".join(FLAGS)))
    (tools / "g++").chmod(0o755)
    return {"HOME": str(folder / "home"), "PATH": f"{tools}:{BINARIES}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8",
            "LD_LIBRARY_PATH": str(LIBRARIES)}


class Engine:
    """Where a page's example directory is made: in a file, or in a database of its own on a server of the tests."""

    def __init__(self, name):
        self.name = name

    def server(self):
        return (pathlib.Path(os.environ["QV_TEST_SERVERS"]) / self.name).read_text().splitlines()

    def administer(self, statement):
        socket, port = self.server()
        client = (["psql", "-q", "-h", socket, "-p", port, "-U", "qv", "-d", "postgres", "-c"] if self.name == "postgresql"
                  else ["mariadb", "--no-defaults", "-S", socket, "-u", "root", "-e"])
        subprocess.run([*client, statement], check=True, capture_output=True)

    def make(self, database, example, environment):
        """The URL of a new copy of the example directory."""
        if self.name == "sqlite":
            shutil.copy(example, environment["HOME"] + "/../directory.db")
            return f"sqlite:{pathlib.Path(environment['HOME']).parent}/directory.db"
        socket, port = self.server()
        self.administer(f"CREATE DATABASE {database}")
        url = (f"postgresql://qv@/{database}?host={socket}&port={port}" if self.name == "postgresql"
               else f"mysql://root@localhost/{database}?socket={socket}")
        for command in (["db", "init"], ["db", "copy", url]):
            subprocess.run([BINARIES / "qvadmin", *command], check=True, capture_output=True, env={
                **environment, "QVADMIN_DB": url if command[1] == "init" else f"sqlite:{example}"})
        return url

    def drop(self, database):
        if self.name != "sqlite":
            self.administer(f"DROP DATABASE IF EXISTS {database}" + (" WITH (FORCE)" if self.name == "postgresql" else ""))


def run_on(engine, page, blocks, example, work):
    """Runs a page on one engine."""
    database = "qv_" + re.sub(r"\W", "_", page) + f"_{os.getpid()}"
    try:
        run(page, blocks, example, work, engine, database)
    except subprocess.CalledProcessError as error:
        fail(page, 0, f"{engine.name}: {error}: {error.stderr.decode()}")
    finally:
        engine.drop(database)


def run(page, blocks, example, work, engine, database):
    folder = work / (page.replace("/", "_") + "_" + engine.name)
    folder.mkdir()
    environment = sandbox(folder)
    if example is not None:
        environment["QVADMIN_DB"] = engine.make(database, example, environment)
    script, before, answers = "set -euo pipefail\n", None, {}
    for index, block in enumerate(blocks):
        named = [word[5:] for word in block.words if word.startswith("file=")]
        if named:
            (folder / named[0]).write_text(block.text)
        if block.kind == "sh" and not block.norun:
            before = f"home/block{index}"
            script += f"exec >'{folder}/{before}.output' 2>'{folder}/{before}.errors'\necho {index} >'{folder}/home/last'\n"
            script += block.text
        answers[index] = f"{folder}/{before}" if before else None
    if before is None:
        return
    done = subprocess.run(["bash", "-c", script], cwd=folder, env=environment, stdin=subprocess.DEVNULL, check=False)
    last = int((folder / "home/last").read_text())
    if done.returncode != 0:
        errors = pathlib.Path(f"{folder}/home/block{last}.errors").read_text()
        fail(page, blocks[last].line, f"{engine.name}: a command ended with {done.returncode}\n{errors}")
        return
    for index, block in enumerate(blocks):
        if block.words[:1] == ["text"] and block.words[1:] in (["output"], ["errors"]):
            printed = pathlib.Path(f"{answers[index]}.{block.words[1]}").read_text().replace(str(folder), "...")
            if printed != block.text:
                fail(page, block.line, f"{engine.name}: the commands print\n{printed}")


def programs(pages):
    """What is to be compiled, by the name of its file: each program, and all fragments together. A program with a name is
    compiled by its page's own commands."""
    sources, fragments = {}, []
    for page, (blocks, _) in pages.items():
        for block in blocks:
            if block.kind != "cpp" or block.norun:
                continue
            if "fragment" in block.words:
                fragments.append(FRAGMENT.format(number=len(fragments), line=block.line + 1, page=page, text=block.text))
            elif not any(word.startswith("file=") for word in block.words):
                sources[f"{page}_{block.line}.cpp".replace("/", "_")] = f'#line {block.line + 1} "{page}"\n{block.text}'
    headers = [f"{module}/{file.name}" for module in MODULES for file in sorted((ROOT / module).glob("*.h"))
               if file.name not in ("AceItem.h", "Digest.h", "DateText.h", "DriverModule.h")]
    sources["fragments.cpp"] = "".join(f'#include "{header}"\n' for header in headers) + "#include <cstdio>\n" + "".join(fragments)
    return sources


def compile_program(file, text):
    file.write_text(text)
    done = subprocess.run([COMPILER, "-std=c++20", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", f"-I{ROOT}", str(file)],
                          capture_output=True, text=True, check=False)
    if done.returncode != 0:
        fail(file.stem, 0, f"does not compile:\n{done.stderr}")


def slug(heading):
    return re.sub(r"[^\w\- ]", "", re.sub(r"[`*]", "", heading).strip().lower()).replace(" ", "-")


def anchors(file):
    return {slug(line.lstrip("#")) for line in file.read_text().splitlines() if line.startswith("#")}


def follow_links(page, lines):
    targets, inside = set(), False
    for number, line in enumerate(lines, 1):
        inside = not inside if line.lstrip().startswith("```") else inside
        for link in [] if inside else re.findall(r"\]\(([^)\s]+)\)", line):
            path, _, anchor = link.partition("#")
            if re.match(r"[a-z]+:", path):
                continue
            file = (ROOT / page).parent / path if path else ROOT / page
            if not file.exists():
                fail(page, number, f"there is no {link}")
            elif anchor and anchor not in anchors(file):
                fail(page, number, f"there is no heading for {link}")
            targets.add(os.path.relpath(file, ROOT))
    return targets


def literals():
    """What the sources can print, with placeholders as they are and neighbouring literals joined."""
    texts = []
    for folder in ("console", "dbaccess", "schema", "management"):
        for file in [*(ROOT / folder).rglob("*.cpp"), *(ROOT / folder).rglob("*.h")]:
            source = re.sub(r'"\s*\n\s*"', "", file.read_text())
            texts += re.findall(r'"((?:[^"\\\n]|\\.)*)"', source)
    return [text.replace('\\"', '"').replace("\\\\", "\\") for text in texts]


def check_messages(page):
    """The first column of the tables of messages: what is between "..." must be in the sources."""
    known, rows = literals(), 0
    for number, line in enumerate((ROOT / page).read_text().splitlines(), 1):
        row = re.match(r"\| `([^`]*(?:``[^`]*)*)` \|", line)
        if not row:
            continue
        rows += 1
        if re.search(r"\[(SQLite|PostgreSQL|MySQL|ODBC) ", row[1]):
            continue  # the engine's own words
        for part in row[1].split("..."):
            if len(part.strip()) > 2 and not any(part.strip() in text for text in known):
                fail(page, number, f"no message of the program has {part.strip()!r}")
    if rows < 30:
        fail(page, 0, f"the table of messages is not recognised: {rows} rows")


def main():
    names = ["README.md", "CHANGELOG.md", "examples/README.md"]
    names += sorted(str(file.relative_to(ROOT)) for file in (ROOT / "dbaccess/drivers").glob("*/README.md"))
    names += sorted(f"docs/{file.name}" for file in (ROOT / "docs").glob("*.md") if file.name != "reference.md")
    pages, linked = {}, set()
    for name in names:
        lines = (ROOT / name).read_text().splitlines(keepends=True)
        targets = follow_links(name, lines)
        linked |= targets if name == "docs/README.md" else set()
        marks = re.findall(r"^<!-- pages: (.*) -->$", "".join(lines), re.MULTILINE)
        pages[name] = (checked(blocks_of(name, lines)), ", ".join(marks).split(", "))
    for name in names:
        if name.startswith("docs/") and name not in linked | {"docs/README.md"}:
            fail(name, 0, "docs/README.md has no link to it")
    if (ROOT / "docs/troubleshooting.md").exists():
        check_messages("docs/troubleshooting.md")

    with tempfile.TemporaryDirectory() as temporary, concurrent.futures.ThreadPoolExecutor(2) as pool:
        work = pathlib.Path(temporary)
        example = work / "example"
        example.mkdir()
        made = subprocess.run(["bash", "-euc", "qvadmin db init; qvadmin user import examples/people.csv --departments "
                               "Brightwater --make-view --result result.csv"], cwd=example, capture_output=True, text=True, check=False,
                              env={**sandbox(example), "QVADMIN_DB": f"sqlite:{example}/directory.db"})
        if made.returncode != 0:
            sys.exit(f"the example directory cannot be made:\n{made.stderr}")
        jobs = [pool.submit(run_on, Engine(engine), name, blocks,
                            example / "directory.db" if "example directory" in marks else None, work)
                for name, (blocks, marks) in pages.items()
                for engine in (ENGINES if "every engine" in marks else ENGINES[:1])]
        jobs += [pool.submit(compile_program, work / name, text) for name, text in programs(pages).items()]
        for job in jobs:
            job.result()

    blocks = [block for found, _ in pages.values() for block in found]
    left = [block for block in blocks if block.norun]
    count = {kind: sum(block.kind == kind and not block.norun for block in blocks) for kind in ("sh", "cpp")}
    compared = sum(block.words[1:] in (["output"], ["errors"]) for block in blocks)
    print(f"{count['sh']} shell blocks run ({compared} outputs compared), {count['cpp']} C++ blocks compiled, {len(left)} not run:")
    for block in left:
        print(f"  {block.page}:{block.line}: {' '.join(block.words[2:])}")
    if len(left) != NOT_RUN:
        failures.append(f"{len(left)} blocks are not run, tests/docs/CMakeLists.txt says {NOT_RUN}")
    print("\n".join(failures))
    sys.exit(1 if failures else 0)


main()
