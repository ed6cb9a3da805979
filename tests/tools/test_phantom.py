"""tessaret phantom: series that validators accept, with a geometry that holds, the same on every run."""

import json
import subprocess
import unittest

import pydicom

import tool
from tool import DONE, OUTPUT_FAILED, run

KINDS = ("ct", "mr", "multiframe", "rgb", "palette", "mono1")
SHAPES = (["--size", 16, "--slices", 3], ["--size", 16, "--slices", 3, "--uneven"], ["--size", 16, "--slices", 3, "--oblique"],
          ["--size", 16, "--slices", 3, "--uneven", "--oblique", "--spacing", "0.4,0.75,2.5"],
          ["--size", 9, "--slices", 1], ["--size", 9, "--slices", 1, "--oblique", "--uneven"],  # 81 bytes need another one
          ["--size", 33, "--slices", 2, "--spacing", "0.000002,999.9,0.333333333333"],
          ["--size", 17, "--slices", 7, "--spacing", "999.999,0.123456789012,1e-5", "--oblique", "--uneven"])


class PhantomTest(tool.ToolTest):

    def make(self, *options, size=32, slices=4, name="series"):
        """The files of a new series, read by pydicom, in the order of their names."""
        place = self.path(name)
        self.assert_ends(run("phantom", "--size", size, "--slices", slices, *options, place), DONE, "")
        return [pydicom.dcmread(path) for path in sorted(place.iterdir())]


class Standard(PhantomTest):

    def test_the_validator_finds_no_errors(self):
        for turn, kind in enumerate(KINDS):
            for number, shape in enumerate(SHAPES):
                # Under a sanitizer a third: each kind and each shape, but not all kinds in all shapes.
                if tool.INSTRUMENTED and (turn + number) % 3:
                    continue
                place = self.path(f"{kind}{number}")
                self.assert_ends(run("phantom", "--kind", kind, *shape, place), DONE, "")
                for file in place.iterdir():
                    found = subprocess.run(["dciodvfy", file], check=False, capture_output=True, text=True)
                    lines = (found.stdout + found.stderr).splitlines()
                    with self.subTest(kind=kind, shape=shape):
                        self.assertEqual([line for line in lines if not line.startswith("Warning")][1:], [], lines)
                        # The first line names the kind of object that was recognised.
                        self.assertRegex(lines[0], r"^(CT|MR|SC|CR|LegacyConvertedEnhancedMR)Image$")

    def test_every_kind_is_what_it_says(self):
        expected = {"ct": ("1.2.840.10008.5.1.4.1.1.2", "MONOCHROME2", 1, 16, 12),
                    "mr": ("1.2.840.10008.5.1.4.1.1.4", "MONOCHROME2", 1, 16, 12),
                    "multiframe": ("1.2.840.10008.5.1.4.1.1.4.4", "MONOCHROME2", 1, 16, 12),
                    "rgb": ("1.2.840.10008.5.1.4.1.1.7", "RGB", 3, 8, 8),
                    "palette": ("1.2.840.10008.5.1.4.1.1.7", "PALETTE COLOR", 1, 8, 8),
                    "mono1": ("1.2.840.10008.5.1.4.1.1.1", "MONOCHROME1", 1, 16, 12)}
        for kind, facts in expected.items():
            files = self.make("--kind", kind, name=kind)
            self.assertEqual(len(files), 1 if kind == "multiframe" else 4)
            for dataset in files:
                self.assertEqual((dataset.SOPClassUID, dataset.PhotometricInterpretation, dataset.SamplesPerPixel,
                                  dataset.BitsAllocated, dataset.BitsStored), facts)
                self.assertEqual(dataset.file_meta.MediaStorageSOPClassUID, dataset.SOPClassUID)
                self.assertEqual(dataset.file_meta.MediaStorageSOPInstanceUID, dataset.SOPInstanceUID)
                frames = dataset.get("NumberOfFrames", 1)
                self.assertEqual(len(dataset.PixelData), 32 * 32 * frames * facts[2] * facts[3] // 8)

    def test_patient_study_and_series_are_complete_and_shared(self):
        files = self.make()
        for keyword in ("PatientName", "PatientID", "PatientBirthDate", "PatientSex", "StudyInstanceUID", "StudyDate", "StudyTime",
                        "StudyID", "AccessionNumber", "SeriesInstanceUID", "SeriesNumber", "Modality", "FrameOfReferenceUID",
                        "Manufacturer"):
            self.assertEqual(len({str(dataset[keyword].value) for dataset in files}), 1, keyword)
            self.assertNotEqual(str(files[0][keyword].value), "", keyword)
        self.assertEqual([dataset.InstanceNumber for dataset in files], [1, 2, 3, 4])
        self.assertEqual(len({dataset.SOPInstanceUID for dataset in files}), 4)

    def test_check_finds_nothing_to_say(self):
        for kind in KINDS:
            self.make("--kind", kind, name=f"all/{kind}")
        self.assert_ends(run("check", self.path("all")), DONE, "")


class Geometry(PhantomTest):

    def positions(self, files):
        return [[float(number) for number in dataset.ImagePositionPatient] for dataset in files]

    def test_an_upright_series_is_axial_and_centred(self):
        files = self.make("--spacing", "0.5,2,3", size=32, slices=3)
        # 15.5 steps of 0.5 and 2 to the first pixel, one step of 3 to the first slice.
        self.assertEqual(self.positions(files), [[-7.75, -31, -3], [-7.75, -31, 0], [-7.75, -31, 3]])
        for dataset in files:
            self.assertEqual(list(dataset.ImageOrientationPatient), [1, 0, 0, 0, 1, 0])
            self.assertEqual(list(dataset.PixelSpacing), [2, 0.5])  # from row to row, then from column to column
            self.assertEqual(dataset.SliceThickness, 3)

    def test_an_oblique_series_has_unit_vectors_at_right_angles_and_slices_along_their_normal(self):
        files = self.make("--oblique", "--spacing", "1,1,2.5", slices=5)
        orientation = [float(number) for number in files[0].ImageOrientationPatient]
        row, column = orientation[:3], orientation[3:]
        dot = lambda a, b: sum(x * y for x, y in zip(a, b))
        # DS has 16 characters, which leave 13 digits behind the point here.
        self.assertAlmostEqual(dot(row, row), 1, 12)
        self.assertAlmostEqual(dot(column, column), 1, 12)
        self.assertAlmostEqual(dot(row, column), 0, 12)
        self.assertTrue(all(abs(number) > 0.1 for number in row + column))
        normal = [row[1] * column[2] - row[2] * column[1], row[2] * column[0] - row[0] * column[2],
                  row[0] * column[1] - row[1] * column[0]]
        positions = self.positions(files)
        for before, after in zip(positions, positions[1:]):
            step = [b - a for a, b in zip(before, after)]
            for found, expected in zip(step, normal):
                self.assertAlmostEqual(found, 2.5 * expected, 9)

    def test_uneven_gaps_differ_and_slice_locations_follow(self):
        files = self.make("--uneven", "--spacing", "1,1,2", slices=7)
        heights = [position[2] for position in self.positions(files)]
        gaps = [after - before for before, after in zip(heights, heights[1:])]
        self.assertGreater(len(set(gaps)), 3)
        self.assertTrue(all(gap > 0 for gap in gaps))
        self.assertEqual([float(dataset.SliceLocation) for dataset in files], heights)

    def test_the_frames_of_a_multiframe_image_have_their_places(self):
        image, = self.make("--kind", "multiframe", "--spacing", "0.5,0.5,3", slices=3)
        self.assertEqual(image.NumberOfFrames, 3)
        frames = image.PerFrameFunctionalGroupsSequence
        self.assertEqual([[float(number) for number in frame.PlanePositionSequence[0].ImagePositionPatient] for frame in frames],
                         [[-7.75, -7.75, -3], [-7.75, -7.75, 0], [-7.75, -7.75, 3]])
        shared = image.SharedFunctionalGroupsSequence[0]
        self.assertEqual(list(shared.PixelMeasuresSequence[0].PixelSpacing), [0.5, 0.5])

    def test_frames_hold_the_slices_of_the_series(self):
        image, = self.make("--kind", "multiframe", slices=3, name="frames")
        slices = self.make("--kind", "mr", slices=3, name="slices")
        self.assertEqual(image.PixelData, b"".join(dataset.PixelData for dataset in slices))


class Pictures(PhantomTest):

    def test_hounsfield_units_are_those_of_air_bone_and_tissue(self):
        dataset, = self.make(size=64, slices=1)
        pixels = [low + 256 * high for low, high in zip(dataset.PixelData[::2], dataset.PixelData[1::2])]
        units = [int(dataset.RescaleSlope) * pixel + int(dataset.RescaleIntercept) for pixel in pixels]
        self.assertEqual(units[0], -1000)        # a corner
        self.assertEqual(max(units), 1200)       # the rod
        self.assertIn(700, units)                # bone
        brain = [unit for unit in units if 30 <= unit <= 70]
        self.assertGreater(len(set(brain)), 10)  # the ramp
        self.assertLess(max(pixels), 4096)

    def test_monochrome1_is_bright_where_values_are_low(self):
        dataset, = self.make("--kind", "mono1", size=64, slices=1)
        pixels = [low + 256 * high for low, high in zip(dataset.PixelData[::2], dataset.PixelData[1::2])]
        self.assertEqual((pixels[0], max(pixels), min(pixels)), (4000, 4000, 200))

    def test_a_palette_has_an_entry_for_every_index(self):
        dataset, = self.make("--kind", "palette", size=64, slices=1)
        for colour in ("Red", "Green", "Blue"):
            self.assertEqual(list(dataset[f"{colour}PaletteColorLookupTableDescriptor"].value), [256, 0, 16])
            self.assertEqual(len(dataset[f"{colour}PaletteColorLookupTableData"].value), 512)
        self.assertEqual(max(dataset.PixelData), 255)

    def test_colours_lie_pixel_by_pixel(self):
        dataset, = self.make("--kind", "rgb", size=64, slices=1)
        self.assertEqual(dataset.PlanarConfiguration, 0)
        triples = {tuple(dataset.PixelData[at:at + 3]) for at in range(0, len(dataset.PixelData), 3)}
        self.assertLessEqual({(0, 0, 0), (224, 172, 140), (245, 240, 220), (30, 200, 60)}, triples)


class Files(PhantomTest):

    def content(self, place):
        return {path.name: path.read_bytes() for path in place.iterdir()}

    def test_the_same_choices_give_the_same_bytes(self):
        for kind in KINDS:
            self.make("--kind", kind, "--uneven", "--oblique", name=f"{kind}/1")
            self.make("--kind", kind, "--uneven", "--oblique", name=f"{kind}/2")
            self.assertEqual(self.content(self.path(f"{kind}/1")), self.content(self.path(f"{kind}/2")))

    def test_other_choices_give_other_uids(self):
        choices = ([], ["--kind", "mr"], ["--spacing", "1,1,2"], ["--uneven"], ["--oblique"])
        made = [self.make(*options, name=f"choice{number}")[0] for number, options in enumerate(choices)]
        made += [self.make(size=33, name="size")[0], self.make(slices=5, name="slices")[0]]
        uids = []
        for dataset in made:
            uids += [dataset.StudyInstanceUID, dataset.SeriesInstanceUID, dataset.SOPInstanceUID, dataset.FrameOfReferenceUID]
        self.assertEqual(len(set(uids)), 4 * len(made))
        self.assertTrue(all(uid.startswith("2.25.") for uid in uids))

    def test_names_count_from_one_with_six_digits(self):
        self.make(slices=11)
        self.assertEqual(sorted(path.name for path in self.path("series").iterdir()),
                         [f"IM{number:06d}.dcm" for number in range(1, 12)])

    def test_the_defaults_are_twenty_slices_of_256(self):
        self.assert_ends(run("phantom", self.path("plain")), DONE, "")
        files = list(self.path("plain").iterdir())
        self.assertEqual(len(files), 20)
        dataset = pydicom.dcmread(files[0])
        self.assertEqual((dataset.Modality, dataset.Rows, dataset.Columns), ("CT", 256, 256))

    def test_directories_are_made(self):
        self.assert_ends(run("phantom", "--size", 8, "--slices", 1, self.path("a/b/c/")), DONE, "")
        self.assertTrue(self.path("a/b/c/IM000001.dcm").exists())

    def test_nothing_is_replaced_without_force_and_nothing_is_mixed(self):
        place = self.path("series")
        existing = self.write("series/IM000003.dcm", b"precious")
        self.assert_ends(run("phantom", "--size", 8, "--slices", 4, place), OUTPUT_FAILED,
                         f"tessaret: {existing}: is there already; --force replaces it\n")
        self.assertEqual(self.content(place), {"IM000003.dcm": b"precious"})
        self.assert_ends(run("phantom", "--force", "--size", 8, "--slices", 4, place), DONE, "")
        self.assertEqual(len(self.content(place)), 4)
        self.assertEqual(pydicom.dcmread(existing).InstanceNumber, 3)

    def test_a_place_that_is_no_directory_is_told(self):
        file = self.write("file", b"")
        self.assert_ends(run("phantom", file), OUTPUT_FAILED, f"tessaret: {file}: Not a directory\n")
        self.assert_ends(run("phantom", file / "below"), OUTPUT_FAILED, f"tessaret: {file}/below: Not a directory\n")

    def test_a_limit_on_file_size_leaves_nothing_half_written(self):
        script = 'ulimit -f 100; exec "$0" "$@"'
        place = self.path("series")
        result = subprocess.run(["sh", "-c", script, tool.TOOL, "phantom", "--size", "512", "--slices", "2", place], check=False,
                                capture_output=True)
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (OUTPUT_FAILED, f"tessaret: {place}/IM000001.dcm: File too large\n"))
        self.assertEqual(self.content(place), {})

    def test_json_has_an_object_for_each_file(self):
        result = run("phantom", "--json", "--size", 8, "--slices", 2, self.path("s"))
        reports = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([report["file"] for report in reports], [f"{self.path('s')}/IM00000{number}.dcm" for number in (1, 2)])
        for report in reports:
            self.assertEqual(report["sopInstance"], pydicom.dcmread(report["file"]).SOPInstanceUID)
            self.assertEqual(report["kind"], "ct")


if __name__ == "__main__":
    unittest.main()
