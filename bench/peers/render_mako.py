"""Renders a Mako template to standard output: render_mako.py TEMPLATE DATA (JSON, may be missing)."""
import json
import os
import sys

from mako.template import Template

sys.setrecursionlimit(100_000)
data = {}
if os.path.exists(sys.argv[2]):
    with open(sys.argv[2], encoding="utf-8") as file:
        data = json.load(file)
sys.stdout.write(Template(filename=sys.argv[1]).render(**data))
