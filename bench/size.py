"""Prints the second table of bench/run: how large the library and a plug-in are, and what loading the library takes.
Arguments: the library, the plug-in."""

import ctypes
import os
import re
import subprocess
import sys
import tempfile

# Their goals in KB. The ONVIF plug-in has the RTSP engine in it, 343 KB.
PLUGINS = {"librtspclient.so": ("RTSP plug-in", 450), "libonvifclient.so": ("ONVIF plug-in", 643)}

library = os.path.realpath(sys.argv[1])


def stripped_kb(path):
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "stripped.so")
        subprocess.run(["strip", "-o", stripped, path], check=True)
        return os.path.getsize(stripped) / 1000


# A table's heading tells the number of its entries; packed ones stand for several addresses each.
relocations = subprocess.run(["readelf", "-rW", library], check=True, capture_output=True, text=True).stdout
headings = re.findall(r"^Relocation section '(.*)' at offset .* contains (\d+) entr", relocations, re.M)

ctypes.CDLL(library)
private = 0
ours = False
with open("/proc/self/smaps") as file:
    for line in file:
        mapping = re.match(r"[0-9a-f]+-[0-9a-f]+ \S+ \S+ \S+ \d+\s*(.*)", line)
        if mapping:  # its variables without a value follow it, in a mapping without a name
            ours = mapping.group(1) == library or (ours and not mapping.group(1))
        elif ours and line.startswith("Anonymous:"):
            private += int(line.split()[1])

print(f"{'':26}{'':>12}{'goal':>8}")
print(f"{'stripped, KB':26}{stripped_kb(library):12.0f}{110:8}")
plugin, goal = PLUGINS[os.path.basename(sys.argv[2])]
print(f"{plugin + ', KB':26}{stripped_kb(sys.argv[2]):12.0f}{goal:8}")
for section, entries in headings:
    print(f"{'relocations, ' + section:26}{entries:>12}")
print(f"{'private memory, KiB':26}{private:12}")
