/// Calling members of objects by name, with values of any type: what scripts and other languages do.
///
/// A script says `object.VR(0x0010, 0x0010)` where C++ calls get_VR. What an interface has is data: one InterfaceInfo with a row a
/// member, from which calls by name, help texts and references are made.
#pragma once

#include <cstdint>

#include "tessaret/object.hpp"
#include "tessaret/status.hpp"
#include "tessaret/variant.hpp"

namespace tessaret {

/// What a parameter of an interface is for. They are plain pointers and values; the names say which way the value goes.
template <class T>
using Optional = T;  ///< may be left away by name, which gives 0, null or an empty value
template <class T>
using InOut = T*;  ///< read and written
template <class T>
using Out = T*;  ///< written, or left as it was
template <class T>
using Result = T*;  ///< written; what a call by name gives back

/// How a member is used by name.
enum class MemberKind : std::int32_t {
  kMethod = 1,
  kGet = 2,     // reading a property
  kPut = 4,     // setting a property to a value
  kPutRef = 8,  // setting a property to an object, which is then shared
};

enum class ArgumentFlow : std::int32_t { kIn, kOptional, kInOut, kOut, kResult };

/// The type of an argument that takes any value.
inline constexpr std::uint16_t kAnyType = 0xFFFF;

struct ArgumentInfo {
  const char* name = "";
  ArgumentFlow flow = ArgumentFlow::kIn;
  std::uint16_t type = 0;  // a VariantType as a number, or kAnyType
  /// Which interface an object has to have, or which enumeration a number is of; empty for all else.
  const char* interfaceName = "";
};

struct MemberInfo {
  const char* name = "";
  MemberKind kind = MemberKind::kMethod;
  const ArgumentInfo* arguments = nullptr;  // in the order of the call; a result stands last
  std::uint32_t argumentCount = 0;
  const char* help = "";  // what the header says of it, in lines
};

/// Lives as long as the library.
struct InterfaceInfo {
  const char* name = "";
  InterfaceId id;
  const MemberInfo* members = nullptr;  // in the order of their slots
  std::uint32_t memberCount = 0;
  const char* help = "";
};

/// The base of every interface that can be called by name.
class IDispatch : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F01002};

  /// Never null; the same for every object of the interface.
  virtual const InterfaceInfo* Describe() = 0;

  /// The number by which Invoke knows the member `name` of this kind; ASCII letters of either case are the same. It may be kept,
  /// for all objects with this interface. kUnknownName where there is none of this name, kUnknownMember where there is, but of
  /// another kind. kPointer for a null argument.
  virtual Status FindMember(const char* name, MemberKind kind, std::int32_t* member) = 0;

  /// Calls a member. `arguments` are its arguments in their order without the result; what is InOut or Out is replaced there.
  /// Optional ones at the end may be left away, and so may Out ones that nobody wants; where a property is set, the new value is the
  /// last of them all the same. An empty value in the place of an optional
  /// argument counts as left away. Each is turned into the type of its parameter, see Variant::ChangeType; an object is asked for
  /// the interface that is wanted, and an empty value is no object. `result` may be null.
  /// Answers what the member answers; kUnknownMember, kBadCount, kTypeMismatch, kOverflow or kNoInterface without having called
  /// it; kPointer for null `arguments` whose `count` is not 0; kOutOfMemory. After a failure `arguments` and `result` are as they were.
  virtual Status Invoke(std::int32_t member, Variant* arguments, std::uint32_t count,
                        Variant* result) = 0;
};

}  // namespace tessaret
