"""Makes the tables of records and enumerations from the headers of the plug-in interface: a record's fields and what they
mean are written down there and nowhere else.

    generate.py OUT.h OUT.cpp HEADER...

What a field is follows from its declaration and its comment: an enumeration that the comment names, "bits" after it, a
colour (0xRRGGBB), a time (ll...Us), a counted array (dwCount), a list (ptEntries), "read only".
"""

import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[2]))
import headers  # noqa: E402

WORDS = re.compile(r"IPv\d|[A-Z]+\d+[A-Z]?(?![a-z])|[A-Z]+(?![a-z])|[A-Z]?[a-z]+\d*|\d+")
HIDDEN = re.compile(r"dwSize$|dwReserved\d?$|abyReserved$|dwEntrySize$|dwCapacity$")


def snake(name):
    return "_".join(WORDS.findall(name)).lower()


def key(name):
    """ullChannels: channels; llStartUs: start; dwFrameRate: frame_rate."""
    return snake(re.sub(r"^[a-z]+(?=[A-Z])", "", re.sub(r"^(ll\w+)Us$", r"\1", name)))


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def enumerators(rows):
    names = [headers.enumerator(row)[0] for row in rows]
    words = [["e"] + WORDS.findall(name[1:]) for name in names]
    common = 0
    while len(names) > 1 and all(len(w) > common + 1 and w[common].rstrip("s") == words[0][common].rstrip("s") for w in words):
        common += 1
    return [(name, "_".join(w[max(common, 1):]).lower()) for name, w in zip(names, words)]


def write(path, text):
    """Only what has changed: everything that includes the header would be compiled again."""
    file = pathlib.Path(path)
    if not file.exists() or file.read_text() != text:
        file.write_text(text)


def main():
    out_header, out_source, *paths = sys.argv[1:]
    text = headers.read(paths)
    enums = {name: enumerators(rows) for name, _, rows in headers.enumerations(text)}
    records = headers.records(text)
    known = [record.name for record in records]

    def field(record, row, counted):
        kind, pointer, name, count, _, comment = headers.field(row)
        names = target = "nullptr"
        if pointer:
            shape = "List" if name == "ptEntries" else "Pointer"
        elif kind == "char":
            shape = "Text"
        elif kind == "unsigned char":
            shape = "Bytes"
        elif kind in known:
            shape = "Array" if count else "Record"
        elif count:
            shape = "Numbers"
        elif name.startswith("b"):
            shape = "Flag"
        elif name.startswith("ll") and name.endswith("Us") and not re.search("signed|own time line", comment):
            shape = "Time"
        elif "0xRRGGBB" in comment:
            shape = "Colour"
        else:
            shape = "Signed" if kind in ("int32_t", "int64_t") else "Number"
            named = next((word for word in re.findall(r"e[A-Z]\w+", comment) if word in enums), None)
            if named and not re.search(r"\bbit n\b", comment):
                names = f"&g_t{named}"
                shape = "Bits" if re.search(named + " bits", comment) else "Named"
        if kind in known:
            target = f"&RecordOf<{kind}>()"
        shown = not HIDDEN.match(name) and not (name == "dwCount" and counted)
        flags = [*["g_bReadOnly"] * ("read only" in comment), *["g_bSecret"] * (name == "szPassword"),
                 *["g_bHidden"] * (not shown)]
        return (f"{{{quoted(key(name))}, {quoted(comment)}, eShape::{shape}, offsetof({record}, {name}), "
                f"sizeof({record}::{name}), {names}, {target}, {' | '.join(flags) or '0'}}},")

    lines = []
    for name, rows in enums.items():
        values = "".join(f"{{{identifier}, {quoted(word)}}}, " for identifier, word in rows)
        lines += [f"static const tagName g_a{name}[] = {{{values}}};",
                  f"static const tagNames g_t{name} = {{{quoted(name)}, g_a{name}}};",
                  f"template <> tagNames const& NamesOf<{name}>() {{ return g_t{name}; }}"]
    for name in known:
        lines.append(f"template <> tagRecord const& RecordOf<{name}>();")
    for name, _, rows in records:
        body = " ".join(row.code for row in rows)
        sized, counted = bool(re.search(r"\bdwSize;", body)), bool(re.search(r" at\w+\[\d+\];|ptEntries", body))
        lines += [f"template <> tagRecord const& RecordOf<{name}>()", "{",
                  "    static const tagField s_atFields[] = {",
                  *("        " + field(name, row, counted) for row in rows), "    };",
                  f"    static const tagRecord s_tRecord = {{{quoted(name)}, sizeof({name}), {str(sized).lower()}, s_atFields}};",
                  "    return s_tRecord;", "}"]
    begin = '#include "tools/tessaro/records/Tables.h"\n\n#include "adapter/ClientAdapterExtra.h"\n\nnamespace tessaro\n{\n'
    write(out_source,
        f'#include "{pathlib.Path(out_header).name}"\n' + "namespace tessaro\n{\n" + "\n".join(lines) + "\n}\n")
    declarations = [f"template <> tagNames const& NamesOf<{name}>();" for name in enums]
    declarations += [f"template <> tagRecord const& RecordOf<{name}>();" for name in known]
    write(out_header, "#pragma once\n" + begin + "\n".join(declarations) + "\n}\n")


main()
