#!/usr/bin/env python3
"""Writes the corpus of archives that are damaged, hostile or just unusual, and what is to become of each.

    make_corpus.py FOLDER CAGE    CAGE is the folder whose inside the archives with absolute names aim at

FOLDER gets the archives and manifest.json: a list of objects with
    archive, tries    the file, and one line about it
    ends              "ok", "unzipFail" or "fileNotFound"
    files             what is in the destination afterwards: path -> content, or -> octal mode for a "mode:" path;
                      null when there is none
    place             what stands in the destination before: path -> content; "d" for a folder, "l:target" for a
                      symbolic link, "h:target" for a hard link
    says              what the failure's text has in it
    overwrite, password, destination    as for unzipFile; "below a file" and "full" are special destinations
    entries           how many the archive may have, if not as many as usual
"""

import copy
import itertools
import json
import pathlib
import struct
import sys
import zlib

FILE, LINK = 0o100644 << 16, 0o120777 << 16
TEXT = b"some text, some text, some text, some text\n"
SHOWN = TEXT.decode()


class Cipher:
    """The format's traditional encryption."""

    def __init__(self, password):
        self.keys = [0x12345678, 0x23456789, 0x34567890]
        for byte in password:
            self.update(byte)

    @staticmethod
    def crc(value, byte):
        return zlib.crc32(bytes([byte]), value ^ 0xFFFFFFFF) ^ 0xFFFFFFFF

    def update(self, byte):
        keys = self.keys
        keys[0] = self.crc(keys[0], byte)
        keys[1] = ((keys[1] + (keys[0] & 0xFF)) * 134775813 + 1) & 0xFFFFFFFF
        keys[2] = self.crc(keys[2], keys[1] >> 24)

    def encrypt(self, data):
        out = bytearray()
        for byte in data:
            mix = (self.keys[2] & 0xFFFF) | 2
            out.append(byte ^ (((mix * (mix ^ 1)) >> 8) & 0xFF))
            self.update(byte)
        return bytes(out)


def deflated(data):
    squeeze = zlib.compressobj(9, zlib.DEFLATED, -15)
    return squeeze.compress(data) + squeeze.flush()


class Entry:
    def __init__(self, name, data=TEXT, *, method=8, attributes=FILE, flags=0x800, password=None, **claims):
        self.name = name if isinstance(name, bytes) else name.encode()
        self.stored = deflated(data) if method == 8 else data
        self.method, self.attributes, self.flags = method, attributes, flags
        self.crc, self.size = zlib.crc32(data), len(data)
        if password:
            self.flags |= 1
            self.stored = Cipher(password).encrypt(bytes(11) + bytes([self.crc >> 24]) + self.stored)
        self.packed = len(self.stored)
        self.extra = self.local_extra = b""
        self.local_name = self.name
        self.central_claims = {}  # what only the table of contents says instead
        self.shares = None  # the number of the entry whose data this one claims as its own
        self.__dict__.update(claims)

    def local(self):
        descriptor = self.flags & 8
        sizes = (0, 0, 0) if descriptor else (self.crc, self.packed, self.size)
        head = struct.pack("<4s5H3I2H", b"PK\3\4", 20, self.flags, self.method, 0, 0x21,
                           *(min(size, 0xFFFFFFFF) for size in sizes), len(self.local_name), len(self.local_extra))
        tail = struct.pack("<4s3I", b"PK\7\10", self.crc, self.packed, self.size) if descriptor else b""
        return head + self.local_name + self.local_extra + self.stored + tail

    def central(self, offset):
        packed = min(self.central_claims.get("packed", self.packed), 0xFFFFFFFF)
        size = min(self.central_claims.get("size", self.size), 0xFFFFFFFF)
        return struct.pack("<4s6H3I5H2I", b"PK\1\2", 0x31E, 20, self.flags, self.method, 0, 0x21, self.crc,
                           packed, size, len(self.name), len(self.extra), 0, 0, 0, self.attributes,
                           self.central_claims.get("offset", offset)) + self.name + self.extra


def build(*entries, comment=b"", prefix=b"", count=None, zip64=False):
    out, offsets = bytearray(), []
    for entry in entries:
        offsets.append(len(out) if entry.shares is None else offsets[entry.shares])
        if entry.shares is None:
            out += entry.local()
    start = len(out)
    for entry, offset in zip(entries, offsets):
        out += entry.central(offset)
    size, count = len(out) - start, len(entries) if count is None else count
    if zip64:
        end = len(out)
        out += struct.pack("<4sQ2H2I4Q", b"PK\6\6", 44, 45, 45, 0, 0, count, count, size, start)
        out += struct.pack("<4sIQI", b"PK\6\7", 0, end, 1)
        count, size, start = 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFF
    out += struct.pack("<4s4H2IH", b"PK\5\6", 0, 0, count, count, size, start, len(comment))
    return prefix + bytes(out) + comment


def zip64_central_entry(name, fields):
    """Has some of its numbers only in the extra field of the table of contents."""
    numbers = {"size": len(TEXT), "packed": len(TEXT), "offset": 0}
    entry = Entry(name, method=0)
    entry.extra = struct.pack("<4H", 0x7777, 4, 1, 2)  # of somebody else
    entry.extra += struct.pack(f"<2H{len(fields)}Q", 1, 8 * len(fields), *(numbers[field] for field in fields))
    entry.central_claims = dict.fromkeys(fields, 0xFFFFFFFF)
    return entry


def zip64_entry(name, size=len(TEXT)):
    entry = Entry(name, method=0, packed=0xFFFFFFFF, size=0xFFFFFFFF)
    entry.extra = struct.pack("<2H2Q", 1, 16, size, len(TEXT))
    entry.local_extra = entry.extra
    return entry


class Corpus:
    def __init__(self, folder):
        self.folder, self.cases = folder, []

    def add(self, name, tries, archive, ends="unzipFail", files=None, **rest):
        name = name if "." in name else name + ".zip"
        (self.folder / name).write_bytes(archive)
        self.cases.append({"archive": name, "tries": tries, "ends": ends, "files": files or {}, **rest})

    def good(self, name, tries, archive, files, **rest):
        self.add(name, tries, archive, "ok", files, **rest)


def truncated(corpus):
    whole = build(Entry("dir/", b"", method=0), Entry("dir/a.txt"), Entry("b.txt", method=0))
    structures = {"local header": 10, "name": 32, "file data": whole.find(b"b.txt") + 20,
                  "table of contents": whole.find(b"PK\1\2") + 60, "end record": whole.find(b"PK\5\6") + 10}
    for what, at in structures.items():
        slug = what.replace(" ", "-")
        corpus.add(f"cut-in-{slug}", f"ends in the middle of its {what}", whole[:at])
    for what, at in list(structures.items())[:-1]:
        slug = what.replace(" ", "-")
        corpus.add(f"hole-in-{slug}", f"24 bytes of its {what} are zero", whole[:at] + bytes(24) + whole[at + 24:])
    corpus.add("empty-file", "has no bytes at all", b"")
    corpus.add("short-stream", "a deflate stream that ends early, sizes to match",
               build(Entry("a.txt", stored=deflated(TEXT)[:-5], packed=len(deflated(TEXT)) - 5)),
               files={"a.txt": None})
    corpus.add("more-announced", "announces more entries than there are", build(Entry("a.txt"), count=3),
               files={"a.txt": SHOWN})
    corpus.good("fewer-announced", "announces fewer entries than there are",
                build(Entry("a.txt"), Entry("b.txt"), count=1), {"a.txt": SHOWN, "b.txt": None})


def wrong(corpus):
    gone = {"a.txt": None}
    for method, how in ((0, "stored"), (8, "deflated")):
        corpus.add(f"bad-crc-{how}", f"a {how} file with a wrong checksum",
                   build(Entry("a.txt", method=method, crc=1)), files=gone)
        corpus.add(f"size-too-large-{how}", f"a {how} file claims more bytes than it has",
                   build(Entry("a.txt", method=method, size=5000)), files=gone)
        corpus.add(f"size-too-small-{how}", f"a {how} file claims fewer bytes than it has",
                   build(Entry("a.txt", method=method, size=10)), files=gone)
    corpus.add("packed-too-large", "a file claims more packed bytes than the archive has",
               build(Entry("a.txt", method=0, packed=1 << 31, size=1 << 31)), files=gone)
    corpus.add("unknown-method", "a compression that nobody knows", build(Entry("a.txt", method=97)), files=gone)
    corpus.add("no-entries", "an archive without entries", build())
    corpus.add("not-a-zip", "a page instead of an archive", b"<html><body>404</body></html>\n" * 40)
    corpus.add("rar-by-content", "another format's first bytes", b"Rar!\x1a\x07\x01\x00" + bytes(range(256)) * 8)
    corpus.add("wrong-extension.ZIP", "an extension in capitals", build(Entry("a.txt")), "fileNotFound", gone)
    corpus.good("long-comment", "a comment of 65,000 bytes", build(Entry("a.txt"), comment=b"c" * 65000),
                {"a.txt": SHOWN})
    corpus.good("long-extra", "an extra field of 65,535 bytes",
                build(Entry("a.txt", extra=struct.pack("<2H", 0x7777, 65531) + bytes(65531))), {"a.txt": SHOWN})
    corpus.good("prefix", "300 bytes of another program before it", build(Entry("a.txt"), prefix=b"#!" + b"x" * 298),
                {"a.txt": SHOWN})
    corpus.good("descriptor", "sizes after the data", build(Entry("a.txt", flags=0x808)), {"a.txt": SHOWN})
    corpus.good("zip64", "64-bit sizes and end record", build(zip64_entry("a.txt"), zip64=True), {"a.txt": SHOWN})
    corpus.good("zip64-cut", "the same without its 32-bit end record, which nobody needs",
                build(zip64_entry("a.txt"), zip64=True)[:-22], {"a.txt": SHOWN})
    for length in (1, 2, 3):
        for fields in itertools.combinations(("size", "packed", "offset"), length):
            corpus.good("zip64-only-" + "-".join(fields), f"64 bits for its {' and '.join(fields)}, in the table only",
                        build(zip64_central_entry("a.txt", fields), Entry("b.txt")), {"a.txt": SHOWN, "b.txt": SHOWN})
    many = [copy.copy(Entry("./", b"", method=0)) for _ in range(65540)]
    for entry in many[1:]:
        entry.shares = 0
    corpus.good("zip64-many", "65,541 entries, all but the last a folder that is there",
                build(*many, Entry("last.txt"), zip64=True), {"last.txt": SHOWN}, entries=70000)
    corpus.good("zip64-prefix", "64-bit sizes and 300 bytes of another program before it",
                build(zip64_entry("a.txt"), prefix=b"#!" + b"x" * 298, zip64=True), {"a.txt": SHOWN})
    corpus.add("zip64-lies", "64-bit sizes that are not true", build(zip64_entry("a.txt", 1 << 40), zip64=True),
               files=gone)


def bombs(corpus):
    flat = build(Entry("a.txt", bytes(32 << 20)))
    corpus.add("bomb-flat", "32 MiB of zeros in 32 KiB", flat, files={"a.txt": None})
    nested = build(*(Entry(f"{number}.zip", flat, method=0) for number in range(4)))
    corpus.good("bomb-nested", "bombs inside, which nobody opens", nested, {"a.txt": None})
    inner = build(Entry("quine.zip", b"PK", method=0))
    corpus.good("quine-like", "holds an archive with its own entry's name, which nobody opens",
                build(Entry("quine.zip", inner, method=0)), {})
    shared = [Entry("0", bytes(1 << 20))]
    for number in range(1, 200):
        shared.append(copy.copy(shared[0]))
        shared[-1].name, shared[-1].shares = b"%d" % number, 0
    corpus.add("bomb-overlapping", "200 entries that share 1 MiB of zeros in 1 KiB", build(*shared))
    corpus.good("overlapping", "two entries that share their data", build(Entry("a.txt"), Entry("b.txt", shares=0)),
                {"a.txt": SHOWN, "b.txt": SHOWN})
    silent = Entry("0", b"", stored=bytes([0, 0, 0, 255, 255]) * 40000 + bytes([1, 0, 0, 255, 255]))
    silent.packed = len(silent.stored)
    corpus.good("silent", "200 KB that inflate to nothing", build(silent), {"0": ""})
    again = [silent, *(copy.copy(silent) for _ in range(9))]
    for number, entry in enumerate(again[1:], 1):
        entry.name, entry.shares = b"%d" % number, 0
    corpus.add("bomb-silent", "10 entries that share 200 KB, which inflate to nothing", build(*again),
               files={"9": None})
    folders = [Entry(f"{number}/" + "a/" * 62 + "f", b"", method=0) for number in range(160)]
    corpus.add("bomb-folders", "160 empty files below 10,080 folders", build(*folders), files={"159": None})
    many = build(*(Entry(f"{number:05}", b"", method=0) for number in range(10001)))
    corpus.add("bomb-entries", "10,001 empty files", many, files={"10000": None})


def slips(corpus, cage):
    spellings = ["../evil.txt", "a/../../evil.txt", "./../evil.txt", "a/b/../../../evil.txt", "..\\evil.txt",
                 "a\\..\\..\\evil.txt", "a/..\\../evil.txt", "..", "../", "a/..", f"{cage}/evil.txt",
                 f"/{cage}/evil.txt", f"{cage}/".replace("/", "\\") + "evil.txt", "\\\\server\\share\\evil.txt",
                 "c:/../evil.txt", b"evil.txt\0.png", b"..\0/evil.txt",
                 b"\xc0\xae\xc0\xae/evil.txt", "/", "."]
    for number, name in enumerate(spellings, 1):
        shown = name if isinstance(name, str) else "".join(chr(c) if 32 <= c < 127 else f"\\x{c:02x}" for c in name)
        shown = shown.replace(str(cage), "/absolute").replace(str(cage).replace("/", "\\"), "\\absolute")
        corpus.add(f"slip-{number:02}", f"an entry named {shown}", build(Entry("good.txt"), Entry(name)),
                   files={"good.txt": SHOWN})
    for number, name in enumerate(["%2e%2e/evil.txt", "..%2fevil.txt", ".. /evil.txt", "\uff0e\uff0e/evil.txt",
                                   ".../evil.txt"], 1):
        corpus.good(f"slip-harmless-{number}", f"an entry named {name}, which only looks so", build(Entry(name)),
                    {name: SHOWN})
    corpus.good("slip-local-name", "a name that only the local header makes ../evil.txt",
                build(Entry("good12.txt", local_name=b"../evil.tx")), {"good12.txt": SHOWN})
    unicode_path = struct.pack("<2HBI", 0x7075, 16, 1, zlib.crc32(b"good.txt")) + b"../evil.txt"
    corpus.good("slip-unicode-extra", "an extra field that renames the entry to ../evil.txt",
                build(Entry("good.txt", extra=unicode_path)), {"good.txt": SHOWN})


def links(corpus):
    outside = {"evil.txt": None}
    corpus.good("symlink", "a symbolic link, which becomes a file",
                build(Entry("link", b"../outside/victim.txt", method=0, attributes=LINK)),
                {"link": "../outside/victim.txt", "mode:link": "777"})
    corpus.add("symlink-then-file", "a symbolic link to .., then a file through it",
               build(Entry("link", b"..", method=0, attributes=LINK), Entry("link/evil.txt")), files={"link": ".."},
               says='"link/evil.txt" cannot be written: a file or a symbolic link stands where a folder is needed')
    for name, kind in (("device", 0o60000), ("pipe", 0o10000), ("socket", 0o140000)):
        corpus.good(name, f"a {name}, which becomes a file", build(Entry("a.txt", attributes=(kind | 0o640) << 16)),
                    {"a.txt": SHOWN, "mode:a.txt": "640"})
    corpus.add("link-on-disk", "a file through a symbolic link that stands on disk", build(Entry("link/evil.txt")),
               files=outside, place={"link": "l:../outside"})
    corpus.add("deep-link-on-disk", "the same, a folder deeper", build(Entry("a/", b"", method=0), Entry("a/link/b/evil.txt")),
               place={"a": "d", "a/link": "l:../../outside"})
    corpus.good("link-as-file", "a file where a symbolic link to another stands", build(Entry("victim.txt")),
                {"victim.txt": SHOWN}, place={"victim.txt": "l:../outside/victim.txt"})
    corpus.good("dangling-link", "a file where a symbolic link to nothing stands", build(Entry("x.txt")),
                {"x.txt": SHOWN}, place={"x.txt": "l:../outside/new.txt"})
    corpus.good("hard-link", "a file where a hard link to another stands", build(Entry("victim.txt")),
                {"victim.txt": SHOWN}, place={"victim.txt": "h:../outside/victim.txt"})
    corpus.good("folder-link", "a folder entry where a symbolic link stands", build(Entry("link/", b"", method=0)),
                {}, place={"link": "l:../outside"})
    corpus.add("link-to-archive", "a file over a hard link to the archive", build(Entry("copy.zip")),
               place={"copy.zip": "h:link-to-archive.zip"})


def names(corpus):
    corpus.good("duplicate", "two entries of one name", build(Entry("a.txt", b"first"), Entry("a.txt", b"second")),
                {"a.txt": "second"})
    corpus.good("duplicate-kept", "two entries of one name, nothing is overwritten",
                build(Entry("a.txt", b"first"), Entry("a.txt", b"second")), {"a.txt": "first"}, overwrite=False)
    large = bytes(range(256)) * 8000
    corpus.good("duplicate-large", "a large file, then small ones of the same name, over one that stands there",
                build(Entry("a.txt", large, method=0), *(Entry("a.txt", b"%d" % number) for number in range(9))),
                {"a.txt": "8"}, place={"a.txt": "old"})
    corpus.add("two-failures", "a large file with a wrong checksum, then a damaged small one",
               build(Entry("large", large, method=0, crc=1), Entry("small", crc=1), Entry("../evil.txt")),
               files={"large": None}, says='"large" does not match its checksum')
    corpus.good("colon", "names with colons, one like a drive's", build(Entry("a:b.txt"), Entry("c:x"), Entry("C:\\y")),
                {"a:b.txt": SHOWN, "c:x": SHOWN, "C:/y": SHOWN})
    corpus.add("own-name", "a file named like the archive", build(Entry("a.txt"), Entry("own-name.zip")),
               files={"a.txt": SHOWN})
    corpus.good("own-name-kept", "the same, nothing is overwritten", build(Entry("own-name-kept.zip"), Entry("a.txt")),
                {"a.txt": SHOWN}, overwrite=False)
    corpus.good("folder-on-file", "a folder where a file stands", build(Entry("a/", b"", method=0)), {"a": "file"},
                place={"a": "file"})
    corpus.add("file-below-file", "a file below a file", build(Entry("a"), Entry("a/b.txt")), files={"a": SHOWN})
    corpus.add("file-on-folder", "a file where a folder stands", build(Entry("a/b.txt"), Entry("a")),
               files={"a/b.txt": SHOWN})
    corpus.good("backslash", "a folder spelled with a backslash", build(Entry("x\\", b"", method=0), Entry("x\\y.txt")),
                {"x/y.txt": SHOWN})
    corpus.good("dots", "needless dots and slashes", build(Entry("./", b"", method=0), Entry("./a//./b.txt")),
                {"a/b.txt": SHOWN})
    corpus.good("utf8", "a name in UTF-8", build(Entry("sn\u00f6.txt")), {"sn\u00f6.txt": SHOWN})
    corpus.add("latin1", "a name in Latin-1", build(Entry(b"sn\xf6.txt", flags=0)))
    corpus.add("no-name", "a file without a name", build(Entry("")))
    corpus.add("long-name", "a name of 1,025 bytes", build(Entry("n/" * 512 + "n")))
    corpus.add("long-part", "a name that no file system takes", build(Entry("n" * 300)))
    corpus.add("deep", "65 folders in each other", build(Entry("d/" * 65 + "a.txt")), files={"d": None})
    corpus.add("folder-with-data", "a folder that claims to have bytes", build(Entry("a/", TEXT)))


def settings(corpus):
    for method, how in ((0, "stored"), (8, "deflated")):
        secret = build(Entry("a.txt", method=method, password=b"secret"))
        for suffix, password, ends, content in (("", "secret", "ok", SHOWN), ("-no-password", None, "unzipFail", None),
                                                ("-wrong-password", "guess", "unzipFail", None),
                                                ("-odd-password", "gu\u00e9ss", "unzipFail", None)):
            corpus.add(f"encrypted-{how}{suffix}", f"an encrypted {how} file, password: {password or 'none'}", secret,
                       ends, {"a.txt": content}, password=password)
    corpus.good("needless-password", "no encrypted file, but a password", build(Entry("a.txt")), {"a.txt": SHOWN},
                password="secret")
    modes = {"a": 0o644, "b": 0o044, "c": 0o4755, "d": 0o600}
    corpus.good("modes", "permissions, one of them setuid",
                build(*(Entry(name, attributes=(0o100000 | mode) << 16) for name, mode in modes.items()),
                      Entry("e/", b"", method=0, attributes=0o40500 << 16), Entry("e/f")),
                {"mode:a": "644", "mode:b": "640", "mode:c": "755", "mode:d": "600", "mode:e": "700", "e/f": SHOWN})
    corpus.good("kept", "a file that stands there, nothing is overwritten", build(Entry("a.txt"), Entry("b.txt")),
                {"a.txt": "mine", "b.txt": SHOWN}, place={"a.txt": "mine"}, overwrite=False)
    corpus.add("failed-overwrite", "a damaged file over one that stands there", build(Entry("a.txt", crc=1)),
               files={"a.txt": "mine"}, place={"a.txt": "mine"})
    corpus.add("unwritable", "a destination that cannot be made", build(Entry("a.txt")), destination="below a file")
    corpus.add("disk-full", "200 KB where 64 KB fit", build(Entry("a.txt"), Entry("b.bin", bytes(200000), method=0)),
               files={"a.txt": SHOWN, "b.bin": None}, destination="full")


def main():
    folder, cage = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    corpus = Corpus(folder)
    for part in (truncated, wrong, bombs, links, names, settings):
        part(corpus)
    slips(corpus, cage)
    (folder / "manifest.json").write_text(json.dumps(corpus.cases))


if __name__ == "__main__":
    main()
