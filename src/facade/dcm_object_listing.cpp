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

/// An element, or an item of the one before it.
struct Row {
  const VR* vr;
  const DICOMObject* item;
  std::int32_t level;
};

/// Goes through an object with everything nested in it, on a flat stack.
class Walk {
 public:
  /// Throws std::bad_alloc.
  static std::vector<Row> Through(const DICOMObject& object) {
    Walk walk;
    walk.Enter(object);
    while (!walk.levels_.empty()) walk.Step();
    return std::move(walk.rows_);
  }

 private:
  /// A data set on the way: its elements are the last in elements_ from `begin` on.
  struct Level {
    std::size_t begin;
    std::size_t next;                       // element to be visited next
    const ItemArray::Node* item = nullptr;  // of the one before, to be visited first
  };

  void Enter(const DICOMObject& object) {
    const std::size_t begin = elements_.size();
    object.Elements.ForEach([&](const VR& vr) { elements_.push_back(&vr); });
    levels_.push_back({begin, begin});
  }

  void Step() {
    Level& here = levels_.back();
    const auto level = static_cast<std::int32_t>(levels_.size()) - 1;
    if (here.item != nullptr) {
      const DICOMObject* const item = here.item->value;
      here.item = here.item->next;
      if (item == nullptr) return;
      Add({nullptr, item, level + 1});
      Enter(*item);
    } else if (here.next < elements_.size()) {
      const VR& vr = *elements_[here.next++];
      if (vr.Items != nullptr) here.item = vr.Items->First;
      Add({&vr, nullptr, level});
    } else {
      elements_.resize(here.begin);
      levels_.pop_back();
    }
  }

  void Add(const Row& row) {
    if (rows_.size() == std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
    rows_.push_back(row);
  }

  std::vector<Row> rows_;
  std::vector<const VR*> elements_;
  std::vector<Level> levels_;
};

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

  void Add(const Row& row) {
    levels_.Entries<std::int32_t>()[row_] = row.level;
    row.vr != nullptr ? AddElement(*row.vr) : AddItem(*row.item);
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
  void AddElement(const VR& vr) {
    tags_.Entries<double>()[row_] = vr.Key();
    types_.Entries<std::int32_t>()[row_] = vr.TypeCode;
    lengths_.Entries<double>()[row_] = LengthOf(vr);
    offsets_.Entries<double>()[row_] = vr.StreamPosition;
    haveValues_.Entries<VariantBool>()[row_] = vr.Data != nullptr;
    items_.Entries<std::int32_t>()[row_] = SaturatingCast<std::int32_t>(vr.ItemCount());
  }

  /// In the other columns 0 stays.
  void AddItem(const DICOMObject& item) {
    tags_.Entries<double>()[row_] = MakeTagKey(kStructuralGroup, kItemElement);
    lengths_.Entries<double>()[row_] = static_cast<double>(item.Elements.Size());
    items_.Entries<std::int32_t>()[row_] = kItemMark;
  }

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
    const std::vector<Row> rows = object == nullptr ? std::vector<Row>() : Walk::Through(*object);
    Listing listing(static_cast<std::uint32_t>(rows.size()));
    for (const Row& row : rows) listing.Add(row);
    listing.MoveTo(columns);
    *Count = static_cast<std::int32_t>(rows.size());
    return kOk;
  });
}

}  // namespace tessaret
