"""Images for the tests of codecs: every kind that a syntax may be asked to hold, with frames of extreme values."""

from collections import namedtuple

import numpy
from pydicom.dataset import FileDataset, FileMetaDataset
from pydicom.uid import ExplicitVRLittleEndian

# A class that all the programs take with any kind of pixels.
SOP_CLASS = "1.2.840.10008.5.1.4.1.1.4.1"

Kind = namedtuple("Kind", "name rows columns samples allocated stored signed planar")


def kind(name, rows, columns, samples=1, allocated=16, stored=None, signed=False, planar=0):
    return Kind(name, rows, columns, samples, allocated, stored or allocated, signed, planar)


KINDS = [
    kind("gray-8", 33, 47, allocated=8),
    kind("gray-8-signed", 16, 16, allocated=8, signed=True),
    kind("gray-7-of-8", 12, 20, allocated=8, stored=7),
    kind("gray-8-of-16", 24, 24, stored=8),
    kind("gray-10", 21, 34, stored=10),
    kind("gray-12", 64, 64, stored=12),
    kind("gray-12-signed", 31, 17, stored=12, signed=True),
    kind("gray-15-signed", 16, 24, stored=15, signed=True),
    kind("gray-16", 40, 56),
    kind("gray-16-signed", 40, 56, signed=True),
    kind("one-pixel-8", 1, 1, allocated=8),
    kind("one-pixel-16", 1, 1),
    kind("one-row", 1, 53),
    kind("one-column", 53, 1, stored=12),
    kind("rgb", 19, 27, 3, allocated=8),
    kind("rgb-by-plane", 18, 26, 3, allocated=8, planar=1),
    kind("rgb-one-pixel", 1, 1, 3, allocated=8),
    kind("rgb-16", 15, 22, 3),
]


def dtype_of(an_image_kind):
    return numpy.dtype(f"<{'i' if an_image_kind.signed else 'u'}{an_image_kind.allocated // 8}")


# With all kinds a thousand images for each syntax.
RANDOM_FRAMES = 49


def random_frames(what, least, count):
    """Noise of every strength, extremes beside one another, stretches of one value, and slopes."""
    shape = (what.rows, what.columns, what.samples)
    random = numpy.random.default_rng(what.rows * 1000 + what.columns)
    for number in range(RANDOM_FRAMES):
        spread = random.integers(1, count, endpoint=True)
        noise = random.integers(0, spread, size=shape)
        extremes = random.integers(0, 1, size=shape, endpoint=True) * (count - 1)
        held = numpy.repeat(noise.reshape(-1)[::5], 5)[: noise.size].reshape(shape)
        slope = numpy.arange(noise.size).reshape(shape) * random.integers(1, 9) + noise % 3
        yield least + (noise, extremes, held, slope)[number % 4] % count


def frames_of(what):
    """The samples as an array of frames, rows, columns and samples: zero, both extremes, noise, a gradient that wraps, steps, waves,
    and many at random."""
    count = 1 << what.stored
    least = -count // 2 if what.signed else 0
    most = least + count - 1
    y, x, sample = numpy.mgrid[0 : what.rows, 0 : what.columns, 0 : what.samples]
    noise = numpy.random.default_rng(7).integers(least, most, size=y.shape, endpoint=True)
    frames = [
        numpy.zeros_like(y),
        numpy.full_like(y, most),
        numpy.full_like(y, least),
        noise,
        least + (x * 3 + y * 5 + sample * 7) % count,
        numpy.where((x // 5 + y // 3 + sample) % 2 == 0, least, most),
        least + (count // 2 + 20 * numpy.sin(x / 7) + 15 * numpy.cos(y / 5)).astype(int) % count,
        *random_frames(what, least, count),
    ]
    return numpy.stack(frames).astype(dtype_of(what))


def write(path, what, frames, photometric=None):
    """Writes the frames natively."""
    meta = FileMetaDataset()
    meta.MediaStorageSOPClassUID = SOP_CLASS
    meta.MediaStorageSOPInstanceUID = "1.2.3.4.5"
    meta.TransferSyntaxUID = ExplicitVRLittleEndian
    image = FileDataset(str(path), {}, file_meta=meta, preamble=b"\0" * 128)
    image.is_little_endian, image.is_implicit_VR = True, False
    image.SOPClassUID, image.SOPInstanceUID = SOP_CLASS, "1.2.3.4.5"
    image.ImageType = ["ORIGINAL", "PRIMARY"]
    image.Modality = "MR"
    image.PatientName, image.PatientID = "Codec^Test", "1"
    image.StudyInstanceUID, image.SeriesInstanceUID = "1.2.3.4", "1.2.3.4.1"
    image.Rows, image.Columns, image.SamplesPerPixel = what.rows, what.columns, what.samples
    image.NumberOfFrames = len(frames)
    image.PhotometricInterpretation = photometric or ("MONOCHROME2" if what.samples == 1 else "RGB")
    if what.samples > 1:
        image.PlanarConfiguration = what.planar
    image.BitsAllocated, image.BitsStored, image.HighBit = what.allocated, what.stored, what.stored - 1
    image.PixelRepresentation = int(what.signed)
    stored = frames if not what.planar else frames.transpose(0, 3, 1, 2)
    data = stored.tobytes()
    image.PixelData = data + b"\0" * (len(data) % 2)
    image["PixelData"].VR = "OB" if what.allocated == 8 else "OW"
    image.save_as(path, write_like_original=False)


def read(image):
    """The samples of a native data set as write() takes them."""
    frames = int(image.get("NumberOfFrames", 1) or 1)
    samples = image.SamplesPerPixel
    kind_of = "i" if image.PixelRepresentation else "u"
    dtype = numpy.dtype(f"<{kind_of}{image.BitsAllocated // 8}")
    if not image.is_little_endian:
        dtype = dtype.newbyteorder(">")
    count = frames * image.Rows * image.Columns * samples
    values = numpy.frombuffer(image.PixelData, dtype, count)
    if samples > 1 and image.get("PlanarConfiguration", 0):
        values = values.reshape(frames, samples, image.Rows, image.Columns).transpose(0, 2, 3, 1)
    return values.reshape(frames, image.Rows, image.Columns, samples)
