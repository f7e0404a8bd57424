#!/usr/bin/env bash
# tsql_grammar.sh PROGRAM...: runs the tests of statements in these programs and lets a T-SQL grammar read all texts that
# they send to SQL Server and Access.
set -euo pipefail

house=$(dirname "$0")
folder=$(mktemp -d "${TMPDIR:-/tmp}/qv-tsql-XXXXXX")
trap 'rm -rf "$folder"' EXIT
for program in "$@"; do
  QV_NOTE_STATEMENTS=$folder/statements "$program" --gtest_filter='*Statements*' --gtest_brief=1
done
# The Debian Python's: other interpreters do not find its modules.
/usr/bin/python3 -B "$house/tsql_grammar.py" "$folder/statements"
