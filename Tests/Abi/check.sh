#!/bin/sh
# Compares what hosts are compiled against with what is written down; with KRUTEIN_ABI_UPDATE in the environment
# writes it down.
# Usage: check.sh DESCRIBED WORD...   DESCRIBED: file for what this build gives; WORD: those of describe.py
set -eu
here=$(dirname "$0")
expected=$here/libkrutein.abi
described=$1
shift
python3 "$here/describe.py" "$@" >"$described"
if [ -n "${KRUTEIN_ABI_UPDATE:-}" ]; then
  cp "$described" "$expected"
  exit
fi
diff -u --label "written down" "$expected" --label "this build" "$described" && exit
cat >&2 <<END

What hosts are compiled against has changed (see above). A host that was built before may not work any more, unless
all that changed are lines that came in addition: no other virtual function, member, value or size.
When that is so, or when KRUTEIN_VERSION_MAJOR in Common/Version.h goes up with it, write the change down:
  scripts/abi --update
END
exit 1
