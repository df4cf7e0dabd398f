# SPDX-License-Identifier: MIT
"""Renders a Mako template to standard output: render_mako.py TEMPLATE DATA (JSON, may be missing).

Where there is a file with the ending .csv beside it, its rows but the first are `rows`.
"""
import csv
import json
import os
import sys

from mako.template import Template

sys.setrecursionlimit(100_000)
data = {}
if os.path.exists(sys.argv[2]):
    with open(sys.argv[2], encoding="utf-8") as file:
        data = json.load(file)
rows = os.path.splitext(sys.argv[2])[0] + ".csv"
if os.path.exists(rows):
    with open(rows, encoding="utf-8", newline="") as file:
        data["rows"] = list(csv.reader(file))[1:]
sys.stdout.write(Template(filename=sys.argv[1]).render(**data))
