// An interface as lines for people: what a test compares with the list that somebody wrote down.
#pragma once

#include <string>
#include <vector>

#include "component/call_by_name.h"
#include "tessaret/tessaret.h"

namespace tessaret::test {

inline std::string TypeName(std::uint16_t type) {
  switch (type) {
    case TESSARET_SHORT:
      return "short";
    case TESSARET_LONG:
      return "long";
    case TESSARET_FLOAT:
      return "float";
    case TESSARET_DOUBLE:
      return "double";
    case TESSARET_STRING:
      return "text";
    case TESSARET_BOOL:
      return "bool";
    case TESSARET_OBJECT:
      return "object";
    case TESSARET_ANY:
      return "any";
    default:
      return "type " + std::to_string(type);
  }
}

/// Such as "get zoom(dx long, dy long) -> pVal float"; InOut and Out arguments begin with "inout" and "out", optional ones with "?", and
/// the name of an interface or enumeration stands behind the type.
inline std::string LineOf(const MemberInfo& member) {
  std::string line;
  if (member.kind == MemberKind::kGet) line = "get ";
  if (member.kind == MemberKind::kPut) line = "put ";
  if (member.kind == MemberKind::kPutRef) line = "putref ";
  line += member.name;
  line += '(';
  std::string result;
  for (std::uint32_t at = 0; at < member.argumentCount; ++at) {
    const ArgumentInfo& argument = member.arguments[at];
    std::string words = argument.name + std::string(" ") + TypeName(argument.type);
    if (*argument.interfaceName != '\0') words += std::string(" ") + argument.interfaceName;
    if (argument.flow == ArgumentFlow::kResult) {
      result = " -> " + words;
      continue;
    }
    if (argument.flow == ArgumentFlow::kOptional) words = "?" + words;
    if (argument.flow == ArgumentFlow::kInOut) words = "inout " + words;
    if (argument.flow == ArgumentFlow::kOut) words = "out " + words;
    line += (line.back() == '(' ? "" : ", ") + words;
  }
  return line + ")" + result;
}

template <class Interface>
std::vector<std::string> Listing() {
  const InterfaceInfo& info = TableOf<Interface>().info;
  std::vector<std::string> lines = {std::string(info.name) + ":"};
  for (std::uint32_t at = 0; at < info.memberCount; ++at) lines.push_back(LineOf(info.members[at]));
  return lines;
}

using Lines = std::vector<std::string>;

}  // namespace tessaret::test
