"""Follows the links of every Markdown file of the repository, where they are read: files must be there, and anchors be
headings of theirs. Addresses elsewhere are checked for their form alone."""
import re
import subprocess
import sys
import unicodedata
from pathlib import Path
from urllib.parse import urlparse

LINK = re.compile(r"!?\[(?:[^\[\]]|!?\[[^\]]*\](?:\([^)]*\))?)*\]\(([^)\s]+)\)")
PICTURE = re.compile(r"!\[[^\]]*\]\(([^)\s]+)\)")


def prose(path):
    """The lines outside of code blocks."""
    lines, fence = [], None
    for number, line in enumerate(path.read_text().splitlines(), 1):
        mark = re.match(r"\s*(```+|~~~+)", line)
        if mark and (fence is None or line.strip().startswith(fence)):
            fence = None if fence else mark.group(1)
        elif fence is None:
            lines.append((number, line))
    return lines


def anchors(path):
    """What headings are called in addresses."""
    found = {}
    for _, line in prose(path):
        heading = re.match(r"#+\s+(.*)", line)
        if not heading:
            continue
        text = re.sub(r"\[([^\]]*)\]\([^)]*\)|[`*]", lambda match: match.group(1) or "", heading.group(1))
        name = "".join(c for c in text.strip().lower() if c in " -_" or unicodedata.category(c)[0] in "LN")
        name = name.replace(" ", "-")
        found[name] = found.get(name, -1) + 1
        if found[name]:
            found[f"{name}-{found[name]}"] = 0
    return found


def flaw(target, file):
    url = urlparse(target)
    if url.scheme or target.startswith("//"):
        return None if url.scheme in ("https", "mailto") and (url.netloc or url.path) else "is no https address"
    path = (file.parent / url.path).resolve() if url.path else file.resolve()
    if not path.exists():
        return "is not there"
    if url.fragment and (path.suffix != ".md" or url.fragment not in anchors(path)):
        return f"has no heading #{url.fragment}"
    return None


def main():
    root, checked, wrong = Path(sys.argv[1]), 0, 0
    git = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", "*.md"],
                         cwd=root, capture_output=True, text=True)
    if git.returncode:
        print(f"docs: the links of Markdown files are checked in a clone only, git says: {git.stderr.strip()}",
              file=sys.stderr)
        return 1
    listed = git.stdout
    for name in filter(None, listed.split("\0")):
        file = root / name
        for number, line in prose(file) if file.exists() else ():
            for target in sorted({*LINK.findall(line), *PICTURE.findall(line)}):
                checked += 1
                problem = flaw(target, file)
                if problem:
                    wrong += 1
                    print(f"{name}:{number}: {target} {problem}", file=sys.stderr)
    print(f"docs: {checked} links in Markdown files, {wrong} broken")
    return 1 if wrong else 0


sys.exit(main())
