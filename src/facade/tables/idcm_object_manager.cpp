// Made by scripts/make_interface_tables.py from include/tessaret/idcm_object_manager.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "facade/object_manager_calls.h"
#include "tessaret/idcm_object_manager.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmObjectManager>() {
using I = IDcmObjectManager;

static constexpr auto kArguments0 = Signature<decltype(&I::GetOwnership)>::Describe({});
static constexpr auto kArguments1 = Signature<decltype(&I::SetOwner)>::Describe({});
static constexpr auto kArguments2 = Signature<decltype(&I::GetPtr)>::Describe({{{"GetOwnership", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::PutPtr)>::Describe({{{"SetOwnership", ArgumentFlow::kIn}, {"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::GetVR)>::Describe({{{"Group", ArgumentFlow::kIn}, {"Element", ArgumentFlow::kIn}, {"VR", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::PutVR)>::Describe({{{"VrRec", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"GetOwnership", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Takes the ownership away from this object, which goes on showing the data set while that lives: the caller has to see to its end.\n"
        "kFalse where this object is not the owner."},
{"SetOwner", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Makes this object the owner again. kFalse where it is that already, and where the data set belongs to another object or to a\n"
        "sequence."},
{"GetPtr", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "The data set. With GetOwnership other than 0 the caller takes it over; kFalse, with nothing given, where this object is not the\n"
        "owner. Null where there is none."},
{"PutPtr", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "Shows another data set; the one that was here is destroyed if it was owned. The one that is here already stays; with SetOwnership\n"
        "0 an owner gives it up, to the caller or by name to the handle. With SetOwnership other than 0 this object becomes the owner;\n"
        "kInvalidArgument, with nothing changed, where the data set belongs to another object or to a sequence, and by name where the\n"
        "handle does not own it."},
{"GetVR", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "Fills a record with an element: tag, type, length and a copy of its bytes. Where there is no such element, Group and Elem are -1\n"
        "and the length is 0. numseq, DDO and seq stay as they were."},
{"PutVR", MemberKind::kMethod, kArguments5.data(), kArguments5.size(), "Makes an element as the record has it, with a copy of its bytes, in place of the value of one that is there. Nothing happens\n"
        "without a record or a data set. kInvalidArgument for a negative length, kException \"The element holds items: remove it first\"."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::GetOwnership>,
&CallMember<&I::SetOwner>,
&CallGetPtr,
&CallPutPtr,
&CallGetVR,
&CallPutVR,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 6, "By name a data set travels as an object with the interface IDataSetHandle, which knows whether the data set still lives. One that\n"
        "was taken over with it is destroyed with the last reference to it, unless PutPtr has passed it on."}, kCalls};
return kTable;
}

}  // namespace tessaret
