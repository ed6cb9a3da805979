// What each compression method offers: frames from code streams and back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "encoder_settings.h"
#include "frame_format.h"

namespace tessaret::codecs {

/// What a frame turned out to be.
struct DecodedFrame {
  /// Bits of a sample in the code stream. Where they are more than Bits Stored and values need them, the data set is changed to
  /// say so.
  std::uint32_t precision = 0;
  /// The samples are red, green and blue now, whatever the data set called them: the method undid a colour transform, or
  /// the stream says so itself.
  bool isRgb = false;
  /// The method does not bring back the samples that were coded, so that values may lie beyond Bits Stored.
  bool isLossy = false;
};

struct EncodedFrame {
  std::vector<std::uint8_t> stream;
  /// Decoding it may give other values than those that came.
  bool isLossy = false;
};

/// One compression method for one transfer syntax. Constant: one object serves all threads.
class FrameCoder {
 public:
  FrameCoder() = default;
  FrameCoder(const FrameCoder&) = delete;
  FrameCoder& operator=(const FrameCoder&) = delete;
  virtual ~FrameCoder() = default;

  /// Fills `frame`, of format.Size() bytes, from one whole code stream, behind which pad bytes may follow. Throws CodecFailure
  /// with nothing written outside of `frame`, be it what the stream holds; with std::bad_alloc it is the same. Bits above
  /// Bits Stored come as the stream has them; signs are extended where the stream has fewer bits than are stored, or signs of its own.
  virtual DecodedFrame Decode(Bytes stream, const FrameFormat& format,
                              MutableBytes frame) const = 0;

  /// Throws CodecFailure, saying why, where frames of this format cannot be held whole by the method.
  virtual void RequireEncodable(const FrameFormat& format) const = 0;

  /// Encodes a frame of a format for which RequireEncodable did not throw.
  [[nodiscard]] virtual EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                            const EncoderSettings& settings) const = 0;

  /// What Photometric Interpretation is to say of frames of this format once they are encoded; `isLossy` as Encode told.
  [[nodiscard]] virtual std::string EncodedPhotometric(const FrameFormat& format,
                                                       bool /*isLossy*/) const {
    return format.photometric;
  }

  /// The defined term for Lossy Image Compression Method (DICOM PS3.3, C.7.6.1.1.5); null for methods that lose nothing.
  [[nodiscard]] virtual const char* LossyMethod() const { return nullptr; }
};

}  // namespace tessaret::codecs
