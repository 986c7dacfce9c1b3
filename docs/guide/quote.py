"""Puts regions of the examples into the pages of the guide, where it says `<!-- examples/guide/picture.c: login -->`.

    quote.py [--check]      --check: writes nothing, and ends with 1 when a page and a file don't agree, when code of C stands
                            on a page without a file behind it, or when a link of any document leads nowhere

A region stands between two lines that have its name in brackets: /* [login] */.
"""

import pathlib
import re
import sys
import textwrap

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
QUOTE = re.compile(r"(<!-- (\S+): (\w+) -->\n)```(\w+)\n(.*?)```\n", re.S)
PAGES = sorted(HERE.glob("*.md"))
DOCUMENTS = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", ROOT / "SECURITY.md", *PAGES, *sorted((ROOT / "docs").glob("*.md")),
             *sorted((ROOT / "docs" / "decisions").glob("*.md")), ROOT / "python" / "README.md",
             ROOT / "examples" / "node" / "README.md"]


def region(path, name):
    parts = re.split(rf"^[ \t]*(?:/\*|//|#) \[{name}\](?: \*/)?\n", (ROOT / path).read_text(), flags=re.M)
    if len(parts) != 3:
        sys.exit(f"{path} has no region {name}, or more than one")
    lines = [line for line in parts[1].splitlines(keepends=True) if not re.fullmatch(r"\s*/\* \[\w+\] \*/\n", line)]
    return textwrap.dedent("".join(lines))


def quoted(text):
    return QUOTE.sub(lambda found: f"{found[1]}```{found[4]}\n{region(found[2], found[3])}```\n", text)


def problems(page):
    text = page.read_text()
    if page in PAGES:
        if quoted(text) != text:
            yield f"{page}: its code isn't that of the files: run {pathlib.Path(__file__).resolve()}"
        if re.search(r"^```(c|cpp)$", QUOTE.sub("", text), re.M):
            yield f"{page}: code that no file stands behind"
    for link in re.findall(r"\]\(([^)#\s]+)", re.sub(r"^```.*?^```", "", text, flags=re.S | re.M)):
        if "://" not in link and not (page.parent / link).exists():
            yield f"{page}: there is no {link}"


def main():
    if "--check" not in sys.argv:
        for page in PAGES:
            page.write_text(quoted(page.read_text()))
        return
    found = [problem for page in DOCUMENTS for problem in problems(page)]
    quotes = sum(len(QUOTE.findall(page.read_text())) for page in PAGES)
    print(f"tried: guide, {quotes} quotes on {len(PAGES)} pages")
    if found:
        sys.exit("\n".join(found))


main()
