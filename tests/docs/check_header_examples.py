# SPDX-License-Identifier: MIT
"""Compiles and runs the examples in the comments of headers.

    check_header_examples.py SOURCES LIBRARIES COMPILER [FLAG...]

An example stands between `@code` and `@endcode` in `///` comments. It becomes the body of `main`
behind its header; a comment `// NAME: "TEXT"` at the end of a line demands that the variable NAME
then has that text. Each header must have as many examples that end as ones that begin.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

PROGRAM = """#include "{header}"
#include <iostream>

#define EXPECT(name, wanted)                                       \\
    if (!(name == wanted))                                         \\
    {{                                                              \\
        std::cerr << #name << " is not " << #wanted << '\\n';        \\
        return 1;                                                  \\
    }}

int main()
{{
    using namespace telv;
{body}
}}
"""


def read_examples(header):
    lines = re.findall(r"^\s*/// ?(.*)$", header.read_text(), re.MULTILINE)
    text = "\n".join(lines)
    examples = re.findall(r"@code\n(.*?)\n@endcode", text, re.DOTALL)
    if len(examples) != text.count("@code") or len(examples) != text.count("@endcode"):
        sys.exit(f"{header}: an example does not end")
    return examples


def main():
    sources, libraries = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    compile_command, count = sys.argv[3:], 0
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        for header in sorted(sources.rglob("*.h")):
            for example in read_examples(header):
                body = re.sub(r'// (\w+): (".*")$', r"EXPECT(\1, \2)", example, flags=re.MULTILINE)
                if "EXPECT" not in body:
                    sys.exit(f"{header}: an example says nothing about its result\n{example}")
                name = header.relative_to(sources)
                (folder / "example.cpp").write_text(PROGRAM.format(header=name, body=body))
                subprocess.run([*compile_command, "-std=c++20", "-I", str(sources), "-o", "example",
                                "example.cpp", "-L", libraries, "-ltlMacroExpander", "-ltlUtils",
                                f"-Wl,-rpath,{libraries}"], cwd=folder, check=True)
                subprocess.run(["./example"], cwd=folder, check=True, timeout=100)
                count += 1
    print(f"{count} examples are true")
    return 0 if count > 0 else 1


if __name__ == "__main__":
    sys.exit(main())
