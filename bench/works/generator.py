# SPDX-License-Identifier: MIT
"""A code generator: three tables of 250 types, each with a row for each of 500 members."""
from harness.words import Words
from harness.work import MB, Work, put, put_data, put_javascript, scaled

TABLES = """\
@def structOf(T) =
{
    struct T
    {
        @for((type, name) in members)
        {
            column<type, T> name = column<type, T>();

        }@//
    };
}
@def namesOf(T) =
{
    const row T@@_names[] = {
        @for((type, name) in members)
        {
            {@str(name), @str(type), sizeof(T::name)},

        }@//
    };
}
@def visitOf(T) =
{
    void visit(T& self, int index) {
        switch (index) {
            @for((type, name) in members)
            {
                case T@@_@@name@@_index: return accept(self.name);

            }@//
        }
    }
}
@for(T in types)
{
    structOf(T)
    namesOf(T)
    visitOf(T)

}@//
"""

JINJA = """\
{% for T in types %}struct {{ T }}
{
{% for m in members %}    column<{{ m[0] }}, {{ T }}> {{ m[1] }} = column<{{ m[0] }}, {{ T }}>();
{% endfor %}};
const row {{ T }}_names[] = {
{% for m in members %}    {"{{ m[1] }}", "{{ m[0] }}", sizeof({{ T }}::{{ m[1] }})},
{% endfor %}};
void visit({{ T }}& self, int index) {
    switch (index) {
{% for m in members %}        case {{ T }}_{{ m[1] }}_index: return accept(self.{{ m[1] }});
{% endfor %}    }
}
{% endfor %}"""

MAKO = """\
% for T in types:
struct ${T}
{
% for type, name in members:
    column<${type}, ${T}> ${name} = column<${type}, ${T}>();
% endfor
};
const row ${T}_names[] = {
% for type, name in members:
    {"${name}", "${type}", sizeof(${T}::${name})},
% endfor
};
void visit(${T}& self, int index) {
    switch (index) {
% for type, name in members:
        case ${T}_${name}_index: return accept(self.${name});
% endfor
    }
}
% endfor
"""

PHP = """\
<?php $data = json_decode(file_get_contents('input.json')); foreach ($data->types as $T) { ?>
struct <?=$T, "\\n"?>
{
<?php foreach ($data->members as [$type, $name]) { ?>
    column<<?=$type?>, <?=$T?>> <?=$name?> = column<<?=$type?>, <?=$T?>>();
<?php } ?>
};
const row <?=$T?>_names[] = {
<?php foreach ($data->members as [$type, $name]) { ?>
    {"<?=$name?>", "<?=$type?>", sizeof(<?=$T?>::<?=$name?>)},
<?php } ?>
};
void visit(<?=$T?>& self, int index) {
    switch (index) {
<?php foreach ($data->members as [$type, $name]) { ?>
        case <?=$T?>_<?=$name?>_index: return accept(self.<?=$name?>);
<?php } ?>
    }
}
<?php }
"""

JAVASCRIPT = """\
<% for (const T of it.types) { %>struct <%= T %>
{
<% for (const [type, name] of it.members) { %>    column<<%= type %>, <%= T %>> <%= name %> = column<<%= type %>, <%= T %>>();
<% } %>};
const row <%= T %>_names[] = {
<% for (const [type, name] of it.members) { %>    {"<%= name %>", "<%= type %>", sizeof(<%= T %>::<%= name %>)},
<% } %>};
void visit(<%= T %>& self, int index) {
    switch (index) {
<% for (const [type, name] of it.members) { %>        case <%= T %>_<%= name %>_index: return accept(self.<%= name %>);
<% } %>    }
}
<% } %>"""


class Generator(Work):
    name = "generator"
    title = "generator, 500 members into three tables of 250 types"
    floor = "generator"
    must, goal, floor_goal = 0.6, 0.24, 2.3
    memory = "4 MB"

    def write(self, folder, scale):
        words = Words(8)
        types = [f"{words.type_name()}{i}" for i in range(scaled(250, scale ** 0.5))]
        members = [(words.pick(("int", "bool", "double", "Text", "Date")), f"{words.word()}{i}")
                   for i in range(scaled(500, scale ** 0.5))]
        put(folder, "input.tl", "@def types = {[", ", ".join(types), "]}\n",
            "@def members =\n{\n    [\n        ",
            ",\n        ".join(f"({type}, {name})" for type, name in members), "\n    ]\n}\n", TABLES)
        put_data(folder, {"types": types, "members": members})
        put(folder, "input.jinja", JINJA)
        put(folder, "input.nunjucks", JINJA)
        put(folder, "input.mako", MAKO)
        put(folder, "input.php", PHP)
        put_javascript(folder, JAVASCRIPT)

    def memory_limit(self, folder):
        return 4 * MB
