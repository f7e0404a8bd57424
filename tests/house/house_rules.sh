#!/usr/bin/env bash
# house_rules.sh ROOT: rules of the sources that no compiler checks. Prints every breach and fails when there is one.
set -euo pipefail
source "$(dirname "$0")/sources.sh"
cd "$1"

breaches=0
# Takes lines on its input; each is a breach of the rule.
breach() {
  local line
  while IFS= read -r line; do
    echo "$1: $line"
    breaches=$((breaches + 1))
  done
}

# As grep; finding nothing is no failure, and a real one counts as a breach.
find_in() {
  local code=0
  grep -nHE "$@" || code=$?
  if [ $code -gt 1 ]; then
    echo "grep failed on $*"
  fi
}

mapfile -t all < <(sources)
if [ ! -f basefun/QVBaseFun.h ] || [ ${#all[@]} -eq 0 ]; then
  echo "$1 is not the project's root"
  exit 1
fi

# ---- Lines are named by the callers, not by a macro that a helper function would misplace.
breach "takes its line from a macro" < <(find_in '__LINE__' "${all[@]}")

# ---- One place turns the library's exceptions into results.
operations=()
for file in "${all[@]}"; do
  case $file in
    basefun/StatementFrame.h) ;;
    basefun/* | directory/* | access/* | documents/* | admin/*) operations+=("$file") ;;
  esac
done
breach "catches what only basefun/StatementFrame.h may catch" < <(
  find_in 'catch[[:space:]]*\([[:space:]]*(const[[:space:]]+)?(CAException|\.\.\.)' "${operations[@]}")

# ---- Engines are known to their drivers alone, and to what tests and measures them.
breach "includes an engine's header" < <(
  find_in '#[[:space:]]*include[[:space:]]*[<"]sqlite3(ext)?\.h' "${all[@]}" |
    grep -vE '^(dbaccess/drivers/sqlite|tests/dbaccess|tests/schema|bench|fuzz)/' || true)
breach "includes an engine's header" < <(
  find_in '#[[:space:]]*include[[:space:]]*[<"](mysql|mariadb|errmsg|mysqld_error)[a-z_/]*\.h' "${all[@]}" |
    grep -vE '^(dbaccess/drivers/mysql|tests/dbaccess|bench)/' || true)
breach "includes an engine's header" < <(
  find_in '#[[:space:]]*include[[:space:]]*[<"](postgresql/|libpq|pq|postgres_ext|pg_config)[a-z_/-]*\.h' "${all[@]}" |
    grep -vE '^(dbaccess/drivers/postgresql|tests/dbaccess|bench)/' || true)

breach "includes an engine's header" < <(
  find_in '#[[:space:]]*include[[:space:]]*[<"](sql|sqlext|sqltypes|sqlucode|odbcinst|odbcinstext)\.h' "${all[@]}" |
    grep -vE '^(dbaccess/drivers/odbc|tests/dbaccess|bench)/' || true)

# ---- A std::variant of these alone takes it that copying one never fails, and destroys what was never constructed when
# memory runs out in it (libstdc++ 12); management/Value.h shows the way out. Pointers to members are none of these.
variant_breaches() {
  local file
  while IFS= read -r file; do
    tr '\n' ' ' <"$file" | sed -E 's/std::[a-z_0-9]+(<[^<>]*>)? [A-Za-z]+::\*//g' | { grep -oE 'std::variant<[^;{>]*' || true; } |
      { grep -E '[<,] *std::(string|vector|function|any|shared_ptr|weak_ptr)\b' || true; } | sed "s|^|$file: |"
  done < <(grep -lE 'std::variant<' "${all[@]}" || true)
}
breach "holds in a std::variant what must not be copied there" < <(variant_breaches)

# ---- To destroy the JSON library's objects and arrays takes memory, and ends the program when there is none.
breach "uses the JSON library where management/JsonWriter.h is to be used" < <(
  find_in '#[[:space:]]*include[[:space:]]*<nlohmann' "${all[@]}" | grep -vE '^(management/Json(Writer|Line)\.cpp|web/JsonReader\.cpp|tests/|bench/)' || true)

# ---- Several sessions may be in one process. A thread speaks a language for as long as a Speaking says so.
breach "keeps what changes for the whole process" < <(
  find_in '^[[:space:]]*(inline )?(static|thread_local) [^(]*[=;{]' "${all[@]}" | grep '^management/' |
    grep -vE 'static (constexpr|const) |^management/Sentence\.cpp:[0-9]+:thread_local const Language\* spoken = nullptr;' || true)

# ---- The library that speaks HTTP is known to one file; it is a module of its own, and all else knows web/HttpServer.h.
breach "includes the header of the HTTP library" < <(
  find_in '#[[:space:]]*include[[:space:]]*<microhttpd\.h' "${all[@]}" | grep -vE '^web/HttpDaemon\.cpp:' || true)

# ---- clang-tidy looks for these in the file that is compiled only, and sources are compiled together.
unused_declarations() {
  local file name
  for file in "${all[@]}"; do
    while IFS= read -r name; do
      [ "$(grep -cE "\\b$name\\b" "$file")" -gt 1 ] || echo "$file: $name"
    done < <(sed -nE 's/^using ([A-Za-z_0-9]+::)+([A-Za-z_0-9]+);$/\2/p' "$file")
  done
}
breach "declares with using what it does not use" < <(unused_declarations)

# ---- An include never points to a higher floor.
declare -A below=(
  [platform]="platform"
  [dbaccess]="platform dbaccess"
  [basefun]="platform dbaccess basefun"
  [directory]="platform dbaccess basefun directory"
  [access]="platform dbaccess basefun directory access"
  [documents]="platform dbaccess basefun directory documents"
  [admin]="platform dbaccess basefun admin"
  [schema]="platform dbaccess schema"
  [testing]="platform dbaccess testing"
  [management]="platform dbaccess basefun directory access documents admin schema management"
  [web]="platform dbaccess basefun directory access documents admin schema management web"
  [console]="platform dbaccess basefun directory access documents admin schema management web console"
)
include_breaches() {
  local file line place folder target
  for file in "${all[@]}"; do
    folder=${file%%/*}
    [ -n "${below[$folder]:-}" ] || continue
    while IFS= read -r line; do
      target=$(sed -E 's|.*include[[:space:]]*"([^"]*)".*|\1|' <<<"$line")
      place=${target%%/*}
      case " ${below[$folder]} " in
        *" $place "*) ;;
        *) echo "$line" ;;
      esac
      case $folder:$target in
        console:basefun/StatementFrame.h | console:basefun/SqlText.h | console:dbaccess/Driver.h | \
          web:basefun/StatementFrame.h | web:basefun/SqlText.h | web:dbaccess/Driver.h | \
          management:basefun/StatementFrame.h | management:basefun/SqlText.h | management:dbaccess/Driver.h) echo "$line" ;;
      esac
    done < <(find_in '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$file")
  done
}
breach "includes what stands above it or is none of its business" < <(include_breaches)

# ---- What administrators do knows no terminal, no command line and no environment, and keeps nothing for a process.
mapfile -t management < <(printf '%s\n' "${all[@]}" | grep -E '^management/' || true)
breach "knows a terminal, a command line, a signal or the environment" < <(
  find_in 'CLI::|<iostream>|std::c(in|out|err)\b|getenv|isatty|<csignal>|Exit::' "${management[@]}")

# ---- Every operation stands in a table of statements (tests/*/*StatementsTest.cpp), each overload with a call of its
# own; operations without a connection send nothing and are called in some test, protected ones through a class derived
# there.
calls_in() {
  local call=$1
  shift
  { grep -ohE "$call\(" "$@" || true; } | wc -l
}
operation_breaches() {
  local tables tests name overloads connection
  mapfile -t tables < <(printf '%s\n' "${all[@]}" | grep -E '^tests/[^/]+/[^/]*StatementsTest\.cpp$' || true)
  mapfile -t tests < <(printf '%s\n' "${all[@]}" | grep -E '^tests/' || true)
  local operation='s/^ *static [A-Za-z_0-9]+ ([A-Za-z_0-9]+)\((CAConnect&)?.*/\1 \2/p'
  local declared
  declared=$(sed '/^protected:/,$d' basefun/QVBaseFun.h | sed -nE "$operation" | sort | uniq -c)
  if [ "$(wc -l <<<"$declared")" -lt 10 ]; then
    echo "basefun/QVBaseFun.h: the operations cannot be read"
  fi
  while read -r overloads name connection; do
    if [ -z "$connection" ]; then
      if [ "$(calls_in "CQVBaseFun::$name" "${tests[@]}" /dev/null)" -lt "$overloads" ]; then
        echo "$name: called in no test"
      fi
    elif [ "$(calls_in "CQVBaseFun::$name" "${tables[@]}" /dev/null)" -lt "$overloads" ]; then
      echo "$name: not every one of its $overloads declarations is called in a table of statements"
    fi
  done <<<"$declared"
  while read -r name connection; do
    if [ "$(calls_in "::$name" "${tests[@]}" /dev/null)" -eq 0 ]; then
      echo "$name: called in no test through a derived class"
    fi
  done < <(sed -n '/^protected:/,$p' basefun/QVBaseFun.h | sed -nE "$operation")
}
breach "is declared and not tested" < <(operation_breaches)

if [ $breaches -ne 0 ]; then
  echo "$breaches breaches of the house rules"
  exit 1
fi
