#!/usr/bin/env python3
"""Checks what scripts answer to a wrong call, and that the check of links sees a broken one: check_scripts.py WORK"""
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
ICON = ROOT / "resources" / "WriteMetadataFile.ico"


def main():
    work, failed = Path(sys.argv[1]), 0
    work.mkdir(parents=True, exist_ok=True)
    page, icon = work / "page.md", ICON.read_bytes()
    page.write_text("# Title\n\n[here](#title) [nowhere](#nowhere) [no file](none.md)\n")
    for status, words, command in (
            (1, "#nowhere: there is no such heading", ["scripts/pages.py", "check", page]),
            (1, "none.md: there is no such file", ["scripts/pages.py", "check", page]),
            (1, "3 links and pictures, 2 wrong", ["scripts/pages.py", "check", page]),
            (2, "there is no file none.md", ["scripts/pages.py", "check", "none.md"]),
            (0, "Needs ImageMagick", ["resources/make-icon.sh", "--help"]),
            (2, "Needs ImageMagick", ["resources/make-icon.sh", "x"])):
        made = subprocess.run(command, cwd=ROOT, capture_output=True, encoding="utf-8", timeout=60)
        shown = made.stdout + made.stderr
        if (made.returncode, words in shown, "Traceback" in shown) != (status, True, False):
            failed += 1
            print(f"FAILED {command}: status {made.returncode}, not {status}, or not \"{words}\" in\n{shown}")
    if ICON.read_bytes() != icon:
        failed += 1
        print("FAILED: the icon was drawn anew")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
