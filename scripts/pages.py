#!/usr/bin/env python3
"""The pages for users as HTML, and a check of the links of pages.

pages.py make FOLDER PAGE.md…   writes PAGE.html for each, in this order in the row of links that they share, and
                                pages.css, to FOLDER; links from one page to another lead to the HTML
pages.py check PAGE…            for each link and picture in the pages (.html or .md): the file is there, and the
                                heading that the link names

Needs cmark-gfm.
"""
import html
import re
import subprocess
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

FRAME = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{title} - WriteMetadataFile</title>
<link rel="stylesheet" href="pages.css">
</head>
<body>
<nav>
{links}</nav>
<main>
{body}</main>
</body>
</html>
"""


def body_of(page):
    """The page's HTML, with the ids for its headings that links to Markdown headings take for granted."""
    made = subprocess.run(["cmark-gfm", "--unsafe", "--extension", "table", page], check=True, capture_output=True,
                          encoding="utf-8").stdout
    used = {}

    def with_id(heading):
        level, content = heading.groups()
        text = html.unescape(re.sub("<[^>]*>", "", content)).lower()
        name = re.sub(r"[^\w -]", "", text).replace(" ", "-")
        count = used[name] = used.get(name, -1) + 1
        name += f"-{count}" if count else ""
        return f'<h{level} id="{name}">{content}</h{level}>'
    return re.sub(r"<h([1-6])>(.*?)</h\1>", with_id, made)


def make(folder, pages):
    folder.mkdir(parents=True, exist_ok=True)
    bodies = {page.stem: body_of(page) for page in pages}
    titles = {stem: re.search("<h1[^>]*>(.*?)</h1>", body)[1] for stem, body in bodies.items()}
    for stem, body in bodies.items():
        links = "".join(f'<a href="{other}.html"{" aria-current=page" * (other == stem)}>{title}</a>\n'
                        for other, title in titles.items())
        body = re.sub(r'(<a href="[^":]*)\.md(?=["#])', r"\1.html", body)
        # A table wider than the window scrolls by itself.
        body = body.replace("<table>", '<div class="table">\n<table>').replace("</table>", "</table>\n</div>")
        page = FRAME.format(title=titles[stem], links=links, body=body)
        (folder / f"{stem}.html").write_text(page, "utf-8", newline="\r\n")
    style = Path(__file__).with_name("pages.css").read_text("utf-8")
    (folder / "pages.css").write_text(style, "utf-8", newline="\r\n")


class Page(HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.ids, self.links = set(), []
        self.feed(body_of(path) if path.suffix == ".md" else path.read_text("utf-8"))
        self.close()

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name == "id":
                self.ids.add(value)
            elif name in ("href", "src"):
                self.links.append(value)


def check(paths):
    """Prints what is wrong, and how much was looked at; true when nothing is."""
    pages = {path.resolve(): Page(path) for path in paths}
    count = wrong = 0
    for path, page in pages.items():
        for link in page.links:
            if re.match("https?:", link):
                continue
            count += 1
            file, _, heading = unquote(link).partition("#")
            target = (path.parent / file).resolve() if file else path
            if not target.is_file():
                fault = "there is no such file"
            elif heading and (target not in pages or heading not in pages[target].ids):
                fault = "there is no such heading in the pages given"
            else:
                continue
            wrong += 1
            print(f"{path}: {link}: {fault}", file=sys.stderr)
    print(f"{len(pages)} pages, {count} links and pictures, {wrong} wrong")
    return count > 0 and wrong == 0


def main(arguments):
    paths = [Path(argument) for argument in arguments[1:]]
    pages = paths[1:] if arguments[:1] == ["make"] else paths
    missing = [page for page in pages if not page.is_file()]
    if arguments[:1] in (["make"], ["check"]) and missing:
        print(f"there is no file {missing[0]}", file=sys.stderr)
        return 2
    if arguments[:1] == ["make"] and paths[1:]:
        make(paths[0], paths[1:])
    elif arguments[:1] == ["check"] and paths:
        return 0 if check(paths) else 1
    elif "--help" in arguments:
        print(__doc__.strip())
    else:
        print(__doc__, file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
