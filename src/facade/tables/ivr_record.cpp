// Made by scripts/make_interface_tables.py from include/tessaret/ivr_record.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/ivr_record.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IVRRecord>() {
using I = IVRRecord;

static constexpr auto kArguments0 = Signature<decltype(&I::get_Group)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::put_Group)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::get_Elem)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::put_Elem)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::get_TypeCode)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::put_TypeCode)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments6 = Signature<decltype(&I::get_len)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments7 = Signature<decltype(&I::get_pt)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments8 = Signature<decltype(&I::put_pt)>::Describe({{{"newVal", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"Group", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "The group of the tag; -1 where there was no such element."},
{"Group", MemberKind::kPut, kArguments1.data(), kArguments1.size(), "Sets the group of the tag."},
{"Elem", MemberKind::kGet, kArguments2.data(), kArguments2.size(), "The element number of the tag; -1 where there was no such element."},
{"Elem", MemberKind::kPut, kArguments3.data(), kArguments3.size(), "Sets the element number of the tag."},
{"TypeCode", MemberKind::kGet, kArguments4.data(), kArguments4.size(), "The type: its first letter times 256 plus the second."},
{"TypeCode", MemberKind::kPut, kArguments5.data(), kArguments5.size(), "Sets the type, of which the low 16 bits count."},
{"len", MemberKind::kGet, kArguments6.data(), kArguments6.size(), "How many bytes the element has, also where they were not loaded; -1 for an undefined length. To set it set `pt`."},
{"pt", MemberKind::kGet, kArguments7.data(), kArguments7.size(), "The bytes, as an array with one dimension from 0; empty where there are none."},
{"pt", MemberKind::kPut, kArguments8.data(), kArguments8.size(), "Sets the bytes, and with them `len`. kTypeMismatch for anything but an array of bytes with one dimension, or an empty value."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_Group>,
&CallMember<&I::put_Group>,
&CallMember<&I::get_Elem>,
&CallMember<&I::put_Elem>,
&CallMember<&I::get_TypeCode>,
&CallMember<&I::put_TypeCode>,
&CallMember<&I::get_len>,
&CallMember<&I::get_pt>,
&CallMember<&I::put_pt>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 9, "A _VR_RECORD_TYPE for calls by name. GetVR gives one."}, kCalls};
return kTable;
}

}  // namespace tessaret
