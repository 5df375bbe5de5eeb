"""Follows the relative links of the documents in a folder and in its folder docs.

usage: links.py FOLDER
"""
import pathlib
import re
import sys

folder = pathlib.Path(sys.argv[1])
documents = sorted([*folder.glob("*.md"), *(folder / "docs").glob("*.md")])
broken, followed = [], 0
for document in documents:
    for link in re.findall(r"\]\(([^)]+)\)", document.read_text("utf-8")):
        if not re.match(r"\w+:", link):
            followed += 1
            if not (document.parent / link).is_file():
                broken.append(f"{document.relative_to(folder)}: {link}")
print("\n".join(broken) or f"{followed} links of {len(documents)} documents lead somewhere.")
sys.exit(bool(broken) or not followed)
