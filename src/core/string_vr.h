// Elements of texts that are separated by backslashes. Nothing here asks what characters the bytes stand for, nor expects a
// terminator.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/typed_vr.h"

namespace tessaret {

class Variant;

/// How many texts `text` holds: one more than backslashes, none where it is empty.
std::uint64_t CountTexts(std::string_view text);

/// Text number `index` of `text`, all of it; nothing where the backslashes run out, and for a negative index.
std::optional<std::string_view> NthText(std::string_view text, std::int32_t index);

/// The same without the blanks and NULs at its end. This is what a reader of the element is to see: only padding is cut.
std::optional<std::string_view> NthTextUnpadded(std::string_view text, std::int32_t index);

/// Several texts in one value.
class VR_XXMULTISTRING : public VR_XXTYPED {
 public:
  /// The words of the error for an index into a type that has one value.
  static constexpr const char* kLoneTextWords = "Error: VR type ST,LT and UT have VM=1";

  /// Puts `value`, turned into text, cut to the limit of `type`, with one byte a character, in place of text number `index` of
  /// `element`. At or behind the end of a value it becomes its last text, behind one backslash whatever the index; in an empty
  /// element `index` backslashes stand before it. An odd length stays odd. For a type of one text it is the whole value.
  /// False, and nothing changes, for what turns into no text, and where the root says so of PutValue. Throws
  /// TypedValueError with kLoneTextWords for an index into a type of one text, and std::bad_alloc; nothing has changed then.
  static bool PutText(VR& element, VrCode type, const Variant& value, std::int32_t index);

 protected:
  using VR_XXTYPED::VR_XXTYPED;
};

/// Texts with the padding of the stream.
class VR_XXSTRING : public VR_XXMULTISTRING {
 public:
  /// Turns the NULs at the end of the block into blanks, back to the first character that is neither.
  void ToWire(std::uint32_t count, std::uint8_t* data) const override;
  /// Puts a NUL behind the last character that is no padding, where there is padding. Of padding alone the first character
  /// stays.
  void FromWire(std::uint32_t count, std::uint8_t* data) const override;
  /// What FromWire leaves of text number `index`, up to its first NUL.
  bool GetValue(std::int32_t index, std::string& out) const override;
  /// Puts `in` in place of text number `index`, or behind the end with as many empty texts between as it takes. Where values
  /// have a width, it is filled with blanks up to that, and cut to the limit of its type.
  bool PutValue(std::int32_t index, std::string_view in) override;

 protected:
  using VR_XXMULTISTRING::VR_XXMULTISTRING;
};

using VrAE = VrOf<VR_XXSTRING, type_code::AE>;
using VrAS = VrOf<VR_XXSTRING, type_code::AS>;
using VrCS = VrOf<VR_XXSTRING, type_code::CS>;
using VrDS = VrOf<VR_XXSTRING, type_code::DS>;
using VrDT = VrOf<VR_XXSTRING, type_code::DT>;
using VrIS = VrOf<VR_XXSTRING, type_code::IS>;
using VrLO = VrOf<VR_XXSTRING, type_code::LO>;
using VrSH = VrOf<VR_XXSTRING, type_code::SH>;
using VrTM = VrOf<VR_XXSTRING, type_code::TM>;

/// Dates as 20010203; old ones have dots between.
class VrDA : public VrOf<VR_XXSTRING, type_code::DA> {
 public:
  using VrOf::VrOf;
  /// Without dots, unless it is 8 characters long.
  bool GetValue(std::int32_t index, std::string& out) const override;
  /// Without dots, and of what is left 10 characters at most.
  bool PutValue(std::int32_t index, std::string_view in) override;
};

class VrUI : public VrOf<VR_XXSTRING, type_code::UI> {
 public:
  using VrOf::VrOf;
  /// Turns the blanks at the end of the block into NULs.
  void ToWire(std::uint32_t count, std::uint8_t* data) const override;
};

}  // namespace tessaret
