"""The package as pip installs it, and as editors see it."""

import ast
import inspect
import os
import pathlib
import stat
import subprocess
import sys
import tempfile
import unittest
import zipfile

import package

package.use_library("tessaret")

import tessaret
from tessaret import _library, _objects

ENVIRONMENT = {name: value for name, value in os.environ.items() if not name.startswith(("PYTHON", "PIP_"))}


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.python = cls.folder / "venv" / "bin" / "python"
        subprocess.run(["/usr/bin/python3", "-m", "venv", cls.folder / "venv"], check=True, env=ENVIRONMENT)

    @staticmethod
    def package_files():
        return sorted(path for path in package.PACKAGE_FOLDER.rglob("*") if "__pycache__" not in path.parts)

    def pip(self, *arguments):
        # No index: whatever would have to be fetched fails.
        result = subprocess.run([self.python, "-m", "pip", *arguments, "--no-index", "--disable-pip-version-check"],
                                env=ENVIRONMENT, capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    def installed_words(self):
        result = subprocess.run([self.python, "-c", """
import importlib.metadata, tessaret
with tessaret.create("Tessaret.DcmDictionary") as dictionary:
    print(importlib.metadata.version("tessaret"), dictionary.GetVRDescription(0x10, 0x10), tessaret.__file__)"""],
                                env={**ENVIRONMENT, "TESSARET_LIBRARY": os.environ["TESSARET_LIBRARY"]}, capture_output=True, text=True,
                                check=False, cwd=self.folder)
        self.assertEqual(result.stderr, "")
        return result.stdout

    def test_pip_installs_it_from_its_folder_a_wheel_and_a_source_archive(self):
        before = self.package_files()
        sys.path.insert(0, str(package.PACKAGE_FOLDER))
        import build_wheel
        sources = [package.PACKAGE_FOLDER, self.folder / build_wheel.build_wheel(self.folder), self.folder / build_wheel.build_sdist(self.folder)]
        for source in sources:
            with self.subTest(source.name):
                self.pip("install", "--force-reinstall", str(source))
                words = self.installed_words()
                self.assertTrue(words.startswith(f"{tessaret.__version__} (True, 'PN', \"Patient's Name\") {self.folder}"), words)
        self.assertEqual(self.package_files(), before)

    def test_a_wheel_has_all_modules_and_the_same_bytes_each_time(self):
        sys.path.insert(0, str(package.PACKAGE_FOLDER))
        import build_wheel
        places = [self.folder / name for name in ("one", "two")]
        wheels = []
        for place in places:
            place.mkdir()
            wheels.append((place / build_wheel.build_wheel(place)).read_bytes())
        self.assertEqual(*wheels)
        entries = zipfile.ZipFile(next(places[0].iterdir())).infolist()
        names = [entry.filename for entry in entries]
        wanted = {f"tessaret/{path.name}" for path in (package.PACKAGE_FOLDER / "tessaret").iterdir() if path.suffix in (".py", ".pyi", ".typed")}
        self.assertEqual({name for name in names if name.startswith("tessaret/")}, wanted)
        self.assertEqual({stat.filemode(entry.external_attr >> 16) for entry in entries}, {"-rw-r--r--"})


TYPED = """
from datetime import date

import tessaret


def use(path: str) -> bool:
    tessaret.start()
    with tessaret.create("Tessaret.DCMObject") as image, tessaret.create("Tessaret.DCMOptions") as options:
        image.VR[0x10, 0x30] = date(2001, 2, 3)
        image.VR.put(0x10, 0x10, newVal="Doe^Jane", TypeCode="PN")
        done: bool = image.Load(path, True)
        found, group, element = image.GetFirstVR()
        item = image.Sequence(8, 0x1140, 0)
        item.Save(path)
        with image.on("OnDrawOverlay", lambda *_: None) as connection:
            connection.disconnect()
        manager = image.query("IDcmObjectManager")
        owned: bool = manager.GetOwnership()
        image.query(path).AnyMember
        image.NoSuchMember  # wrong
        manager.NoSuchMember  # wrong
        image.Load(path, True, 5)  # wrong
        image.Load(5, True)  # wrong
        options.UseTotokuLUT = "yes"  # wrong
        return done and owned and found and tessaret.pump(0.5) + group == 0
"""


class Types(package.PackageTest):
    def check(self, *paths):
        return subprocess.run(["/usr/bin/python3", "-m", "mypy", "--strict", "--no-error-summary", "--cache-dir", self.folder / "cache", *paths],
                              cwd=self.folder, env={**ENVIRONMENT, "MYPYPATH": str(package.PACKAGE_FOLDER)}, capture_output=True, text=True,
                              check=False).stdout

    def test_a_type_checker_accepts_the_examples(self):
        self.assertEqual(self.check(*(package.SOURCE_DIR / "examples" / "python").glob("*.py")), "")

    def test_a_type_checker_finds_what_is_wrong_and_nothing_else(self):
        path = self.folder / "typed.py"
        path.write_text(TYPED)
        wrong = [number for number, line in enumerate(TYPED.splitlines(), 1) if line.endswith("# wrong")]
        told = self.check(path)
        self.assertEqual([int(line.split(":")[1]) for line in told.splitlines() if ": error: " in line], wrong, told)


class Stubs(package.PackageTest):
    """What editors are told is what is there."""

    @classmethod
    def setUpClass(cls):
        text = (package.PACKAGE_FOLDER / "tessaret" / "__init__.pyi").read_text()
        cls.classes = {node.name: node for node in ast.parse(text).body if isinstance(node, ast.ClassDef)}
        cls.names = {getattr(node, "name", None) for node in ast.parse(text).body}

    @staticmethod
    def parts_of(body):
        return {node.name: node for node in body.body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}

    def assert_same_function(self, function, stub):
        told = [(argument.arg, default is not None) for argument, default in
                zip(stub.args.args, [None] * (len(stub.args.args) - len(stub.args.defaults)) + stub.args.defaults)]
        there = inspect.signature(function)
        self.assertEqual(told, [(name, parameter.default is not inspect.Parameter.empty) for name, parameter in there.parameters.items()])
        answer = inspect.formatannotation(there.return_annotation).replace("typing.", "").replace("datetime.datetime", "datetime")
        self.assertEqual(ast.unparse(stub.returns), answer.replace("'", ""))

    def assert_same_class(self, kind):
        """Each member with the names of its arguments, which of them may be left away, and what it gives back."""
        told = self.parts_of(self.classes[kind.__name__])
        self.assertEqual({name for name in told if not name.startswith("_")}, set(kind._members))
        for name, members in kind._members.items():
            with self.subTest(f"{kind.__name__}.{name}"):
                there = inspect.getattr_static(kind, name)
                if not isinstance(there, property):
                    self.assert_same_function(there, told[name])
                elif f"_{name}" in told:
                    if any(member.kind == _library.GET for member in members):
                        self.assert_same_function(there.fget.args[0], self.parts_of(told[f"_{name}"])["__call__"])
                    self.assertEqual("__setitem__" in self.parts_of(told[f"_{name}"]),
                                     any(member.kind != _library.GET for member in members))
                elif there.fget:
                    getters = [node for node in self.classes[kind.__name__].body if getattr(node, "name", "") == name]
                    self.assert_same_function(there.fget, getters[0])
                    self.assertEqual(len(getters) == 2, there.fset is not None)

    def test_they_agree_with_the_library(self):
        for name in ("Tessaret.DCMObject", "Tessaret.DCMOptions", "Tessaret.DcmDictionary"):
            with tessaret.create(name) as made:
                self.assert_same_class(type(made))

    def test_they_agree_about_further_interfaces(self):
        with tessaret.create("Tessaret.DCMObject") as made:
            manager = made.query("IDcmObjectManager")
            for kind in (manager, manager.GetPtr(0), manager.GetVR(0x10, 0x10)):
                self.assert_same_class(type(kind))

    def test_they_tell_of_all_public_names(self):
        for name in tessaret.__all__:
            self.assertIn(name, self.names)
            if inspect.isclass(getattr(tessaret, name)) and issubclass(getattr(tessaret, name), tessaret.Error):
                self.assertEqual([ast.unparse(base) for base in self.classes[name].bases],
                                 [base.__name__ for base in getattr(tessaret, name).__bases__])

    def test_no_member_hides_a_name_of_the_package(self):
        for name in self.classes:
            members = set(self.parts_of(self.classes[name])) - {"__enter__", "__exit__"}
            if name.lstrip("_").startswith("I") and name not in tessaret.__all__:
                self.assertFalse(members & {"on", "query", "close"})

    def test_they_are_as_they_would_be_made(self):
        result = subprocess.run(["/usr/bin/python3", "-B", package.SOURCE_DIR / "scripts" / "make_python_stubs.py", "--check"],
                                capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
