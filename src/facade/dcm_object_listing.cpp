// The data set with everything in it as a table.
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <new>
#include <vector>

#include "base/checked.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

namespace {

constexpr std::int32_t kItemMark = -1;

/// One object on the way.
struct Level {
  const DICOMObject* object;
  const VR* next;                         // the element to be visited next
  const ItemArray::Node* item = nullptr;  // of the one before, to be visited first
};

/// Calls `onElement(vr, level)` and `onItem(item, level)` for all that is in `object`, on a flat stack. Throws
/// std::bad_alloc.
template <class OnElement, class OnItem>
void Walk(const DICOMObject& object, OnElement onElement, OnItem onItem) {
  std::vector<Level> levels{{&object, object.GetFirstVR()}};
  while (!levels.empty()) {
    Level& here = levels.back();
    if (here.item != nullptr) {
      const DICOMObject* const item = here.item->value;
      here.item = here.item->next;
      if (item == nullptr) continue;
      onItem(*item, levels.size());
      levels.push_back({item, item->GetFirstVR()});
    } else if (here.next != nullptr) {
      const VR& vr = *here.next;
      here.next = here.object->GetNextVR(&vr);
      if (vr.Items != nullptr) here.item = vr.Items->First;
      onElement(vr, levels.size() - 1);
    } else {
      levels.pop_back();
    }
  }
}

std::uint32_t RowsOf(const DICOMObject& object) {
  std::size_t rows = 0;
  Walk(
      object, [&](const VR&, std::size_t) { ++rows; },
      [&](const DICOMObject&, std::size_t) { ++rows; });
  if (rows > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
  return static_cast<std::uint32_t>(rows);
}

/// The columns, filled from the top.
class Listing {
 public:
  explicit Listing(std::uint32_t rows)
      : levels_(VariantType::kLong, rows),
        tags_(VariantType::kDouble, rows),
        types_(VariantType::kLong, rows),
        lengths_(VariantType::kDouble, rows),
        offsets_(VariantType::kDouble, rows),
        haveValues_(VariantType::kBool, rows),
        items_(VariantType::kLong, rows) {}

  void Add(const VR& vr, std::size_t level) {
    levels_.Entries<std::int32_t>()[row_] = static_cast<std::int32_t>(level);
    tags_.Entries<double>()[row_] = vr.Key();
    types_.Entries<std::int32_t>()[row_] = vr.TypeCode;
    lengths_.Entries<double>()[row_] = LengthOf(vr);
    offsets_.Entries<double>()[row_] = vr.StreamPosition;
    haveValues_.Entries<VariantBool>()[row_] = vr.Data != nullptr;
    items_.Entries<std::int32_t>()[row_] = SaturatingCast<std::int32_t>(vr.ItemCount());
    ++row_;
  }

  /// An item: what is in none of its columns stays 0.
  void Add(const DICOMObject& item, std::size_t level) {
    levels_.Entries<std::int32_t>()[row_] = static_cast<std::int32_t>(level);
    tags_.Entries<double>()[row_] = MakeTagKey(kStructuralGroup, kItemElement);
    lengths_.Entries<double>()[row_] = static_cast<double>(item.Elements.Size());
    items_.Entries<std::int32_t>()[row_] = kItemMark;
    ++row_;
  }

  void MoveTo(const std::array<Variant*, 7>& columns) {
    VariantArray* const filled[] = {&levels_,  &tags_,       &types_, &lengths_,
                                    &offsets_, &haveValues_, &items_};
    for (std::size_t at = 0; at < columns.size(); ++at) {
      if (row_ == 0) {
        columns[at]->Clear();
      } else {
        *columns[at] = std::move(*filled[at]);
      }
    }
  }

 private:
  VariantArray levels_;
  VariantArray tags_;
  VariantArray types_;
  VariantArray lengths_;
  VariantArray offsets_;
  VariantArray haveValues_;
  VariantArray items_;
  std::size_t row_ = 0;
};

}  // namespace

Status CDCMObject::GetListing(Variant* Levels, Variant* Tags, Variant* TypeCodes, Variant* Lengths,
                              Variant* Offsets, Variant* HaveValues, Variant* ItemsCounts,
                              std::int32_t* Count) {
  const std::array<Variant*, 7> columns = {Levels,  Tags,       TypeCodes,  Lengths,
                                           Offsets, HaveValues, ItemsCounts};
  if (Count == nullptr || std::ranges::find(columns, nullptr) != columns.end()) return kPointer;
  return AnswerOfFile([&] {
    const DICOMObject* const object = Object.Get();
    const std::uint32_t rows = object == nullptr ? 0 : RowsOf(*object);
    Listing listing(rows);
    if (object != nullptr) {
      Walk(
          *object, [&](const VR& vr, std::size_t level) { listing.Add(vr, level); },
          [&](const DICOMObject& item, std::size_t level) { listing.Add(item, level); });
    }
    listing.MoveTo(columns);
    *Count = static_cast<std::int32_t>(rows);
    return kOk;
  });
}

}  // namespace tessaret
