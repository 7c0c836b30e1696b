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
from results import Results, folders_of, page_example, run, shown

# What the page's examples for the prompt and for bash hold, or the one that is for both.
EXAMPLES = [("(song.vc)", "[ -s song.vc ]"), ("(*.vc)", "**/*.vc"), ("ffmpeg -i .*", None),
            ("(*.ffmeta)", "**/*.ffmeta"), ("jq -r .*", None), ("(*.json)", "exec jq"), (".facts.csv", ".facts.csv"),
            ("songs.csv", "songs.csv")]
PROGRAM = """#!/usr/bin/env bash
for argument; do
    [[ $argument != *Z:* ]] || { argument=${argument/Z:/}; argument=${argument//\\\\//}; }
    arguments+=("$argument")
done
exec PROGRAM "${arguments[@]}"
"""


def outcome(folder, printed=""):
    """What is in the folder afterwards, and what was printed, with paths as from the folder and in one order."""
    printed = re.sub(r"(?m)^Z:[^>\n]*>", "", printed.replace("\r", "")).replace("\\", "/")
    printed = printed.replace(f"Z:{folder}/", "").replace("./", "")
    files = {path.relative_to(folder): run("metaflac", "--list", path).stdout if path.suffix == ".flac" else
             sorted(path.read_bytes().replace(b" \r\n", b"\n").splitlines())
             for path in folder.rglob("*") if path.is_file()}
    return files, sorted(line for line in printed.splitlines() if line and not line.startswith("Microsoft"))


def prepare(folder, produced):
    below = folders_of(folder)
    for path in produced.glob("awkward.*"):
        shutil.copy(path, below)
        shutil.copy(path, folder / path.name.replace("awkward", "song"))
    for path in produced.glob("bare.*"):
        shutil.copy(path, folder)
    (folder / "song.vc").write_bytes(b"")


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
    for name in ("metaflac", "ffmpeg", "jq"):
        (programs / f"{name}.exe").write_text(PROGRAM.replace("PROGRAM", shutil.which(name)))
        (programs / f"{name}.exe").chmod(0o755)
    for in_bat, in_sh in EXAMPLES:
        seen = {}
        for language, holding in (("bat", in_bat), ("sh", in_sh)):
            folder = work / language
            prepare(folder, produced)
            before = outcome(folder)
            commands = page_example("style-sheets.md", holding, language) if in_sh else shown("style-sheets.md", in_bat)
            printed = (in_prompt(commands, folder) if language == "bat" else
                       run("bash", "-c", commands, cwd=folder).stdout.decode())
            seen[language] = outcome(folder, printed)
            results.equal(f"{in_bat} in {language} does something", seen[language] != before, True)
        results.equal(f"{in_bat} in both", seen["bat"], seen["sh"])
    return results.status()


if __name__ == "__main__":
    sys.exit(main())
