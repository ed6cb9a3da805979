// What a codec is busy with: the data set and the pixel data of the present call, and what it changed so far.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/dicom_object.h"
#include "tessaret/codec.h"

namespace tessaret {

/// Lives while an engine converts the frames of one data set, in one thread. The functions that codecs call find it by the
/// thread. At its end it takes back what the codec changed in the data set, unless that was to be kept.
class CodecConversion {
 public:
  enum class Kind { kAsking, kCompressing, kDecompressing };

  /// Both are the caller's and must live longer; `pixels` is null when asking.
  CodecConversion(Kind kind, DICOMObject& object, VR* pixels, std::uint32_t frames);
  CodecConversion(const CodecConversion&) = delete;
  CodecConversion& operator=(const CodecConversion&) = delete;
  ~CodecConversion();

  /// That of this thread, or null.
  static CodecConversion* Current() noexcept;

  [[nodiscard]] DICOMObject& Object() const { return object_; }
  [[nodiscard]] VR* Pixels() const { return pixels_; }
  [[nodiscard]] bool IsCompressing() const { return kind_ == Kind::kCompressing; }
  /// How many items of the pixel data come before the fragments.
  [[nodiscard]] std::uint32_t ItemsBeforeFragments() const { return IsCompressing() ? 1 : 0; }

  /// The table must live longer.
  void SetOffsetTable(const VR* table) { offsetTable_ = table; }
  /// What comes next is about this frame; words about an earlier one are forgotten.
  void SetFrame(std::uint32_t index) {
    frame_ = index;
    words_.clear();
  }
  [[nodiscard]] CodecFrame Frame() const;

  /// Gives the element a copy of the bytes, remembering what it was. False for elements that codecs may not change. Throws
  /// std::bad_alloc with nothing changed.
  bool Set(TagKey key, VrCode type, const std::uint8_t* bytes, std::uint32_t length);
  /// Whether the codec has set the element.
  [[nodiscard]] bool IsChanged(TagKey key) const;
  void KeepChanges() { changes_.clear(); }

  /// The words of the present call's failure. Without memory they are lost.
  void Fail(const char* words) noexcept;
  [[nodiscard]] const std::string& Words() const { return words_; }

 private:
  struct Change {
    TagKey key;
    std::unique_ptr<VR> before;  // null where the element is new
  };
  void Undo(const Change& change) noexcept;

  Kind kind_;
  DICOMObject& object_;
  VR* pixels_;
  std::uint32_t frames_;
  std::uint32_t frame_ = 0;
  const VR* offsetTable_ = nullptr;
  std::vector<Change> changes_;
  std::string words_;
  CodecConversion* outer_;
};

}  // namespace tessaret
