// Names of persons. Outside they are the raw text, with its "^" characters; this view has a form for people besides.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/string_vr.h"

namespace tessaret {

/// A name has five components, separated by "^": family name, given name, middle name, prefix, suffix.
class VrPN : public VrOf<VR_XXSTRING, type_code::PN> {
 public:
  using VrOf::VrOf;
  /// A value with "^" comes in its form for people.
  bool GetValue(std::int32_t index, std::string& out) const override;
  /// A text without "^" is taken for the form for people.
  bool PutValue(std::int32_t index, std::string_view in) override;

  /// "Doe, John, , Dr" becomes "Doe^John^^Dr". A comma separates with a blank behind it only. Each component is cut to its most
  /// characters (63, 31, 19, 19, 31), empty ones at the end are left out. What follows the fourth separator is the fifth
  /// component, more separators included. `in` may look into `out`.
  virtual void DisplayToDicom(std::string_view in, std::string& out) const;
  /// The other way round.
  virtual void DicomToDisplay(std::string_view in, std::string& out) const;
};

}  // namespace tessaret
