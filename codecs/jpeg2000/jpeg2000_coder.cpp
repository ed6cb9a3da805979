#include "jpeg2000/jpeg2000_coder.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

#include "failure.h"
#include "jpeg2000/jpeg2000_header.h"
#include "jpeg2000/openjpeg_handles.h"
#include "plausible_size.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

bool NamesTransform(const FrameFormat& format) {
  return format.photometric == "YBR_RCT" || format.photometric == "YBR_ICT";
}

void RequireSameImage(const Jpeg2000Header& header, const FrameFormat& format) {
  if (format.bitsAllocated > 16) Fail("JPEG 2000 with %u bits allocated", format.bitsAllocated);
  if (header.columns != format.columns || header.rows != format.rows) {
    Fail("the code stream has %u x %u pixels, the data set %u x %u", header.columns, header.rows,
         format.columns, format.rows);
  }
  if (header.components != format.samples) {
    Fail("the code stream has %u components, the data set %u samples", header.components,
         format.samples);
  }
  if (header.precision > format.bitsAllocated) {
    Fail("the code stream has samples of %u bits, of which %u are allocated", header.precision,
         format.bitsAllocated);
  }
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
  // The host has threads of its own.
  codec.Check(opj_codec_set_threads(codec.Codec(), 1));
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

}  // namespace

DecodedFrame Jpeg2000Coder::Decode(Bytes stream, const FrameFormat& format,
                                   MutableBytes frame) const {
  const Jpeg2000Header header = ReadJpeg2000Header(stream);
  RequireSameImage(header, format);
  RequirePlausibleSize(header.codeStream.size(), format);
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
  // Above Bits Stored the bits of a signed sample tell nothing, as in native data, unless the stream has signs of its own.
  if (header.isSigned || header.precision < format.bitsStored) {
    ExtendSigns(frame, format, header.precision);
  }
  const bool isRgb = format.samples == 3 && (header.isTransformed || NamesTransform(format));
  return {header.precision, isRgb};
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

EncodedFrame Jpeg2000Coder::Encode(Bytes /*frame*/, const FrameFormat& /*format*/,
                                   const EncoderSettings& /*settings*/) const {
  return {};
}

std::string Jpeg2000Coder::EncodedPhotometric(const FrameFormat& format) const {
  return format.photometric;
}

const char* Jpeg2000Coder::LossyMethod() const {
  return kind_ == Jpeg2000Kind::kLossy ? "ISO_15444_1" : nullptr;
}

}  // namespace tessaret::codecs
