// The decoder beside a plain encoder: what no encoder of the distribution writes, or writes as the standard has it.
#include <algorithm>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "codecs/plain_jpegls.h"
#include "jpegls/jpegls_coder.h"
#include "support/build_kind.h"

namespace tessaret::codecs {
namespace {

using test::EncodeLsPlainly;
using test::PlainLsImage;
using test::PlainLsPresets;
using test::PlainLsScan;
using Stream = std::vector<std::uint8_t>;

FrameFormat FormatOf(const PlainLsImage& image) {
  const auto number = [](int value) { return static_cast<std::uint32_t>(value); };
  return test::MakeFormat(number(image.columns), number(image.rows), number(image.components),
                          image.precision > 8 ? 16 : 8, number(image.precision));
}

Stream FrameOf(const PlainLsImage& image) {
  Stream frame;
  for (const int sample : image.samples) {
    frame.push_back(static_cast<std::uint8_t>(sample));
    if (image.precision > 8) frame.push_back(static_cast<std::uint8_t>(sample >> 8));
  }
  return frame;
}

struct Outcome {
  Stream frame;
  DecodedFrame decoded;
};

Outcome Decoded(const Stream& stream, const PlainLsImage& image) {
  const FrameFormat format = FormatOf(image);
  Outcome outcome{Stream(format.Size()), {}};
  outcome.decoded = JpegLsCoder(JpegLsKind::kLossless).Decode(stream, format, outcome.frame);
  return outcome;
}

/// Images and parameters of all kinds, each by its number.
class Chance {
 public:
  explicit Chance(std::uint32_t seed) : random_(seed) {}

  int From(int least, int most) {
    return least + static_cast<int>(random_() % static_cast<std::uint32_t>(most - least + 1));
  }
  bool Once(int in) { return From(1, in) == 1; }

  PlainLsImage Image() {
    PlainLsImage image;
    const bool isWide = Once(10);
    image.columns = isWide ? From(200, 3000) : From(1, 40);
    image.rows = From(1, isWide ? 4 : 40);
    image.components = From(1, 4);
    image.precision = From(2, 16);
    const int highest = (1 << image.precision) - 1;
    maximum_ = Once(3) ? From(1, highest) : highest;
    Fill(image);
    return image;
  }

  std::vector<PlainLsScan> Scans(const PlainLsImage& image) {
    const int interleave = image.components == 1 ? 0 : From(0, 2);
    const bool isStandard = maximum_ == (1 << image.precision) - 1 && Once(2);
    std::vector<PlainLsScan> scans;
    const int count = interleave == 0 ? 1 : image.components;
    for (int first = 0; first < image.components; first += count) {
      PlainLsScan scan{.first = first, .count = count, .interleave = interleave};
      const int most = std::min(255, maximum_ / 2);
      if (Once(2)) scan.nearness = From(0, Once(2) ? most : std::min(most, 10));
      if (!isStandard) SetPresets(scan);
      scans.push_back(scan);
    }
    return scans;
  }

 private:
  void SetPresets(PlainLsScan& scan) {
    scan.hasPresets = true;
    PlainLsPresets& presets = scan.presets;
    presets.maximum = maximum_;
    if (Once(2)) {
      presets.t1 = From(scan.nearness + 1, maximum_);
      presets.t2 = From(presets.t1, maximum_);
      presets.t3 = From(presets.t2, maximum_);
    }
    if (Once(2)) {
      presets.reset = From(3, Once(2) ? 40 : std::clamp(maximum_, 255, 32767));
    }
  }

  void Fill(PlainLsImage& image) {
    const int kind = From(0, 5);
    const int stretch = From(1, 300);
    int value = 0;
    const int count = image.columns * image.rows * image.components;
    for (int at = 0; at < count; ++at) {
      if (kind == 0) value = From(0, maximum_);
      if (kind == 1) value = Once(2) ? maximum_ : 0;
      if (kind == 2 && Once(stretch)) value = From(0, maximum_);
      if (kind == 3) value = std::clamp(value + From(-3, 3), 0, maximum_);
      if (kind == 4) value = (at / image.components * 3 + at / image.columns) % (maximum_ + 1);
      if (kind == 5) value = Once(20) ? maximum_ : From(0, std::min(maximum_, 2));
      image.samples.push_back(value);
    }
  }

  std::mt19937 random_;
  int maximum_ = 0;
};

TEST(JpegLsPlain, ImagesOfAllKindsAreDecodedAsAPlainEncoderMeansThem) {
  for (std::uint32_t seed = 0; seed < tessaret::test::Repetitions(1000u, 5u); ++seed) {
    Chance chance(seed);
    const PlainLsImage image = chance.Image();
    const std::vector<PlainLsScan> scans = chance.Scans(image);
    PlainLsImage coded = image;
    const Stream stream = EncodeLsPlainly(coded, scans);
    const Outcome outcome = Decoded(stream, image);
    ASSERT_EQ(outcome.frame, FrameOf(coded))
        << "seed " << seed << ": " << image.columns << " x " << image.rows << " of "
        << image.components << " components with " << image.precision << " bits";
    int most = 0;
    for (std::size_t at = 0; at < image.samples.size(); ++at) {
      most = std::max(most, std::abs(coded.samples[at] - image.samples[at]));
    }
    int allowed = 0;
    for (const PlainLsScan& scan : scans) allowed = std::max(allowed, scan.nearness);
    EXPECT_LE(most, allowed);
    EXPECT_EQ(outcome.decoded.isLossy, allowed > 0);
  }
}

TEST(JpegLsPlain, ACodeOfFiftySixZerosIsDecoded) {
  // Of a largest value of 32768 with errors of up to 255 there are 66 steps, numbers of 7 bits. What does not fit has 64 - 7 - 1 zeros
  // before a bit 1; so it is where a steep edge stands behind many flat places.
  PlainLsImage image{.columns = 40, .rows = 40, .components = 1, .precision = 16};
  for (int at = 0; at < 1600; ++at) image.samples.push_back(at % 397 == 396 ? 16500 : at % 2 * 600);
  const std::vector<PlainLsScan> scans = {
      {.nearness = 255, .hasPresets = true, .presets = {.maximum = 32768}}};
  const Stream stream = EncodeLsPlainly(image, scans);
  EXPECT_EQ(Decoded(stream, image).frame, FrameOf(image));
}

TEST(JpegLsPlain, EachScanGoesByItsOwnNearnessAndThePresetsBeforeIt) {
  Chance chance(5);
  PlainLsImage image{.columns = 30, .rows = 20, .components = 3, .precision = 8};
  for (int at = 0; at < 1800; ++at) image.samples.push_back(chance.From(0, 200));
  const PlainLsPresets presets{.maximum = 200, .t1 = 20, .t2 = 30, .t3 = 90, .reset = 7};
  for (const std::vector<int>& nearnesses :
       {std::vector<int>{0, 0, 9}, std::vector<int>{9, 0, 0}, std::vector<int>{0, 3, 0}}) {
    std::vector<PlainLsScan> scans;
    for (int at = 0; at < 3; ++at) {
      scans.push_back({.first = at, .nearness = nearnesses[static_cast<std::size_t>(at)]});
    }
    // In force for the last scan too.
    scans[1].hasPresets = true;
    scans[1].presets = scans[2].presets = presets;
    PlainLsImage coded = image;
    const Outcome outcome = Decoded(EncodeLsPlainly(coded, scans), image);
    EXPECT_EQ(outcome.frame, FrameOf(coded));
    EXPECT_TRUE(outcome.decoded.isLossy);
  }
}

TEST(JpegLsPlain, RunsGoOnOverRowsOfMoreSamplesThanAnyRunHas) {
  // From the 32nd on a run is 32768 samples long; a row of 65535 has one and a rest.
  PlainLsImage image{.columns = 65535, .rows = 8, .components = 1, .precision = 8};
  image.samples.assign(std::size_t{65535} * 8, 7);
  image.samples[65535 * 6 + 65534] = 9;
  image.samples[65535 * 7 + 40000] = 200;
  EXPECT_EQ(Decoded(EncodeLsPlainly(image, {PlainLsScan{}}), image).frame, FrameOf(image));
}

/// Of what is allowed: thresholds from NEAR + 1 to the largest value, counters halved at 3 or more.
TEST(JpegLsPlain, ExtremesOfPresetsAreDecoded) {
  for (const PlainLsPresets& presets :
       std::initializer_list<PlainLsPresets>{{1, 1, 1, 1, 3},
                                             {65535, 1, 1, 65535, 32767},
                                             {65535, 65535, 65535, 65535, 3},
                                             {40000, 0, 0, 0, 30000},
                                             {0, 5, 0, 0, 0},
                                             {0, 0, 200, 0, 0},
                                             {0, 0, 0, 5000, 0},
                                             {3, 0, 0, 0, 255}}) {
    Chance chance(3);
    PlainLsImage image{.columns = 300, .rows = 200, .components = 1, .precision = 16};
    const int most = presets.maximum == 0 ? 65535 : presets.maximum;
    int value = 0;
    for (int at = 0; at < 60000; ++at) {
      value =
          chance.Once(50) ? chance.From(0, most) : std::clamp(value + chance.From(-9, 9), 0, most);
      image.samples.push_back(value);
    }
    const Stream stream = EncodeLsPlainly(image, {{.hasPresets = true, .presets = presets}});
    EXPECT_EQ(Decoded(stream, image).frame, FrameOf(image)) << presets.maximum;
  }
}

}  // namespace
}  // namespace tessaret::codecs
