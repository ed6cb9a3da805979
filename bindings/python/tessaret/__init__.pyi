# Made by scripts/make_python_stubs.py from include/tessaret and _general.pyi.in; not to be edited.
from collections.abc import Callable
from datetime import date, datetime
from enum import IntEnum
from os import PathLike
from typing import Any, Final, Literal, Never, Self, overload, type_check_only

__version__: str

class Error(Exception):
    status: int
    source: str
    words: str
    def __init__(self, status: int, source: str, words: str) -> None: ...

class NotAvailable(Error, NotImplementedError): ...
class NoInterface(Error, TypeError): ...
class UnknownMember(Error, AttributeError): ...
class WrongType(Error, TypeError): ...
class WrongCount(Error, TypeError): ...
class OutOfRange(Error, OverflowError): ...
class BadIndex(Error, IndexError): ...
class BadArgument(Error, ValueError): ...
class NoMemory(Error, MemoryError): ...
class Closed(Error, ValueError): ...

class Array:
    @property
    def type(self) -> str: ...
    @property
    def shape(self) -> tuple[int, ...]: ...
    @property
    def lower(self) -> tuple[int, ...]: ...
    @property
    def memory(self) -> memoryview: ...
    def __init__(self, values: Any, type: str | None = ..., lower: tuple[int, ...] | None = ...) -> None: ...
    @property
    def ndim(self) -> int: ...
    @property
    def __array_interface__(self) -> dict[str, Any]: ...
    def __len__(self) -> int: ...
    def __iter__(self) -> Any: ...
    def __getitem__(self, index: Any) -> Any: ...
    def __setitem__(self, index: Any, value: Any) -> None: ...
    def tolist(self) -> list[Any]: ...

class Connection:
    event: str
    cookie: int
    @property
    def connected(self) -> bool: ...
    def disconnect(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *_: object) -> None: ...

class Object:
    @overload
    def query(self, interface: Literal["IDCMDicomDir"]) -> IDCMDicomDir: ...
    @overload
    def query(self, interface: Literal["IDCMObject"]) -> IDCMObject: ...
    @overload
    def query(self, interface: Literal["IDCMOblique"]) -> IDCMOblique: ...
    @overload
    def query(self, interface: Literal["IDCMOptions"]) -> IDCMOptions: ...
    @overload
    def query(self, interface: Literal["IDCMVolume"]) -> IDCMVolume: ...
    @overload
    def query(self, interface: Literal["IDataSetHandle"]) -> IDataSetHandle: ...
    @overload
    def query(self, interface: Literal["IDcmCStore"]) -> IDcmCStore: ...
    @overload
    def query(self, interface: Literal["IDcmDictionary"]) -> IDcmDictionary: ...
    @overload
    def query(self, interface: Literal["IDcmDictionaryFile"]) -> IDcmDictionaryFile: ...
    @overload
    def query(self, interface: Literal["IDcmFile"]) -> IDcmFile: ...
    @overload
    def query(self, interface: Literal["IDcmObjectManager"]) -> IDcmObjectManager: ...
    @overload
    def query(self, interface: Literal["IDcmQueryRetrieve"]) -> IDcmQueryRetrieve: ...
    @overload
    def query(self, interface: Literal["IDcmStoreResponse"]) -> IDcmStoreResponse: ...
    @overload
    def query(self, interface: Literal["IDcmVerification"]) -> IDcmVerification: ...
    @overload
    def query(self, interface: Literal["IImageModule"]) -> IImageModule: ...
    @overload
    def query(self, interface: Literal["IVRRecord"]) -> IVRRecord: ...
    @overload
    def query(self, interface: Literal["IViewParameters"]) -> IViewParameters: ...
    @overload
    def query(self, interface: Literal["IXDIConsumer"]) -> IXDIConsumer: ...
    @overload
    def query(self, interface: Literal["IXDIDomain"]) -> IXDIDomain: ...
    @overload
    def query(self, interface: str) -> Any: ...
    def on(self, event: str, function: Callable[..., object]) -> Connection: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *_: object) -> None: ...

def start() -> None: ...
def cancel_files(cancel: bool = ...) -> None: ...
def can_unload() -> bool: ...
def pump(timeout: float | None = ...) -> int: ...
def events_descriptor() -> int: ...

@overload
def create(name: Literal["Tessaret.DcmCStore", "Tessaret.DcmCStore.1"]) -> IDcmCStore: ...
@overload
def create(name: Literal["Tessaret.DCMDicomDir", "Tessaret.DCMDicomDir.1"]) -> IDCMDicomDir: ...
@overload
def create(name: Literal["Tessaret.DcmDictionary", "Tessaret.DcmDictionary.1"]) -> IDcmDictionary: ...
@overload
def create(name: Literal["Tessaret.DCMObject", "Tessaret.DCMObject.1"]) -> IDCMObject: ...
@overload
def create(name: Literal["Tessaret.DcmOblique", "Tessaret.DcmOblique.1"]) -> IDCMOblique: ...
@overload
def create(name: Literal["Tessaret.DCMOptions", "Tessaret.DCMOptions.1"]) -> IDCMOptions: ...
@overload
def create(name: Literal["Tessaret.DcmQueryRetrieve", "Tessaret.DcmQueryRetrieve.1"]) -> IDcmQueryRetrieve: ...
@overload
def create(name: Literal["Tessaret.DCMVolume", "Tessaret.DCMVolume.1"]) -> IDCMVolume: ...
@overload
def create(name: Literal["Tessaret.ImageModule", "Tessaret.ImageModule.1"]) -> IImageModule: ...
@overload
def create(name: Literal["Tessaret.ViewParameter", "Tessaret.ViewParameter.1"]) -> IViewParameters: ...
@overload
def create(name: Literal["Tessaret.XDIConsumer", "Tessaret.XDIConsumer.1"]) -> IXDIConsumer: ...
@overload
def create(name: Literal["Tessaret.XDIDomain", "Tessaret.XDIDomain.1"]) -> IXDIDomain: ...
@overload
def create(name: str) -> Any: ...

class _EnumDICOMDIRLevel(IntEnum):
    """A level of the tree of records in a DICOMDIR."""
    DICOMDIR_PATIENT = 0
    DICOMDIR_STUDY = 1
    DICOMDIR_SERIES = 2
    DICOMDIR_OBJECT = 3

DICOMDIR_PATIENT: Final = _EnumDICOMDIRLevel.DICOMDIR_PATIENT
DICOMDIR_STUDY: Final = _EnumDICOMDIRLevel.DICOMDIR_STUDY
DICOMDIR_SERIES: Final = _EnumDICOMDIRLevel.DICOMDIR_SERIES
DICOMDIR_OBJECT: Final = _EnumDICOMDIRLevel.DICOMDIR_OBJECT

class _EnumDataEncoding(IntEnum):
    """How the elements of a data set are written (DICOM PS3.5, annex A). Compressed transfer syntaxes write them as
    explicit little endian does.
    """
    ENCODING_NONE = 0
    ENCODING_IMPLICIT_LITTLE = 100
    ENCODING_EXPLICIT_LITTLE = 101
    ENCODING_EXPLICIT_BIG = 102

ENCODING_NONE: Final = _EnumDataEncoding.ENCODING_NONE
ENCODING_IMPLICIT_LITTLE: Final = _EnumDataEncoding.ENCODING_IMPLICIT_LITTLE
ENCODING_EXPLICIT_LITTLE: Final = _EnumDataEncoding.ENCODING_EXPLICIT_LITTLE
ENCODING_EXPLICIT_BIG: Final = _EnumDataEncoding.ENCODING_EXPLICIT_BIG

class _EnumImageType(IntEnum):
    """How the samples of an image are stored. Colour images have three bytes a pixel in the order in which they were put."""
    IMAGE_GRAY8 = 0
    IMAGE_GRAY16 = 1
    IMAGE_GRAY32 = 2
    IMAGE_RGB = 3

IMAGE_GRAY8: Final = _EnumImageType.IMAGE_GRAY8
IMAGE_GRAY16: Final = _EnumImageType.IMAGE_GRAY16
IMAGE_GRAY32: Final = _EnumImageType.IMAGE_GRAY32
IMAGE_RGB: Final = _EnumImageType.IMAGE_RGB

class _EnumInterpolationOrder(IntEnum):
    """How a value between voxels is found. Hosts share these names; no member takes them yet."""
    INTERP_NEAREST = 0
    INTERP_TRILINEAR = 1
    INTERP_SYNCH_2 = 2
    INTERP_SYNCH_3 = 3
    INTERP_SYNCH_4 = 4
    INTERP_SYNCH_5 = 5
    INTERP_SYNCH_6 = 6

INTERP_NEAREST: Final = _EnumInterpolationOrder.INTERP_NEAREST
INTERP_TRILINEAR: Final = _EnumInterpolationOrder.INTERP_TRILINEAR
INTERP_SYNCH_2: Final = _EnumInterpolationOrder.INTERP_SYNCH_2
INTERP_SYNCH_3: Final = _EnumInterpolationOrder.INTERP_SYNCH_3
INTERP_SYNCH_4: Final = _EnumInterpolationOrder.INTERP_SYNCH_4
INTERP_SYNCH_5: Final = _EnumInterpolationOrder.INTERP_SYNCH_5
INTERP_SYNCH_6: Final = _EnumInterpolationOrder.INTERP_SYNCH_6

class _EnumIntersectionType(IntEnum):
    """What the intersection of two planes is."""
    INTERSECT_NONE = 0
    INTERSECT_PARALLEL = 1
    INTERSECT_SEGMENT = 2

INTERSECT_NONE: Final = _EnumIntersectionType.INTERSECT_NONE
INTERSECT_PARALLEL: Final = _EnumIntersectionType.INTERSECT_PARALLEL
INTERSECT_SEGMENT: Final = _EnumIntersectionType.INTERSECT_SEGMENT

class _EnumLoadOption(IntEnum):
    """What a load may be told. The numbers are added up."""
    LOAD_PIXELS = 1
    LOAD_STRICT = 2
    LOAD_SKIPS_PIXELS = 4

LOAD_PIXELS: Final = _EnumLoadOption.LOAD_PIXELS
LOAD_STRICT: Final = _EnumLoadOption.LOAD_STRICT
LOAD_SKIPS_PIXELS: Final = _EnumLoadOption.LOAD_SKIPS_PIXELS

class _EnumMergeType(IntEnum):
    """How an image is merged onto another one."""
    MERGE_TRANSPARENCY = 0
    MERGE_DITHERED = 1

MERGE_TRANSPARENCY: Final = _EnumMergeType.MERGE_TRANSPARENCY
MERGE_DITHERED: Final = _EnumMergeType.MERGE_DITHERED

class _EnumObliqueViewMode(IntEnum):
    """Which section of a volume a control shows. The first letter of an orthogonal section is the volume's axis that runs along the rows
    of its image, the second the one that runs down its columns.
    """
    OBLIQUE_ORTHO_XY = 0
    OBLIQUE_ORTHO_YZ = 1
    OBLIQUE_ORTHO_XZ = 2
    OBLIQUE_ORTHO_ZX = 3
    OBLIQUE_ORTHO_ZY = 4
    OBLIQUE_ORTHO_YX = 5
    OBLIQUE_ORTHO_AXIAL = 6
    OBLIQUE_ORTHO_SAGGITAL = 7
    OBLIQUE_ORTHO_CORONAL = 8
    OBLIQUE_FREE = 9

OBLIQUE_ORTHO_XY: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_XY
OBLIQUE_ORTHO_YZ: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_YZ
OBLIQUE_ORTHO_XZ: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_XZ
OBLIQUE_ORTHO_ZX: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_ZX
OBLIQUE_ORTHO_ZY: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_ZY
OBLIQUE_ORTHO_YX: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_YX
OBLIQUE_ORTHO_AXIAL: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_AXIAL
OBLIQUE_ORTHO_SAGGITAL: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_SAGGITAL
OBLIQUE_ORTHO_CORONAL: Final = _EnumObliqueViewMode.OBLIQUE_ORTHO_CORONAL
OBLIQUE_FREE: Final = _EnumObliqueViewMode.OBLIQUE_FREE

class _EnumReadingEnd(IntEnum):
    """Why a reader stopped."""
    READ_TO_THE_END = 0
    READ_CUT_ELEMENT = 1
    READ_NO_DELIMITER = 2
    READ_STRAY_TAG = 3
    READ_UNKNOWN_SYNTAX = 4
    READ_TO_PIXELS = 5
    READ_ORPHAN_ITEM = 6
    READ_TOO_DEEP = 7
    READ_TOO_LONG = 8

READ_TO_THE_END: Final = _EnumReadingEnd.READ_TO_THE_END
READ_CUT_ELEMENT: Final = _EnumReadingEnd.READ_CUT_ELEMENT
READ_NO_DELIMITER: Final = _EnumReadingEnd.READ_NO_DELIMITER
READ_STRAY_TAG: Final = _EnumReadingEnd.READ_STRAY_TAG
READ_UNKNOWN_SYNTAX: Final = _EnumReadingEnd.READ_UNKNOWN_SYNTAX
READ_TO_PIXELS: Final = _EnumReadingEnd.READ_TO_PIXELS
READ_ORPHAN_ITEM: Final = _EnumReadingEnd.READ_ORPHAN_ITEM
READ_TOO_DEEP: Final = _EnumReadingEnd.READ_TOO_DEEP
READ_TOO_LONG: Final = _EnumReadingEnd.READ_TOO_LONG

class _EnumReadingOddity(IntEnum):
    """What a reader takes without complaint although hardly anybody can have meant it."""
    ODDITY_NONE = 0
    ODDITY_VALUE_BEYOND_ITEM = 1
    ODDITY_WRONG_LENGTH = 2
    ODDITY_ELEMENT_IN_SEQUENCE = 3
    ODDITY_ITEM_OUTSIDE = 4
    ODDITY_STRAY_FRAGMENT = 5
    ODDITY_NOT_A_SEQUENCE = 6
    ODDITY_NO_DELIMITER = 7
    ODDITY_STRAY_DELIMITER = 8
    ODDITY_WRONG_DELIMITER = 9
    ODDITY_LATE_SYNTAX = 10
    ODDITY_NO_LETTERS = 11
    ODDITY_TWICE = 12

ODDITY_NONE: Final = _EnumReadingOddity.ODDITY_NONE
ODDITY_VALUE_BEYOND_ITEM: Final = _EnumReadingOddity.ODDITY_VALUE_BEYOND_ITEM
ODDITY_WRONG_LENGTH: Final = _EnumReadingOddity.ODDITY_WRONG_LENGTH
ODDITY_ELEMENT_IN_SEQUENCE: Final = _EnumReadingOddity.ODDITY_ELEMENT_IN_SEQUENCE
ODDITY_ITEM_OUTSIDE: Final = _EnumReadingOddity.ODDITY_ITEM_OUTSIDE
ODDITY_STRAY_FRAGMENT: Final = _EnumReadingOddity.ODDITY_STRAY_FRAGMENT
ODDITY_NOT_A_SEQUENCE: Final = _EnumReadingOddity.ODDITY_NOT_A_SEQUENCE
ODDITY_NO_DELIMITER: Final = _EnumReadingOddity.ODDITY_NO_DELIMITER
ODDITY_STRAY_DELIMITER: Final = _EnumReadingOddity.ODDITY_STRAY_DELIMITER
ODDITY_WRONG_DELIMITER: Final = _EnumReadingOddity.ODDITY_WRONG_DELIMITER
ODDITY_LATE_SYNTAX: Final = _EnumReadingOddity.ODDITY_LATE_SYNTAX
ODDITY_NO_LETTERS: Final = _EnumReadingOddity.ODDITY_NO_LETTERS
ODDITY_TWICE: Final = _EnumReadingOddity.ODDITY_TWICE

class _EnumSaveForm(IntEnum):
    """What a save writes."""
    SAVE_BARE = 1
    SAVE_WITHOUT_META_HEADER = 2
    SAVE_COMPLETE = 3

SAVE_BARE: Final = _EnumSaveForm.SAVE_BARE
SAVE_WITHOUT_META_HEADER: Final = _EnumSaveForm.SAVE_WITHOUT_META_HEADER
SAVE_COMPLETE: Final = _EnumSaveForm.SAVE_COMPLETE

class _EnumSaveOption(IntEnum):
    """What a save may be told. The numbers are added up."""
    SAVE_KEEPS_FILES = 1
    SAVE_KEEPS_TYPES = 2

SAVE_KEEPS_FILES: Final = _EnumSaveOption.SAVE_KEEPS_FILES
SAVE_KEEPS_TYPES: Final = _EnumSaveOption.SAVE_KEEPS_TYPES

class _EnumServerType(IntEnum):
    """What kind of server a receiver connects to. No kinds are named yet; any number may be passed."""
    ...


class _EnumVoxelType(IntEnum):
    """What one voxel of a volume is."""
    SHORT_VOXEL = 0
    USHORT_VOXEL = 1
    UCHAR_VOXEL = 2
    FLOAT_VOXEL = 3
    LONG_VOXEL = 4
    ULONG_VOXEL = 5

SHORT_VOXEL: Final = _EnumVoxelType.SHORT_VOXEL
USHORT_VOXEL: Final = _EnumVoxelType.USHORT_VOXEL
UCHAR_VOXEL: Final = _EnumVoxelType.UCHAR_VOXEL
FLOAT_VOXEL: Final = _EnumVoxelType.FLOAT_VOXEL
LONG_VOXEL: Final = _EnumVoxelType.LONG_VOXEL
ULONG_VOXEL: Final = _EnumVoxelType.ULONG_VOXEL

class _ImgFlipMode(IntEnum):
    """How an image is mirrored: value 1 turns it upside down, value 2 swaps left and right."""
    IMAGE_FLIP_NONE = 0
    IMAGE_FLIP_VERT = 1
    IMAGE_FLIP_HORZ = 2
    IMAGE_FLIP_BOTH = 3

IMAGE_FLIP_NONE: Final = _ImgFlipMode.IMAGE_FLIP_NONE
IMAGE_FLIP_VERT: Final = _ImgFlipMode.IMAGE_FLIP_VERT
IMAGE_FLIP_HORZ: Final = _ImgFlipMode.IMAGE_FLIP_HORZ
IMAGE_FLIP_BOTH: Final = _ImgFlipMode.IMAGE_FLIP_BOTH

@type_check_only
class IDataSetHandle(Object):
    """A data set for calls by name. IDcmObjectManager.GetPtr gives one, and PutPtr takes it."""
    @property
    def IsAlive(self) -> bool:
        """Whether the data set still exists."""
        ...


@type_check_only
class IDcmCStore(Object):
    """A queue of files, sent over one association when SendFiles is called. What became of each file is told by events, on the caller's
    thread and before SendFiles returns.
    """
    def SendFiles(self, host: str | PathLike[str] | None, port: str | PathLike[str] | None, LocalAE: str | PathLike[str] | None, RemoteAE: str | PathLike[str] | None, TimeoutSecs: int) -> bool:
        """Sends every file of the queue, in the order in which they were added, and returns when all are done; the queue stays as it is.
        `host` is a name or an address, `port` a number or a service as text, the titles have up to 16 characters. `TimeoutSecs` is how
        long an answer may take; 0 stands for 300 seconds.
        A file is sent in its own transfer syntax where the node takes that for its class, and otherwise in the one that the node
        took. One file that fails, or cannot be read to its end, does not stop the others: it ends in SopError, and the call succeeds
        whatever the files did. An answer of the node with a warning or a failure in it counts as sent.
        Fails with kInvalidArgument for a time below 0, and with "Files are being sent already" where it is called from one of its events.
        Fails where no association comes about: "Connection to  %s: %s permanently refused" or "Connection to  %s: %s temporarily
        refused" with host and title, then in a second line "Non active link", "Unupported Application Context", "Unknown local
        AETitle" or "Unknown remote AETitle", also where no file names a class, so that nothing could be proposed; IDcmStoreResponse tells
        more.
        """
        ...

    def AddFile(self, FilePath: str | PathLike[str] | None, SOPClassUID: str | PathLike[str] | None) -> bool:
        """Puts a file at the end of the queue. `SOPClassUID` is the class of its object, which SendFiles proposes to the node. The file is
        not looked at before it is sent.
        """
        ...

    def Cancel(self) -> bool:
        """Ends a SendFiles that is under way before its next file; files that are left get no event. It may be called from an event or
        from another thread, and does nothing else.
        """
        ...

    @property
    def NumFiles(self) -> int:
        """How many files are in the queue."""
        ...

    @property
    def SentFiles(self) -> int:
        """How many files the last SendFiles has sent so far."""
        ...

    class _FileName:
        def __call__(self, Idx: int) -> str:
            """The path of file `Idx` of the queue, from 0."""
            ...
        def __getitem__(self, arguments: Any) -> str: ...
    @property
    def FileName(self) -> _FileName: ...


@type_check_only
class IDCMDicomDir(Object):
    """Puts files one by one into a file set, then writes its DICOMDIR; or reads a DICOMDIR that exists and tells its records by events.
    Reading leaves nothing behind. A failure of AddIOD, AddPrivate and WriteCDR has "DCMDicomDir::" and the member's name with ": " in
    front of its words; one that nobody foresaw is "Unknown error" behind that.
    """
    def AddIOD(self, IOD: str | PathLike[str] | None, ForceExplicitLE: bool) -> str:
        """Copies the file `IOD` into the file set, with directories for its patient, study and series where they are new. `ForceExplicitLE`
        true (exactly -1) has it stored as Explicit VR Little Endian, decompressed where need be. `pFileID` gets its place below
        RootPath, its parts parted by "\\". An instance that is there already is not copied again, and its place is given.
        Fails with "CCDRObject::AddIOD: error loading [" and the path, "cannot write to [", "Destination is not empty", "Error Creating
        [", "Failed to init compression codecs", "Error decoding object".
        """
        ...

    def AddPrivate(self, level: _EnumDICOMDIRLevel | int, UID: str | PathLike[str] | None, File: str | PathLike[str] | None) -> str:
        """Puts a file of any kind beside the one that was added last, at `level` of the tree, with a private record that names `UID`. By a
        hard link where the file system has such, otherwise by a copy. `pFileID` gets its place. Fails with "CCDRObject::AddPrivate: No
        current record" before any AddIOD, and with "CCDRObject::CopyFile: Error copying files to DICOMDIR struct".
        """
        ...

    def Reset(self) -> bool:
        """Begins a new file set. Files that were written stay."""
        ...

    @property
    def FileSetID(self) -> str:
        """The identifier of the file set."""
        ...
    @FileSetID.setter
    def FileSetID(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it, unchecked."""
        ...

    @property
    def StorageUID(self) -> str:
        """The UID of the storage medium; empty where each WriteCDR is to make one."""
        ...
    @StorageUID.setter
    def StorageUID(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it, unchecked."""
        ...

    @property
    def AETitle(self) -> str:
        """The title that the files are written under, up to its first blank; "KORVANDE" at first."""
        ...
    @AETitle.setter
    def AETitle(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it; what goes beyond 16 characters is cut."""
        ...

    @property
    def RootPath(self) -> str:
        """The directory that the file set is written to."""
        ...
    @RootPath.setter
    def RootPath(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it."""
        ...

    def WriteCDR(self, FileName: str | PathLike[str] | None) -> bool:
        """Writes the directory file "DICOMDIR" into RootPath. `FileName` is looked for there only: it fails with the name and " already
        present" where that exists. What was added stays, and the file may be written again.
        """
        ...

    @property
    def DicomFileRoot(self) -> str:
        """The directory below RootPath that holds all files of the set; empty for none."""
        ...
    @DicomFileRoot.setter
    def DicomFileRoot(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it."""
        ...

    def ReadDICOMDIR(self, fname: str | PathLike[str] | None) -> bool:
        """Reads the DICOMDIR `fname` and tells its records by events before it returns, each with those below it; OnEnd comes last, also
        after a failure. Fails with "Error loading DICOMDIr[" and the path, and with "Uncaught error in ReadDICOMDIR".
        """
        ...


@type_check_only
class IDcmDictionary(Object):
    """The dictionaries that the library loaded when it started. They never change, so that any thread may ask; where IDcmDictionaryFile
    has loaded another one for this object, that one is asked for elements in place of the library's.
    """
    @property
    def NumEntries(self) -> int:
        """How many elements the dictionary has."""
        ...

    def GetEntry(self, Idx: int) -> tuple[bool, int, int]:
        """The tag of entry `Idx` in the order of tags, from 0. False below 0 and at NumEntries and above; entries above 32767 cannot be
        reached.
        """
        ...

    def GetVRDescription(self, Group: int, Element: int) -> tuple[bool, str, str]:
        """Type and name of an element: `TypeCode` gets the two letters of its value representation, `description` its text. False for
        a tag that the dictionary does not know, with both untouched. Of Group and Element the low 16 bits count.
        """
        ...

    def GetUIDDescription(self, UID: str | PathLike[str] | None) -> tuple[bool, str, str, str, bool]:
        """What a UID denotes: a description without blanks, its kind, the modality of a storage class, and whether that holds images.
        False for an unknown UID, with all of these untouched.
        """
        ...


@type_check_only
class IDcmDictionaryFile(Object):
    """For hosts with a data dictionary of their own, and those that make one. What is loaded counts for this object
    alone: its IDcmDictionary looks elements up there in place of the library's dictionary, and nothing else changes.
    An object that loads belongs to one thread.

    A dictionary file has a text form, with lines such as `{0x0010 0x0020 LO "Patient ID"}` behind a first line that
    is no entry, and a binary form that loads faster. Descriptions are texts of one byte a character. Failures with
    words have the source "Tessaret.DcmDictionary". Every member answers kPointer for a place of an answer that is
    null, and kOutOfMemory with "Not enough memory" where it says nothing else.
    """
    def LoadFile(self, FileName: str | PathLike[str] | None) -> bool:
        """Loads a dictionary file of either form. kException "Error reading [FileName]: " with the line and the reason, or
        the words of the system, where it cannot be read or has no entry: what was here stays.
        """
        ...

    def LoadBytes(self, Bytes: Any) -> bool:
        """Loads likewise from an array of bytes with one dimension; the words are "Error reading dictionary: " and the
        reason. kTypeMismatch for anything else.
        """
        ...

    def Unload(self) -> bool:
        """Goes back to the library's dictionary."""
        ...

    @property
    def ElementsCount(self) -> int:
        """How many elements the dictionary has."""
        ...

    def GetElementAt(self, Idx: int) -> tuple[bool, int, int, str, str]:
        """Element `Idx` in the order of tags, from 0: its tag, the two letters of its type, and its name, "" without one.
        False, with nothing written, where there is none of this number.
        """
        ...

    @property
    def UIDsCount(self) -> int:
        """How many UIDs the library's dictionary has."""
        ...

    def GetUIDAt(self, Idx: int) -> tuple[bool, str]:
        """UID `Idx` in the order of their characters, from 0; IDcmDictionary.GetUIDDescription tells what it denotes.
        False, with nothing written, where there is none of this number.
        """
        ...

    def GetBytes(self, Binary: bool) -> Any:
        """The dictionary as the bytes of a file, an array with one dimension from 0: in its binary form, or else as text.
        Names come along; a line end in a name becomes a blank in the text form. kException "Type of (gggg,eeee) cannot
        be written as text" where its letters separate words there.
        """
        ...

    def SaveFile(self, FileName: str | PathLike[str] | None, Binary: bool, KeepsFiles: bool | None = ...) -> bool:
        """Saves these bytes as a file, whole or not at all. With `KeepsFiles` a file that is there stays, and the save
        fails. kException with the words above or those of the system.
        """
        ...


@type_check_only
class IDcmFile(Object):
    """For hosts that look closely at files. Every IDCMObject of the library has it: `object.As<IDcmFile>()`.

    A load puts what it reads in place of what was here, which is gone also when it fails. What was read before the
    bytes ended or stopped making sense is there, and the notes say where that was; IDCMObject.Load leaves them too.
    They stay until the next load, whatever is done to the data set in between, and are told of this object only, not
    of its items and copies.

    Offsets count from the first byte that was read, the preamble included, modulo 4 GiB. Of Group and Element the low
    16 bits count. Failures with words have the source "Tessaret.DCMObject". Every member answers kPointer for a place
    of an answer that is null, and kOutOfMemory with "Not enough memory" where it says nothing else.
    """
    def LoadFile(self, FileName: str | PathLike[str] | None, Options: int | None = ..., Encoding: _EnumDataEncoding | int | None = ...) -> bool:
        """Loads a file. `Options` is a sum of _EnumLoadOption; `Encoding` says that there is a bare data set in that
        encoding, and otherwise, by preamble, meta header and the first element, the bytes tell. Compressed pixel data
        stays compressed. Numbers are turned to those of the host. kInvalidArgument, with nothing changed, for options
        and encodings that do not exist, for LOAD_STRICT together with an encoding, and for LOAD_PIXELS together with
        LOAD_SKIPS_PIXELS; kException with the words of the reader or the system where nothing can be read.
        """
        ...

    def LoadDescriptor(self, Descriptor: int, Options: int | None = ..., Encoding: _EnumDataEncoding | int | None = ...) -> bool:
        """Loads likewise from an open file, pipe or socket of this process, beginning where it stands. `Descriptor` stays
        the caller's; where it stands afterwards is not said.
        """
        ...

    def LoadBytes(self, Bytes: Any, Options: int | None = ..., Encoding: _EnumDataEncoding | int | None = ...) -> bool:
        """Loads likewise from an array of bytes with one dimension, of at most 2147483647; an empty value is no bytes.
        kTypeMismatch, with nothing changed, for anything else.
        """
        ...

    @property
    def ReadEncoding(self) -> _EnumDataEncoding:
        """How the data set was encoded that was read last; how the meta header was where no data set followed.
        ENCODING_NONE before the first load, and where not even a byte could be read.
        """
        ...

    @property
    def HasMark(self) -> bool:
        """Whether there was a preamble with the mark "DICM" behind it."""
        ...

    @property
    def BytesRead(self) -> float:
        """How many bytes the reader went through, preamble and mark included, modulo 4 GiB."""
        ...

    @property
    def NamedSyntax(self) -> str:
        """The transfer syntax that the meta header names, without padding, whether or not the reader followed it; "" where
        it names none.
        """
        ...

    @property
    def NamedEncoding(self) -> _EnumDataEncoding:
        """How a data set in that transfer syntax is encoded: what the reader was to follow. ENCODING_NONE where none is named,
        and for one that the library does not know.
        """
        ...

    def GetFirstTag(self) -> tuple[bool, int, int]:
        """The tag that stands first, preamble and mark aside. False, with nothing written, where there are not enough
        bytes for one.
        """
        ...

    def GetMetaLength(self) -> tuple[bool, float, float]:
        """The length of the meta header behind (0002,0000): `Stated` by that element, and `Counted` in bytes up to the
        first element of another group. False, with nothing written, where there is no such element or the end of the
        group was not seen.
        """
        ...

    def GetEnd(self) -> tuple[_EnumReadingEnd, float, int, int]:
        """Why the reader stopped, where, and in which element. `Offset` is that of the element; with a tag of zeros it is the end
        of the bytes where a delimiter is missing, and where a sequence or an item that is too deep begins within its element.
        After READ_TO_THE_END all three are 0.
        """
        ...

    @property
    def SystemError(self) -> str:
        """What the system said when it could not supply the bytes; "" where it could. A file that it cuts short looks like
        one that is cut.
        """
        ...

    @property
    def OdditiesCount(self) -> int:
        """How many kinds of oddities were met."""
        ...

    def GetOddity(self, Idx: int) -> tuple[_EnumReadingOddity, float, int, int]:
        """Kind number `Idx` of them, from 0 in the order in which they came, and the offset and tag of the first element
        or item of that kind. ODDITY_NONE, with nothing written, where there is none of this number.
        """
        ...

    def SaveFile(self, FileName: str | PathLike[str] | None, Form: _EnumSaveForm | int | None = ..., Options: int | None = ...) -> bool:
        """Saves as a file; the object stays as it is. `Form`, SAVE_COMPLETE where it is left away, says what is written,
        `Options` is a sum of _EnumSaveOption. What was at `FileName` stays where the new file cannot be written whole:
        kException, with the words of the encoder or the system, or "Empty object": "VR(7FE0,0010) was stepped over when it was
        read" is what comes of LOAD_SKIPS_PIXELS. kInvalidArgument for forms and options that do not exist.
        """
        ...

    def SaveBytes(self, Form: _EnumSaveForm | int | None = ..., Options: int | None = ...) -> Any:
        """The bytes of that file, as an array with one dimension from 0. Options that speak of files mean nothing here."""
        ...

    def GetElement(self, Group: int, Element: int) -> tuple[bool, str, float, float, bool, int]:
        """An element as it is stored; unlike the members of IDCMObject this gives no type to one that has none. `TypeCode`
        gets its two characters as they stood in the file, "" for none; `Length` the bytes of its value, -1 for an
        undefined length, of a sequence as it was read, 0 where it was undefined; `Offset` where it stood among the
        bytes read, 0 where it was not read; `HasValue` whether its bytes are here, which those of pixel data may not
        be; `ItemsCount` how many items or fragments it has. An item outside any sequence hangs on an element with a
        value. False, with nothing written, where there is no such element.
        """
        ...

    def GetListing(self) -> tuple[int, Any, Any, Any, Any, Any, Any, Any]:
        """All elements, those in items at every depth too, and the items themselves, as they follow one another in a file:
        seven arrays with one dimension from 0, in which the same index stands for the same element or item. `Levels`
        (longs) is 0 for the elements of this data set, and one more for an item, and what is in it, than for the element
        that holds it. `Tags` (doubles) is group * 65536 + element, `TypeCodes` (longs) the first character of the type *
        256 + the second, 0 for none; `Lengths`, `Offsets` (doubles), `HaveValues` (booleans) and `ItemsCounts` (longs)
        are what GetElement tells. For an item the tag is (FFFE,E000), `Lengths` the number of its elements, and
        `ItemsCounts` -1, which tells it from a fragment of pixel data. All are empty where there are no elements.
        """
        ...

    def GetBytes(self, Group: int, Element: int, Offset: float, Count: int) -> Any:
        """At most `Count` bytes of the value of an element from its byte `Offset` on, as an array with one dimension from
        0: fewer where the value ends before, or what is here of one that LOAD_SKIPS_PIXELS stepped over. Empty where there are
        none. kInvalidArgument for a negative `Count`, and an `Offset` that is negative or no whole number.
        """
        ...

    def SetType(self, Group: int, Element: int, TypeCode: str | PathLike[str] | None) -> bool:
        """Gives an element another type, with its bytes as they are. `TypeCode` is two characters; kInvalidArgument for
        any other text. False where there is no such element.
        """
        ...

    @property
    def HasPixelsOfDoubtfulOrder(self) -> bool:
        """Whether there is native pixel data with more bits a sample than the numbers of its type have. Programs write
        such pixels in big endian in two ways, and nothing in a file tells which was meant.
        """
        ...

    @property
    def Text(self) -> str:
        """The data set as text, for people: a line an element, with items set in, each line with its end. A character a
        byte: text of values stands as it is, but for control characters, which are dots. kException "Empty object".
        """
        ...

    def GetElementText(self, Group: int, Element: int, FirstLine: int | None = ..., Room: int | None = ...) -> str:
        """The lines of that text for one element with all that is in it; "" where there is no such element, kException
        "Empty object". Set in by their depth, all lines may take many times the memory of the data set: parts of them begin
        with line `FirstLine`, counted from 0, and end behind the line with which they have `Room` characters or more; one
        with fewer is the last. A `Room` of 0 has no end. kInvalidArgument where one of both is negative.
        """
        ...

    @property
    def Refusal(self) -> str:
        """Why the last Translate of IDCMObject answered false, which is no failure: the words of the engine or of the codec that
        cannot hold this object. "" where it answered true or failed, and before the first.
        """
        ...


@type_check_only
class IDCMObject(Object):
    """A data set: a file, a command or an item of a sequence. An object is empty when it is made, and always has the data set in it; only
    after a failed Load, or when the item that it showed is gone, there is none.

    A tag is given as Group and Element, of which the low 16 bits count. TypeCode is the two letters of a value representation such as
    "PN"; texts of fewer letters, and values that are no text, count as none, and so do longer ones for an element that is added. Where no
    type is given for an element that has none yet, it comes from the dictionary. VM is the number of a value within its element, from 0.
    Values travel as DICOM PS3.5, 6.2 has them:

    | Types | Value |
    |---|---|
    | AE AS CS LO LT PN SH ST UI UT | string, a character a byte of the file, without padding at its end |
    | IS, SL, US, AT | long; of an AT group and element are values of their own |
    | SS | short |
    | DS, FD, UL | double; a DS that is put gets six digits behind its point, a UL that is put is a long |
    | FL | float |
    | DA, DT | date |
    | TM | string such as 14:05:06; a string that is put has the form 14:05:06.250 |
    | all others | array of bytes: the whole value, whatever VM is |

    Numbers are those of the host, also where the file was big endian; OW are numbers of 16 bits, whatever the pixels are. Failures with
    words have the source "Tessaret.DCMObject". Every member answers kPointer for a place of an answer that is null, unless it says
    that it never writes there, and kOutOfMemory with "Not enough memory" where it says nothing else.
    """
    class _VR:
        def __call__(self, Group: int, Element: int, TypeCode: Any = ..., VM: int | None = ...) -> Any:
            """A value of an element; empty where there is no such element or value, but a string with nothing in it for a text that an
            element with others does not have. A TypeCode replaces the type of the element for good, so that an element of type UN can be
            read as what it is. kException "Error: VR type ST,LT and UT have VM=1" for another VM in these.
            """
            ...
        def __getitem__(self, arguments: Any) -> Any: ...
        def __setitem__(self, arguments: Any, value: Any) -> None: ...
        def put(self, Group: int, Element: int, TypeCode: Any = ..., VM: int | None = ..., newVal: Any = ...) -> None:
            """Sets a value of an element, which is added where there is none; an empty value leaves it without bytes. TypeCode counts for an
            element without a type. Values behind the end are appended. Texts are cut to the length that their type allows. kException
            "Error converting VARIANT to VR type" for a value that cannot be turned into the type and for an element with items, the words
            above for a VM, and "No data object": the element is as it was. One of type SQ takes no value: it stays as it is, or is added
            without items, and that is no failure.
            """
            ...
    @property
    def VR(self) -> _VR: ...

    class _VRMultiplicity:
        def __call__(self, Group: int, Element: int) -> int:
            """How many values an element has: 0 for one that is not there, 1 for types that are not divided."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def VRMultiplicity(self) -> _VRMultiplicity: ...

    def Clear(self) -> bool:
        """Removes all elements. Where there is no data set, an empty one is there afterwards."""
        ...

    def copy(self) -> IDCMObject:
        """A new object with a copy of everything, independent at every depth."""
        ...

    def Set(self, Object: IDCMObject | None) -> bool:
        """Makes this a copy of `Object`, which stays as it is. kPointer for none, and the answer of one that does not give its
        IDcmObjectManager: nothing has changed then.
        """
        ...

    def Save(self, FileName: str | PathLike[str] | None) -> bool:
        """Saves as a file with meta header, in the transfer syntax of (0002,0010), or implicit little endian where that is not there. Pixel
        data goes out as it stands. What was at `FileName` stays where the new file cannot be written whole: kException, with the words of
        the encoder or the system, or "Empty object". An explicit syntax has no place for more than 65535 bytes in types other than OB,
        OW, UN and UT: a longer value makes what follows it unreadable. OD, OF, OL, OV, SV, UC, UR and UV are among these, for which other
        programs expect a longer head. An element of type UN that the dictionary knows goes out with the type that it has there, one of
        these too, where its length fits; IDcmFile.SaveFile with SAVE_KEEPS_TYPES leaves it UN.
        """
        ...

    def Load(self, FileName: str | PathLike[str] | None, LoadPixels: bool) -> bool:
        """Loads a file. What was here is gone, also when it fails. With LoadPixels exactly true (-1) the pixel data is there and native, and
        (0002,0010) says so; otherwise (7FE0,0010) comes without bytes and the file is not read beyond it. A file that ends early is there
        as far as it goes. kException with the words of the reader where nothing can be read, "Unsupported Encapsulated Transfer Syntax"
        where no codec turns the pixel data native: the object is there then, still compressed; "Not a DICOM FILE" for anything unforeseen.
        """
        ...

    class _SequencesCount:
        def __call__(self, Group: int, Element: int) -> int:
            """How many items an element has; 32767 where there are more."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def SequencesCount(self) -> _SequencesCount: ...

    class _Sequence:
        def __call__(self, Group: int, Element: int, Idx: int) -> IDCMObject:
            """Item `Idx` of an element, from 0; none where there is no such item. The item belongs to this object, which lives as long as what is
            given here; once it is removed or replaced, that has no data set any more.
            """
            ...
        def __getitem__(self, arguments: Any) -> IDCMObject: ...
        def __setitem__(self, arguments: Any, value: IDCMObject | None) -> None: ...
        def put(self, Group: int, Element: int, Idx: int, newVal: IDCMObject | None) -> None:
            """Makes the data set of `newVal` item `Idx` of an element: in place of the one that is there, or behind the last one where there is
            none of this number. The element is added where it is not there; with no `newVal` nothing else happens. `newVal` shows the item
            from then on and no longer owns it. Where it fails nothing has changed: kInvalidArgument for a `newVal` that does not own its data
            set, or in which this object lies; the answer of one that does not give its IDcmObjectManager; kException "No data object", "The
            element holds a value: remove it first".
            """
            ...
    @property
    def Sequence(self) -> _Sequence: ...

    def GetVRDescr(self, Group: int, Elem: int) -> tuple[bool, str, str, int, int]:
        """What an element is: `Descr` is its name in the dictionary, `TypeCode` the two letters of its type, `Length` its bytes (-1 for an
        undefined length), `VM` the number of its values, 0 for OB, OW and UN. False where there is no such element; `VM` is 0 then and the
        rest untouched.
        """
        ...

    def RemoveVR(self, Group: int, Element: int) -> bool:
        """Removes an element. `Removed` is never written."""
        ...

    def RemoveSequence(self, Group: int, Element: int, Idx: int) -> bool:
        """Does nothing. `Removed` is never written."""
        ...

    def Send(self, host: str | PathLike[str] | None, port: str | PathLike[str] | None, LocalAETitle: str | PathLike[str] | None, RemoteAETitle: str | PathLike[str] | None, GetOwnership: bool | None = ...) -> bool:
        """Sends the data set to a remote node with C-STORE, over an association of its own, which is made and released within the call;
        an answer may take 300 seconds. `host` is a name or an address, `port` a number or a service as text, the titles have up to 16
        characters. The object stays as it is, and `GetOwnership` has no effect. Pixel data in fragments is sent as it is where the node
        takes its transfer syntax, and native otherwise. True when the node answered, whatever the status of the answer.
        Fails with "Missing SOP Class for C-STORE" without a usable (0008,0016), where no association comes about with the words of
        IDcmCStore::SendFiles, and with "Error during transfer".
        """
        ...

    def PutVRRawString(self, Group: int, Elem: int, TypeCode: str | PathLike[str] | None, val: str | PathLike[str] | None) -> bool:
        """Replaces the whole value of an element by `val`, a byte a character, as it is: nothing is padded or cut. The element is added where
        there is none. TypeCode counts for an element without a type. kException "No data object", "The element holds items: remove it
        first".
        """
        ...

    def GetVRRawString(self, Group: int, Elem: int) -> tuple[str, str]:
        """The whole value of an element as text, padding and backslashes included; "" where there is none. `TypeCode` is never written.
        kException "Cannot convert VR to raw ASCII" for an element that holds no text.
        """
        ...

    def GetFirstVR(self) -> tuple[bool, int, int]:
        """The lowest tag. False, with nothing written, for an empty object."""
        ...

    def GetNextVR(self, Group: int, Element: int) -> tuple[bool, int, int]:
        """The tag behind the one that is given, in the same place. False, with nothing written, where the tag given is the last one or not
        there.
        """
        ...

    def Translate(self, trSyntax: str | PathLike[str] | None = ...) -> bool:
        """Turns the pixel data, here in memory, into another transfer syntax, and names it in (0002,0010). Without `trSyntax` it becomes
        native, and `Done` is not written. `trSyntax` is a UID, which a NUL ends. False, with the pixel data native, where no codec serves the
        syntax for this image. True, with nothing done, for pixel data without bytes. kException with the words of the codec, or "No data
        object": the pixel data is compressed as before where it cannot become native, and native where it cannot be compressed.
        """
        ...

    def GetVRData(self, Group: int, Element: int) -> tuple[str, Any]:
        """The bytes of an element, as an array with one dimension from 0; empty where it has none. `TypeCode` gets its two letters.
        kException "Empty object", "Non existing VR", "Not enough memory for VR Data".
        """
        ...

    def PutVRData(self, Group: int, Element: int, TypeCode: str | PathLike[str] | None, BinArray: Any) -> bool:
        """Replaces the bytes of an element by those of an array with one dimension, as they are; the element is added where there is none. Its
        type becomes the first two characters of TypeCode, whatever it was; 0 for an empty text. kException "No data object", "Only BYTE
        vectors allowed", "PutVRData: Only 1 dim BYTE vectors allowed", "The element holds items: remove it first".
        """
        ...

    def IntersectPlane(self, pIObj: IDCMObject | None, Pixels: bool) -> tuple[bool, bool, Any, Any]:
        """The line in which this image and another one meet. Not available in this version: kNotImplemented, with words. With `Pixels` exactly
        true the ends `p0` and `p1` will be in pixels of this image, otherwise in patient millimetres: arrays of three floats.
        """
        ...

    def CreateSecondaryCapture(self, pIRefDcm: IDCMObject | None, pIPic: Any) -> bool:
        """Makes this a Secondary Capture image of a picture, with the patient and study of `pIRefDcm`. Not available in this version:
        kNotImplemented, with words.
        """
        ...

    def AddOverlay(self, x0: int, y0: int, x1: int, y1: int, type: str | PathLike[str] | None, description: str | PathLike[str] | None) -> int:
        """Adds an overlay plane of what is drawn in the event OnDrawOverlay, within x0 to x1 and y0 to y1, both inclusive. Not available in
        this version: kNotImplemented, with words.
        """
        ...


@type_check_only
class IDcmObjectManager(Object):
    """By name a data set travels as an object with the interface IDataSetHandle, which knows whether the data set still lives. One that
    was taken over with it is destroyed with the last reference to it, unless PutPtr has passed it on.
    """
    def GetOwnership(self) -> bool:
        """Takes the ownership away from this object, which goes on showing the data set while that lives: the caller has to see to its end.
        kFalse where this object is not the owner.
        """
        ...

    def SetOwner(self) -> bool:
        """Makes this object the owner again. kFalse where it is that already, and where the data set belongs to another object or to a
        sequence.
        """
        ...

    def GetPtr(self, GetOwnership: int) -> IDataSetHandle:
        """The data set. With GetOwnership other than 0 the caller takes it over; kFalse, with nothing given, where this object is not the
        owner. Null where there is none.
        """
        ...

    def PutPtr(self, SetOwnership: int, newVal: IDataSetHandle | None) -> bool:
        """Shows another data set; the one that was here is destroyed if it was owned. The one that is here already stays; with SetOwnership
        0 an owner gives it up, to the caller or by name to the handle. With SetOwnership other than 0 this object becomes the owner;
        kInvalidArgument, with nothing changed, where the data set belongs to another object or to a sequence, and by name where the
        handle does not own it.
        """
        ...

    def GetVR(self, Group: int, Element: int) -> IVRRecord:
        """Fills a record with an element: tag, type, length and a copy of its bytes. Where there is no such element, Group and Elem are -1
        and the length is 0. numseq, DDO and seq stay as they were.
        """
        ...

    def PutVR(self, VrRec: IVRRecord | None) -> bool:
        """Makes an element as the record has it, with a copy of its bytes, in place of the value of one that is there. Nothing happens
        without a record or a data set. kInvalidArgument for a negative length, kException "The element holds items: remove it first".
        """
        ...


@type_check_only
class IDCMOblique(Object):
    """Shows one section, orthogonal or oblique, of a volume. Setting a property only asks for a repaint; the section is worked out when
    the control is painted. Everything happens on the thread of the control's window.

    Systems of coordinates, from the outside in: container is what the host places its controls by; device is pixels of the window from
    its upper left corner; image is pixels of the section; volume is voxels of the regular grid of the volume; DICOM is millimetres in
    the patient.

    Without a volume every member succeeds and leaves what it would write as it was, where nothing else is said. Points that are passed
    as one value are arrays of numbers, of one dimension with three entries.
    """
    def SetRotation(self, RotX: float, RotY: float, RotZ: float) -> bool:
        """Turns the section about the three axes, in degrees."""
        ...

    def GetRotation(self) -> tuple[float, float, float]:
        """How it is turned, in degrees."""
        ...

    def SetTranslation(self, DeltaX: float, DeltaY: float, DeltaZ: float) -> bool:
        """Moves the section, in voxels."""
        ...

    def GetTranslation(self) -> tuple[float, float, float]:
        """How it is moved, in voxels."""
        ...

    def ResetTransform(self) -> bool:
        """Works out the section anew. How it is turned and moved stays."""
        ...

    @property
    def zoom(self) -> float:
        """How many window pixels an image pixel has. Below 0: as many as make the image fit the window, which is worked out at the next
        painting; -1 at first.
        """
        ...
    @zoom.setter
    def zoom(self, newVal: float) -> None:
        """Sets it."""
        ...

    @property
    def ViewCoord(self) -> float:
        """How deep the shown plane lies, as the third image coordinate of the view point; 0 without a volume."""
        ...
    @ViewCoord.setter
    def ViewCoord(self, newVal: float) -> None:
        """Moves the shown plane to this depth."""
        ...

    @property
    def XDimension(self) -> int:
        """The width of the section's box; -1 without a volume."""
        ...
    @XDimension.setter
    def XDimension(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def YDimension(self) -> int:
        """The height of the section's box; -1 without a volume."""
        ...
    @YDimension.setter
    def YDimension(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def ZDimension(self) -> int:
        """The depth of the section's box; -1 without a volume."""
        ...
    @ZDimension.setter
    def ZDimension(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def Mode(self) -> _EnumObliqueViewMode:
        """Which section is shown, as it was chosen."""
        ...
    @Mode.setter
    def Mode(self, newVal: _EnumObliqueViewMode | int) -> None:
        """Chooses it, with the image in the middle of the window."""
        ...

    @property
    def RawMode(self) -> _EnumObliqueViewMode:
        """Which axes of the volume are shown: what the modes of the patient's planes come to for this volume. OBLIQUE_FREE for a free plane;
        without a volume what Mode says.
        """
        ...

    def ResetView(self) -> bool:
        """Puts the image into the middle of the window."""
        ...

    def ResetCenter(self) -> bool:
        """Does the same."""
        ...

    def Redraw(self) -> bool:
        """Asks for a repaint."""
        ...

    def SetCenter(self, cx: float, cy: float) -> bool:
        """Puts this point of the image into the middle of the window."""
        ...

    def GetCenter(self) -> tuple[float, float]:
        """The point of the image that was put there; 0 and 0 while the image itself is in the middle."""
        ...

    def ContainerToDev(self, cx: float, cy: float) -> tuple[int, int]:
        """From container to device."""
        ...

    def DevToContainer(self, dx: int, dy: int) -> tuple[float, float]:
        """From device to container."""
        ...

    def ContainerToImage(self, cx: float, cy: float) -> tuple[float, float]:
        """From container to image."""
        ...

    def ImageToContainer(self, x: float, y: float) -> tuple[float, float]:
        """From image to container, by the nearest pixel of the window."""
        ...

    def ContainerToVol(self, cx: float, cy: float) -> tuple[float, float, float]:
        """From container to volume, for a point of the shown plane."""
        ...

    def VolToContainer(self, vx: float, vy: float, vz: float) -> tuple[float, float, float]:
        """From volume to container; `pVal` is the distance of the point from the shown plane."""
        ...

    def SetViewPoint(self, x: float, y: float, z: float) -> bool:
        """Moves the shown plane through this point of the volume."""
        ...

    def GetViewPoint(self) -> tuple[float, float, float]:
        """The point of the volume that the shown plane goes through."""
        ...

    def SetPlane3Pt(self, p0: Any, px: Any, py: Any, optimizeDims: bool, optimizeAngle: bool) -> bool:
        """Shows the plane through three points of the volume: `p0` its origin, `px` along its lines, `py` along its columns. `optimizeDims`
        true fits the box to the volume; `optimizeAngle` changes nothing. Mode becomes OBLIQUE_FREE. Fails with "Error in p0 or px or py
        parameters, must be numerical vectors of dim=3".
        """
        ...

    def SetCutPlane(self, Plane: _EnumObliqueViewMode | int, p0: Any, p1: Any) -> bool:
        """Shows the cut that goes through two points of the volume and stands upright on one of the patient's planes: `Plane` is
        OBLIQUE_ORTHO_AXIAL, OBLIQUE_ORTHO_SAGGITAL or OBLIQUE_ORTHO_CORONAL, and becomes the mode. Fails with "Error in p0 or p1
        parameters, must be numerical vectors of dim=3", "Bad CUT Plane".
        """
        ...

    def GetPlane(self) -> Any:
        """The shown plane as an array a, b, c, d: its points have a x + b y + c z + d = 0 in the volume. Empty without a volume."""
        ...

    def GetXOrientation(self) -> tuple[float, float, float]:
        """The direction of the section's lines, in the volume."""
        ...

    def GetYOrientation(self) -> tuple[float, float, float]:
        """The direction of the section's columns, in the volume."""
        ...

    def GetOrigin(self) -> tuple[float, float, float]:
        """Where the first pixel of the section lies, in the volume."""
        ...

    @property
    def ImageFlip(self) -> _ImgFlipMode:
        """How the image is mirrored, on top of what the mode asks for."""
        ...
    @ImageFlip.setter
    def ImageFlip(self, newVal: _ImgFlipMode | int) -> None:
        """Sets it."""
        ...

    @property
    def DCMOrientation(self) -> str:
        """Where the right and the lower side of the image lie in the patient, as letters with a "\\" behind each of the two, such as "L\\P\\".
        Empty without a volume.
        """
        ...

    @property
    def VoxelSizeMM(self) -> float:
        """The length of a voxel of the grid in millimetres; 0 without a volume."""
        ...

    def GetZSliceIndex(self, z: float) -> tuple[int, float]:
        """The plane nearest to depth `z` of the volume, and how far it lies from there in voxels. `z` has to lie in the volume."""
        ...

    @property
    def RotXDim(self) -> float:
        """The extent of the section's box along the lines of the image."""
        ...

    @property
    def RotYDim(self) -> float:
        """The extent of the section's box along the columns of the image."""
        ...

    @property
    def RotZDim(self) -> float:
        """The extent of the section's box in depth; -1 without a volume."""
        ...

    @property
    def SliceName(self) -> str:
        """A name for people; that of the volume at first."""
        ...
    @SliceName.setter
    def SliceName(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it."""
        ...

    @property
    def FrameOfReferenceUID(self) -> str:
        """The UID of the volume's frame of reference."""
        ...

    @property
    def Volume(self) -> IDCMVolume:
        """The volume that is shown, or null. The caller gets a reference of its own."""
        ...
    @Volume.setter
    def Volume(self, newVal: IDCMVolume | None) -> None:
        """Shows another one, with a reference of its own, and its whole range of values as the window; the volume is allocated where need be.
        Null for none.
        """
        ...

    @property
    def UseLUT(self) -> bool:
        """Whether the colours of Lut are used; true at first."""
        ...
    @UseLUT.setter
    def UseLUT(self, newVal: bool) -> None:
        """Sets it; true is exactly -1."""
        ...

    @property
    def Lut(self) -> Any:
        """The colour lookup, or null. The caller gets a reference of its own."""
        ...
    @Lut.setter
    def Lut(self, newVal: Object | None) -> None:
        """Sets it, with a reference of its own. Fails with "No ILut interface"."""
        ...

    @property
    def WindowMin(self) -> int:
        """The value that is shown black; the volume's least at first, 0 without a volume."""
        ...
    @WindowMin.setter
    def WindowMin(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def WindowMax(self) -> int:
        """The value that is shown white; the volume's greatest at first, 0 without a volume."""
        ...
    @WindowMax.setter
    def WindowMax(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def Gamma(self) -> float:
        """The exponent by which gray is bent; at or below 0 it is not. -1 at first."""
        ...
    @Gamma.setter
    def Gamma(self, newVal: float) -> None:
        """Sets it."""
        ...

    @property
    def Invert(self) -> bool:
        """Whether black and white are swapped."""
        ...
    @Invert.setter
    def Invert(self, newVal: bool) -> None:
        """Sets it; true is exactly -1."""
        ...

    @property
    def MergeVolume(self) -> IDCMVolume:
        """That volume, or null. The caller gets a reference of its own."""
        ...
    @MergeVolume.setter
    def MergeVolume(self, newVal: IDCMVolume | None) -> None:
        """A second volume, for hosts that show two in one; it changes no pixel here. A reference is taken."""
        ...

    @property
    def MergeLut(self) -> Any:
        """That lookup, or null. The caller gets a reference of its own."""
        ...
    @MergeLut.setter
    def MergeLut(self, newVal: Object | None) -> None:
        """Its colour lookup, with a reference of its own. kNoInterface for an object that is no ILut."""
        ...

    @property
    def MergeWindowMax(self) -> int:
        """What was set."""
        ...
    @MergeWindowMax.setter
    def MergeWindowMax(self, newVal: int) -> None:
        """The value of the second volume that is shown white."""
        ...

    @property
    def MergeWindowMin(self) -> int:
        """What was set."""
        ...
    @MergeWindowMin.setter
    def MergeWindowMin(self, newVal: int) -> None:
        """The value of the second volume that is shown black."""
        ...

    @property
    def MergeTransparency(self) -> float:
        """The whole number that was set."""
        ...
    @MergeTransparency.setter
    def MergeTransparency(self, newVal: float) -> None:
        """How much the second volume covers. Only the whole number counts: 0.5 is 0."""
        ...

    class _Value:
        def __call__(self, contX: float, contY: float) -> int:
            """The value of the pixel at a point of the container; 0 outside the image and before the first painting. Fails with "Bad volume type"."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def Value(self) -> _Value: ...

    class _Pixel:
        def __call__(self, x: float, y: float, z: float) -> int:
            """The value at a point of the volume, interpolated; 0 outside."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def Pixel(self) -> _Pixel: ...

    def GetStatistics(self, vx: Any, vy: Any, NumBins: int) -> tuple[Any, int, int, int, float, float]:
        """Counts the pixels of the section within a polygon. `vx` and `vy` are arrays of 32-bit floating point numbers with the corners, in
        image coordinates. `Histogram` gets an array of `NumBins` numbers of 32 bits from index 0; `ValMin` and `ValMax` the least and
        greatest value, 128000 and -128000 where no pixel lies inside; `NumPixels` how many do; then their mean and standard
        deviation. Fails with "Error getting histogram".
        """
        ...

    @property
    def hDc(self) -> int:
        """The surface that is being drawn on, in OnDrawThumbnail; 0 at any other time."""
        ...

    @property
    def Picture(self) -> Any:
        """What the control shows, as a picture with 24 bits a pixel. New, with a reference for the caller. Fails with
        "DCMOblique.get_Picture():" and "Cannot get Window DC", "Cannot create Comtible Window DC" or "Cannot allocate compatible pixmap".
        """
        ...

    class _SecondaryCapture:
        def __call__(self, BaseUID: str | PathLike[str] | None) -> IDCMObject:
            """Succeeds and gives no object."""
            ...
        def __getitem__(self, arguments: Any) -> IDCMObject: ...
    @property
    def SecondaryCapture(self) -> _SecondaryCapture: ...

    @property
    def ImagePlaneModule(self) -> IDCMObject:
        """Where the section lies in the patient, as a new object with the elements of an image plane, for the caller."""
        ...

    def GetPlaneIntersection(self, Oblique: IDCMOblique | None) -> tuple[int, int, int, int, bool]:
        """The line in which the planes of both controls meet, in device coordinates of this one. `ok` becomes true where it crosses the
        image, false where it does not, and stays as it was where the planes are parallel.
        """
        ...

    def DrawReferencePlane(self, DcmOblique: IDCMOblique | None, RGB: int) -> bool:
        """Draws that line, in the colour `RGB` with red in the lowest byte."""
        ...

    def DrawImagePlane(self, pImagePlane: IDCMObject | None, RGB: int) -> bool:
        """Draws the line in which the section and the image `pImagePlane` meet. `pRet` is 0."""
        ...


@type_check_only
class IDCMOptions(Object):
    @property
    def UseTotokuLUT(self) -> bool:
        """Whether lookup tables for monitors of a certain kind are to be used. The value is kept for hosts; the library itself does not
        draw by it. It is read from the user's settings when the library starts and when the class is first used.
        """
        ...
    @UseTotokuLUT.setter
    def UseTotokuLUT(self, newVal: bool) -> None:
        """Sets it for the process, and in the user's settings where these can be written. True is exactly -1. The value that is set
        already is not written again.
        """
        ...


@type_check_only
class IDcmQueryRetrieve(Object):
    """One association to a node, over which queries and retrievals run on a thread of their own. Each call that starts one returns at
    once; results come as events on the thread that made this object, which has to call PumpEvents (tessaret/pump.hpp) for them.
    A query ends with OnQueryEnd, a retrieval with OnRetrieveEnd, and only then the next query may be started; that may be done in the
    event itself.

    Texts of queries may have the wildcards of DICOM; blanks around them are dropped, and an empty text asks for any value. An object
    `rawVr` may bring further keys: its elements are moved into the query, where they win over those that it would have had, and the
    object is empty afterwards. It fails with "IDcmObjectManager interface not found" where the object lacks that interface.
    """
    def QueryStudy(self, PatientName: str | PathLike[str] | None, PatientID: str | PathLike[str] | None, From: str | PathLike[str] | None, To: str | PathLike[str] | None, StudyID: str | PathLike[str] | None, AccessionNumber: str | PathLike[str] | None, Modalities: str | PathLike[str] | None, rawVr: IDCMObject | None = ...) -> bool:
        """Asks for studies. `From` and `To` bound the study date, as YYYYMMDD: both the same is that one day, one of them empty leaves that
        side open, both empty asks for any. `Modalities` is Modalities in Study. Fails with "Cannot query while processing" until the
        end of an operation before has been told, and with "Must connect first".
        """
        ...

    def QuerySeries(self, UID: str | PathLike[str] | None, rawVr: IDCMObject | None = ...) -> bool:
        """Asks for the series of the study whose instance UID is `UID`. Fails as QueryStudy does."""
        ...

    def MoveStudy(self, StudyInstanceUID: str | PathLike[str] | None, DestAE: str | PathLike[str] | None) -> bool:
        """Fetches a study. `DestAE` is the title of the node that it is sent to; the objects then do not come through here. Where it is empty,
        and where UseCGET is set, they come over this very association as OnRetrieveDDO if the node can do so; if it cannot, an empty
        title stands for our own. A retrieval that is asked for while one runs waits for its turn, and goes where the last one asked
        for goes. Fails with "Must connect first" and "Cannot execute retrieve while processing query".
        """
        ...

    def MoveSeries(self, StudyInstanceUID: str | PathLike[str] | None, SeriesInstanceUID: str | PathLike[str] | None, DestAE: str | PathLike[str] | None) -> bool:
        """Fetches a series, as MoveStudy does a study."""
        ...

    def MoveSOP(self, StudyInstanceUID: str | PathLike[str] | None, SeriesInstanceUID: str | PathLike[str] | None, SOPInstanceUID: str | PathLike[str] | None, DestAE: str | PathLike[str] | None) -> bool:
        """Fetches one instance, as MoveStudy does a study."""
        ...

    def MovePatient(self, PatientID: str | PathLike[str] | None, DestAE: str | PathLike[str] | None) -> bool:
        """Fetches all of a patient, as MoveStudy does a study."""
        ...

    def StopQuerying(self) -> bool:
        """Ends a running operation and with it the association; waits until the operation has ended. To go on, Connect again. Does
        nothing where none runs.
        """
        ...

    @property
    def IsWorking(self) -> bool:
        """Whether an operation is running."""
        ...

    def Connect(self, CallingAE: str | PathLike[str] | None, CalledAE: str | PathLike[str] | None, host: str | PathLike[str] | None, port: str | PathLike[str] | None) -> bool:
        """Opens the association, from the title `CallingAE` to the title `CalledAE` at `host` (a name or an address) and `port` (a number or a
        service as text). Fails with "Connection to  %s: %s permanently refused" or "Connection to  %s: %s temporarily refused" with
        host and title, then in a second line "Non active link", "Unupported Application Context", "Unknown local AETitle" or "Unknown
        remote AETitle".
        """
        ...

    def Close(self) -> bool:
        """Ends the association. A running operation is told to stop, and waited for."""
        ...

    @property
    def Connected(self) -> bool:
        """Whether there is an association."""
        ...

    def Verify(self) -> bool:
        """Asks the node for a sign of life, and waits for it on the calling thread. Fails with "Cannot verify while processing" and "Must
        connect first".
        """
        ...

    def WaitCompletition(self) -> bool:
        """Waits until the running operation has ended; returns at once where none runs. Its events still have to be pumped."""
        ...

    def GetStudyInfo(self, StudyInstanceUID: str | PathLike[str] | None, rawVr: IDCMObject | None = ...) -> bool:
        """Asks for one study with all that QueryStudy gives. Fails as QueryStudy does."""
        ...

    def GetSeriesInfo(self, StudyInstanceUID: str | PathLike[str] | None, SeriesInstanceUID: str | PathLike[str] | None, rawVr: IDCMObject | None = ...) -> bool:
        """Asks for one series of a study, with its SOP class. Fails as QueryStudy does."""
        ...

    def QuerySOP(self, StudyInstanceUID: str | PathLike[str] | None, SeriesInstanceUID: str | PathLike[str] | None, rawVr: IDCMObject | None = ...) -> bool:
        """Asks for the instances of a series. Fails as QueryStudy does."""
        ...

    @property
    def UseCGET(self) -> bool:
        """Whether objects are to be fetched over this association rather than sent to a node."""
        ...
    @UseCGET.setter
    def UseCGET(self, newVal: bool) -> None:
        """Sets it: for retrievals from now on, and for what the next Connect proposes."""
        ...

    def AddSOP(self, SOPClassUID: str | PathLike[str] | None) -> bool:
        """Adds a storage class that may be received over the association, from the next Connect on."""
        ...

    def AddTransferSyntax(self, TrSyntaxUID: str | PathLike[str] | None) -> bool:
        """Adds a transfer syntax to those that are proposed, from the next Connect on. Implicit VR Little Endian always is."""
        ...


@type_check_only
class IDcmStoreResponse(Object):
    """For hosts that want to know whether a node really took what it was sent: IDcmCStore counts every answer as sent, also a refusal. To
    be asked within the events of IDcmCStore, about the file that the event is about, or after SendFiles. Every member answers kPointer
    for a null place of the answer.
    """
    @property
    def ResponseStatus(self) -> int:
        """The status of the answer (DICOM PS3.4, B.2.3): 0 for success, 0xB000 to 0xBFFF for a warning, by which the object was stored, and
        anything else for a failure. -1 where there was no answer.
        """
        ...

    @property
    def ResponseComment(self) -> str:
        """The comment that came with a status that is not 0, (0000,0902); empty without one."""
        ...

    @property
    def AssociationError(self) -> str:
        """Why the last SendFiles made no association, in the words of the network: the system's for a link that could not be opened, the
        numbers of the refusal as texts, "No SOP Class proposed", "No Accepted presentation Context found", "Corrupt transmission
        reading AAssociateRQ". In SopError: why the association did not take the file, such as "SOP Class not supported [%s]" or "The
        peer has closed the link"; empty where the file itself is to blame. After IDcmVerification::Verify: why no association came
        about, or why the node did not answer on the one that did; empty where it answered.
        """
        ...


@type_check_only
class IDcmVerification(Object):
    """For hosts that want to know before they send, and for those who set up nodes."""
    def Verify(self, host: str | PathLike[str] | None, port: str | PathLike[str] | None, LocalAE: str | PathLike[str] | None, RemoteAE: str | PathLike[str] | None, TimeoutSecs: int) -> bool:
        """Makes an association, sends a C-ECHO (DICOM PS3.4, annex A), and releases it. The arguments are those of IDcmCStore::SendFiles,
        and so are the failures where no association comes about. True when the node answered, whatever the status; false when it did not,
        and the association has ended. IDcmStoreResponse::get_AssociationError tells more of both.
        """
        ...


@type_check_only
class IDCMVolume(Object):
    """A stack of planes: either the instances of one series, added one by one and sorted in the patient's space, or a plain box that Create
    makes. Planes and instances count from 0.

    Three systems of coordinates: DICOM is millimetres in the patient; pixels of a plane are columns and lines of its image; volume is
    voxels of a regular grid whose first axis runs along the lines of the planes, the second along their columns, and the third from
    plane to plane, against the cross product of the first two.

    Members of a volume of DICOM instances fail with "Not a DICOM Volume" for a plain box and before UpdateVolume; those that need any
    volume with "No volume defined". An index outside is "Bad plane index" where nothing else is said.
    """
    def Create(self, type: _EnumVoxelType | int, dx: int, dy: int, dz: int, ZArray: Any = ...) -> bool:
        """Makes a plain box of `dz` planes of `dx` by `dy` voxels, with memory for them. `ZArray`, where it is not empty, is an array of 32-bit
        floating point numbers with `dz` entries in one dimension: where each plane lies, in millimetres. Fails with "ZArray must be a R4
        (single) array [1..dz]", "ZArray must be a R4 (single) array", "Not enough memory for volume".
        """
        ...

    def GetOrigin(self) -> tuple[float, float, float]:
        """Where the first voxel lies, in millimetres in the patient."""
        ...

    def PutOrigin(self, x: float, y: float, z: float) -> bool:
        """Sets it."""
        ...

    def GetOrientation(self) -> tuple[float, float, float, float, float, float]:
        """The directions of lines and of columns in the patient, as unit vectors."""
        ...

    def SetOrientation(self, rowX: float, rowY: float, rowZ: float, colX: float, colY: float, colZ: float) -> bool:
        """Sets them."""
        ...

    def SetSpacing(self, x: float, y: float, z: float) -> bool:
        """Sets the distances of columns, lines and planes, in millimetres."""
        ...

    def GetSpacing(self) -> tuple[float, float, float]:
        """Gives them."""
        ...

    class _Plane:
        def __setitem__(self, arguments: Any, value: IImageModule | None) -> None: ...
        def put(self, Idx: int, image: IImageModule | None) -> None:
            """Makes plane `Idx` the pixels of `image`, which the volume holds from then on. Allocate comes before. Fails with "Must create volume
            first", "PutPlane: Bad Plane IDX", "Volume must be allocated before putting planes".
            """
            ...
    @property
    def Plane(self) -> _Plane: ...

    def Dispose(self) -> bool:
        """Lets go of all voxels and instances. The UIDs stay."""
        ...

    def AddIOD(self, iod: IDCMObject | None) -> bool:
        """Adds an instance, of which a reference is kept. All have to be of one series and one frame of reference and parallel to each other.
        Fails with "Missing Series UID", "IOD must be of the same series", "Missing frame of reference", "IOD must have the same plane of
        reference", "Missing Image Plane", "Missing SOP Instance UID", "Bad Plane Orientation in Volume IOD", "Volume planes must be
        parallel".
        """
        ...

    def UpdateVolume(self) -> bool:
        """Sorts what was added and works out the geometry; no pixel is read. Fails with "No IOD added to volume", "Error getting
        IDcmObjectManager", "Cannor find Image Plane".
        """
        ...

    def GetDimensions(self) -> tuple[int, int, int]:
        """How many columns and lines the planes have, and how many planes there are."""
        ...

    @property
    def VoxelSize(self) -> float:
        """The length of a voxel of the regular grid in millimetres."""
        ...

    @property
    def Min(self) -> float:
        """The least value of all voxels."""
        ...

    @property
    def Max(self) -> float:
        """The greatest value of all voxels."""
        ...

    def Allocate(self) -> bool:
        """Makes the volume ready for its planes, which come by setting Plane; UpdateVolume is done first where it is due. Fails with "Error
        allocating volume".
        """
        ...

    def StopElab(self) -> bool:
        """Ends a loading of pixels that is under way. It may be called from OnProgress or another thread."""
        ...

    class _VolumePlaneToIOD:
        def __call__(self, PlaneIdx: int) -> int:
            """Which instance, in the order in which they were added, plane `PlaneIdx` is."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def VolumePlaneToIOD(self) -> _VolumePlaneToIOD: ...

    class _IODToVolumePlane:
        def __call__(self, IODIdx: int) -> int:
            """Which plane instance `IODIdx` is."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def IODToVolumePlane(self) -> _IODToVolumePlane: ...

    def ReorderIOD(self) -> bool:
        """Puts the instances into the order of their planes, so that both indices are the same."""
        ...

    @property
    def FrameOfReferenceUID(self) -> str:
        """The UID of the frame of reference; empty before the first instance."""
        ...

    @property
    def SeriesUID(self) -> str:
        """The UID of the series; empty before the first instance."""
        ...

    @property
    def VolName(self) -> str:
        """A name for people."""
        ...
    @VolName.setter
    def VolName(self, newVal: str | PathLike[str] | None) -> None:
        """Sets it."""
        ...

    def IsAligned(self, vol: IDCMVolume | None, Theta: float) -> bool:
        """Whether the planes of both volumes are parallel, within the angle `Theta` in radians; 0 stands for 0.01. False for null."""
        ...

    def GetPlaneOrigin(self, Idx: int) -> tuple[float, float, float]:
        """Where the first pixel of plane `Idx` lies, in millimetres in the patient."""
        ...

    def FindPlane(self, x: float, y: float, z: float) -> tuple[int, float]:
        """The plane nearest to a point of the patient, in millimetres: `Idx` is its instance, `delta` how far the point lies from it in
        voxels of the grid.
        """
        ...

    class _IODIdx:
        def __call__(self, iod: IDCMObject | None) -> int:
            """Which instance has the SOP instance UID of `iod`; -1 where there is none."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def IODIdx(self) -> _IODIdx: ...

    class _IOD:
        def __call__(self, Idx: int) -> IDCMObject:
            """Instance `Idx`, with a reference for the caller. Fails with "CDCMVolume::get_IOD: Bad Idx"."""
            ...
        def __getitem__(self, arguments: Any) -> IDCMObject: ...
    @property
    def IOD(self) -> _IOD: ...

    def FindNearestPlane(self, iod: IDCMObject | None) -> tuple[int, float]:
        """The plane nearest to the image `iod`: `Idx` is its instance, `delta` the distance in millimetres. -1 where `iod` has another frame
        of reference or is not parallel. Fails with "Missing plane origin", "Missing plane orientation", "Bad Origin format", "Bad
        Orientation format".
        """
        ...

    def VolumeToDicom(self, vx: float, vy: float, vz: float) -> tuple[float, float, float]:
        """From voxels of the grid to millimetres in the patient."""
        ...

    def DicomToVolume(self, dcmX: float, dcmY: float, dcmZ: float) -> tuple[float, float, float]:
        """From millimetres in the patient to voxels of the grid."""
        ...

    @property
    def IsDicomVolume(self) -> bool:
        """True for a volume of DICOM instances; fails with "Not a DICOM Volume" for any other."""
        ...

    def IntersectPlane(self, Idx: int, iod: IDCMObject | None) -> tuple[_EnumIntersectionType, Any]:
        """How plane `Idx` and the image `iod` meet. INTERSECT_PARALLEL: `pResult` is their distance, a 32-bit floating point number.
        INTERSECT_SEGMENT: an array of such numbers with two dimensions from 1 to 2, the ends of the segment in pixels of the plane; the
        first index is the coordinate, the second the end. Fails with "CDCMVolume::IntersectPlane: Bad plane index", "Bad Origin in
        Volume IOD", "Bad Plane Orientation in Volume IOD".
        """
        ...

    @property
    def NumPlanes(self) -> int:
        """How many planes there are; 0 without a volume."""
        ...

    def PlaneToVolume(self, Idx: int, ix: float, iy: float) -> tuple[float, float, float]:
        """From column `ix` and line `iy` of plane `Idx` to voxels of the grid."""
        ...

    def Save(self, fname: str | PathLike[str] | None) -> bool:
        """Writes the voxels of all planes to a file, line by line, with nothing else. Does nothing without a volume; a failed write is not
        told.
        """
        ...

    class _PlaneZ:
        def __call__(self, Idx: int) -> float:
            """Where plane `Idx` lies along the third axis, in voxels of the grid."""
            ...
        def __getitem__(self, arguments: Any) -> float: ...
    @property
    def PlaneZ(self) -> _PlaneZ: ...

    def PlaneZToIdx(self, z: float) -> tuple[int, float]:
        """The plane nearest to `z`, which is millimetres from the first plane; `delta` is how far it lies from it."""
        ...

    class _AlignedImage:
        def __call__(self, pImage: IDCMObject | None) -> IImageModule:
            """A section of the volume in the plane of the image `pImage`, of its size and spacing, with 16 bits. New, with a reference for the
            caller.
            """
            ...
        def __getitem__(self, arguments: Any) -> IImageModule: ...
    @property
    def AlignedImage(self) -> _AlignedImage: ...


@type_check_only
class IImageModule(Object):
    """Pixels that are made, filled line by line, changed as a whole and drawn. It knows nothing of DICOM but a rescale pair, and is used
    by one thread at a time. Members that need pixels are for images that CreateImage, or whoever gave the image, has filled. Lines,
    columns and frames count from 0; coordinates are pixels with (0, 0) at the left end of the first line.
    """
    @property
    def ImageType(self) -> _EnumImageType:
        """How samples are stored."""
        ...
    @ImageType.setter
    def ImageType(self, newVal: _EnumImageType | int) -> None:
        """Turns all pixels into this form. Between grays values are shifted so that BitsStored becomes the new width; to colours the
        upper 8 bits count, from colours 0.3 of the first byte, 0.59 of the second and 0.11 of the third.
        """
        ...

    @property
    def dx(self) -> int:
        """The width of a frame."""
        ...

    @property
    def dy(self) -> int:
        """The height of a frame."""
        ...

    @property
    def BytesPerPixel(self) -> int:
        """The height of a frame, whatever the name says: hosts count on it."""
        ...

    @property
    def NumChannels(self) -> int:
        """1 for gray, 3 for colours."""
        ...

    @property
    def NumFrames(self) -> int:
        """How many frames there are."""
        ...

    @property
    def BitsStored(self) -> int:
        """How many bits of a sample count."""
        ...
    @BitsStored.setter
    def BitsStored(self, newVal: int) -> None:
        """Changes it, of images with 16 bits only: values are shifted by the difference, and up to 8 bits or beyond 16 the image becomes one
        of that width.
        """
        ...

    def Transform(self, v00: float, v01: float, v10: float, v11: float) -> bool:
        """Turns, mirrors or scales all frames about their middle by the matrix v00, v01 / v10, v11, which leads from the new image to the old
        one. Pixels from outside become 0.
        """
        ...

    @property
    def ImageDataSize(self) -> int:
        """The bytes of all pixels, those between lines included."""
        ...

    @property
    def ImageLineSize(self) -> int:
        """The bytes from one line to the next."""
        ...

    @property
    def XSpacing(self) -> float:
        """The distance of two columns in millimetres; 1 in a new image."""
        ...
    @XSpacing.setter
    def XSpacing(self, newVal: float) -> None:
        """Sets it."""
        ...

    @property
    def yspacing(self) -> float:
        """The distance of two lines in millimetres; 1 in a new image."""
        ...
    @yspacing.setter
    def yspacing(self, newVal: float) -> None:
        """Sets it."""
        ...

    def CreateImage(self, dx: int, dy: int, nFrames: int, type: _EnumImageType | int, nBitsStored: int, Signed: bool) -> bool:
        """Makes all pixels anew, for `nFrames` frames of `dx` by `dy`. `nBitsStored` bits of a sample count. `Signed` is true at exactly
        -1; then all samples are the least number of these bits at first, otherwise 0.
        """
        ...

    def GetLine(self, nFrame: int, x: int, y: int, dx: int, bufLength: int) -> Any:
        """Gives the bytes of `dx` pixels of line `y` from column `x` on: as many whole pixels as the line has from there, and as fit into
        `bufLength` bytes. `pLine` gets an array of bytes from index 0, a sample of more bytes with its lowest one first.
        """
        ...

    def PutLine(self, nFrame: int, x: int, y: int, dx: int, bufLength: int, pLine: Any) -> bool:
        """Puts them, from an array of bytes of one dimension. What goes beyond the line, `bufLength` or the array is left out."""
        ...

    def Dispose(self) -> bool:
        """Frees the pixels."""
        ...

    def Resize(self, zoom: float) -> bool:
        """Scales all frames. Below 0.3 each new pixel is the mean of those that it covers, otherwise it is interpolated. kNotImplemented for
        IMAGE_GRAY32.
        """
        ...

    def GetMinMax(self) -> tuple[int, int]:
        """The least and the greatest of the first samples, as many as all frames together have lines."""
        ...

    def ApplyVOILut(self, wmin: int, wmax: int) -> bool:
        """Spreads the values from `wmin` to `wmax` over all that BitsStored can hold; both are taken through the modality lookup backwards
        first. Lower values become the least, higher ones the greatest.
        """
        ...

    def ApplyLUT(self, Lut: Object | None) -> bool:
        """Turns gray into colours by an ILut, which is told the range that BitsStored can hold. Null does nothing."""
        ...

    def Invert(self) -> bool:
        """Swaps dark and bright."""
        ...

    def SaveRawFile(self, File: str | PathLike[str] | None) -> bool:
        """Succeeds and does nothing."""
        ...

    def SetModalityLUT(self, rescale: float, intercept: float) -> bool:
        """Sets the pair that leads from samples to values of the modality."""
        ...

    def GetModalityLUT(self) -> tuple[float, float]:
        """Gives that pair; 1 and 0 at first."""
        ...

    def SetInterpolation(self, interpolation: int) -> bool:
        """Whether enlarged pixels are to be smoothed: any number but 0 says so."""
        ...

    def GetInterpolation(self) -> int:
        """1 or 0; 1 in a new image."""
        ...

    def MergeOnDIB(self, hDIB: int, Idx: int, x: int, y: int, viewPars: Object | None, mergeType: _EnumMergeType | int, trasp: float, mask: Any = ...) -> Any:
        """Draws the first frame over the bitmap `hDIB`, which has 32 bits a pixel and stays the caller's. `viewPars` says what is in view, with
        which window and colours; without an ILut there gray is drawn as red. `trasp` is how much it covers, from 0 to 1. Samples of 0
        cover nothing. The other arguments change nothing, and `pVal` is not written.
        Fails with "CImageModule::MergeOnDIB: Bad HDIB handle", "CImageModule::MergeOnDIB: Unsupported DIB format, onli BI_RGB",
        "CImageModule::MergeOnDIB: 32 bits not supported yet"; kNoInterface for `viewPars` that are no IViewParameters.
        """
        ...

    def MergeOnDC(self) -> bool:
        """Succeeds and does nothing."""
        ...

    def RegionGrow(self) -> bool:
        """Succeeds and does nothing."""
        ...

    @property
    def Monochrome1(self) -> bool:
        """Whether low values are bright."""
        ...

    @property
    def Signed(self) -> bool:
        """Whether samples have a sign."""
        ...
    @Signed.setter
    def Signed(self, newVal: bool) -> None:
        """Changes it: half the range is added to every sample."""
        ...

    @property
    def x0(self) -> float:
        """Where the image begins across; 0 at first. Kept for hosts."""
        ...
    @x0.setter
    def x0(self, newVal: float) -> None:
        """Sets it."""
        ...

    @property
    def y0(self) -> float:
        """Where the image begins down; 0 at first. Kept for hosts."""
        ...
    @y0.setter
    def y0(self, newVal: float) -> None:
        """Sets it."""
        ...

    def DrawBlended(self) -> bool:
        """Succeeds and does nothing."""
        ...

    @property
    def Histogram(self) -> Any:
        """How many samples have which value, as an array of numbers of 32 bits, from index 0, with an entry for each value that BitsStored
        can hold. It counts the first line once for each line; of IMAGE_GRAY32 and IMAGE_RGB all entries are 0. Fails with "Cannot
        allocate histogram array".
        """
        ...


@type_check_only
class IViewParameters(Object):
    """Which part of an image is in view, with which window, gamma and colours, and how it is mirrored or turned. It holds no pixels.

    World coordinates are those of the image before it is mirrored or turned, in pixels; window coordinates are pixels of the window
    or bitmap that it is shown in. Nothing is checked: a window without a width has an infinite zoom.
    """
    @property
    def Lut(self) -> Any:
        """The colour lookup, or null. The caller gets a reference of its own."""
        ...
    @Lut.setter
    def Lut(self, newVal: Object | None) -> None:
        """Sets it, with a reference of its own; null takes it away. Any object that can be called by name is accepted here; whether it is
        an ILut counts where the view is drawn. kNoInterface for others.
        """
        ...

    @property
    def x0(self) -> float:
        """The left end of what is in view, in world coordinates; 0 at first, as are the other three."""
        ...
    @x0.setter
    def x0(self, newVal: float) -> None:
        """Sets the left end."""
        ...

    @property
    def y0(self) -> float:
        """The upper end of what is in view."""
        ...
    @y0.setter
    def y0(self, newVal: float) -> None:
        """Sets the upper end."""
        ...

    @property
    def x1(self) -> float:
        """The right end of what is in view."""
        ...
    @x1.setter
    def x1(self, newVal: float) -> None:
        """Sets the right end."""
        ...

    @property
    def y1(self) -> float:
        """The lower end of what is in view."""
        ...
    @y1.setter
    def y1(self, newVal: float) -> None:
        """Sets the lower end."""
        ...

    @property
    def XCenter(self) -> float:
        """The middle of what is in view, across."""
        ...
    @XCenter.setter
    def XCenter(self, newVal: float) -> None:
        """Moves what is in view there, without changing its size."""
        ...

    @property
    def YCenter(self) -> float:
        """The middle of what is in view, down."""
        ...
    @YCenter.setter
    def YCenter(self, newVal: float) -> None:
        """Moves what is in view there, without changing its size."""
        ...

    @property
    def Gamma(self) -> float:
        """The exponent by which gray is bent; at or below 0 it is not. -1 at first."""
        ...
    @Gamma.setter
    def Gamma(self, newVal: float) -> None:
        """Sets it."""
        ...

    @property
    def WindowMin(self) -> int:
        """The value that is shown black. -33000 here and in WindowMax says that no window was chosen yet."""
        ...
    @WindowMin.setter
    def WindowMin(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def WindowMax(self) -> int:
        """The value that is shown white."""
        ...
    @WindowMax.setter
    def WindowMax(self, newVal: int) -> None:
        """Sets it."""
        ...

    @property
    def Flip(self) -> _ImgFlipMode:
        """What was set last."""
        ...
    @Flip.setter
    def Flip(self, newVal: _ImgFlipMode | int) -> None:
        """Mirrors the view in these directions, on top of how it is mirrored and turned already: the same value set twice ends where it began."""
        ...

    @property
    def Invert(self) -> bool:
        """Whether black and white are swapped."""
        ...
    @Invert.setter
    def Invert(self, newVal: bool) -> None:
        """Sets it; any value but 0 is true."""
        ...

    @property
    def UseVoiLut(self) -> bool:
        """Whether the image's own window is to be used. Kept for hosts; true at first."""
        ...
    @UseVoiLut.setter
    def UseVoiLut(self, newVal: bool) -> None:
        """Sets it; any value but 0 is true."""
        ...

    @property
    def UseLUT(self) -> bool:
        """Whether colours are to be used. Kept for hosts: MergeOnDIB draws through a Lut whenever there is one."""
        ...
    @UseLUT.setter
    def UseLUT(self, newVal: bool) -> None:
        """Sets it; any value but 0 is true."""
        ...

    @property
    def Interpolate(self) -> bool:
        """Whether enlarged pixels are to be smoothed. Kept for hosts; true at first."""
        ...
    @Interpolate.setter
    def Interpolate(self, newVal: bool) -> None:
        """Sets it; any value but 0 is true."""
        ...

    class _zoom:
        def __call__(self, dx: int, dy: int) -> float:
            """How many window pixels a world pixel has, for what is in view to fit a window of `dx` by `dy` pixels. By a quarter turn dx and dy
            are swapped first.
            """
            ...
        def __getitem__(self, arguments: Any) -> float: ...
        def __setitem__(self, arguments: Any, value: float) -> None: ...
        def put(self, dx: int, dy: int, zoom: float) -> None:
            """Changes what is in view, around its middle, so that a window of `dx` by `dy` pixels shows it at this zoom. Below 0 nothing changes."""
            ...
    @property
    def zoom(self) -> _zoom: ...

    @property
    def Rotation(self) -> float:
        """Always 0."""
        ...
    @Rotation.setter
    def Rotation(self, newVal: float) -> None:
        """Does nothing."""
        ...

    def Rotate90(self) -> bool:
        """Turns the view by a quarter."""
        ...

    def ResetTransform(self) -> bool:
        """Neither mirrored nor turned any more. Flip keeps its value."""
        ...

    def FlipHorz(self) -> bool:
        """Swaps left and right."""
        ...

    def FlipVert(self) -> bool:
        """Turns the view upside down."""
        ...

    def GetTransform(self) -> tuple[int, int, int, int]:
        """How the view is mirrored and turned, as a matrix of 2 by 2, row by row: 1, 0, 0, 1 where it is not."""
        ...

    def SetTransform(self, m00: int, m01: int, m10: int, m11: int) -> bool:
        """Sets the matrix."""
        ...

    @property
    def ValidView(self) -> bool:
        """Always true."""
        ...

    def TransformWorldToImage(self, ViewDx: int, ViewDy: int, x: float, y: float) -> tuple[float, float]:
        """From window to world, whatever the name says: `x` and `y` are pixels of a window of `ViewDx` by `ViewDy` pixels, and become world
        coordinates.
        """
        ...

    def TransformImageToWorld(self, ViewDx: int, ViewDy: int, x: float, y: float) -> tuple[float, float]:
        """From world to window, whatever the name says: `x` and `y` are world coordinates, and become pixels of a window of `ViewDx` by
        `ViewDy` pixels.
        """
        ...

    def GetWorldViewport(self, ImgDx: int, ImgDy: int) -> tuple[float, float, float, float]:
        """The corners x0, y0 and x1, y1, each taken through TransformWorldToImage for a window of `ImgDx` by `ImgDy` pixels and put in order,
        the smaller one first.
        """
        ...

    def copy(self, pViewPars: Object | None) -> bool:
        """Takes over all of another view but its Flip, whose effect is in the matrix; its Lut is shared. Fails with "CViewParameter::Copy:
        Bad source" for null and for an object that is no IViewParameters.
        """
        ...

    def GetDicomOrientation(self, Orientation: str | PathLike[str] | None) -> str:
        """Where the sides of the view lie in the patient. `Orientation` is that of the image, the letters of the rows, "\\" and those of the
        columns, such as "L\\P"; the answer has the same form. Null where no "\\" is in it.
        """
        ...


@type_check_only
class IVRRecord(Object):
    """A _VR_RECORD_TYPE for calls by name. GetVR gives one."""
    @property
    def Group(self) -> int:
        """The group of the tag; -1 where there was no such element."""
        ...
    @Group.setter
    def Group(self, newVal: int) -> None:
        """Sets the group of the tag."""
        ...

    @property
    def Elem(self) -> int:
        """The element number of the tag; -1 where there was no such element."""
        ...
    @Elem.setter
    def Elem(self, newVal: int) -> None:
        """Sets the element number of the tag."""
        ...

    @property
    def TypeCode(self) -> int:
        """The type: its first letter times 256 plus the second."""
        ...
    @TypeCode.setter
    def TypeCode(self, newVal: int) -> None:
        """Sets the type, of which the low 16 bits count."""
        ...

    @property
    def len(self) -> int:
        """How many bytes the element has, also where they were not loaded; -1 for an undefined length. To set it set `pt`."""
        ...

    @property
    def pt(self) -> Any:
        """The bytes, as an array with one dimension from 0; empty where there are none."""
        ...
    @pt.setter
    def pt(self, newVal: Any) -> None:
        """Sets the bytes, and with them `len`. kTypeMismatch for anything but an array of bytes with one dimension, or an empty value."""
        ...


@type_check_only
class IXDIConsumer(Object):
    """A small server: whatever object is posted to its port comes as an event on the thread that made this, which has to call PumpEvents
    (tessaret/pump.hpp) for them. Making it fails with "Cannot create proxy window" where events cannot be carried.
    """
    def Connect(self, XDIDom: IXDIDomain | None, AETitle: str | PathLike[str] | None, method: _EnumServerType | int) -> bool:
        """Succeeds and does nothing."""
        ...

    def Retrieve(self, StudyInstanceUID: str | PathLike[str] | None, SeriesInstanceUID: str | PathLike[str] | None, SOPInstanceUID: str | PathLike[str] | None, frame: int) -> bool:
        """Succeeds and does nothing: no object is fetched, and no event follows."""
        ...

    def Disconnect(self) -> bool:
        """Succeeds and does nothing; the server goes on listening."""
        ...

    def Listen(self, port: str | PathLike[str] | None) -> bool:
        """Starts the server on `port`, a number as text; one that listens already starts anew. Empty: the port of the user's settings,
        then that of "vandrel.ini" beside the library, then 8080. May come from any thread. Fails with "Cannot create HTTP Server"
        for want of memory; a port that is in use comes as OnError.
        """
        ...


@type_check_only
class IXDIDomain(Object):
    """What is known of the nodes of one domain. No domain is filled yet: every property succeeds and leaves its output as it was, which
    by name gives 0 and empty text.
    """
    @property
    def NumPeers(self) -> int:
        """How many nodes there are."""
        ...

    class _AETitle:
        def __call__(self, Idx: int) -> str:
            """The title of node `Idx`."""
            ...
        def __getitem__(self, arguments: Any) -> str: ...
    @property
    def AETitle(self) -> _AETitle: ...

    class _WadoURL:
        def __call__(self, Idx: int) -> str:
            """Where node `Idx` gives objects over HTTP."""
            ...
        def __getitem__(self, arguments: Any) -> str: ...
    @property
    def WadoURL(self) -> _WadoURL: ...

    class _DicomHost:
        def __call__(self, Idx: int) -> str:
            """The name or address of node `Idx`."""
            ...
        def __getitem__(self, arguments: Any) -> str: ...
    @property
    def DicomHost(self) -> _DicomHost: ...

    class _DicomPort:
        def __call__(self, Idx: int) -> str:
            """The port of node `Idx`, as text like every port."""
            ...
        def __getitem__(self, arguments: Any) -> str: ...
    @property
    def DicomPort(self) -> _DicomPort: ...

    class _PeerIdx:
        def __call__(self, AETitle: str | PathLike[str] | None) -> int:
            """The index of the node with this title."""
            ...
        def __getitem__(self, arguments: Any) -> int: ...
    @property
    def PeerIdx(self) -> _PeerIdx: ...
