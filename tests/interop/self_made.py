"""Files made here with pydicom, for where the real ones are absent: elements of every kind in all native encodings,
with both kinds of length, and encapsulated pixel data."""

import random

import pydicom
from pydicom.dataset import Dataset, FileDataset, FileMetaDataset
from pydicom.encaps import encapsulate
from pydicom.sequence import Sequence
from pydicom.uid import UID

import peers

SECONDARY_CAPTURE = UID("1.2.840.10008.5.1.4.1.1.7")
JPEG_BASELINE = UID("1.2.840.10008.1.2.4.50")
INSTANCE = UID("1.2.826.0.1.3680043.2.1143.7.7")


def noise(count):
    return random.Random(count).randbytes(count)


def add_elements_of_every_type(dataset):
    dataset.add_new(0x00080005, "CS", "ISO_IR 192")
    dataset.add_new(0x00080008, "CS", ["DERIVED", "PRIMARY", "", "X"])
    dataset.add_new(0x00080016, "UI", SECONDARY_CAPTURE)
    dataset.add_new(0x00080018, "UI", INSTANCE)
    dataset.add_new(0x00080020, "DA", "20240229")
    dataset.add_new(0x0008002A, "DT", "20240229235959.999999+0100")
    dataset.add_new(0x00080030, "TM", "235959.5")
    dataset.add_new(0x00080054, "AE", ["ONE", "TWO"])
    dataset.add_new(0x00080070, "LO", "odd")
    dataset.add_new(0x00080090, "PN", "")
    dataset.add_new(0x00081080, "LO", ["first", "", "third"])
    dataset.add_new(0x00100010, "PN", "M\u00fcller^J\u00f6rg=\u5c71\u7530^\u592a\u90ce")
    dataset.add_new(0x00100030, "DA", "")
    dataset.add_new(0x00101010, "AS", "042Y")
    dataset.add_new(0x00101030, "DS", ["72.5", "-1.25e-3"])
    dataset.add_new(0x001021B0, "LT", "two\r\nlines")
    dataset.add_new(0x00186020, "SL", [-2147483648, 7])
    dataset.add_new(0x00186028, "FD", [0.1, -1e300])
    dataset.add_new(0x00189219, "SS", -3)
    dataset.add_new(0x00189302, "FL", 0.5)
    dataset.add_new(0x00200013, "IS", "-12")
    dataset.add_new(0x00204000, "LT", "")
    dataset.add_new(0x00280009, "AT", [0x00181063, 0x00181065])
    dataset.add_new(0x00189322, "DS", "0.5")
    dataset.add_new(0x00400280, "ST", "short text")
    dataset.add_new(0x0040A160, "UT", "long text " * 7000)
    dataset.add_new(0x00480006, "US", 65535)
    dataset.add_new(0x00480007, "UL", 4294967295)
    dataset.add_new(0x54001010, "OW", noise(64))
    dataset.add_new(0xFFFCFFFC, "OB", bytes(66))


def add_private_elements(dataset):
    block = dataset.private_block(0x0029, "TESSARET TEST", create=True)
    block.add_new(0x01, "OB", noise(70000))
    block.add_new(0x02, "UN", noise(30))
    block.add_new(0x03, "LO", "private text")
    block.add_new(0x04, "SQ", Sequence([code("private")]))
    block.add_new(0x05, "UN", noise(7))


def code(meaning):
    item = Dataset()
    item.add_new(0x00080100, "SH", "C-1")
    item.add_new(0x00080102, "SH", "99TEST")
    item.add_new(0x00080104, "LO", meaning)
    item.add_new(0x00081155, "UI", "1.2.3 ")  # a blank where a NUL belongs
    return item


def add_sequences(dataset):
    deep = code("the deepest")
    for level in range(12):
        item = Dataset()
        item.add_new(0x0040A040, "CS", f"LEVEL {level}")
        item.add_new(0x0040A730, "SQ", Sequence([deep, code(f"beside level {level}")]))
        deep = item
    dataset.add_new(0x0040A730, "SQ", Sequence([deep]))
    dataset.add_new(0x00081140, "SQ", Sequence([]))
    dataset.add_new(0x00082112, "SQ", Sequence([Dataset(), code("after an empty item"), Dataset()]))
    dataset.add_new(0x52009230, "SQ", Sequence([code(f"frame {number}") for number in range(300)]))


def add_pixels(dataset, bits, rows, columns):
    dataset.add_new(0x00280002, "US", 1)
    dataset.add_new(0x00280004, "CS", "MONOCHROME2")
    dataset.add_new(0x00280010, "US", rows)
    dataset.add_new(0x00280011, "US", columns)
    dataset.add_new(0x00280100, "US", bits)
    dataset.add_new(0x00280101, "US", bits)
    dataset.add_new(0x00280102, "US", bits - 1)
    dataset.add_new(0x00280103, "US", 0)
    size = rows * columns * bits // 8
    dataset.add_new(0x7FE00010, "OW" if bits > 8 else "OB", noise(size) + bytes(size % 2))


def set_lengths(dataset, undefined):
    for element in dataset:
        if element.VR == "SQ":
            element.is_undefined_length = undefined
            for item in element.value:
                item.is_undefined_length_sequence_item = undefined
                set_lengths(item, undefined)


def write(path, dataset, syntax):
    meta = FileMetaDataset()
    meta.MediaStorageSOPClassUID = SECONDARY_CAPTURE
    meta.MediaStorageSOPInstanceUID = INSTANCE
    meta.TransferSyntaxUID = UID(syntax)
    file = FileDataset(str(path), dataset, file_meta=meta, preamble=bytes(128))
    file.is_implicit_VR = syntax == peers.IMPLICIT_LITTLE
    file.is_little_endian = syntax != peers.EXPLICIT_BIG
    file.save_as(path, write_like_original=False)


def with_pixels(bits, rows, columns):
    dataset = Dataset()
    add_elements_of_every_type(dataset)
    add_private_elements(dataset)
    add_sequences(dataset)
    add_pixels(dataset, bits, rows, columns)
    return dataset


def make_native(folder):
    """Paths of files in all native encodings."""
    paths = []
    for syntax in (peers.IMPLICIT_LITTLE, peers.EXPLICIT_LITTLE, peers.EXPLICIT_BIG):
        for undefined in (False, True):
            for bits, rows, columns in ((16, 5, 7), (8, 3, 5)):
                dataset = with_pixels(bits, rows, columns)
                set_lengths(dataset, undefined)
                lengths = "undefined" if undefined else "defined"
                paths.append(folder / f"{syntax}-{lengths}-{bits}.dcm")
                write(paths[-1], dataset, syntax)
    return paths


def make_encapsulated(folder):
    """Paths of files with fragments: whole and split frames, with and without offset table."""
    paths = []
    frames = [noise(1000), noise(7), noise(70000)]
    for split in (1, 3):
        for table in (False, True):
            dataset = with_pixels(8, 4, 4)
            dataset.add_new(0x00280008, "IS", len(frames))
            dataset.add_new(0x7FE00010, "OB", encapsulate(frames, fragments_per_frame=split, has_bot=table))
            dataset["PixelData"].is_undefined_length = True
            paths.append(folder / f"fragments-{split}-{'table' if table else 'none'}.dcm")
            write(paths[-1], dataset, JPEG_BASELINE)
    return paths
