#!/usr/bin/env python3
"""Writes inputs for each fuzz target to start from: FOLDER/TARGET/NAME.

    seeds.py FOLDER
"""

import os
import struct
import sys


def tag_list(*entries):
    packed = struct.pack("<i", len(entries))
    for name, value, raw in entries:
        body = (name + "\0" + value + "\0").encode("utf-16-le", "surrogatepass") + raw
        packed += struct.pack("<i", len(body) + 4) + body
    return packed


def wave_format(tag, extension=b""):
    return struct.pack("<HHIIHHH", tag, 2, 44100, 176400, 4, 16, len(extension)) + extension


def chunk(name, content):
    return name + struct.pack("<I", len(content)) + content + b"\0" * (len(content) % 2)


def block(kind, content, last=False):
    return struct.pack(">I", (last << 31) | (kind << 24) | len(content)) + content


def sized(text, order="<"):
    return struct.pack(order + "I", len(text)) + text


GUID_TAIL = bytes.fromhex("000000001000800000aa00389b71")
EXTENSIBLE = wave_format(0xFFFE, struct.pack("<HIH", 16, 3, 1) + GUID_TAIL)

INFO = b"INFO" + b"".join(chunk(name, text) for name, text in [
    (b"INAM", b"A title\0"), (b"IART", b"One\0"), (b"IART", "Zw\u00f6lf".encode()), (b"IXYZ", b"\xff\xfe")])
WAVE = b"WAVE" + chunk(b"fmt ", EXTENSIBLE) + chunk(b"LIST", INFO) + chunk(b"data", b"123456") + b"\0" * 4

COMMENTS = sized(b"an encoder") + struct.pack("<I", 3) + sized(b"TITLE=A title") + sized(b"artist=One") + \
    sized(b"ARTIST=Two")
PICTURE = struct.pack(">I", 3) + sized(b"image/png", ">") + sized(b"front", ">") + bytes(16) + sized(b"12345", ">")
STREAM_INFO = struct.pack(">HH6sII16s", 4096, 4096, bytes(6), 44100 << 12 | 1 << 9 | 15 << 4, 88200, bytes(range(16)))

SEEDS = {
    "settings": [text.encode("utf-16-le") for text in (
        '-xsltfile="C:\\My Files\\a-b.xsl" --ext = .txt -filename="x" -', "C:\\Music\\Track.01\\song.tar.gz")],
    "document": [b"\0\0" + tag_list(
        ("Title", "a & b <c> \"d' \U0001F600 \udc00", b""), ("Artist", "A\rB\r", b""), ("Cover", "png", b"12345"),
        ("_x", "", b""), ("( )", "\u00e9\uffff", b"")), b"\xf0\xff" + tag_list(("#a", "\ud83d", b""))],
    "wave_format": [wave_format(1), wave_format(85), EXTENSIBLE],
    "wav": [b"RIFF" + sized(WAVE)],
    "flac": [b"fLaC" + block(0, STREAM_INFO) + block(4, COMMENTS) + block(6, PICTURE) + block(1, bytes(3), True) +
             bytes(8)],
}

for target, inputs in SEEDS.items():
    folder = os.path.join(sys.argv[1], target)
    os.makedirs(folder, exist_ok=True)
    for number, content in enumerate(inputs):
        with open(os.path.join(folder, f"seed{number}"), "wb") as file:
            file.write(content)
