// The codec object that the engine meets, one for each transfer syntax: the same for all, but for the coder.
#pragma once

#include "encoder_settings.h"
#include "syntax_table.h"
#include "tessaret/codec.h"

namespace tessaret::codecs {

/// Serves any number of threads at once. Failures name the syntax, the frame and the cause.
class ImageCodec final : public DcmCodec {
 public:
  /// The row of the table stays where it is.
  ImageCodec(const Syntax& syntax, const EncoderSettings& settings)
      : syntax_(syntax), settings_(settings) {}

  CodecBool CanCompress(DICOMObject* object, const char* syntax, const ImageInfo* info,
                        void* progress) override;
  std::uint32_t CompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                              const ImageInfo* info, const std::uint8_t* frame,
                              void* progress) override;
  CodecBool DecompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                            const ImageInfo* info, std::uint8_t* frame, void* progress) override;

 private:
  /// Throws CodecFailure for a native syntax.
  [[nodiscard]] const FrameCoder& Coder() const;

  const Syntax& syntax_;
  const EncoderSettings settings_;
};

}  // namespace tessaret::codecs
