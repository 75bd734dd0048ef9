#!/bin/bash
# The main demo, with what the packages have installed and a simulated device daemon beside it. Runs as a plain user.
set -euo pipefail
phone=00008110-001A2C5E3F80401E
old_phone=5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1
cd "$(mktemp -d)"

fail() {
  echo "demo: $*" >&2
  exit 1
}

# Runs kruteinctl and fails unless its output has a text.
says() {
  local text=$1 output
  shift
  output=$(kruteinctl "$@" 2>&1) || fail "kruteinctl $* ended with $?: $output"
  [[ $output == *"$text"* ]] || fail "kruteinctl $* does not say '$text': $output"
  echo "kruteinctl $*: ok"
}

devicesim --socket "$PWD/s" --devices "$(dirname "$(readlink -f /usr/bin/kruteinctl)")/../../Resources/SampleDevices" >sim.log &
devicesim=$!
trap 'kill $devicesim' EXIT
for _ in $(seq 100); do
  [ -S s ] && break
  sleep 0.1
done
export USBMUXD_SOCKET_ADDRESS=UNIX:$PWD/s

says "kruteinctl 1." --version
says "$phone" devices
says "17.4.1" info "$phone"
says "Backed up $phone" backup "$phone" --to full
says "nothing is wrong" verify "full/$phone"
says "Restored $phone" restore "$phone" --from full
for each in "$phone" "$old_phone"; do
  says "Backed up messages, whatsapp of $each" backup "$each" --types messages,whatsapp --to "typed/$each"
  says "nothing is wrong" verify "typed/$each"/*/*/"$each"
  says "messages" show "typed/$each"/*/*/"$each"
done
says "backups: 2," list typed
[ -s ~/.local/state/krutein/Sync.log ] || fail "no log"
man -w kruteinctl >/dev/null 2>&1 || [ -s /usr/share/man/man1/kruteinctl.1.gz ] || fail "no manual page"
