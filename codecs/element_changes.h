// What data sets are told when their pixels change their form, so that they go on telling the truth.
#pragma once

#include <cstdint>

#include "frame_coder.h"
#include "frame_format.h"

namespace tessaret::codecs {

/// Photometric Interpretation, Planar Configuration, and the numbers of bits, as they are of the decoded `frame`. Throws CodecFailure
/// where frames of one data set turn out in different colours.
void DescribeDecoded(DICOMObject* object, const FrameFormat& format, const DecodedFrame& decoded,
                     Bytes frame, std::uint32_t index);

/// What is the same for all coded frames: Photometric Interpretation and Planar Configuration.
void DescribeEncoded(DICOMObject* object, const FrameFormat& format, const FrameCoder& coder,
                     bool isLossy);

/// That something was lost, by how many `nativeBytes` became `codedBytes` and by which method (DICOM PS3.3, C.7.6.1.1.5), behind what
/// was said of earlier losses, each ratio at the place of its method; and that the image is derived.
void DescribeLoss(DICOMObject* object, std::uint64_t nativeBytes, std::uint64_t codedBytes,
                  const char* method);

}  // namespace tessaret::codecs
