#include "saved_form.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/data_set_coder.h"
#include "core/element_reader.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

constexpr std::uint32_t kLongestShortValue = 65534;

bool IsPixelData(const VR& vr) { return vr.Key() == kPixelDataTag; }

VrCode Known(const VR& vr, const SavedForm& saved) {
  if (saved.dictionary == nullptr) return type_code::kNone;
  return saved.dictionary->RunTimeClass(vr.Group, vr.Element, nullptr);
}

/// Where in a file the data set and its form begin: at the first element that is no group length.
TagKey DataSetStart(const DICOMObject& object, const SavedForm& saved) {
  if (!saved.isFile) return 0;
  TagKey start = std::numeric_limits<TagKey>::max();
  object.Elements.ForEach([&](const VR& vr) {
    if (vr.Group > 0x0002 && vr.Element != 0) start = std::min(start, vr.Key());
  });
  return start;
}

/// A level on the way down, and what is left out of it.
struct Level {
  Level(const DICOMObject& object, const SavedForm& saved)
      : topOfFile(saved.isFile), start(DataSetStart(object, saved)) {}
  Level() = default;

  [[nodiscard]] bool LeavesOut(const VR& vr, ElementForm form) const {
    if (vr.Group == 0x0002) return true;  // a file's own comes from the rules for meta headers
    if (vr.Element != 0) return false;
    if (form == ElementForm::kExplicit) return true;
    return topOfFile ? vr.Key() < start : vr.Group != 0;
  }
  [[nodiscard]] Level Within() const {
    Level within;
    within.depth = depth + 1;
    return within;
  }

  int depth = 0;
  bool topOfFile = false;
  TagKey start = 0;
};

bool HasValue(const VR& vr) { return vr.Items == nullptr && vr.Data != nullptr && vr.Length != 0; }

/// The type that an element is written with, as far as that shows.
VrCode WrittenType(const VR& vr, const SavedForm& saved, const Level& level) {
  VrCode type = vr.TypeCode;
  const bool asked = type == type_code::UN && saved.form == ElementForm::kExplicit;
  if (type == type_code::kNone || asked) {
    const VrCode known = Known(vr, saved);
    type = known != type_code::kNone ? known : vr.Items != nullptr ? type_code::SQ : type_code::UN;
    if (!HasLongForm(type) && vr.Items == nullptr && vr.Length > kLongestShortValue)
      type = type_code::UN;
  }
  if (level.depth == 0 && IsPixelData(vr) && saved.pixelType != type_code::kNone)
    type = saved.pixelType;
  if (vr.Items != nullptr && !IsPixelData(vr)) return type_code::SQ;
  if (vr.Items != nullptr && !HasLongForm(type)) return type_code::OB;
  return type == type_code::SQ && HasValue(vr) ? type_code::UN : type;
}

VrCode TypeReadBack(const VR& vr, const SavedForm& saved, const Level& level) {
  if (saved.form == ElementForm::kExplicit) return WrittenType(vr, saved, level);
  if (saved.dictionary == nullptr) return type_code::kNone;
  const VrCode known = Known(vr, saved);
  return known != type_code::kNone ? known : type_code::UN;
}

bool IsFragment(const DICOMObject& item) {
  return item.GetVR(kStructuralGroup, kItemElement) != nullptr;
}

std::uint32_t CountFragments(const VR& vr) {
  std::uint32_t count = 0;
  for (const auto* node = vr.Items->First; node != nullptr; node = node->next) {
    if (IsFragment(*node->value)) ++count;
  }
  return count;
}

bool EndsInBlank(const VR& vr) { return HasValue(vr) && vr.Data[vr.Length - 1] == ' '; }

bool HasNoBytes(const VR& vr) { return vr.Length != 0 && vr.Data == nullptr; }

/// Group 0002 and the type of the pixel data are made from these. What they hold beside their bytes is gone once they are
/// read back, and a padded number is another number.
bool IsOddSource(const VR& vr) {
  const bool uid = vr.Group == 0x0008 && (vr.Element == 0x0016 || vr.Element == 0x0018);
  const bool bits = vr.Group == 0x0028 && vr.Element == 0x0100;
  if (!uid && !bits) return false;
  return vr.Items != nullptr || HasNoBytes(vr) || (bits && vr.Length % 2 != 0);
}

void AddLimitsOfSyntax(const VR& vr, SavedLimits& limits) {
  if (HasNoBytes(vr)) limits.unwritable = true;
  // Only the low bits of a longer length count, and padding changes them.
  if (vr.Length > 62) limits.changes = true;
}

void AddLimits(const DICOMObject& object, const SavedForm& saved, const Level& level,
               SavedLimits& limits);

void AddLimits(VR& vr, const SavedForm& saved, const Level& level, SavedLimits& limits) {
  const bool top = level.topOfFile;
  if (top && vr.Key() == kTransferSyntaxTag) return AddLimitsOfSyntax(vr, limits);
  if (level.LeavesOut(vr, saved.form)) return;
  if (top && IsOddSource(vr)) limits.settles = true;
  // Before the meta header such a group would be taken for a part of it.
  if (top && vr.Group < 0x0002) limits.changes = true;

  const VrCode type = WrittenType(vr, saved, level);
  if (vr.Items == nullptr && HasNoBytes(vr) && type != type_code::SQ) limits.unwritable = true;
  if (HasValue(vr) && saved.form == ElementForm::kExplicit && !HasLongForm(type) &&
      vr.Length > kLongestShortValue) {
    limits.changes = true;
  }
  if (HasValue(vr) && saved.form == ElementForm::kImplicit) {
    const VrCode known = Known(vr, saved);
    if (known == type_code::SQ) limits.changes = true;
    if (!top && known == type_code::UI && type != known && EndsInBlank(vr)) limits.settles = true;
  }
  if (vr.Items == nullptr) return;
  if (IsPixelData(vr)) {
    if (CountFragments(vr) == 0) limits.settles = true;
    return;
  }
  for (std::uint32_t at = 0; at < vr.ItemCount(); ++at) {
    AddLimits(*vr.GetItem(at), saved, level.Within(), limits);
  }
}

void AddLimits(const DICOMObject& object, const SavedForm& saved, const Level& level,
               SavedLimits& limits) {
  if (level.depth > kMaxNesting) limits.unwritable = true;
  object.Elements.ForEach([&](VR& vr) { AddLimits(vr, saved, level, limits); });
}

void RequireValueReadsBack(const VR& before, const VR& after, const SavedForm& saved,
                           const Level& level) {
  if (!HasValue(before))
    return Require(after.Data == nullptr && after.Length == 0, "still no value");
  Require(after.Data != nullptr && after.Length == before.Length + before.Length % 2,
          "the same length, made even");
  const std::uint32_t last = before.Length - 1;
  Require(std::memcmp(before.Data, after.Data, last) == 0, "the same value");
  const bool corrected =
      !level.topOfFile && EndsInBlank(before) && WrittenType(before, saved, level) == type_code::UI;
  Require(after.Data[last] == (corrected ? 0 : before.Data[last]), "the same last byte");
  Require(before.Length % 2 == 0 || after.Data[last + 1] == 0, "padded by NUL");
}

void RequireFragmentsReadBack(const VR& before, VR& after) {
  Require(after.ItemCount() == CountFragments(before), "as many fragments");
  std::uint32_t number = 0;
  for (const auto* node = before.Items->First; node != nullptr; node = node->next) {
    if (!IsFragment(*node->value)) continue;
    const VR& one = *node->value->GetVR(kStructuralGroup, kItemElement);
    const VR* other = after.GetItem(number++)->GetVR(kStructuralGroup, kItemElement);
    Require(other != nullptr && other->Length == one.Length, "fragments of the same length");
    Require(one.Length == 0 || std::memcmp(one.Data, other->Data, one.Length) == 0,
            "the same fragments");
  }
}

void RequireLevelReadsBack(const DICOMObject& before, const DICOMObject& after,
                           const SavedForm& saved, const Level& level);

void RequireElementReadsBack(VR& before, VR& after, const SavedForm& saved, const Level& level) {
  Require(before.Key() == after.Key(), "the same elements");
  Require(after.TypeCode == TypeReadBack(before, saved, level), "the same types");
  RequireValueReadsBack(before, after, saved, level);
  if (before.Items == nullptr) return Require(after.Items == nullptr, "no items came up");
  if (IsPixelData(before)) return RequireFragmentsReadBack(before, after);
  Require(after.ItemCount() == before.ItemCount(), "as many items");
  for (std::uint32_t at = 0; at < before.ItemCount(); ++at) {
    RequireLevelReadsBack(*before.GetItem(at), *after.GetItem(at), saved, level.Within());
  }
}

void RequireLevelReadsBack(const DICOMObject& before, const DICOMObject& after,
                           const SavedForm& saved, const Level& level) {
  VR* other = after.GetFirstVR();
  while (level.topOfFile && other != nullptr && other->Group == 0x0002)
    other = after.GetNextVR(other);
  before.Elements.ForEach([&](VR& vr) {
    if (level.LeavesOut(vr, saved.form)) return;
    Require(other != nullptr, "no element is lost");
    RequireElementReadsBack(vr, *other, saved, level);
    other = after.GetNextVR(other);
  });
  Require(other == nullptr, "no element is added");
}

}  // namespace

SavedLimits LimitsOf(const DICOMObject& object, const SavedForm& saved) {
  SavedLimits limits;
  AddLimits(object, saved, Level(object, saved), limits);
  return limits;
}

void RequireReadsBack(const DICOMObject& before, const DICOMObject& after, const SavedForm& saved) {
  RequireLevelReadsBack(before, after, saved, Level(before, saved));
}

}  // namespace tessaret::fuzz
