# SPDX-License-Identifier: MIT
"""Runs one tool on one work and keeps what its runs cost."""
import os
import signal
import statistics
import subprocess
from pathlib import Path

# A tool that needs more seconds of CPU time is ended, and the report says so.
CPU_LIMIT = 20
_ENDED_BY_LIMIT = {str(256 + signal.SIGXCPU), str(256 + signal.SIGKILL)}
_ENVIRONMENT = {**os.environ, "LC_ALL": "C"}


class Failed(Exception):
    """A tool ended with an error."""


class TooSlow(Exception):
    """A tool was ended because it needed too long."""


class Runner:
    """A tool set on a work: folder, command, and the measured runs (cpu, wall, peak in bytes)."""

    def __init__(self, tool, work, folder, places, suffix=""):
        self.tool = tool
        self.work = work
        self.folder = folder
        self.out = folder / f"out.{tool.name}{suffix}"
        self.launcher = places["build"] + "/launch"
        values = {"in": f"input.{tool.kind}", "out": self.out.name, "data": "input.json", **places}
        self.command = [part.format(**values) for part in tool.command]
        self.writes_file = any("{out}" in part for part in tool.command)
        self.runs = []

    def run(self):
        """Runs the tool once (or as often as the work says) and keeps the figures."""
        self.out.unlink(missing_ok=True)
        target = "-" if self.writes_file else self.out.name
        errors = self.folder / f"errors.{self.tool.name}"
        with open(errors, "wb") as stderr:
            done = subprocess.run([self.launcher, str(self.work.times), str(CPU_LIMIT), target, *self.command],
                                  cwd=self.folder, env=_ENVIRONMENT, stdout=subprocess.PIPE, stderr=stderr,
                                  check=False)
        lines = done.stdout.decode().splitlines()
        if done.returncode != 0 or not lines:
            raise Failed("could not be started")
        runs = []
        for line in lines:
            status, user, system, wall, peak = line.split()
            if status in _ENDED_BY_LIMIT:
                raise TooSlow(f"more than {CPU_LIMIT} s")
            if status != "0":
                raise Failed(f"status {status}: {_first_line(errors)}")
            runs.append((float(user) + float(system), float(wall), int(peak) * 1024))
        self.runs.append(tuple(map(statistics.median, zip(*runs))))

    def time(self):
        """The median of what counts for the work."""
        return statistics.median(self._times())

    def spread(self):
        """Half the distance from the least to the most, as part of the median."""
        times = self._times()
        return (max(times) - min(times)) / 2 / max(self.time(), 1e-9)

    def peak(self):
        return max(run[2] for run in self.runs)

    def _times(self):
        return [run[0 if self.work.clock == "cpu" else 1] for run in self.runs]


def _first_line(path):
    lines = Path(path).read_text(errors="replace").strip().splitlines()
    return lines[0] if lines else "no message"
