// What tests of both coders by cosine transform share.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "codecs/peer_files.h"
#include "support/build_kind.h"
#include "support/guarded_block.h"
#include "support/measured_child.h"
#include "support/temp_folder.h"

namespace tessaret::codecs::test {

/// Decodes into memory behind which nothing may be touched.
inline tessaret::test::Bytes DecodeGuarded(const FrameCoder& coder, Bytes stream,
                                           const FrameFormat& format) {
  static tessaret::test::GuardedBlock block(std::size_t{1} << 20);
  const tessaret::test::Bytes before(format.Size());
  const MutableBytes frame{block.Put(before.data(), before.size()), before.size()};
  coder.Decode(stream, format, frame);
  return {frame.begin(), frame.end()};
}

inline std::string WordsOfDecoding(const FrameCoder& coder, const tessaret::test::Bytes& stream,
                                   const FrameFormat& format) {
  return WordsOf([&] { DecodeGuarded(coder, stream, format); });
}

inline std::vector<int> SamplesOf(const tessaret::test::Bytes& frame, const FrameFormat& format) {
  std::vector<int> samples(format.Samples());
  const std::size_t width = format.BytesPerSample();
  for (std::size_t at = 0; at < samples.size(); ++at) {
    std::memcpy(&samples[at], &frame.at(at * width), width);
  }
  return samples;
}

/// The greatest difference of two samples in the same place.
inline int Difference(const tessaret::test::Bytes& one, const tessaret::test::Bytes& other,
                      const FrameFormat& format) {
  const std::vector<int> a = SamplesOf(one, format);
  const std::vector<int> b = SamplesOf(other, format);
  int most = 0;
  for (std::size_t at = 0; at < a.size(); ++at) most = std::max(most, std::abs(a[at] - b[at]));
  return most;
}

inline double MeanSquare(const tessaret::test::Bytes& one, const tessaret::test::Bytes& other,
                         const FrameFormat& format) {
  const std::vector<int> a = SamplesOf(one, format);
  const std::vector<int> b = SamplesOf(other, format);
  double sum = 0;
  for (std::size_t at = 0; at < a.size(); ++at) sum += (a[at] - b[at]) * (a[at] - b[at]);
  return sum / static_cast<double>(a.size());
}

/// The stream that dcmcjpeg makes with these options.
inline tessaret::test::Bytes EncodedByPeer(const tessaret::test::Bytes& frame,
                                           const FrameFormat& format,
                                           std::vector<std::string> options) {
  const tessaret::test::TempFolder folder;
  tessaret::test::WriteBytes(folder.File("native.dcm"), DicomFile(format, kExplicitLittle, frame));
  options.insert(options.begin(), "dcmcjpeg");
  options.insert(options.end(), {folder.File("native.dcm"), folder.File("coded.dcm")});
  if (!RunProgram(options)) throw std::runtime_error("dcmcjpeg failed");
  return PixelData(tessaret::test::ReadBytes(folder.File("coded.dcm")));
}

/// The frame that dcmdjpeg makes of a stream.
inline tessaret::test::Bytes DecodedByPeer(const tessaret::test::Bytes& stream,
                                           const FrameFormat& format, std::string_view syntax,
                                           const std::string& option = "+cn") {
  const tessaret::test::TempFolder folder;
  tessaret::test::WriteBytes(folder.File("coded.dcm"), DicomFile(format, syntax, stream));
  if (!RunProgram(
          {"dcmdjpeg", "+px", option, folder.File("coded.dcm"), folder.File("native.dcm")})) {
    throw std::runtime_error("dcmdjpeg failed");
  }
  return NativePixels(tessaret::test::ReadBytes(folder.File("native.dcm")), format);
}

/// Each truncation is an error; no change of one byte does more harm than other pixels. In little time each.
inline void CheckDamage(const FrameCoder& coder, const tessaret::test::Bytes& stream,
                        const FrameFormat& format) {
  for (std::size_t size = 0; size < stream.size(); ++size) {
    const tessaret::test::Bytes part(stream.begin(),
                                     stream.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(WordsOfDecoding(coder, part, format), "") << size << " bytes";
  }
  for (std::size_t at = 0; at < stream.size(); ++at) {
    // Every byte is changed under a sanitizer too, to every seventh value, other ones for each.
    const auto first = static_cast<unsigned>(at % tessaret::test::StepBy(7u));
    for (unsigned value = first; value < 256; value += tessaret::test::StepBy(7u)) {
      tessaret::test::Bytes changed = stream;
      changed[at] = static_cast<std::uint8_t>(value);
      WordsOfDecoding(coder, changed, format);
    }
  }
}

/// Where a marker's segment begins.
inline std::size_t Find(const tessaret::test::Bytes& stream, std::uint8_t marker) {
  for (std::size_t at = 0; at + 1 < stream.size(); ++at) {
    if (stream[at] == 0xFF && stream[at + 1] == marker) return at;
  }
  throw std::runtime_error("no such marker");
}

/// A stream whose frame header (`marker`) says 65288 rows and columns, as `format` does, is refused without memory for that.
inline void CheckHugeImage(const FrameCoder& coder, tessaret::test::Bytes stream,
                           std::uint8_t marker, const FrameFormat& format) {
  const std::size_t at = Find(stream, marker);
  stream[at + 5] = stream[at + 7] = 0xFF;
  const tessaret::test::Measured measured = tessaret::test::RunMeasured([&] {
    std::array<std::uint8_t, 1> none{};
    return WordsOf([&] { coder.Decode(stream, format, none); }).empty() ? 1 : 0;
  });
  EXPECT_EQ(measured.result, 0);
  EXPECT_LT(measured.peakGrowth, 4u << 20);
}

inline tessaret::test::Bytes Inserted(tessaret::test::Bytes stream, std::size_t at,
                                      const tessaret::test::Bytes& bytes) {
  stream.insert(stream.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin(), bytes.end());
  return stream;
}

}  // namespace tessaret::codecs::test
