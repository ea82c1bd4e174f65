#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs each in turn for SECONDS (default 600) on a seed
# corpus made afresh, one target for each reader of outside input:
#   fuzz_history_text    history text (Base64 of zlib of a keyed archive)
#   fuzz_keyed_archive   keyed archives, binary or XML
#   fuzz_tar_listing     tar archives, and tar's own listing of one
#   fuzz_plist           property lists, binary or XML, and the settings file
#   fuzz_vcard_note      shared vCards and address-book notes, old and current
#   fuzz_package_files   the package scan, the package manager's settings and apt list
#   fuzz_restore_log     session package lines and apt-get's install logs
#   fuzz_multistatus     a WebDAV share's PROPFIND reply
#   fuzz_dropbox_reply   Dropbox's JSON replies: the account, listings, uploads
#   fuzz_box_reply       Box's JSON replies: tokens, the user, folder items, uploads
# Each target's output goes to build-fuzz/logs/TARGET.log, ending with its final stats.
# The tar target's corpus is then read by the host's tar too, which must read the same names.
# Findings stay in build-fuzz/findings/TARGET/; a finding fails the script. CPU is shared:
# run it under nice.
#   scripts/fuzz.sh [SECONDS] [TARGET...]      all targets when none is named
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(fuzz_history_text fuzz_keyed_archive fuzz_tar_listing fuzz_plist
  fuzz_vcard_note fuzz_package_files fuzz_restore_log fuzz_multistatus fuzz_dropbox_reply fuzz_box_reply)

# libstdc++ 12's <source_location> needs clang 15 or later; Debian 12 has clang 16.
clang=clang++-16
if ! command -v "$clang" >/dev/null || [ ! -e /usr/lib/llvm-16/lib/clang/16/lib/linux/libclang_rt.fuzzer-x86_64.a ]; then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq clang-16 libclang-rt-16-dev >/dev/null
fi

dir=build-fuzz
scripts/build.sh "$dir" -DCMAKE_CXX_COMPILER="$clang" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DSTOWHAVEN_FUZZ=ON -DSTOWHAVEN_TESTS=OFF -DSTOWHAVEN_BENCH=OFF

rm -rf "$dir/seeds"
"$dir/fuzz/make_fuzz_seeds" "$dir/seeds"
export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for target in "${targets[@]}"; do
  corpus="$dir/corpus/$target"
  findings="$dir/findings/$target"
  log="$dir/logs/$target.log"
  mkdir -p "$corpus" "$findings" "$dir/logs"
  echo "== $target for $seconds s (log: $log)"
  if ! "$dir/fuzz/$target" "$corpus" "$dir/seeds/${target#fuzz_}" -max_total_time="$seconds" -max_len=65536 \
    -timeout=10 -rss_limit_mb=2048 -artifact_prefix="$findings/" -print_final_stats=1 >"$log" 2>&1; then
    status=1
    echo "   FINDING: see $log and $findings/"
  fi
  { grep -E '^(#[0-9]+[[:space:]]+DONE|Done [0-9]+ runs|stat::(average_exec_per_sec|peak_rss_mb))' "$log" || true; } |
    sed 's/^/   /'
  # The host's tar is too slow for the fuzzing loop: it reads the corpus once at the end.
  if [ "$target" = fuzz_tar_listing ]; then
    echo "   the corpus against the host's tar" | tee -a "$log"
    if ! STOWHAVEN_FUZZ_AGAINST_TAR=1 "$dir/fuzz/$target" "$corpus" -runs=0 -max_len=65536 \
      -artifact_prefix="$findings/" >>"$log" 2>&1; then
      status=1
      echo "   FINDING: see $log and $findings/"
    fi
  fi
done
exit $status
