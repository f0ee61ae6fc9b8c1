"""Holds the errors of docs/threads-and-errors.md against the source, both ways: a text of the page is one that the code
has, and a text that the code gives to an error of the SDK is on the page. Of texts that are put together in other functions
than the one that makes the error, and of what the C API says of wrong arguments, only the first way is held."""
import re
import sys
from pathlib import Path

LITERALS = r'(?:R?"(?:[^"\\]|\\.)*"\s*)+'
RAISED = re.compile(r"(?:internalError|noPrecachedDataToShow)\(\s*(?:fmt::format\(\s*)?(" + LITERALS + ")")
HOLES = re.compile(r"\{[^}]*\}|…|\*[^*]*\*|\d{3,}|\"")
NEEDED = 8  # characters; shorter pieces between two holes say nothing


def pieces(text):
    return [piece.strip(" .;,") for piece in HOLES.split(text) if len(piece.strip(" .;,")) >= NEEDED]


def plain(literals):
    """What adjacent literals of the source say together."""
    joined = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literals))
    return joined.replace('\\"', '"').strip("()")


def main():
    root = Path(sys.argv[1])
    files = [file for folder in ("src", "hosts", "bindings") for file in sorted((root / folder).rglob("*.cpp"))]
    sources = {file: file.read_text() for file in files}
    code = " ".join(plain(match) for text in sources.values()
                    for match in re.findall(LITERALS, text))
    page = (root / "docs/threads-and-errors.md").read_text()
    section = page[page.index("## The SDK's own errors"):page.index("## Errors of the platform")]
    lines = [line for line in section.splitlines() if line.startswith("| ")]
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]
    texts = [row[2] if row[0].isdigit() else row[0] for row in rows if row[0] not in ("code", "text")]
    wrong = [f"docs/threads-and-errors.md: no code says: {text}" for text in texts
             if any(piece not in code for piece in pieces(text)) and not text.startswith("one of those below")]
    raised = [(file, plain(match)) for file, text in sources.items() for match in RAISED.findall(text)]
    wrong += [f"{file.relative_to(root)}: docs/threads-and-errors.md lacks: {text}" for file, text in raised
              if any(piece not in section for piece in pieces(text))]
    print("\n".join(wrong), file=sys.stderr, end="\n" if wrong else "")
    print(f"docs: {len(texts)} error texts on the page, {len(raised)} in the code, {len(wrong)} differ")
    return 1 if wrong or not raised else 0


sys.exit(main())
