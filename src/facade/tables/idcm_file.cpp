// Made by scripts/make_interface_tables.py from include/tessaret/idcm_file.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_file.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmFile>() {
using I = IDcmFile;

static constexpr auto kArguments0 = Signature<decltype(&I::LoadFile)>::Describe({{{"FileName", ArgumentFlow::kIn}, {"Options", ArgumentFlow::kOptional}, {"Encoding", ArgumentFlow::kOptional, 0, "_EnumDataEncoding"}}});
static constexpr auto kArguments1 = Signature<decltype(&I::LoadDescriptor)>::Describe({{{"Descriptor", ArgumentFlow::kIn}, {"Options", ArgumentFlow::kOptional}, {"Encoding", ArgumentFlow::kOptional, 0, "_EnumDataEncoding"}}});
static constexpr auto kArguments2 = Signature<decltype(&I::LoadBytes)>::Describe({{{"Bytes", ArgumentFlow::kIn}, {"Options", ArgumentFlow::kOptional}, {"Encoding", ArgumentFlow::kOptional, 0, "_EnumDataEncoding"}}});
static constexpr auto kArguments3 = Signature<decltype(&I::get_ReadEncoding)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_EnumDataEncoding"}}});
static constexpr auto kArguments4 = Signature<decltype(&I::get_HasMark)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::get_BytesRead)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments6 = Signature<decltype(&I::get_NamedSyntax)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments7 = Signature<decltype(&I::get_NamedEncoding)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_EnumDataEncoding"}}});
static constexpr auto kArguments8 = Signature<decltype(&I::GetFirstTag)>::Describe({{{"Group", ArgumentFlow::kOut}, {"Element", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments9 = Signature<decltype(&I::GetMetaLength)>::Describe({{{"Stated", ArgumentFlow::kOut}, {"Counted", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments10 = Signature<decltype(&I::GetEnd)>::Describe({{{"Offset", ArgumentFlow::kOut}, {"Group", ArgumentFlow::kOut}, {"Element", ArgumentFlow::kOut}, {"End", ArgumentFlow::kResult, 0, "_EnumReadingEnd"}}});
static constexpr auto kArguments11 = Signature<decltype(&I::get_SystemError)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments12 = Signature<decltype(&I::get_OdditiesCount)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments13 = Signature<decltype(&I::GetOddity)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"Offset", ArgumentFlow::kOut}, {"Group", ArgumentFlow::kOut}, {"Element", ArgumentFlow::kOut}, {"Kind", ArgumentFlow::kResult, 0, "_EnumReadingOddity"}}});
static constexpr auto kArguments14 = Signature<decltype(&I::SaveFile)>::Describe({{{"FileName", ArgumentFlow::kIn}, {"Form", ArgumentFlow::kOptional, 0, "_EnumSaveForm"}, {"Options", ArgumentFlow::kOptional}}});
static constexpr auto kArguments15 = Signature<decltype(&I::SaveBytes)>::Describe({{{"Form", ArgumentFlow::kOptional, 0, "_EnumSaveForm"}, {"Options", ArgumentFlow::kOptional}, {"Bytes", ArgumentFlow::kResult}}});
static constexpr auto kArguments16 = Signature<decltype(&I::GetElement)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kOut}, {"Length", ArgumentFlow::kOut}, {"Offset", ArgumentFlow::kOut}, {"HasValue", ArgumentFlow::kOut}, {"ItemsCount", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments17 = Signature<decltype(&I::GetListing)>::Describe({{{"Levels", ArgumentFlow::kOut}, {"Tags", ArgumentFlow::kOut}, {"TypeCodes", ArgumentFlow::kOut}, {"Lengths", ArgumentFlow::kOut}, {"Offsets", ArgumentFlow::kOut}, {"HaveValues", ArgumentFlow::kOut}, {"ItemsCounts", ArgumentFlow::kOut}, {"Count", ArgumentFlow::kResult}}});
static constexpr auto kArguments18 = Signature<decltype(&I::GetBytes)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"Offset", ArgumentFlow::kIn}, {"Count", ArgumentFlow::kIn}, {"Bytes", ArgumentFlow::kResult}}});
static constexpr auto kArguments19 = Signature<decltype(&I::SetType)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kIn}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments20 = Signature<decltype(&I::get_HasPixelsOfDoubtfulOrder)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments21 = Signature<decltype(&I::get_Text)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments22 = Signature<decltype(&I::GetElementText)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"FirstLine", ArgumentFlow::kOptional}, {"Room", ArgumentFlow::kOptional}, {"Text", ArgumentFlow::kResult}}});
static constexpr auto kArguments23 = Signature<decltype(&I::get_Refusal)>::Describe({{{"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"LoadFile", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Loads a file. `Options` is a sum of _EnumLoadOption; `Encoding` says that there is a bare data set in that\n"
        "encoding, and otherwise, by preamble, meta header and the first element, the bytes tell. Compressed pixel data\n"
        "stays compressed. Numbers are turned to those of the host. kInvalidArgument, with nothing changed, for options\n"
        "and encodings that do not exist, for LOAD_STRICT together with an encoding, and for LOAD_PIXELS together with\n"
        "LOAD_SKIPS_PIXELS; kException with the words of the reader or the system where nothing can be read."},
{"LoadDescriptor", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Loads likewise from an open file, pipe or socket of this process, beginning where it stands. `Descriptor` stays\n"
        "the caller's; where it stands afterwards is not said."},
{"LoadBytes", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Loads likewise from an array of bytes with one dimension, of at most 2147483647; an empty value is no bytes.\n"
        "kTypeMismatch, with nothing changed, for anything else."},
{"ReadEncoding", MemberKind::kGet, kArguments3.data(), kArguments3.size(), "How the data set was encoded that was read last; how the meta header was where no data set followed.\n"
        "ENCODING_NONE before the first load, and where not even a byte could be read."},
{"HasMark", MemberKind::kGet, kArguments4.data(), kArguments4.size(), "Whether there was a preamble with the mark \"DICM\" behind it."},
{"BytesRead", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "How many bytes the reader went through, preamble and mark included, modulo 4 GiB."},
{"NamedSyntax", MemberKind::kGet, kArguments6.data(), kArguments6.size(), "The transfer syntax that the meta header names, without padding, whether or not the reader followed it; \"\" where\n"
        "it names none."},
{"NamedEncoding", MemberKind::kGet, kArguments7.data(), kArguments7.size(), "How a data set in that transfer syntax is encoded: what the reader was to follow. ENCODING_NONE where none is named,\n"
        "and for one that the library does not know."},
{"GetFirstTag", MemberKind::kMethod, kArguments8.data(), kArguments8.size(), "The tag that stands first, preamble and mark aside. False, with nothing written, where there are not enough\n"
        "bytes for one."},
{"GetMetaLength", MemberKind::kMethod, kArguments9.data(), kArguments9.size(), "The length of the meta header behind (0002,0000): `Stated` by that element, and `Counted` in bytes up to the\n"
        "first element of another group. False, with nothing written, where there is no such element or the end of the\n"
        "group was not seen."},
{"GetEnd", MemberKind::kMethod, kArguments10.data(), kArguments10.size(), "Why the reader stopped, where, and in which element. `Offset` is that of the element; with a tag of zeros it is the end\n"
        "of the bytes where a delimiter is missing, and where a sequence or an item that is too deep begins within its element.\n"
        "After READ_TO_THE_END all three are 0."},
{"SystemError", MemberKind::kGet, kArguments11.data(), kArguments11.size(), "What the system said when it could not supply the bytes; \"\" where it could. A file that it cuts short looks like\n"
        "one that is cut."},
{"OdditiesCount", MemberKind::kGet, kArguments12.data(), kArguments12.size(), "How many kinds of oddities were met."},
{"GetOddity", MemberKind::kMethod, kArguments13.data(), kArguments13.size(), "Kind number `Idx` of them, from 0 in the order in which they came, and the offset and tag of the first element\n"
        "or item of that kind. ODDITY_NONE, with nothing written, where there is none of this number."},
{"SaveFile", MemberKind::kMethod, kArguments14.data(), kArguments14.size(), "Saves as a file; the object stays as it is. `Form`, SAVE_COMPLETE where it is left away, says what is written,\n"
        "`Options` is a sum of _EnumSaveOption. What was at `FileName` stays where the new file cannot be written whole:\n"
        "kException, with the words of the encoder or the system, or \"Empty object\": \"VR(7FE0,0010) was stepped over when it was\n"
        "read\" is what comes of LOAD_SKIPS_PIXELS. kInvalidArgument for forms and options that do not exist."},
{"SaveBytes", MemberKind::kMethod, kArguments15.data(), kArguments15.size(), "The bytes of that file, as an array with one dimension from 0. Options that speak of files mean nothing here."},
{"GetElement", MemberKind::kMethod, kArguments16.data(), kArguments16.size(), "An element as it is stored; unlike the members of IDCMObject this gives no type to one that has none. `TypeCode`\n"
        "gets its two characters as they stood in the file, \"\" for none; `Length` the bytes of its value, -1 for an\n"
        "undefined length, of a sequence as it was read, 0 where it was undefined; `Offset` where it stood among the\n"
        "bytes read, 0 where it was not read; `HasValue` whether its bytes are here, which those of pixel data may not\n"
        "be; `ItemsCount` how many items or fragments it has. An item outside any sequence hangs on an element with a\n"
        "value. False, with nothing written, where there is no such element."},
{"GetListing", MemberKind::kMethod, kArguments17.data(), kArguments17.size(), "All elements, those in items at every depth too, and the items themselves, as they follow one another in a file:\n"
        "seven arrays with one dimension from 0, in which the same index stands for the same element or item. `Levels`\n"
        "(longs) is 0 for the elements of this data set, and one more for an item, and what is in it, than for the element\n"
        "that holds it. `Tags` (doubles) is group * 65536 + element, `TypeCodes` (longs) the first character of the type *\n"
        "256 + the second, 0 for none; `Lengths`, `Offsets` (doubles), `HaveValues` (booleans) and `ItemsCounts` (longs)\n"
        "are what GetElement tells. For an item the tag is (FFFE,E000), `Lengths` the number of its elements, and\n"
        "`ItemsCounts` -1, which tells it from a fragment of pixel data. All are empty where there are no elements."},
{"GetBytes", MemberKind::kMethod, kArguments18.data(), kArguments18.size(), "At most `Count` bytes of the value of an element from its byte `Offset` on, as an array with one dimension from\n"
        "0: fewer where the value ends before, or what is here of one that LOAD_SKIPS_PIXELS stepped over. Empty where there are\n"
        "none. kInvalidArgument for a negative `Count`, and an `Offset` that is negative or no whole number."},
{"SetType", MemberKind::kMethod, kArguments19.data(), kArguments19.size(), "Gives an element another type, with its bytes as they are. `TypeCode` is two characters; kInvalidArgument for\n"
        "any other text. False where there is no such element."},
{"HasPixelsOfDoubtfulOrder", MemberKind::kGet, kArguments20.data(), kArguments20.size(), "Whether there is native pixel data with more bits a sample than the numbers of its type have. Programs write\n"
        "such pixels in big endian in two ways, and nothing in a file tells which was meant."},
{"Text", MemberKind::kGet, kArguments21.data(), kArguments21.size(), "The data set as text, for people: a line an element, with items set in, each line with its end. A character a\n"
        "byte: text of values stands as it is, but for control characters, which are dots. kException \"Empty object\"."},
{"GetElementText", MemberKind::kMethod, kArguments22.data(), kArguments22.size(), "The lines of that text for one element with all that is in it; \"\" where there is no such element, kException\n"
        "\"Empty object\". Set in by their depth, all lines may take many times the memory of the data set: parts of them begin\n"
        "with line `FirstLine`, counted from 0, and end behind the line with which they have `Room` characters or more; one\n"
        "with fewer is the last. A `Room` of 0 has no end. kInvalidArgument where one of both is negative."},
{"Refusal", MemberKind::kGet, kArguments23.data(), kArguments23.size(), "Why the last Translate of IDCMObject answered false, which is no failure: the words of the engine or of the codec that\n"
        "cannot hold this object. \"\" where it answered true or failed, and before the first."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::LoadFile>,
&CallMember<&I::LoadDescriptor>,
&CallMember<&I::LoadBytes>,
&CallMember<&I::get_ReadEncoding>,
&CallMember<&I::get_HasMark>,
&CallMember<&I::get_BytesRead>,
&CallMember<&I::get_NamedSyntax>,
&CallMember<&I::get_NamedEncoding>,
&CallMember<&I::GetFirstTag>,
&CallMember<&I::GetMetaLength>,
&CallMember<&I::GetEnd>,
&CallMember<&I::get_SystemError>,
&CallMember<&I::get_OdditiesCount>,
&CallMember<&I::GetOddity>,
&CallMember<&I::SaveFile>,
&CallMember<&I::SaveBytes>,
&CallMember<&I::GetElement>,
&CallMember<&I::GetListing>,
&CallMember<&I::GetBytes>,
&CallMember<&I::SetType>,
&CallMember<&I::get_HasPixelsOfDoubtfulOrder>,
&CallMember<&I::get_Text>,
&CallMember<&I::GetElementText>,
&CallMember<&I::get_Refusal>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 24, "For hosts that look closely at files. Every IDCMObject of the library has it: `object.As<IDcmFile>()`.\n"
        "\n"
        "A load puts what it reads in place of what was here, which is gone also when it fails. What was read before the\n"
        "bytes ended or stopped making sense is there, and the notes say where that was; IDCMObject.Load leaves them too.\n"
        "They stay until the next load, whatever is done to the data set in between, and are told of this object only, not\n"
        "of its items and copies.\n"
        "\n"
        "Offsets count from the first byte that was read, the preamble included, modulo 4 GiB. Of Group and Element the low\n"
        "16 bits count. Failures with words have the source \"Tessaret.DCMObject\". Every member answers kPointer for a place\n"
        "of an answer that is null, and kOutOfMemory with \"Not enough memory\" where it says nothing else."}, kCalls};
return kTable;
}

}  // namespace tessaret
