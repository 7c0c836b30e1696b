#!/usr/bin/env python3
"""Checks the shipped style sheets and the schema with the programs that read what they make.

check_sheets.py WORK           makes sample documents, transforms them with xsltproc, and compares that, and what the
                               programs answer, with expected/; WORK/seen has all of it, to be read and copied there
check_sheets.py WORK PRODUCED  checks the files in PRODUCED that the plug-in made of each document: beside NAME.xml
                               lies NAME with each extension of SHEETS below

Ends with "N passed, N failed"; the exit status is 1 when something failed. Needs xsltproc, xmllint, flac,
metaflac, ffmpeg, ffprobe, jq and sqlite3. The commands that the pages show are run as they stand there.
"""
import csv
import hashlib
import io
import json
import re
import shutil
import sys
import wave
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from documents import LONG, entry_line, samples, with_line_ends, with_tags
from results import ROOT, Results, folders_of, page_example, run, shown, transformed
from schema import check_schema

PAGE = "style-sheets.md"
EXPECTED = Path(__file__).with_name("expected")
METAFLAC_LINE = 65534  # bytes that metaflac takes in one line
# What the columns of Songs.xslt are called elsewhere, in the order in which one counts before another.
SONG_TAGS = ["Title TIT2 INAM", "ARTIST TPE1 IART Author", "Album_Artist TPE2 aART WM/AlbumArtist",
             "ALBUM Album-Title TALB IPRD WM/AlbumTitle",
             "TRACKNUMBER Track# Track.No TRCK trkn ITRK IPRT WM/TrackNumber",
             "DISCNUMBER disc DiskNumber DISK DISC/NO TPOS WM/PartOfSet", "DATE YEAR TDRC TYER ICRD WM/Year",
             "GENRE TCON gnre IGNR WM/Genre"]
SHEETS = {".json": "Json.xslt", ".csv": "Csv.xslt", ".facts.csv": "CsvLong.xslt", ".song.csv": "Songs.xslt",
          ".changes.csv": "Changes.xslt", ".md": "Markdown.xslt", ".txt": "Text.xslt", ".html": "Html.xslt",
          ".vc": "VorbisComments.xslt", ".ffmeta": "FFMetadata.xslt"}


def make_samples(folder):
    folder.mkdir(exist_ok=True)
    for name, text in samples().items():
        (folder / f"{name}.xml").write_bytes(with_line_ends(text, "\r\n"))
        for ext, sheet in SHEETS.items():
            (folder / (name + ext)).write_bytes(transformed(sheet, with_line_ends(text, "")).stdout)


def check_outputs(results, document):
    """`document` as the plug-in writes it without a style sheet, its lines not joined, gives the same as beside it."""
    for ext, sheet in SHEETS.items() if document.stem != "long" else ():  # ten seconds more
        other = transformed(sheet, document)
        # Reading a file changes its access time; processors differ in document type and last line end.
        forms = [re.sub(rb"\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d|<!DOCTYPE[^>]*>\s*|(?<=</html>)\n$", b"", form)
                 for form in (document.with_suffix(ext).read_bytes(), other.stdout)]
        results.equal(document.stem + ext, (forms[0], other.stderr), (forms[1], b""))
    csv.field_size_limit(10 ** 9)
    table = io.StringIO(document.with_suffix(".csv").read_bytes().decode(), newline="")
    cells = [len(row) for row in csv.reader(table, strict=True)]
    results.equal(document.stem + ".csv has two rows below its headings", cells, cells[:1] * 3)


def check_tagging(results, document, work):
    """Tags a file by the page's commands. The tags that ffmpeg then finds in it."""
    for ext in (".vc", ".ffmeta"):
        shutil.copy(document.with_suffix(ext), work / f"song{ext}")
    shutil.copy(work / "tone.flac", work / "song.flac")
    run("bash", "-c", page_example(PAGE, "[ -s song.vc ]", "sh"), cwd=work)
    exported = run("metaflac", "--no-utf8-convert", "--export-tags-to=-", work / "song.flac").stdout
    comments = (work / "song.vc").read_bytes()
    # No tags, or a line too long, leave the file's as they are.
    taken = comments and max(map(len, comments.split(b"\n"))) <= METAFLAC_LINE
    results.equal(document.stem + " by metaflac", exported, comments if taken else b"OLD=tag\n")

    tagged = work / "tagged.flac"
    tagged.unlink(missing_ok=True)
    status = run("bash", "-c", shown(PAGE, "ffmpeg -i .*"), cwd=work).returncode
    pictures = run("metaflac", "--list", "--block-type=PICTURE", tagged).stdout.count(b"(Cover (")
    results.equal(document.stem + " by ffmpeg, with its pictures", (status, pictures), (0, 2))
    probed = run("ffprobe", "-v", "error", "-show_entries", "format_tags", "-of", "json", tagged)
    tags = {name.lower(): value for name, value in json.loads(probed.stdout)["format"]["tags"].items()}
    tags.pop("encoder")
    return json.dumps(tags, indent=1, sort_keys=True, ensure_ascii=False).encode() + b"\n"


def check_folder(results, documents, work):
    """What the page does with the files of many documents. The answers of jq and SQLite."""
    folder = work / "folder"
    below = folders_of(folder)
    for document in documents:
        for ext in (".json", ".facts.csv", ".song.csv", ".changes.csv"):
            shutil.copy(document.with_suffix(ext), below)

    def answer(question, *program, stdin=b"", cwd=folder):
        ran = run(*program, stdin=stdin, cwd=cwd)
        results.equal(question, ran.stderr, b"")
        return f"\n{question.strip()}\n\n{ran.stdout.decode()}"

    def sqlite(sql, *options):
        return answer(sql, "sqlite3", *options, "music.db", stdin=sql.encode())
    answers = ""
    for document in documents:
        shutil.copy(document.with_suffix(".json"), work / "song.json")
        answers += answer(document.stem + ".json", "bash", "-c", shown(PAGE, "jq -r .*"), cwd=work)
    for holding in ("exec jq", "all.csv", "songs.csv"):
        commands = page_example(PAGE, holding, "sh")
        answers += answer(commands, "bash", "-c", f"({commands}) | sort")
    make_table, *queries, changes = re.findall(r"(?s)```sql\n(.*?)```", (ROOT / "docs" / PAGE).read_text("utf-8"))
    sqlite(make_table + ".import --csv songs.csv songs\n.import --csv changes.csv changes\n")
    for query in queries:
        answers += sqlite(query.replace(";", " ORDER BY 1;"))
    answers += sqlite('SELECT Name, "Index", length(Value) FROM facts WHERE length(Value) > 2000 ORDER BY 3, 1;')
    answers += sqlite("SELECT * FROM songs ORDER BY Path;", "-line")
    columns = "SELECT File, Change, upper(Name), Was, Now FROM"
    by_facts, by_rows = (sqlite(f"{columns} ({rows.rstrip().rstrip(';')}) ORDER BY 1, 3;").partition("\n\n")[2]
                         for rows in (changes, "SELECT * FROM changes"))
    results.equal("changes", by_facts, by_rows)
    return answers


def show(seen, name, data):
    """Puts it into `seen`: of the long values only sums, of a page all but its looks, in lines."""
    if name.endswith(".html"):
        data = re.sub(rb"(?s)<style>.*?</style>", b"", data)
        data = re.sub(rb"(?=<(main|section|tr|p|footer|/main)\b)", b"\n", data)
    if name.startswith("long."):
        with open(seen / "long.sums", "a") as sums:
            sums.write(f"{hashlib.sha256(data).hexdigest()} {name}, {len(data)} bytes\n")
    else:
        (seen / name).write_bytes(data)


def check_seen(results, produced, seen):
    """What the style sheets make of the samples, and what the programs answer, is as in expected/."""
    for path in sorted(produced.iterdir()):
        if path.suffix != ".xml":
            show(seen, path.name, path.read_bytes())
    compared = run("diff", "-r", EXPECTED, seen)
    results.equal(f"diff -r {EXPECTED} {seen}", compared.stdout.decode(), "")
    names = {name: [value.replace("\r\n", "\n").split("\r") for key, value in LONG if key == name] for name, _ in LONG}
    tags = json.loads((produced / "long.json").read_bytes())["ConvertedFile"]["IDTags"]
    results.equal("long.json", list(tags.items()), [(name, sum(values, [])) for name, values in names.items()])
    results.equal("addresses in the page's looks", re.findall(r"url\(|@import", (ROOT / "XSLT/Html.xslt").read_text()), [])


def check_songs(results):
    """Of the names that a tag of a song has elsewhere the first is taken, and the next when that is missing."""
    columns = [names.split() for names in SONG_TAGS]
    for skipped in range(max(map(len, columns)) + 1):
        tags = [entry_line(name, f"as {name}") for names in columns for name in reversed(names[skipped:])]
        row = transformed("Songs.xslt", with_tags(samples()["noformat"], "".join(tags)).encode()).stdout.decode()
        wants = [f"as {names[skipped]}" if names[skipped:] else "" for names in columns]
        results.equal(f"without the first {skipped} names", next(csv.reader([row]))[1:9], wants)


def check_growth(results):
    """Of many entries whose names alternate, few ask the key for all of their name, by xsltproc's count of calls, but
    some in every block: only within a small one are all entries compared."""
    document = with_tags(samples()["speech"], "".join(entry_line(f"TURN {i % 3}", f"{i}") for i in range(6000)))
    made = run("xsltproc", "--profile", ROOT / "XSLT" / "Json.xslt", "-", stdin=document.encode()).stderr.decode()
    calls = re.search(r"(?m)^ *\d+ +\* +group +(\d+)", made)
    results.equal("few entries ask the key", 300 < int(calls[1]) < 1500, True)


def check_recipe(results):
    """The page shows the template that the style sheets share, and the example that ships."""
    for part, holding in (("parts/values.xslt", '<xsl:template name="values">'),
                          ("Markdown.xslt", "| tag | value |&#10;")):
        text = (ROOT / "XSLT" / part).read_text("utf-8")
        results.equal(f"the page shows {part}", page_example(PAGE, holding) in text, True)


def main():
    folders = [Path(argument) for argument in sys.argv[1:]]
    work, results = folders[0], Results()
    produced = folders[1] if folders[1:] else work / "samples"
    seen = work / "seen"
    shutil.rmtree(seen, ignore_errors=True)
    seen.mkdir(parents=True)
    if not folders[1:]:
        make_samples(produced)
    with wave.open(str(work / "tone.wav"), "wb") as tone:
        tone.setparams((1, 2, 8000, 0, "NONE", ""))
        tone.writeframes(bytes(16000))
    cover = ROOT / "tests" / "data" / "cover.png"
    run("flac", "-s", "-f", "--tag=OLD=tag", f"--picture=3||||{cover}", f"--picture=4||||{cover}",
        "-o", work / "tone.flac", work / "tone.wav").check_returncode()

    documents = sorted(produced.glob("*.xml"))
    results.equal("documents found", bool(documents), True)
    for document in documents:
        check_outputs(results, document)
        show(seen, f"{document.stem}.tags.json", check_tagging(results, document, work))
    (seen / "answers.txt").write_text(check_folder(results, documents, work), "utf-8")
    check_schema(results, documents, work)
    if not folders[1:]:
        check_seen(results, produced, seen)
        check_songs(results)
        check_growth(results)
        check_recipe(results)
    return results.status()


if __name__ == "__main__":
    sys.exit(main())
