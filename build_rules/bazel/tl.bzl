# SPDX-License-Identifier: MIT
"""Rules that expand texts: tl_expand makes a file, tl_library holds files to import.

    load("//build_rules/bazel:tl.bzl", "tl_expand", "tl_library")

    tl_library(
        name = "names",
        srcs = ["lib/names.tl"],
        import_paths = ["lib"],
    )

    tl_expand(
        name = "table",
        src = "table.cpp.tl",
        out = "table.cpp",
        defines = {"VERSION": "3"},
        deps = [":names"],
    )

The tool is the label @tlexpand//:tlexpand unless `tool` says otherwise; in WORKSPACE, tl_tool makes it
from an installed one. What a text may import is what its deps hold: an action sees nothing else.
"""

TlInfo = provider(
    doc = "What a text may import.",
    fields = {
        "files": "depset of the files",
        "paths": "depset of the directories that are searched, from the top of the build",
    },
)

def _directories(ctx):
    """The import paths of a target, where sources lie and where the build puts files."""
    found = []
    for path in ctx.attr.import_paths:
        parts = [part for part in (ctx.label.workspace_root, ctx.label.package, path) if part not in ("", ".")]
        place = "/".join(parts) or "."
        found += [place, ctx.bin_dir.path + "/" + place]
    return found

def _tl_library_impl(ctx):
    files = depset(ctx.files.srcs, transitive = [dep[TlInfo].files for dep in ctx.attr.deps])
    paths = depset(
        _directories(ctx),
        transitive = [dep[TlInfo].paths for dep in ctx.attr.deps],
        order = "preorder",
    )
    return [DefaultInfo(files = files), TlInfo(files = files, paths = paths)]

tl_library = rule(
    implementation = _tl_library_impl,
    doc = "Files that others import.",
    attrs = {
        "srcs": attr.label_list(allow_files = True, mandatory = True),
        "deps": attr.label_list(providers = [TlInfo], doc = "What these files import."),
        "import_paths": attr.string_list(doc = "Directories that @import searches, from this package."),
    },
)

def _check_options(options):
    """Stops at options that name outputs: the build must know these, the sandbox throws others away."""
    for option in options:
        name = option.partition("=")[0]
        for keyword, refused in [("out", "--output"), ("map", "--map"), ("source_map", "--source-map"), ("trace", "--trace")]:
            if name == refused or (keyword == "out" and option.startswith("-o")):
                fail("options: '%s' names an output; leave it out, and name it with the attribute %s" % (option, keyword))
        for refused in ["--depfile", "--batch", "--out-dir", "--check"]:
            if name == refused:
                fail("options: '%s' is of no use here; leave it out: the build knows what an action reads, and makes one file in each" % option)

def _tl_expand_impl(ctx):
    _check_options(ctx.attr.options)
    arguments = ctx.actions.args()
    outputs = []
    for option, output in [
        ("-o", ctx.outputs.out),
        ("--map", ctx.outputs.map),
        ("--source-map", ctx.outputs.source_map),
        ("--trace", ctx.outputs.trace),
    ]:
        if output:
            arguments.add(option, output)
            outputs.append(output)
    for name, value in sorted(ctx.attr.defines.items()):
        arguments.add("-D", name + "=" + value)
    for label, name in ctx.attr.lists.items():
        files = label.files.to_list()
        if len(files) != 1:
            fail("lists: %s is %d files; a list is one" % (label.label, len(files)))
        name, colon, columns = name.partition(":")
        arguments.add("--list", name + "=" + files[0].path + colon + columns)
    paths = depset(
        _directories(ctx),
        transitive = [dep[TlInfo].paths for dep in ctx.attr.deps],
        order = "preorder",
    )
    arguments.add_all(paths, before_each = "-I")
    arguments.add_all(ctx.attr.options)
    arguments.add("--")
    arguments.add(ctx.file.src)
    ctx.actions.run(
        executable = ctx.executable.tool,
        arguments = [arguments],
        inputs = depset(
            [ctx.file.src] + ctx.files.lists,
            transitive = [dep[TlInfo].files for dep in ctx.attr.deps],
        ),
        outputs = outputs,
        mnemonic = "TlExpand",
        progress_message = "Expanding %s" % ctx.outputs.out.short_path,
    )
    return [DefaultInfo(files = depset(outputs))]

tl_expand = rule(
    implementation = _tl_expand_impl,
    doc = "A file that is the expansion of another.",
    attrs = {
        "src": attr.label(allow_single_file = True, mandatory = True),
        "out": attr.output(mandatory = True),
        "map": attr.output(doc = "The map from the output to its sources, as JSON."),
        "source_map": attr.output(doc = "A source map, version 3."),
        "trace": attr.output(doc = "A line for each call, round, definition and import."),
        "deps": attr.label_list(providers = [TlInfo], doc = "What the text imports."),
        "defines": attr.string_dict(doc = "Dollar macros."),
        "lists": attr.label_keyed_string_dict(
            allow_files = True,
            doc = "Rows of data: the file, and NAME or NAME:COLUMNS.",
        ),
        "import_paths": attr.string_list(doc = "Directories that @import searches, from this package."),
        "options": attr.string_list(doc = "Other options of the tool."),
        "tool": attr.label(default = "@tlexpand//:tlexpand", executable = True, cfg = "exec", allow_files = True),
    },
)

def _tl_tool_impl(repository):
    path = repository.attr.path
    if path and not path.startswith("/"):
        fail("the path '%s' of the tool is not absolute" % path)
    found = repository.path(path) if path else repository.which("tlexpand")
    if not found or not found.exists:
        fail("there is no %s: install the tool, or name it: tl_tool(name = \"tlexpand\", path = ...)" % (path or "tlexpand on the PATH"))
    repository.symlink(found, "tlexpand")
    repository.file("BUILD.bazel", "exports_files([\"tlexpand\"])\n")

tl_tool = repository_rule(
    implementation = _tl_tool_impl,
    doc = "The installed tool as @NAME//:tlexpand; without a path, the one that the shell finds.",
    attrs = {"path": attr.string(doc = "An absolute path.")},
    environ = ["PATH"],
    local = True,
)
