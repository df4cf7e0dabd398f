#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the works with tlexpand, the floor programs and the peers, and prints one table.

    bench/run.py                                 all works, all installed peers
    bench/run.py --no-peers -w for -w calls      two works, tlexpand and the floor only
    bench/run.py --tool old=/tmp/old/tlexpand --tool new=build/release/bin/tlexpand --no-peers

The tools run in turn. What counts is CPU time (user and system) of the process, its median over the
runs; it is printed with half the range of the runs. Outputs are compared once; one that differs makes
the exit status 1.
"""
import argparse
import shutil
import sys
from pathlib import Path

from harness import tools
from harness.compare import difference
from harness.inputs import make_inputs
from harness.measure import Failed, Runner, TooSlow
from harness.report import report
from works import ALL

BENCH = Path(__file__).resolve().parent
# From its second run on, a peer that is this many times slower than the fastest one runs no more.
SLOW = 2.0


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("-w", "--work", action="append", metavar="NAME", help="only this work; repeatable: "
                        + ", ".join(work.name for work in ALL))
    parser.add_argument("--without", action="append", default=[], metavar="NAME", help="not this work; repeatable")
    parser.add_argument("--no-peers", action="store_true", help="only tlexpand and the floor programs")
    parser.add_argument("--peer", action="append", metavar="NAME", help="only this peer; repeatable")
    parser.add_argument("--runs", type=int, default=5, metavar="N", help="runs of each tool (default 5)")
    parser.add_argument("--scale", type=float, default=1.0, metavar="X", help="sizes of the inputs, times X (default 1)")
    parser.add_argument("--tool", action="append", metavar="[NAME=]PATH",
                        help="the tlexpand to measure; repeatable, the first is what outputs are compared with")
    parser.add_argument("--build", type=Path, default=BENCH.parent / "build/release", metavar="DIR",
                        help="where it was built (default build/release)")
    parser.add_argument("--work-dir", type=Path, metavar="DIR", help="for inputs and outputs (default BUILD/bench/work)")
    parser.add_argument("--peer-dir", type=Path, default=BENCH.parent / "build/peers", metavar="DIR",
                        help="where the peers of npm are installed (default build/peers)")
    options = parser.parse_args()
    known = {work.name for work in ALL}
    unknown = [name for name in (options.work or []) + options.without if name not in known]
    if unknown:
        parser.error(f"no such work: {', '.join(unknown)}")
    return options


def measured_tools(options):
    """Names and paths of the tlexpands to measure."""
    given = options.tool or [str(options.build / "bin/tlexpand")]
    result = []
    for value in given:
        name, _, path = value.rpartition("=")
        found = shutil.which(path)
        if not found:
            sys.exit(f"run.py: no program: {path}")
        result.append((name or ("tlexpand" if len(given) == 1 else path), str(Path(found).resolve())))
    return result


def is_there(tool, places):
    needs = tool.needs.format(**places)
    return not needs or (Path(needs).exists() if "/" in needs else shutil.which(needs) is not None)


def runners_of(work, folder, options, places):
    """The tools under test, the floor (or None) and the peers, ready to run."""
    own = [Runner(tools.tlexpand(name, path, work.options), work, folder, places, suffix=str(i) if i else "")
           for i, (name, path) in enumerate(measured_tools(options))]
    floor = Runner(tools.floor(work.floor), work, folder, places) if work.floor else None
    peers = [Runner(tools.EXTRA[name], work, folder, places) for name in work.extra]
    for tool in () if options.no_peers else tools.PEERS:
        wanted = not options.peer or tool.name in options.peer
        if wanted and (folder / f"input.{tool.kind}").exists() and is_there(tool, places):
            peers.append(Runner(tool, work, folder, places))
    return own, floor, peers


def measure(own, floor, peers, runs, notes):
    """Runs all in turn; tools that fail or are too slow drop out."""
    active = [*own, *([floor] if floor else []), *peers]
    for round_number in range(runs):
        for runner in list(active):
            if round_number and runner in peers and runner.tool.is_rival and runner.time() > SLOW * fastest_time(peers):
                continue
            try:
                runner.run()
            except (Failed, TooSlow) as error:
                (notes.problems if isinstance(error, Failed) else notes.slow).append(
                    f"{runner.work.name}: {runner.tool.name}: {error}")
                active.remove(runner)
                runner.runs.clear()
                continue
            if round_number == 0:
                progress(f" {runner.tool.name}")
                compare(own[0], runner, notes.problems)
            elif runner.out.exists():
                runner.out.unlink()


class Notes:
    """What is said below the tables."""

    def __init__(self):
        self.problems = []
        self.slow = []


def progress(text):
    print(text, end="", file=sys.stderr, flush=True)


def fastest_time(peers):
    return min(peer.time() for peer in peers if peer.runs and peer.tool.is_rival)


def compare(reference, runner, problems):
    """Compares the output of a runner with that of the reference."""
    if runner is reference or runner.tool in tools.EXTRA.values() or not reference.runs:
        return
    found = difference(reference.out, runner.out, runner.tool)
    if found:
        problems.append(f"{runner.work.name}: {runner.tool.name}: {found}")
    runner.out.unlink()


def main():
    options = parse_arguments()
    places = {"build": str((options.build / "bench").resolve()), "peers": str(BENCH / "peers"),
              "modules": str(options.peer_dir.resolve())}
    root = (options.work_dir or options.build / "bench/work").resolve()
    results = []
    notes = Notes()
    for work in ALL:
        if (options.work and work.name not in options.work) or work.name in options.without:
            continue
        folder = make_inputs(work, root, options.scale)
        progress(f"{work.name}:")
        own, floor, peers = runners_of(work, folder, options, places)
        measure(own, floor, peers, options.runs, notes)
        progress("\n")
        results.append((work, folder, own, floor, peers))
        for path in folder.glob("out.*"):
            path.unlink()
    report(results, has_peers=not options.no_peers, runs=options.runs)
    missing = sorted({tool.name for tool in tools.PEERS if not is_there(tool, places)})
    if missing and not options.no_peers:
        print("Not installed:", ", ".join(missing))
    if notes.slow:
        print("Ended:", "; ".join(notes.slow))
    print("\n".join(notes.problems) if notes.problems else "All outputs are identical.")
    sys.exit(1 if notes.problems else 0)


if __name__ == "__main__":
    main()
