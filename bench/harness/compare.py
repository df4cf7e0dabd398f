# SPDX-License-Identifier: MIT
"""Compares outputs. They must be byte-identical, but for what a tool is known to change (tools.py)."""
import filecmp
import functools
import re

_COMMENT = re.compile(r'("(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)*\')|[ \t]*(?://.*|/\*.*?\*/)')


@functools.lru_cache(maxsize=None)
def _line_without_comments(line):
    return _COMMENT.sub(lambda match: match.group(1) or "", line).rstrip()


def without_comments(text):
    """Without comments, the blanks before them, and lines that are empty then. No comment of the
    inputs goes over several lines; most lines are there many times."""
    return "\n".join(filter(None, map(_line_without_comments, text.split("\n"))))


def difference(expected, actual, tool):
    """A sentence on how the output `actual` of a tool differs from the file expected, or None."""
    if filecmp.cmp(expected, actual, shallow=False):
        return None
    left = expected.read_bytes()
    right = actual.read_bytes()
    if tool.drops_comments:
        left, right = (without_comments(text.decode()).encode() for text in (left, right))
    if tool.adds_blanks:
        left, right = (text.replace(b" ", b"") for text in (left, right))
    if left == right:
        return None
    at = next((i for i, (a, b) in enumerate(zip(left, right)) if a != b), min(len(left), len(right)))
    begin = max(0, at - 20)
    return (f"differs at byte {at} (of {len(left)} and {len(right)}): "
            f"{left[begin:at + 30]!r} and {right[begin:at + 30]!r}")
