// JPEG streams by hand: flat images, of which each bit is known.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace tessaret::codecs::test {

using tessaret::test::Bytes;

/// The bytes of a text of 0 and 1 (all else is for the eye), filled up by ones, with a 0 behind each FF.
inline Bytes EntropyBytes(std::string bits) {
  std::erase_if(bits, [](char letter) { return letter != '0' && letter != '1'; });
  while (bits.size() % 8 != 0) bits.push_back('1');
  Bytes bytes;
  for (std::size_t at = 0; at < bits.size(); at += 8) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(bits.substr(at, 8), nullptr, 2)));
    if (bytes.back() == 0xFF) bytes.push_back(0);
  }
  return bytes;
}

inline std::string Digits(unsigned value, unsigned count) {
  std::string digits;
  while (count-- > 0) digits.push_back((value >> count & 1) != 0 ? '1' : '0');
  return digits;
}

inline Bytes JpegSegment(std::uint8_t marker, Bytes content) {
  const std::size_t length = content.size() + 2;
  content.insert(content.begin(), {0xFF, marker, static_cast<std::uint8_t>(length >> 8),
                                   static_cast<std::uint8_t>(length)});
  return content;
}

inline Bytes JfifSegment() {
  return JpegSegment(0xE0, {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0});
}

inline Bytes AdobeSegment(std::uint8_t transform) {
  return JpegSegment(0xEE, {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, transform});
}

struct FlatJpeg {
  std::uint8_t frameMarker = 0xC0;
  unsigned precision = 8;
  unsigned columns = 8;
  unsigned rows = 8;
  std::vector<int> values = {0};  // of each component, from the middle of the range on
  std::vector<std::uint8_t> sampling = {0x11, 0x11, 0x11};
  std::vector<std::uint8_t> ids = {1, 2, 3};
  std::vector<Bytes> segments{};  // behind the begin of the image
  unsigned interval = 0;          // MCUs between restart markers
  bool isInterleaved = true;      // otherwise each component has a scan of its own
  std::uint8_t scanEnd = 63;
  bool isEnded = true;  // by EOI
};

/// All factors are 8, so that a first coefficient is what it adds to each sample.
inline Bytes FactorSegment() {
  Bytes content(65, 8);
  content[0] = 0;
  return JpegSegment(0xDB, content);
}

/// First coefficients: category n has the code of the four bits of n, up to 14. Others: 0 ends the block.
inline Bytes FlatTables() {
  Bytes dc = {0x00, 0, 0, 0, 15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  for (std::uint8_t category = 0; category < 15; ++category) dc.push_back(category);
  const Bytes ac = {0x10, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00};
  return tessaret::test::Joined({JpegSegment(0xC4, dc), JpegSegment(0xC4, ac)});
}

/// The bits of a first coefficient that differs by this from the one before.
inline std::string FirstBits(int difference) {
  unsigned category = 0;
  while (std::abs(difference) >> category != 0) ++category;
  const int low = difference < 0 ? difference + (1 << category) - 1 : difference;
  return Digits(category, 4) + Digits(static_cast<unsigned>(low), category);
}

inline Bytes FlatFrameHeader(const FlatJpeg& image) {
  Bytes content = {
      static_cast<std::uint8_t>(image.precision), static_cast<std::uint8_t>(image.rows >> 8),
      static_cast<std::uint8_t>(image.rows),      static_cast<std::uint8_t>(image.columns >> 8),
      static_cast<std::uint8_t>(image.columns),   static_cast<std::uint8_t>(image.values.size())};
  for (std::size_t at = 0; at < image.values.size(); ++at) {
    content.insert(content.end(), {image.ids[at], image.sampling[at], 0});
  }
  return JpegSegment(image.frameMarker, content);
}

/// A scan of the components from `first` on, `count` of them, from its header to its last bit.
inline Bytes FlatScan(const FlatJpeg& image, std::size_t first, std::size_t count) {
  const auto up = [](unsigned number, unsigned by) { return (number + by - 1) / by; };
  Bytes header = {static_cast<std::uint8_t>(count)};
  unsigned most[2] = {1, 1};
  for (std::size_t at = 0; at < image.values.size(); ++at) {
    most[0] = std::max(most[0], image.sampling[at] / 16u);
    most[1] = std::max(most[1], image.sampling[at] % 16u);
  }
  for (std::size_t at = first; at < first + count; ++at) {
    header.insert(header.end(), {image.ids[at], 0});
  }
  header.insert(header.end(), {0, image.scanEnd, 0});
  unsigned units = up(image.columns, 8 * most[0]) * up(image.rows, 8 * most[1]);
  if (count == 1) {
    const unsigned across = up(image.columns * (image.sampling[first] / 16u), most[0]);
    const unsigned down = up(image.rows * (image.sampling[first] % 16u), most[1]);
    units = up(across, 8) * up(down, 8);
  }
  Bytes scan = JpegSegment(0xDA, header);
  // First coefficients are all that such a scan has.
  const bool isProgressive = image.frameMarker == 0xC2;
  std::string bits;
  const auto flush = [&] {
    const Bytes bytes = EntropyBytes(bits);
    scan.insert(scan.end(), bytes.begin(), bytes.end());
    bits.clear();
  };
  for (unsigned unit = 0; unit < units; ++unit) {
    const bool isFirst = unit == 0 || (image.interval != 0 && unit % image.interval == 0);
    if (isFirst && unit != 0) {
      flush();
      scan.insert(scan.end(),
                  {0xFF, static_cast<std::uint8_t>(0xD0 + (unit / image.interval - 1) % 8)});
    }
    for (std::size_t at = first; at < first + count; ++at) {
      const unsigned blocks =
          count == 1 ? 1 : (image.sampling[at] / 16u) * (image.sampling[at] % 16u);
      for (unsigned block = 0; block < blocks; ++block) {
        bits +=
            FirstBits(isFirst && block == 0 ? image.values[at] : 0) + (isProgressive ? "" : "0");
      }
    }
  }
  flush();
  return scan;
}

inline Bytes MakeFlatJpeg(const FlatJpeg& image) {
  Bytes stream = {0xFF, 0xD8};
  const auto add = [&](const Bytes& bytes) {
    stream.insert(stream.end(), bytes.begin(), bytes.end());
  };
  for (const Bytes& segment : image.segments) add(segment);
  add(FactorSegment());
  if (image.interval != 0) {
    add(JpegSegment(0xDD, {static_cast<std::uint8_t>(image.interval >> 8),
                           static_cast<std::uint8_t>(image.interval)}));
  }
  add(FlatFrameHeader(image));
  add(FlatTables());
  if (image.isInterleaved) {
    add(FlatScan(image, 0, image.values.size()));
  } else {
    for (std::size_t at = 0; at < image.values.size(); ++at) add(FlatScan(image, at, 1));
  }
  if (image.isEnded) add({0xFF, 0xD9});
  return stream;
}

}  // namespace tessaret::codecs::test
