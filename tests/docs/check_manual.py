# SPDX-License-Identifier: MIT
"""Makes the manual page and the completions from the tool's --help and uses them as a shell does.

    check_manual.py MAKE_MANUAL TLEXPAND

Each shell must offer exactly the options of --help, for the tool and for each subcommand, the
subcommands at the first word, and the words that an option's value can be. A shell that is not
there is not tried; bash is.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FAULTS = []


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=100,
                          **options).stdout


def expect(what, wanted, got):
    if set(wanted) != set(got):
        FAULTS.append(f"{what}: missing {sorted(set(wanted) - set(got))}, "
                      f"too many {sorted(set(got) - set(wanted))}")


def bash(folder, words):
    quoted = " ".join(f"'{word}'" for word in words)
    script = (f"source {folder}/tlexpand.bash; COMP_WORDS=({quoted}); "
              f"COMP_CWORD={len(words) - 1}; _tlexpand; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
    return run("bash", "--norc", "-c", script, cwd=folder).split()


def zsh(folder, words):
    """The options that the file hands to _arguments."""
    quoted = " ".join(f"'{word}'" for word in words)
    script = ("_arguments() { print -rl -- \"$@\"; }; _describe() { print -rl -- \"$subcommands[@]\"; }; "
              f"words=({quoted}); CURRENT={len(words)}; source {folder}/_tlexpand")
    return run("zsh", "-f", "-c", script).splitlines()


def fish(folder, words):
    script = f"source {folder}/tlexpand.fish; complete -C '{' '.join(words)}'"
    return [line.partition("\t")[0] for line in
            run("fish", "--no-config", "-c", script, cwd=folder).splitlines()]


def check_bash(folder, subcommand, options):
    before = ["tlexpand"] + ([subcommand] if subcommand else [])
    expect(f"bash {before}", options, bash(folder, [*before, "-"]))
    if "--color" not in options:
        return
    expect(f"bash {before} --color", ["auto", "always", "never"],
           bash(folder, [*before, "--color", ""]))
    expect(f"bash {before} --color=a", ["auto", "always"],
           bash(folder, [*before, "--color", "=", "a"]))


def check_bash_lists(folder):
    """The words of --warn, each behind those that stand there, and files alone behind `--`."""
    names = ["dropped-text", "unknown-directive", "unknown-name", "hidden-name", "unused", "tabs"]
    expect("bash --warn", [*names, "all", "none"], bash(folder, ["tlexpand", "--warn", ""]))
    expect("bash --warn=u", ["unknown-directive", "unknown-name", "unused"],
           bash(folder, ["tlexpand", "--warn", "=", "u"]))
    expect("bash --warn tabs,un", ["tabs,unknown-directive", "tabs,unknown-name", "tabs,unused"],
           bash(folder, ["tlexpand", "--warn", "tabs,un"]))
    expect("bash --warn tabs,unused,h", ["tabs,unused,hidden-name"],
           bash(folder, ["tlexpand", "--warn", "tabs,unused,h"]))
    made = ["_tlexpand", "tlexpand.1", "tlexpand.bash", "tlexpand.fish"]
    expect("bash --", made, bash(folder, ["tlexpand", "--", ""]))
    expect("bash --batch", made, bash(folder, ["tlexpand", "--batch", ""]))
    expect("bash explain --from-map", made, bash(folder, ["tlexpand", "explain", "--from-map", ""]))
    expect("bash -- -", [""], bash(folder, ["tlexpand", "--", "-"]) or [""])
    expect("bash -- behind --color", made, bash(folder, ["tlexpand", "--", "--color", ""]))
    expect("bash --, a subcommand", made, bash(folder, ["tlexpand", "explain", "--", ""]))
    expect("bash: options before --", ["--color"], bash(folder, ["tlexpand", "--col"]))


def check_zsh(folder, subcommand, options):
    before = ["tlexpand"] + ([subcommand] if subcommand else [])
    specs = zsh(folder, [*before, "-"])
    found = [m.group(1) for m in (re.match(r"\*(--?[A-Za-z][a-z-]*)[=+]?\[", s) for s in specs) if m]
    expect(f"zsh {before}", options, found)
    has_values = any(re.match(r"\*--color=\[.*\]:WHEN:\(auto always never\)$", spec) for spec in specs)
    if "--color" in options and not has_values:
        FAULTS.append(f"zsh {before}: no values for --color")


def check_fish(folder, subcommand, options):
    before = ["tlexpand"] + ([subcommand] if subcommand else [])
    long = [option for option in options if option.startswith("--")]
    short = [option for option in options if not option.startswith("--")]
    expect(f"fish {before} --", long, fish(folder, [*before, "--"]))
    offered = [o for o in fish(folder, [*before, "-"]) if re.fullmatch("-[A-Za-z]", o)]
    expect(f"fish {before} -", short, offered)
    if "--warn" in options:
        expect(f"fish {before} --warn tabs,", ["tabs,unused"], fish(folder, [*before, "--warn tabs,unu"]))
        expect(f"fish {before} --warn=tabs,", ["--warn=tabs,unused"],
               fish(folder, [*before, "--warn=tabs,unu"]))
    if "--color" in options:
        expect(f"fish {before} --color", ["auto", "always", "never"],
               fish(folder, [*before, "--color "]))


def check_page(folder, options):
    page = (folder / "tlexpand.1").read_text()
    for name in re.findall(r"@[A-Z]+@", page):
        FAULTS.append(f"tlexpand.1: {name} was not put in")
    plain = page.replace("\\-", "-")
    for option in options:
        if f"\\fB{option}\\fR" not in plain:
            FAULTS.append(f"tlexpand.1: {option} is missing")
    for form in ("\n[OPTIONS] --out-dir DIR [--batch LIST] [FILE...]\n.br\n",
                 "\n.B tlexpand project\n[OPTIONS] [FILE]\n.br\n",
                 ".SH WHERE\n.B tlexpand where\n[OPTIONS] MAP OUTPUT:LINE[:COLUMN]\n.br\n", "\n.PP\nSay where "):
        if form not in plain:
            FAULTS.append(f"tlexpand.1: {form!r} is missing")
    if shutil.which("mandoc"):
        lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", folder / "tlexpand.1"],
                              capture_output=True, text=True, check=False)
        FAULTS.extend(lint.stdout.splitlines())


def main():
    make_manual, tool = sys.argv[1:]
    text = run(tool, "--help")
    subcommands = re.findall(r"^(?:Usage:|      ) tlexpand ([a-z]+) ", text, re.MULTILINE)
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        run(sys.executable, make_manual, tool, str(folder))
        every = set()
        for subcommand in ["", *subcommands]:
            help_text = run(tool, *([subcommand] if subcommand else []), "--help")
            options = set(re.findall(r"(?m)(?:^ +|, )(--?[A-Za-z][a-z-]*)", help_text))
            every |= options
            for shell, check in (("bash", check_bash), ("zsh", check_zsh), ("fish", check_fish)):
                if shell == "bash" or shutil.which(shell):
                    check(folder, subcommand, options)
        check_bash_lists(folder)
        check_page(folder, every)
        expect("bash: the first word", subcommands,
               [word for word in bash(folder, ["tlexpand", ""]) if word in subcommands])
    for fault in FAULTS:
        print(fault, file=sys.stderr)
    return 1 if FAULTS else 0


if __name__ == "__main__":
    sys.exit(main())
