#!/bin/sh
# Builds the fuzzer of database files: build_fuzzer.sh CLANG++ ROOT OUTPUT
set -e
exec "$1" -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    -I "$2/src" -I "$2/tests" "$2"/tests/jet/fuzz/jet_fuzz.cpp "$2"/tests/jet/jet3_file.cpp \
    $(ls "$2"/src/jet/*.cpp | grep -v windows) -o "$3"
