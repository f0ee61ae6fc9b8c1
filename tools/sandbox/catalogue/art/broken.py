"""Files that are not what their names say, into static/native/broken/: an SDK must survive each."""

import struct
import subprocess
import zlib

PAGE = b"<!doctype html><title>Sign in</title><h1>Welcome to Harbour Wi-Fi</h1><p>Sign in to go online.</p>\n"
SVG = b"""<svg xmlns="http://www.w3.org/2000/svg" width="512" height="512">
  <rect width="512" height="512" fill="#e8604f"/><image href="file:///etc/hostname" width="9" height="9"/>
</svg>
"""


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, depth, colour, rows):
    """What the header says and the packed rows need not agree."""
    header = struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


def gif(screen, frame):
    """Two colours, one frame of 2 x 2 pixels whatever the header says."""
    header = b"GIF89a" + struct.pack("<HH", *screen) + b"\x80\x00\x00" + b"\xff\xfa\xf0\xe8\x60\x4f"
    return header + b"," + struct.pack("<HHHH", 0, 0, *frame) + b"\x00" + b"\x02\x03\x44\x02\x05\x00" + b";"


def jpeg(width, height, claimed):
    """A grey one, with other measures in its frame header."""
    command = f"ffmpeg -loglevel error -f lavfi -i color=gray:s={width}x{height} -frames:v 1 -bitexact -f mjpeg -"
    data = bytearray(subprocess.run(command.split(), capture_output=True, check=True).stdout)
    frame_header = data.index(b"\xff\xc0")
    data[frame_header + 5 : frame_header + 9] = struct.pack(">HH", *reversed(claimed))
    return bytes(data)


def box(kind, data):
    return struct.pack(">I", len(data) + 8) + kind + data


def make(catalogue):
    pictures = catalogue / "static" / "native"
    film = (catalogue / "media" / "orbit-courier.mp4").read_bytes()
    files = {
        "truncated.png": (pictures / "cairnway-icon.png").read_bytes()[:8000],
        "truncated.jpg": (pictures / "wordgrove-trees.jpg").read_bytes()[:8000],
        "huge.png": png(50000, 50000, 8, 6, bytes(1000)),
        "bomb.png": png(16000, 16000, 1, 0, bytes(2001 * 16000)),  # all of it is there: 768 MB as RGB
        "lying.gif": gif((65535, 65535), (2, 2)),
        "overflowing.gif": gif((2, 2), (60000, 60000)),
        "lying.jpg": jpeg(64, 64, (65500, 65500)),
        "page.png": PAGE,
        "page.mp4": PAGE,
        "drawing.png": SVG,  # draws well where the content decides, not the name
        "empty.png": b"",
        "pixel.png": png(1, 1, 8, 2, b"\x00\xe8\x60\x4f"),
        "truncated.mp4": film[:40000],
        "headless.mp4": box(b"ftyp", b"isom\0\0\2\0isomiso2avc1mp41") + box(b"mdat", film[-4000:]),
    }
    folder = pictures / "broken"
    folder.mkdir(exist_ok=True)
    for name, data in files.items():
        (folder / name).write_bytes(data)
    print(f"{folder.name}/: {len(files)} files, {sum(map(len, files.values())) // 1024} KiB")
