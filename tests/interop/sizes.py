"""Objects of given lengths, and how long what arrived is."""

import copy
import hashlib
import io
import os
import shutil
import struct
from pathlib import Path

import network_peers
import pydicom
from peers import EXPLICIT_LITTLE
from pydicom.filebase import DicomBytesIO
from pydicom.filewriter import write_dataset

FRAME = 1 << 20
# More than 10^9 bytes, and with all before them fewer than the 2^30 that dcmqrscp keeps of a study at most; or, on a small machine, what
# is many times as long as all that is ever held of a message at once.
FRAMES = 1023, 63


def frames_and_room():
    """How many frames there is room for, and a folder with that, in memory if it can be."""
    for frames in FRAMES:
        # The file, the object at both sides, one of which may have it twice, and what arrives.
        size = 5 * frames * FRAME
        for folder in (network_peers.MEMORY, Path(os.environ["TESSARET_BINARY_DIR"])):
            if folder.is_dir() and shutil.disk_usage(folder).free > size and free_memory() > size:
                return frames, folder
    raise AssertionError(f"there is no room for {FRAMES[-1]} frames")


def free_memory():
    with open("/proc/meminfo", encoding="ascii") as lines:
        return next(int(line.split()[1]) * 1024 for line in lines if line.startswith("MemAvailable"))


def write_frames(path, frames):
    """An image of so many frames of 1024 x 1024 bytes, most of them a hole; the digest of its pixels."""
    data = pydicom.Dataset()
    data.SOPClassUID, data.SOPInstanceUID = "1.2.840.10008.5.1.4.1.1.7.2", "1.2.3.4"
    data.PatientName, data.PatientID, data.StudyInstanceUID, data.SeriesInstanceUID = "Large", "G", "1.2.3.1", "1.2.3.2"
    data.SamplesPerPixel, data.PhotometricInterpretation, data.NumberOfFrames = 1, "MONOCHROME2", frames
    data.Rows = data.Columns = 1024
    data.BitsAllocated = data.BitsStored = 8
    data.HighBit, data.PixelRepresentation = 7, 0
    data.file_meta = pydicom.dataset.FileMetaDataset()
    data.file_meta.TransferSyntaxUID = EXPLICIT_LITTLE
    data.file_meta.MediaStorageSOPClassUID, data.file_meta.MediaStorageSOPInstanceUID = data.SOPClassUID, data.SOPInstanceUID
    data.is_little_endian, data.is_implicit_VR = True, False
    pydicom.dcmwrite(path, data, write_like_original=False)
    with open(path, "r+b") as file:
        file.seek(0, io.SEEK_END)
        start = file.write(struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, frames * FRAME)) + file.tell() - 12
        file.truncate(start + frames * FRAME)
        for frame in range(0, frames, 7):
            file.seek(start + frame * FRAME + 1000 * frame)
            file.write(f"frame {frame}".encode())
        file.seek(-4, io.SEEK_END)
        file.write(b"last")
    return digest_of_pixels(path, frames)


def digest_of_pixels(path, frames):
    """Of the last bytes of the file."""
    with open(path, "rb") as file:
        file.seek(-frames * FRAME, io.SEEK_END)
        return hashlib.file_digest(file, "sha256").digest()


def encoded_length(data, implicit):
    stream = DicomBytesIO()
    stream.is_little_endian, stream.is_implicit_VR = True, implicit
    write_dataset(stream, data)
    return len(stream.getvalue())


def data_set(path):
    """The bytes behind preamble, mark and meta header, whose length its first element says."""
    file = path.read_bytes()
    return file[144 + int.from_bytes(file[140:144], "little") :]


def files_of_lengths(folder, original, lengths, implicit):
    """{length: path} of files like `original` whose data sets, in either form of little endian, are so long."""
    folder.mkdir()
    source = copy.deepcopy(original)
    source.ImageComments = ""
    # The identifiers below are as long as this one.
    source.SOPInstanceUID = "1.2.3.1000"
    bare = encoded_length(copy.deepcopy(source), implicit)
    paths = {}
    for number, length in enumerate(lengths):
        source.SOPInstanceUID = f"1.2.3.{1000 + number}"
        source.file_meta.MediaStorageSOPInstanceUID = source.SOPInstanceUID
        source.ImageComments = "x" * (length - bare)
        paths[length] = folder / f"{length}.dcm"
        source.save_as(paths[length])
    return paths
