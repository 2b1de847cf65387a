#!/usr/bin/env bash
# Builds the fuzzer of database files: build_fuzzer.sh CLANG++ ROOT OUTPUT
set -euo pipefail
shopt -s extglob
# all sources as one: clang reads the standard library once
printf '#include "%s"\n' "$2"/tests/jet/fuzz/jet_fuzz.cpp "$2"/tests/jet/jet3_file.cpp "$2"/src/files/!(*windows).cpp "$2"/src/jet/!(*windows).cpp |
    "$1" -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
        -I "$2/src" -I "$2/tests" -x c++ - -o "$3"
