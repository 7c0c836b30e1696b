#!/usr/bin/env python3
"""Checks with LibreOffice that a spreadsheet has what Csv.xslt wrote: check_spreadsheet.py WORK

Imports what the style sheet makes of the sample documents with the command that the page shows, and compares
the cells. Ends with "N passed, N failed"; the exit status is 1 when something failed.
"""
import os
import sys
import zipfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from check_sheets import ROOT, Results, read_csv, run, run_shown
from documents import samples, with_line_ends

OFFICE, TABLE, TEXT = (f"{{urn:oasis:names:tc:opendocument:xmlns:{name}:1.0}}"
                       for name in ("office", "table", "text"))


def text_of(element):
    """The text of a paragraph, whose blanks in a row, TABs and line breaks are elements."""
    own = {TEXT + "s": " " * int(element.get(TEXT + "c", "1")), TEXT + "tab": "\t", TEXT + "line-break": "\n"}
    parts = [own.get(element.tag, ""), element.text or ""]
    for child in element:
        parts += [text_of(child), child.tail or ""]
    return "".join(parts)


def digits(number):
    return f"number {float(number):.15g}"


def read_ods(path):
    """Rows of cells: numbers in 15 digits, all else as text, formulas behind the word."""
    with zipfile.ZipFile(path) as archive:
        content = ElementTree.fromstring(archive.read("content.xml"))
    rows = []
    for row in content.iter(TABLE + "table-row"):
        cells = []
        for cell in row.iter(TABLE + "table-cell"):
            value = "\n".join(text_of(paragraph) for paragraph in cell.findall(TEXT + "p"))
            if cell.get(OFFICE + "value-type") == "float":
                value = digits(cell.get(OFFICE + "value"))
            if cell.get(OFFICE + "value-type") == "date":
                value = cell.get(OFFICE + "date-value")
            if cell.get(TABLE + "formula"):
                value = "formula " + cell.get(TABLE + "formula")
            cells += [value] * int(cell.get(TABLE + "number-columns-repeated", "1"))
        rows.append(cells)
    return rows


def main():
    work, results = Path(sys.argv[1]).resolve(), Results()
    work.mkdir(parents=True, exist_ok=True)
    os.environ["HOME"] = str(work)  # the program keeps its settings there
    for name, document in samples().items():
        if name == "long":  # a cell does not hold its values
            continue
        data = run("xsltproc", ROOT / "XSLT" / "Csv.xslt", "-", stdin=with_line_ends(document, "")).stdout
        (work / "song.csv").write_bytes(data)
        (work / "song.ods").unlink(missing_ok=True)
        run_shown("soffice", work)
        rows = read_csv(data, "utf-8-sig")
        numbers = range(rows[0].index("FileSize"), rows[0].index("FileBitrate") + 1), range(
            rows[0].index("Channels"), rows[0].index("AvgBytesPerSec") + 1)
        want = [rows[0]] + [[digits(cell) if any(pos in columns for columns in numbers)
                             else cell.replace("\t", "")  # which the program leaves out
                             for pos, cell in enumerate(row)] for row in rows[1:]]
        got = [row[:len(rows[0])] for row in read_ods(work / "song.ods")]
        results.equal(name, got, want)
        if name == "nasty":  # what the page warns of
            run("soffice", "--headless", "--convert-to", "ods", "song.csv", cwd=work)
            opened = dict(zip(rows[0], read_ods(work / "song.ods")[2]))
            results.equal("opened as it is", (opened["IDTags/FileName"], opened["IDTags/ALBUM"]),
                          ("formula of:=1+1", "number 49123"))
    print(f"{results.passed} passed, {results.failed} failed")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
