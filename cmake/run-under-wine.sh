#!/usr/bin/env bash
# Runs a program under Wine and writes its output when it has ended. Not earlier: a program that shows a window starts
# Wine's desktop if there is none, the desktop inherits the program's output, and whoever reads that from a pipe would
# wait until the desktop ends.
#
#   run-under-wine.sh PROGRAM [ARGUMENT…]

folder=$(mktemp -d) || exit
# Also when a time limit ends the program.
trap 'cat "$folder/out"; cat "$folder/error" >&2; rm -rf "$folder"' EXIT
wine "$@" >"$folder/out" 2>"$folder/error"
