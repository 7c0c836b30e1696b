#!/usr/bin/env python3
"""Checks what docs/style-sheets.md says to authors: its example, the script to try style sheets with, and traps.

check_authoring.py WORK     ends with "N passed, N failed"; needs xsltproc, and Wine with its prefix
"""
import os
import re
import shutil
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from documents import samples, with_line_ends, with_tags
from results import ROOT, Results, page_example, run, shown, transformed

PAGE = "style-sheets.md"
EMPTY = """<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:template match="/"/>
</xsl:stylesheet>
"""


def script(folder, *arguments):
    """What Transform.js prints, and its exit code."""
    made = run(ROOT / "cmake" / "run-under-wine.sh", "cscript", "//nologo", "Transform.js", *arguments, cwd=folder)
    return made.stdout.decode(errors="replace").replace("\r\n", "\n"), made.returncode


def utf16(path):
    return path.read_bytes().decode("utf-16") if path.exists() else None


def same_page(text):
    """HTML without what says which encoding it is in, and without the document type."""
    return re.sub(r"<!DOCTYPE[^>]*>\s*|(?<=charset=)[-\w]+|\n$", "", text)


def check_example(results, folder):
    tags = page_example(PAGE, ">Front centre<").removeprefix("<IDTags>\n").removesuffix("</IDTags>\n")
    document = with_tags(samples()["noformat"], tags)
    (folder / "song.xml").write_bytes(with_line_ends(document, "\r\n"))
    shutil.copytree(ROOT / "XSLT", folder, dirs_exist_ok=True)
    want = page_example(PAGE, "| TITLE | Front")

    results.equal("example by xsltproc", transformed("Markdown.xslt", folder / "song.xml").stdout.decode(), want)
    printed, status = script(folder, *shown(PAGE, "cscript //nologo Transform.js (.* song.md)").split())
    results.equal("example by the script", (status, utf16(folder / "song.md")), (0, want))
    results.equal("the script says where", r"\song.md: " in printed, True)


def check_script(results, folder):
    (folder / "broken.xml").write_text("<AudioMetadata>")
    (folder / "other.xml").write_text("<Other/>")
    (folder / "entity.xslt").write_text(EMPTY.replace("/>", ">&nbsp;</xsl:template>"))
    (folder / "empty.xslt").write_text(EMPTY)
    (folder / "plain.xslt").write_text('<Plain xsl:version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"/>')
    (folder / "none").mkdir()
    before = contents(folder)
    usage = "Expected: DOCUMENT STYLESHEET OUTPUT"
    for arguments, wants in (
            (("broken.xml", "Markdown.xslt", "none.txt"), [r"\broken.xml: "]),
            (("other.xml", "Markdown.xslt", "none.txt"), [r"\other.xml: expected a document"]),
            (("song.xml", "entity.xslt", "none.txt"), [r"\entity.xslt: "]),
            (("song.xml", "no.xslt", "none.txt"), [r"\no.xslt: there is no such", usage]),
            (("no.xml", "Markdown.xslt", "none.txt"), [r"\no.xml: there is no such", usage]),
            (("song.xml", "song.xml", "none.txt"), ["expected a style sheet", usage]),
            (("song.xml", "Markdown.xslt"), [usage]),
            (("song.xml", "Markdown.xslt", "none.txt", "none.md"), [usage]),
            (("song.xml", "empty.xslt", "none.txt"), [r"\song.xml: the result is empty"]),
            (("song.xml", "plain.xslt", "SONG.xml"), ["would replace"]),
            (("song.xml", "Markdown.xslt", "Markdown.xslt"), ["would replace"]),
            (("song.xml", "Markdown.xslt", "none.FLAC"), ["would replace"]),
            (("song.xml", "Markdown.xslt", "none.WAV"), ["would replace"]),
            ((".", "Markdown.xslt", ".XML"), ["expected an extension", usage]),
            ((".", "Markdown.xslt", "."), ["expected an extension", usage]),
            ((".", "Markdown.xslt", ".none/txt"), ["expected an extension", usage]),
            ((".", "Markdown.xslt", ".flac"), ["song.flac: this would replace", "0 written"]),
            ((".", "Markdown.xslt", "none.txt"), ["expected an extension", usage]),
            (("none", "Markdown.xslt", ".txt"), ["0 written, 0 failed"])):
        printed, status = script(folder, *arguments)
        missing = [want for want in wants if want not in printed]
        results.equal(f"the script with {arguments}", (status, missing, contents(folder) == before), (1, [], True))


def temporary_files():
    """By the names that GetTempName gives them."""
    return set(Path(os.environ["WINEPREFIX"]).rglob("Temp/rad*.tmp"))


def contents(folder):
    return {path: path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def check_folders(results, folder):
    """Every document in a folder and those below it, by the script and as the page shows for other systems."""
    music = folder / "music"
    below = music / "Łódź & 100%" / "below.xml"
    below.mkdir(parents=True)
    songs = [music / "a song.xml", below / "sóng.XML", *(below / f"{i}.xml" for i in range(98))]
    for song in songs:
        shutil.copy(folder / "song.xml", song)
    (music / "broken.xml").write_text("<AudioMetadata>")
    (below / "other.xml").write_text("<Other/>")
    (below / "song.xmlx").write_text("")
    before, earlier = contents(music), temporary_files()
    command = shown(PAGE, r"cscript //nologo Transform.js (D:\\Music .*)").replace(r"D:\Music", "music")
    printed, status = script(folder, *command.split())
    results.equal("a folder by the script", (status, re.findall(r"(?m)^\d.*|broken.xml(?=: )", printed)),
                  (1, ["broken.xml", "100 of 102", "100 written, 1 failed, 1 are no documents"]))
    want = transformed("Html.xslt", folder / "song.xml").stdout.decode()
    pages = {song.with_suffix(".html"): same_page(want) for song in songs}
    made = {path: same_page(utf16(path)) for path in contents(music) if path not in before}
    results.equal("pages by the script", made, pages)
    (folder / "one").mkdir()
    for path in (folder / "song.xml", below / "other.xml", music / "a song.html"):
        shutil.copy(path, folder / "one" / path.name.replace("a song", "song"))
    printed, status = script(folder, "one", "Markdown.xslt", ".html")
    results.equal("one document by the script", (status, printed, utf16(folder / "one" / "song.html")),
                  (0, "1 written, 0 failed, 1 are no documents\n", utf16(folder / "song.md")))
    results.equal("temporary files that the script leaves", temporary_files() - earlier, set())
    results.equal("no document changed", [path for path in before if path.read_bytes() != before[path]], [])

    for page in pages:
        page.unlink()
    shutil.copytree(ROOT / "XSLT", folder / "XSLT")
    made = run("env", f"HOME={folder}", "bash", "-c", shown(PAGE, "find .*xsltproc .*"), cwd=music)
    results.equal("a folder by find names what is broken", b"broken.xml:1: parser error" in made.stderr, True)
    results.equal("pages by find", (music / "a song.html").read_text("utf-8"), want)


def check_missing(results, folder):
    """The commands that name the documents missing after a batch."""
    batch = folder / "batch" / "a folder below"
    batch.mkdir(parents=True)
    for name, size in (("made.flac", 1), ("made.xml", 1), ("not made.flac", 1), ("empty.flac", 1), ("empty.xml", 0)):
        (batch / name).write_text("x" * size)
    for command in ("for .*flac.*", "for .*xml.*==0.*", "find .*flac.*", "find .* -empty"):
        line = shown("troubleshooting.md", command)
        shell = [ROOT / "cmake" / "run-under-wine.sh", "cmd"] if line.startswith("for") else ["bash"]
        made = run(*shell, stdin=line.encode() + b"\n", cwd=folder / "batch").stdout.decode(errors="replace")
        names = re.findall(r"below[\\/](.*?)\r?\n", made)
        results.equal(line, names, ["not made.flac" if "flac" in command else "empty.xml"])


def main():
    folder = Path(sys.argv[1]).resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    results = Results()
    check_example(results, folder)
    check_script(results, folder)
    check_folders(results, folder)
    check_missing(results, folder)
    return results.status()


if __name__ == "__main__":
    sys.exit(main())
