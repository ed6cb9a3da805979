// Elements of numbers in the order of the machine, each of one width.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "core/typed_vr.h"

namespace tessaret {

/// Where value number `index` of values of `width` bytes lies; null where it is not there to its last byte.
const std::uint8_t* FindBinaryValue(const VR& vr, std::int32_t index, std::uint32_t width);

/// Value number `index`, or nothing where it is not there to its last byte.
template <class T>
[[nodiscard]] std::optional<T> BinaryValue(const VR& vr, std::int32_t index) {
  const std::uint8_t* const bytes = FindBinaryValue(vr, index, sizeof(T));
  if (bytes == nullptr) return std::nullopt;
  T value;
  std::memcpy(&value, bytes, sizeof(T));
  return value;
}

/// Several values of one width, without anything between them.
class VR_XXMULTIBINARY : public VR_XXTYPED {
 public:
  bool GetValue(std::int32_t index, std::string& out) const override;
  /// A value behind the end makes the element longer; bytes between the old end and the value become 0. False, besides the
  /// cases of the root, for `in` of another width.
  bool PutValue(std::int32_t index, std::string_view in) override;

 protected:
  using VR_XXTYPED::VR_XXTYPED;
};

/// What the classes of one number derive from.
class VR_XXBINARY : public VR_XXMULTIBINARY {
 public:
  /// The same with the bytes of a number. False where T has not the width of a value.
  template <class T>
  bool PutNumber(std::int32_t index, T number) {
    static_assert(std::is_arithmetic_v<T>);
    char bytes[sizeof(T)];
    std::memcpy(bytes, &number, sizeof(T));
    return PutValue(index, {bytes, sizeof(T)});
  }

 protected:
  using VR_XXMULTIBINARY::VR_XXMULTIBINARY;
};

using VrFD = VrOf<VR_XXBINARY, type_code::FD>;
using VrFL = VrOf<VR_XXBINARY, type_code::FL>;
using VrOB = VrOf<VR_XXBINARY, type_code::OB>;
using VrOW = VrOf<VR_XXBINARY, type_code::OW>;
using VrSL = VrOf<VR_XXBINARY, type_code::SL>;
using VrSS = VrOf<VR_XXBINARY, type_code::SS>;
using VrUL = VrOf<VR_XXBINARY, type_code::UL>;
using VrUS = VrOf<VR_XXBINARY, type_code::US>;

class VrAT : public VrOf<VR_XXBINARY, type_code::AT> {
 public:
  using VrOf::VrOf;
  /// Reverse the bytes of each whole value: its halves change places, then the halves of those. A rest stays.
  void ToWire(std::uint32_t count, std::uint8_t* data) const override;
  void FromWire(std::uint32_t count, std::uint8_t* data) const override;
};

/// Pixel data, whose type depends on what else is known of it.
class VrOX : public VrOf<VR_XXBINARY, type_code::OW> {
 public:
  using VrOf::VrOf;
  [[nodiscard]] std::uint32_t ValueWidth() const override { return Code == type_code::OW ? 2 : 1; }
  [[nodiscard]] VrCode GetTypeCode() const override { return Code; }

  VrCode Code = type_code::OW;  // or OB
};

/// Numbers of 16 bits that are signed or not, as what else is known of them says.
class VrXS : public VrOf<VR_XXBINARY, type_code::US> {
 public:
  using VrOf::VrOf;
  [[nodiscard]] VrCode GetTypeCode() const override { return Code; }
  /// Value number `index` by its sign; nothing where it is not there.
  [[nodiscard]] std::optional<std::int32_t> Number(std::int32_t index) const;

  VrCode Code = type_code::US;  // or SS
};

}  // namespace tessaret
