#include "value_bytes.h"

#include <algorithm>
#include <limits>

#include "class_object.h"

namespace tessaret::tool {

void ValueBytes::Fetch(std::uint32_t offset, std::uint32_t count, std::uint32_t least) {
  const auto most = static_cast<std::int32_t>(
      std::min<std::uint32_t>(count, std::numeric_limits<std::int32_t>::max()));
  Require(file_->GetBytes(GroupOf(tag_), ElementOf(tag_), offset, most, &part_));
  bytes_ = BytesIn(part_);
  begin_ = offset;
  if (bytes_.size() < least) throw CallError("a value is too long, or gone");
}

bool ValueBytes::HasFirst() {
  if (bytes_.empty()) Fetch(0, 1, 0);
  return !bytes_.empty();
}

const std::uint8_t* ValueBytes::At(std::uint32_t offset, std::uint32_t count) {
  const bool isHere = offset >= begin_ && offset - begin_ <= bytes_.size() &&
                      count <= bytes_.size() - (offset - begin_);
  if (!isHere) Fetch(offset, std::min(kPortion, size_ - offset), count);
  return bytes_.data() + (offset - begin_);
}

std::span<const std::uint8_t> ValueBytes::All() {
  if (begin_ != 0 || bytes_.size() != size_) Fetch(0, size_, size_);
  return bytes_;
}

std::string_view ValueBytes::Text() {
  const auto bytes = All();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace tessaret::tool
