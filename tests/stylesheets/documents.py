"""Sample documents: the .xml files of this folder, and others made of them."""
import re
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from xml.sax import saxutils

SCHEMA = Path(__file__).resolve().parents[2] / "docs" / "AudioMetadata.xsd"


def schema_elements(record):
    """Of one of the schema's records: the names of its elements, in order, and their types."""
    xs = "{http://www.w3.org/2001/XMLSchema}"
    elements = ElementTree.parse(SCHEMA).findall(f"{xs}complexType[@name='{record}']/{xs}sequence/{xs}element")
    return {element.get("name"): element.get("type") for element in elements}


FORMAT = tuple(schema_elements("AudioFormat"))
FACTS = tuple(name for name in schema_elements("File") if name.startswith("File"))
NUMBERS = tuple(name for name, kind in schema_elements("File").items() if "igned" in kind)


def entry_line(name, value):
    """The value's entries, one for each part between CRs."""
    element = re.sub(r"""[# &"'<>()/\\:]""", "", name)
    name, value = (saxutils.escape(text, {'"': "&quot;", "'": "&apos;"}) for text in (name, value))
    return "".join(f'\t\t\t<{element} name="{name}">{part}</{element}>\n' for part in value.split("\r"))


def with_line_ends(text, end):
    """The plug-in writes CR LF, and gives a document to a style sheet as one line; values keep their own."""
    return re.sub(r"(?<!\">)\n(?=\t*<|$)", end, text).encode()


def samples():
    """Documents by name, their lines ended by LF."""
    speech, nasty, lines = (Path(__file__).with_name(f"{name}.xml").read_text("utf-8")
                            for name in ("speech", "nasty", "lines"))
    bare = re.sub(r"(?s)(<(AudioProperties|IDTags)>\n).*?(\t*</\2>)", r"\1\3", speech)
    lyrics = "".join(f'{i}: "so" weit = so gut; #{i} \\ \U0001d11e\n' for i in range(3000)) + "\u6b4c"
    windows = "text\r\n\r\n" * 5000 + "\r\n" * 5000
    tags = [("LYRICS", lyrics), ("WINDOWS", windows), ("QUOTES", '"' * 100000),
            ("BREAKS", "\n" * 20000 + "end"), ("THE LAST LARGE VALUE", "x" * 100000 + ';"'),
            *(("MANY", f"value {i}") for i in range(2000)), *((f"Tag {i}", f"value {i}") for i in range(500))]
    nosource = re.sub("(<File(Name|Created|Modified|Accessed).*?>)[^<]+", r"\1", bare, count=7)
    head, tail = bare.rsplit("\t\t</IDTags>", 1)

    def with_numbers(document, **numbers):
        for fact, values in numbers.items():
            values = iter(values)
            document = re.sub(f"(?<=<{fact}>)[^<]*", lambda _: str(next(values)), document)
        return document
    unknown = {"Channels": (0, 0), "SamplesPerSec": (0, 0), "BitsPerSample": (0, 0), "AvgBytesPerSec": (1, 1)}
    return {"speech": speech, "nasty": nasty,
            "noformat": with_numbers(bare, **unknown, FileLength=(1428, 0), FileBitrate=(100000, 0)),
            "partformat": with_numbers(speech, Channels=(0, 1), SamplesPerSec=(0, 8000), BitsPerSample=(0, 0),
                                       FileLength=(3723004, 10 ** 9), FileBitrate=(99999, 1)),
            "nosource": nosource.replace("D:\\Music\\", "Abend im Hafen.flac"),  # a name without a folder
            "long": "".join([head, *(entry_line(*tag) for tag in tags), "\t\t</IDTags>", tail]),
            "lines": lines}
