#!/usr/bin/env python3
"""Checks what docs/style-sheets.md says to authors: its example, the script to try style sheets with, and traps.

check_authoring.py WORK     ends with "N passed, N failed"; needs xsltproc, cmark-gfm, and Wine with its prefix
"""
import re
import shutil
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from documents import samples, with_line_ends
from results import ROOT, Results, page_example, run

PAGE = "style-sheets.md"
# Shows a parameter and the number of documents that document() finds, with a style sheet from a folder beside it.
TRAPS = """<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:import href="parts/table.xslt"/>
    <xsl:param name="style" select="'own'"/>
    <xsl:template match="/">
        <xsl:message>nowhere</xsl:message>
        <xsl:value-of select="concat($style, ' ', count(document('table.xslt')/*), ' ', count(document('')/*))"/>
    </xsl:template>
</xsl:stylesheet>
"""


def script(folder, *arguments):
    """What TryStyleSheet.js prints, and its exit code."""
    made = run(ROOT / "cmake" / "run-under-wine.sh", "cscript", "//nologo", "TryStyleSheet.js", *arguments,
               cwd=folder)
    return made.stdout.decode().replace("\r\n", "\n"), made.returncode


def utf16(path):
    return path.read_bytes().decode("utf-16") if path.exists() else None


def same_page(text):
    """HTML without what says which encoding it is in, and without the document type."""
    return re.sub(r"<!DOCTYPE[^>]*>\s*|(?<=charset=)[-\w]+|\n$", "", text)


def check_example(results, folder):
    speech, tags = samples()["speech"], page_example(PAGE, ">Front centre<")
    head, _ = speech.rsplit("\t\t<IDTags>", 1)
    indented = "".join(f"\t\t{line}\n" for line in tags.splitlines())
    document = head + indented + "\t</ConvertedFile>\n</AudioMetadata>\n"
    (folder / "song.xml").write_bytes(with_line_ends(document, "\r\n"))
    (folder / "table.xslt").write_text(page_example(PAGE, "| tag | value |&#10;"), "utf-8")
    want = page_example(PAGE, "| TITLE | Front")

    made = run("xsltproc", "table.xslt", "song.xml", cwd=folder)
    results.equal("example by xsltproc", (made.stdout.decode(), made.stderr), (want, b""))
    table = run("cmark-gfm", "--extension", "table", stdin=want.encode()).stdout.decode()
    results.equal("example is a table", re.findall("<td>(.*?)</td>", table)[-2:], ["DISC/NO", "1/2"])

    command = re.search(r"(?m)^    cscript //nologo TryStyleSheet.js (.*)$", (ROOT / "docs" / PAGE).read_text("utf-8"))
    printed, status = script(folder, *command[1].split())
    results.equal("example by the script", (status, utf16(folder / "song.md")), (0, want))
    results.equal("the script says where", r"\song.md: " in printed, True)


def check_script(results, folder):
    for sheet in sorted((ROOT / "XSLT").glob("*.xslt")):
        shutil.copy(sheet, folder)
        _, status = script(folder, "song.xml", sheet.name, "out.txt")
        want = run("xsltproc", sheet.name, "song.xml", cwd=folder).stdout.decode()
        got = utf16(folder / "out.txt")
        results.equal(f"{sheet.name} by the script", (status, same_page(got)), (0, same_page(want)))

    (folder / "parts").mkdir(exist_ok=True)
    shutil.copy(folder / "table.xslt", folder / "parts")
    (folder / "traps.xslt").write_text(TRAPS)
    script(folder, "song.xml", "traps.xslt", "out.txt")
    results.equal("traps", utf16(folder / "out.txt"), "own 0 1")

    (folder / "broken.xml").write_text("<AudioMetadata>")
    (folder / "entity.xslt").write_text(TRAPS.replace("nowhere", "&nbsp;"))
    for label, arguments, want in (
            ("a broken document", ("broken.xml", "table.xslt", "none.txt"), r"\broken.xml: "),
            ("a name from HTML", ("song.xml", "entity.xslt", "none.txt"), r"\entity.xslt: "),
            ("a missing style sheet", ("song.xml", "missing.xslt", "none.txt"), r"\missing.xslt: there is no such"),
            ("two arguments", ("song.xml", "table.xslt"), "DOCUMENT STYLESHEET OUTPUT")):
        printed, status = script(folder, *arguments)
        results.equal(f"the script and {label}", (status, want in printed), (1, True))
    results.equal("no output after an error", (folder / "none.txt").exists(), False)


def main():
    folder = Path(sys.argv[1])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    shutil.copy(ROOT / "XSLT" / "TryStyleSheet.js", folder)
    results = Results()
    check_example(results, folder)
    check_script(results, folder)
    print(f"{results.passed} passed, {results.failed} failed")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
