"""How Sphinx makes the site. Given by scripts/docs: VANTORIUM_DOXYGEN, the folder of what Doxygen has read, and
VANTORIUM_VERSION."""
import os
import re
from pathlib import Path

project = "Vantorium"
version = release = os.environ["VANTORIUM_VERSION"]
copyright = "the Vantorium developers"

extensions = ["myst_parser", "breathe"]
source_suffix = {".md": "markdown", ".rst": "restructuredtext"}
myst_heading_anchors = 4
suppress_warnings = ["myst.header"]  # a change log repeats its headings

breathe_projects = {"vantorium": os.environ["VANTORIUM_DOXYGEN"]}
breathe_default_project = "vantorium"
breathe_default_members = ("members", "undoc-members")
breathe_domain_by_extension = {"hpp": "cpp", "h": "c"}
breathe_show_include = False
cpp_maximum_signature_line_length = 90

# What scripts say and print has lines that are no JSON by themselves.
highlight_language = "none"
pygments_style = "friendly"
pygments_dark_style = "native"

html_theme = "furo"
html_title = f"Vantorium {version}"
html_favicon = "static/icon.svg"
html_static_path = ["static"]
html_css_files = ["site.css"]
html_copy_source = False
html_show_sourcelink = False


def mend_theme(app, error):
    """As Debian packages it, the theme asks the web server for one style sheet and loads its script as a module, which
    a page opened as a file may not: both get what they ask for put into them. And it has lost what makes it follow the
    reader's system into the dark."""
    if error:
        return
    static = Path(app.outdir) / "_static"
    styles, script = static / "styles/furo.css", static / "scripts/furo.js"
    text = styles.read_text()
    reset = "@import url(/javascript/normalize.css/normalize.css);"
    if reset in text:
        text = text.replace(reset, Path("/usr/share/javascript/normalize.css/normalize.css").read_text())
    dark = re.search(r'body\[data-theme="dark"\] \{([^}]*)\}', text)
    if dark and "prefers-color-scheme" not in text:
        text += ('@media screen and (prefers-color-scheme: dark) {'
                 f' body:not([data-theme="light"]) {{{dark[1]}}} }}\n')
    styles.write_text(text)
    scrolling = (static / "scripts/gumshoe-patched.js").read_text()
    script.write_text(script.read_text().replace('import Gumshoe from "./gumshoe-patched.js";', scrolling))


def setup(app):
    app.connect("build-finished", mend_theme)
