// Lossless JPEG between this coder and independent programs, in both directions.
#include <gtest/gtest.h>

#include "codecs/lossless_images.h"
#include "codecs/peer_files.h"
#include "support/temp_folder.h"

namespace tessaret::codecs {
namespace {

using tessaret::test::ReadBytes;
using tessaret::test::TempFolder;
using tessaret::test::WriteBytes;
using test::RunProgram;

constexpr std::string_view kAnyPredictor = "1.2.840.10008.1.2.4.57";
constexpr std::string_view kFirstPredictor = "1.2.840.10008.1.2.4.70";

/// What `jpeg` makes of a stream; empty where it refuses it.
Stream DecodedByJpeg(const TempFolder& folder, const Stream& stream, const FrameFormat& format) {
  WriteBytes(folder.File("in.jpg"), stream);
  if (!RunProgram({"jpeg", "-c", folder.File("in.jpg"), folder.File("out.pnm")})) return {};
  return test::PnmPixels(ReadBytes(folder.File("out.pnm")), format);
}

/// What `dcmdjpeg` or `gdcmconv` makes of a stream in a file.
Stream DecodedInFile(const TempFolder& folder, const std::vector<std::string>& command,
                     std::string_view syntax, const Stream& stream, const FrameFormat& format) {
  WriteBytes(folder.File("in.dcm"), test::DicomFile(format, syntax, stream));
  std::vector<std::string> whole = command;
  whole.insert(whole.end(), {folder.File("in.dcm"), folder.File("out.dcm")});
  if (!RunProgram(whole)) return {};
  return test::NativePixels(ReadBytes(folder.File("out.dcm")), format);
}

TEST(JpegLosslessPeers, JpegAgreesOnAllPrecisionsPredictorsAndRestarts) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  const TempFolder folder;
  for (std::uint32_t precision = 2; precision <= 16; ++precision) {
    for (PlainOptions options; options.predictor <= 7; ++options.predictor) {
      // Turn by turn, so that all go with all sooner or later.
      const std::uint32_t turn = precision * 7 + options.predictor;
      options.rowsPerInterval = turn % 4;
      options.tables = {turn % 2 == 0 ? test::FlatTable()
                                      : test::SteepTable(static_cast<std::uint8_t>(turn % 17))};
      const std::uint32_t components = turn % 5 == 0 ? 3 : 1;
      const PlainImage image = NoisyImage(17, 11, components, precision, 1u << (precision - 1));
      const Stream stream = EncodePlainly(image, options);
      EXPECT_EQ(Decoded(stream, FormatOf(image)), FrameOf(image));
      EXPECT_EQ(DecodedByJpeg(folder, stream, FormatOf(image)), FrameOf(image))
          << precision << " bits, predictor " << options.predictor;
    }
  }
}

TEST(JpegLosslessPeers, JpegEncodesWhatThisCoderDecodes) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  const TempFolder folder;
  for (const std::uint32_t precision : {2u, 5u, 8u, 11u, 16u}) {
    for (const std::uint32_t components : {1u, 3u}) {
      const PlainImage image = NoisyImage(40, 30, components, precision, 1u << precision);
      WriteBytes(folder.File("in.pnm"), test::PnmFile(FrameOf(image), FormatOf(image)));
      for (const char* restart : {"0", "40", "120"}) {
        std::vector<std::string> options = {"jpeg", "-p", "-c", "-z", restart};
        // Without tables of its own it lists the values of another process behind those that it needs, up to 8 bits.
        if (precision > 8 || restart[0] == '4') options.emplace_back("-h");
        options.insert(options.end(), {folder.File("in.pnm"), folder.File("out.jpg")});
        ASSERT_TRUE(RunProgram(options));
        EXPECT_EQ(Decoded(ReadBytes(folder.File("out.jpg")), FormatOf(image)), FrameOf(image))
            << precision << " bits, " << components << " components, every " << restart;
      }
    }
  }
}

TEST(JpegLosslessPeers, DcmcjpegEncodesWhatThisCoderDecodes) {
  ASSERT_TRUE(test::HasProgram("dcmcjpeg"));
  const TempFolder folder;
  for (const FrameFormat& format :
       {test::MakeFormat(31, 17, 1, 8, 8), test::MakeFormat(31, 17, 1, 16, 12),
        test::MakeFormat(31, 17, 1, 16, 16), test::MakeFormat(31, 17, 1, 16, 12, true),
        test::MakeFormat(31, 17, 1, 16, 16, true), test::MakeFormat(31, 17, 3, 8, 8)}) {
    for (int predictor = 1; predictor <= 7; ++predictor) {
      const test::Pattern pattern = test::kPatterns[static_cast<std::size_t>(7 - predictor) % 6];
      const Stream frame = test::MakeFrame(format, pattern);
      WriteBytes(folder.File("in.dcm"), test::DicomFile(format, test::kExplicitLittle, frame));
      ASSERT_TRUE(RunProgram({"dcmcjpeg", "+el", "+sv", std::to_string(predictor),
                              folder.File("in.dcm"), folder.File("out.dcm")}));
      EXPECT_EQ(Decoded(test::PixelData(ReadBytes(folder.File("out.dcm"))), format), frame)
          << "predictor " << predictor;
    }
  }
}

TEST(JpegLosslessPeers, GdcmconvEncodesWhatThisCoderDecodes) {
  ASSERT_TRUE(test::HasProgram("gdcmconv"));
  const TempFolder folder;
  for (const FrameFormat& format :
       {test::MakeFormat(31, 17, 1, 8, 8), test::MakeFormat(31, 17, 1, 16, 12),
        test::MakeFormat(31, 17, 1, 16, 16), test::MakeFormat(31, 17, 1, 16, 16, true),
        test::MakeFormat(31, 17, 3, 8, 8)}) {
    for (const test::Pattern pattern : test::kPatterns) {
      const Stream frame = test::MakeFrame(format, pattern);
      WriteBytes(folder.File("in.dcm"), test::DicomFile(format, test::kExplicitLittle, frame));
      ASSERT_TRUE(
          RunProgram({"gdcmconv", "--jpeg", folder.File("in.dcm"), folder.File("out.dcm")}));
      EXPECT_EQ(Decoded(test::PixelData(ReadBytes(folder.File("out.dcm"))), format), frame);
    }
  }
}

struct Sample {
  FrameFormat format;
  Stream frame;
};

/// Frames of all kinds that programs for DICOM have in common.
std::vector<Sample> CommonFrames() {
  std::vector<FrameFormat> formats = {test::MakeFormat(31, 17, 1, 8, 8),
                                      test::MakeFormat(31, 17, 3, 8, 8)};
  for (const std::uint32_t stored : {10u, 12u, 16u}) {
    for (const bool isSigned : {false, true}) {
      formats.push_back(test::MakeFormat(31, 17, 1, 16, stored, isSigned));
    }
  }
  std::vector<Sample> frames;
  for (const FrameFormat& format : formats) {
    for (const test::Pattern pattern : test::kPatterns) {
      frames.push_back({format, test::MakeFrame(format, pattern)});
    }
  }
  for (const auto& [columns, rows] : {std::pair(1u, 1u), std::pair(64u, 1u), std::pair(1u, 64u)}) {
    const FrameFormat format = test::MakeFormat(columns, rows, 1, 16, 12);
    frames.push_back({format, test::MakeFrame(format, test::Pattern::kNoise)});
  }
  return frames;
}

/// Checks that what this coder encodes is decoded by a program.
void CheckDecodedBy(const std::vector<std::string>& command) {
  const TempFolder folder;
  bool isTurnOfFirst = false;
  for (const auto& [format, frame] : CommonFrames()) {
    const EncodedFrame encoded = JpegLosslessCoder().Encode(frame, format, {});
    const std::string_view syntax = isTurnOfFirst ? kFirstPredictor : kAnyPredictor;
    isTurnOfFirst = !isTurnOfFirst;
    EXPECT_EQ(DecodedInFile(folder, command, syntax, encoded.stream, format), frame)
        << format.columns << " x " << format.rows << ", " << format.bitsStored << " bits";
  }
}

TEST(JpegLosslessPeers, DcmdjpegDecodesWhatThisCoderEncodes) {
  ASSERT_TRUE(test::HasProgram("dcmdjpeg"));
  CheckDecodedBy({"dcmdjpeg"});
}

TEST(JpegLosslessPeers, GdcmconvDecodesWhatThisCoderEncodes) {
  ASSERT_TRUE(test::HasProgram("gdcmconv"));
  CheckDecodedBy({"gdcmconv", "--raw"});
}

TEST(JpegLosslessPeers, JpegDecodesWhatThisCoderEncodes) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  const TempFolder folder;
  for (const auto& [format, frame] : CommonFrames()) {
    const EncodedFrame encoded = JpegLosslessCoder().Encode(frame, format, {});
    EXPECT_EQ(DecodedByJpeg(folder, encoded.stream, format), frame);
  }
}

/// Checks that a program makes the same of streams of all predictors and point transforms.
void CheckAgreesWith(const std::vector<std::string>& command) {
  const TempFolder folder;
  for (const std::uint32_t precision : {8u, 12u, 16u}) {
    for (PlainOptions options; options.predictor <= 7; ++options.predictor) {
      options.pointTransform = (options.predictor + 2) % 4;
      options.rowsPerInterval = options.predictor % 3;
      // Of half the range, so that no sum of three samples leaves sixteen bits: with those, programs differ.
      const PlainImage image = NoisyImage(21, 13, 1, precision, 1u << (precision - 2));
      const Stream stream = EncodePlainly(image, options);
      EXPECT_EQ(DecodedInFile(folder, command, kAnyPredictor, stream, FormatOf(image)),
                Decoded(stream, FormatOf(image)))
          << precision << " bits, predictor " << options.predictor;
    }
  }
}

TEST(JpegLosslessPeers, DcmdjpegAgreesOnPredictorsAndPointTransforms) {
  ASSERT_TRUE(test::HasProgram("dcmdjpeg"));
  CheckAgreesWith({"dcmdjpeg"});
}

TEST(JpegLosslessPeers, GdcmconvAgreesOnPredictorsAndPointTransforms) {
  ASSERT_TRUE(test::HasProgram("gdcmconv"));
  CheckAgreesWith({"gdcmconv", "--raw"});
}

}  // namespace
}  // namespace tessaret::codecs
