// Made by scripts/make_interface_tables.py from include/tessaret/idcm_dictionary.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_dictionary.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmDictionary>() {
using I = IDcmDictionary;

static constexpr auto kArguments0 = Signature<decltype(&I::get_NumEntries)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::GetEntry)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"Group", ArgumentFlow::kOut}, {"Element", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments2 = Signature<decltype(&I::GetVRDescription)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"TypeCode", ArgumentFlow::kOut}, {"description", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::GetUIDDescription)>::Describe({{{"UID", ArgumentFlow::kIn}, {"Desc", ArgumentFlow::kOut}, {"type", ArgumentFlow::kOut}, {"Modality", ArgumentFlow::kOut}, {"IsImg", ArgumentFlow::kOut}, {"Found", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"NumEntries", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "How many elements the dictionary has."},
{"GetEntry", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "The tag of entry `Idx` in the order of tags, from 0. False below 0 and at NumEntries and above; entries above 32767 cannot be\n"
        "reached."},
{"GetVRDescription", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Type and name of an element: `TypeCode` gets the two letters of its value representation, `description` its text. False for\n"
        "a tag that the dictionary does not know, with both untouched. Of Group and Element the low 16 bits count."},
{"GetUIDDescription", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "What a UID denotes: a description without blanks, its kind, the modality of a storage class, and whether that holds images.\n"
        "False for an unknown UID, with all of these untouched."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_NumEntries>,
&CallMember<&I::GetEntry>,
&CallMember<&I::GetVRDescription>,
&CallMember<&I::GetUIDDescription>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 4, "The dictionaries that the library loaded when it started. They never change, so that any thread may ask; where IDcmDictionaryFile\n"
        "has loaded another one for this object, that one is asked for elements in place of the library's."}, kCalls};
return kTable;
}

}  // namespace tessaret
