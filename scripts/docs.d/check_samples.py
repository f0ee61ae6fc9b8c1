"""Compiles the C and C++ samples of the documentation, without keeping anything. One that has a main stands for itself.
Pieces are put into functions, all of one file, whose parameters are what the guides take for granted."""
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SAMPLE = re.compile(r"^```(cpp|c)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
INCLUDE = re.compile(r"^#include .*$", re.MULTILINE)
PIECES = """
#include <gtkmm.h>
#include <iostream>
#include <vantorium/gtk.hpp>
#include <vantorium/gtk_native_ads.hpp>
#include <vantorium/vantorium.hpp>
using vantorium::Vantorium;
"""
GRANTED = """[[maybe_unused]] std::shared_ptr<vantorium::Host> host,
 [[maybe_unused]] std::shared_ptr<vantorium::VantoriumNativeAd> ad,
 [[maybe_unused]] std::shared_ptr<vantorium::VantoriumNativeAdView> view, [[maybe_unused]] Gtk::Box& feed"""
COMPILERS = {"cpp": ["g++", "-std=c++20", "-x", "c++"], "c": ["gcc", "-std=c11", "-x", "c"]}

# Pieces are not called, and callbacks of a few lines leave arguments alone.
WARNINGS = ["-Wall", "-Wextra", "-Werror", "-Wno-unused-function", "-Wno-unused-parameter"]


def samples_of(root):
    for file in [root / "README.md", *sorted((root / "docs").rglob("*.md"))]:
        content = file.read_text()
        for sample in SAMPLE.finditer(content):
            line = content.count("\n", 0, sample.start(2)) + 1
            yield sample.group(1), sample.group(2), f'#line {line} "{file.relative_to(root)}"\n'


def sources_of(samples):
    """What is to be compiled, each with its language."""
    pieces = {"cpp": PIECES, "c": "#include <stdio.h>\n#include <vantorium/vantorium.h>\n"}
    for number, (language, text, place) in enumerate(samples):
        if re.search(r"\bmain\s*\(", text):
            yield language, place + text
            continue
        # What stands above an ellipsis is no part of the function that goes on below it. A piece of C has functions of
        # its own.
        above, gap, body = INCLUDE.sub("", text).rpartition("\n…\n")
        if language == "c" and not gap:
            above, body = body, ""
        granted = GRANTED if language == "cpp" else "void"
        below = above.count("\n") + 2 if gap else 0
        line = re.sub(r"\d+", lambda start: str(int(start[0]) + below), place, count=1)
        pieces[language] += "\n".join(INCLUDE.findall(text)) + f"\n{place}{above}\n"
        pieces[language] += f"static inline void piece{number}({granted}) {{\n{line}{body}}}\n"
    yield from pieces.items()


def complaints(root, flags, language, source):
    command = [*COMPILERS[language], *WARNINGS, "-fsyntax-only", f"-I{root}/include", *flags, "-"]
    result = subprocess.run(command, input=source, capture_output=True, text=True, check=False)
    if result.returncode == 0:
        return []
    return [line for line in result.stderr.splitlines() if re.search("error:|required from here", line)]


def main():
    root = Path(sys.argv[1])
    flags = subprocess.run(["pkg-config", "--cflags", "gtkmm-4.0"], check=True, capture_output=True, text=True).stdout
    flags = [flag.replace("-I", "-isystem", 1) for flag in flags.split()]
    samples = list(samples_of(root))
    with ThreadPoolExecutor(os.cpu_count()) as workers:
        results = workers.map(lambda each: complaints(root, flags, *each), sources_of(samples))
        wrong = [line for result in results for line in result]
    print("\n".join(wrong), end="\n" if wrong else "", file=sys.stderr)
    print(f"docs: {len(samples)} samples compiled, {len(wrong)} complaints")
    return 1 if wrong or not samples else 0


sys.exit(main())
