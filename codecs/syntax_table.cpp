#include "syntax_table.h"

#include "jpeg/jpeg_baseline_coder.h"
#include "jpeg/jpeg_extended_coder.h"
#include "jpeg/jpeg_lossless_coder.h"
#include "jpeg/jpeg_process.h"
#include "jpeg/jpeg_progressive_coder.h"
#include "jpeg2000/jpeg2000_coder.h"
#include "jpegls/jpegls_coder.h"
#include "rle/rle_coder.h"

namespace tessaret::codecs {
namespace {

const JpegBaselineCoder kJpegBaseline;
const JpegExtendedCoder kJpegExtended;
const JpegLosslessCoder kJpegLossless;
const Jpeg2000Coder kJpeg2000(Jpeg2000Kind::kLossless);
const Jpeg2000Coder kLossyJpeg2000(Jpeg2000Kind::kLossy);
const Jpeg2000Coder kHighThroughput(Jpeg2000Kind::kHighThroughput);
const JpegLsCoder kJpegLs(JpegLsKind::kLossless);
const JpegLsCoder kNearJpegLs(JpegLsKind::kNearLossless);
const JpegProgressiveCoder kJpegProgressive;
const RleCoder kRle;

// DICOM PS3.5, A.1 to A.4
const Syntax kSyntaxes[] = {
    {"1.2.840.10008.1.2", StreamKind::kNone, nullptr},
    {"1.2.840.10008.1.2.1", StreamKind::kNone, nullptr},
    {"1.2.840.10008.1.2.2", StreamKind::kNone, nullptr},
    {"1.2.840.10008.1.2.4.50", StreamKind::kJpeg, &kJpegBaseline},
    {"1.2.840.10008.1.2.4.51", StreamKind::kJpeg, &kJpegExtended},
    {"1.2.840.10008.1.2.4.53", StreamKind::kJpeg, &kJpegProgressive},
    {"1.2.840.10008.1.2.4.55", StreamKind::kJpeg, &kJpegProgressive},
    {"1.2.840.10008.1.2.4.57", StreamKind::kJpeg, &kJpegLossless},
    {"1.2.840.10008.1.2.4.70", StreamKind::kJpeg, &kJpegLossless},
    {"1.2.840.10008.1.2.4.80", StreamKind::kJpeg, &kJpegLs},
    {"1.2.840.10008.1.2.4.81", StreamKind::kJpeg, &kNearJpegLs},
    {"1.2.840.10008.1.2.4.90", StreamKind::kJpeg2000, &kJpeg2000},
    {"1.2.840.10008.1.2.4.91", StreamKind::kJpeg2000, &kLossyJpeg2000},
    {"1.2.840.10008.1.2.4.201", StreamKind::kJpeg2000, &kHighThroughput},
    {"1.2.840.10008.1.2.4.202", StreamKind::kJpeg2000, &kHighThroughput},
    {"1.2.840.10008.1.2.4.203", StreamKind::kJpeg2000, &kHighThroughput},
    {"1.2.840.10008.1.2.5", StreamKind::kRle, &kRle},
};

}  // namespace

std::span<const Syntax> Syntaxes() { return kSyntaxes; }

const FrameCoder& DecoderOf(const Syntax& syntax, Bytes stream) {
  if (syntax.kind != StreamKind::kJpeg) return *syntax.coder;
  switch (ProcessOf(stream)) {
    case JpegProcess::kDct:
      return kJpegExtended;
    case JpegProcess::kLossless:
      return kJpegLossless;
    case JpegProcess::kJpegLs:
      return kJpegLs;
    default:
      return *syntax.coder;
  }
}

}  // namespace tessaret::codecs
