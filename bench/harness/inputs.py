# SPDX-License-Identifier: MIT
"""Makes the inputs of the works, each in a folder of its own, once for a scale."""
import hashlib
import shutil
from pathlib import Path

_BENCH = Path(__file__).resolve().parent.parent


def _sources():
    """Changes when a generator does."""
    digest = hashlib.sha256()
    for path in sorted([*_BENCH.glob("works/*.py"), _BENCH / "harness/words.py"]):
        digest.update(path.read_bytes())
    return digest.hexdigest()


def make_inputs(work, root, scale):
    """The folder with the inputs of `work`."""
    folder = root / work.name
    stamp = folder / "stamp"
    wanted = f"{scale} {_sources()}"
    if not stamp.exists() or stamp.read_text() != wanted:
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        work.write(folder, scale)
        stamp.write_text(wanted)
    return folder
