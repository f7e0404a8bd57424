#!/usr/bin/env bash
# exported_symbols.sh LIBRARY: the library shows its operations and record classes, and nothing else of its own.
set -euo pipefail

classes=(CQVBaseFun CHumanItem CGroupItem CViewItem CRelationItem CRoleItem CJobTitleItem CTabBIOAceItem CDocRootItem
  CDocRootLinkItem CDocFolderItem CDocFolderLinkItem CBulletinItem)

symbols=$(nm -D --defined-only "$1" | awk '{print $NF}')
failed=0

# In a mangled name a class stands with its length before it.
own=$(for class in "${classes[@]}"; do printf '|%d%s' ${#class} "$class"; done)
own=${own#|}
# Members and what the compiler makes for a class: its tables, type information, guards of its functions' variables.
members="^_Z(TV|TI|TS|TT|GVZ|Z)?N?K?($own)"
# What the standard library's headers bring (the placement operators among it), and what linker and sanitizers add.
others='^_Z(TV|TI|TS|TT|GVZ|GV|Z)?N?K?(S[tabsiod]|9__gnu_cxx)|^_Z(nwmPv|namPv|dlPvS_|daPvS_)$|^(_init|_fini|_edata|_end|__bss_start)$|^__odr_asan'

while IFS= read -r symbol; do
  if [[ ! $symbol =~ $members && ! $symbol =~ $others ]]; then
    echo "is shown and should not be: $(c++filt "$symbol")"
    failed=1
  fi
done <<<"$symbols"

for class in CQVBaseFun CHumanItem; do
  if ! grep -qx "_ZTV${#class}$class" <<<"$symbols"; then
    echo "is not shown: $class"
    failed=1
  fi
done
exit $failed
