"""How Sphinx makes the pages; `./dev docs` calls it."""

import os
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
sys.path.insert(0, str(HERE))

project = "PictureQVR"
extensions = ["myst_parser", "sphinx_copybutton", "machinery"]
exclude_patterns = ["machinery", "static", "templates"]
templates_path = ["templates"]

myst_heading_anchors = 4
myst_enable_extensions = ["deflist"]
nitpicky = True
highlight_language = "text"

html_theme = "furo"
html_static_path = ["static"]
html_css_files = ["pages.css"]
html_js_files = ["navigation.js", "slider.js"]
html_use_index = False
html_copy_source = False
html_show_copyright = False
html_show_sphinx = False
# Found pages are listed without an extract: a page opened from disk may not read others.
html_show_search_summary = False
# Of the styles, these two have enough contrast in every word.
pygments_style = "default"
pygments_dark_style = "native"

# What is printed is not there to be copied.
copybutton_selector = ":not(.prints) > div.highlight pre"

qvr_program = os.environ.get("PICTUREQVR_PROGRAM", str(ROOT / "out/linux-i386/pictureqvr"))
qvr_work = str(ROOT / "out/build/docs/work")
qvr_photo = "/usr/share/backgrounds/mate/nature/LadyBird.jpg"
qvr_photo_alt = "A ladybird on a stem between blue flowers and green leaves"
qvr_sound = "/usr/share/sounds/alsa/Front_Center.wav"
qvr_costs = str(HERE / "costs.json")
qvr_cost_page = "speed"
qvr_examples = str(ROOT / "examples")
qvr_included = {
    "ARCHITECTURE.md": "architecture",
    "CHANGELOG.md": "changelog",
    "CONTRIBUTING.md": "contributing",
    "README.md": "index",
    "RELIABILITY.md": "reliability",
}
