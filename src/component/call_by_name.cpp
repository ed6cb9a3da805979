#include "component/call_by_name.h"

#include <new>

#include "base/text.h"

namespace tessaret {
Status FindMemberIn(const InterfaceInfo& info, const char* name, MemberKind kind,
                    std::int32_t* member) {
  if (name == nullptr || member == nullptr) return kPointer;
  Status status = kUnknownName;
  for (std::uint32_t index = 0; index < info.memberCount; ++index) {
    if (!IsSameIgnoringCase(info.members[index].name, name)) continue;
    if (info.members[index].kind == kind) {
      *member = static_cast<std::int32_t>(index);
      return kOk;
    }
    status = kUnknownMember;
  }
  return status;
}

Status InvokeIn(const InterfaceTable& table, void* self, std::int32_t member, Variant* arguments,
                std::uint32_t count, Variant* result) {
  if (member < 0 || static_cast<std::uint32_t>(member) >= table.info.memberCount)
    return kUnknownMember;
  if (arguments == nullptr && count != 0) return kPointer;
  const auto index = static_cast<std::size_t>(member);
  try {
    return table.calls[index](self, table.info.members[index], arguments, count, result);
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
}

}  // namespace tessaret
