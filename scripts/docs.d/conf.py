"""How Sphinx makes the site. Given by scripts/docs: VANTORIUM_DOXYGEN, the folder of what Doxygen has read, and
VANTORIUM_VERSION."""
import os

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
pygments_dark_style = "monokai"

html_theme = "furo"
html_title = f"Vantorium {version}"
html_static_path = ["static"]
html_css_files = ["site.css"]
html_copy_source = False
html_show_sourcelink = False
