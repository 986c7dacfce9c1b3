"""The installed library as an application's author meets it: the examples are built by pkg-config and by CMake, and see
pictures without LD_LIBRARY_PATH.

    install_test.py EXAMPLES

In the environment: BUILD, a build folder that is installed into a folder of its own first (without it, what this system
has is taken); SERVER, CLIP and ONVIF_DEVICE, to see pictures of; for another machine CC, CXX, PKG_CONFIG, CMAKE_OPTIONS and
EMULATOR."""

import contextlib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile
import zlib

examples, here = (pathlib.Path(path).resolve() for path in (sys.argv[1], pathlib.Path(__file__).parent))
os.environ.pop("LD_LIBRARY_PATH", None)
os.environ |= {"TESSARO_PASSWORD": "admin"}


def words(name, default=""):
    return shlex.split(os.environ.get(name, default))


def run(*command, emulated=False, **more):
    """What it writes; it has to succeed."""
    command = [*(words("EMULATOR") if emulated else []), *map(str, command)]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=300, **more)
    assert done.returncode == 0, f"{shlex.join(command)}: {done.returncode}\n{done.stdout}"
    return done.stdout


@contextlib.contextmanager
def serve(*command):
    """Runs a server; gives the line that it says when it is ready."""
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as server:
        yield server.stdout.readline()
        server.communicate()


def check_pictures(work, program, count, width, *arguments, **environment):
    """The tour of snapshots takes so many, as wide as they should be, and each shows something."""
    folder = pathlib.Path(tempfile.mkdtemp(dir=work))
    run(program, *arguments, emulated=True, cwd=folder, env=os.environ | environment)
    assert len(list(folder.glob("*.png"))) == count, (arguments, list(folder.iterdir()))
    for file in folder.glob("*.png"):
        data = file.read_bytes()
        assert data[:8] == b"\x89PNG\r\n\x1a\n" and int.from_bytes(data[16:20], "big") == width, (file, data[:24])
        begin = data.index(b"IDAT")
        length = int.from_bytes(data[begin - 4:begin], "big")
        dots = zlib.decompressobj().decompress(data[begin + 4:begin + 4 + length])
        assert len(set(dots)) > 50, f"{file} is of few colours"


def check_headers(flags):
    """All are there that others include. That each compiles alone is the test headers'."""
    folder = pathlib.Path(next(flag[2:] for flag in [*flags, "-I/usr/include"] if flag.startswith("-I"))) / "tessaro"
    everything = [file.relative_to(folder.parent) for file in folder.rglob("*.h")]
    assert len(everything) > 30, everything
    simple = ["tessaro/ClientAdapterExtra.h", "tessaro/PluginInterface.h"]
    for command, files in ([*words("CXX", "g++"), "-std=c++20", "-x", "c++"], everything), \
                          ([*words("CC", "gcc"), "-std=c99", "-x", "c"], simple):
        run(*command, "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror", *flags, "-",
            input="".join(f"#include <{file}>\n" for file in files))
    return len(everything)


def test(work):
    options = words("CMAKE_OPTIONS")
    if "BUILD" in os.environ:
        prefix = work / "installed"
        run("cmake", "--install", os.environ["BUILD"], "--prefix", prefix)
        os.environ["PKG_CONFIG_PATH"] = str(next(prefix.rglob("tessaro.pc")).parent)
        options.append(f"-DCMAKE_PREFIX_PATH={prefix}")

    def ask(*question):
        return shlex.split(run(*words("PKG_CONFIG", "pkg-config"), *question, "tessaro"))

    flags, (folder,) = ask("--cflags"), ask("--variable=plugindir")
    count = check_headers(flags)
    viewers = {}
    for tags in "enable", "disable":  # a program's RUNPATH, which is its own alone, and its RPATH
        viewers[tags] = work / f"live_view_{tags}"
        run(*words("CC", "gcc"), "-std=c99", *flags, examples / "live_view.c", "-o", viewers[tags], *ask("--libs"),
            "-pthread", *(["-Wl,-rpath," + str(pathlib.Path(folder).parent)] if "BUILD" in os.environ else []),
            f"-Wl,--{tags}-new-dtags")
        assert "usage: live_view" in run(viewers[tags], "--help", emulated=True)
    text = run("cmake", "-S", here / "consumer", "-B", work / "cmake", f"-DEXAMPLES={examples}", *options)
    assert f"plug-ins in {folder}\n" in text, text
    run("cmake", "--build", work / "cmake")
    snapshots = work / "cmake" / "snapshots"
    check_pictures(work, snapshots, 4, 640, "vtq", "192.0.2.1")
    data = next(path / "share/tessaro" for path in pathlib.Path(folder).parents if (path / "share/tessaro").exists())
    check_pictures(work, snapshots, 1, 640, "vtq", "camera-7", TESSARO_FLEET=str(data / "fleet.toml"))
    if "SERVER" in os.environ:
        mount = f"( filesrc location={os.environ['CLIP']} ! qtdemux ! h264parse ! rtph264pay name=pay0 config-interval=-1 )"
        with serve(os.environ["SERVER"], "--seconds", "90", "/live", mount) as line:
            for viewer in viewers.values():
                text = run(viewer, f"rtsp://127.0.0.1:{line.split()[-1]}/live", "--seconds", "1", emulated=True)
                assert "h264" in text.lower() and "320x240" in text, text
    if "ONVIF_DEVICE" in os.environ:  # scaled and as PNG: by a library beside its plug-in
        with serve(os.environ["ONVIF_DEVICE"], "--seconds", "90") as line:
            check_pictures(work, snapshots, 4, 640, "onvif", f"127.0.0.1:{line.split()[2]}")
    tool = work / "installed/bin/tessaro" if "BUILD" in os.environ else shutil.which("tessaro")
    if tool and pathlib.Path(tool).exists():
        text = run(tool, "doctor", "vtq://192.0.2.1", emulated=True)
        found = [line.split()[-1] for line in text.splitlines() if " good " in line]
        assert len(found) == 4 and "h264 1280x720" in text, text
        assert all(pathlib.Path(file).parent.samefile(folder) for file in found), text
        if not words("EMULATOR"):  # it runs another program
            run(tool, "trace", work / "trace.json", "--", tool, "info", "vtq://192.0.2.1")
            assert '"VTQClient_' in (work / "trace.json").read_text()
    print(f"tried: {count} installed headers, programs by pkg-config and CMake, plug-ins in {folder}")


with tempfile.TemporaryDirectory() as name:
    test(pathlib.Path(name))
