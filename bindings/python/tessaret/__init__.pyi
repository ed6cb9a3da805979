# Made by scripts/make_python_stubs.py from include/tessaret and _general.pyi.in; not to be edited.
from collections.abc import Callable
from datetime import date, datetime
from enum import IntEnum
from os import PathLike
from typing import Any, Final, Literal, Never, overload, type_check_only

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
    def __enter__(self) -> Connection: ...
    def __exit__(self, *_: object) -> None: ...

class Object:
    def query(self, interface: str) -> Any: ...
    def on(self, event: str, function: Callable[..., object]) -> Connection: ...
    def close(self) -> None: ...
    def __enter__(self) -> Any: ...
    def __exit__(self, *_: object) -> None: ...

def can_unload() -> bool: ...
def pump(timeout: float | None = ...) -> int: ...
def events_descriptor() -> int: ...

@overload
def create(name: Literal["Tessaret.DcmDictionary", "Tessaret.DcmDictionary.1"]) -> IDcmDictionary: ...
@overload
def create(name: Literal["Tessaret.DCMObject", "Tessaret.DCMObject.1"]) -> IDCMObject: ...
@overload
def create(name: Literal["Tessaret.DCMOptions", "Tessaret.DCMOptions.1"]) -> IDCMOptions: ...
@overload
def create(name: str) -> Any: ...

@type_check_only
class IDataSetHandle(Object):
    """A data set for calls by name. IDcmObjectManager.GetPtr gives one, and PutPtr takes it."""
    @property
    def IsAlive(self) -> bool:
        """Whether the data set still exists."""
        ...


@type_check_only
class IDcmDictionary(Object):
    """The dictionaries that the library loaded when it started. They never change, so that any thread may ask."""
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
class IDCMObject(Object):
    """A data set: a file, a command or an item of a sequence. An object is empty when it is made, and always has the data set in it; only
    after a failed Load, or when the item that it showed is gone, there is none.

    A tag is given as Group and Element, of which the low 16 bits count. TypeCode is the two letters of a value representation such as
    "PN"; texts of fewer letters, and values that are no text, count as none. Where no type is given for an element that has none yet,
    it comes from the dictionary. VM is the number of a value within its element, from 0. Values travel as DICOM PS3.5, 6.2 has them:

    | Types | Value |
    |---|---|
    | AE AS CS LO LT PN SH ST UI UT | string, a character a byte of the file, without padding at its end |
    | IS, SL, US, AT | long; of an AT group and element are values of their own |
    | SS | short |
    | DS, FD, UL | double |
    | FL | float |
    | DA, DT | date |
    | TM | string such as 14:05:06; a string that is put has the form 14:05:06.250 |
    | all others | array of bytes: the whole value, whatever VM is |

    Numbers are those of the host, also where the file was big endian. Failures with words have the source "Tessaret.DCMObject".
    """
    class _VR:
        def __call__(self, Group: int, Element: int, TypeCode: Any = ..., VM: int | None = ...) -> Any:
            """A value of an element; empty where there is no such element or value. A TypeCode replaces the type of the element for good, so
            that an element of type UN can be read as what it is. kException "Error: VR type ST,LT and UT have VM=1" for another VM in these.
            """
            ...
        def __getitem__(self, arguments: Any) -> Any: ...
        def __setitem__(self, arguments: Any, value: Any) -> None: ...
        def put(self, Group: int, Element: int, TypeCode: Any = ..., VM: int | None = ..., newVal: Any = ...) -> None:
            """Sets a value of an element, which is added where there is none; an empty value leaves it without bytes. TypeCode counts for an
            element without a type. Values behind the end are appended. Texts are cut to the length that their type allows. kException
            "Error converting VARIANT to VR type" for a value that cannot be turned into the type, the words above for a VM, and "No data
            object": the element is as it was.
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
        """Makes this a copy of `Object`, which stays as it is. kPointer for none."""
        ...

    def Save(self, FileName: str | PathLike[str] | None) -> bool:
        """Saves as a file with meta header, in the transfer syntax of (0002,0010), or implicit little endian where that is not there. Pixel
        data goes out as it stands. What was at `FileName` stays where the new file cannot be written whole: kException, with the words of
        the encoder or the system.
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
            none of this number. The element is added where it is not there; with no `newVal` nothing else happens. `newVal` shows the item from then on and no longer owns it.
            kInvalidArgument where `newVal` does not own its data set, or this object lies in it, and nothing has changed;
            kException "No data object".
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

    def Send(self, host: str | PathLike[str] | None, port: int, LocalAETitle: str | PathLike[str] | None, RemoteAETitle: str | PathLike[str] | None, GetOwnership: bool | None = ...) -> bool:
        """Sends the data set to a remote node with C-STORE. Not available in this version: kNotImplemented, with words."""
        ...

    def PutVRRawString(self, Group: int, Elem: int, TypeCode: str | PathLike[str] | None, val: str | PathLike[str] | None) -> bool:
        """Replaces the whole value of an element by `val`, a byte a character, as it is: nothing is padded or cut. The element is added where
        there is none. TypeCode counts for an element without a type. kException "No data object".
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
        native, and `Done` is not written. False, with the pixel data native, where no codec serves the syntax for this image. kException
        with the words of the codec.
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
        vectors allowed", "PutVRData: Only 1 dim BYTE vectors allowed".
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
        """Shows another data set; the one that was here is destroyed if it was owned. With SetOwnership other than 0 this object becomes the
        owner; kInvalidArgument, with nothing changed, where the data set belongs to another object or to a sequence, and by name
        where the handle does not own it.
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
        """How many bytes there are; -1 for an undefined length. To set it set `pt`."""
        ...

    @property
    def pt(self) -> Any:
        """The bytes, as an array with one dimension from 0; empty where there are none."""
        ...
    @pt.setter
    def pt(self, newVal: Any) -> None:
        """Sets the bytes, and with them `len`. kTypeMismatch for anything but an array of bytes with one dimension, or an empty value."""
        ...
