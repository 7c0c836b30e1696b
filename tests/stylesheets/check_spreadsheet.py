#!/usr/bin/env python3
"""Checks with LibreOffice that a spreadsheet has what Csv.xslt wrote: check_spreadsheet.py WORK

Imports what the style sheet makes of the sample documents with the command that the page shows, and compares what the
program then exports, texts in quotes and numbers as they are, with spreadsheet/. Ends with "N passed, N failed"; the
exit status is 1 when something failed.
"""
import os
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from documents import samples, with_line_ends
from results import Results, run, shown, transformed


def main():
    work, results = Path(sys.argv[1]).resolve(), Results()
    work.mkdir(parents=True, exist_ok=True)
    os.environ["HOME"] = str(work)  # the program keeps its settings there
    documents = samples()
    del documents["long"]  # a cell does not hold its values
    for name, document in documents.items():
        (work / "song.csv").write_bytes(transformed("Csv.xslt", with_line_ends(document, "")).stdout)
        run("bash", "-c", shown("style-sheets.md", "soffice .*"), cwd=work)
        run("soffice", "--headless", "--convert-to", "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,true,false",
            "--outdir", "exported", "song.ods", cwd=work)
        (work / "song.ods").unlink()
        (work / "exported" / "song.csv").rename(work / "exported" / f"{name}.csv")
    compared = run("diff", "-r", Path(__file__).with_name("spreadsheet"), work / "exported")
    results.equal("spreadsheets", compared.stdout.decode(), "")
    return results.status()


if __name__ == "__main__":
    sys.exit(main())
