#!/bin/bash
# Hosts of somebody else are built against what libkrutein-dev has installed. Runs as a plain user.
set -euo pipefail
cd "$(mktemp -d)"
cp -r /test/outside host
cd host

cmake -S . -B build >/dev/null
cmake --build build >/dev/null
build/linked_host

flags=$(pkg-config --cflags krutein)
# shellcheck disable=SC2086 # several flags
g++ -std=c++17 $flags loading_host.cpp -o loading_host
./loading_host libkrutein.so.1
