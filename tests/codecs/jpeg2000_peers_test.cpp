// Streams that OpenJPEG's program makes in all the ways that it has, decoded here and by its own decoder.
#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "base/byte_order.h"
#include "codecs/frame_maker.h"
#include "codecs/openjpeg_files.h"
#include "codecs/peer_files.h"
#include "jpeg2000/jpeg2000_coder.h"
#include "support/build_kind.h"
#include "support/temp_folder.h"

namespace tessaret::codecs {
namespace {

using tessaret::test::kInstrumented;
using tessaret::test::TempFolder;
using Octets = std::vector<std::uint8_t>;

const Jpeg2000Coder kCoder(Jpeg2000Kind::kLossless);

constexpr const char* kWays[] = {
    "",
    " -n 1",
    " -n 2 -b 4,4",
    " -n 7",
    " -n 9 -t 50,40",
    " -b 1024,4",
    " -b 4,1024",
    " -b 16,256 -t 61,300",
    " -p RLCP -r 40,20,10,5,1",
    " -p RPCL -r 30,10,1 -c [64,32],[32,16],[16,16] -b 8,8",
    " -p PCRL -r 30,10,1 -c [16,64],[32,16] -t 37,41",
    " -p CPRL -r 30,10,1 -c [32,32] -SOP -EPH",
    " -p LRCP -r 30 -SOP",
    " -p LRCP -r 8 -EPH -TP R",
    " -p RLCP -TP L -r 20,5 -t 64,64",
    " -p RPCL -TP C -PLT",
    " -d 7,11 -T 3,4 -t 23,29",
    " -d 40,41 -T 1,40 -t 64,64 -p PCRL -c [8,8],[4,4]",
    " -d 1,1 -n 6",
    " -M 1",
    " -M 2",
    " -M 4",
    " -M 8",
    " -M 32",
    " -M 1 -r 20,10,1",
    " -M 4 -r 20,10,1 -p RLCP",
    " -M 5 -r 20,10,1",
    " -M 9 -b 32,16",
    " -M 37 -r 10,2",
    " -M 42 -t 33,33",
    " -M 47",
    " -ROI c=0,U=12",
    " -ROI c=0,U=3 -r 10,1",
    " -POC T1=0,0,1,2,3,LRCP/T1=0,0,3,6,3,RPCL -r 20,10,1 -n 6",
    " -POC T1=0,0,3,1,3,CPRL/T1=1,0,3,6,3,LRCP -r 20,10,1 -n 6",
    " -POC T1=0,0,2,3,3,RPCL/T1=3,0,1,6,3,CPRL/T1=0,0,3,6,3,PCRL -r 20,10,1 -n 6",
};

/// The largest difference between samples, signs aside.
std::uint32_t Difference(Bytes one, Bytes other, const FrameFormat& format) {
  std::uint32_t largest = 0;
  const std::size_t width = format.BytesPerSample();
  const std::uint32_t count = 1U << format.bitsStored;
  for (std::size_t at = 0; at + width <= std::min(one.size(), other.size()); at += width) {
    const std::uint32_t a = width == 1 ? one[at] : LoadLittle16(&one[at]);
    const std::uint32_t b = width == 1 ? other[at] : LoadLittle16(&other[at]);
    const std::uint32_t apart = (a - b) & (count - 1);
    largest = std::max(largest, std::min(apart, count - apart));
  }
  return largest;
}

class Peer {
 public:
  explicit Peer(const FrameFormat& format) : format_(format) {}

  /// Nothing where the program does not do this.
  Octets Encode(const Octets& frame, const std::string& way) {
    std::remove(folder_.File("out.j2k").c_str());
    test::WriteBytes(folder_.File("in.rawl"), test::ByPlane(frame, format_));
    const bool isDone = test::Run("opj_compress -i " + folder_.File("in.rawl") + " -o " +
                                  folder_.File("out.j2k") + test::RawOption(format_) + way);
    return isDone ? test::ReadBytes(folder_.File("out.j2k")) : Octets();
  }

  /// What Encode made, by plane; nothing where the program refuses it.
  Octets Decode() {
    const bool isDone = test::Run("opj_decompress -i " + folder_.File("out.j2k") + " -o " +
                                  folder_.File("back.rawl"));
    return isDone ? test::ReadBytes(folder_.File("back.rawl")) : Octets();
  }

 private:
  TempFolder folder_;
  FrameFormat format_;
};

Octets Decoded(Bytes stream, const FrameFormat& format) {
  Octets frame(format.Size());
  kCoder.Decode(stream, format, frame);
  return frame;
}

/// A gradient with some noise, as images have; nothing that overflows the program's two guard bits.
Octets Picture(const FrameFormat& format) {
  Octets frame = test::MakeFrame(format, test::Pattern::kNoise);
  const std::size_t width = format.BytesPerSample();
  for (std::size_t at = 0; at < frame.size(); at += width) {
    const std::size_t pixel = at / width / format.samples;
    const std::uint32_t place =
        static_cast<std::uint32_t>(pixel % format.columns + pixel / format.columns);
    const std::uint32_t count = 1U << format.bitsStored;
    const std::uint32_t noise = (width == 1 ? frame[at] : LoadLittle16(&frame[at])) & (count / 8);
    std::uint32_t value = (count / 4 + place * count / 1024 % (count / 2) + noise) & (count - 1);
    if (format.isSigned) value = value + ~(count / 2) + 1;
    frame[at] = static_cast<std::uint8_t>(value);
    if (width == 2) frame[at + 1] = static_cast<std::uint8_t>(value >> 8);
  }
  return frame;
}

TEST(Jpeg2000Peers, AllWaysToEncodeAreDecodedAsByTheProgramItself) {
  ASSERT_TRUE(test::HasProgram("opj_compress"));
  ASSERT_TRUE(test::HasProgram("opj_decompress"));
  for (const FrameFormat& format :
       {test::MakeFormat(93, 71, 1, 16, 12), test::MakeFormat(64, 130, 3, 8, 8),
        test::MakeFormat(130, 97, 1, 16, 16, true), test::MakeFormat(75, 50, 4, 8, 5),
        test::MakeFormat(61, 47, 2, 16, 10)}) {
    const Octets frame = Picture(format);
    Peer peer(format);
    int count = 0;
    std::size_t turn = format.columns;
    for (const std::string way : kWays) {
      // These leave a fourth component out.
      if (format.samples == 4 && way.find("POC") != std::string::npos) continue;
      ++turn;
      for (const char* kind : {"", " -I"}) {
        // Under a sanitizer one of the two, for the next way and in other formats the other: each starts two programs.
        if (kInstrumented && (*kind == '\0') != (turn % 2 == 0)) continue;
        const Octets stream = peer.Encode(frame, kind + way);
        if (stream.empty()) continue;
        ++count;
        const Octets back = peer.Decode();
        if (back.empty()) {
          // More bit planes than either has room for.
          EXPECT_NE(test::WordsOf([&] { Decoded(stream, format); }), "") << way;
          continue;
        }
        // Both round what lost something, and may round a sum in other orders.
        EXPECT_LE(Difference(test::ByPlane(Decoded(stream, format), format), back, format),
                  *kind == '\0' ? 0U : 1U)
            << kind << way << ", " << format.samples << " x " << format.bitsStored << " bits";
      }
    }
    // It does not do all of them for all kinds of image.
    EXPECT_GE(count, kInstrumented ? 25 : 50);
  }
}

TEST(Jpeg2000Peers, NarrowImagesAreDecodedAsByTheProgramItself) {
  ASSERT_TRUE(test::HasProgram("opj_compress"));
  ASSERT_TRUE(test::HasProgram("opj_decompress"));
  for (const auto& [columns, rows] :
       {std::pair{1U, 1U}, {1U, 90U}, {90U, 1U}, {2U, 3U}, {3U, 300U}}) {
    const FrameFormat format = test::MakeFormat(columns, rows, 1, 8, 8);
    const Octets frame = Picture(format);
    Peer peer(format);
    for (const std::string way :
         {" -n 1", " -n 3", " -n 3 -d 3,5", " -n 6 -d 1,1 -t 31,31", " -n 2 -M 9"}) {
      for (const char* kind : {"", " -I"}) {
        const Octets stream = peer.Encode(frame, kind + way);
        if (stream.empty()) continue;
        EXPECT_LE(Difference(Decoded(stream, format), peer.Decode(), format),
                  *kind == '\0' ? 0U : 1U)
            << columns << " x " << rows << kind << way;
      }
    }
  }
}

TEST(Jpeg2000Peers, ARegionOfInterestWithBypassComesBackAsItWas) {
  ASSERT_TRUE(test::HasProgram("opj_compress"));
  // The program encodes that as the standard has it and takes other passes for raw ones when it decodes.
  const FrameFormat format = test::MakeFormat(93, 71, 1, 16, 12);
  const Octets frame = Picture(format);
  Peer peer(format);
  for (const std::string way : {" -M 1 -ROI c=0,U=7", " -M 47 -ROI c=0,U=3"}) {
    EXPECT_EQ(Decoded(peer.Encode(frame, way), format), frame) << way;
  }
}

}  // namespace
}  // namespace tessaret::codecs
