// Made by scripts/make_interface_tables.py from include/tessaret/idcm_dictionary_file.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_dictionary_file.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmDictionaryFile>() {
using I = IDcmDictionaryFile;

static constexpr auto kArguments0 = Signature<decltype(&I::LoadFile)>::Describe({{{"FileName", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::LoadBytes)>::Describe({{{"Bytes", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::Unload)>::Describe({});
static constexpr auto kArguments3 = Signature<decltype(&I::get_ElementsCount)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments4 = Signature<decltype(&I::GetElementAt)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"Group", ArgumentFlow::kOut}, {"Element", ArgumentFlow::kOut}, {"TypeCode", ArgumentFlow::kOut}, {"description", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::get_UIDsCount)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments6 = Signature<decltype(&I::GetUIDAt)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"UID", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments7 = Signature<decltype(&I::GetBytes)>::Describe({{{"Binary", ArgumentFlow::kIn}, {"Bytes", ArgumentFlow::kResult}}});
static constexpr auto kArguments8 = Signature<decltype(&I::SaveFile)>::Describe({{{"FileName", ArgumentFlow::kIn}, {"Binary", ArgumentFlow::kIn}, {"KeepsFiles", ArgumentFlow::kOptional}}});

static constexpr MemberInfo kMembers[] = {
{"LoadFile", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Loads a dictionary file of either form. kException \"Error reading [FileName]: \" with the line and the reason, or\n"
        "the words of the system, where it cannot be read or has no entry: what was here stays."},
{"LoadBytes", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Loads likewise from an array of bytes with one dimension; the words are \"Error reading dictionary: \" and the\n"
        "reason. kTypeMismatch for anything else."},
{"Unload", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Goes back to the library's dictionary."},
{"ElementsCount", MemberKind::kGet, kArguments3.data(), kArguments3.size(), "How many elements the dictionary has."},
{"GetElementAt", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "Element `Idx` in the order of tags, from 0: its tag, the two letters of its type, and its name, \"\" without one.\n"
        "False, with nothing written, where there is none of this number."},
{"UIDsCount", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "How many UIDs the library's dictionary has."},
{"GetUIDAt", MemberKind::kMethod, kArguments6.data(), kArguments6.size(), "UID `Idx` in the order of their characters, from 0; IDcmDictionary.GetUIDDescription tells what it denotes.\n"
        "False, with nothing written, where there is none of this number."},
{"GetBytes", MemberKind::kMethod, kArguments7.data(), kArguments7.size(), "The dictionary as the bytes of a file, an array with one dimension from 0: in its binary form, or else as text.\n"
        "Names come along; a line end in a name becomes a blank in the text form. kException \"Type of (gggg,eeee) cannot\n"
        "be written as text\" where its letters separate words there."},
{"SaveFile", MemberKind::kMethod, kArguments8.data(), kArguments8.size(), "Saves these bytes as a file, whole or not at all. With `KeepsFiles` a file that is there stays, and the save\n"
        "fails. kException with the words above or those of the system."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::LoadFile>,
&CallMember<&I::LoadBytes>,
&CallMember<&I::Unload>,
&CallMember<&I::get_ElementsCount>,
&CallMember<&I::GetElementAt>,
&CallMember<&I::get_UIDsCount>,
&CallMember<&I::GetUIDAt>,
&CallMember<&I::GetBytes>,
&CallMember<&I::SaveFile>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 9, "For hosts with a data dictionary of their own, and those that make one. What is loaded counts for this object\n"
        "alone: its IDcmDictionary looks elements up there in place of the library's dictionary, and nothing else changes.\n"
        "An object that loads belongs to one thread.\n"
        "\n"
        "A dictionary file has a text form, with lines such as `{0x0010 0x0020 LO \"Patient ID\"}` behind a first line that\n"
        "is no entry, and a binary form that loads faster. Descriptions are texts of one byte a character. Failures with\n"
        "words have the source \"Tessaret.DcmDictionary\". Every member answers kPointer for a place of an answer that is\n"
        "null, and kOutOfMemory with \"Not enough memory\" where it says nothing else."}, kCalls};
return kTable;
}

}  // namespace tessaret
