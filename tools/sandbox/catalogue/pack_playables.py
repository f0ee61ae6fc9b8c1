#!/usr/bin/python3
"""Packs each folder of playable-src/ into playable/NAME/game.zip. Run it after a change there.

The same sources give the same bytes. With --preview FOLDER it also unpacks the creatives and writes their pages as the
SDK does, one folder per campaign, to be opened in a browser.
"""

import argparse
import json
import pathlib
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
SOURCES, OUT = HERE / "playable-src", HERE / "playable"


def pack(folder):
    archive = OUT / folder.name / "game.zip"
    archive.parent.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(archive, "w") as out:
        for path in sorted(path for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(path.relative_to(folder).as_posix(), (2026, 1, 1, 0, 0, 0))
            entry.create_system, entry.external_attr = 3, 0o100644 << 16
            out.writestr(entry, path.read_bytes(), zipfile.ZIP_DEFLATED, 9)
    print(f"{archive.relative_to(HERE)}: {archive.stat().st_size} bytes")


def preview(folder):
    for path in sorted((HERE / "campaigns").glob("*.json")):
        for campaign in json.loads(path.read_text()):
            if campaign["type"] != "playable":
                continue
            archive = HERE / campaign["zippedUrl"].removeprefix("{{base}}/")
            below = campaign["zippedUrl"].removeprefix(campaign["baseUrl"])
            page = folder / path.stem / "index.html"
            zipfile.ZipFile(archive).extractall((page.parent / below).parent)
            page.write_text("<html><body>" + campaign["tag"] + "</body></html>", encoding="utf-8")
            print(page)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--preview", metavar="FOLDER", type=pathlib.Path)
    folder = parser.parse_args().preview
    for source in sorted(path for path in SOURCES.iterdir() if path.is_dir()):
        pack(source)
    if folder:
        preview(folder)


if __name__ == "__main__":
    main()
