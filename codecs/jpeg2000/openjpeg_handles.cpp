#include "jpeg2000/openjpeg_handles.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// The library reads through a buffer of its own.
constexpr std::size_t kLeastBuffer = 4096;
constexpr std::size_t kMostBuffer = std::size_t{1} << 20;

/// What real files give rise to, and what was looked at before.
constexpr std::string_view kHarmlessWarnings[] = {"Non conformant codestream TPsot==TNsot",
                                                  "Unknown marker"};

constexpr std::uint8_t kEndMarker[] = {0xFF, 0xD9};

constexpr OPJ_SIZE_T kEnd = static_cast<OPJ_SIZE_T>(-1);

OpenJpegCodec& Self(void* self) { return *static_cast<OpenJpegCodec*>(self); }

void Keep(const char* words, std::array<char, 256>& to) {
  if (to[0] != '\0') return;
  const std::size_t length = std::min(std::strcspn(words, "\n"), to.size() - 1);
  std::memcpy(to.data(), words, length);
}

/// Whether a message speaks of memory, in the words that the library has for that.
bool IsOfMemory(const char* words) {
  return std::strstr(words, "emory") != nullptr || std::strstr(words, "llocat") != nullptr;
}

}  // namespace

void RequireMemory(std::size_t bytes) {
  // Pages that are not touched cost nothing. Through a volatile pointer, lest both calls are left out as of no use.
  void* volatile block = ::operator new(bytes);
  ::operator delete(block);
}

OpenJpegCodec::OpenJpegCodec(Bytes input)
    : input_(input), inputSize_(input.size() + sizeof kEndMarker) {
  Begin(true, std::clamp(inputSize_, kLeastBuffer, kMostBuffer));
  opj_stream_set_read_function(stream_, Read);
  opj_stream_set_skip_function(stream_, SkipInput);
  opj_stream_set_seek_function(stream_, SeekInput);
  opj_stream_set_user_data_length(stream_, inputSize_);
}

OpenJpegCodec::OpenJpegCodec() {
  Begin(false, kMostBuffer);
  opj_stream_set_write_function(stream_, Write);
  opj_stream_set_skip_function(stream_, SkipOutput);
  opj_stream_set_seek_function(stream_, SeekOutput);
}

OpenJpegCodec::~OpenJpegCodec() { End(); }

void OpenJpegCodec::Begin(bool isDecoder, std::size_t buffer) {
  codec_ = isDecoder ? opj_create_decompress(OPJ_CODEC_J2K) : opj_create_compress(OPJ_CODEC_J2K);
  stream_ = opj_stream_create(buffer, isDecoder ? OPJ_STREAM_READ : OPJ_STREAM_WRITE);
  if (codec_ == nullptr || stream_ == nullptr) {
    End();
    throw std::bad_alloc();
  }
  opj_stream_set_user_data(stream_, this, nullptr);
  opj_set_warning_handler(codec_, Warned, this);
  opj_set_error_handler(codec_, Failed, this);
}

void OpenJpegCodec::End() {
  if (stream_ != nullptr) opj_stream_destroy(stream_);
  if (codec_ != nullptr) opj_destroy_codec(codec_);
}

void OpenJpegCodec::Check(OPJ_BOOL isDone) const {
  if (isDone == OPJ_TRUE) return;
  if (isOutOfMemory_ || IsOfMemory(failure_.data())) throw std::bad_alloc();
  Fail("%s", failure_[0] != '\0' ? failure_.data() : "OpenJPEG gives no reason");
}

void OpenJpegCodec::RequireNoWarnings() const {
  if (warning_[0] != '\0') Fail("%s", warning_.data());
}

OPJ_SIZE_T OpenJpegCodec::Read(void* to, OPJ_SIZE_T count, void* self) {
  OpenJpegCodec& codec = Self(self);
  if (codec.place_ == codec.inputSize_) return kEnd;
  const Bytes input = codec.input_;
  const Bytes left = codec.place_ < input.size()
                         ? input.subspan(codec.place_)
                         : Bytes(kEndMarker).subspan(codec.place_ - input.size());
  count = std::min(count, left.size());
  std::memcpy(to, left.data(), count);
  codec.place_ += count;
  return count;
}

OPJ_OFF_T OpenJpegCodec::SkipInput(OPJ_OFF_T count, void* self) {
  OpenJpegCodec& codec = Self(self);
  const auto left = static_cast<OPJ_OFF_T>(codec.inputSize_ - codec.place_);
  if (count < 0 || left == 0) return -1;
  count = std::min(count, left);
  codec.place_ += static_cast<std::size_t>(count);
  return count;
}

OPJ_BOOL OpenJpegCodec::SeekInput(OPJ_OFF_T place, void* self) {
  OpenJpegCodec& codec = Self(self);
  if (place < 0 || static_cast<std::size_t>(place) > codec.inputSize_) return OPJ_FALSE;
  codec.place_ = static_cast<std::size_t>(place);
  return OPJ_TRUE;
}

OPJ_SIZE_T OpenJpegCodec::Write(void* from, OPJ_SIZE_T count, void* self) {
  OpenJpegCodec& codec = Self(self);
  try {
    if (codec.output_.size() < codec.place_ + count) codec.output_.resize(codec.place_ + count);
  } catch (const std::bad_alloc&) {
    codec.isOutOfMemory_ = true;
    return kEnd;
  }
  std::memcpy(&codec.output_[codec.place_], from, count);
  codec.place_ += count;
  return count;
}

OPJ_OFF_T OpenJpegCodec::SkipOutput(OPJ_OFF_T count, void* self) {
  OpenJpegCodec& codec = Self(self);
  return SeekOutput(static_cast<OPJ_OFF_T>(codec.place_) + count, self) == OPJ_TRUE ? count : -1;
}

OPJ_BOOL OpenJpegCodec::SeekOutput(OPJ_OFF_T place, void* self) {
  OpenJpegCodec& codec = Self(self);
  // Only numbers that were left open are written later on.
  if (place < 0 || static_cast<std::size_t>(place) > codec.output_.size()) return OPJ_FALSE;
  codec.place_ = static_cast<std::size_t>(place);
  return OPJ_TRUE;
}

void OpenJpegCodec::Warned(const char* words, void* self) {
  for (const std::string_view harmless : kHarmlessWarnings) {
    if (std::string_view(words).substr(0, harmless.size()) == harmless) return;
  }
  Keep(words, Self(self).warning_);
}

void OpenJpegCodec::Failed(const char* words, void* self) { Keep(words, Self(self).failure_); }

}  // namespace tessaret::codecs
