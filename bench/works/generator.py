"""A code generator: three tables of 250 types, each with a row for each of 500 members."""
from harness.words import Words
from harness.work import MB, Work, put, scaled

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

    def memory_limit(self, folder):
        return 4 * MB
