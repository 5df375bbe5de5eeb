"""Prints the links between the pages of a folder of HTML that lead nowhere.

usage: links.py FOLDER
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse

folder = pathlib.Path(sys.argv[1])


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], {""}
        self.feed(path.read_text("utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.anchors.add(value)
            elif name in ("href", "src") and not re.match(r"\w+:", value):
                self.links.append(value)


pages = {path.name: Page(path) for path in folder.glob("*.html")}
for source, page in pages.items():
    for link in page.links:
        target, _, anchor = urllib.parse.unquote(link).partition("#")
        target = target or source
        if not (folder / target).exists() or (target in pages
                                              and anchor not in pages[target].anchors):
            print(f"{source}: {link}")
