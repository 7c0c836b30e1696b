"""Sample documents: the .xml files of this folder, and one with long values."""
import re
from pathlib import Path
from xml.sax import saxutils

LYRICS = "".join(f'{i}: "so" weit = so gut; #{i} \\ \U0001d11e\n' for i in range(3000)) + "\u6b4c"
LONG = [("LYRICS", LYRICS), ("WINDOWS", "text\r\n\r\n" * 5000 + "\r\n" * 5000), ("QUOTES", '"' * 100000),
        ("BREAKS", "\n" * 20000 + "end"), ("HALVED", "a\r" + "x" * 2000 + "end"),
        ("LIMIT", "x" * 1200 + "\r" + "x" * 1201), ("THE LAST LARGE VALUE", "x" * 100000 + ';"'),
        *(("MANY", f"value {i}") for i in range(2000)),
        *((f"Tag {i}", f"value {i}") for i in range(500)), *((f"TURN {i % 3}", f"value {i}") for i in range(3000))]


def entry_line(name, value):
    """The value's entries, one for each part between CRs."""
    element = re.sub(r"""[# &"'<>()/\\:]""", "", name)
    name, value = (saxutils.escape(text, {'"': "&quot;", "'": "&apos;"}) for text in (name, value))
    return "".join(f'\t\t\t<{element} name="{name}">{part}</{element}>\n' for part in value.split("\r"))


def with_tags(document, tags):
    """The document with entries behind those of the converted file's tags."""
    head, tail = document.rsplit("\t\t</IDTags>", 1)
    return f"{head}{tags}\t\t</IDTags>{tail}"


def with_line_ends(text, end):
    """The plug-in writes CR LF, and gives a document to a style sheet as one line; values keep their own."""
    return re.sub(r"(?<!\">)\n(?=\t*<|$)", end, text).encode()


def samples():
    """Documents by name, their lines ended by LF."""
    documents = {path.stem: path.read_text("utf-8") for path in Path(__file__).parent.glob("*.xml")}
    long = with_tags(documents["noformat"], "".join(entry_line(*tag) for tag in LONG))
    return {**documents, "long": long.replace("noformat", "long")}
