# SPDX-License-Identifier: MIT
"""Renders a Jinja template to standard output: render_jinja.py TEMPLATE DATA (JSON, may be missing)."""
import json
import os
import sys

from jinja2 import Environment

sys.setrecursionlimit(100_000)
data = {}
if os.path.exists(sys.argv[2]):
    with open(sys.argv[2], encoding="utf-8") as file:
        data = json.load(file)
environment = Environment(keep_trailing_newline=True, autoescape=False)
with open(sys.argv[1], encoding="utf-8", newline="") as file:
    template = environment.from_string(file.read())
sys.stdout.write(template.render(**data))
