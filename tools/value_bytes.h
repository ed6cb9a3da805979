// The bytes of a value, fetched part by part: a large one is never here twice.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include <tessaret/tessaret.hpp>

#include "tag.h"

namespace tessaret::tool {

class ValueBytes {
 public:
  /// Of an element with `size` bytes, of which those are there that are asked for. `file` outlives this.
  ValueBytes(IDcmFile& file, TagKey tag, std::uint32_t size)
      : file_(&file), tag_(tag), size_(size) {}

  [[nodiscard]] std::uint32_t Size() const { return size_; }

  /// Whether there is at least one. Throws CallError.
  bool HasFirst();

  /// `count` bytes from `offset` on, which are there until the next call. Requires: the value has them, and `count` is at
  /// most kPortion. Throws CallError.
  const std::uint8_t* At(std::uint32_t offset, std::uint32_t count);
  /// All of them, likewise.
  std::span<const std::uint8_t> All();
  std::string_view Text();

  static constexpr std::uint32_t kPortion = 48 * 1024;

 private:
  /// Fetches what is there from `offset` on, at most `count` bytes and at least `least`.
  void Fetch(std::uint32_t offset, std::uint32_t count, std::uint32_t least);

  IDcmFile* file_;
  TagKey tag_;
  std::uint32_t size_;
  Variant part_;
  std::span<const std::uint8_t> bytes_;  // in it
  std::uint32_t begin_ = 0;              // where they are in the value
};

}  // namespace tessaret::tool
