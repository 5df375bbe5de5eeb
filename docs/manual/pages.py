"""Makes manual pages from the XML that Doxygen writes.

usage: pages.py XML_FOLDER MAN_FOLDER VERSION_SCRIPT RELEASE DATE

Section 3 gets a page for every exported name and one for every family (a Doxygen group), sections 5
and 7 the pages on the configuration file and on the library as a whole. Every name of the version
script must be documented, and nothing but these may be.
"""
import pathlib
import re
import sys
import textwrap
import xml.etree.ElementTree as ElementTree

xml_folder, man_folder, version_script, release, date = sys.argv[1:]
# Pages that are written by hand, and their sections.
PAGES = {"indexpage": ("zvutil", 7), "zv_conf": ("zv.conf", 5)}
LIBRARY = ("zvutil, services for server programs "
           "(\\fIlibzvutil\\fP, \\fI\\-lzvutil\\fP; \\fBpkg\\-config zvutil\\fP)")


def load(name):
    return ElementTree.parse(pathlib.Path(xml_folder, name + ".xml")).getroot().find("compounddef")


def escape(text):
    for char, name in (("\\", "\\(rs"), ("^", "\\(ha"), ("~", "\\(ti"), ("`", "\\(ga")):
        text = text.replace(char, name)
    # A minus sign, rather than a hyphen.
    return re.sub(r"(?<![\w)])-(?=[\w-])|(?<=-)-", r"\\-", text)


def escape_code(text):
    return escape(text).replace("\\-", "-").replace("-", "\\-").replace("'", "\\(aq")


def guard(text):
    """Keeps what begins with a control character from being a request."""
    return re.sub(r"^(?=[.'])", r"\\&", text, flags=re.M)


pages_of = {}  # the id of a documented thing: (page name, section)


def reference(element, text):
    if page := pages_of.get(element.get("refid")):
        return f"\\fB{escape_code(page[0])}\\fP({page[1]})"
    return f"\\fB{escape_code(text)}\\fP"


def inline(element, parameters=()):
    """The text of an element, its markup turned into fonts."""
    parts = [escape(element.text or "")]
    for child in element:
        text = "".join(child.itertext())
        if child.tag == "ref":
            parts.append(reference(child, text))
            if child.tail and child.tail.startswith("()"):
                child.tail = child.tail[2:]
        elif child.tag == "computeroutput":
            if child.find("ref") is not None:
                parts.append(reference(child.find("ref"), text))
            else:
                font = "I" if text in parameters else "B"
                parts.append(f"\\f{font}{escape_code(text)}\\fP")
        elif child.tag in ("emphasis", "bold"):
            parts.append(f"\\f{'I' if child.tag == 'emphasis' else 'B'}{escape(text)}\\fP")
        elif child.tag == "ulink":
            parts.append(inline(child, parameters))
        elif child.tag in ("ndash", "mdash"):
            parts.append("\\(en")
        else:
            sys.exit(f"pages.py: no rule for <{child.tag}>")
        parts.append(escape(child.tail or ""))
    return re.sub(r"\s+", " ", "".join(parts)).strip()


def filled(text):
    """Lines of source in which no line of text can be taken for a request."""
    return guard("\n".join(textwrap.wrap(text, 90, break_long_words=False,
                                         break_on_hyphens=False)))


def flat(element):
    text = " " if element.tag == "sp" else element.text or ""
    return text + "".join(flat(child) + (child.tail or "") for child in element)


def code(element, _):
    lines = [flat(line) for line in element.iter("codeline")] or [element.text]
    text = textwrap.dedent("\n".join(lines)).strip("\n")
    return f".PP\n.in +4n\n.EX\n{guard(escape_code(text))}\n.EE\n.in"


def item_list(element, parameters):
    return "\n".join(".IP \\(bu 2\n" + body(item, parameters, first="")
                     for item in element.findall("listitem"))


def section(element, parameters):
    title = escape(element.findtext("title"))
    heading = f".SH {title.upper()}" if element.tag == "sect1" else f".SS {title}"
    return heading + "\n" + body(element, parameters, first="")


BLOCKS = {"programlisting": code, "verbatim": code, "itemizedlist": item_list, "sect1": section,
          "sect2": section, "parameterlist": None, "simplesect": None, "title": None,
          "anchor": None, "linebreak": None}


def body(element, parameters=(), first=".PP\n"):
    """The paragraphs of an element; what has a section of its own on the page is left out."""
    out = []
    for child in element:
        if child.tag == "para":
            for piece in pieces(child):
                if piece.tag in BLOCKS:
                    out.append(BLOCKS[piece.tag](piece, parameters))
                elif text := inline(piece, parameters):
                    out.append((".PP\n" if out else first) + filled(text))
        elif BLOCKS.get(child.tag):
            out.append(BLOCKS[child.tag](child, parameters))
    return "\n".join(out)


def pieces(para):
    """Cuts a paragraph into runs of text and the blocks between them."""
    run = ElementTree.Element("para")
    run.text = para.text
    for child in para:
        if child.tag not in BLOCKS:
            run.append(child)
            continue
        yield run
        if BLOCKS[child.tag]:
            yield child
        run = ElementTree.Element("para")
        run.text = child.tail
    yield run


def parts_of(description, kind, title=None):
    return [part for part in description.iter("simplesect")
            if part.get("kind") == kind and part.findtext("title") == title]


def first_small(text):
    return text if text[1:2].isupper() else text[:1].lower() + text[1:]


def sentence(element, parameters=()):
    return "".join(inline(para, parameters) for para in element.findall("para"))


def whatis(paras):
    """The line of the NAME section: plain text without its full stop."""
    text = "".join("".join(para.itertext()) for para in paras)
    return escape(first_small(re.sub(r"\s+", " ", text).strip().rstrip(".")))


def errors(part):
    out = []
    for item in part.iter("listitem"):
        name, colon, text = inline(item.find("para")).partition(": ")
        if colon:
            out.append(f".TP\n.B {name}\n{filled(text[:1].upper() + text[1:])}")
        else:
            out.append(f".PP\n{filled(name[:1].upper() + name[1:])}")
    return "\n".join(out)


def declaration(member):
    """The declaration of a function or an object, names of parameters in italics."""
    is_object = member.get("kind") == "variable"
    start = ("extern " if is_object else "") + "".join(member.find("type").itertext())
    start += ("" if start.endswith("*") else " ") + member.findtext("name")
    if is_object:
        return f"\\fB{escape_code(start + (member.findtext('argsstring') or ''))};\\fP"
    start += "("
    out, width = "\\fB" + escape_code(start), len(start)
    parameters = member.findall("param")
    for parameter in parameters:
        kind = "".join(parameter.find("type").itertext())
        name = parameter.findtext("declname") or ""
        kind += "" if kind.endswith("*") or not name else " "
        if parameter is not parameters[0]:
            out, width = out + ",", width + 1
            if width + len(kind + name) > 70:
                out, width = out + "\n" + " " * (len(start) - 1), len(start) - 1
            out, width = out + " ", width + 1
        out += escape_code(kind) + (f"\\fI{name}\\fB" if name else "")
        width += len(kind + name)
    return out + ");\\fP"


class Page:
    def __init__(self, name, number, one_line):
        self.name, self.number = name, number
        self.out = [f'.TH {name} {number} {date} "{release}" "zvutil Manual"',
                    # No name of a function is hyphenated.
                    ".nh", ".SH NAME", f"{name} \\- {one_line}"]

    def add(self, heading, text):
        if text:
            self.out += [f".SH {heading}", re.sub(r"\A\.PP\n", "", text)]

    def see_also(self, names):
        names = sorted({name for name in names if name[0] != self.name}, key=lambda n: (n[1], n[0]))
        self.add("SEE ALSO", " ,\n".join(f".BR {escape_code(name)} ({number})"
                                        for name, number in names))

    def write(self):
        folder = pathlib.Path(man_folder, f"man{self.number}")
        folder.mkdir(parents=True, exist_ok=True)
        text = "\n".join(self.out) + "\n"
        pathlib.Path(folder, f"{self.name}.{self.number}").write_text(text, "utf-8")


def referred(*elements):
    return [pages_of[ref.get("refid")] for element in elements
            for ref in element.iter("ref") if ref.get("refid") in pages_of]


def header_of(member):
    return pathlib.PurePath(member.find("location").get("file")).name


def example(description):
    return "\n".join(code(block, ()) for part in parts_of(description, "par", "Example")
                     for block in part.iter("programlisting"))


def safety(*descriptions):
    for description in descriptions:
        for part in parts_of(description, "par", "Thread safety"):
            return body(part)
    sys.exit("pages.py: a family does not say how it may be used by threads")


def member_page(member, group):
    name = member.findtext("name")
    brief, detail = member.find("briefdescription"), member.find("detaileddescription")
    parameters = [parameter.findtext("declname") for parameter in member.findall("param")]
    page = Page(name, 3, whatis(brief))
    page.add("LIBRARY", LIBRARY)
    page.add("SYNOPSIS", f".nf\n.B #include <{header_of(member)}>\n.PP\n{declaration(member)}\n.fi")
    call = "()" if member.get("kind") == "function" else ""
    bold = f"\\fB{name}\\fP{call} "
    page.add("DESCRIPTION", filled(bold + first_small(sentence(brief, parameters))))
    if text := body(detail, parameters):
        page.out.append(".PP\n" + text.removeprefix(".PP\n"))
    page.add("PARAMETERS", "\n".join(
        f".TP\n.I {item.findtext('.//parametername')}\n"
        + filled(inline(item.find("parameterdescription/para"), parameters))
        for item in detail.iter("parameteritem")))
    for part in parts_of(detail, "return"):
        page.add("RETURN VALUE", filled(f"{bold}gives {sentence(part, parameters)}"))
    page.add("ERRORS", "\n".join(map(errors, parts_of(detail, "par", "Errors"))))
    page.add("THREAD SAFETY", safety(detail, group.find("detaileddescription")))
    family = (group.findtext("compoundname"), 3)
    page.see_also([family, ("zvutil", 7)] + referred(brief, detail))
    page.write()
    return name


def entry(term, element, result=""):
    """An item of a list: a term, and the brief description of its element."""
    return f".TP\n{term}\n{filled(sentence(element.find('briefdescription')) + result)}"


def type_entry(member):
    kind, name = member.get("kind"), member.findtext("name")
    if kind == "enum":
        values = [entry(f".BR {value.findtext('name')} "
                        f'" {escape_code(value.findtext("initializer") or "")}"', value)
                  for value in member.findall("enumvalue")]
        return "\n".join([".PP", filled(sentence(member.find("briefdescription")))] + values)
    if kind == "define":
        name += "(" + ", ".join(p.findtext("defname") for p in member.findall("param")) + ")"
    elif kind == "typedef":
        name = re.sub(r"\(\* (\w+)\) ", r"(*\1)", member.findtext("definition"))
    results = parts_of(member.find("detaileddescription"), "return")
    return entry(f".B {escape_code(name)}", member,
                 "".join(" Gives " + sentence(part) for part in results))


def struct_entry(struct):
    fields = [entry(f".BI \"{escape_code(''.join(field.find('type').itertext()))} \" "
                    f"{field.findtext('name')}{field.findtext('argsstring') or ''}", field)
              for field in struct.iter("memberdef")]
    return "\n".join([entry(f".B struct {struct.findtext('compoundname')}", struct), ".RS"]
                     + fields + [".RE"])


def family_page(group):
    name, detail = group.findtext("compoundname"), group.find("detaileddescription")
    members = list(group.iter("memberdef"))
    header = header_of(members[0])
    page = Page(name, 3, whatis(group.find("briefdescription")))
    page.add("LIBRARY", LIBRARY)
    page.add("SYNOPSIS", f".B #include <{header}>")
    page.add("DESCRIPTION", body(detail) or filled(sentence(group.find("briefdescription"))))
    lists = {"FUNCTIONS": [], "DATA": []}
    types = []
    for part in group.findall("sectiondef"):
        if part.get("kind") == "user-defined":
            lists["FUNCTIONS"].append(f".SS {escape(part.findtext('header'))}")
            if (text := part.find("description")) is not None:
                lists["FUNCTIONS"].append(body(text, first=""))
        for member in part.findall("memberdef"):
            kind = member.get("kind")
            if kind in ("function", "variable"):
                lists["FUNCTIONS" if kind == "function" else "DATA"].append(
                    entry(f".BR {member.findtext('name')} (3)", member))
            else:
                types.append(type_entry(member))
    for inner in group.findall("innerclass"):
        types.append(struct_entry(load(inner.get("refid"))))
    for heading, entries in lists.items():
        page.add(heading, "\n".join(entries))
    page.add("TYPES AND CONSTANTS", "\n".join(types))
    page.add("THE HEADER", body(load(header.replace(".", "_8")).find("detaileddescription")))
    page.add("THREAD SAFETY", safety(detail))
    page.add("EXAMPLE", example(detail))
    page.see_also([("zvutil", 7)] + referred(detail))
    page.write()


def written_page(name, number, element):
    detail = element.find("detaileddescription")
    first = detail.find("para")
    page = Page(name, number, whatis([first]))
    detail.remove(first)
    page.out.append(re.sub(r"(\n\.S[HS] .*)\n\.PP", r"\1", body(detail, first=".SH DESCRIPTION\n")))
    page.write()


groups = [load(path.stem) for path in sorted(pathlib.Path(xml_folder).glob("group__*.xml"))]
for group in groups:
    pages_of[group.get("id")] = (group.findtext("compoundname"), 3)
    for member in group.iter("memberdef"):
        if member.get("kind") in ("function", "variable"):
            pages_of[member.get("id")] = (member.findtext("name"), 3)
for stem, page_name in PAGES.items():
    pages_of[load(stem).get("id")] = page_name
pages_of["index"] = PAGES["indexpage"]  # as Doxygen refers to the main page

documented = {member_page(member, group) for group in groups for member in group.iter("memberdef")
              if member.get("kind") in ("function", "variable")}
for group in groups:
    family_page(group)
for stem, (name, number) in PAGES.items():
    written_page(name, number, load(stem))
exported = set(re.findall(r"^\s+(\w+);$", pathlib.Path(version_script).read_text("utf-8"), re.M))
if documented != exported:
    sys.exit(f"pages.py: documented and exported names differ: {sorted(documented ^ exported)}")
