// Made by scripts/make_interface_tables.py from include/tessaret/idcm_object.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_object.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDCMObject>() {
using I = IDCMObject;

static constexpr auto kArguments0 = Signature<decltype(&I::get_VR)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kOptional}, {"VM", ArgumentFlow::kOptional}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::put_VR)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kOptional}, {"VM", ArgumentFlow::kOptional}, {"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::get_VRMultiplicity)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::Clear)>::Describe({});
static constexpr auto kArguments4 = Signature<decltype(&I::copy)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::Set)>::Describe({{{"Object", ArgumentFlow::kIn}}});
static constexpr auto kArguments6 = Signature<decltype(&I::Save)>::Describe({{{"FileName", ArgumentFlow::kIn}}});
static constexpr auto kArguments7 = Signature<decltype(&I::Load)>::Describe({{{"FileName", ArgumentFlow::kIn}, {"LoadPixels", ArgumentFlow::kIn}}});
static constexpr auto kArguments8 = Signature<decltype(&I::get_SequencesCount)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments9 = Signature<decltype(&I::get_Sequence)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments10 = Signature<decltype(&I::putref_Sequence)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"Idx", ArgumentFlow::kIn}, {"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments11 = Signature<decltype(&I::GetVRDescr)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Elem", ArgumentFlow::kIn}, {"Descr", ArgumentFlow::kOut}, {"TypeCode", ArgumentFlow::kOut}, {"Length", ArgumentFlow::kOut}, {"VM", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments12 = Signature<decltype(&I::RemoveVR)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"Removed", ArgumentFlow::kResult}}});
static constexpr auto kArguments13 = Signature<decltype(&I::RemoveSequence)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"Idx", ArgumentFlow::kIn}, {"Removed", ArgumentFlow::kResult}}});
static constexpr auto kArguments14 = Signature<decltype(&I::Send)>::Describe({{{"host", ArgumentFlow::kIn}, {"port", ArgumentFlow::kIn}, {"LocalAETitle", ArgumentFlow::kIn}, {"RemoteAETitle", ArgumentFlow::kIn}, {"GetOwnership", ArgumentFlow::kOptional}, {"Sent", ArgumentFlow::kResult}}});
static constexpr auto kArguments15 = Signature<decltype(&I::PutVRRawString)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Elem", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kIn}, {"val", ArgumentFlow::kIn}}});
static constexpr auto kArguments16 = Signature<decltype(&I::GetVRRawString)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Elem", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kOut}, {"val", ArgumentFlow::kOut}}});
static constexpr auto kArguments17 = Signature<decltype(&I::GetFirstVR)>::Describe({{{"Group", ArgumentFlow::kOut}, {"Element", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments18 = Signature<decltype(&I::GetNextVR)>::Describe({{{"Group", ArgumentFlow::kInOut}, {"Element", ArgumentFlow::kInOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments19 = Signature<decltype(&I::Translate)>::Describe({{{"trSyntax", ArgumentFlow::kOptional}, {"Done", ArgumentFlow::kResult}}});
static constexpr auto kArguments20 = Signature<decltype(&I::GetVRData)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kOut}, {"BinArray", ArgumentFlow::kOut}}});
static constexpr auto kArguments21 = Signature<decltype(&I::PutVRData)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kIn}, {"BinArray", ArgumentFlow::kIn}}});
static constexpr auto kArguments22 = Signature<decltype(&I::IntersectPlane)>::Describe({{{"pIObj", ArgumentFlow::kIn}, {"Pixels", ArgumentFlow::kIn}, {"Coplanar", ArgumentFlow::kOut}, {"p0", ArgumentFlow::kOut}, {"p1", ArgumentFlow::kOut}, {"bExists", ArgumentFlow::kResult}}});
static constexpr auto kArguments23 = Signature<decltype(&I::CreateSecondaryCapture)>::Describe({{{"pIRefDcm", ArgumentFlow::kIn}, {"pIPic", ArgumentFlow::kIn}}});
static constexpr auto kArguments24 = Signature<decltype(&I::AddOverlay)>::Describe({{{"ovlIndex", ArgumentFlow::kOut}, {"x0", ArgumentFlow::kIn}, {"y0", ArgumentFlow::kIn}, {"x1", ArgumentFlow::kIn}, {"y1", ArgumentFlow::kIn}, {"type", ArgumentFlow::kIn}, {"description", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"VR", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "A value of an element; empty where there is no such element or value, but a string with nothing in it for a text that an\n"
        "element with others does not have. A TypeCode replaces the type of the element for good, so that an element of type UN can be\n"
        "read as what it is. kException \"Error: VR type ST,LT and UT have VM=1\" for another VM in these."},
{"VR", MemberKind::kPut, kArguments1.data(), kArguments1.size(), "Sets a value of an element, which is added where there is none; an empty value leaves it without bytes. TypeCode counts for an\n"
        "element without a type. Values behind the end are appended. Texts are cut to the length that their type allows. kException\n"
        "\"Error converting VARIANT to VR type\" for a value that cannot be turned into the type and for an element with items, the words\n"
        "above for a VM, and \"No data object\": the element is as it was. One of type SQ takes no value: it stays as it is, or is added\n"
        "without items, and that is no failure."},
{"VRMultiplicity", MemberKind::kGet, kArguments2.data(), kArguments2.size(), "How many values an element has: 0 for one that is not there, 1 for types that are not divided."},
{"Clear", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "Removes all elements. Where there is no data set, an empty one is there afterwards."},
{"copy", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "A new object with a copy of everything, independent at every depth."},
{"Set", MemberKind::kMethod, kArguments5.data(), kArguments5.size(), "Makes this a copy of `Object`, which stays as it is. kPointer for none, and the answer of one that does not give its\n"
        "IDcmObjectManager: nothing has changed then."},
{"Save", MemberKind::kMethod, kArguments6.data(), kArguments6.size(), "Saves as a file with meta header, in the transfer syntax of (0002,0010), or implicit little endian where that is not there. Pixel\n"
        "data goes out as it stands. What was at `FileName` stays where the new file cannot be written whole: kException, with the words of\n"
        "the encoder or the system, or \"Empty object\". An explicit syntax has no place for more than 65535 bytes in types other than OB,\n"
        "OW, UN and UT: a longer value makes what follows it unreadable. OD, OF, OL, OV, SV, UC, UR and UV are among these, for which other\n"
        "programs expect a longer head. An element of type UN that the dictionary knows goes out with the type that it has there, one of\n"
        "these too, where its length fits; IDcmFile.SaveFile with SAVE_KEEPS_TYPES leaves it UN."},
{"Load", MemberKind::kMethod, kArguments7.data(), kArguments7.size(), "Loads a file. What was here is gone, also when it fails. With LoadPixels exactly true (-1) the pixel data is there and native, and\n"
        "(0002,0010) says so; otherwise (7FE0,0010) comes without bytes and the file is not read beyond it. A file that ends early is there\n"
        "as far as it goes. kException with the words of the reader where nothing can be read, \"Unsupported Encapsulated Transfer Syntax\"\n"
        "where no codec turns the pixel data native: the object is there then, still compressed; \"Not a DICOM FILE\" for anything unforeseen."},
{"SequencesCount", MemberKind::kGet, kArguments8.data(), kArguments8.size(), "How many items an element has; 32767 where there are more."},
{"Sequence", MemberKind::kGet, kArguments9.data(), kArguments9.size(), "Item `Idx` of an element, from 0; none where there is no such item. The item belongs to this object, which lives as long as what is\n"
        "given here; once it is removed or replaced, that has no data set any more."},
{"Sequence", MemberKind::kPutRef, kArguments10.data(), kArguments10.size(), "Makes the data set of `newVal` item `Idx` of an element: in place of the one that is there, or behind the last one where there is\n"
        "none of this number. The element is added where it is not there; with no `newVal` nothing else happens. `newVal` shows the item\n"
        "from then on and no longer owns it. Where it fails nothing has changed: kInvalidArgument for a `newVal` that does not own its data\n"
        "set, or in which this object lies; the answer of one that does not give its IDcmObjectManager; kException \"No data object\", \"The\n"
        "element holds a value: remove it first\"."},
{"GetVRDescr", MemberKind::kMethod, kArguments11.data(), kArguments11.size(), "What an element is: `Descr` is its name in the dictionary, `TypeCode` the two letters of its type, `Length` its bytes (-1 for an\n"
        "undefined length), `VM` the number of its values, 0 for OB, OW and UN. False where there is no such element; `VM` is 0 then and the\n"
        "rest untouched."},
{"RemoveVR", MemberKind::kMethod, kArguments12.data(), kArguments12.size(), "Removes an element. `Removed` is never written."},
{"RemoveSequence", MemberKind::kMethod, kArguments13.data(), kArguments13.size(), "Does nothing. `Removed` is never written."},
{"Send", MemberKind::kMethod, kArguments14.data(), kArguments14.size(), "Sends the data set to a remote node with C-STORE, over an association of its own, which is made and released within the call;\n"
        "an answer may take 300 seconds. `host` is a name or an address, `port` a number or a service as text, the titles have up to 16\n"
        "characters. The object stays as it is, and `GetOwnership` has no effect. Pixel data in fragments is sent as it is where the node\n"
        "takes its transfer syntax, and native otherwise. True when the node answered, whatever the status of the answer.\n"
        "Fails with \"Missing SOP Class for C-STORE\" without a usable (0008,0016), where no association comes about with the words of\n"
        "IDcmCStore::SendFiles, and with \"Error during transfer\"."},
{"PutVRRawString", MemberKind::kMethod, kArguments15.data(), kArguments15.size(), "Replaces the whole value of an element by `val`, a byte a character, as it is: nothing is padded or cut. The element is added where\n"
        "there is none. TypeCode counts for an element without a type. kException \"No data object\", \"The element holds items: remove it\n"
        "first\"."},
{"GetVRRawString", MemberKind::kMethod, kArguments16.data(), kArguments16.size(), "The whole value of an element as text, padding and backslashes included; \"\" where there is none. `TypeCode` is never written.\n"
        "kException \"Cannot convert VR to raw ASCII\" for an element that holds no text."},
{"GetFirstVR", MemberKind::kMethod, kArguments17.data(), kArguments17.size(), "The lowest tag. False, with nothing written, for an empty object."},
{"GetNextVR", MemberKind::kMethod, kArguments18.data(), kArguments18.size(), "The tag behind the one that is given, in the same place. False, with nothing written, where the tag given is the last one or not\n"
        "there."},
{"Translate", MemberKind::kMethod, kArguments19.data(), kArguments19.size(), "Turns the pixel data, here in memory, into another transfer syntax, and names it in (0002,0010). Without `trSyntax` it becomes\n"
        "native, and `Done` is not written. `trSyntax` is a UID, which a NUL ends. False, with the pixel data native, where no codec serves the\n"
        "syntax for this image. True, with nothing done, for pixel data without bytes. kException with the words of the codec, or \"No data\n"
        "object\": the pixel data is compressed as before where it cannot become native, and native where it cannot be compressed."},
{"GetVRData", MemberKind::kMethod, kArguments20.data(), kArguments20.size(), "The bytes of an element, as an array with one dimension from 0; empty where it has none. `TypeCode` gets its two letters.\n"
        "kException \"Empty object\", \"Non existing VR\", \"Not enough memory for VR Data\"."},
{"PutVRData", MemberKind::kMethod, kArguments21.data(), kArguments21.size(), "Replaces the bytes of an element by those of an array with one dimension, as they are; the element is added where there is none. Its\n"
        "type becomes the first two characters of TypeCode, whatever it was; 0 for an empty text. kException \"No data object\", \"Only BYTE\n"
        "vectors allowed\", \"PutVRData: Only 1 dim BYTE vectors allowed\", \"The element holds items: remove it first\"."},
{"IntersectPlane", MemberKind::kMethod, kArguments22.data(), kArguments22.size(), "The line in which this image and another one meet. Not available in this version: kNotImplemented, with words. With `Pixels` exactly\n"
        "true the ends `p0` and `p1` will be in pixels of this image, otherwise in patient millimetres: arrays of three floats."},
{"CreateSecondaryCapture", MemberKind::kMethod, kArguments23.data(), kArguments23.size(), "Makes this a Secondary Capture image of a picture, with the patient and study of `pIRefDcm`. Not available in this version:\n"
        "kNotImplemented, with words."},
{"AddOverlay", MemberKind::kMethod, kArguments24.data(), kArguments24.size(), "Adds an overlay plane of what is drawn in the event OnDrawOverlay, within x0 to x1 and y0 to y1, both inclusive. Not available in\n"
        "this version: kNotImplemented, with words."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_VR>,
&CallMember<&I::put_VR>,
&CallMember<&I::get_VRMultiplicity>,
&CallMember<&I::Clear>,
&CallMember<&I::copy>,
&CallMember<&I::Set>,
&CallMember<&I::Save>,
&CallMember<&I::Load>,
&CallMember<&I::get_SequencesCount>,
&CallMember<&I::get_Sequence>,
&CallMember<&I::putref_Sequence>,
&CallMember<&I::GetVRDescr>,
&CallMember<&I::RemoveVR>,
&CallMember<&I::RemoveSequence>,
&CallMember<&I::Send>,
&CallMember<&I::PutVRRawString>,
&CallMember<&I::GetVRRawString>,
&CallMember<&I::GetFirstVR>,
&CallMember<&I::GetNextVR>,
&CallMember<&I::Translate>,
&CallMember<&I::GetVRData>,
&CallMember<&I::PutVRData>,
&CallMember<&I::IntersectPlane>,
&CallMember<&I::CreateSecondaryCapture>,
&CallMember<&I::AddOverlay>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 25, "A data set: a file, a command or an item of a sequence. An object is empty when it is made, and always has the data set in it; only\n"
        "after a failed Load, or when the item that it showed is gone, there is none.\n"
        "\n"
        "A tag is given as Group and Element, of which the low 16 bits count. TypeCode is the two letters of a value representation such as\n"
        "\"PN\"; texts of fewer letters, and values that are no text, count as none, and so do longer ones for an element that is added. Where no\n"
        "type is given for an element that has none yet, it comes from the dictionary. VM is the number of a value within its element, from 0.\n"
        "Values travel as DICOM PS3.5, 6.2 has them:\n"
        "\n"
        "| Types | Value |\n"
        "|---|---|\n"
        "| AE AS CS LO LT PN SH ST UI UT | string, a character a byte of the file, without padding at its end |\n"
        "| IS, SL, US, AT | long; of an AT group and element are values of their own |\n"
        "| SS | short |\n"
        "| DS, FD, UL | double; a DS that is put gets six digits behind its point, a UL that is put is a long |\n"
        "| FL | float |\n"
        "| DA, DT | date |\n"
        "| TM | string such as 14:05:06; a string that is put has the form 14:05:06.250 |\n"
        "| all others | array of bytes: the whole value, whatever VM is |\n"
        "\n"
        "Numbers are those of the host, also where the file was big endian; OW are numbers of 16 bits, whatever the pixels are. Failures with\n"
        "words have the source \"Tessaret.DCMObject\". Every member answers kPointer for a place of an answer that is null, unless it says\n"
        "that it never writes there, and kOutOfMemory with \"Not enough memory\" where it says nothing else."}, kCalls};
return kTable;
}

}  // namespace tessaret
