# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2034
# Shared by the scripts beside it: where the project stands, how a script fails, how it gets packages.
set -euo pipefail

script=$(basename "$0")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '%s: %s\n' "$script" "$*"; }

fail() {
  say "FAILED: $*" >&2
  exit 1
}

is_installed() {
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# as_root COMMAND...: runs it with root's rights, without a terminal to ask questions on.
as_root() {
  if ((EUID == 0)); then
    env DEBIAN_FRONTEND=noninteractive "$@" </dev/null
  else
    sudo env DEBIAN_FRONTEND=noninteractive "$@" </dev/null
  fi
}

can_be_root() { ((EUID == 0)) || command -v sudo >/dev/null; }

# install_packages PACKAGE...: installs those that are missing; when that fails, `why` says why.
install_packages() {
  local package missing=()
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  why="Debian packages ${missing[*]} are missing, and there is no apt-get here to install them"
  command -v apt-get >/dev/null || return 1
  why="Debian packages ${missing[*]} are missing: run this as root, or as a user with sudo"
  can_be_root || return 1
  say "installing ${missing[*]}"
  as_root apt-get update -qq || say "package lists not refreshed, trying those at hand" >&2
  why="apt-get could not install ${missing[*]}"
  as_root apt-get install -y -qq --no-install-recommends -o Dpkg::Use-Pty=0 "${missing[@]}" >/dev/null
}

# require PACKAGE...: the same, where nothing can go on without them.
require() { install_packages "$@" || fail "$why"; }

# build FOLDER [ARGUMENTS...]: builds what a configured folder says. Where its sources are compiled in groups and two of
# a group use one name, they are compiled one by one, which takes twice as long.
build() {
  cmake --build "$@" && return
  grep -qiE '^CMAKE_UNITY_BUILD:.*=(on|true)$' "$1/CMakeCache.txt" || return 1
  say "not built in groups, trying one by one" >&2
  cmake -D CMAKE_UNITY_BUILD=OFF "$1" >/dev/null && cmake --build "$@"
}

# workflow PRESET: configures, builds and, where the preset says so, tests; quiet until something fails.
workflow() {
  cmake --preset "$1" || fail "preset $1: configuration"
  build "build/$1" || fail "preset $1: build"
  [[ $1 == demo ]] || ctest --preset "$1" || fail "preset $1: tests"
}

build_packages=(g++ cmake ninja-build libblas-dev)
knotfit_packages=(libcli11-dev nlohmann-json3-dev libcairo2-dev pkg-config)
test_packages=("${build_packages[@]}" "${knotfit_packages[@]}" libgtest-dev)
