"""tsql_grammar.py FILE: whether a T-SQL grammar takes every statement that the module sends to SQL Server and Access.

FILE holds the statements as testing/ScriptedDriver notes them: the engine kind, a tab, the text, a NUL. Nothing that can be had
knows the grammar of Access, so its statements are read as T-SQL too, with their #dates# in quotes; this says nothing of
where the two differ.
"""
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "servers"))
from tds_responder import grammar_error, sqlglot

KINDS = {"0": "Access", "1": "SQL Server"}
AT_LEAST = 150  # texts of each kind; fewer mean that nothing was noted

REFUSED = [  # what is sent although no engine, or not this one, takes it: exactly these
    r"INSERT INTO qv_ItemAce \(.*[^)]",  # leaves its last parenthesis open, and is refused everywhere
    r"select `TABLE_NAME` from .*",  # MySQL's question, asked of whatever connection the caller gives
]


def as_sent_for_real(text):
    """The tests put a quote and a backslash into each text and write dates in signs of their own."""
    text = re.sub(r"(?<=[a-z])'(?=\w|\\)", "''", text)
    return re.sub(r"<(\d+-\d+-\d+ \d+:\d+:\d+)>|#([^#']*)#", lambda date: f"'{date[1] or date[2]}'", text)


def main(file):
    if sqlglot is None:
        sys.exit("the Python module sqlglot is missing (Debian package python3-sqlglot); "
                 "tools/install-packages test brings it")
    noted = pathlib.Path(file).read_bytes().decode("utf-8", "replace").split("\0")[:-1]
    sent = sorted({tuple(line.split("\t", 1)) for line in noted})
    failures = []
    for kind, engine in KINDS.items():
        texts = [text for of, text in sent if of == kind]
        if len(texts) < AT_LEAST:
            failures.append(f"{engine}: only {len(texts)} texts were noted, fewer than {AT_LEAST}")
        for text in texts:
            complaint = grammar_error(as_sent_for_real(text))
            known = any(re.fullmatch(pattern, text, re.S) for pattern in REFUSED)
            if complaint and not known:
                failures.append(f"{engine}: {complaint}\n  {text}")
            if known and not complaint:
                failures.append(f"{engine}: is to be refused\n  {text}")
        print(f"{engine}: {len(texts)} texts")
    sys.exit("\n".join(failures) or None)


main(sys.argv[1])
