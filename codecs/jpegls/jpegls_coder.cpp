#include "jpegls/jpegls_coder.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include <charls/charls.h>

#include "base/byte_order.h"
#include "failure.h"
#include "jpegls/jpegls_header.h"
#include "jpegls/jpegls_scan.h"
#include "plausible_size.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

struct Destroyer {
  void operator()(charls_jpegls_encoder* encoder) const { charls_jpegls_encoder_destroy(encoder); }
};

using Encoder = std::unique_ptr<charls_jpegls_encoder, Destroyer>;

void Check(charls_jpegls_errc result) {
  if (result == charls_jpegls_errc::success) return;
  if (result == charls_jpegls_errc::not_enough_memory) throw std::bad_alloc();
  Fail("%s", charls_get_error_message(result));
}

void RequireSameImage(const JpegLsHeader& header, const FrameFormat& format) {
  if (format.bitsAllocated != 8 && format.bitsAllocated != 16) {
    Fail("JPEG-LS with %u bits allocated", format.bitsAllocated);
  }
  RequireSameShape({.columns = header.columns,
                    .rows = header.rows,
                    .components = header.components,
                    .precision = header.precision},
                   format);
}

/// Bits Stored where they are enough, but what fills the container's bytes: other readers take fewer bits for an error, or take
/// samples of up to 8 bits for bytes although two are allocated.
std::uint32_t PrecisionFor(Bytes frame, const FrameFormat& format) {
  const std::uint32_t least = format.bitsAllocated == 8 ? 8 : 9;
  return std::max(least, BitsToKeep(frame, format));
}

/// Half of the range of values, or all of them could become one.
std::uint32_t LargestNear(const FrameFormat& format) {
  return std::min(255U, ((1U << format.bitsStored) - 1) / 2);
}

/// How far the signed samples of a frame are from the ends of their container: a sample that came to be further off would
/// come out at the other end.
std::uint32_t RoomAtEnds(Bytes frame, const FrameFormat& format) {
  // Samples as unsigned numbers with the sign's bit turned over are in their order.
  const std::uint32_t width = format.BytesPerSample();
  const std::uint32_t sign = 1U << (8 * width - 1);
  std::uint32_t least = ~0U;
  std::uint32_t most = 0;
  for (std::size_t at = 0; at < frame.size(); at += width) {
    const std::uint32_t sample = (width == 1 ? frame[at] : LoadLittle16(&frame[at])) ^ sign;
    least = std::min(least, sample);
    most = std::max(most, sample);
  }
  return std::min(least, 2 * sign - 1 - most);
}

/// By how much samples may be off without harm to anything but their last places: not at all where a container holds more than
/// a plain number, for a carry would change that.
std::uint32_t HarmlessNear(Bytes frame, const FrameFormat& format, std::uint32_t wanted) {
  if (wanted == 0) return 0;
  if (format.highBit + 1 != format.bitsStored || NeedsMoreThanStored(frame, format)) return 0;
  std::uint32_t nearness = std::min(wanted, LargestNear(format));
  if (format.isSigned) nearness = std::min(nearness, RoomAtEnds(frame, format));
  return nearness;
}

/// Fills `stream` as far as it goes, and says how far; nothing where there is no room.
std::size_t EncodeTo(MutableBytes stream, Bytes samples, const charls_frame_info& info,
                     std::uint32_t nearness) {
  const Encoder encoder(charls_jpegls_encoder_create());
  if (encoder == nullptr) throw std::bad_alloc();
  Check(charls_jpegls_encoder_set_destination_buffer(encoder.get(), stream.data(), stream.size()));
  Check(charls_jpegls_encoder_set_frame_info(encoder.get(), &info));
  Check(
      charls_jpegls_encoder_set_near_lossless(encoder.get(), static_cast<std::int32_t>(nearness)));
  Check(charls_jpegls_encoder_set_interleave_mode(
      encoder.get(),
      info.component_count == 1 ? charls::interleave_mode::none : charls::interleave_mode::line));
  const charls_jpegls_errc result =
      charls_jpegls_encoder_encode_from_buffer(encoder.get(), samples.data(), samples.size(), 0);
  if (result == charls_jpegls_errc::destination_buffer_too_small) return 0;
  Check(result);
  std::size_t written = 0;
  Check(charls_jpegls_encoder_get_bytes_written(encoder.get(), &written));
  return written;
}

std::vector<std::uint8_t> EncodeSamples(Bytes samples, const charls_frame_info& info,
                                        std::uint32_t nearness) {
  // Noise takes a little more than its samples do. No sample takes more than 64 bits of 16 or 32 of 8, but for a bit that is put
  // behind each byte of ones.
  constexpr std::size_t kHeaders = 1024;
  const std::size_t rooms[] = {samples.size() + samples.size() / 16 + kHeaders,
                               5 * samples.size() + kHeaders};
  std::vector<std::uint8_t> stream;
  for (const std::size_t room : rooms) {
    stream.resize(room);
    stream.resize(EncodeTo(stream, samples, info, nearness));
    if (!stream.empty()) return stream;
  }
  Fail("the code stream of a frame is too large");
}

}  // namespace

DecodedFrame JpegLsCoder::Decode(Bytes stream, const FrameFormat& format,
                                 MutableBytes frame) const {
  const JpegLsHeader header = ReadJpegLsHeader(stream);
  RequireSameImage(header, format);
  RequirePlausibleSize(stream.size(), format);
  DecodedFrame decoded{.precision = header.precision};
  for (std::uint32_t at = 0, first = 0; at < header.scanCount; ++at) {
    const JpegLsScan& scan = header.scans[at];
    DecodeJpegLsScan(scan, format, first, frame);
    first += scan.components;
    decoded.isLossy = decoded.isLossy || scan.parameters.nearness != 0;
  }
  // The bits of a signed sample are there as they were; above Bits Stored they tell nothing, as in native data.
  if (header.precision < format.bitsStored) ExtendSigns(frame, format, header.precision);
  return decoded;
}

void JpegLsCoder::RequireEncodable(const FrameFormat& format) const {
  if (format.bitsAllocated != 8 && format.bitsAllocated != 16) {
    Fail("JPEG-LS does not hold samples with %u bits allocated", format.bitsAllocated);
  }
  // CharLS writes them and does not read them back; others may not either.
  if (format.samples == 2) Fail("JPEG-LS of 2 samples per pixel is not encoded");
  if (kind_ == JpegLsKind::kNearLossless && format.photometric == "PALETTE COLOR") {
    Fail("numbers of palette entries that are nearly right mean other colours");
  }
}

EncodedFrame JpegLsCoder::Encode(Bytes frame, const FrameFormat& format,
                                 const EncoderSettings& settings) const {
  const std::uint32_t precision = PrecisionFor(frame, format);
  const std::uint32_t wanted = kind_ == JpegLsKind::kNearLossless ? settings.jpegLsNear : 0;
  const std::uint32_t nearness = HarmlessNear(frame, format, wanted);
  const charls_frame_info info{format.columns, format.rows, static_cast<std::int32_t>(precision),
                               static_cast<std::int32_t>(format.samples)};
  EncodedFrame encoded;
  encoded.isLossy = nearness > 0;
  encoded.stream = EncodeSamples(frame, info, nearness);
  return encoded;
}

const char* JpegLsCoder::LossyMethod() const {
  return kind_ == JpegLsKind::kNearLossless ? "ISO_14495_1" : nullptr;
}

}  // namespace tessaret::codecs
