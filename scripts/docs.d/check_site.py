"""Opens every page of the site in Chromium, as a reader does, and follows what is on it: links and their anchors,
pictures, style sheets and scripts. Nothing outside of the site may be asked for. Addresses elsewhere are checked for
their form alone."""
import http.server
import re
import sys
import threading
from functools import partial
from pathlib import Path
from urllib.parse import unquote, urldefrag, urlparse

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

WHAT_IS_THERE = """
const all = (query, name) => [...document.querySelectorAll(query)].map(each => each[name]);
return {links: all('a[href]', 'href'), ids: [...all('[id]', 'id'), ...all('a[name]', 'name')],
        lost: [...document.images].filter(each => !each.complete || !each.naturalWidth).map(each => each.src),
        wide: document.documentElement.scrollWidth - document.documentElement.clientWidth};
"""
LOAD_PICTURES = """
for (const each of document.images) each.loading = 'eager';
Promise.allSettled([...document.images].map(each => each.decode())).then(() => arguments[0]());
"""
WIDTHS = (1280, 390)  # a screen and a telephone


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


def open_browser():
    options = Options()
    options.binary_location = "/usr/bin/chromium"
    # As root there is no sandbox. Whatever is not of this site is not found, and says so on the console.
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-background-networking",
                     "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def read(browser, url):
    """What a page has and what is wrong with it by itself."""
    wrong = []
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": WIDTHS[0], "height": 900, "deviceScaleFactor": 1, "mobile": False})
    browser.get(url)
    # Pictures below the fold may load late.
    browser.execute_async_script(LOAD_PICTURES)
    page = browser.execute_script(WHAT_IS_THERE)
    wrong += [f"the picture {each} is missing or broken" for each in page["lost"]]
    wrong += [f"on the console: {entry['message']}" for entry in browser.get_log("browser")
              if entry["level"] in ("SEVERE", "WARNING")]
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": WIDTHS[1], "height": 844, "deviceScaleFactor": 1, "mobile": True})
    wide = browser.execute_script(WHAT_IS_THERE)["wide"]
    if wide > 0:
        wrong.append(f"is {wide} pixels wider than a telephone")
    return page, wrong


def scheme_flaws(browser, url):
    """Whether pages are light and dark as the reader's system is."""
    for scheme, is_right in (("light", lambda shade: shade > 200), ("dark", lambda shade: shade < 60)):
        browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        browser.get(url)
        color = browser.execute_script("return getComputedStyle(document.body).backgroundColor")
        if not is_right(int(re.search(r"\d+", color)[0])):
            yield f"the page is {color} for a reader who prefers {scheme}"


def flaw_of(link, base, pages, site):
    url, anchor = urldefrag(link)
    if not url.startswith(base):
        parts = urlparse(url)
        return None if parts.scheme == "mailto" or parts.scheme == "https" and parts.netloc else "is no https address"
    if url in pages:
        return None if not anchor or unquote(anchor) in pages[url]["ids"] else "has no such anchor"
    path = site / unquote(url[len(base):])
    return None if path.is_file() and not anchor else "is not there"


def main():
    site = Path(sys.argv[1]).resolve()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), partial(Quiet, directory=str(site)))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    base = f"http://127.0.0.1:{server.server_port}/"
    browser = open_browser()
    try:
        pages, wrong = {}, []
        for file in sorted(site.rglob("*.html")):
            name = file.relative_to(site).as_posix()
            pages[base + name], flaws = read(browser, base + name)
            wrong += [f"{name}: {each}" for each in flaws]
        wrong += scheme_flaws(browser, base + "index.html")
    finally:
        browser.quit()
        server.shutdown()
    links = 0
    for url, page in pages.items():
        for link in sorted(set(page["links"])):
            links += 1
            flaw = flaw_of(link, base, pages, site)
            if flaw:
                wrong.append(f"{url[len(base):]}: the link {link.replace(base, '')} {flaw}")
    print("\n".join(wrong), file=sys.stderr, end="\n" if wrong else "")
    print(f"docs: {len(pages)} pages opened, {links} links followed, {len(wrong)} faults")
    return 1 if wrong or not pages else 0


sys.exit(main())
