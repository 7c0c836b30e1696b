#!/usr/bin/env bash
# Checks with LibreOffice that a spreadsheet has what Csv.xslt wrote. Not one of the tests: it installs 200 MB.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages libreoffice-calc-nogui python3 xsltproc

python3 "$root/tests/stylesheets/check_spreadsheet.py" "$root/build/spreadsheet"
