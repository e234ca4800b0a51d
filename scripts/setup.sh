# Shared by run, test and .ci/run, which source it: finds the project, installs what is missing and builds.
# Nothing here depends on the caller's directory.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# Compiler results are kept by content, so that a second clone does not compile everything again.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1

fail() {
  echo "${0##*/}: $*" >&2
  exit 1
}

# Runs a command and shows what it printed only when it fails; all of it goes to standard error.
quietly() {
  local log
  log=$(mktemp) || return 1
  if "$@" >"$log" 2>&1 </dev/null; then
    rm -f "$log"
  else
    cat "$log" >&2
    rm -f "$log"
    return 1
  fi
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  else
    sudo -n true 2>/dev/null || echo "${0##*/}: sudo may ask for your password" >&2
    sudo "$@"
  fi
}

# The Debian packages of packages.txt that are not installed, one a line.
missing_packages() {
  local wanted
  wanted=$(sed 's/#.*//' "$root/packages.txt" | awk 'NF { print $1 }')
  # shellcheck disable=SC2086
  comm -23 <(sort -u <<<"$wanted") \
    <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' $wanted 2>/dev/null | awk '$2 == "installed" { print $1 }' | sort -u)
}

install_packages() {
  command -v dpkg-query >/dev/null || fail "Debian packages are needed (packages.txt), and there is no dpkg here"
  local missing
  missing=$(missing_packages)
  [ -z "$missing" ] && return 0
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
    fail "run this once as root, or install with apt-get:" $missing
  echo "${0##*/}: installing" $missing >&2
  quietly as_root apt-get update || fail "apt-get update failed"
  # shellcheck disable=SC2086
  quietly as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing ||
    fail "apt-get install failed"
}

# build_preset PRESET [TARGET...]: configures the preset once and builds the targets; prints only when that fails. One
# build of a preset runs at a time, whoever started it.
build_preset() {
  local preset=$1 folder=$root/build/$1
  shift
  mkdir -p "$folder" || fail "cannot create $folder"
  (
    cd "$root" || exit 1
    exec 9>"$folder/.lock"
    flock 9
    if [ ! -e "$folder/build.ninja" ]; then
      echo "${0##*/}: building $preset, which takes some minutes the first time" >&2
      quietly cmake --preset "$preset" 9>&- || exit 1
    fi
    quietly ninja -C "$folder" "$@" 9>&-
  ) || fail "the $preset build failed"
}
