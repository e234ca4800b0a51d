#!/usr/bin/env bash
# The tests that take as long as they are given: ./test --long. BRISEL_LONG_MINUTES (60) is the time that the ten fuzz
# targets share on two cores; the soak takes half of it and random generated code a sixth.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

minutes=${BRISEL_LONG_MINUTES:-60}
targets=(spec coefficients system setup messages numbers design generators command_line forms)
cores=2
step() { echo "== $*"; }
failed=0

install_packages packages.txt packages-test.txt
build_preset release all
build_preset fuzz "${targets[@]/#/fuzz_}"
cd "$root" || exit 1
export QT_QPA_PLATFORM=offscreen

step "every test"
ctest --test-dir build/release --output-on-failure -j "$(nproc)" </dev/null || failed=1

step "every injected failure, of the jobs that draw all plots beside their other outputs too"
BRISEL_LONG=1 build/release/bin/batch_tests --gtest_brief=1 --gtest_filter='*Fault*' </dev/null || failed=1

step "random designs through generated C under gcc and clang"
BRISEL_RANDOM_CODE_SECONDS=$((minutes * 10)) build/release/bin/random_code_tests || failed=1

step "soak: batch jobs in one process"
build/release/bin/brisel_soak $((minutes * 30)) || failed=1

# fuzz_one NAME: searches on from the kept inputs and what earlier searches found.
fuzz_one() {
  local folder=build/fuzz/search/$1
  mkdir -p "$folder/inputs" "$folder/found"
  if build/fuzz/bin/fuzz_"$1" -max_total_time="$seconds_each" -max_len=2000 -timeout=60 \
    -artifact_prefix="$folder/found/" -print_final_stats=1 "$folder/inputs" "fuzz/corpus/$1" >"$folder/log" 2>&1 </dev/null; then
    echo "$1: $(sed -n 's/^stat::number_of_executed_units: //p' "$folder/log") inputs, clean"
  else
    echo "$1: FAILED, see $folder/log"
    return 1
  fi
}
export -f fuzz_one
export seconds_each=$((minutes * 60 * cores / ${#targets[@]}))

step "fuzz targets under the address and undefined behaviour sanitizers"
printf '%s\n' "${targets[@]}" |
  xargs -P "$cores" -I NAME bash -c 'fuzz_one NAME' || failed=1

[ "$failed" -eq 0 ] && echo "all of it passed"
exit "$failed"
