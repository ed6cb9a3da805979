// Elements and small dictionaries for tests of the texts about them.
#pragma once

#include <algorithm>
#include <memory>
#include <string>

#include "core/rtc.h"
#include "core/vr.h"
#include "support/bytes.h"

namespace tessaret::test {

/// An element with exactly these bytes, odd lengths too. The bytes lie at an odd address, so that a load that needs alignment
/// is found out by the sanitizer.
class MadeElement {
 public:
  MadeElement(std::uint16_t group, std::uint16_t element, VrCode type, const Bytes& value)
      : storage_(value.size() + 1),
        vr_(group, element, static_cast<std::uint32_t>(value.size()), nullptr, false) {
    std::copy(value.begin(), value.end(), storage_.begin() + 1);
    if (!value.empty()) vr_.Data = storage_.data() + 1;
    vr_.TypeCode = type;
  }
  MadeElement(VrCode type, const Bytes& value) : MadeElement(0x0009, 0x1001, type, value) {}
  MadeElement(VrCode type, std::string_view text) : MadeElement(type, BytesOf(text)) {}

  VR& operator*() { return vr_; }
  VR* operator->() { return &vr_; }

 private:
  Bytes storage_;
  VR vr_;
};

/// A new element for Push, with a copy of `value`.
inline VR* NewElement(std::uint16_t group, std::uint16_t element, VrCode type, const Bytes& value) {
  auto vr = std::make_unique<VR>(group, element, static_cast<std::uint32_t>(value.size()), nullptr);
  vr->TypeCode = type;
  if (!value.empty()) {
    vr->Data = new std::uint8_t[value.size()];
    std::copy(value.begin(), value.end(), vr->Data);
  }
  return vr.release();
}

inline VR* NewElement(std::uint16_t group, std::uint16_t element, VrCode type,
                      std::string_view text) {
  return NewElement(group, element, type, BytesOf(text));
}

/// A dictionary of the lines given, in its text form.
inline std::unique_ptr<DcmDictionary> DictionaryOf(const std::string& lines) {
  auto dictionary = std::make_unique<DcmDictionary>();
  const std::string text = "# Made by a test\n" + lines;
  if (!dictionary->AttachBytes(text.data(), text.size())) {
    throw std::runtime_error(dictionary->LastErrorText());
  }
  return dictionary;
}

}  // namespace tessaret::test
