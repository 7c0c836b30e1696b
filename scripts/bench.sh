#!/usr/bin/env bash
# Measures the plug-in against other ways to do the same; docs/performance.md tells what the rows mean.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git googletest wine wine64 \
    librapidxml-dev

build mingw-release WriteMetadataFile bench
start_wine wine

cd "$root/build/mingw-release"
timeout 600 wine bench/bench.exe dist\\WriteMetadataFile.dll dist\\XSLT\\{Html,Text,Json,Csv,CsvLong,VorbisComments,FFMetadata}.xslt
