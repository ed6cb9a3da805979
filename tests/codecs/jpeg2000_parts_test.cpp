// What JPEG 2000 decoding is put together from, but for code blocks: bits of packets, tag trees, progressions, wavelets, colours.
#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "jpeg2000/coding_parameters.h"
#include "jpeg2000/packet_bits.h"
#include "jpeg2000/progression.h"
#include "jpeg2000/sample_planes.h"
#include "jpeg2000/tag_tree.h"
#include "jpeg2000/tile_layout.h"
#include "jpeg2000/wavelet.h"

namespace tessaret::codecs {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Octets = std::vector<std::uint8_t>;

TEST(PacketBits, AByteOfOnesIsFollowedByABitThatIsNone) {
  // 1111'1111, (0)100'0001, 10...
  const Octets bytes = {0xFF, 0x41, 0x80, 0x55};
  PacketBits bits(bytes);
  EXPECT_EQ(bits.Read(8), 0xFFU);
  EXPECT_EQ(bits.Read(7), 0x41U);
  EXPECT_TRUE(bits.Read());
  EXPECT_EQ(bits.End(), 3U);
  // A header that ends with FF has a byte more.
  PacketBits ones(bytes);
  EXPECT_EQ(ones.Read(8), 0xFFU);
  EXPECT_EQ(ones.End(), 2U);
  PacketBits none(Bytes{});
  EXPECT_THAT(test::WordsOf([&] { none.Read(); }), HasSubstr("ends within a packet"));
}

TEST(TagTree, ReadsTheExampleByWhichTreesAreShown) {
  // ISO/IEC 15444-1, B.10.2: of 6 x 3 numbers the first three are 1, 3 and 2, and are coded as 01111, 001 and 101.
  const Octets bytes = {0b01111001, 0b10100000};
  PacketBits bits(bytes);
  std::vector<TagNode> nodes;
  const TagTree tree(6, 3, nodes);
  EXPECT_EQ(nodes.size(), 18U + 6 + 2 + 1);
  const auto number = [&](std::uint32_t x) {
    const TagNode node = tree.Read(x, 0, 100, bits, nodes);
    EXPECT_TRUE(node.isKnown);
    return node.least;
  };
  EXPECT_EQ(number(0), 1);
  EXPECT_EQ(number(1), 3);
  EXPECT_EQ(number(2), 2);
}

TEST(TagTree, ReadsNoMoreThanIsAskedFor) {
  // One node: not below 1, not below 2, is 2.
  const Octets bytes = {0b00100000};
  PacketBits bits(bytes);
  std::vector<TagNode> nodes;
  const TagTree tree(1, 1, nodes);
  EXPECT_FALSE(tree.Read(0, 0, 1, bits, nodes).isKnown);
  EXPECT_FALSE(tree.Read(0, 0, 1, bits, nodes).isKnown) << "no bit for what is known";
  EXPECT_FALSE(tree.Read(0, 0, 2, bits, nodes).isKnown);
  const TagNode node = tree.Read(0, 0, 3, bits, nodes);
  EXPECT_TRUE(node.isKnown);
  EXPECT_EQ(node.least, 2);
}

/// What an encoder makes of a style: levels, exponents of blocks, style of blocks, wavelet, and precincts.
Octets Style(Progression order, std::uint8_t layers, Octets component) {
  const bool hasPrecincts = component.size() > 5;
  Octets segment = {static_cast<std::uint8_t>(hasPrecincts ? 1 : 0),
                    static_cast<std::uint8_t>(order), 0, layers, 0};
  segment.insert(segment.end(), component.begin(), component.end());
  return segment;
}

CodingParameters Parameters(Progression order, std::uint32_t components) {
  CodingParameters parameters;
  parameters.componentCount = components;
  // Two levels, blocks of 16 x 16, precincts of 8 x 16, 16 x 32 and 32 x 16.
  parameters.Read(kCodingStyle, Style(order, 2, {2, 2, 2, 0, 1, 0x43, 0x54, 0x45}));
  parameters.Read(kQuantisation, Octets{0x40, 0x40, 0x48, 0x48, 0x50, 0x48, 0x48, 0x50});
  return parameters;
}

/// Component, resolution, precinct and layer of a packet.
using Packet = std::array<std::uint32_t, 4>;

std::vector<Packet> PacketsOf(const CodingParameters& parameters, const GridArea& area) {
  TileLayout tile;
  tile.Make(area, parameters, 8);
  std::vector<Packet> packets;
  ForPackets(parameters, tile, [&](Precinct& precinct) {
    packets.push_back(
        {precinct.component, precinct.resolution, precinct.index, precinct.layersRead});
    return true;
  });
  return packets;
}

/// ISO/IEC 15444-1, B.12.1, by the letter: at each position of the grid the precincts that begin there.
class PlainOrder {
 public:
  PlainOrder(const CodingParameters& parameters, const GridArea& area)
      : parameters_(parameters), area_(area) {}

  std::vector<Packet> All() {
    switch (parameters_.order) {
      case Progression::kLayerResolution:
        For(parameters_.layers,
            [&](auto layer) { For(3, [&](auto resolution) { Each(resolution, layer); }); });
        break;
      case Progression::kResolutionLayer:
        For(3, [&](auto resolution) {
          For(parameters_.layers, [&](auto layer) { Each(resolution, layer); });
        });
        break;
      case Progression::kResolutionPosition:
        For(3, [&](auto resolution) {
          Positions([&](auto x, auto y) {
            For(parameters_.componentCount,
                [&](auto component) { At(component, resolution, x, y); });
          });
        });
        break;
      case Progression::kPositionComponent:
        Positions([&](auto x, auto y) {
          For(parameters_.componentCount, [&](auto component) {
            For(3, [&](auto resolution) { At(component, resolution, x, y); });
          });
        });
        break;
      case Progression::kComponentPosition:
        For(parameters_.componentCount, [&](auto component) {
          Positions([&](auto x, auto y) {
            For(3, [&](auto resolution) { At(component, resolution, x, y); });
          });
        });
        break;
    }
    return packets_;
  }

 private:
  template <class Call>
  static void For(std::uint32_t count, Call call) {
    for (std::uint32_t at = 0; at < count; ++at) call(at);
  }
  template <class Call>
  void Positions(Call call) {
    for (std::uint32_t y = area_.y0; y < area_.y1; ++y) {
      for (std::uint32_t x = area_.x0; x < area_.x1; ++x) call(x, y);
    }
  }

  struct Line {
    std::uint32_t begin, end, exponent, shift;
    [[nodiscard]] std::uint32_t Count() const {
      return end > begin ? ((end + (1U << exponent) - 1) >> exponent) - (begin >> exponent) : 0;
    }
    [[nodiscard]] bool BeginsAt(std::uint32_t place, std::uint32_t first) const {
      const bool isAligned = place % (1U << (exponent + shift)) == 0;
      return isAligned || (place == first && (begin << shift) % (1U << (exponent + shift)) != 0);
    }
    [[nodiscard]] std::uint32_t Index(std::uint32_t place) const {
      return (((place + (1U << shift) - 1) >> shift) >> exponent) - (begin >> exponent);
    }
  };
  [[nodiscard]] Line Of(std::uint32_t resolution, bool isAcross) const {
    const std::uint32_t shift = 2 - resolution;
    const std::uint32_t up = (1U << shift) - 1;
    const std::uint8_t both = parameters_.components[0].partition.precincts[resolution];
    return {((isAcross ? area_.x0 : area_.y0) + up) >> shift,
            ((isAcross ? area_.x1 : area_.y1) + up) >> shift, isAcross ? both % 16U : both / 16U,
            shift};
  }

  void Each(std::uint32_t resolution, std::uint32_t layer) {
    For(parameters_.componentCount, [&](auto component) {
      For(Of(resolution, true).Count() * Of(resolution, false).Count(), [&](auto precinct) {
        packets_.push_back({component, resolution, precinct, layer});
      });
    });
  }
  void At(std::uint32_t component, std::uint32_t resolution, std::uint32_t x, std::uint32_t y) {
    const Line across = Of(resolution, true);
    const Line down = Of(resolution, false);
    if (across.Count() * down.Count() == 0) return;
    if (!across.BeginsAt(x, area_.x0) || !down.BeginsAt(y, area_.y0)) return;
    const std::uint32_t precinct = across.Index(x) + across.Count() * down.Index(y);
    For(parameters_.layers, [&](auto layer) {
      packets_.push_back({component, resolution, precinct, layer});
    });
  }

  const CodingParameters& parameters_;
  GridArea area_;
  std::vector<Packet> packets_;
};

TEST(Progression, AllFiveOrdersAreThoseOfThePlainLoops) {
  constexpr GridArea kAreas[] = {
      {0, 0, 100, 70}, {13, 9, 101, 77}, {32, 16, 33, 17}, {31, 31, 33, 32}, {5, 60, 9, 190}};
  for (std::uint32_t order = 0; order < 5; ++order) {
    for (const GridArea& area : kAreas) {
      const CodingParameters parameters = Parameters(static_cast<Progression>(order), 2);
      const std::vector<Packet> packets = PacketsOf(parameters, area);
      EXPECT_EQ(packets, PlainOrder(parameters, area).All()) << order << " from " << area.x0;
      EXPECT_GE(packets.size(), 4U);
    }
  }
}

TEST(Progression, ChangesBringWhatDidNotComeBefore) {
  CodingParameters parameters = Parameters(Progression::kLayerResolution, 2);
  // The first layer of the least resolution of all, then component 1 whole, then the rest.
  parameters.Read(kProgressionChange, Octets{0, 0, 0, 1, 1, 2, 0,  //
                                             0, 1, 0, 2, 3, 2, 1,  //
                                             0, 0, 0, 9, 9, 0, 0});
  const std::vector<Packet> packets = PacketsOf(parameters, {0, 0, 8, 8});
  const std::vector<Packet> expected = {{0, 0, 0, 0}, {1, 0, 0, 0}, {1, 0, 0, 1}, {1, 1, 0, 0},
                                        {1, 1, 0, 1}, {1, 2, 0, 0}, {1, 2, 0, 1}, {0, 1, 0, 0},
                                        {0, 2, 0, 0}, {0, 0, 0, 1}, {0, 1, 0, 1}, {0, 2, 0, 1}};
  EXPECT_EQ(packets, expected);
}

TEST(CodingParameters, WhatIsSaidOfAComponentOrATileGoesBeforeWhatIsSaidOfAll) {
  CodingParameters parameters;
  parameters.componentCount = 2;
  parameters.Read(kComponentCodingStyle, Octets{1, 0, 4, 2, 2, 0, 1});
  parameters.Read(kCodingStyle, Style(Progression::kLayerResolution, 1, {3, 4, 4, 0, 0}));
  EXPECT_EQ(parameters.components[0].partition.levels, 3U);
  EXPECT_FALSE(parameters.components[0].isReversible);
  EXPECT_EQ(parameters.components[1].partition.levels, 4U);
  EXPECT_TRUE(parameters.components[1].isReversible);
  parameters.Read(kQuantisation, Octets{0x42, 0x12, 0x34});
  parameters.Read(kComponentQuantisation, Octets{0, 0x20, 0x88});
  EXPECT_EQ(parameters.components[0].quantisation.Of(0).exponent, 17);
  EXPECT_EQ(parameters.components[1].quantisation.Of(0).exponent, 2);
  EXPECT_EQ(parameters.components[1].quantisation.Of(0).mantissa, 0x234);
  EXPECT_EQ(parameters.components[1].quantisation.guardBits, 2U);
  parameters.BeginTile();
  parameters.Read(kCodingStyle, Style(Progression::kLayerResolution, 1, {5, 4, 4, 0, 0}));
  EXPECT_EQ(parameters.components[1].partition.levels, 5U);
}

TEST(CodingParameters, DerivedStepsGrowFinerByResolution) {
  CodingParameters parameters;
  parameters.componentCount = 1;
  parameters.Read(kQuantisation, Octets{0x41, 0x28, 0x07});  // exponent 5, mantissa 7
  const Quantisation& quantisation = parameters.components[0].quantisation;
  for (const auto& [band, exponent] :
       {std::pair{0U, 5}, {1U, 5}, {3U, 5}, {4U, 4}, {6U, 4}, {7U, 3}, {50U, 0}}) {
    EXPECT_EQ(quantisation.Of(band).exponent, exponent) << band;
    EXPECT_EQ(quantisation.Of(band).mantissa, 7);
  }
}

TEST(CodingParameters, RefusesNonsense) {
  const auto words = [](std::uint32_t marker, const Octets& segment) {
    CodingParameters parameters;
    parameters.componentCount = 2;
    return test::WordsOf([&] {
      parameters.Read(marker, segment);
      static_cast<void>(parameters.components[0].quantisation.Of(1));
    });
  };
  EXPECT_THAT(words(kCodingStyle, {8, 0, 0, 1, 0, 0, 4, 4, 0, 1}), HasSubstr("coding style 8"));
  EXPECT_THAT(words(kCodingStyle, {0, 0, 0, 1, 0, 0, 4, 4, 0x80, 1}), HasSubstr("style 128"));
  EXPECT_THAT(words(kQuantisation, {}), HasSubstr("a quantisation is cut"));
  EXPECT_THAT(words(kQuantisation, {0x40}), HasSubstr("of a wrong size"));
  EXPECT_THAT(words(kQuantisation, {0x41, 1, 2, 3, 4}), HasSubstr("of a wrong size"));
  EXPECT_THAT(words(kQuantisation, {0x42, 1, 2, 3}), HasSubstr("of a wrong size"));
  EXPECT_THAT(words(kQuantisation, {0x43, 1, 2}), HasSubstr("quantisation 3"));
  EXPECT_THAT(words(kQuantisation, {0x40, 0x40}), HasSubstr("steps of 1 bands, and more bands"));
  EXPECT_THAT(words(kComponentQuantisation, {2, 0x40, 0x40}), HasSubstr("component 2 of 2"));
  EXPECT_THAT(words(kRegionOfInterest, {0, 1, 5}), HasSubstr("region of interest of style 1"));
  EXPECT_THAT(words(kRegionOfInterest, {0, 0}), HasSubstr("region of interest of 2 bytes"));
  EXPECT_THAT(words(kRegionOfInterest, {2, 0, 5}), HasSubstr("component 2 of 2"));
  EXPECT_THAT(words(kProgressionChange, {0, 0, 0, 1, 1, 1}), HasSubstr("changes of 6 bytes"));
  EXPECT_THAT(words(kProgressionChange, {0, 0, 0, 1, 1, 1, 5}), HasSubstr("progression order 5"));
  EXPECT_THAT(words(kProgressionChange, Octets(7 * 33, 0)), HasSubstr("more than 32"));
}

/// A place of a signal that goes on as in mirrors at both ends.
std::int64_t Mirrored(std::int64_t place, std::int64_t begin, std::int64_t end) {
  while (place < begin || place >= end) {
    place = place < begin ? 2 * begin - place : 2 * (end - 1) - place;
  }
  return place;
}

/// ISO/IEC 15444-1, F.3.8: one line of samples from `begin` on, low and high ones in their places.
std::vector<double> PlainLine(std::vector<double> line, std::int64_t begin, bool isReversible) {
  const auto end = begin + static_cast<std::int64_t>(line.size());
  if (line.size() == 1) {
    if (begin % 2 != 0) line[0] = isReversible ? std::trunc(line[0] / 2) : line[0] / 2;
    return line;
  }
  const auto at = [&](std::int64_t place) -> double& {
    return line[static_cast<std::size_t>(Mirrored(place, begin, end) - begin)];
  };
  const auto step = [&](std::int64_t parity, auto change) {
    for (std::int64_t place = begin; place < end; ++place) {
      if ((place & 1) == parity) at(place) = change(at(place), at(place - 1) + at(place + 1));
    }
  };
  if (isReversible) {
    step(0, [](double value, double beside) { return value - std::floor((beside + 2) / 4); });
    step(1, [](double value, double beside) { return value + std::floor(beside / 2); });
    return line;
  }
  step(0, [](double value, double) { return value * 1.230174104914001; });
  // A thirty-thousandth below 1 / K, as other decoders have it.
  step(1, [](double value, double) { return value * (1.625732422 / 2); });
  step(0, [](double value, double beside) { return value - 0.443506852043971 * beside; });
  step(1, [](double value, double beside) { return value - 0.882911075530934 * beside; });
  step(0, [](double value, double beside) { return value + 0.052980118572961 * beside; });
  step(1, [](double value, double beside) { return value + 1.586134342059924 * beside; });
  return line;
}

/// One level in two directions, rows first, of bands that lie beside each other.
void PlainLevel(std::vector<double>& samples, std::size_t stride, const GridArea& area,
                bool isReversible) {
  const auto run = [&](std::size_t first, std::size_t step, std::uint32_t begin,
                       std::uint32_t end) {
    std::vector<double> line(end - begin);
    const std::size_t lows = (end + 1) / 2 - (begin + 1) / 2;
    for (std::size_t low = 0, high = lows, at = 0; at < line.size(); ++at) {
      line[at] = samples[first + ((begin + at) % 2 == 0 ? low++ : high++) * step];
    }
    line = PlainLine(line, begin, isReversible);
    for (std::size_t at = 0; at < line.size(); ++at) samples[first + at * step] = line[at];
  };
  for (std::size_t y = 0; y < area.Height(); ++y) run(y * stride, 1, area.x0, area.x1);
  for (std::size_t x = 0; x < area.Width(); ++x) run(x, stride, area.y0, area.y1);
}

/// All resolutions of an area, from the least on.
std::vector<GridArea> Resolutions(const GridArea& area, std::uint32_t levels) {
  std::vector<GridArea> resolutions;
  for (std::uint32_t level = levels + 1; level-- > 0;) {
    const auto half = [level](std::uint32_t place) {
      return static_cast<std::uint32_t>(CeilShift(place, level));
    };
    resolutions.push_back({half(area.x0), half(area.y0), half(area.x1), half(area.y1)});
  }
  return resolutions;
}

constexpr GridArea kAreas[] = {{0, 0, 64, 64},   {0, 0, 1, 1},     {1, 1, 2, 2},   {3, 5, 4, 70},
                               {2, 7, 90, 8},    {5, 3, 46, 40},   {0, 1, 17, 20}, {1, 0, 18, 35},
                               {7, 7, 9, 9},     {100, 3, 133, 5}, {6, 9, 8, 12},  {0, 0, 16, 2},
                               {31, 31, 33, 33}, {0, 0, 2, 300}};

TEST(InverseWavelet, OfIntegersIsThePlainFormulaToTheBit) {
  std::mt19937 random(5);
  InverseWavelet<std::int32_t> wavelet;
  for (const GridArea& area : kAreas) {
    for (const std::uint32_t levels : {0U, 1U, 2U, 5U, 9U}) {
      std::vector<std::int32_t> samples(std::size_t{area.Width()} * area.Height());
      for (std::int32_t& sample : samples)
        sample = static_cast<std::int32_t>(random() % 8192) - 4096;
      std::vector<double> plain(samples.begin(), samples.end());
      const std::vector<GridArea> resolutions = Resolutions(area, levels);
      for (std::uint32_t level = 1; level <= levels; ++level) {
        if (!resolutions[level].IsEmpty())
          PlainLevel(plain, area.Width(), resolutions[level], true);
      }
      wavelet.Run(samples, resolutions);
      EXPECT_EQ(std::vector<double>(samples.begin(), samples.end()), plain)
          << area.x0 << ", " << area.y0 << ", " << levels << " levels";
    }
  }
}

TEST(InverseWavelet, OfRealsIsThePlainFormulaAndLittleBeside) {
  std::mt19937 random(6);
  InverseWavelet<float> wavelet;
  for (const GridArea& area : kAreas) {
    for (const std::uint32_t levels : {1U, 2U, 5U}) {
      std::vector<float> samples(std::size_t{area.Width()} * area.Height());
      for (float& sample : samples) sample = static_cast<float>(random() % 8192) - 4096;
      std::vector<double> plain(samples.begin(), samples.end());
      const std::vector<GridArea> resolutions = Resolutions(area, levels);
      for (std::uint32_t level = 1; level <= levels; ++level) {
        if (!resolutions[level].IsEmpty())
          PlainLevel(plain, area.Width(), resolutions[level], false);
      }
      wavelet.Run(samples, resolutions);
      for (std::size_t at = 0; at < samples.size(); ++at) {
        // Sums of some thousands lose 2 to the -11th in each of few steps.
        ASSERT_NEAR(samples[at], plain[at], 0.05) << area.x0 << ", " << levels << " levels";
      }
    }
  }
}

TEST(InverseWavelet, NumbersOfDamagedStreamsOverflowWithoutHarm) {
  InverseWavelet<std::int32_t> wavelet;
  std::vector<std::int32_t> samples(64, 0x3FFFFFFF);
  for (std::size_t at = 0; at < samples.size(); at += 3) samples[at] = -0x3FFFFFFF;
  wavelet.Run(samples, Resolutions({0, 0, 8, 8}, 3));
}

TEST(SamplePlanes, ColoursComeBackByTheFormulas) {
  std::vector<SamplePlane> planes(3);
  planes[0].integers = {10, -5};
  planes[1].integers = {7, -9};
  planes[2].integers = {-3, 4};
  TransformColoursBack(planes);
  // G = Y - floor((U + V) / 4); R = V + G; B = U + G
  EXPECT_THAT(planes[1].integers, ElementsAre(10 - 1, -5 + 2));
  EXPECT_THAT(planes[0].integers, ElementsAre(-3 + 9, 4 - 3));
  EXPECT_THAT(planes[2].integers, ElementsAre(7 + 9, -9 - 3));
  for (SamplePlane& plane : planes) plane.isReversible = false;
  planes[0].reals = {50};
  planes[1].reals = {10};
  planes[2].reals = {-20};
  TransformColoursBack(planes);
  EXPECT_NEAR(planes[0].reals[0], 50 - 1.402 * 20, 1e-4);
  EXPECT_NEAR(planes[1].reals[0], 50 - 0.34413 * 10 + 0.71414 * 20, 1e-4);
  EXPECT_NEAR(planes[2].reals[0], 50 + 1.772 * 10, 1e-4);
  planes[2].isReversible = true;
  EXPECT_THAT(test::WordsOf([&] { TransformColoursBack(planes); }),
              HasSubstr("different wavelets"));
}

TEST(SamplePlanes, SamplesAreLimitedAndRoundedToTheNearest) {
  std::vector<SamplePlane> planes(1);
  planes[0].integers = {-300, -128, 0, 127, 300, 5};
  Octets frame(6);
  WriteSamples(planes, {0, 0, 3, 2}, 3, {.precision = 8, .isSigned = false, .bytes = 1}, frame);
  EXPECT_THAT(frame, ElementsAre(0, 0, 128, 255, 255, 133));
  planes[0].isReversible = false;
  planes[0].reals = {-1e9F, 0.5F, 1.5F, -0.5F, 2047.6F, -1.4999F};
  Octets wide(12);
  WriteSamples(planes, {0, 0, 3, 2}, 3, {.precision = 12, .isSigned = true, .bytes = 2}, wide);
  // Of two as near the even one; signs are cut to the twelve bits.
  EXPECT_THAT(wide, ElementsAre(0x00, 0x08, 0, 0, 2, 0, 0, 0, 0xFF, 0x07, 0xFF, 0x0F));
}

TEST(SamplePlanes, TilesAndComponentsGoToTheirPlaces) {
  std::vector<SamplePlane> planes(2);
  planes[0].integers = {1, 2};
  planes[1].integers = {3, 4};
  Octets frame(2 * 3 * 2, 9);
  // The right column of three, both rows.
  WriteSamples(planes, {2, 0, 3, 2}, 3, {.precision = 4, .isSigned = true, .bytes = 1}, frame);
  EXPECT_THAT(frame, ElementsAre(9, 9, 9, 9, 1, 3, 9, 9, 9, 9, 2, 4));
}

}  // namespace
}  // namespace tessaret::codecs
