// The transfer syntaxes of one proposal, in no more bytes than they take on the wire: a request may have 16384 of them, of four bytes
// each, and as many items would take twenty times the memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <string_view>
#include <vector>

#include "net/pdu_items.h"

namespace tessaret {

/// Items come out by value, in the order in which they were put in, with their lengths computed.
class TransferSyntaxList {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = TransferSyntax;
    using difference_type = std::ptrdiff_t;
    using pointer = const TransferSyntax*;
    using reference = TransferSyntax;

    explicit Iterator(const std::uint8_t* at) : at_(at) {}
    TransferSyntax operator*() const {
      TransferSyntax item(
          std::string_view(reinterpret_cast<const char*>(at_ + HeadBytes(at_)), TextBytes(at_)));
      if (HasType(at_)) item.ItemType = at_[kTypeAt];
      item.Reserved1 = at_[kReservedAt];
      item.Size();
      return item;
    }
    Iterator& operator++() {
      at_ += HeadBytes(at_) + TextBytes(at_);
      return *this;
    }
    Iterator operator++(int) {
      const Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) = default;

   private:
    const std::uint8_t* at_;
  };
  using value_type = TransferSyntax;
  using const_iterator = Iterator;

  TransferSyntaxList() = default;
  TransferSyntaxList(std::initializer_list<TransferSyntax> items) { Append(items); }
  TransferSyntaxList(const std::vector<TransferSyntax>& items) { Append(items); }

  [[nodiscard]] Iterator begin() const { return Iterator(bytes_.data()); }
  [[nodiscard]] Iterator end() const { return Iterator(bytes_.data() + bytes_.size()); }
  [[nodiscard]] bool empty() const { return bytes_.empty(); }
  /// Goes through all of them, as the next two do up to theirs.
  [[nodiscard]] std::size_t size() const {
    return static_cast<std::size_t>(std::distance(begin(), end()));
  }
  /// There has to be one.
  TransferSyntax operator[](std::size_t index) const { return *std::next(begin(), Steps(index)); }
  [[nodiscard]] TransferSyntax back() const { return (*this)[size() - 1]; }

  void push_back(const TransferSyntax& item) {
    const std::uint32_t size = std::min(item.UID::Size, UID::kMostBytes);
    const bool hasType = item.ItemType != item_type::kTransferSyntax;
    const std::size_t before = bytes_.size();
    bytes_.resize(before + kLeastHeadBytes + (hasType ? 1 : 0) + size);
    std::uint8_t* at = bytes_.data() + before;
    at[kReservedAt] = item.Reserved1;
    at[kSizeAt] = static_cast<std::uint8_t>(size | (hasType ? kTypeFollows : 0));
    if (hasType) at[kTypeAt] = item.ItemType;
    std::copy_n(item.Text.begin(), size, at + HeadBytes(at));
  }
  void emplace_back(std::string_view text) { push_back(TransferSyntax(text)); }
  void assign(std::size_t count, const TransferSyntax& item) {
    clear();
    for (; count != 0; --count) push_back(item);
  }
  void clear() { bytes_.clear(); }
  /// Gives back the room that none of them fills.
  void shrink_to_fit() { bytes_.shrink_to_fit(); }

  /// Sets the reserved byte of each to 0.
  void ClearReserved() noexcept {
    std::uint8_t* const end = bytes_.data() + bytes_.size();
    for (std::uint8_t* at = bytes_.data(); at != end; at += HeadBytes(at) + TextBytes(at)) {
      at[kReservedAt] = 0;
    }
  }

 private:
  // In front of each text. The type is there where it is another than it should be, which no reader makes it.
  static constexpr std::size_t kReservedAt = 0;
  static constexpr std::size_t kSizeAt = 1;
  static constexpr std::size_t kTypeAt = 2;
  static constexpr std::size_t kLeastHeadBytes = 2;
  static constexpr std::uint32_t kTypeFollows = 0x80;

  static bool HasType(const std::uint8_t* at) { return (at[kSizeAt] & kTypeFollows) != 0; }
  static std::size_t HeadBytes(const std::uint8_t* at) {
    return kLeastHeadBytes + (HasType(at) ? 1 : 0);
  }
  static std::size_t TextBytes(const std::uint8_t* at) { return at[kSizeAt] & ~kTypeFollows; }
  static std::ptrdiff_t Steps(std::size_t count) { return static_cast<std::ptrdiff_t>(count); }
  template <class Items>
  void Append(const Items& items) {
    for (const TransferSyntax& item : items) push_back(item);
  }

  std::vector<std::uint8_t> bytes_;
};

}  // namespace tessaret
