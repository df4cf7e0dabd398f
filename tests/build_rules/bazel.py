# SPDX-License-Identifier: MIT
"""A Bazel workspace of generated texts, and runs of Bazel that say what they did."""
import pathlib
import re
import shutil
import subprocess

import generate

RULES = pathlib.Path(__file__).resolve().parents[2] / "build_rules" / "bazel" / "tl.bzl"


def write_workspace(root, tool, files, libraries):
    """Texts below `root` with the rules and one target for each."""
    root = pathlib.Path(root)
    generate.write_tree(root, files, libraries)
    rules = root / "build_rules" / "bazel"
    rules.mkdir(parents=True)
    shutil.copy(RULES, rules)
    (rules / "BUILD.bazel").touch()
    (root / "WORKSPACE").write_text(
        'load("//build_rules/bazel:tl.bzl", "tl_tool")\n'
        f'tl_tool(name = "tlexpand", path = "{tool}")\n')
    (root / "BUILD.bazel").write_text(
        'load("//build_rules/bazel:tl.bzl", "tl_expand", "tl_library")\n'
        'tl_library(name = "common", srcs = ["common.tl"], import_paths = ["."])\n'
        f'[tl_library(name = "lib%d" % i, srcs = ["lib%d.tl" % i], deps = [":common"])'
        f' for i in range({libraries})]\n'
        '[tl_expand(name = "f%d" % n, src = "src/f%d.txt.tl" % n, out = "out/f%d.txt" % n,'
        f' deps = [":lib%d" % (n % {libraries})]) for n in range({files})]\n')


def build(root, base, *options):
    """Builds all targets with the output base `base`; how many actions ran in the sandbox and how many came
    from the remote cache."""
    done = subprocess.run(
        ["bazel", "--batch", f"--output_base={base}", "--nohome_rc", "build",
         "--spawn_strategy=linux-sandbox", "--nosandbox_debug", "--noshow_progress", "--color=no",
         *options, "//:all"],
        cwd=root, text=True, capture_output=True)
    counts = {kind: int(number) for number, kind in
              re.findall(r"(\d+) (remote cache hit|linux-sandbox)", done.stderr)}
    return done, counts.get("linux-sandbox", 0), counts.get("remote cache hit", 0)


def remove(base):
    """Bazel takes away the right to write."""
    subprocess.run(["chmod", "-R", "u+w", str(base)], check=False)
    shutil.rmtree(base)
