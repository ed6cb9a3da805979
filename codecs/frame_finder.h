// Which bytes of encapsulated pixel data are which frame's (DICOM PS3.5, A.4).
#pragma once

#include <cstdint>
#include <vector>

#include "frame_format.h"
#include "syntax_table.h"

namespace tessaret::codecs {

/// The coded frames of one data set. Where there are as many fragments as frames each is one. Otherwise the offset table tells, if it
/// leads to fragments that begin like code streams; and where it is empty or wrong, those beginnings themselves.
class FrameFinder {
 public:
  /// Looks once at where fragments begin. `pixels` stays the engine's. Throws CodecFailure where frames cannot be told apart.
  FrameFinder(const VR* pixels, const CodecFrame& place, StreamKind kind);

  /// The bytes of a frame, which stay with the fragments or, where it has several, are put together in `joined`.
  [[nodiscard]] Bytes Frame(std::uint32_t index, std::vector<std::uint8_t>& joined) const;

  /// Whose frames these are.
  [[nodiscard]] bool IsOf(const VR* pixels) const { return pixels == pixels_; }

 private:
  void FindInAllFragments(StreamKind kind);
  void FindInOneFragment(StreamKind kind);
  void FindByFragments(const CodecFrame& place, StreamKind kind);
  [[nodiscard]] bool BeginAtFirst() const;

  const VR* pixels_;
  std::uint32_t frames_;
  std::vector<Bytes> fragments_;
  std::vector<std::uint32_t> firstFragments_;  // of each frame, where frames have several
  std::vector<Bytes> parts_;                   // of the one fragment, where it has all frames
};

}  // namespace tessaret::codecs
