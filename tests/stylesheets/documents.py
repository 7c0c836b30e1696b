"""Sample documents, written line by line as the plug-in writes them."""
import re
from xml.sax import saxutils

NUMBERS = ("FileSize", "FileLength", "FileBitrate")
FORMAT = ("Channels", "SamplesPerSec", "BitsPerSample", "AvgBytesPerSec")
FACTS = ("FileName", "FileNameNoExt", "FileNameExt", "FileNamePath", *NUMBERS, "FileCreated", "FileModified",
         "FileAccessed")


def escape(text):
    return saxutils.escape(text, {'"': "&quot;", "'": "&apos;"})


def entry_line(name, value):
    element = re.sub(r"""[# &"'<>()/\\:]""", "", name)
    return f'\t\t\t<{element} name="{escape(name)}">{escape(value)}</{element}>'


def file_lines(element, path, numbers, times, audio_format, properties, tags):
    folder, name = re.fullmatch(r"(.*\\)?(.*)", path, re.S).groups(default="")
    stem, dot, ext = name.rpartition(".")
    names = [name, stem if dot else name, "." + ext if dot else ".", folder] if path != "-" else [""] * 4
    values = zip(FACTS, [*map(escape, names), *numbers, *times])
    return [f"\t<{element}>", *(f"\t\t<{fact}>{value}</{fact}>" for fact, value in values),
            "\t\t<AudioProperties>", *(entry_line(*entry) for entry in properties), "\t\t</AudioProperties>",
            "\t\t<AudioFormat>",
            *(f"\t\t\t<{fact}>{value}</{fact}>" for fact, value in zip(FORMAT, audio_format)),
            "\t\t</AudioFormat>", "\t\t<IDTags>",
            *(entry_line(name, piece) for name, value in tags if value for piece in value.split("\r")),
            "\t\t</IDTags>", f"\t</{element}>"]


def document(source, converted):
    return ['<?xml version="1.0" encoding="UTF-8"?>', "<AudioMetadata>", *file_lines("SourceFile", *source),
            *file_lines("ConvertedFile", *converted), "</AudioMetadata>"]


def written(lines):
    """The file that the plug-in writes without a style sheet."""
    return "".join(line + "\r\n" for line in lines).encode()


def samples():
    """Lists of lines by name."""
    times = ("2024-03-07T14:05:09", "2024-03-07T14:05:09", "2024-03-08T08:00:00")
    cd = (2, 44100, 16, 176400)
    title = 'Grüße, "Küsse" & <mehr> \\ 100%; a=b #1'
    lyrics = "".join(f'{i}: "so" weit = so gut; #{i} \\ \U0001d11e\n' for i in range(3000)) + "\u6b4c"
    return {
        "speech": document(
            ("D:\\Recordings\\Abend im Hafen.wav", (31752044, 180000, 1411), times, cd,
             [("Encoding", "PCM"), ("Sample Rate", "44100 Hz")],
             [("Title", "Abend im Hafen"), ("Artist", "Fatima Zahrā"), ("Comment", "first take"),
              ("Software", "field recorder")]),
            ("D:\\Music\\Abend im Hafen.flac", (18233417, 180000, 810), ("2024-03-08T08:00:00",) * 3, cd,
             [("Encoding", "FLAC"), ("Sample Rate", "44100 Hz"), ("Vendor", "reference encoder 1.4")],
             [("TITLE", "Abend im Hafen – مساء في الميناء"), ("ARTIST", "Fatima Zahrā\rΝίκος Παππάς"),
              ("ALBUM", "Вечер в порту"), ("DATE", "2024"), ("TRACKNUMBER", "3"),
              ("GENRE", "Field recording"), ("COMMENT", "Recorded from the quay,\nwind from the west.")])),
        "nasty": document(
            ("C:\\Bö\\it's \"a\" & <b>.wav", (1, -2, -3), times, (1, 8000, 8, 8000),
             [("Sample Rate", "44100"), ("x(y)/z:", 'a,b "c"\r\nd'), ("Empty", ""), ("v1.0", "a, b")],
             [("TITLE", title), ("\u0645\u0632\u0627\u062c", "\u0647\u0627\u062f\u0626")]),
            ("C:\\Bö\\noext", (2 ** 63 - 1, -2 ** 63, -2 ** 31), times, (65535, 2 ** 31 - 1, 65535, -1),
             [("ID3:TXXX (Mood)", "\u007f\u0085\u2028\ufffd\U0010ffff")],
             [("TITLE", title), ("ARTIST", "Ann\r\u5c71\u7530\r"), ("Title", "again"),
              ("ARTIST", "Cy\r\nD\tE "), ("FileName", "=1+1"), ("AudioMetadata", "];[#"), ("IDTags", "'"),
              ("SPACE", "  "), ("A name that is longer than the widest column", "one\rtwo\nlines"),
              ("_x", "\\;"), ("v1.0", "a, b"), ("\u0645\u0632\u0627\u062c", "x")])),
        "nosource": document(("-", (0, 0, 0), ("",) * 3, cd, [], []),
                             ("C:\\a.mp3", (5, 6, 7), times, cd, [], [])),
        "long": document(
            ("C:\\long.wav", (1, 2, 3), times, cd, [], []),
            ("C:\\long.flac", (1, 2, 3), times, cd, [],
             [("LYRICS", lyrics), ("QUOTES", '"' * 100000), ("BREAKS", "\n" * 20000 + "end"),
              ("LAST", "x" * 100000 + ';"'), ("MANY", "\r".join(f"value {i}" for i in range(2000))),
              *((f"Tag {i}", f"value {i}") for i in range(500))])),
    }
