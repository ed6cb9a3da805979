"""What has to hold for any set of files: as the library and other programs read them, and what each makes of them."""

import tempfile
from pathlib import Path

import comparison
import peers
import variants


def syntax_of(view):
    """The transfer syntax that a view by pydicom names; empty when it names none."""
    value = next((element.value for element in view if element.path == "(0002,0010)"), b"")
    return value.decode("latin-1").strip("\0 ")


class FileTests:
    """To be mixed into a TestCase, which says what the files are."""

    known = {}  # what is known to be different: by the name of a test, {name of a file: cause}

    @classmethod
    def make_files(cls, folder):
        """{name: path} of the files to be tested; those that have to be made first are made in `folder`."""
        raise NotImplementedError

    @classmethod
    def files_to_vary(cls):
        """The names of those of which variants are made."""
        return list(cls.files)

    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory(prefix="tessaret-test-")
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = Path(temporary.name)
        cls.files = cls.make_files(cls.folder)
        cls.seen = {name: peers.pydicom_view(path) for name, path in cls.files.items()}
        cls.saved = {name: cls.folder / f"saved-{number}.dcm" for number, name in enumerate(cls.files)}
        peers.resave([(path, cls.saved[name]) for name, path in cls.files.items()])

    def check(self, differences):
        """`differences` are words by the name of a file, empty where there is none."""
        known = self.known.get(self._testMethodName, {})
        found = {name: words for name, words in differences.items() if words}
        self.assertGreater(len(differences), len(found))
        for name in sorted(found.keys() - known.keys()):
            with self.subTest(name):
                self.fail(found[name])
        for name in sorted(known.keys() - found.keys()):
            with self.subTest(name):
                self.fail("is listed as different, but is not: " + known[name])

    def test_the_library_reads_what_pydicom_reads(self):
        ours = peers.our_views(self.files.values())
        self.check(
            {
                name: comparison.first_difference(peers.with_digests(view), ours[self.files[name]])
                for name, view in self.seen.items()
                if view is not None
            }
        )

    def test_pydicom_reads_the_same_from_the_saved_file(self):
        differences = {}
        for name, before in self.seen.items():
            if before is not None:
                after = peers.pydicom_view(self.saved[name]) or []
                expected = comparison.saved_form(before, syntax_of(after) == peers.IMPLICIT_LITTLE)
                differences[name] = comparison.first_difference(expected, comparison.data_set(after))
        self.check(differences)

    def test_dcmdump_reads_the_same_from_the_saved_file(self):
        before = peers.dcmdump_views(self.files.values())
        after = peers.dcmdump_views(self.saved.values())
        differences = {}
        for name, path in self.files.items():
            if before[path]:
                # Which group lengths stay is a matter of the comparison with pydicom.
                one, other = self.comparable(before[path]), self.comparable(after[self.saved[name]])
                differences[name] = comparison.first_difference(one, other, comparison.texts_agree)
        self.check(differences)

    def test_pydicom_and_dcmdump_read_the_same_from_the_other_little_endian_form(self):
        other_form = {peers.IMPLICIT_LITTLE: peers.EXPLICIT_LITTLE, peers.EXPLICIT_LITTLE: peers.IMPLICIT_LITTLE}
        names = [name for name, view in self.seen.items() if view is not None and syntax_of(view) in other_form]
        turned = {name: self.folder / f"turned-{number}.dcm" for number, name in enumerate(names)}
        for syntax, other in other_form.items():
            peers.resave(
                [(self.files[name], turned[name]) for name in names if syntax_of(self.seen[name]) == syntax], other
            )
        dumped = peers.dcmdump_views(turned.values())
        differences = {}
        for name in names:
            after = peers.pydicom_view(turned[name]) or []
            syntax = other_form[syntax_of(self.seen[name])]
            expected = comparison.saved_form(self.seen[name], syntax == peers.IMPLICIT_LITTLE)
            differences[name] = (
                comparison.first_difference(expected, comparison.data_set(after))
                or comparison.first_type_that_is_not_standard(after)
                or ("" if [e.path for e in dumped[turned[name]]] == [e.path for e in after] else "dcmdump reads others")
            )
        self.check(differences)

    def test_the_library_reads_what_pydicom_reads_from_what_dcmconv_wrote(self):
        made = self.variants()
        ours = peers.our_views([path for paths in made.values() for _, path in paths])
        differences = {}
        for name, paths in made.items():
            words = []
            for variant, path in paths:
                view = peers.pydicom_view(path)
                if view is not None:
                    difference = comparison.first_difference(peers.with_digests(view), ours[path])
                    words += [f"{variant}: {difference}"] if difference else []
            differences[name] = "; ".join(words)
        self.check(differences)

    def test_the_library_reads_the_same_from_all_encodings_that_dcmconv_wrote(self):
        made = self.variants()
        ours = peers.our_views([path for paths in made.values() for _, path in paths], "list-little")
        differences = {}
        for name, paths in made.items():
            views = {variant: self.comparable(ours[path]) for variant, path in paths}
            expected = views["little-undefined"]
            private = comparison.private_sequences(expected)
            words = []
            for variant, view in views.items():
                hidden = private if variant == "implicit-defined" else set()
                # The implicit form does not hold the types.
                typed = view if "implicit" not in variant else [element._replace(vr=None) for element in view]
                difference = comparison.first_difference(
                    comparison.without(expected, hidden), comparison.without(typed, hidden)
                )
                words += [f"{variant}: {difference}"] if difference else []
            differences[name] = "; ".join(words)
        self.check(differences)

    @staticmethod
    def comparable(view):
        return comparison.without_group_lengths(comparison.data_set(view))

    @classmethod
    def variants(cls):
        """{name: [(variant, path)]}, made once."""
        if not hasattr(cls, "made"):
            names = {cls.files[name]: name for name in cls.files_to_vary()}
            made = variants.make(list(names), cls.folder)
            cls.made = {names[file]: paths for file, paths in made.items()}
        return cls.made
