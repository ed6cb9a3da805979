#include "core/element_map.h"

#include <algorithm>

#include "core/vr.h"
#include "platform/thread_keep.h"

namespace tessaret {
namespace {

// Moving 512 entries of 16 bytes costs about as much as a walk down a large tree.
constexpr std::size_t kMostEntriesToMove = 512;
// An entry that leaves makes nothing grow, so an array stays one for longer: closing up behind it takes some
// microseconds.
constexpr std::size_t kMostEntriesToCloseUp = 8192;
// So many popped entries may lie before those in use, even when they are more than these.
constexpr std::size_t kMostPoppedEntries = 4096;

// An array of a size that the top level of an image needs is kept for the next one on this thread. The allocator
// answers a request of that size by tidying up all the small blocks that the values of the last object left, again and
// again.
constexpr std::size_t kLeastEntriesToKeep = 64;
constexpr std::size_t kMostEntriesToKeep = 1024;
struct IdleEntries {};
std::vector<ElementMap::Entry>* Idle() {
  return ThreadKept<std::vector<ElementMap::Entry>, IdleEntries>();
}

}  // namespace

VR** ElementMap::InsertLate(TagKey key) {
  if (tree_) return &(*tree_)[key];
  const std::size_t at = LowerBound(key);
  if (Holds(at, key)) return &flat_[at].vr;
  if (flat_.size() - at > kMostEntriesToMove) {
    BecomeTree();
    return &(*tree_)[key];
  }
  const auto place = flat_.insert(flat_.begin() + static_cast<std::ptrdiff_t>(at), {key, nullptr});
  return &place->vr;
}

void ElementMap::BecomeTree() {
  auto tree = std::make_unique<Tree>();
  for (std::size_t at = head_; at < flat_.size(); ++at) {
    tree->emplace_hint(tree->end(), flat_[at].key, flat_[at].vr);
  }
  std::vector<Entry>().swap(flat_);
  head_ = 0;
  tree_ = std::move(tree);
}

bool ElementMap::TryToBecomeTree() noexcept {
  try {
    BecomeTree();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void ElementMap::DropPopped() noexcept {
  flat_.erase(flat_.begin(), flat_.begin() + static_cast<std::ptrdiff_t>(head_));
  head_ = 0;
}

std::size_t ElementMap::LowerBound(TagKey key) const {
  const auto begin = flat_.begin() + static_cast<std::ptrdiff_t>(head_);
  const auto place = std::lower_bound(begin, flat_.end(), key,
                                      [](const Entry& entry, TagKey k) { return entry.key < k; });
  return static_cast<std::size_t>(place - flat_.begin());
}

VR* ElementMap::Find(TagKey key) const {
  if (tree_) {
    const auto place = tree_->find(key);
    return place == tree_->end() ? nullptr : place->second;
  }
  const std::size_t at = LowerBound(key);
  return Holds(at, key) ? flat_[at].vr : nullptr;
}

VR* ElementMap::First() const {
  if (IsEmpty()) return nullptr;
  return tree_ ? tree_->begin()->second : flat_[head_].vr;
}

VR* ElementMap::NextAfter(TagKey key) const {
  if (tree_) {
    auto place = tree_->find(key);
    if (place == tree_->end() || ++place == tree_->end()) return nullptr;
    return place->second;
  }
  const std::size_t at = LowerBound(key);
  return Holds(at, key) && at + 1 < flat_.size() ? flat_[at + 1].vr : nullptr;
}

VR* ElementMap::PopFirst() noexcept {
  if (IsEmpty()) return nullptr;
  if (tree_) {
    VR* vr = tree_->begin()->second;
    tree_->erase(tree_->begin());
    return vr;
  }
  VR* vr = flat_[head_++].vr;
  // Popped entries make room again at the end of a walk, and while elements come and go without one.
  if (head_ == flat_.size() || (head_ > kMostPoppedEntries && head_ > flat_.size() / 2))
    DropPopped();
  return vr;
}

VR* ElementMap::Remove(TagKey key) noexcept {
  if (tree_) {
    const auto place = tree_->find(key);
    if (place == tree_->end()) return nullptr;
    VR* vr = place->second;
    tree_->erase(place);
    return vr;
  }
  const std::size_t at = LowerBound(key);
  if (!Holds(at, key)) return nullptr;
  VR* vr = flat_[at].vr;
  if (at == head_) return PopFirst();
  if (flat_.size() - at > kMostEntriesToCloseUp && TryToBecomeTree()) return Remove(key);
  flat_.erase(flat_.begin() + static_cast<std::ptrdiff_t>(at));
  return vr;
}

bool ElementMap::IsInOrder() const {
  if (tree_) {
    return std::all_of(tree_->begin(), tree_->end(), [](const Tree::value_type& entry) {
      return entry.first == entry.second->Key();
    });
  }
  return std::all_of(flat_.begin() + static_cast<std::ptrdiff_t>(head_), flat_.end(),
                     [](const Entry& entry) { return entry.key == entry.vr->Key(); });
}

void ElementMap::Reserve(std::size_t count) {
  if (tree_) return;
  if (flat_.capacity() == 0 && count >= kLeastEntriesToKeep) {
    if (auto* idle = Idle(); idle != nullptr && count <= idle->capacity()) flat_ = std::move(*idle);
  }
  // Never by a little, so that many small additions do not copy everything each time.
  const std::size_t needed = flat_.size() + count;
  if (needed > flat_.capacity()) flat_.reserve(std::max(needed, 2 * flat_.capacity()));
}

void ElementMap::Clear() noexcept {
  flat_.clear();
  head_ = 0;
  tree_.reset();
  const std::size_t capacity = flat_.capacity();
  if (capacity >= kLeastEntriesToKeep && capacity <= kMostEntriesToKeep) {
    if (auto* idle = Idle(); idle != nullptr && capacity > idle->capacity()) flat_.swap(*idle);
  }
  if (capacity != 0) std::vector<Entry>().swap(flat_);
}

}  // namespace tessaret
