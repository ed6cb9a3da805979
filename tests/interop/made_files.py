"""Small images that nobody else has, and what has arrived of them."""

import subprocess

import pydicom
import tool_runs

# Name, date, and an end for their identifiers, which are the same in every phantom, by the patient's identifier.
PATIENTS = {"A": ("Müller^Zoë", "19991231", ".1"), "B": ("Doe^John", "20240229", ".2")}


def phantoms(folder, kind="ct", slices=3, size=32):
    """The paths, in the order of the slices."""
    subprocess.run([tool_runs.TOOL, "-q", "phantom", "--kind", kind, "--size", str(size), "--slices", str(slices), folder], check=True)
    return sorted(folder.iterdir())


def two_studies(folder):
    """Images of two patients, three of each in two series."""
    paths = []
    for patient, (name, date, end) in PATIENTS.items():
        for number, path in enumerate(phantoms(folder / patient, size=16)):
            image = pydicom.dcmread(path)
            image.SpecificCharacterSet = "ISO_IR 100"
            image.PatientName, image.PatientID, image.StudyDate = name, patient, date
            image.StudyInstanceUID += end
            image.SeriesInstanceUID += end + (".3" if number == 2 else "")
            image.SOPInstanceUID += end
            image.file_meta.MediaStorageSOPInstanceUID = image.SOPInstanceUID
            image.save_as(path)
            paths.append(path)
    return paths


def values(path):
    """Every element behind the meta header, with type and value as a reader takes them; of pixels their bytes. Group lengths say how
    something was encoded."""
    image = pydicom.dcmread(path)
    pixels = image.pop("PixelData").value
    for element in [element.tag for element in image if element.tag.element == 0]:
        del image[element]
    return image.to_json_dict(), pixels


def by_instance(paths):
    """{instance: path}"""
    return {str(pydicom.dcmread(path, stop_before_pixels=True).SOPInstanceUID): path for path in paths}


class ArrivedFiles:
    """To be mixed into a TestCase."""

    def assert_arrived(self, sources, received):
        """Each of the one is one of the other, value by value."""
        received = by_instance(received)
        sources = by_instance(sources)
        self.assertEqual(set(received), set(sources))
        for instance, path in sources.items():
            self.assertEqual(values(received[instance]), values(path))
