"""The schema, by the command of docs/document.md as it stands there: it takes every document; this it must refuse."""
import re

from documents import entry_line, samples, with_tags
from results import ROOT, page_example, run

REFUSED = [
    ("order", r"(?s)(<FileName>.*?</FileName>)\s*(<FileNameNoExt>.*?</FileNameNoExt>)", r"\2\1"),
    ("missing element", r"<FileBitrate>[^<]*</FileBitrate>", ""),
    ("element twice", r"(<Channels>[^<]*</Channels>)", r"\1\1"),
    ("third child", r"</AudioMetadata>", "<Extra/></AudioMetadata>"),
    ("attribute", r"<IDTags>", '<IDTags name="x">'),
    ("size beyond 64 bits", r"(<FileSize>)[^<]*", r"\g<1>9223372036854775808"),
    ("bitrate beyond 32 bits", r"(<FileBitrate>)[^<]*", r"\g<1>2147483648"),
    ("leading zero", r"(<FileLength>)[^<]*", r"\g<1>007"),
    ("leading zero of a bitrate", r"<FileBitrate>", "<FileBitrate>0"),
    ("leading zero of channels", r"<Channels>", "<Channels>0"),
    ("leading zero of bytes a second", r"<AvgBytesPerSec>", "<AvgBytesPerSec>0"),
    ("channels beyond 16 bits", r"(<Channels>)[^<]*", r"\g<1>65536"),
    ("negative channels", r"(<Channels>)[^<]*", r"\g<1>-1"),
    ("negative bits", r"(<BitsPerSample>)[^<]*", r"\g<1>-1"),
    ("sample rate beyond 31 bits", r"(<SamplesPerSec>)[^<]*", r"\g<1>2147483648"),
    ("no bytes a second", r"(<AvgBytesPerSec>)[^<]*", r"\g<1>0"),
    ("extension without its dot", r"(<FileNameExt>)[^<]*", r"\g<1>wav"),
    ("time without seconds", r"(<FileCreated>[^<]*):\d\d<", r"\1<"),
    ("hour 24", r"(<FileModified>[^<]*T)\d\d", r"\g<1>24"),
    ("minute 60", r"(<FileAccessed>[^<]*T\d\d:)\d\d", r"\g<1>60"),
    ("second 60", r"(<FileCreated>[^<]*):\d\d<", r"\1:60<"),
    ("time of day without its T", r"(<FileCreated>)[^<]*T", r"\1"),
]
REFUSED_BY_RULES = [
    ("no name", r"<TITLE name=\"TITLE\">", "<TITLE>"),
    ("second attribute", r"<TITLE name", '<TITLE lang="x" name'),
    ("child element", r"<TITLE ([^>]*)>", r"<TITLE \1><b/>"),
    ("name not the element's", r"name=\"TITLE\"", 'name="TITEL"'),
    ("hidden property", r"<Encoding name=\"Encoding\">([^<]*)</Encoding>", r'<_E name="_E">\1</_E>'),
    ("blank before a number", r"<FileSize>", "<FileSize> "),
    ("tab after a number", r"</FileLength>", "\t</FileLength>"),
    ("carriage return before a number", r"<FileBitrate>", "<FileBitrate>&#13;"),
    ("line break after a number", r"</Channels>", "\n</Channels>"),
]
TAKEN_TIMES = ["67-03-07T", "T23:59:59", "T", "12024-12-30T00:00:00"]


def check_schema(results, documents, work):
    folder = work / "schema"
    folder.mkdir(exist_ok=True)
    (folder / "AudioMetadata.xsd").write_bytes((ROOT / "docs" / "AudioMetadata.xsd").read_bytes())
    command = page_example("document.md", "--schematron")

    def verdicts(xml):
        """Of the rules and of the schema, and whether the command succeeds."""
        (folder / "song.xml").write_bytes(xml)
        made = run("sh", "-c", command, cwd=folder)
        found = re.findall("(?m)^song.xml (validates|fails to validate)$", made.stderr.decode())
        return [verdict == "validates" for verdict in found] + [made.returncode == 0]

    speech = samples()["speech"]
    taken = {document.name: document.read_bytes() for document in documents}
    taken.pop("new.xml", None)  # has facts that the schema does not know
    taken["left out of names"] = with_tags(speech, entry_line("a#b c&d\"e'f<g>h(i)j/k\\l:m-n", "x")).encode()
    for time in TAKEN_TIMES:
        taken[time] = re.sub("(<FileCreated>)[^<]*", rf"\g<1>{time}", speech).encode()
    for label, xml in taken.items():
        results.equal(f"taken: {label}", verdicts(xml), [True, True, True])
    for cases, part in ((REFUSED_BY_RULES, 0), (REFUSED, 1)):
        for label, pattern, replacement in cases:
            xml, changes = re.subn(pattern, replacement, speech, count=1)
            found = verdicts(xml.encode())
            results.equal(f"refused: {label}", (changes, found[part], found[-1]), (1, False, False))
