#!/usr/bin/env python3
"""Checks with LibreOffice that a spreadsheet has what Csv.xslt wrote: check_spreadsheet.py WORK

Imports what the style sheet makes of the sample documents with the command that the page shows, and compares
what the program then exports. Ends with "N passed, N failed"; the exit status is 1 when something failed.
"""
import os
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from check_sheets import ROOT, Results, run, run_shown
from documents import samples, with_line_ends


def plain(text):
    """Texts in quotes, numbers in 15 digits, no TABs, which the program leaves out, and nothing for empty texts."""
    def cell(found):
        cell = found[0]
        if re.fullmatch(r"-?\d+(\.\d+E\+\d+)?", cell):
            return f"{float(cell):.15g}"
        return "" if cell == '""' else f'"{cell}"' if cell.isalpha() else cell
    text = text.replace("\r\n", "\n").replace("\t", "")
    return re.sub(r'"(?:[^"]|"")*"|[^",\n]+', cell, text)


def exported(work):
    """What song.ods holds, as CSV with texts in quotes and numbers as they are, results of formulas among them."""
    run("soffice", "--headless", "--convert-to", "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,true,false",
        "--outdir", "exported", "song.ods", cwd=work)
    (work / "song.ods").unlink()
    return plain((work / "exported" / "song.csv").read_text("utf-8"))


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        print(__doc__.strip())
        return 0 if sys.argv[1:] == ["--help"] else 2
    work, results = Path(sys.argv[1]).resolve(), Results()
    work.mkdir(parents=True, exist_ok=True)
    os.environ["HOME"] = str(work)  # the program keeps its settings there
    for name, document in samples().items():
        if name == "long":  # a cell does not hold its values
            continue
        data = run("xsltproc", ROOT / "XSLT" / "Csv.xslt", "-", stdin=with_line_ends(document, "")).stdout
        (work / "song.csv").write_bytes(data)
        run_shown("soffice", work)
        results.equal(name, exported(work), plain(data.decode("utf-8-sig")))
        if name == "nasty":  # what the page warns of
            run("soffice", "--headless", "--convert-to", "ods", "song.csv", cwd=work)
            opened = exported(work)
            results.equal("opened as it is", [text in opened for text in ('"again",2,', ",49123,")], [True, True])
    print(f"{results.passed} passed, {results.failed} failed")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
