# Shared by run, test and .ci/run, which source it: finds the project, installs what is missing and builds.
# Nothing here depends on the caller's directory.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# Compiler results are kept by content, so that a second clone does not compile everything again.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1

fail() {
  echo "${0##*/}: $*" >&2
  exit 1
}

say() {
  echo "${0##*/}: $*" >&2
}

# quietly COMMAND...: shows what the command printed only when it fails, and while it takes long the last line of it every
# 20 seconds; all of it goes to standard error.
quietly() {
  local log reporter status
  log=$(mktemp) || return 1
  while sleep 20 >/dev/null 2>&1 && kill -0 $$ 2>/dev/null; do
    say "... $(tail -n 1 "$log" | tr -dc '[:print:]' | cut -c 1-100)"
  done </dev/null >/dev/null &
  reporter=$!
  "$@" >"$log" 2>&1 </dev/null
  status=$?
  { kill "$reporter" && wait "$reporter"; } 2>/dev/null
  [ "$status" -eq 0 ] || cat "$log" >&2
  rm -f "$log"
  return "$status"
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  else
    sudo -n true 2>/dev/null || say "sudo may ask for your password"
    sudo "$@"
  fi
}

# missing_packages LIST...: the Debian packages of the lists that are not installed, one a line.
missing_packages() {
  local wanted
  wanted=$(cd "$root" && sed 's/#.*//' "$@" | awk 'NF { print $1 }')
  # shellcheck disable=SC2086
  comm -23 <(sort -u <<<"$wanted") \
    <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' $wanted 2>/dev/null | awk '$2 == "installed" { print $1 }' | sort -u)
}

# install_packages LIST...
install_packages() {
  command -v dpkg-query >/dev/null || fail "Debian packages are needed ($*), and there is no dpkg here"
  local missing
  missing=$(missing_packages "$@")
  [ -z "$missing" ] && return 0
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
    fail "run this once as root, or install with apt-get:" $missing
  say "installing, which takes some minutes the first time:" $missing
  quietly as_root apt-get update || fail "apt-get update failed"
  # shellcheck disable=SC2086
  quietly as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing ||
    fail "apt-get install failed"
}

# build_preset PRESET [TARGET...]: configures the preset once and builds the targets; prints only when that fails or takes
# long. One build of a preset runs at a time, whoever started it. with_tests=OFF leaves the tests out, which need
# packages of their own, unless they were configured before.
build_preset() {
  local preset=$1 folder=$root/build/$1 tests=${with_tests:-ON}
  shift
  mkdir -p "$folder" || fail "cannot create $folder"
  (
    cd "$root" || exit 1
    exec 9>"$folder/.lock"
    flock -n 9 || { say "waiting for another build of $preset" && flock 9; }
    if [ ! -e "$folder/build.ninja" ] ||
      { [ "$tests" = ON ] && grep -qs '^BRISEL_TESTS:BOOL=OFF' "$folder/CMakeCache.txt"; }; then
      say "building $preset, which takes some minutes the first time"
      quietly cmake --preset "$preset" "-DBRISEL_TESTS=$tests" 9>&- || exit 1
    fi
    quietly ninja -C "$folder" "$@" 9>&-
  ) || fail "the $preset build failed"
}
