"""What the checks of this folder share: counting results, running programs, taking examples out of the pages."""
import os
import re
import shutil
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Results:
    def __init__(self):
        self.passed = self.failed = 0

    def equal(self, label, got, want):
        self.passed += got == want
        self.failed += got != want
        if got != want:
            start = max(0, len(os.path.commonprefix([repr(got), repr(want)])) - 60)
            print(f"FAILED {label}\n  got  {repr(got)[start:][:300]}\n  want {repr(want)[start:][:300]}")

    def status(self):
        """Prints the count; the exit status."""
        print(f"{self.passed} passed, {self.failed} failed")
        return 1 if self.failed else 0


def run(*command, stdin=b"", cwd=None):
    return subprocess.run([str(part) for part in command], input=stdin, capture_output=True, timeout=120, cwd=cwd)


def transformed(sheet, document):
    """What a style sheet that ships makes of a document, a file or bytes, by xsltproc."""
    is_file = isinstance(document, Path)
    return run("xsltproc", ROOT / "XSLT" / sheet, document if is_file else "-", stdin=b"" if is_file else document)


def folders_of(folder):
    """Makes a folder anew with another in it, which it gives back."""
    shutil.rmtree(folder, ignore_errors=True)
    below = folder / "a folder below"
    below.mkdir(parents=True)
    return below


def page_example(page, holding, language="[a-z]*"):
    """The one code block of docs/`page` that holds this text."""
    blocks = re.findall(rf"(?ms)^```{language}\n(.*?)^```$", (ROOT / "docs" / page).read_text("utf-8"))
    block, = [block for block in blocks if holding in block]
    return block


def shown(page, command):
    """The one indented command of docs/`page` that matches the pattern, or what the pattern captures of it."""
    line, = re.finditer(f"(?m)^ {{4,}}({command})$", (ROOT / "docs" / page).read_text("utf-8"))
    return line[line.re.groups].strip()
