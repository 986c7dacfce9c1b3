"""The library in Node.js, whose callbacks need the one thread that JavaScript has: closing ends, wherever it is called.

    node_test.py NODE NPM EXAMPLE FOLDER SERVER CLIP      the library's and the plug-in's folders in LD_LIBRARY_PATH

Installs the example's packages into FOLDER, and ends with 77 where the registry can't be reached.
"""

import os
import shutil
import subprocess
import sys

NODE, NPM, EXAMPLE, FOLDER, SERVER, CLIP = sys.argv[1:]
shutil.copytree(EXAMPLE, FOLDER, dirs_exist_ok=True)
if subprocess.run([NPM, "ci", "--ignore-scripts", "--prefer-offline", "--fetch-retries=1"], cwd=FOLDER).returncode != 0:
    print("skipped: npm could not install the example's packages")
    sys.exit(77)
os.environ |= {"TESSARO_PASSWORD": "secret", "WORK_MS": "15"}
for arguments, result in ([], "closed with result 0"), (["here"], "closed here with result 219"):
    mount = ["/live", f"( filesrc location={CLIP} ! qtdemux ! h264parse ! rtph264pay name=pay0 config-interval=-1 )"]
    with subprocess.Popen([SERVER, "--seconds", "90", "--user", "viewer"] + mount, stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE, text=True) as server:
        url = f"rtsp://127.0.0.1:{server.stdout.readline().split()[-1]}/live"
        text = subprocess.run([NODE, "live_view.mjs", url, "viewer"] + arguments, cwd=FOLDER, check=True, timeout=60,
                              stdout=subprocess.PIPE, text=True).stdout
        server.communicate()
    assert result in text and "stopped with result 0" in text, text
    assert text.count("frame ", text.index("closed")) <= len(arguments), text  # the one that ran when it was closed here
