#include "core/tag_index.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace tessaret {
namespace {

/// Slots that a key may lie away from its home. The dictionary of the standard needs 18.
constexpr std::uint32_t kLongestProbe = 64;

/// Used slots side by side. A look-up of an unknown key may go through all of them, however near each key is to its home.
/// The dictionary of the standard has at most 24.
constexpr std::uint32_t kLongestRun = 256;

/// A larger dictionary than the index can number is searched the plain way.
constexpr std::uint32_t kMostKeys = 0xFFFF;

}  // namespace

std::int64_t SearchKeys(const TagKey* keys, std::uint32_t count, TagKey key) {
  if (count == 0) return -1;
  const std::int64_t last = std::int64_t{count} - 1;
  std::int64_t at = count / 2;
  // A step is rounded up, so that together the steps reach every place; an overshoot is walked back below.
  for (std::int64_t step = at; step > 1 && keys[at] != key;) {
    step = (step + 1) / 2;
    at = std::clamp<std::int64_t>(keys[at] < key ? at + step : at - step, 0, last);
  }
  while (at < last && keys[at] < key) ++at;
  while (at > 0 && keys[at] > key) --at;
  if (keys[at] != key) return -1;
  return std::lower_bound(keys, keys + at, key) - keys;
}

bool TagIndex::Build(const TagKey* keys, const VrCode* types, std::uint32_t count) {
  slots_.clear();
  if (count > kMostKeys) return false;
  const std::uint32_t size = std::bit_ceil(std::max(2 * count, 2U));
  slots_.resize(size);
  mask_ = size - 1;
  shift_ = 32 - static_cast<std::uint32_t>(std::countr_zero(size));
  for (std::uint32_t position = 0; position < count; ++position) {
    if (Insert({keys[position], static_cast<std::uint16_t>(position + 1), types[position]})) {
      continue;
    }
    slots_.clear();
    return false;
  }
  if (LongestRun() > kLongestRun) slots_.clear();
  return IsBuilt();
}

std::uint32_t TagIndex::LongestRun() const {
  std::uint32_t longest = 0;
  std::uint32_t run = 0;
  // Twice round, since a run may go on from the last slot in the first. Half of the slots are free.
  for (std::size_t at = 0; at < 2 * slots_.size(); ++at) {
    run = slots_[at & mask_].next == 0 ? 0 : run + 1;
    longest = std::max(longest, run);
  }
  return longest;
}

bool TagIndex::Insert(Slot entry) {
  std::uint32_t at = HomeOf(entry.key);
  for (std::uint32_t probe = 0; probe < kLongestProbe; ++probe, at = (at + 1) & mask_) {
    Slot& slot = slots_[at];
    if (slot.next == 0) {
      slot = entry;
      return true;
    }
    if (slot.key == entry.key) return true;
  }
  return false;
}

}  // namespace tessaret
