"""What the tests of the Python package share: the package from the source tree, over a library of the build."""

import ctypes
import gc
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE_DIR = pathlib.Path(os.environ["TESSARET_SOURCE_DIR"])
BINARY_DIR = pathlib.Path(os.environ["TESSARET_BINARY_DIR"])
LIBRARY_FOLDER = pathlib.Path(os.environ["TESSARET_LIBRARY_FOLDER"])
PACKAGE_FOLDER = SOURCE_DIR / "bindings" / "python"
CORPUS = pathlib.Path(os.path.normpath(SOURCE_DIR / ".." / "shared" / "dicom"))

# Settings that tests change are nobody's.
if "TESSARET_TEST_SETTINGS" not in os.environ:
    _settings = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(_settings.cleanup)
    os.environ["TESSARET_TEST_SETTINGS"] = os.environ["XDG_CONFIG_HOME"] = _settings.name
sys.path.insert(0, str(PACKAGE_FOLDER))


def use_library(name):
    """To be called before the package is imported: "tessaret", or "tessaret_echo" with the object for tests."""
    os.environ["TESSARET_LIBRARY"] = str(LIBRARY_FOLDER / f"lib{name}.so")


def new_echo():
    """An object that gives back what it gets."""
    from tessaret import _library, _objects
    made = ctypes.c_void_p()
    status = _library.library.tessaret_test_create(ctypes.byref(made))
    assert status == 0, status
    return _objects.wrap(made.value)


def run_python(code, *arguments, **environment):
    """A process of its own with the same package, library and switches, at its end."""
    options = [f"-X{name}" if value is True else f"-X{name}={value}" for name, value in sys._xoptions.items()]
    return subprocess.run([sys.executable, "-B", *options, "-c", code, *map(str, arguments)], capture_output=True, text=True, check=False,
                          timeout=120, env={**os.environ, "PYTHONPATH": f"{PACKAGE_FOLDER}{os.pathsep}{pathlib.Path(__file__).parent}",
                                            **environment})


class PackageTest(unittest.TestCase):
    """A test that leaves no object behind."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.addCleanup(self.assert_nothing_lives)

    def assert_nothing_lives(self):
        import tessaret
        gc.collect()
        self.assertTrue(tessaret.can_unload(), "an object still lives")
