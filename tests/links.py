"""Follows the relative links of the documents in a folder and in its folder docs.

usage: links.py FOLDER
"""
import pathlib
import re
import sys
from urllib.parse import unquote

folder = pathlib.Path(sys.argv[1])


def anchors(document):
    """The fragments that the headings of a document give."""
    headings = re.findall(r"^#+ (.*)$", document.read_text("utf-8"), re.M)
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


documents = sorted([*folder.glob("*.md"), *(folder / "docs").glob("*.md")])
broken, followed = [], 0
for document in documents:
    for link in re.findall(r"\]\(([^)]+)\)", document.read_text("utf-8")):
        if not re.match(r"\w+:", link):
            name, _, fragment = unquote(link).partition("#")
            target = document.parent / name if name else document
            followed += 1
            if not target.is_file() or (fragment and fragment not in anchors(target)):
                broken.append(f"{document.relative_to(folder)}: {link}")
print("\n".join(broken) or f"{followed} links of {len(documents)} documents lead somewhere.")
sys.exit(bool(broken) or not followed)
