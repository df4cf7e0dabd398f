# SPDX-License-Identifier: MIT
"""A macro with a typed argument that calls itself 2,000 deep, 100 times."""
from harness.work import MB, Work, put, put_javascript, scaled

# What defines f, and a line that calls it.
FORMS = {
    "tl": ("@def f(int n) = {@if(n > 0){n f(n - 1)}}\n", "ROUND: f(DEPTH).\n"),
    "m4": ("m4_define(`f', `m4_ifelse(m4_eval($1 > 0), 1, `$1 f(m4_decr($1))')')m4_dnl\n", "ROUND: f(DEPTH).\n"),
    "jinja": ("{% macro f(n) %}{% if n > 0 %}{{ n }} {{ f(n - 1) }}{% endif %}{% endmacro %}",
              "ROUND: {{ f(DEPTH) }}.\n"),
    "nunjucks": ("{% macro f(n) %}{% if n > 0 %}{{ n }} {{ f(n - 1) }}{% endif %}{% endmacro %}",
                 "ROUND: {{ f(DEPTH) }}.\n"),
    "mako": ("<%def name=\"f(n)\"><% if n <= 0: return '' %>${n} ${f(n - 1)}</%def>\\\n", "ROUND: ${f(DEPTH)}.\n"),
    "php": ("<?php function f($n) { if ($n > 0) { ?><?=$n?> <?php f($n - 1); } } ?>\n",
            "ROUND: <?php f(DEPTH) ?>.\n"),
}
JAVASCRIPT = ("<% function f(n) { if (n > 0) { %><%= n %> <% f(n - 1); } } %>", "ROUND: <% f(DEPTH) %>.\n")


class Recursion(Work):
    name = "recursion"
    title = "recursion 2,000 deep, @def f(int n), 100 times"
    floor = "recursion"
    must, goal, floor_goal = 0.8, 0.25, 7
    memory = "12 MB"

    def write(self, folder, scale):
        depth = str(scaled(2000, scale))

        def text(form):
            definition, line = form
            return definition + "".join(line.replace("ROUND", str(i)).replace("DEPTH", depth) for i in range(100))

        for kind, form in FORMS.items():
            put(folder, f"input.{kind}", text(form))
        put_javascript(folder, text(JAVASCRIPT))

    def memory_limit(self, folder):
        return 12 * MB
