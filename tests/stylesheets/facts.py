"""How Html.xslt and Text.xslt have to show what every document holds: labels, numbers and what they mean."""
from documents import FORMAT, NUMBERS

LABELS = {"FileName": "Name", "FileNamePath": "Folder", "FileSize": "Size in bytes", "FileLength": "Length",
          "FileBitrate": "Bitrate", "FileCreated": "Created", "FileModified": "Modified", "FileAccessed": "Accessed",
          "Channels": "Channels", "SamplesPerSec": "Samples per second", "BitsPerSample": "Bits per sample",
          "AvgBytesPerSec": "Bytes per second"}


def reading(fact, number):
    """What follows the number: its meaning in the usual unit, if it can be in that."""
    if fact == "FileLength" and 0 < number < 10 ** 9:
        minutes, milliseconds = divmod(number, 60000)
        hours, minutes = divmod(minutes, 60)
        clock = f"{hours}:{minutes:02}" if hours else str(minutes)
        return f" ({clock}:{milliseconds // 1000:02}.{milliseconds % 1000:03} if milliseconds)"
    return " (usually kbit/s)" if fact == "FileBitrate" and 0 < number < 10 ** 5 else ""


def known(audio_format):
    """Zeros in the first three say that nothing is known of it."""
    return any(int(audio_format[fact]) for fact in FORMAT[:3])


def shown(fact, value, commas):
    if fact in NUMBERS + FORMAT and value:
        short = len(value) <= 15 and commas
        return (f"{int(value):,}" if short else value) + reading(fact, int(value))
    return value.replace("T", " ") if fact.startswith("File") and not fact.startswith("FileName") else value


def text_facts(content, side, column):
    """The lines of Text.xslt up to the first list."""
    def line(fact, value):
        label = LABELS[fact] + (" (UTC)" if fact in ("FileCreated", "FileModified", "FileAccessed") else "")
        return ("  " + label).ljust(column) + (shown(fact, value, False) or "-")
    lines = [line(fact, value) for fact, value in content.facts[side].items() if fact in LABELS]
    if known(content.format[side]):
        lines += ["", "Audio format", *(line(fact, value) for fact, value in content.format[side].items())]
    heading = "SOURCE FILE" if side == "SourceFile" else "CONVERTED FILE"
    return "\r\n".join([heading, "=" * len(heading), *lines, ""])


def html_rows(content):
    """The rows of Html.xslt: label, source and converted file."""
    def row(fact, values):
        return [LABELS[fact], *(shown(fact, value, True) or "\u2013" for value in values)]
    facts, formats = (list(sides.values()) for sides in (content.facts, content.format))
    rows = [row(fact, [side[fact] for side in facts]) for fact in LABELS if fact in facts[0] and fact != "FileName"]
    if any(map(known, formats)):
        rows += [row(fact, [side[fact] if known(side) else "" for side in formats]) for fact in FORMAT]
    return rows


def html_format(audio_format):
    """The line below the file's name, or an empty one."""
    rate, bits, channels = (int(audio_format[fact]) for fact in ("SamplesPerSec", "BitsPerSample", "Channels"))
    parts = [f"{rate:,} Hz" if rate else "", f"{bits} bit" if bits else "",
             f"{channels} channel{'s' * (channels != 1)}" if channels else ""]
    return ", ".join(filter(None, parts))
