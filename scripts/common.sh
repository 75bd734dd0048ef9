# Shared by the scripts of this folder: where the project is, and what it needs.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What the library and the programs are built and run with.
debian_packages=(
  g++ cmake ninja-build pkg-config
  libssl-dev libsqlite3-dev libplist-dev libimobiledevice-dev libspdlog-dev libfmt-dev libcli11-dev nlohmann-json3-dev
  procps
)
debian_test_packages=(
  libgtest-dev libgmock-dev libbenchmark-dev valgrind
  sqlite3
  clang libgnustep-base-dev libblocksruntime-dev  # the macOS sources are tested with them
  doxygen
  abigail-tools binutils python3
)
brew_packages=(cmake ninja pkg-config openssl sqlite libplist libimobiledevice spdlog fmt cli11 nlohmann-json)
brew_test_packages=(googletest google-benchmark doxygen)

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  else
    echo "krutein: needs root to install packages: $*" >&2
    sudo "$@"
  fi
}

install_debian() {
  local missing=() package
  for package in "$@"; do
    if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)" != installed ]; then
      missing+=("$package")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "krutein: installing ${missing[*]}" >&2
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

install_brew() {
  local missing=() package
  for package in "$@"; do
    brew list --versions "$package" >/dev/null 2>&1 || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] || brew install "${missing[@]}"
}

# Installs what is missing of what the build without tests needs; further Debian packages as arguments.
install_to_build() {
  if command -v apt-get >/dev/null; then
    install_debian "${debian_packages[@]}" "$@"
  elif command -v brew >/dev/null; then
    install_brew "${brew_packages[@]}"
  else
    echo "krutein: neither apt-get nor brew here: install what cmake asks for by hand" >&2
  fi
}

# The same for the build with tests.
install_missing() {
  brew_packages+=("${brew_test_packages[@]}")
  install_to_build "${debian_test_packages[@]}" "$@"
}

# Configures a preset and builds targets of it (all without arguments); says little unless something fails.
configure_and_build() {
  local preset=$1
  shift
  (
    cd "$root"
    cmake --preset "$preset" -DKRUTEIN_WARNINGS_AS_ERRORS="${KRUTEIN_WARNINGS_AS_ERRORS:-OFF}" --log-level=WARNING >/dev/null
    cmake --build --preset "$preset" ${1:+--target "$@"}
  )
}
