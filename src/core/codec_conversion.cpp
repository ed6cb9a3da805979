#include "core/codec_conversion.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

namespace tessaret {
namespace {

thread_local constinit CodecConversion* current = nullptr;

constexpr std::uint16_t kMetaGroup = 0x0002;

/// Types whose values are made even by a blank.
constexpr VrCode kTextTypes[] = {
    type_code::AE, type_code::AS, type_code::CS,          type_code::DA,
    type_code::DS, type_code::DT, type_code::IS,          type_code::LO,
    type_code::LT, type_code::PN, type_code::SH,          type_code::ST,
    type_code::TM, type_code::UT, MakeTypeCode('U', 'C'), MakeTypeCode('U', 'R')};

bool IsText(VrCode type) {
  return std::find(std::begin(kTextTypes), std::end(kTextTypes), type) != std::end(kTextTypes);
}

bool IsTheEngines(TagKey key) {
  return key == kPixelDataTag || GroupOf(key) == kMetaGroup || GroupOf(key) == kStructuralGroup ||
         ElementOf(key) == 0;
}

std::unique_ptr<VR> NewElement(TagKey key, VrCode type, const std::uint8_t* bytes,
                               std::uint32_t length) {
  auto made = std::make_unique<VR>(GroupOf(key), ElementOf(key), length, true);
  made->TypeCode = type;
  if (length == 0) return made;
  std::memcpy(made->Data, bytes, length);
  if (made->Length != length) made->Data[length] = IsText(type) ? ' ' : '\0';
  return made;
}

/// Exchanges all but the tags. Nothing is allocated, and pointers to both elements stay good.
void SwapContents(VR& a, VR& b) noexcept {
  const bool aIsSmall = a.Data == a.Small;
  const bool bIsSmall = b.Data == b.Small;
  std::swap(a.Length, b.Length);
  std::swap(a.Data, b.Data);
  std::swap(a.OwnsData, b.OwnsData);
  std::swap(a.Moved, b.Moved);
  std::swap(a.Items, b.Items);
  std::swap(a.ValueTag, b.ValueTag);
  std::swap(a.TypeCode, b.TypeCode);
  std::swap(a.IsSteppedOver, b.IsSteppedOver);
  std::swap(a.StreamPosition, b.StreamPosition);
  std::uint8_t small[sizeof(a.Small)];
  std::memcpy(small, a.Small, sizeof(small));
  std::memcpy(a.Small, b.Small, sizeof(small));
  std::memcpy(b.Small, small, sizeof(small));
  if (aIsSmall) b.Data = b.Small;
  if (bIsSmall) a.Data = a.Small;
}

}  // namespace

CodecConversion::CodecConversion(Kind kind, DICOMObject& object, VR* pixels, std::uint32_t frames)
    : kind_(kind), object_(object), pixels_(pixels), frames_(frames), outer_(current) {
  current = this;
}

CodecConversion::~CodecConversion() {
  current = outer_;
  while (!changes_.empty()) {
    Undo(changes_.back());
    changes_.pop_back();
  }
}

CodecConversion* CodecConversion::Current() noexcept { return current; }

CodecFrame CodecConversion::Frame() const {
  CodecFrame frame{frame_, frames_, nullptr, 0};
  if (offsetTable_ != nullptr && offsetTable_->Data != nullptr) {
    frame.OffsetTable = offsetTable_->Data;
    frame.OffsetTableLength = offsetTable_->Length;
  }
  return frame;
}

bool CodecConversion::Set(TagKey key, VrCode type, const std::uint8_t* bytes,
                          std::uint32_t length) {
  if (kind_ == Kind::kAsking || IsTheEngines(key)) return false;
  VR* present = object_.GetVR(GroupOf(key), ElementOf(key));
  if (type == type_code::kNone) type = present == nullptr ? type_code::UN : present->TypeCode;
  std::unique_ptr<VR> made = NewElement(key, type, bytes, length);
  changes_.reserve(changes_.size() + 1);
  if (present != nullptr) {
    SwapContents(*present, *made);
    if (!IsChanged(key)) changes_.push_back({key, std::move(made)});
    return true;
  }
  if (!object_.Push(made.get())) return false;
  static_cast<void>(made.release());
  changes_.push_back({key, nullptr});
  return true;
}

bool CodecConversion::IsChanged(TagKey key) const {
  return std::any_of(changes_.begin(), changes_.end(),
                     [key](const Change& change) { return change.key == key; });
}

void CodecConversion::Undo(const Change& change) noexcept {
  if (change.before == nullptr) {
    delete object_.Remove(GroupOf(change.key), ElementOf(change.key));
  } else if (VR* present = object_.GetVR(GroupOf(change.key), ElementOf(change.key))) {
    SwapContents(*present, *change.before);
  }
}

void CodecConversion::Fail(const char* words) noexcept {
  try {
    words_ = words;
  } catch (const std::bad_alloc&) {
    words_.clear();
  }
}

}  // namespace tessaret
