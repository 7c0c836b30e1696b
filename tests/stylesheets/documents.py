"""Sample documents: the .xml files of this folder, and others made of them."""
import re
from pathlib import Path
from xml.sax import saxutils

LYRICS = "".join(f'{i}: "so" weit = so gut; #{i} \\ \U0001d11e\n' for i in range(3000)) + "\u6b4c"
LONG = [("LYRICS", LYRICS), ("WINDOWS", "text\r\n\r\n" * 5000 + "\r\n" * 5000), ("QUOTES", '"' * 100000),
        ("BREAKS", "\n" * 20000 + "end"), ("HALVED", "a\r" + "x" * 2000 + "end"),
        ("THE LAST LARGE VALUE", "x" * 100000 + ';"'), *(("MANY", f"value {i}") for i in range(2000)),
        *((f"Tag {i}", f"value {i}") for i in range(500)), *((f"TURN {i % 3}", f"value {i}") for i in range(3000))]
# Names of several formats for the same; a value that ends in a line break; names as wide as Text.xslt's column.
NAMES = [("TIT2", "Song"), ("tracknumber", "3/12"), ("ALBUM ARTIST", 'Various, "all"'),
         ("AlbumArtist", "Ann"), ("Album_Artist", "Cy"), ("DISC/NO", "1"), ("discnumber", "2"), ("YEAR", "1999"),
         ("COMMENT", "ripped with care\r\n"), ("EMPTY IN THE MIDDLE", "one\r\rthree\r\n\r\n"),
         *(("N" * width, "x") for width in (36, 37, 38)), ("HALVED", "a\rand the rest of it, to its very end"),
         ("ESCAPED", '"and the rest of it, to its very end')]


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
    source, converted = bare.split("<ConvertedFile>")
    source = re.sub("(<File(Name|Created|Modified|Accessed).*?>)[^<]+", r"\1", source)
    nosource = f"{source}<ConvertedFile>{converted}"
    head, tail = bare.rsplit("\t\t</IDTags>", 1)

    def with_numbers(document, **numbers):
        for fact, values in numbers.items():
            values = iter(values)
            document = re.sub(f"(?<=<{fact}>)[^<]*", lambda _: str(next(values)), document)
        return document
    new = speech.replace("</FileAccessed>", "</FileAccessed><FileMood>calm, mild</FileMood>").replace(
        "</Channels>", "</Channels><Layout>5</Layout>")  # facts that the style sheets do not know
    unknown = {"Channels": (0, 0), "SamplesPerSec": (0, 0), "BitsPerSample": (0, 0), "AvgBytesPerSec": (1, 1)}
    made = {
        "noformat": with_numbers(bare, **unknown, FileLength=(1428, 0), FileBitrate=(100000, 0)),
        "partformat": with_numbers(speech, Channels=(0, 1), SamplesPerSec=(0, 8000), BitsPerSample=(0, 0),
                                   FileLength=(3723004, 10 ** 9), FileBitrate=(99999, 1)),
        "nosource": nosource.replace("D:\\Music\\", "Abend im Hafen.flac"),  # a name without a folder
        "long": "".join([head, *(entry_line(*tag) for tag in LONG), "\t\t</IDTags>", tail]),
        "names": with_numbers("".join([head, *(entry_line(*tag) for tag in NAMES), "\t\t</IDTags>", tail]),
                              FileSize=(999999999999999, 9007199254740993)).replace(">.flac<", ">.<"),
        "lines": lines, "new": new}
    in_folders = {name: text.replace("D:\\Music", f"D:\\{name}") for name, text in made.items()}
    return {"speech": speech, "nasty": nasty, **in_folders}
