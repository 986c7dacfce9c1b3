"""What headers declare, abi/exports.txt lists and the library exports is the same. Arguments: the root, the library, nm."""

import collections
import pathlib
import re
import subprocess
import sys

root, library, nm = pathlib.Path(sys.argv[1]), *sys.argv[2:]
failures = []


def expect_same(what, one, other_what, other):
    for name, count in ((one - other) + (other - one)).items():
        failures.append(f"{what} {one[name]} times, {other_what} {other[name]} times: {name}")


rows = subprocess.run([nm, "-D", "--defined-only", "-C", library], check=True, capture_output=True, text=True).stdout
exported = sorted({re.split(r" [A-Za-z] ", row, maxsplit=1)[1] for row in rows.splitlines()})  # constructors have two
listed = (root / "abi/exports.txt").read_text().splitlines()
expect_same("listed", collections.Counter(listed), "exported", collections.Counter(exported))
if failures:
    pathlib.Path("exported.txt").write_text("\n".join(exported) + "\n")
    failures.append(f"if that is wanted, {pathlib.Path('exported.txt').resolve()} is the new abi/exports.txt")

# Every public member function of an exported class, every exported function and object: how often each name is declared.
# CClientProtocolBase is implemented, not called from outside; pure and deleted functions have no code.
declared = collections.Counter()
for header in [path for room in ("system", "protocol", "adapter") for path in sorted((root / room).glob("*.h"))]:
    text = re.sub(r"///.*|^#.*", "", header.read_text(), flags=re.M)
    declared.update(re.findall(r"^TESSARO_API [^(;]*?(\w+)\(", text, re.M))
    declared.update(re.findall(r"^extern TESSARO_API .*?(\w+)(?:\[\d+\])?;", text, re.M))
    for found in re.finditer(r"^class TESSARO_API (\w+).*?^};", text, re.M | re.S):
        scopes = re.findall(r"^(?:namespace (\w+)|}) ?", text[: found.start()].replace("\n};", ""), re.M)
        name = "::".join([*scopes[-1:], found[1]]).removeprefix("::")
        if name == "Adapter_ProtocolSet::CClientProtocolBase":
            continue
        public = re.sub(r"//.*|\[\[.*?\]\]|^.*?public:", "", found[0].split("private:")[0].split("{", 1)[1])
        for statement in re.split(r"[;{}]", public):
            member = re.search(r"(operator[^(]+|~?\w+)\(", statement)
            if member and not re.search(r"= (0|delete)\s*$", statement):
                declared[f"{name}::{member[1]}"] += 1
for row in re.finditer(r"^OPERATION\(\d+, (\w+)", (root / "protocol/operations.def").read_text(), re.M):
    declared[f"Adapter_ProtocolSet::CClientProtocolSet::{row[1]}"] += 1

linked = collections.Counter(re.sub(r"\(.*", "", name) for name in listed if not re.match(r"\w+ (name )?for |.*::g_", name))
del linked["Adapter_CommonKit::TSingletons<CAdapter_GlobalObject>::Instance"]  # a template
expect_same("declared", declared, "listed", linked)

print("\n".join([*failures, f"tried: {len(listed)} exported names, {declared.total()} declarations"]))
sys.exit(bool(failures))
