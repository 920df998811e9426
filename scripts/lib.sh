# Shared by the commands in this folder. Source it; it changes to the project's root.
# shellcheck shell=bash

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# What the commands need, by Debian package.
# shellcheck disable=SC2034  # used by the commands
{
  BUILD_PACKAGES=(g++ cmake ninja-build libboost-dev libpugixml-dev libcli11-dev libre2-dev nlohmann-json3-dev
    libedit-dev libssh-dev libsnmp-dev googletest)
  PRODUCT_PACKAGES=(g++ cmake make libboost-dev)
  PACKAGE_PACKAGES=(debhelper dpkg-dev devscripts git lintian cmake ninja-build libboost-dev g++)
  SITE_PACKAGES=(pandoc doxygen)
  PACKAGE_TEST_PACKAGES=(autopkgtest devscripts mmdebstrap util-linux)
  RUN_PACKAGES=(snmpd snmp snmptrapd netbase)
  TEST_PACKAGES=(clang libclang-rt-14-dev binutils make patch pkg-config openssh-server openssh-client libnss-wrapper busybox
    bash-completion zsh fish libxml2-utils python3 ansible-core)
  CONSOLE_PACKAGES=(chromium openssh-server openssh-client libnss-wrapper)
  I386_PACKAGES=(g++-i686-linux-gnu libpugixml-dev:i386 libre2-dev:i386)
  ARMHF_PACKAGES=(g++-arm-linux-gnueabihf libpugixml-dev:armhf libre2-dev:armhf qemu-user)
  ABI_PACKAGES=(clang libboost-dev g++ g++-i686-linux-gnu)
  CHECK_PACKAGES=(clang-format clang-tidy dpkg-dev git shellcheck mandoc)
  MUTATE_PACKAGES=(binutils python3 python3-clang-14)
  COVERAGE_PACKAGES=(gcovr)
}

if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then
  BOLD=$(printf '\033[1m') PLAIN=$(printf '\033[0m')
else
  BOLD='' PLAIN=''
fi

heading() { printf '\n%s%s%s\n\n' "$BOLD" "$*" "$PLAIN"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# as_root COMMAND...: runs the command as root.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "root is needed for: $*
Run this command as root, install sudo, or ask somebody who can run it."
  fi
}

# need_architecture NAME: enables the distribution's packages for that processor beside those of this machine.
need_architecture() {
  command -v dpkg >/dev/null || die "this command needs the $1 packages of Debian 12"
  { dpkg --print-architecture && dpkg --print-foreign-architectures; } | grep -qx "$1" || as_root dpkg --add-architecture "$1"
}

# need_packages PACKAGE...: installs missing packages from the distribution, and says so.
need_packages() {
  command -v dpkg-query >/dev/null || die "this command can install what it needs only on Debian 12; here, install by hand: $*"
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  printf 'Installing %s\n' "${missing[*]}"
  mkdir -p build
  as_root apt-get update >build/install.log 2>&1 || true  # an old list may be enough; if not, the next line fails
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" >>build/install.log 2>&1 ||
    { cat build/install.log >&2; die "could not install: ${missing[*]} (above: the installer's output)"; }
}

# build PRESET [TARGET...]: configures and builds; silent unless it fails.
build() {
  local preset=$1 log="build/$1.log"
  shift
  mkdir -p build
  { cmake --preset "$preset" && cmake --build "build/$preset" ${1:+--target "$@"}; } >"$log" 2>&1 ||
    { tail -n 60 "$log" >&2; die "the build \"$preset\" failed; its whole output is in $log"; }
}
