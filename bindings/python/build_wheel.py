"""Makes the wheel and the source archive of the package for pip and other installers (PEP 517). The version is that of the header of the
library."""

import base64
import hashlib
import io
import pathlib
import re
import stat
import tarfile
import tomllib
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
HEADER = pathlib.Path("include", "tessaret", "version.h")
MODULES = ("*.py", "*.pyi", "py.typed")
# The same archive from the same files, whenever it is made.
EARLIEST = (1980, 1, 1, 0, 0, 0)


def project():
    return tomllib.loads((HERE / "pyproject.toml").read_text())["project"]


def header():
    """In the tree of the library, or beside this file in a source archive."""
    return next(path for path in (HERE.parents[1] / HEADER, HERE / HEADER) if path.is_file())


def version():
    numbers = (re.search(rf"^#define TESSARET_VERSION_{part} ([0-9]+)$", header().read_text(), re.M) for part in ("MAJOR", "MINOR", "PATCH"))
    return ".".join(found[1] for found in numbers)


def modules():
    return sorted(path for pattern in MODULES for path in (HERE / "tessaret").glob(pattern))


def metadata():
    about = project()
    return "\n".join(["Metadata-Version: 2.1", f"Name: {about['name']}", f"Version: {version()}", f"Summary: {about['description']}",
                      f"Requires-Python: {about['requires-python']}", "Description-Content-Type: text/markdown", "",
                      (HERE / about["readme"]).read_text()]).encode()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    name = f"tessaret-{version()}"
    contents = {f"tessaret/{path.name}": path.read_bytes() for path in modules()}
    contents[f"{name}.dist-info/METADATA"] = metadata()
    contents[f"{name}.dist-info/WHEEL"] = b"Wheel-Version: 1.0\nGenerator: tessaret\nRoot-Is-Purelib: true\nTag: py3-none-any\n"
    record = f"{name}.dist-info/RECORD"
    rows = [f"{path},sha256={base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b'=').decode()},{len(content)}"
            for path, content in contents.items()]
    contents[record] = "\n".join([*rows, f"{record},,", ""]).encode()
    wheel = f"{name}-py3-none-any.whl"
    with zipfile.ZipFile(pathlib.Path(wheel_directory, wheel), "w", zipfile.ZIP_DEFLATED) as archive:
        for path, content in contents.items():
            entry = zipfile.ZipInfo(path, EARLIEST)
            # For all to read, also where it is unpacked by something that is no installer.
            entry.external_attr = (stat.S_IFREG | 0o644) << 16
            archive.writestr(entry, content, zipfile.ZIP_DEFLATED)
    return wheel


def build_sdist(sdist_directory, config_settings=None):
    name = f"tessaret-{version()}"
    own = [HERE / file for file in ("pyproject.toml", "build_wheel.py", "README.md")]
    contents = {path.relative_to(HERE): path.read_bytes() for path in [*own, *modules()]}
    contents[HEADER] = header().read_bytes()
    contents["PKG-INFO"] = metadata()
    with tarfile.open(pathlib.Path(sdist_directory, f"{name}.tar.gz"), "w:gz") as archive:
        for path, content in contents.items():
            info = tarfile.TarInfo(f"{name}/{path}")
            info.size = len(content)
            archive.addfile(info, io.BytesIO(content))
    return f"{name}.tar.gz"
