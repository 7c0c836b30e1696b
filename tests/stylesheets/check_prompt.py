#!/usr/bin/env python3
"""Checks that the page's commands do the same in the command prompt of Windows as in bash.

check_prompt.py WORK PRODUCED   runs both in copies of a folder with the files in PRODUCED that the plug-in made, and
                                an empty .vc; ends with "N passed, N failed"; needs Wine with its prefix

The programs that the prompt starts are those of Linux, by scripts that turn Windows' paths into theirs.
"""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # leave nothing beside the sources
from check_sheets import shown
from results import Results, folders_of, page_example, run

# What the page's examples for the prompt and for bash hold, or how the one that is for both begins.
EXAMPLES = [("metaflac", "(song.vc)", "[ -s song.vc ]"), ("metaflac", "(*.vc)", "**/*.vc"), ("ffmpeg", "ffmpeg", None),
            ("ffmpeg", "(*.ffmeta)", "**/*.ffmeta"), ("jq", "jq", None), ("jq", "(*.json)", "exec jq"),
            (None, ".facts.csv", ".facts.csv"), (None, "songs.csv", "songs.csv")]
PROGRAM = """#!/usr/bin/env bash
for argument; do
    [[ $argument != *Z:* ]] || { argument=${argument/Z:/}; argument=${argument//\\\\//}; }
    arguments+=("$argument")
done
exec PROGRAM "${arguments[@]}"
"""


def outcome(folder, printed):
    """What is in the folder afterwards, and what was printed, with paths as from the folder and in one order."""
    printed = re.sub(r"(?m)^Z:[^>\n]*>", "", printed.replace("\r", "")).replace("\\", "/")
    printed = printed.replace(f"Z:{folder}/", "").replace("./", "")
    files = {}
    for path in sorted(folder.rglob("*")):
        if path.suffix == ".flac":
            tags = run("metaflac", "--no-utf8-convert", "--export-tags-to=-", path).stdout
            files[str(path.relative_to(folder))] = tags, run("metaflac", "--list", "--block-type=PICTURE", path).stdout
        elif path.is_file():
            files[str(path.relative_to(folder))] = sorted(path.read_bytes().replace(b" \r\n", b"\n").splitlines())
    return files, sorted(line for line in printed.splitlines() if line and not line.startswith("Microsoft"))


def prepare(folder, produced):
    below = folders_of(folder)
    for path in produced.iterdir():
        if path.name.startswith(("awkward.", "bare.")):
            shutil.copy(path, folder if path.name.startswith("bare.") else below)
    for ext in (".flac", ".json", ".ffmeta"):
        shutil.copy(produced / f"awkward{ext}", folder / f"song{ext}")
    (folder / "song.vc").write_bytes(b"")
    long = [line for line in (below / "awkward.vc").read_bytes().splitlines(True) if len(line) < 65535]
    (below / "awkward.vc").write_bytes(b"".join(long))
    other_rate = (below / "awkward.json").read_bytes().replace(b"44100", b"48000")
    (below / "awkward.json").write_bytes(other_rate)


def in_prompt(commands, folder):
    """Each line by a pipe, which ends when the programs of Linux have ended: Wine's prompt does not wait for them."""
    return "".join(subprocess.run(["wine", "cmd"], input=f"{line}\n".encode(), stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, cwd=folder, timeout=120).stdout.decode()
                   for line in commands.splitlines())


def main():
    work, produced = (Path(argument).resolve() for argument in sys.argv[1:])
    results = Results()
    programs = folders_of(work / "programs").parent
    os.environ["WINEPATH"] = f"Z:{programs}".replace("/", "\\")
    for name, *examples in EXAMPLES:
        if name:
            (programs / f"{name}.exe").write_text(PROGRAM.replace("PROGRAM", shutil.which(name)))
            (programs / f"{name}.exe").chmod(0o755)
        seen = {}
        for language, holding in zip(("bat", "sh"), examples):
            folder = work / language
            prepare(folder, produced)
            before = outcome(folder, "")
            commands = page_example("style-sheets.md", holding, language) if examples[1] else shown(examples[0])
            printed = (in_prompt(commands, folder) if language == "bat" else
                       run("bash", "-c", commands, cwd=folder).stdout.decode())
            seen[language] = outcome(folder, printed)
            results.equal(f"{examples[0]} in {language} does something", seen[language] != before, True)
        results.equal(f"{examples[0]} in both", seen["bat"], seen["sh"])
        if name == "metaflac":
            files, printed = seen["bat"]
            results.equal("an empty .vc is skipped", (printed[-1], b"TITLE=" in files["song.flac"][0]),
                          ("skipped, empty: song.vc", True))
    print(f"{results.passed} passed, {results.failed} failed")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
