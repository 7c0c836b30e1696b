#!/usr/bin/env bash
# Fuzzes the code that calls no Win32, natively, with address and undefined-behaviour sanitizers.
#
#   scripts/fuzz.sh [RUNS]      30,000 runs unless told otherwise, always from the same seed

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages clang libclang-rt-14-dev

cd "$root"
rm -rf build/fuzz
mkdir -p build/fuzz/corpus
clang++ -std=c++20 -g -O1 -I . -fshort-wchar -fno-builtin -Wall -Wextra -Werror \
    -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    tests/fuzz/PureCodeFuzz.cpp support/{Paths,Utf16View,XString,XStringList}.cpp \
    metadata/{Document,TagList,WaveFormat,XmlText}.cpp plugin/ParseOptions.cpp -o build/fuzz/fuzz

# Some settings texts, paths and tag lists to start from.
python3 - build/fuzz/corpus <<'PYTHON'
import struct, sys

def tag_list(*entries):
    packed = struct.pack("<i", len(entries))
    for name, value, raw in entries:
        body = (name + "\0" + value + "\0").encode("utf-16-le") + raw
        packed += struct.pack("<i", len(body) + 4) + body
    return packed

samples = {
    "options": '-xsltfile="C:\\My Files\\a-b.xsl" --ext = .txt -filename="x" -'.encode("utf-16-le"),
    "path": "C:\\Music\\Track.01\\song.tar.gz".encode("utf-16-le"),
    "tags": tag_list(("Title", "a & b <c>", b""), ("Artist", "A\rB\r", b""), ("Cover", "png", b"12345"), ("_x", "", b"")),
}
for name, data in samples.items():
    with open(f"{sys.argv[1]}/{name}", "wb") as file:
        file.write(data)
PYTHON
runs=${1:-30000}
if ! build/fuzz/fuzz -runs="$runs" -seed=1 -max_len=600 -verbosity=0 -artifact_prefix=build/fuzz/ build/fuzz/corpus \
    >build/fuzz/log 2>&1; then
    cat build/fuzz/log >&2
    fail "the fuzzer found a fault"
fi
echo "$runs fuzzed inputs, no fault"
