#!/bin/bash
# Docs/hosting.md to the letter: its host, built and run by its commands. Runs as a plain user.
set -euo pipefail
cd "$(mktemp -d)"

# The first block of a kind.
block() {
  awk -v begin="\`\`\`$1" '$0 == "```" && inside { exit } inside; $0 == begin { inside = 1 }' /test/hosting.md
}

block cpp >host.cpp
block console | sed -n 's/^\$ //p' >steps
bash -eu steps >output 2>&1 || {
  cat output >&2
  exit 1
}
grep -q '^backups: 1, damaged records: 0' output
echo "the host of Docs/hosting.md: ok"
