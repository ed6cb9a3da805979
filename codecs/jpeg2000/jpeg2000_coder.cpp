#include "jpeg2000/jpeg2000_coder.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "failure.h"
#include "jpeg2000/jpeg2000_header.h"
#include "jpeg2000/openjpeg_handles.h"
#include "jpeg2000/tile_decoder.h"
#include "plausible_size.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

/// All work is done by the calling thread, whatever the environment says: the host has threads of its own.
constexpr int kOwnThreads = 0;

/// What the library takes, at least: for each sample, for each code block, and besides.
constexpr std::size_t kDecodingBytes = 10;
constexpr std::size_t kBlockBytes = 448;
constexpr std::size_t kEncodingBytes = 16;
constexpr std::size_t kSpareBytes = std::size_t{256} << 10;

/// Where the rate is below this nothing but headers would be left of a frame.
constexpr double kLeastBytes = 256;

constexpr int kMostResolutions = 6;

bool NamesTransform(const FrameFormat& format) {
  return format.photometric == "YBR_RCT" || format.photometric == "YBR_ICT";
}

void RequireSameImage(const Jpeg2000Header& header, const FrameFormat& format) {
  if (format.bitsAllocated > 16) Fail("JPEG 2000 with %u bits allocated", format.bitsAllocated);
  RequireSameShape({.columns = header.columns,
                    .rows = header.rows,
                    .components = header.components,
                    .precision = header.precision},
                   format);
}

void RequireSameImage(const opj_image_t& image, const Jpeg2000Header& header) {
  bool isSame = image.numcomps == header.components;
  for (std::uint32_t at = 0; isSame && at < image.numcomps; ++at) {
    const opj_image_comp_t& component = image.comps[at];
    isSame = component.data != nullptr && component.w == header.columns &&
             component.h == header.rows && component.prec == header.precision &&
             (component.sgnd != 0) == header.isSigned;
  }
  if (!isSame) Fail("the code stream decodes to another image than it names");
}

OpenJpegImage Decoded(OpenJpegCodec& codec) {
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  codec.Check(opj_setup_decoder(codec.Codec(), &parameters));
  codec.Check(opj_decoder_set_strict_mode(codec.Codec(), OPJ_TRUE));
  codec.Check(opj_codec_set_threads(codec.Codec(), kOwnThreads));
  opj_image_t* bare = nullptr;
  const OPJ_BOOL hasHeader = opj_read_header(codec.Stream(), codec.Codec(), &bare);
  OpenJpegImage image(bare);
  codec.Check(hasHeader);
  codec.Check(opj_decode(codec.Codec(), codec.Stream(), image.get()));
  codec.Check(opj_end_decompress(codec.Codec(), codec.Stream()));
  codec.RequireNoWarnings();
  return image;
}

/// From values of 32 bits, of which `mask` is kept, to samples of a frame by pixel.
template <class Sample>
void Gather(const opj_image_t& image, std::uint32_t mask, MutableBytes frame) {
  const std::size_t count = frame.size() / sizeof(Sample) / image.numcomps;
  const std::size_t stride = image.numcomps * sizeof(Sample);
  for (std::size_t plane = 0; plane < image.numcomps; ++plane) {
    const OPJ_INT32* from = image.comps[plane].data;
    std::uint8_t* to = frame.data() + plane * sizeof(Sample);
    if (image.numcomps == 1) {
      for (std::size_t at = 0; at < count; ++at) {
        const auto sample = static_cast<Sample>(static_cast<std::uint32_t>(from[at]) & mask);
        std::memcpy(to + at * sizeof(Sample), &sample, sizeof sample);
      }
      continue;
    }
    for (std::size_t at = 0; at < count; ++at) {
      const auto sample = static_cast<Sample>(static_cast<std::uint32_t>(from[at]) & mask);
      std::memcpy(to + at * stride, &sample, sizeof sample);
    }
  }
}

template <class Sample>
void Spread(Bytes frame, opj_image_t& image) {
  const std::size_t count = frame.size() / sizeof(Sample) / image.numcomps;
  for (std::size_t plane = 0; plane < image.numcomps; ++plane) {
    OPJ_INT32* to = image.comps[plane].data;
    const std::uint8_t* from = frame.data() + plane * sizeof(Sample);
    for (std::size_t at = 0; at < count; ++at) {
      Sample sample;
      std::memcpy(&sample, from + at * image.numcomps * sizeof(Sample), sizeof sample);
      to[at] = std::int32_t{sample};
    }
  }
}

void Spread(Bytes frame, const FrameFormat& format, opj_image_t& image) {
  if (format.BytesPerSample() == 1) {
    format.isSigned ? Spread<std::int8_t>(frame, image) : Spread<std::uint8_t>(frame, image);
  } else {
    format.isSigned ? Spread<std::int16_t>(frame, image) : Spread<std::uint16_t>(frame, image);
  }
}

OpenJpegImage ImageOf(Bytes frame, const FrameFormat& format, std::uint32_t precision) {
  opj_image_cmptparm_t component{};
  component.dx = 1;
  component.dy = 1;
  component.w = format.columns;
  component.h = format.rows;
  component.prec = precision;
  component.sgnd = format.isSigned ? 1 : 0;
  std::vector<opj_image_cmptparm_t> components(format.samples, component);
  OpenJpegImage image(
      opj_image_create(format.samples, components.data(),
                       format.samples == 1 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_UNSPECIFIED));
  if (image == nullptr) throw std::bad_alloc();
  image->x1 = format.columns;
  image->y1 = format.rows;
  Spread(frame, format, *image);
  return image;
}

/// Whether red, green and blue are transformed to what is coded in fewer bytes.
bool IsTransformedFrom(const FrameFormat& format) {
  return format.samples == 3 && format.photometric == "RGB";
}

opj_cparameters_t Parameters(const FrameFormat& format, bool isTransformed) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.cp_disto_alloc = 1;
  parameters.tcp_numlayers = 1;
  parameters.tcp_rates[0] = 0;  // all there is
  parameters.tcp_mct = isTransformed ? 1 : 0;
  // No resolution may be empty.
  for (parameters.numresolution = 1;
       parameters.numresolution < kMostResolutions &&
       std::min(format.columns, format.rows) >> parameters.numresolution != 0;) {
    ++parameters.numresolution;
  }
  return parameters;
}

/// In the library's terms, which count the bits of a sample that there are, not those that are allocated.
float Rate(const FrameFormat& format, std::uint32_t precision, std::uint32_t ratio) {
  const double bytes = std::max(static_cast<double>(format.Size()) / ratio, kLeastBytes);
  const double rate = static_cast<double>(format.Samples()) * precision / 8 / bytes;
  return rate > 1 ? static_cast<float>(rate) : 0;
}

}  // namespace

namespace {

void DecodeByLibrary(const Jpeg2000Header& header, const FrameFormat& format, MutableBytes frame) {
  RequireMemory(kSpareBytes + kDecodingBytes * static_cast<std::size_t>(format.Samples()) +
                kBlockBytes * static_cast<std::size_t>(header.codeBlocks) +
                2 * header.codeStream.size());
  OpenJpegCodec codec(header.codeStream);
  const OpenJpegImage image = Decoded(codec);
  RequireSameImage(*image, header);
  // Samples are patterns of bits: what the stream takes for their signs does not matter where the data set knows better.
  const std::uint32_t mask = (1U << header.precision) - 1;
  if (format.BytesPerSample() == 1) {
    Gather<std::uint8_t>(*image, mask, frame);
  } else {
    Gather<std::uint16_t>(*image, mask, frame);
  }
}

void DecodeTiles(const Jpeg2000Header& header, const FrameFormat& format, MutableBytes frame) {
  const auto decoder = std::make_unique<TileDecoder>(header, frame, format.BytesPerSample());
  std::span<const TilePart> parts = header.tileParts;
  while (!parts.empty()) {
    std::size_t count = 1;
    while (count < parts.size() && parts[count].tile == parts[0].tile) ++count;
    decoder->Decode(parts.first(count));
    parts = parts.subspan(count);
  }
}

}  // namespace

DecodedFrame Jpeg2000Coder::Decode(Bytes stream, const FrameFormat& format,
                                   MutableBytes frame) const {
  const Jpeg2000Header header = ReadJpeg2000Header(stream);
  RequireSameImage(header, format);
  RequirePlausibleSize(header.codeStream.size(), format);
  if (header.isExtended) {
    DecodeByLibrary(header, format, frame);
  } else {
    DecodeTiles(header, format, frame);
  }
  // Above Bits Stored the bits of a signed sample tell nothing, as in native data, unless the stream has signs of its own.
  if (header.isSigned || header.precision < format.bitsStored) {
    ExtendSigns(frame, format, header.precision);
  }
  const bool isRgb = format.samples == 3 && (header.isTransformed || NamesTransform(format));
  // Streams of the lossy kind may have lost something by leaving packets out, too.
  const bool isLossy = !header.isReversible || kind_ == Jpeg2000Kind::kLossy;
  return {.precision = header.precision, .isRgb = isRgb, .isLossy = isLossy};
}

void Jpeg2000Coder::RequireEncodable(const FrameFormat& format) const {
  if (kind_ == Jpeg2000Kind::kHighThroughput) Fail("high-throughput JPEG 2000 is only decoded");
  if (format.bitsAllocated != 8 && format.bitsAllocated != 16) {
    Fail("JPEG 2000 does not hold samples with %u bits allocated", format.bitsAllocated);
  }
  if (kind_ == Jpeg2000Kind::kLossy && format.photometric == "PALETTE COLOR") {
    Fail("numbers of palette entries that are nearly right mean other colours");
  }
}

EncodedFrame Jpeg2000Coder::Encode(Bytes frame, const FrameFormat& format,
                                   const EncoderSettings& settings) const {
  // What is not a plain number may not be off by anything: a carry would change what stands above it.
  const bool arePlain =
      format.highBit + 1 == format.bitsStored && !NeedsMoreThanStored(frame, format);
  const std::uint32_t precision = arePlain ? format.bitsStored : format.bitsAllocated;
  EncodedFrame encoded;
  encoded.isLossy = kind_ == Jpeg2000Kind::kLossy && arePlain && settings.jpeg2000Ratio > 1;
  RequireMemory(kSpareBytes + kEncodingBytes * static_cast<std::size_t>(format.Samples()));
  const OpenJpegImage image = ImageOf(frame, format, precision);
  opj_cparameters_t parameters = Parameters(format, IsTransformedFrom(format));
  if (encoded.isLossy) {
    parameters.irreversible = 1;
    parameters.tcp_rates[0] = Rate(format, precision, settings.jpeg2000Ratio);
  }
  OpenJpegCodec codec;
  codec.Check(opj_setup_encoder(codec.Codec(), &parameters, image.get()));
  // Differences of colours have a bit more than colours, for which the library leaves no room: where neighbours differ by all that
  // they can, it would drop the highest bit.
  const char* const options[] = {"GUARD_BITS=3", nullptr};
  codec.Check(opj_encoder_set_extra_options(codec.Codec(), options));
  codec.Check(opj_codec_set_threads(codec.Codec(), kOwnThreads));
  codec.Check(opj_start_compress(codec.Codec(), image.get(), codec.Stream()));
  codec.Check(opj_encode(codec.Codec(), codec.Stream()));
  codec.Check(opj_end_compress(codec.Codec(), codec.Stream()));
  encoded.stream = std::move(codec.Output());
  return encoded;
}

std::string Jpeg2000Coder::EncodedPhotometric(const FrameFormat& format, bool isLossy) const {
  if (!IsTransformedFrom(format)) return format.photometric;
  return isLossy ? "YBR_ICT" : "YBR_RCT";
}

const char* Jpeg2000Coder::LossyMethod() const {
  return kind_ == Jpeg2000Kind::kLossy ? "ISO_15444_1" : nullptr;
}

}  // namespace tessaret::codecs
