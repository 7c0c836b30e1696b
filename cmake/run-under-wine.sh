#!/usr/bin/env bash
# Runs a program under Wine and passes its output on when it has ended. Not straight away: a program that shows a
# window starts Wine's desktop if there is none, the desktop inherits the program's output for as long as it lives, and
# whoever reads from a pipe would wait for that long.
#
#   run-under-wine.sh PROGRAM [ARGUMENT…]

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
wine "$@" >"$folder/out" 2>"$folder/error"
status=$?
cat "$folder/out"
cat "$folder/error" >&2
exit $status
