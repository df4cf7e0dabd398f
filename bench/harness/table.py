# SPDX-License-Identifier: MIT
"""The tables that are printed, as aligned Markdown."""


def seconds(value):
    return f"{value * 1000:.2f} ms" if value < 0.01 else f"{value:.3f} s"


def megabytes(value):
    return f"{value / (1 << 20):.1f} MB"


def number(value):
    return "-" if value is None else f"{value:.3g}" if value < 10 else f"{value:.0f}"


def against(value, target):
    """A measured value with a mark when it misses the target."""
    return number(value) + ("" if target is None or value is None or value <= target else " !")


def print_table(head, rows):
    rows = [head, *rows]
    widths = [max(len(row[i]) for row in rows) for i in range(len(head))]
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |" for row in rows]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    print("\n".join(lines), flush=True)
    print()
