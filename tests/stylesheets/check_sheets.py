#!/usr/bin/env python3
"""Checks the shipped style sheets and the schema with the programs that read what they make.

check_sheets.py WORK           makes sample documents, transforms them with xsltproc, and compares with expected/
check_sheets.py WORK PRODUCED  checks the files in PRODUCED that the plug-in made of each document: beside NAME.xml
                               lies NAME with each extension of SHEETS below

Ends with "N passed, N failed"; the exit status is 1 when something failed. Needs xsltproc, xmllint, flac,
metaflac, ffmpeg, ffprobe, jq and sqlite3. The commands that the pages show are run as they stand there.
"""
import csv
import io
import json
import re
import shutil
import subprocess
import sys
import wave
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from documents import LONG, entry_line, samples, with_line_ends
from results import ROOT, Results, folders_of, page_example, run
from schema import check_schema

PAGE = (ROOT / "docs" / "style-sheets.md").read_text("utf-8")
EXPECTED = Path(__file__).with_name("expected")
METAFLAC_LINE = 65534  # bytes that metaflac takes in one line
FFMPEG_NAMES = {"tracknumber": "track", "discnumber": "disc", "albumartist": "album_artist",
                "album artist": "album_artist", "description": "comment"}


def shown(start):
    """The indented command of the page that begins so."""
    return re.search(rf"(?m)^ {{4,}}({re.escape(start)}.*)$", PAGE)[1]


def run_shown(start, folder):
    return run("bash", "-c", shown(start), cwd=folder)


def import_tags(folder):
    return run("bash", "-c", page_example("style-sheets.md", "[ -s song.vc ]", "sh"), cwd=folder)


class Song:
    """What Json.xslt made of a document. The other forms must hold the same."""

    def __init__(self, document):
        self.audio = document.with_suffix(".flac")
        self.sides = json.loads(document.with_suffix(".json").read_bytes())
        self.converted = self.sides["ConvertedFile"]
        self.tags = self.converted["IDTags"]
        folder = self.converted["FileNamePath"]  # of a name without a backslash it is the name
        self.path = (folder if "\\" in folder else "") + self.converted["FileName"]

    def lists(self):
        """The four lists: file, list, and the values by name."""
        return [(side, name, facts[name]) for side, facts in self.sides.items()
                for name in ("AudioProperties", "IDTags")]


def fold(name):
    return re.sub("[A-Z]+", lambda letters: letters[0].lower(), name)


def grouped(entries, key=lambda name: name):
    groups = {}
    for name, values in entries:
        groups.setdefault(key(name), []).extend(values)
    return groups


# The programs that read each form.

def check_json(results, label, _data, song, _work):
    if label == "long.json":
        want = grouped((name, value.replace("\r\n", "\n").split("\r")) for name, value in LONG)
        results.equal(label, list(song.tags.items()), list(want.items()))


def read_csv(data, encoding="utf-8"):
    csv.field_size_limit(10 ** 9)
    rows = list(csv.reader(io.StringIO(data.decode(encoding), newline=""), strict=True))
    if data.count(b"\r\n") != len(rows) or data.count(b"\r") != len(rows) or rows and data[-2:] != b"\r\n":
        raise csv.Error("rows do not end with CR LF")
    if len({len(row) for row in rows}) > 1:
        raise csv.Error("rows have not the same number of cells")
    return rows


def check_csv(results, label, data, song, _work):
    results.equal(label + " byte-order mark", data[:7], b"\xef\xbb\xbfFile")
    head, *rows = read_csv(data, "utf-8-sig")
    for row, facts in zip(rows, song.sides.values()):
        want = {f"{name}/{key}": "; ".join(values) for name in ("AudioProperties", "IDTags")
                for key, values in facts[name].items()}
        results.equal(label, {key: cell for key, cell in zip(head, row) if "/" in key and (cell or key in want)}, want)


def check_csv_long(results, label, data, song, _work):
    want = [[song.path, f"{side}/{name}", key, str(index), value] for side, name, entries in song.lists()
            for key, values in entries.items() for index, value in enumerate(values, 1)]
    results.equal(label, [row for row in read_csv(data)
                          if row[1].endswith(("/AudioProperties", "/IDTags"))], want)


def check_text(results, label, data, _song, _work):
    results.equal(label + " line ends", re.findall(rb"(?<!\r)\n|\r(?!\n)", data), [])


def elements(html):
    return list(ElementTree.fromstring(run("xmllint", "--html", "--huge", "--xmlout", "-", stdin=html).stdout).iter())


def page_text(html):
    """The page's paragraphs and rows, a line each; a slash parts the values of one cell."""
    def text(element):
        return " / ".join("".join(block.itertext()) for block in element.findall("div") or [element])
    return "".join(" | ".join(map(text, element if element.tag == "tr" else [element])) + "\n"
                   for element in elements(html) if element.tag in ("h1", "p", "tr", "footer"))


def check_html(results, label, data, song, _work):
    page = elements(data)
    values = [value for row in page if row.tag == "tr" and row.find("th/bdi") is not None
              for value in row.findall("td/div")]
    results.equal(label + " values", Counter(value.text or "" for value in values),
                  Counter(value for *_, entries in song.lists() for values in entries.values() for value in values))
    boxes = [len(value.text or "") > 1200 for value in values]
    results.equal(label + " scroll", [(value.get("class"), value.get("tabindex")) for value in values],
                  [("value long", "0") if box else ("value", None) for box in boxes])
    results.equal(label + " badges", [badge.text for badge in page if badge.tag == "span" and not badge.text], [])
    styles = "".join(element.text for element in page if element.tag == "style")
    outside = {"src", "href", "srcset", "data", "action", "script", "link", "iframe", "object"}
    used = {name for element in page for name in (element.tag, *element.attrib)}
    results.equal(label + " alone", (used & outside, re.findall(r"url\(|@import", styles)), (set(), []))


def check_vorbis(results, label, data, song, work):
    want = [f"{name}={value}".replace("\n", " ") for name, values in song.tags.items()
            for value in values if re.fullmatch(r"[ -<>-}]*", name)]
    results.equal(label, data.decode().split("\n"), want + [""])

    def exported():
        return run("metaflac", "--no-utf8-convert", "--export-tags-to=-", work / "song.flac").stdout.decode()
    shutil.copy(work / "tone.flac", work / "song.flac")
    run("metaflac", "--set-tag=OLD=tag", work / "song.flac")
    short = [line for line in want if len(line.encode()) <= METAFLAC_LINE]
    if short != want:
        (work / "song.vc").write_bytes(data)
        failed = import_tags(work).returncode
        results.equal(label + " with a line too long", (failed, exported()), (1, "OLD=tag\n"))
    (work / "song.vc").write_text("".join(line + "\n" for line in short), "utf-8")
    results.equal(label + " import", import_tags(work).stderr, b"")
    # An empty file leaves the tags as they are.
    results.equal(label + " metaflac", exported().split("\n"), (short or ["OLD=tag"]) + [""])


def ffprobe_tags(audio):
    made = run("ffprobe", "-v", "error", "-show_entries", "format_tags:stream_tags", "-of", "json", audio)
    found = json.loads(made.stdout)
    tags = found["format"].get("tags", {}) or found["streams"][0].get("tags", {})  # an OGG file's are the stream's
    return {fold(name): value for name, value in tags.items()}


def check_ffmetadata(results, label, data, song, work):
    def written(value):
        value = value.replace("\r\n", "\n")
        return value + " " if value.endswith("\\") else value
    shutil.copy(work / "tone.flac", work / "song.flac")
    (work / "song.ffmeta").write_bytes(data)
    (work / "tagged.flac").unlink(missing_ok=True)
    results.equal(label + " ffmpeg", run_shown("ffmpeg", work).returncode, 0)
    got = ffprobe_tags(work / "tagged.flac")
    got.pop("encoder")
    tags = grouped(song.tags.items(), lambda name: FFMPEG_NAMES.get(fold(name), fold(name)))
    want = {name: written("; ".join(values)) for name, values in tags.items() if any(values) or values[1:]}
    results.equal(label, got, want)
    if song.audio.exists():  # a tag of one value comes back as the plug-in read it, but for its line ends
        original = ffprobe_tags(song.audio)
        single = [name for name in got if len(tags[name]) == 1]
        results.equal(label + " round", [got[name] for name in single],
                      [written(original[name]) for name in single])
    comments = run("metaflac", "--export-tags-to=-", work / "tagged.flac").stdout.decode()
    results.equal(label + " DESCRIPTION", re.findall("(?m)^(?:COMMENT|DESCRIPTION)=", comments),
                  ["DESCRIPTION="] * ("comment" in want))


# What several documents make together is checked below, and Markdown by check_authoring.py.
SHEETS = {".json": ("Json.xslt", check_json), ".csv": ("Csv.xslt", check_csv),
          ".facts.csv": ("CsvLong.xslt", check_csv_long), ".song.csv": ("Songs.xslt", None),
          ".changes.csv": ("Changes.xslt", None), ".md": ("Markdown.xslt", None),
          ".txt": ("Text.xslt", check_text), ".html": ("Html.xslt", check_html),
          ".vc": ("VorbisComments.xslt", check_vorbis), ".ffmeta": ("FFMetadata.xslt", check_ffmetadata)}


def check_outputs(results, document, work):
    """`document` as the plug-in writes it without a style sheet; what the style sheets made is beside it."""
    song = Song(document)
    for ext, (sheet, check) in SHEETS.items():
        data, label = document.with_suffix(ext).read_bytes(), document.stem + ext
        if document.stem != "long":  # ten seconds more
            other = run("xsltproc", ROOT / "XSLT" / sheet, document)
            # Reading a file changes its access time; processors differ in document type and last line end.
            forms = [re.sub(rb"\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d|<!DOCTYPE[^>]*>\s*|(?<=</html>)\n$", b"", form)
                     for form in (data, other.stdout)]
            results.equal(label + " equals xsltproc's", (forms[0], other.stderr), (forms[1], b""))
        try:
            if check:
                check(results, label, data, song, work)
        except (ValueError, KeyError, csv.Error) as error:
            results.equal(label + " is readable", repr(error), "")


def check_other_formats(results, work):
    """By the page's command: tags that have a place of their own in each format, and both pictures of a FLAC file."""
    (work / "song.ffmeta").write_bytes((EXPECTED / "names.ffmeta").read_bytes())
    run("flac", "-s", "-f", "-o", work / "song.flac", work / "tone.wav")
    cover = ROOT / "tests" / "data" / "cover.png"
    run("metaflac", f"--import-picture-from=3||||{cover}", f"--import-picture-from=4||||{cover}", work / "song.flac")
    command = shown("ffmpeg")
    want = {"album_artist": 'Various, "all"; Ann; Cy', "track": "3/12", "disc": "2"}
    for ext in ("flac", "mp3", "m4a", "ogg"):
        if ext != "flac":
            run("ffmpeg", "-y", "-i", work / "tone.wav", work / f"song.{ext}")
        made = run("bash", "-c", command.replace(".flac", f".{ext}").replace("ffmpeg", "ffmpeg -y"), cwd=work)
        got = ffprobe_tags(work / f"tagged.{ext}")
        results.equal(f"ffmpeg's names in {ext}", (made.returncode, {name: got.get(name) for name in want}), (0, want))
    pictures = run("metaflac", "--list", "--block-type=PICTURE", work / "tagged.flac").stdout.decode()
    results.equal("pictures", re.findall(r"type: (\d) \(Cover", pictures), ["3", "4"])
    (work / "song.ffmeta").write_bytes(b"")
    (work / "tagged.flac").unlink()
    failed = run_shown("ffmpeg", work).returncode != 0
    results.equal("an empty .ffmeta", (failed, (work / "tagged.flac").exists()), (True, False))


def check_folder(results, documents, work):
    """What the page does with the files of many documents."""
    folder = work / "folder"
    songs = [Song(document) for document in documents]
    below = folders_of(folder)

    def made(document, ext):
        """The rows of a document, as if each of the samples were in a folder of its own."""
        return document.with_suffix(ext).read_bytes().replace(b"D:\\Music", f"D:\\{document.stem}".encode())
    for document, song in zip(documents, songs):
        song.path = song.path.replace("D:\\Music", f"D:\\{document.stem}")
        shutil.copy(document.with_suffix(".json"), folder)
        for ext in (".facts.csv", ".song.csv", ".changes.csv"):
            (below / f"{document.stem}{ext}").write_bytes(made(document, ext))
        shutil.copy(document.with_suffix(".json"), work / "song.json")
        listed = run_shown("jq -r ", work)
        results.equal(document.stem + " artists by jq", (listed.stdout.decode(), listed.stderr),
                      ("".join(artist + "\n" for artist in song.tags.get("ARTIST", [])), b""))

    def shell(holding):
        ran = run("bash", "-c", page_example("style-sheets.md", holding, "sh"), cwd=folder)
        results.equal(holding, ran.stderr, b"")
        return ran.stdout.decode()
    others = [song for song in songs if song.sides["SourceFile"]["AudioFormat"]["SamplesPerSec"] != 44100]
    results.equal("not 44.1 kHz by jq", sorted(shell("exec jq").splitlines()),
                  sorted(song.converted["FileName"] for song in others))

    def ask(sql):
        answer = run("sqlite3", "-csv", "music.db", stdin=sql.encode(), cwd=folder)
        results.equal("sqlite3", answer.stderr, b"")
        return sorted(csv.reader(io.StringIO(answer.stdout.decode(), newline="")))

    def stacked(ext, first):
        return sorted(row for document in documents for row in read_csv(made(document, ext))[first:])
    shell("all.csv")
    shell("songs.csv")
    make_table, undated, other_rates, changes = re.findall(r"(?s)```sql\n(.*?)```", PAGE)
    ask(make_table)
    results.equal("all facts", ask("SELECT * FROM facts WHERE typeof([Index]) = 'integer'"), stacked(".facts.csv", 1))
    results.equal("albums without a date", ask(undated), [[album] for album in sorted({
        album for song in songs if not {name.upper() for name in song.tags} & {"DATE", "YEAR"}
        for name, albums in song.tags.items() if name.upper() == "ALBUM" for album in albums})])
    results.equal("not 44.1 kHz", ask(other_rates), sorted(
        [song.path, str(song.sides["SourceFile"]["AudioFormat"]["SamplesPerSec"])] for song in others))
    ask(".import --csv songs.csv songs\n.import --csv changes.csv changes\n")
    results.equal("songs", ask("SELECT * FROM songs"), stacked(".song.csv", 0))
    columns = "SELECT File, Change, upper(Name), Was, Now FROM"
    results.equal("changes", ask(f"{columns} ({changes.rstrip().rstrip(';')})"), ask(f"{columns} changes"))


def check_new_facts(results):
    """A fact that the style sheets do not know is shown by its element's name, and is a text."""
    document = samples()["speech"].replace("</FileAccessed>", "</FileAccessed><FileMood>calm, mild</FileMood>").replace(
        "</Channels>", "</Channels><Layout>5</Layout>")
    for sheet, want in (("Html.xslt", ["<th scope=\"row\">FileMood</th>", ">calm, mild<", ">Layout<", ">5<"]),
                        ("Text.xslt", ["  FileMood            calm, mild", "  Layout              5"]),
                        ("Csv.xslt", [",FileMood,", ',"calm, mild",']), ("Json.xslt", ['"FileMood": "calm, mild"'])):
        made = run("xsltproc", ROOT / "XSLT" / sheet, "-", stdin=document.encode()).stdout.decode()
        results.equal(f"{sheet} shows new facts", [text for text in want if text not in made], [])


def check_growth(results):
    """Of many entries whose names alternate, few ask the key for all of their name, by xsltproc's count of calls, but
    some in every block: only within a small one are all entries compared."""
    tags = "".join(entry_line(f"TURN {i % 3}", f"{i}") for i in range(6000))
    document = samples()["speech"].replace("</IDTags>\n\t</ConvertedFile>", f"{tags}</IDTags>\n\t</ConvertedFile>")
    made = run("xsltproc", "--profile", ROOT / "XSLT" / "Json.xslt", "-", stdin=document.encode()).stderr.decode()
    calls = re.search(r"(?m)^ *\d+ +\* +group +(\d+)", made)
    results.equal("few entries ask the key", 300 < int(calls[1]) < 1500, True)


def check_recipe(results):
    """The page shows the template that the style sheets share, and the example that ships."""
    for part, holding in (("parts/values.xslt", '<xsl:template name="values">'),
                          ("Markdown.xslt", "| tag | value |&#10;")):
        text = (ROOT / "XSLT" / part).read_text("utf-8")
        results.equal(f"the page shows {part}", page_example("style-sheets.md", holding) in text, True)


def check_seen(results, produced, seen):
    """What the style sheets make of the samples is as in expected/; of a page, what a person sees, after the text."""
    shutil.rmtree(seen, ignore_errors=True)
    seen.mkdir()
    for expected in EXPECTED.iterdir():
        text = (produced / expected.name).read_bytes().decode().replace("\r\n", "\n")
        if expected.suffix == ".txt":
            text += "\n" + page_text((produced / f"{expected.stem}.html").read_bytes())
        (seen / expected.name).write_text(text, "utf-8")
    compared = run("diff", "-r", EXPECTED, seen)
    results.equal(f"diff -r {EXPECTED} {seen}", compared.stdout.decode(), "")


def make_samples(folder):
    folder.mkdir(exist_ok=True)
    for name, text in samples().items():
        (folder / f"{name}.xml").write_bytes(with_line_ends(text, "\r\n"))
        for ext, (sheet, _) in SHEETS.items():
            made = run("xsltproc", ROOT / "XSLT" / sheet, "-", stdin=with_line_ends(text, ""))
            (folder / (name + ext)).write_bytes(made.stdout)


def main():
    folders = [Path(argument) for argument in sys.argv[1:]]
    if not 1 <= len(folders) <= 2 or sys.argv[1].startswith("-"):
        print(__doc__.strip())
        return 0 if sys.argv[1:] == ["--help"] else 2
    work, produced = folders if folders[1:] else (folders[0], folders[0] / "samples")
    work.mkdir(parents=True, exist_ok=True)
    if not folders[1:]:
        make_samples(produced)
    with wave.open(str(work / "tone.wav"), "wb") as tone:
        tone.setparams((1, 2, 8000, 0, "NONE", ""))
        tone.writeframes(bytes(16000))
    run("flac", "-s", "-f", "-o", work / "tone.flac", work / "tone.wav").check_returncode()

    results, documents = Results(), sorted(produced.glob("*.xml"))
    results.equal("documents found", bool(documents), True)
    if not folders[1:]:
        check_seen(results, produced, work / "seen")
        check_other_formats(results, work)
        check_growth(results)
        check_recipe(results)
        check_new_facts(results)
    for document in documents:
        check_outputs(results, document, work)
    check_folder(results, documents, work)
    check_schema(results, documents, work)
    print(f"{results.passed} passed, {results.failed} failed")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
