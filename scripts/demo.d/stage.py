"""The processes of the demo: display, ad service and applications. All that is started here is ended here."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time
import urllib.request

WIDTH, HEIGHT = 390, 844  # of a window, as it opens
SCREEN = 1000  # either side of the virtual display, so that a window can be turned, or wide
LOOPBACK = urllib.request.build_opener(urllib.request.ProxyHandler({}))


class Failure(Exception):
    """The demo cannot go on; the text says why."""


class Deadline:
    """The time that one thing, and that everything together may take; both in seconds."""

    def __init__(self, step, whole):
        self.step = step
        self.end = time.monotonic() + whole

    def wait(self, what, condition, alive=None, interval=0.05):
        """Returns the first true answer of `condition`; fails when time is up or the process `alive` is gone."""
        end = min(self.end, time.monotonic() + self.step)
        while True:
            answer = condition()
            if answer:
                return answer
            if alive and alive.exit_code is not None:
                raise Failure(f"The {alive.name} ended (exit code {alive.exit_code}) while waiting for {what}.")
            if time.monotonic() > end:
                raise Failure(f"Waited for {what} in vain" + (": time is up." if end == self.end else "."))
            time.sleep(interval)


class Process:
    """One program with a log file, in a process group of its own so that its children go with it."""

    def __init__(self, name, command, log, env=None, **options):
        self.name, self.log = name, log
        with open(log, "wb") as output:
            self.popen = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL, stderr=output,
                                          env=env, start_new_session=True, **{"stdout": output, **options})

    @property
    def exit_code(self):
        return self.popen.poll()

    def wait(self, seconds=None):
        try:
            return self.popen.wait(seconds)
        except subprocess.TimeoutExpired:
            return None

    def stop(self):
        """Ends the program, kindly at first, and what is left of its group."""
        if self.exit_code is None:
            self.signal(signal.SIGTERM)
            self.wait(5)
            self.signal(signal.SIGKILL)
        return self.wait(5)

    def signal(self, number):
        try:
            os.killpg(self.popen.pid, number)
        except ProcessLookupError:
            pass


class Display(Process):
    """A virtual display with the first free number."""

    def __init__(self, log, folder):
        self.pipe, write = os.pipe()
        self.framebuffer = folder / "Xvfb_screen0"  # what is on screen, as a window dump
        command = ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{SCREEN}x{SCREEN}x24", "-fbdir", folder]
        super().__init__("display", [*command, "-nocursor", "-nolisten", "tcp"], log, pass_fds=[write])
        os.close(write)

    def wait_until_open(self):
        with os.fdopen(self.pipe) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise Failure("Xvfb did not start.")
        self.number = f":{number}"


class Service(Process):
    """The local ad service."""

    def __init__(self, program, log, record):
        self.record = record
        super().__init__("ad service", [program, "--port", "0", "--log", record], log, stdout=subprocess.PIPE)
        self.url = self.popen.stdout.readline().decode().strip()
        if not self.url:
            raise Failure("The ad service did not start.")
        self.requests, self.events = [], []

    def read_journal(self):
        """Brings `requests` and `events` up to date with what the service has seen."""
        self.requests, self.events = self.get("/sandbox/requests"), self.get("/sandbox/events")

    def was_asked_for(self, path):
        self.read_journal()
        return any(request["path"].startswith(path) for request in self.requests)

    def order(self, fault):
        """Sets a fault, as the service's README lists them."""
        self.get("/sandbox/faults", json.dumps(fault).encode())

    def get(self, path, body=None):
        try:
            with LOOPBACK.open(self.url + path, body, timeout=10) as answer:
                return json.load(answer)
        except OSError as error:
            raise Failure(f"The ad service does not answer {path}: {error}") from error


class Application(Process):
    """An application with ads, which notes in its timeline what it hears and does."""

    def __init__(self, name, program, record, service_url, env, *options):
        self.timeline_file = record.with_suffix(".jsonl")
        self.timeline_file.unlink(missing_ok=True)
        command = [program, "--service-url", service_url, "--timeline", self.timeline_file, *options]
        if shutil.which("dbus-run-session") and "DBUS_SESSION_BUS_ADDRESS" not in env:
            command = ["dbus-run-session", "--", *command]
        super().__init__(name, command, record.with_suffix(".log"), env)

    def timeline(self):
        if not self.timeline_file.exists():
            return []
        lines = self.timeline_file.read_text().splitlines(keepends=True)
        return [json.loads(line) for line in lines if line.endswith("\n")]

    def notes(self, **wanted):
        return [note for note in self.timeline() if all(note.get(key) == value for key, value in wanted.items())]


class Desktop:
    """What opens web addresses for the user: it only writes them down."""

    def __init__(self, out, home):
        self.list = out / "opened.txt"
        self.list.unlink(missing_ok=True)
        applications = home / "data/applications"
        applications.mkdir(parents=True, exist_ok=True)
        (applications / "browser.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Browser\n"
            f"Exec=sh -c 'echo \"$1\" >> \"{self.list}\"' browser %u\nMimeType=x-scheme-handler/http;\n")
        (home / "config").mkdir(parents=True, exist_ok=True)
        (home / "config/mimeapps.list").write_text(
            "[Default Applications]\nx-scheme-handler/http=browser.desktop\n")

    def opened(self):
        return self.list.read_text().splitlines() if self.list.exists() else []


class Stage:
    def __init__(self, build, out):
        self.build, self.out = build.resolve(), out.resolve()
        self.processes = []
        self.service = self.app = None
        self.display = self.desktop = None

    def __enter__(self):
        for old in self.out.glob("*.png"):
            old.unlink()
        shutil.rmtree(self.out / "home", ignore_errors=True)
        self.runtime = pathlib.Path(tempfile.mkdtemp(prefix="vantorium-demo-"))  # short, because sockets lie in it
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.stop()
        shutil.rmtree(self.runtime, ignore_errors=True)

    def open_display(self):
        for program, package in {"Xvfb": "xvfb", "xdotool": "xdotool", "convert": "imagemagick"}.items():
            if not shutil.which(program):
                raise Failure(f"{program} is missing; it comes with the package {package}.")
        self.display = self.start(Display(self.out / "display.log", self.runtime))
        self.display.wait_until_open()
        return self.display

    def start_service(self, record):
        """What it notes is in files whose names begin with `record`."""
        program = self.build / "tools/sandbox/vantorium-sandbox"
        self.service = self.start(Service(program, self.out / f"{record}-service.log",
                                          self.out / f"{record}-service.jsonl"))
        print(f"The ad service runs at {self.service.url}", flush=True)
        return self.service

    def stop_service(self):
        return self.service.stop()

    def start_game(self, *options):
        return self.start_app("game", "coin_game", "game", *options)

    def start_newspaper(self, record, *options, **variables):
        return self.start_app("newspaper", "news_feed", record, *options, **variables)

    def start_app(self, name, program, record, *options, **variables):
        program = self.build / "examples" / program / program
        env = {**self.environment(), **variables}
        self.app = self.start(Application(name, program, self.out / record, self.service.url, env, *options))
        return self.app

    def start(self, process):
        self.processes.append(process)
        return process

    def environment(self):
        """The application's own home, so that nothing of the user's is read or touched."""
        env = dict(os.environ)
        home = self.out / "home"
        if "XAUTHORITY" not in env and (pathlib.Path.home() / ".Xauthority").exists():
            env["XAUTHORITY"] = str(pathlib.Path.home() / ".Xauthority")
        for variable, folder in {"HOME": "", "XDG_CACHE_HOME": "cache", "XDG_CONFIG_HOME": "config",
                                 "XDG_DATA_HOME": "data", "XDG_STATE_HOME": "state"}.items():
            (home / folder).mkdir(parents=True, exist_ok=True)
            env[variable] = str(home / folder)
        env["GST_REGISTRY"] = str(self.out / "gst-registry.bin")  # kept: making it takes seconds
        if self.display:
            self.desktop = Desktop(self.out, home)
            self.adapt_to_virtual_display(env, home)
        if subprocess.run(["unshare", "--user", "true"], stderr=subprocess.DEVNULL, check=False).returncode:
            # Without user namespaces, as in some containers, the page process cannot be confined and would not start.
            env["WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS"] = "1"
        return env

    def adapt_to_virtual_display(self, env, home):
        for variable in ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"):
            env.pop(variable, None)
        env.update({
            "DISPLAY": self.display.number,
            "GDK_BACKEND": "x11",
            "XDG_RUNTIME_DIR": str(self.runtime),
            # No graphics card is needed, and every machine draws the same.
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "GSK_RENDERER": "cairo",
            "WEBKIT_DISABLE_DMABUF_RENDERER": "1",
            "GSETTINGS_BACKEND": "memory",
            "GTK_A11Y": "none",
        })
        fonts = home / "config/fontconfig/fonts.conf"
        fonts.parent.mkdir(parents=True, exist_ok=True)
        fonts.write_text("""<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<alias binding="same"><family>sans-serif</family><prefer><family>Cantarell</family></prefer></alias></fontconfig>
""")

    def print_logs(self):
        for process in self.processes:
            lines = process.log.read_text(errors="replace").splitlines()[-10:]
            if lines:
                print(f"The end of what the {process.name} said ({process.log}):", *lines, sep="\n  ")
        if self.app:
            print(f"What the {self.app.name} noted and the service recorded: {self.app.timeline_file},"
                  f" {self.service.record}")
