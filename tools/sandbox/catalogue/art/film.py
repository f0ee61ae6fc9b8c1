"""Notes, and frames and music made into a film by ffmpeg."""

import math
import pathlib
import subprocess
import tempfile
import wave

import cairo
import numpy

RATE = 44100  # samples a second


def pitch(semitones):
    """The frequency of a tone, counted from middle C."""
    return 261.63 * 2 ** (semitones / 12)


def note(frequency, seconds, attack, brightness):
    time = numpy.arange(int(seconds * RATE)) / RATE
    tone = sum(numpy.sin(2 * math.pi * frequency * k * time) * brightness ** (k - 1) / k for k in (1, 2, 3, 4))
    return tone * numpy.minimum(1, time / attack) * numpy.exp(-3.2 * time / seconds)


def silence(seconds):
    return numpy.zeros(int((seconds + 0.1) * RATE))


def place(track, at, sound, volume):
    start = int(at * RATE)
    part = sound[: len(track) - start]
    track[start : start + len(part)] += volume * part


def mastered(track, seconds, peak):
    """The track with an echo and a fade at its end, as 16-bit samples of which the loudest is `peak` of the most."""
    echo = int(0.19 * RATE)
    track[echo:] += 0.28 * track[:-echo]
    track = track[: seconds * RATE]
    track *= numpy.minimum(1, (seconds - numpy.arange(len(track)) / RATE) / 0.5)
    return (peak * track / numpy.abs(track).max() * 32767).astype("<i2")


def write_sound(path, samples):
    with wave.open(str(path), "wb") as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(samples.tobytes())


def encode(path, frame, music, width, height, fps, seconds, quality=26):
    """`frame(ctx, t)` draws the picture at second t. H.264 and AAC; a lower `quality` is better and bigger."""
    path.parent.mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        sound = pathlib.Path(folder) / "music.wav"
        write_sound(sound, music)
        command = f"""ffmpeg -y -loglevel error -f rawvideo -pix_fmt bgra -s {width}x{height} -r {fps} -i - -i {sound}
            -c:v libx264 -preset veryslow -crf {quality} -profile:v main -pix_fmt yuv420p -g 60 -c:a aac -b:a 64k
            -t {seconds} -movflags +faststart -map_metadata -1 -fflags +bitexact -flags:v +bitexact -flags:a +bitexact"""
        encoder = subprocess.Popen([*command.split(), str(path)], stdin=subprocess.PIPE)
        surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, width, height)
        for index in range(fps * seconds):
            frame(cairo.Context(surface), index / fps)
            surface.flush()
            encoder.stdin.write(bytes(surface.get_data()))
        encoder.stdin.close()
        if encoder.wait() != 0:
            raise SystemExit("ffmpeg failed")
    print(f"{path}: {path.stat().st_size // 1024} KiB")
