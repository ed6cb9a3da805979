#include "codecs/plain_lossless.h"

#include <map>
#include <stdexcept>

namespace tessaret::codecs::test {
namespace {

using tessaret::test::Bytes;
using tessaret::test::Joined;

std::string BitsOf(std::uint32_t value, std::uint32_t count) {
  std::string bits;
  while (count-- > 0) bits.push_back(((value >> count) & 1) != 0 ? '1' : '0');
  return bits;
}

/// The prediction for a sample from those before it, which the point transform has been applied to. `first` is the first row of the
/// restart interval.
std::int32_t Predicted(const PlainImage& image, const PlainOptions& options, std::size_t first,
                       std::size_t y, std::size_t x, std::size_t component) {
  const auto at = [&](std::size_t row, std::size_t column) {
    return static_cast<std::int32_t>(image.samples[image.Place(row, column, component)]);
  };
  if (y == first && x == 0) return 1 << (image.precision - options.pointTransform - 1);
  if (y == first) return at(y, x - 1);
  if (x == 0) return at(y - 1, x);
  const std::int32_t a = at(y, x - 1);
  const std::int32_t b = at(y - 1, x);
  const std::int32_t c = at(y - 1, x - 1);
  switch (options.predictor) {
    case 1:
      return a;
    case 2:
      return b;
    case 3:
      return c;
    case 4:
      return a + b - c;
    case 5:
      return a + ((b - c) >> 1);
    case 6:
      return b + ((a - c) >> 1);
    case 7:
      return (a + b) >> 1;
    default:
      throw std::runtime_error("no such predictor");
  }
}

/// A difference modulo 65536, from -32767 to 32768, by its category's code and its bits.
std::string DifferenceBits(std::int32_t difference, const PlainTable& table) {
  difference &= 0xFFFF;
  if (difference > 32768) difference -= 65536;
  std::uint8_t category = 0;
  while ((difference < 0 ? -difference : difference) >> category != 0) ++category;
  if (category == 16) return table.CodeOf(16);
  const std::int32_t bits = difference < 0 ? difference - 1 : difference;
  return table.CodeOf(category) + BitsOf(static_cast<std::uint32_t>(bits), category);
}

PlainTable TableOf(const PlainOptions& options, std::size_t component) {
  return options.tables.empty() ? FlatTable() : options.tables[component % options.tables.size()];
}

Bytes ScanHeader(const PlainOptions& options, std::uint32_t from, std::uint32_t to) {
  Bytes content = {static_cast<std::uint8_t>(to - from)};
  for (std::uint32_t component = from; component < to; ++component) {
    content.push_back(static_cast<std::uint8_t>(component + 1));
    content.push_back(static_cast<std::uint8_t>(component << 4));
  }
  content.push_back(static_cast<std::uint8_t>(options.predictor));
  content.push_back(0);
  content.push_back(static_cast<std::uint8_t>(options.pointTransform));
  return SegmentOf(0xDA, content);
}

/// Components `from` up to `to`, without it.
Bytes Scan(const PlainImage& image, const PlainOptions& options, std::uint32_t from,
           std::uint32_t to) {
  Bytes scan = ScanHeader(options, from, to);
  const std::uint32_t step = options.rowsPerInterval == 0 ? image.rows : options.rowsPerInterval;
  for (std::uint32_t first = 0; first < image.rows; first += step) {
    std::string bits;
    for (std::uint32_t y = first; y < image.rows && y < first + step; ++y) {
      for (std::uint32_t x = 0; x < image.columns; ++x) {
        for (std::uint32_t component = from; component < to; ++component) {
          const auto sample =
              static_cast<std::int32_t>(image.samples[image.Place(y, x, component)]);
          bits += DifferenceBits(sample - Predicted(image, options, first, y, x, component),
                                 TableOf(options, component));
        }
      }
    }
    const Bytes packed = Packed(bits);
    scan.insert(scan.end(), packed.begin(), packed.end());
    if (first + step < image.rows) {
      scan.push_back(0xFF);
      scan.push_back(static_cast<std::uint8_t>(0xD0 + first / step % 8));
    }
  }
  return scan;
}

/// Bits of entropy-coded bytes, up to a marker, on which `at` stands then.
std::string Unpacked(const Bytes& stream, std::size_t& at) {
  std::string bits;
  for (;; ++at) {
    if (stream.at(at) == 0xFF && stream.at(at + 1) != 0) return bits;
    bits += BitsOf(stream[at], 8);
    if (stream[at] == 0xFF) ++at;
  }
}

class PlainDecoder {
 public:
  explicit PlainDecoder(const Bytes& stream) : stream_(stream) {}

  PlainImage Decode() {
    std::size_t at = 2;
    for (;;) {
      const std::uint8_t marker = stream_.at(at + 1);
      if (marker == 0xD9) break;
      const std::size_t length = Number(at + 2);
      Take(marker, at + 4);
      at += 2 + length;
      if (marker == 0xDA) DecodeScan(at);
    }
    for (std::uint32_t& sample : image_.samples) sample <<= options_.pointTransform;
    return image_;
  }

 private:
  [[nodiscard]] std::uint32_t Number(std::size_t at) const {
    return static_cast<std::uint32_t>(stream_.at(at) << 8 | stream_.at(at + 1));
  }

  void Take(std::uint8_t marker, std::size_t at) {
    if (marker == 0xC3) {
      image_.precision = stream_.at(at);
      image_.rows = Number(at + 1);
      image_.columns = Number(at + 3);
      image_.components = stream_.at(at + 5);
      image_.samples.resize(std::size_t{image_.rows} * image_.columns * image_.components);
    } else if (marker == 0xC4) {
      TakeTable(at);
    } else if (marker == 0xDD) {
      options_.rowsPerInterval = Number(at) / image_.columns;
    } else if (marker == 0xDA) {
      if (stream_.at(at) != image_.components) throw std::runtime_error("not in one scan");
      for (std::size_t component = 0; component < image_.components; ++component) {
        tables_.push_back(codes_[stream_.at(at + 2 + 2 * component) >> 4]);
      }
      options_.predictor = stream_.at(at + 1 + 2 * image_.components);
      options_.pointTransform = stream_.at(at + 3 + 2 * image_.components) & 15;
    }
  }

  void TakeTable(std::size_t at) {
    PlainTable table;
    std::size_t size = 0;
    for (std::size_t length = 0; length < 16; ++length) {
      table.counts[length] = stream_.at(at + 1 + length);
      size += table.counts[length];
    }
    std::map<std::string, std::uint8_t>& codes = codes_[stream_.at(at) & 15];
    for (std::size_t value = 0; value < size; ++value) {
      table.values.push_back(stream_.at(at + 17 + value));
    }
    codes.clear();
    for (const std::uint8_t value : table.values) codes[table.CodeOf(value)] = value;
  }

  void DecodeScan(std::size_t& at) {
    std::string bits;
    std::size_t next = 0;
    std::size_t first = 0;
    for (std::size_t y = 0; y < image_.rows; ++y) {
      if (y == 0 || (options_.rowsPerInterval != 0 && y % options_.rowsPerInterval == 0)) {
        if (y != 0) at += 2;
        bits = Unpacked(stream_, at);
        next = 0;
        first = y;
      }
      for (std::size_t x = 0; x < image_.columns; ++x) {
        for (std::size_t component = 0; component < image_.components; ++component) {
          const std::int32_t sum = Predicted(image_, options_, first, y, x, component) +
                                   Difference(tables_[component], bits, next);
          image_.samples[image_.Place(y, x, component)] = static_cast<std::uint32_t>(sum) & 0xFFFF;
        }
      }
    }
  }

  static std::int32_t Difference(const std::map<std::string, std::uint8_t>& codes,
                                 const std::string& bits, std::size_t& next) {
    std::string code;
    while (codes.count(code) == 0) code.push_back(bits.at(next++));
    const std::uint8_t category = codes.at(code);
    if (category == 0) return 0;
    if (category == 16) return 32768;
    std::int32_t value = 0;
    for (std::uint8_t left = category; left > 0; --left) {
      value = 2 * value + (bits.at(next++) == '1' ? 1 : 0);
    }
    return value >= 1 << (category - 1) ? value : value - (1 << category) + 1;
  }

  const Bytes& stream_;
  PlainImage image_;
  PlainOptions options_;
  std::map<std::uint8_t, std::map<std::string, std::uint8_t>> codes_;
  std::vector<std::map<std::string, std::uint8_t>> tables_;  // of each component
};

}  // namespace

Bytes Packed(std::string_view bits) {
  std::string plain;
  for (const char bit : bits) {
    if (bit != ' ') plain.push_back(bit);
  }
  while (plain.size() % 8 != 0) plain.push_back('1');
  Bytes bytes;
  for (std::size_t at = 0; at < plain.size(); at += 8) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(plain.substr(at, 8), nullptr, 2)));
    if (bytes.back() == 0xFF) bytes.push_back(0);
  }
  return bytes;
}

Bytes SegmentOf(std::uint8_t marker, const Bytes& content) {
  const std::size_t length = content.size() + 2;
  return Joined(
      {{0xFF, marker, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)},
       content});
}

Bytes PlainTable::Content() const { return Joined({Bytes(counts.begin(), counts.end()), values}); }

std::string PlainTable::CodeOf(std::uint8_t value) const {
  std::uint32_t code = 0;
  std::size_t at = 0;
  for (std::uint32_t length = 1; length <= counts.size(); ++length, code *= 2) {
    for (std::uint32_t left = counts[length - 1]; left > 0; --left, ++code) {
      if (values.at(at++) == value) return BitsOf(code, length);
    }
  }
  throw std::runtime_error("a value without a code");
}

PlainTable FlatTable() {
  PlainTable table;
  table.counts[4] = 17;
  for (std::uint8_t category = 0; category <= 16; ++category) table.values.push_back(category);
  return table;
}

PlainTable SteepTable(std::uint8_t first) {
  PlainTable table;
  for (std::size_t length = 1; length <= 13; ++length) table.counts[length - 1] = 1;
  table.counts[15] = 4;
  for (unsigned step = 0; step <= 16; ++step) {
    table.values.push_back(static_cast<std::uint8_t>((first + step) % 17));
  }
  return table;
}

Bytes EncodePlainly(const PlainImage& image, const PlainOptions& options) {
  PlainImage shifted = image;
  for (std::uint32_t& sample : shifted.samples) sample >>= options.pointTransform;
  Bytes header = {
      static_cast<std::uint8_t>(image.precision), static_cast<std::uint8_t>(image.rows >> 8),
      static_cast<std::uint8_t>(image.rows),      static_cast<std::uint8_t>(image.columns >> 8),
      static_cast<std::uint8_t>(image.columns),   static_cast<std::uint8_t>(image.components)};
  Bytes stream = {0xFF, 0xD8};
  const auto append = [&](const Bytes& part) {
    stream.insert(stream.end(), part.begin(), part.end());
  };
  // Without this, readers take three components for something else than red, green and blue.
  append(SegmentOf(0xEE, {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0}));
  for (std::uint32_t component = 0; component < image.components; ++component) {
    header.insert(header.end(), {static_cast<std::uint8_t>(component + 1), 0x11, 0});
    append(SegmentOf(0xC4, Joined({{static_cast<std::uint8_t>(component)},
                                   TableOf(options, component).Content()})));
  }
  append(SegmentOf(0xC3, header));
  if (options.rowsPerInterval != 0) {
    const std::uint32_t interval = options.rowsPerInterval * image.columns;
    append(SegmentOf(
        0xDD, {static_cast<std::uint8_t>(interval >> 8), static_cast<std::uint8_t>(interval)}));
  }
  if (options.isInterleaved) {
    append(Scan(shifted, options, 0, image.components));
  } else {
    for (std::uint32_t component = 0; component < image.components; ++component) {
      append(Scan(shifted, options, component, component + 1));
    }
  }
  append({0xFF, 0xD9});
  return stream;
}

PlainImage DecodePlainly(const Bytes& stream) { return PlainDecoder(stream).Decode(); }

}  // namespace tessaret::codecs::test
