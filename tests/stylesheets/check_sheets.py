#!/usr/bin/env python3
"""Checks the shipped style sheets and the schema with the programs that read what they make.

check_sheets.py WORK           makes sample documents and transforms them with xsltproc
check_sheets.py WORK PRODUCED  checks the files in PRODUCED that the plug-in made of each document:
                               NAME.xml and NAME.html, .txt, .json, .csv, .facts.csv, .vc, .ffmeta

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
from itertools import groupby
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from documents import FACTS, FORMAT, NUMBERS, samples, with_line_ends
from results import ROOT, Results, run
from schema import check_schema

PAGE = (ROOT / "docs" / "style-sheets.md").read_text("utf-8")
EXPECTED = Path(__file__).with_name("expected")
METAFLAC_LINE = 65534  # bytes that metaflac takes in one line
FLAC_NAMES = {"tracknumber": "track", "discnumber": "disc", "albumartist": "album_artist",
              "description": "comment"}  # what ffmpeg calls these comments of a FLAC file


def joined(entries):
    """The entries with those that go on with the one before them, at a Windows line end, made one."""
    def goes_on(stretch):
        return stretch and stretch[0].startswith("\n")
    values = []
    for name, run in groupby(entries, key=lambda entry: entry[0]):
        first, *others = [text for _, text in run]
        values.append((name, first))
        stretches = [list(stretch) for _, stretch in groupby(others, key=bool)]  # with a text, or empty
        for before, stretch, after in zip([[], *stretches], stretches, [*stretches[1:], []]):
            line_ends = goes_on(before[-1:]) or goes_on(after[:1])
            for text in stretch:
                if text.startswith("\n") or not text and line_ends:
                    values[-1] = (name, values[-1][1] + (text or "\n"))
                else:
                    values.append((name, text))
    return values


def run_shown(start, folder):
    """Runs the command of the page that begins so."""
    command = re.search(rf"(?m)^ {{4,}}({re.escape(start)}.*)$", PAGE)[1]
    return subprocess.run(["bash", "-c", command], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=120)


class Content:
    """What a document says, as a parser sees it; text of blanks alone counts as empty."""

    def __init__(self, document):
        self.audio = document.with_suffix(".flac")
        def text(element):
            return element.text if element is not None and element.text and element.text.strip(" \t\n") else ""
        self.facts, self.format, self.lists = {}, {}, {}
        for side in ElementTree.parse(document).getroot():
            self.facts[side.tag] = {fact: text(side.find(fact)) for fact in FACTS}
            self.format[side.tag] = {fact: text(side.find("AudioFormat/" + fact)) for fact in FORMAT}
            self.lists[side.tag] = {
                name: joined((entry.get("name"), text(entry)) for entry in side.find(name))
                for name in ("AudioProperties", "IDTags")}
        self.tags = self.lists["ConvertedFile"]["IDTags"]
        converted = self.facts["ConvertedFile"]
        folder = converted["FileNamePath"]  # of a name without a backslash it is the name
        self.path = (folder if "\\" in folder else "") + converted["FileName"]


def fold(name):
    return re.sub("[A-Z]+", lambda letters: letters[0].lower(), name)


def grouped(entries, key=lambda name: name):
    groups = {}
    for name, value in entries:
        groups.setdefault(key(name), []).append(value)
    return groups


def check_new_facts(results):
    """A fact that the style sheets have no label for is shown by its element's name."""
    document = samples()["speech"].replace("\t\t<AudioProp", "\t\t<FileMood>calm</FileMood>\n\t\t<AudioProp").replace(
        "</Channels>", "</Channels><Layout>5.1</Layout>")
    for sheet, want in (("Html.xslt", ["<th scope=\"row\">FileMood</th>", ">calm<", ">Layout<", ">5.1<"]),
                        ("Text.xslt", ["  FileMood            calm", "  Layout              5.1"])):
        made = run("xsltproc", ROOT / "XSLT" / sheet, "-", stdin=document.encode()).stdout.decode()
        results.equal(f"{sheet} shows new facts", [text for text in want if text not in made], [])


# What each format must hold, and the programs that read it.

def check_json(results, label, data, content, _work):
    def pairs(side):
        for fact, value in content.facts[side].items():
            yield fact, int(value) if fact in NUMBERS else value or None
        properties, tags = (list(grouped(entries).items()) for entries in content.lists[side].values())
        yield "AudioProperties", properties
        yield "AudioFormat", [(fact, int(value)) for fact, value in content.format[side].items()]
        yield "IDTags", tags
    results.equal(label, json.loads(data.decode(), object_pairs_hook=list),
                  [(side, list(pairs(side))) for side in content.facts])


def read_csv(data, encoding):
    csv.field_size_limit(10 ** 9)
    rows = list(csv.reader(io.StringIO(data.decode(encoding), newline=""), strict=True))
    if data.count(b"\r\n") != len(rows) or data.count(b"\r") != len(rows) or data[-2:] != b"\r\n":
        raise csv.Error("rows do not end with CR LF")
    return rows


def check_csv(results, label, data, content, _work):
    names = {name: list(dict.fromkeys(key for side in content.lists.values() for key, _ in side[name]))
             for name in ("AudioProperties", "IDTags")}
    rows = [["File", *FACTS, *FORMAT, *(f"{name}/{key}" for name, keys in names.items() for key in keys)]]
    for side in content.facts:
        groups = {name: grouped(content.lists[side][name]) for name in names}
        rows.append([side[:-4], *content.facts[side].values(), *content.format[side].values(),
                     *("; ".join(groups[name].get(key, [])) for name, keys in names.items() for key in keys)])
    results.equal(label, read_csv(data, "utf-8-sig"), rows)
    results.equal(label + " byte-order mark", data[:7], b"\xef\xbb\xbfFile")
    # What has no quotes is a number, a time or nothing, or part of a heading.
    bare = re.sub(r'"([^"]|"")*"', "", data.decode("utf-8-sig")).replace("\r\n", ",").split(",")
    texts = [cell for cell in bare if not re.fullmatch(r"(-?\d+|[-\d]+T[:\d]+)?", cell)]
    results.equal(label + " quotes", texts, ["File", *FACTS, *FORMAT, "Source", "Converted"])


def check_csv_long(results, label, data, content, _work):
    rows = [["File", "List", "Name", "Index", "Value"]]
    for side, lists in content.lists.items():
        for name, entries in (("", content.facts[side]), ("AudioProperties", lists["AudioProperties"]),
                              ("AudioFormat", content.format[side]), ("IDTags", lists["IDTags"])):
            entries = entries.items() if isinstance(entries, dict) else entries
            rows += [[content.path, f"{side}/{name}".rstrip("/"), key, str(index), value]
                     for key, values in grouped(entries).items() for index, value in enumerate(values, 1)]
    results.equal(label, read_csv(data, "utf-8"), rows)


def check_text(results, label, data, _content, _work):
    results.equal(label + " line ends", re.findall(rb"(?<!\r)\n|\r(?!\n)", data), [])


def elements(html):
    return list(ElementTree.fromstring(run("xmllint", "--html", "--huge", "--xmlout", "-", stdin=html).stdout).iter())


def page_text(html):
    """The page's paragraphs and rows, a line each; a slash parts the values of one cell."""
    def text(element):
        return " / ".join("".join(block.itertext()) for block in element.findall("div") or [element])
    return "".join(" | ".join(map(text, element if element.tag == "tr" else [element])) + "\n"
                   for element in elements(html) if element.tag in ("h1", "p", "tr", "footer"))


def check_html(results, label, data, content, _work):
    page = elements(data)
    values = ["".join(element.itertext()) for element in page
              if element.get("dir") == "auto" and element.get("class") != "name"]
    want = [value for side in content.lists.values() for entries in side.values() for _, value in entries]
    want += [facts["FileNamePath"] for facts in content.facts.values() if facts["FileNamePath"]]
    results.equal(label + " values", Counter(values), Counter(want))
    styles = "".join(element.text for element in page if element.tag == "style")
    outside = {"src", "href", "srcset", "data", "action", "script", "link", "iframe", "object"}
    used = {name for element in page for name in (element.tag, *element.attrib)}
    results.equal(label + " alone", (used & outside, re.findall(r"url\(|@import", styles)), (set(), []))


def check_vorbis(results, label, data, content, work):
    want = [f"{name}={value}".replace("\n", " ") for name, values in grouped(content.tags).items()
            for value in values if re.fullmatch(r"[ -<>-}]*", name)]
    lines = data.decode().split("\n")
    results.equal(label, lines, want + [""])

    def exported():
        return run("metaflac", "--no-utf8-convert", "--export-tags-to=-", work / "song.flac").stdout.decode()
    shutil.copy(work / "tone.flac", work / "song.flac")
    run("metaflac", "--set-tag=OLD=tag", work / "song.flac")
    short = [line for line in want if len(line.encode()) <= METAFLAC_LINE]
    if short != want:
        (work / "song.vc").write_bytes(data)
        failed = run_shown("metaflac", work).returncode
        results.equal(label + " with a line too long", (failed, exported()), (1, "OLD=tag\n"))
    (work / "song.vc").write_bytes("".join(line + "\n" for line in lines if line in set(short)).encode())
    results.equal(label + " import", run_shown("metaflac", work).stderr, b"")
    results.equal(label + " metaflac", exported().split("\n"), short + [""])


def ffprobe_tags(audio):
    shown = run("ffprobe", "-v", "error", "-show_entries", "format_tags", "-of", "json", audio)
    return {fold(name): value for name, value in json.loads(shown.stdout)["format"].get("tags", {}).items()}


def check_ffmetadata(results, label, data, content, work):
    def written(value):
        value = value.replace("\r\n", "\n")
        return value + " " if value.endswith("\\") else value
    shutil.copy(work / "tone.flac", work / "song.flac")
    (work / "song.ffmeta").write_bytes(data)
    (work / "tagged.flac").unlink(missing_ok=True)
    results.equal(label + " ffmpeg", run_shown("ffmpeg", work).returncode, 0)
    got = ffprobe_tags(work / "tagged.flac")
    got.pop("encoder")
    tags = {FLAC_NAMES.get(name, name): values for name, values in grouped(content.tags, fold).items()}
    want = {name: written("; ".join(values)) for name, values in tags.items() if any(values) or values[1:]}
    results.equal(label, got, want)
    if content.audio.exists():  # a tag of one value comes back as the plug-in read it, but for its line ends
        original = ffprobe_tags(content.audio)
        single = [name for name in got if len(tags[name]) == 1]
        results.equal(label + " round", [got[name] for name in single],
                      [written(original[name]) for name in single])
    comments = run("metaflac", "--export-tags-to=-", work / "tagged.flac").stdout.decode()
    results.equal(label + " DESCRIPTION", re.findall("(?m)^(?:COMMENT|DESCRIPTION)=", comments),
                  ["DESCRIPTION="] * ("comment" in want))


SHEETS = {".json": ("Json.xslt", check_json), ".csv": ("Csv.xslt", check_csv),
          ".facts.csv": ("CsvLong.xslt", check_csv_long),
          ".txt": ("Text.xslt", check_text), ".html": ("Html.xslt", check_html),
          ".vc": ("VorbisComments.xslt", check_vorbis),
          ".ffmeta": ("FFMetadata.xslt", check_ffmetadata)}


def check_outputs(results, document, work):
    """`document` as the plug-in writes it without a style sheet; what the style sheets made is beside it."""
    content = Content(document)
    for ext, (sheet, check) in SHEETS.items():
        data, label = document.with_suffix(ext).read_bytes(), document.stem + ext
        if document.stem != "long":  # ten seconds more
            other = run("xsltproc", ROOT / "XSLT" / sheet, document)
            # Reading a file changes its access time; processors differ in document type and last line end.
            forms = [re.sub(rb"\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d|<!DOCTYPE[^>]*>\s*|(?<=</html>)\n$", b"", form)
                     for form in (data, other.stdout)]
            results.equal(label + " equals xsltproc's", (forms[0], other.stderr), (forms[1], b""))
        try:
            check(results, label, data, content, work)
        except (ValueError, KeyError, csv.Error) as error:
            results.equal(label + " is readable", repr(error), "")


def check_folder(results, documents, work):
    """What the page does with the files of many documents."""
    folder = work / "folder"
    shutil.rmtree(folder, ignore_errors=True)
    below = folder / "a folder below"
    below.mkdir(parents=True)
    contents = [Content(document) for document in documents]
    for document, content in zip(documents, contents):
        shutil.copy(document.with_suffix(".json"), folder)
        shutil.copy(document.with_suffix(".facts.csv"), below)
        shutil.copy(document.with_suffix(".json"), work / "song.json")
        listed = run_shown("jq -r '.", work)
        results.equal(document.stem + " artists by jq", (listed.stdout.decode(), listed.stderr),
                      ("".join(artist + "\n" for artist in grouped(content.tags).get("ARTIST", [])), b""))
    others = [content for content in contents if content.format["SourceFile"]["SamplesPerSec"] != "44100"]
    names = run_shown("jq -r 'select", folder).stdout.decode().splitlines()
    results.equal("not 44.1 kHz by jq", sorted(names),
                  sorted(content.facts["ConvertedFile"]["FileName"] for content in others))

    def ask(sql):
        answer = run("sqlite3", "-csv", "music.db", stdin=sql.encode(), cwd=folder)
        results.equal("sqlite3", answer.stderr, b"")
        return sorted(csv.reader(io.StringIO(answer.stdout.decode(), newline="")))
    results.equal("one file of many", run_shown("find", folder).stderr, b"")
    make_table, undated, other_rates = re.findall(r"(?s)```sql\n(.*?)```", PAGE)
    ask(make_table)
    want = [row for document in documents
            for row in read_csv(document.with_suffix(".facts.csv").read_bytes(), "utf-8")[1:]]
    results.equal("all facts", ask("SELECT * FROM facts WHERE typeof([Index]) = 'integer'"), sorted(want))
    songs = grouped((content.path, tag) for content in contents for tag in content.tags)
    results.equal("albums without a date", ask(undated), [[album] for album in sorted({
        value for tags in songs.values() if not {name.upper() for name, _ in tags} & {"DATE", "YEAR"}
        for name, value in tags if name.upper() == "ALBUM"})])
    results.equal("not 44.1 kHz", ask(other_rates), sorted(
        [content.path, content.format["SourceFile"]["SamplesPerSec"]] for content in others))


def check_recipe(results):
    """Style sheets cannot share a template: all hold the one that the page shows."""
    recipe = re.search(r'(?s)```xml\n([^`]*<xsl:template name="values">[^`]*)```', PAGE)[1]
    for sheet in sorted((ROOT / "XSLT").glob("*.xslt")):
        results.equal(f"{sheet.name} has the page's template", recipe in sheet.read_text("utf-8"), True)


def check_seen(results, produced, seen):
    """What a person sees of the samples is as in expected/."""
    shutil.rmtree(seen, ignore_errors=True)
    seen.mkdir()
    for page in produced.glob("*.html"):
        if page.stem != "long":
            text = page.with_suffix(".txt").read_bytes().decode().replace("\r\n", "\n")
            (seen / f"{page.stem}.txt").write_text(f"{text}\n{page_text(page.read_bytes())}", "utf-8")
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
    for document in documents:
        check_outputs(results, document, work)
    check_folder(results, documents, work)
    check_recipe(results)
    check_new_facts(results)
    check_schema(results, documents, work)
    print(f"{results.passed} passed, {results.failed} failed")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
