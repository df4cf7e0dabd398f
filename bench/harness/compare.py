"""Compares outputs. They must be byte-identical, but for what a tool is known to change (tools.py)."""
import filecmp
import re

_COMMENTS = re.compile(r'("(?:[^"\\\n]|\\.)*"|\'(?:[^\'\\\n]|\\.)*\')|[ \t]*(?://[^\n]*|/\*.*?\*/)', re.S)
_EMPTY_LINES = re.compile(r"\n[ \t]*(?=\n)|\A[ \t]*\n|[ \t]+(?=\n)")


def without_comments(text):
    """Without comments, the blanks before them, and lines that are empty then."""
    return _EMPTY_LINES.sub("", _COMMENTS.sub(lambda match: match.group(1) or "", text)).strip("\n")


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
