#include "image_codec.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "element_changes.h"
#include "failure.h"
#include "frame_finder.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kItemHeader = 8;

/// Natively these have fewer samples than pixels times Samples per Pixel, which no method here takes.
constexpr std::string_view kSubsampled[] = {"YBR_FULL_422", "YBR_PARTIAL_422", "YBR_PARTIAL_420"};

/// The data set whose frames this thread decodes: as it was before its elements were changed, and where its frames lie. The engine
/// asks for the frames of one data set in one thread, from the first to the last.
struct Decoding {
  Decoding(const DICOMObject* object, const VR* pixels, const ImageInfo& info,
           const CodecFrame& place, StreamKind kind)
      : format(ReadFrameFormat(object, info)), finder(pixels, place, kind) {}
  FrameFormat format;
  FrameFinder finder;
};
thread_local std::optional<Decoding> decoding;

/// Whether something was lost of the frames of the data set that this thread encodes.
thread_local bool hasLoss = false;

CodecFrame PlaceOf(const VR* pixels) {
  CodecFrame place{};
  if (tessaret_codec_frame(pixels, &place) == 0) Fail("the engine does not say which frame it is");
  return place;
}

/// What lies behind the frames that are named would not be encoded. Less than a frame is filling.
void RequireAllNamed(const DICOMObject* object, const ImageInfo& info) {
  const std::uint64_t named = std::uint64_t{info.FrameSize} * info.Frames;
  const std::uint64_t length =
      tessaret_codec_length(tessaret_codec_element(object, 0x7FE0, 0x0010));
  if (length > named + 1 && length - named >= info.FrameSize) {
    Fail("%" PRIu64 " bytes of pixel data are more than %u frames of %u", length, info.Frames,
         info.FrameSize);
  }
}

FrameFormat EncodableFormat(const DICOMObject* object, const ImageInfo& info,
                            const FrameCoder& coder) {
  FrameFormat format = ReadFrameFormat(object, info);
  if (format.bitsAllocated == 1) Fail("samples of one bit are not encoded");
  const auto* const found =
      std::find(std::begin(kSubsampled), std::end(kSubsampled), format.photometric);
  if (found != std::end(kSubsampled)) {
    Fail("native pixels in %s are not encoded", format.photometric.c_str());
  }
  RequireHighBit(format);
  RequireAllNamed(object, info);
  coder.RequireEncodable(format);
  return format;
}

std::uint64_t CodedBytes(const VR* pixels) {
  std::uint64_t bytes = 0;
  for (std::uint32_t at = 0; at < tessaret_codec_item_count(pixels); ++at) {
    std::uint32_t length = 0;
    tessaret_codec_fragment(pixels, at, &length);
    bytes += length;
  }
  return bytes;
}

/// Appends the stream as one fragment; the result is what it takes with its header.
std::uint32_t AddFragment(VR* pixels, const std::vector<std::uint8_t>& stream) {
  constexpr std::size_t kMost = 0xFFFFFFFE - kItemHeader;
  if (stream.empty() || stream.size() > kMost) Fail("%zu coded bytes fit no item", stream.size());
  const auto length = static_cast<std::uint32_t>(stream.size());
  if (tessaret_codec_add_fragment(pixels, stream.data(), length) == 0) throw std::bad_alloc();
  return kItemHeader + length + length % 2;
}

/// Runs one operation, and says why it failed where it did: at which frame, where there is one.
template <class Operation>
auto Attempt(const char* syntax, const CodecFrame* place, Operation operation)
    -> decltype(operation()) {
  std::string cause;
  try {
    return operation();
  } catch (const CodecFailure& failure) {
    cause = failure.what();
  } catch (const std::bad_alloc&) {
    cause = "no more memory";
  } catch (const std::length_error&) {
    cause = "no more memory";
  }
  decoding.reset();
  const std::string frame = place == nullptr || place->Frames == 0
                                ? std::string()
                                : Format(", frame %u of %u", place->Index + 1, place->Frames);
  tessaret_codec_fail(
      Format("Transfer syntax [%s]%s: %s", syntax, frame.c_str(), cause.c_str()).c_str());
  return {};
}

}  // namespace

const FrameCoder& ImageCodec::Coder() const {
  if (syntax_.coder == nullptr) Fail("native pixels are not coded");
  return *syntax_.coder;
}

CodecBool ImageCodec::CanCompress(DICOMObject* object, const char* syntax, const ImageInfo* info,
                                  void* /*progress*/) {
  // Whatever an object holds, it holds natively.
  if (syntax_.coder == nullptr) return 1;
  return Attempt(syntax, nullptr, [&]() -> CodecBool {
    static_cast<void>(EncodableFormat(object, *info, Coder()));
    return 1;
  });
}

std::uint32_t ImageCodec::CompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                                        const ImageInfo* info, const std::uint8_t* frame,
                                        void* /*progress*/) {
  CodecFrame place{};
  return Attempt(syntax, &place, [&]() -> std::uint32_t {
    place = PlaceOf(pixels);
    const FrameCoder& coder = Coder();
    const FrameFormat format = EncodableFormat(object, *info, coder);
    Bytes native(frame, info->FrameSize);
    std::vector<std::uint8_t> byPixel;
    if (format.isPlanar && format.samples > 1) {
      byPixel.resize(native.size());
      PlanesToPixels(native, format, byPixel);
      native = byPixel;
    }
    const EncodedFrame encoded = coder.Encode(native, format, settings_);
    const std::uint32_t size = AddFragment(pixels, encoded.stream);
    hasLoss = encoded.isLossy || (hasLoss && place.Index > 0);
    if (place.Index + 1 == place.Frames) {
      DescribeEncoded(object, format, coder, hasLoss);
      if (hasLoss) {
        DescribeLoss(object, std::uint64_t{info->FrameSize} * place.Frames, CodedBytes(pixels),
                     coder.LossyMethod());
      }
    }
    return size;
  });
}

CodecBool ImageCodec::DecompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                                      const ImageInfo* info, std::uint8_t* frame,
                                      void* /*progress*/) {
  CodecFrame place{};
  return Attempt(syntax, &place, [&]() -> CodecBool {
    place = PlaceOf(pixels);
    if (syntax_.coder == nullptr) Fail("native pixels are not coded");
    if (place.Index == 0 || !decoding || !decoding->finder.IsOf(pixels)) {
      decoding.emplace(object, pixels, *info, place, syntax_.kind);
    }
    const FrameFormat& format = decoding->format;
    std::vector<std::uint8_t> joined;
    const Bytes stream = decoding->finder.Frame(place.Index, joined);
    const MutableBytes native(frame, info->FrameSize);
    const DecodedFrame decoded = DecoderOf(syntax_, stream).Decode(stream, format, native);
    DescribeDecoded(object, format, decoded, native, place.Index);
    if (place.Index + 1 == place.Frames) decoding.reset();
    return 1;
  });
}

}  // namespace tessaret::codecs
