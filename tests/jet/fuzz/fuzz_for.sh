#!/bin/sh
# Fuzzes the reading and writing of database files as long as one likes: fuzz_for.sh SECONDS [FOLDER]
# New inputs and findings stay in FOLDER (default: build/fuzz).
set -e
root=$(cd "$(dirname "$0")/../../.." && pwd)
folder=${2:-$root/build/fuzz}
mkdir -p "$folder/corpus"
bash "$root/tests/jet/fuzz/build_fuzzer.sh" "${CXX_FUZZER:-clang++}" "$root" "$folder/jet_fuzz"
cd "$folder"
exec ./jet_fuzz -max_total_time="$1" -max_len=4096 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    corpus "$root/tests/jet/fuzz/corpus"
