"""Lays the site's pages out as Sphinx takes them: docs/ as it stands, the few other Markdown files that belong beside
it, and a page for each public header and for the example scripts. Links are written for the repository, where they are
read too; here they are turned to the site's pages."""
import posixpath
import re
import shutil
import sys
from pathlib import Path
from xml.etree import ElementTree

NAVIGATION = [
    ("Begin", ["quick-start", "installing", "c-api"]),
    ("Guides", ["guides/rewarded-and-interstitial-video", "guides/playables", "guides/rewardable-popup",
                "guides/offer-wall", "guides/native-ads"]),
    ("Reference", ["threads-and-errors", "api/index", "drive", "scripts", "sandbox"]),
    ("Inside", ["architecture", "writing-a-host", "contributing", "changelog"]),
]
BESIDE = {"CONTRIBUTING.md": "contributing.md", "CHANGELOG.md": "changelog.md", "tools/sandbox/README.md": "sandbox.md",
          "README.md": "index.md"}
HEADERS = "include/vantorium/"
SCRIPTS = "examples/scripts/"
# Headers in the order in which one needs them; those not named follow.
ORDER = ["vantorium.hpp", "delegate.hpp", "error.hpp", "options.hpp", "parameters.hpp", "native_ad.hpp",
         "dispatch_queue.hpp", "gtk.hpp", "gtk_native_ads.hpp", "headless.hpp", "vantorium.h", "c/types.h", "c/error.h",
         "c/options.h", "c/delegate.h", "c/queue.h", "c/native_ad.h", "gtk.h", "headless.h", "version.h"]

MEMBERS = "   :members:\n   :undoc-members:\n"
OPTIONS = {"class": MEMBERS, "struct": MEMBERS, "union": MEMBERS, "file": "   :sections: detaileddescription\n"}

LINK = re.compile(r"(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^)\s]+)\)")


def page_of(header):
    return "api/" + re.sub(r"[/._]", "-", header) + ".rst"


def site_path(path):
    """Where a file of the repository is on the site, with the anchor that it needs there; None when it is not."""
    if path in BESIDE:
        return BESIDE[path], ""
    if path.startswith("docs/"):
        return path[len("docs/"):], ""
    if path + "/" == HEADERS:
        return "api/index.md", ""
    if path.startswith(HEADERS):
        return page_of(path[len(HEADERS):]).replace(".rst", ".md"), ""
    if path == "cmake/version.h.in":
        return "api/version-h.md", ""
    if path.startswith(SCRIPTS):
        return "scripts.md", path[len(SCRIPTS):].replace(".", "")
    return ("scripts.md", "") if path + "/" == SCRIPTS else None


def turned(link, source, page):
    """The link as the site needs it: `source` is the file it stands in, `page` where that file goes."""
    mark, text, target = link.groups()
    if re.match(r"[a-z]+:|#", target):
        return link.group(0)
    file, _, anchor = target.partition("#")
    found = site_path(posixpath.normpath(posixpath.join(posixpath.dirname(source), file)))
    if not found:
        return text  # a file that only the repository has
    path = posixpath.relpath(found[0], posixpath.dirname(page) or ".")
    anchor = anchor or found[1]
    return f"{mark}[{text}]({path}{'#' + anchor if anchor else ''})"


def copy_page(root, source, page, out):
    lines, fence = [], None
    for line in (root / source).read_text().splitlines():
        opening = re.match(r"\s*(```+|~~~+)", line)
        if opening and (fence is None or line.strip().startswith(fence)):
            fence = None if fence else opening.group(1)
        elif fence is None:
            line = LINK.sub(lambda link: turned(link, source, page), line)
        lines.append(line)
    write(out / page, "\n".join(lines) + "\n")


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def toctree(entries, caption=""):
    title = f":caption: {caption}\n" if caption else ""
    return "\n```{toctree}\n:hidden:\n" + title + "\n" + "\n".join(entries) + "\n```\n"


def declarations(name, doxygen):
    """What a header declares, as Breathe's directives, in the header's order."""
    found = []
    for file in doxygen.glob("*.xml"):
        for compound in ElementTree.parse(file).getroot().findall("compounddef"):
            kind, title = compound.get("kind"), compound.findtext("compoundname")
            if kind == "file" and "".join(compound.find("detaileddescription").itertext()).strip():
                found.append((compound, kind, compound.find("location").get("file"), ""))
            if kind in ("class", "struct", "union"):
                found.append((compound, kind, title, title))
            for member in compound.iter("memberdef") if kind in ("namespace", "file") else ():
                found.append((member, member.get("kind"), member.findtext("qualifiedname") or member.findtext("name"),
                              member.findtext("argsstring") or ""))
    rows = {}
    inside = [title for _, kind, title, _ in found if kind in ("class", "struct", "union")]
    named = inside + [title for _, kind, title, _ in found if kind == "enum"]
    for element, kind, title, rest in found:
        place = element.find("location")
        if kind == "typedef" and title in named:
            continue  # C's second name of it
        if place is None or not place.get("file").endswith(HEADERS + name) or title.rpartition("::")[0] in inside:
            continue
        title += re.sub(r"\)[^)]*$", ")", rest) if kind == "function" else ""
        options = OPTIONS.get(kind, "")
        rows[int(place.get("line", 0))] = f".. doxygen{kind}:: {title}\n{options}"
    return [row for _, row in sorted(rows.items())]


def write_headers(root, made, doxygen, out):
    """A page for each public header, those that the build makes included, filled by what Doxygen has read; and a list
    of them."""
    folders = [root / HEADERS, made / "vantorium"]
    names = [file.relative_to(folder).as_posix() for folder in folders for file in folder.rglob("*.h*")]
    names.sort(key=lambda name: (ORDER.index(name) if name in ORDER else len(ORDER), name))
    for name in names:
        text = f"{name}\n{'=' * len(name)}\n\n.. code-block:: cpp\n\n   #include <vantorium/{name}>\n\n"
        write(out / page_of(name), text + "\n".join(declarations(name, doxygen)))
    pages = [posixpath.basename(page_of(name)).removesuffix(".rst") for name in names]
    rows = [f"- [`<vantorium/{name}>`]({page}.md)" for name, page in zip(names, pages)]
    text = "# The headers\n\nEvery public declaration with its comment, as the headers have it.\n\n" + "\n".join(rows)
    write(out / "api/index.md", text + "\n" + toctree(pages))


def write_scripts(root, out):
    text = "# The example scripts\n\nThey are in `examples/scripts/`; [`vantorium-drive`](drive.md) plays them.\n"
    for file in sorted((root / SCRIPTS).glob("*.jsonl")):
        text += f"\n## {file.name}\n\n```json\n{file.read_text()}```\n"
    write(out / "scripts.md", text)


def main():
    root, made, doxygen, out = (Path(each) for each in sys.argv[1:5])
    shutil.rmtree(out, ignore_errors=True)
    for file in sorted((root / "docs").rglob("*")):
        inside = file.relative_to(root / "docs")
        if file.suffix == ".md":
            copy_page(root, f"docs/{inside}", str(inside), out)
        elif file.is_file():
            (out / inside).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(file, out / inside)
    for source, page in BESIDE.items():
        if page != "index.md":
            copy_page(root, source, page, out)
    write_headers(root, made, doxygen, out)
    write_scripts(root, out)
    with open(out / "index.md", "a", encoding="utf-8") as index:
        for caption, pages in NAVIGATION:
            index.write(toctree([page for page in pages if list(out.glob(page + ".*"))], caption))


main()
