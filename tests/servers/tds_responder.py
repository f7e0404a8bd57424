#!/usr/bin/python3
"""Speaks the protocol of SQL Server (TDS 7.4) in front of SQLite, for tests of what talks to it.

It is not the engine. It shows that a client's bytes, types, errors, cancels and transactions go through; it shows
nothing of the engine's plans, locks or limits. What it takes from the engine:

- every statement has to pass a T-SQL grammar (sqlglot), and then is adapted to SQLite by few replacements;
- = on texts ignores case and blanks at the end; texts that are too long and dates that are none are refused;
- errors carry the engine's numbers; one result at a time arrives on a connection; an attention ends it.

What it is more lenient in, among other things: ids may be written without leave; columns of numbers take texts and
numbers beyond their size; lengths count characters, where the engine counts pairs of bytes; and all texts keep all of
Unicode, as in a database whose collation is one of UTF-8. Who reads outside a transaction never waits for writers. Of
transactions there is one at a time in a database, also of those that only read.
"""
import argparse
import datetime
import functools
import itertools
import logging
import pathlib
import re
import select
import socket
import sqlite3
import struct
import threading
import zlib

try:
    import sqlglot
    from sqlglot import exp
    logging.getLogger("sqlglot").setLevel(logging.ERROR)  # EXEC and the like are commands to it, with a warning
except ImportError:
    sqlglot = None

USER, PASSWORD = "sa", "secret"
COLLATION = "Latin1_General_100_CI_AS_SC_UTF8"
COLLATION_BYTES = bytes.fromhex("0904d00034")
IGNORES_CASE = 196609  # the style of such a collation: not its case, not the widths and kinds of its signs
BATCH, RPC, ATTENTION, TRANSACTION, LOGIN, PRELOGIN = 1, 3, 6, 14, 16, 18
MORE, ERROR, COUNT, ATTENDED = 1, 2, 16, 32  # bits of DONE
COMMANDS = {"SELECT": 0xC1, "INSERT": 0xC3, "DELETE": 0xC4, "UPDATE": 0xC5}


class Refused(Exception):
    """An error of the engine's: its number and message."""

    def __init__(self, number, message):
        super().__init__(message)
        self.number = number


class Cut(Exception):
    """The other side is gone, or has been sent away."""


# ---- Statements

# Texts, quoted names and comments are pieces of their own, so that nothing in them is taken for anything else.
PIECES = re.compile(r"(N?'(?:[^']|'')*'|\"[^\"]*\"|\[[^\]]*\]|--[^\n]*|/\*.*?\*/|;)", re.S | re.I)


def rules(*pairs):
    return [(re.compile(pattern, re.I), replacement) for pattern, replacement in pairs]


# What T-SQL has and the grammar does not know, and what it takes although T-SQL does not have it.
UNKNOWN_TO_GRAMMAR = rules((r"\bIDENTITY\s*\(1,\s*1\)", ""), (r"(\bCol_\w+)\s+AS\s+\(\w+\)", r"\1 int"),
                           (r"(\bCREATE\s+INDEX\b.*)\sDESC\)", r"\1)"))
NO_TSQL = re.compile(r"\bLIMIT\b|==|\|\||`|\bCREATE\s+\w+\s+IF\b", re.I)

TO_SQLITE = rules((r"\bINFORMATION_SCHEMA\s*\.\s*TABLES\b", "information_schema_tables"),
                  (r"\bsys\s*\.\s*identity_columns\b", "sys_identity_columns"), (r"@@(SPID|SERVERNAME)\b", r"\1()"),
                  (r"@@IDENTITY\b", "last_insert_rowid()"),
                  (r"\sWITH\s*\(TABLOCK,\s*HOLDLOCK\)", ""))
TABLE_TO_SQLITE = rules(
    (r"\b(?:big)?int\s+IDENTITY\(1,1\)\s+(?:NOT\s+NULL\s+)?PRIMARY\s+KEY", "INTEGER PRIMARY KEY AUTOINCREMENT"),
    (r"\bn?varchar\s*\(max\)", "ntext COLLATE SQLSERVER"),
    (r"(\w+)\s+n?varchar\s*\((\d+)\)", r"\1 nvarchar(\2) COLLATE SQLSERVER CHECK (length(\1) <= \2)"),
    (r"(\w+)\s+(datetime2|datetime|date)\b(?:\(\d\))?", r"\1 \2 COLLATE TIMES CHECK (is_time(\1))"))


def pieces(text, changes=()):
    """The pieces of a text but its comments, and whether they are texts; the rest is changed by rules."""
    for place, piece in enumerate(PIECES.split(text)):
        if place % 2:
            if not piece.startswith(("--", "/*")):
                yield piece, piece != ";"
        else:
            for pattern, replacement in changes:
                piece = pattern.sub(replacement, piece)
            yield piece, False


def grammar_error(text):
    """What the T-SQL grammar has against a text, or None."""
    for piece, is_text in pieces(text):
        foreign = None if is_text else NO_TSQL.search(piece)
        if foreign:
            return f"{foreign[0]} is no T-SQL"
    try:
        known = "".join(piece for piece, _ in pieces(text, UNKNOWN_TO_GRAMMAR))
        statements = sqlglot.parse(known, read="tsql")
    except (sqlglot.errors.SqlglotError, RuntimeError, IndexError) as error:  # the latter two where a quote is open
        return str(error).splitlines()[0]
    query = getattr(exp, "Query", None) or exp.Unionable  # the second is its name in older versions
    kinds = (query, exp.Insert, exp.Update, exp.Delete, exp.Create, exp.Drop)
    for statement in statements:
        if statement is not None and not isinstance(statement, kinds):
            return f"no statement: {statement.sql()}"
    return None


@functools.lru_cache(maxsize=2000)
def require_grammar(text):
    complaint = grammar_error(text) if sqlglot else None
    if complaint:
        raise Refused(102, f"Incorrect syntax: {complaint}.")


@functools.lru_cache(maxsize=2000)
def adapted(batch):
    """The statements of a batch, as SQLite takes them."""
    is_table = re.match(r"\s*CREATE\s+TABLE\b", batch, re.I)
    statements = [""]
    for piece, is_text in pieces(batch, TO_SQLITE + (TABLE_TO_SQLITE if is_table else [])):
        if piece == ";":
            statements.append("")
        else:
            if is_text:
                piece = re.sub(r"\\\r?\n", "", piece[1:] if piece[0] in "Nn" else piece)  # a line that goes on
            statements[-1] += piece
    return [statement.strip() for statement in statements if statement.strip()]


SQLITE_ERRORS = [(re.compile(pattern), number, message) for pattern, number, message in [
    (r"no such table: (?:main\.)?(\S+)", 208, "Invalid object name '{}'."),
    (r"no such column: (?:\w+\.)*(\S+)", 207, "Invalid column name '{}'."),
    (r"table \S+ has no column named (\S+)", 207, "Invalid column name '{}'."),
    (r"UNIQUE constraint failed: (\w+)", 2627,
     "Violation of PRIMARY KEY constraint. Cannot insert duplicate key in object 'dbo.{}'."),
    (r"NOT NULL constraint failed: \w+\.(\w+)",
     515, "Cannot insert the value NULL into column '{}'; column does not allow nulls."),
    (r"CHECK constraint failed: length\((\w+)\)", 2628, "String or binary data would be truncated, column '{}'."),
    (r"CHECK constraint failed: is_time", 241, "Conversion failed when converting date and/or time from text."),
    (r"(?:table|index) (\S+) already exists", 2714, "There is already an object named '{}' in the database."),
    (r"database is locked", 1222, "Lock request time out period exceeded."),
    (r'near "([^"]*)": syntax error|incomplete input|unrecognized token', 102, "Incorrect syntax near '{}'."),
]]


def as_engine_says(error):
    for pattern, number, message in SQLITE_ERRORS:
        found = pattern.search(str(error))
        if found:
            return Refused(number, message.format(*(found.groups() or ("",))))
    return Refused(50000, str(error))


# ---- Values

def time_of(text):
    """The moment that a text names; an empty one names the engine's first day. @raise ValueError."""
    return datetime.datetime.fromisoformat(text.rstrip()) if text.strip() else datetime.datetime(1900, 1, 1)


def is_time(text):
    try:
        return text is None or bool(time_of(text))
    except (ValueError, TypeError, AttributeError):
        return False


def compared(key):
    def compare(a, b):
        a, b = key(a), key(b)
        return (a > b) - (a < b)
    return compare


def time_key(text):
    return time_of(text).isoformat() if is_time(text) else text


def of_number(size, code):
    def encode(value):
        try:
            return b"\0" if value is None else struct.pack(f"<B{code}", size, value)
        except struct.error:
            raise Refused(245, f"Conversion failed when converting the value '{value}' to a number.") from None
    return encode


def of_short_text(value):
    if value is None:
        return b"\xff\xff"
    text = str(value).encode("utf-16le")
    return struct.pack("<H", len(text)) + text


def of_long_text(value):
    """In pieces, and without telling the length of it all."""
    if value is None:
        return b"\xff" * 8
    text = str(value).encode("utf-16le")
    pieces = (text[i:i + 8000] for i in range(0, len(text), 8000))
    return (b"\xfe" + b"\xff" * 7 + b"".join(struct.pack("<I", len(piece)) + piece for piece in pieces) +
            b"\0\0\0\0")


def days(moment, first):
    return moment.toordinal() - first.toordinal()


def of_date(value):
    return b"\0" if value is None else b"\3" + struct.pack("<I", days(time_of(value), datetime.date.min))[:3]


def of_datetime2(value):
    if value is None:
        return b"\0"
    moment = time_of(value)
    seconds = moment.hour * 3600 + moment.minute * 60 + moment.second
    return b"\6" + struct.pack("<I", seconds)[:3] + struct.pack("<I", days(moment, datetime.date.min))[:3]


def of_datetime(value):
    if value is None:
        return b"\0"
    moment = time_of(value)
    seconds = moment.hour * 3600 + moment.minute * 60 + moment.second
    return b"\x08" + struct.pack("<iI", days(moment, datetime.date(1900, 1, 1)), seconds * 300)


INT = b"\x26\x04", of_number(4, "i")
BIGINT = b"\x26\x08", of_number(8, "q")
FLOAT = b"\x6d\x08", of_number(8, "d")
LONG_TEXT = (b"\xe7\xff\xff" + COLLATION_BYTES, of_long_text)
TYPES = {"int": INT, "smallint": INT, "bigint": BIGINT, "float": FLOAT, "real": FLOAT,
         "integer": BIGINT,  # ids of either size are declared so to SQLite
         "date": (b"\x28", of_date), "datetime2": (b"\x2a\x00", of_datetime2), "datetime": (b"\x6f\x08", of_datetime)}


def type_of(declared, first):
    """How a column is described and its values are encoded. What is computed goes by its first value."""
    if declared.lower() in TYPES:
        return TYPES[declared.lower()]
    length = re.fullmatch(r"nvarchar\((\d+)\)", declared, re.I)
    if length and int(length[1]) <= 4000:
        return struct.pack("<BH", 0xE7, int(length[1]) * 2) + COLLATION_BYTES, of_short_text
    if isinstance(first, float):
        return FLOAT
    if isinstance(first, int) or (first is None and not declared):
        return INT if first is None or -2**31 <= first < 2**31 else BIGINT
    return LONG_TEXT


# ---- The wire

def short(text):
    return struct.pack("<B", len(text)) + text.encode("utf-16le")


def env_change(kind, new, old):
    return token(0xE3, bytes([kind]) + new + old)


def token(code, body):
    return struct.pack("<BH", code, len(body)) + body


def done(status, command=0, count=0):
    return struct.pack("<BHHQ", 0xFD, status, command, count)


def error_token(number, message):
    text = message.encode("utf-16le")
    return token(0xAA, struct.pack("<IBBH", number, 1, 16, len(text) // 2) + text + short("responder") + short("") +
                 struct.pack("<I", 1))


class Wire:
    """Messages in packets. What is written goes out as soon as a packet is full."""

    def __init__(self, connection):
        self.connection = connection
        self.size = 4096
        self.waiting = bytearray()
        self.number = 0

    def exactly(self, length):
        data = b""
        while len(data) < length:
            piece = self.connection.recv(length - len(data))
            if not piece:
                raise Cut
            data += piece
        return data

    def receive(self):
        message = b""
        while True:
            kind, status, length = struct.unpack(">BBHxxxx", self.exactly(8))
            message += self.exactly(length - 8)
            if status & 1:
                return kind, message

    def interrupted(self):
        """Whether something has come while a request is being answered: an attention, or the end."""
        return bool(select.select([self.connection], [], [], 0)[0])

    def write(self, data):
        self.waiting += data
        while len(self.waiting) > self.size - 8:
            self.send(self.waiting[:self.size - 8], 0)
            del self.waiting[:self.size - 8]

    def end(self):
        self.send(self.waiting, 1)
        self.waiting.clear()
        self.number = 0

    def send(self, data, status):
        self.number = (self.number + 1) % 256
        self.connection.sendall(struct.pack(">BBHHBB", 4, status, len(data) + 8, 0, self.number, 0) + data)


# ---- Sessions

class Server:
    """The databases, one file each, and what sessions share."""

    def __init__(self, folder):
        self.folder = folder
        self.numbers = itertools.count(51)
        self.connections = {}  # by number of the session
        self.locks = {}
        self.guard = threading.Lock()
        self.create("master")

    def file(self, name):
        if not re.fullmatch(r"\w+", name):
            raise Refused(102, f"Incorrect syntax near '{name}'.")
        return self.folder / f"{name.lower()}.db"

    def create(self, name):
        if self.file(name).exists():
            raise Refused(1801, f"Database '{name}' already exists. Choose a different database name.")
        database = sqlite3.connect(self.file(name))
        database.execute("PRAGMA journal_mode = WAL")
        database.close()

    def drop(self, name):
        if not self.file(name).exists():
            raise Refused(3701, f"Cannot drop the database '{name}', because it does not exist.")
        for file in self.folder.glob(self.file(name).name + "*"):
            file.unlink()

    def lock(self, name):
        with self.guard:
            return self.locks.setdefault(name, threading.Lock())

    def kill(self, number):
        if number not in self.connections:
            raise Refused(6106, f"Process ID {number} is not an active process ID.")
        self.connections[number].shutdown(socket.SHUT_RDWR)


class Session:
    """One connection: what a client asks, and what it is answered."""

    def __init__(self, server, connection):
        self.server = server
        self.number = next(server.numbers)
        self.wire = Wire(connection)
        self.name = "master"
        self.database = None
        self.held = {}  # locks, by their names
        server.connections[self.number] = connection

    def run(self):
        answers = {PRELOGIN: self.prelogin, LOGIN: self.login, BATCH: self.batch, TRANSACTION: self.transaction,
                   ATTENTION: lambda data: self.wire.write(done(ATTENDED)), RPC: self.remote_call}
        try:
            while True:
                kind, data = self.wire.receive()
                try:
                    answers[kind](data)
                except Refused as error:
                    self.wire.write(error_token(error.number, str(error)) + done(ERROR))
                self.wire.end()
        except (Cut, OSError):
            pass
        finally:
            self.close()

    def close(self):
        self.server.connections.pop(self.number).close()
        if self.database:
            self.database.close()
        for lock in self.held.values():
            lock.release()

    def prelogin(self, _):
        options = [(0, b"\x0f\0\0\0\0\0"), (1, b"\2"), (2, b"\0"), (3, b""), (4, b"\0")]  # 1: no encryption; 4: no MARS
        place, header, body = 5 * len(options) + 1, b"", b""
        for option, value in options:
            header += struct.pack(">BHH", option, place + len(body), len(value))
            body += value
        self.wire.write(header + b"\xff" + body)

    def login(self, data):
        def field(at):
            offset, length = struct.unpack_from("<HH", data, at)
            return data[offset:offset + 2 * length]

        user, name = field(40).decode("utf-16le"), field(68).decode("utf-16le") or "master"
        password = bytes(((byte ^ 0xA5) << 4 | (byte ^ 0xA5) >> 4) & 0xFF for byte in field(44)).decode("utf-16le")
        if (user, password) != (USER, PASSWORD):
            raise Refused(18456, f"Login failed for user '{user}'.")
        if not self.server.file(name).exists():
            raise Refused(4060, f'Cannot open database "{name}" requested by the login. The login failed.')
        self.open(name)
        size = struct.unpack_from("<I", data, 8)[0]
        size = size if 512 <= size <= 32767 else 4096
        program = "Microsoft SQL Server"
        self.wire.write(
            env_change(1, short(name), short("master")) + env_change(7, b"\x05" + COLLATION_BYTES, b"\0") +
            token(0xAD, b"\x01\x74\0\0\x04" + short(program) + b"\x0f\0\0\0") +
            env_change(4, short(str(size)), short("4096")) + done(0))
        self.wire.size = size

    def open(self, name):
        self.name = name
        self.database = sqlite3.connect(self.server.file(name), timeout=60, isolation_level=None)
        # A text is looked at as the engine does: without its case, and without the blanks at its end.
        self.database.create_collation("SQLSERVER", compared(lambda text: text.rstrip(" ").casefold()))
        self.database.create_collation("TIMES", compared(time_key))
        functions = {
            "spid": lambda: self.number,
            "servername": lambda: "responder",
            "db_name": lambda: self.name,
            "schema_name": lambda: "dbo",
            "databasepropertyex": lambda database, what: COLLATION,
            "collationproperty": lambda collation, what: IGNORES_CASE,
            "object_id": lambda name: zlib.crc32(name.lower().encode()) & 0x7FFFFFFF,
            "objectproperty": lambda object_id, what: 1,
            "concat": lambda *texts: "".join(str(text) for text in texts if text is not None),
            "is_time": is_time}
        for function, call in functions.items():
            self.database.create_function(function, -1, call, deterministic=function == "is_time")
        self.database.executescript("""
            PRAGMA synchronous = OFF;
            CREATE TEMP VIEW sysobjects AS SELECT name, object_id(name) AS id FROM main.sqlite_master
            WHERE type = 'table' AND name NOT LIKE 'sqlite%';
            CREATE TEMP VIEW information_schema_tables AS SELECT name AS TABLE_NAME, 'dbo' AS TABLE_SCHEMA,
            'BASE TABLE' AS TABLE_TYPE FROM sysobjects;
            CREATE TEMP VIEW sys_identity_columns AS SELECT object_id(name) AS object_id, seq AS last_value
            FROM main.sqlite_sequence;""")
        self.database.set_progress_handler(self.wire.interrupted, 100_000)

    def remote_call(self, _):
        raise Refused(2812, "Could not find stored procedure: calls are not answered here, batches are.")

    # ---- Transactions

    def transaction(self, data):
        request = data[struct.unpack_from("<I", data)[0]:]
        kind, name_length = struct.unpack_from("<HB", request)
        if kind == 5:
            self.begin()
        elif kind in (7, 8):
            self.finish("COMMIT" if kind == 7 else "ROLLBACK")
            if request[3 + name_length] & 1:  # a next one is to follow at once
                self.begin()
        else:
            raise Refused(3922, f"Transaction request {kind} is not answered here.")
        self.wire.write(done(0))

    def begin(self):
        if self.database.in_transaction:
            raise Refused(3903, "Transactions inside transactions are not answered here.")
        self.run_sql("BEGIN IMMEDIATE")
        self.wire.write(env_change(8, b"\x08" + struct.pack("<Q", self.number), b"\0"))

    def finish(self, statement):
        if not self.database.in_transaction:
            raise Refused(3902, f"The {statement} TRANSACTION request has no corresponding BEGIN TRANSACTION.")
        self.run_sql(statement)
        change = 9 if statement.upper() == "COMMIT" else 10
        self.wire.write(env_change(change, b"\0", b"\x08" + struct.pack("<Q", self.number)))

    # ---- Batches

    def batch(self, data):
        text = data[struct.unpack_from("<I", data)[0]:].decode("utf-16le")
        if self.command(text):
            return
        require_grammar(text)
        statements = adapted(text)
        for place, statement in enumerate(statements):
            try:
                self.statement(statement, MORE if place + 1 < len(statements) else 0)
            except Refused:
                if not self.wire.interrupted():
                    raise
                self.wire.receive()
                self.wire.write(done(ATTENDED))
                return
        if not statements:
            self.wire.write(done(0))

    def run_sql(self, sql):
        try:
            return self.database.execute(sql)
        except (sqlite3.Error, sqlite3.Warning) as error:
            raise as_engine_says(error) from None

    def command(self, text):
        """Answers what is no statement to SQLite, nor to the grammar. @return whether it is such a one."""
        for pattern, answer in (
                (r"SET\s[\w\s]*", lambda: None),
                (r"BEGIN TRAN(?:SACTION)?", self.begin),
                (r"(COMMIT|ROLLBACK)(?: TRAN(?:SACTION)?)?", self.finish),
                (r"CREATE DATABASE (\w+)", self.server.create),
                (r"DROP DATABASE (\w+)", self.server.drop),
                (r"KILL (\d+)", lambda number: self.server.kill(int(number))),
                (r"DECLARE @given int EXEC @given = sp_getapplock @Resource = '(\w+)'.*'Session', "
                 r"@LockTimeout = (\d+) IF @given < 0 RAISERROR\('([^']*)', 16, 1\)", self.get_lock),
                (r"EXEC sp_releaseapplock @Resource = '(\w+)', @LockOwner = 'Session'", self.release_lock)):
            found = re.fullmatch(pattern, text.strip(), re.I)
            if found:
                answer(*found.groups())
                self.wire.write(done(0))
                return True
        return False

    def statement(self, sql, more):
        verb = sql.split(None, 1)[0].upper()
        if verb == "SELECT":
            self.rows(sql, more)
            return
        before = self.database.total_changes
        self.run_sql(sql)
        counts = verb in COMMANDS
        changes = self.database.total_changes - before if counts else 0
        self.wire.write(done(more | (COUNT if counts else 0), COMMANDS.get(verb, 0), changes))

    def get_lock(self, name, milliseconds, refusal):
        lock = self.server.lock((self.name.lower(), name))
        if name not in self.held and not lock.acquire(timeout=int(milliseconds) / 1000):
            raise Refused(50000, refusal)
        self.held[name] = lock

    def release_lock(self, name):
        if name not in self.held:
            raise Refused(1223, f"Cannot release the application lock '{name}' because it is not currently held.")
        self.held.pop(name).release()

    def rows(self, sql, more):
        self.run_sql(f"CREATE TEMP VIEW types AS {sql}")  # a view tells the declared types of what it selects
        try:
            declared = [column[2] for column in self.run_sql("PRAGMA temp.table_info(types)")]
        finally:
            self.run_sql("DROP VIEW temp.types")
        cursor = self.run_sql(sql)
        try:
            count = 0
            first = cursor.fetchone()
            types = [type_of(kind, first and first[place]) for place, kind in enumerate(declared)]
            header = struct.pack("<BH", 0x81, len(types))
            for (description, _), column in zip(types, cursor.description):
                name = column[0] if re.fullmatch(r"\w+", column[0]) else ""  # what is computed has no name
                header += struct.pack("<IH", 0, 9) + description + short(name)
            self.wire.write(header)
            encoders = [encode for _, encode in types]
            for row in itertools.chain([first] if first else [], cursor):
                self.wire.write(b"\xd1" + b"".join([encode(value) for encode, value in zip(encoders, row)]))
                count += 1
                if count % 64 == 0 and self.wire.interrupted():
                    raise Refused(0, "interrupted")
        except sqlite3.Error as error:
            raise as_engine_says(error) from None
        finally:
            cursor.close()
        self.wire.write(done(more | COUNT, COMMANDS["SELECT"], count))


def main():
    parser = argparse.ArgumentParser(description="Speaks the protocol of SQL Server in front of SQLite.")
    parser.add_argument("--folder", type=pathlib.Path, required=True,
                        help="for the databases, and for the file `port` that names the port on 127.0.0.1; an empty one")
    arguments = parser.parse_args()
    server = Server(arguments.folder)
    with socket.create_server(("127.0.0.1", 0), backlog=64) as listener:
        (arguments.folder / "port").write_text(f"{listener.getsockname()[1]}\n")
        while True:
            connection, _ = listener.accept()
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=Session(server, connection).run, daemon=True).start()


if __name__ == "__main__":
    main()
