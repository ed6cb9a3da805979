// Decodes the samples of JPEG-LS scans (ISO/IEC 14495-1, A and F).
#pragma once

#include "frame_format.h"
#include "jpegls/jpegls_header.h"

namespace tessaret::codecs {

/// Fills the samples of components `first` and those behind it that the scan has, in a frame by pixel. Throws CodecFailure where
/// the data are damaged, as far as that shows, or end before the frame or behind it.
void DecodeJpegLsScan(const JpegLsScan& scan, const FrameFormat& format, std::uint32_t first,
                      MutableBytes frame);

}  // namespace tessaret::codecs
