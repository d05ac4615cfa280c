#!/usr/bin/env bash
# run-fuzzers.sh BUILD_DIR SECONDS: runs every fuzz target of BUILD_DIR for
# SECONDS on a copy of its seed corpus (fuzz/corpus/<target>), failing on the
# first crash, sanitizer report or leak.
set -euo pipefail
build=$1
seconds=$2
root=$(cd "$(dirname "$0")/.." && pwd)
passed=0
failed=0
for fuzzer in "$build"/bin/fuzz_*; do
    [[ -x $fuzzer ]] || continue
    name=$(basename "$fuzzer")
    corpus=$(mktemp -d)
    cp -r "$root/fuzz/corpus/$name/." "$corpus/" 2>/dev/null || true
    echo "=== $name for ${seconds}s"
    if "$fuzzer" -max_total_time="$seconds" -rss_limit_mb=2048 -max_len=4096 -print_final_stats=1 \
        "$corpus" > "$build/$name.log" 2>&1; then
        passed=$((passed + 1))
        tail -n 3 "$build/$name.log"
    else
        failed=$((failed + 1))
        tail -n 60 "$build/$name.log"
    fi
    rm -rf "$corpus"
done
echo "$passed passed, $failed failed"
[[ $failed == 0 ]]
