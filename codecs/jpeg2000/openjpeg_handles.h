// OpenJPEG's objects as owners, its streams in memory, and its messages as words of failures.
#pragma once

#include <openjpeg.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs {

struct OpenJpegDestroyer {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};

using OpenJpegImage = std::unique_ptr<opj_image_t, OpenJpegDestroyer>;

/// Throws std::bad_alloc where the library would soon find no memory, which it does not everywhere look for.
void RequireMemory(std::size_t bytes);

/// An encoder or a decoder, its stream, and what it said. The library's calls come from one thread.
class OpenJpegCodec {
 public:
  /// Decodes a raw code stream, which lives longer, and to which an end marker is added.
  explicit OpenJpegCodec(Bytes input);
  /// Encodes to a raw code stream.
  OpenJpegCodec();
  OpenJpegCodec(const OpenJpegCodec&) = delete;
  OpenJpegCodec& operator=(const OpenJpegCodec&) = delete;
  ~OpenJpegCodec();

  [[nodiscard]] opj_codec_t* Codec() { return codec_; }
  [[nodiscard]] opj_stream_t* Stream() { return stream_; }

  /// Throws what the library said, or std::bad_alloc, where `isDone` is false.
  void Check(OPJ_BOOL isDone) const;
  /// Throws the first warning, where there was one.
  void RequireNoWarnings() const;

  /// What was encoded.
  std::vector<std::uint8_t>& Output() { return output_; }

 private:
  static OPJ_SIZE_T Read(void* to, OPJ_SIZE_T count, void* self);
  static OPJ_OFF_T SkipInput(OPJ_OFF_T count, void* self);
  static OPJ_BOOL SeekInput(OPJ_OFF_T place, void* self);
  static OPJ_SIZE_T Write(void* from, OPJ_SIZE_T count, void* self);
  static OPJ_OFF_T SkipOutput(OPJ_OFF_T count, void* self);
  static OPJ_BOOL SeekOutput(OPJ_OFF_T place, void* self);
  static void Warned(const char* words, void* self);
  static void Failed(const char* words, void* self);

  void Begin(bool isDecoder, std::size_t buffer);
  void End();

  opj_codec_t* codec_ = nullptr;
  opj_stream_t* stream_ = nullptr;
  Bytes input_;
  std::size_t inputSize_ = 0;  // with the end marker
  std::vector<std::uint8_t> output_;
  std::size_t place_ = 0;  // in the input or the output
  // The first message of either kind; later ones cost nothing.
  std::array<char, 256> warning_{};
  std::array<char, 256> failure_{};
  bool isOutOfMemory_ = false;
};

}  // namespace tessaret::codecs
