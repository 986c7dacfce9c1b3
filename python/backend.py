"""Builds the package for pip (PEP 517): its files as they are, in a wheel or a source archive. Needs nothing else."""

import base64
import hashlib
import io
import pathlib
import tarfile
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
VERSION = "1.0.0"
INFO = f"tessaro-{VERSION}.dist-info"
METADATA = f"""Metadata-Version: 2.1
Name: tessaro
Version: {VERSION}
Summary: One way to talk to every camera, recorder and video decoder on a site
Requires-Python: >=3.9
Description-Content-Type: text/markdown

"""


def _metadata():
    return (METADATA + (HERE / "README.md").read_text()).encode()


def _package():
    return {f"tessaro/{file.name}": file.read_bytes() for file in sorted((HERE / "tessaro").iterdir()) if file.is_file()}


def _wheel(folder, files):
    wheel = b"Wheel-Version: 1.0\nGenerator: tessaro\nRoot-Is-Purelib: true\nTag: py3-none-any\n"
    files = files | {f"{INFO}/METADATA": _metadata(), f"{INFO}/WHEEL": wheel}
    record = ""
    for name, data in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        record += f"{name},sha256={digest},{len(data)}\n"
    files[f"{INFO}/RECORD"] = f"{record}{INFO}/RECORD,,\n".encode()
    target = f"tessaro-{VERSION}-py3-none-any.whl"
    with zipfile.ZipFile(pathlib.Path(folder) / target, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files.items():
            archive.writestr(name, data)
    return target


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    return _wheel(wheel_directory, _package())


def build_editable(wheel_directory, config_settings=None, metadata_directory=None):
    return _wheel(wheel_directory, {"tessaro.pth": f"{HERE}\n".encode()})


def build_sdist(sdist_directory, config_settings=None):
    files = {name: (HERE / name).read_bytes() for name in ("README.md", "backend.py", "pyproject.toml")}
    target = f"tessaro-{VERSION}.tar.gz"
    with tarfile.open(pathlib.Path(sdist_directory) / target, "w:gz") as archive:
        for name, data in (files | _package() | {"PKG-INFO": _metadata()}).items():
            member = tarfile.TarInfo(f"tessaro-{VERSION}/{name}")
            member.size = len(data)
            archive.addfile(member, io.BytesIO(data))
    return target
