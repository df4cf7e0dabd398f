# SPDX-License-Identifier: MIT
"""Prints the results: a row for each work and tlexpand, then all peers."""
from harness.table import against, megabytes, number, print_table, seconds


def report(results, has_peers, runs):
    print(f"\nCPU time (user + system), median of {runs} runs; a '!' misses the target that must be met.\n")
    _print_works(results, has_peers)
    if has_peers:
        _print_peers(results)


def _figures(runner):
    return f"{seconds(runner.time())} ±{100 * runner.spread():.0f}%"


def _ratio(runner, other):
    return runner.time() / max(other.time(), 1e-9) if runner.runs and other and other.runs else None


def _second_ratio(runner, peers):
    """The ratio to PHP, or to the tool that the work has a goal for, and that goal."""
    name, goal = runner.work.second_goal or ("php", None)
    other = next((peer for peer in peers if peer.tool.name == name), None)
    ratio = _ratio(runner, other)
    if ratio is None:
        return "-"
    return f"{number(ratio)} of {name}" + (f" ({goal:g})" if goal else "")


def _peer_of(work, peers):
    """The peer that the targets of the work speak of."""
    if work.peer == "fastest":
        there = [peer for peer in peers if peer.runs and peer.tool.is_rival]
    else:
        there = [peer for peer in peers if peer.runs and peer.tool.name == work.peer]
    return min(there, key=lambda peer: peer.time(), default=None)


def _print_works(results, has_peers):
    several = any(len(own) > 1 for _, _, own, _, _ in results)
    head = ["work", *(["tool"] if several else []), "time", "peak",
            *(["peer", "÷ peer", "must", "goal", "÷ other"] if has_peers else []), "floor", "÷ floor", "goal", "memory goal"]
    rows = []
    for work, folder, own, floor, peers in results:
        peer = _peer_of(work, peers)
        for runner in own:
            if not runner.runs:
                rows.append([work.title, *([runner.tool.name] if several else []), "failed",
                             *[""] * (len(head) - 2 - several)])
                continue
            ratio = _ratio(runner, peer)
            limit = work.memory_limit(folder)
            rows.append([
                work.title, *([runner.tool.name] if several else []), _figures(runner), megabytes(runner.peak()),
                *([f"{peer.tool.name} {seconds(peer.time())}" if peer else "-", against(ratio, work.must),
                   number(work.must), number(work.goal), _second_ratio(runner, peers)] if has_peers else []),
                seconds(floor.time()) if floor and floor.runs else "-", number(_ratio(runner, floor)),
                number(work.floor_goal),
                work.memory + (f" = {megabytes(limit)}" if limit else "") +
                (" !" if limit and runner.peak() > limit else "")])
    print_table(head, rows)


def _print_peers(results):
    rows = []
    for work, _, own, _, peers in results:
        for peer in sorted((p for p in peers if p.runs), key=lambda p: p.time()):
            rows.append([work.name, peer.tool.name, _figures(peer), str(len(peer.runs)), megabytes(peer.peak()),
                         number(_ratio(own[0], peer))])
    print_table(["work", "peer", "time", "runs", "peak", "tlexpand ÷ peer"], rows)
