# SPDX-License-Identifier: MIT
"""The tools that are compared: what each reads and how it is started.

In a command, {in} is the work's input of the tool's kind, {out} the file that it writes (without one
it writes to standard output), {data} the work's data for template engines, {peers} the folder of
their drivers and {build} the folder of the benchmark's programs.
"""
from dataclasses import dataclass


@dataclass(frozen=True)
class Tool:
    name: str
    kind: str
    command: tuple
    # What must exist for it: a program, or a file (with a slash).
    needs: str = ""
    # Whether it can be "the fastest peer". An empty program is none, and PHP is a compiled programming
    # language: its ratio stands beside.
    is_rival: bool = True
    # A C preprocessor drops comments and writes empty lines as it likes: both are taken out of the
    # two texts before they are compared.
    drops_comments: bool = False
    # It puts blanks around what it replaces: all blanks are taken out.
    adds_blanks: bool = False


def tlexpand(name, path, options):
    return Tool(name, "tl", (path, *options, "-o", "{out}", "{in}"), path)


def floor(program):
    path = "{build}/floor_" + program
    return Tool("floor", "tl", (path, "{in}", "{out}"))


# An empty program shows what any start costs.
EMPTY = Tool("empty", "tl", ("{build}/floor_empty",), is_rival=False)
EXTRA = {"empty": EMPTY}



def _python(name):
    return Tool(name, name, ("/usr/bin/python3", "{peers}/render_" + name + ".py", "{in}", "{data}"),
                "/usr/lib/python3/dist-packages/" + {"jinja": "jinja2"}.get(name, name))


def _node(name):
    return Tool(name, name, ("node", "--stack-size=20000", "{peers}/render.cjs", "{modules}", name, "{in}", "{data}"),
                "{modules}/node_modules/" + name)


# gpp with its usual marks, but no quoting by backslashes.
_GPP_USER = ("-U", "", "", "(", ",", ")", "(", ")", "#", "")
_GPP_META = ("-M", "#", "\n", " ", " ", "\n", "(", ")")

PEERS = (
    # Its own macros begin with m4_, so that the text's words are the text's.
    Tool("m4", "m4", ("m4", "-P", "{in}"), "m4"),
    Tool("gpp", "gpp", ("gpp", *_GPP_USER, *_GPP_META, "-o", "{out}", "{in}"), "gpp"),
    Tool("mcpp", "c", ("mcpp", "-P", "{in}", "{out}"), "mcpp", drops_comments=True, adds_blanks=True),
    Tool("cpp", "c", ("cpp", "-P", "-nostdinc", "-I.", "{in}", "-o", "{out}"), "cpp", drops_comments=True),
    _python("jinja"),
    _python("mako"),
    Tool("php", "php", ("php", "-d", "output_buffering=65536", "-d", "memory_limit=-1", "-d", "precision=-1", "{in}"),
         "php", is_rival=False),
    _node("eta"),
    _node("ejs"),
    _node("nunjucks"),
)
