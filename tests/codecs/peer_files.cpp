#include "codecs/peer_files.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "base/byte_order.h"

namespace tessaret::codecs::test {
namespace {

constexpr std::uint32_t kUndefined = 0xFFFFFFFF;

class Writer {
 public:
  void Number16(std::uint32_t value) {
    bytes_.push_back(static_cast<std::uint8_t>(value));
    bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
  }
  void Number32(std::uint32_t value) {
    Number16(value);
    Number16(value >> 16);
  }
  void Tag(std::uint32_t group, std::uint32_t element) {
    Number16(group);
    Number16(element);
  }
  void Raw(Bytes bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  void Text(std::uint32_t group, std::uint32_t element, const char* type, std::string text) {
    if (text.size() % 2 != 0) text.push_back(std::strcmp(type, "UI") == 0 ? '\0' : ' ');
    Tag(group, element);
    bytes_.insert(bytes_.end(), type, type + 2);
    Number16(static_cast<std::uint32_t>(text.size()));
    bytes_.insert(bytes_.end(), text.begin(), text.end());
  }
  void Short(std::uint32_t group, std::uint32_t element, std::uint32_t value) {
    Tag(group, element);
    bytes_.insert(bytes_.end(), {'U', 'S', 2, 0});
    Number16(value);
  }
  /// With the long form of the length.
  void Long(std::uint32_t group, std::uint32_t element, const char* type, std::uint32_t length) {
    Tag(group, element);
    bytes_.insert(bytes_.end(), type, type + 2);
    Number16(0);
    Number32(length);
  }
  void PadToEven() {
    if (bytes_.size() % 2 != 0) bytes_.push_back(0);
  }
  [[nodiscard]] const std::vector<std::uint8_t>& Written() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
};

void AppendPixels(Writer& writer, const FrameFormat& format, bool isNative, Bytes pixels) {
  const auto length = static_cast<std::uint32_t>(pixels.size() + pixels.size() % 2);
  if (isNative) {
    writer.Long(0x7FE0, 0x0010, format.bitsAllocated > 8 ? "OW" : "OB", length);
    writer.Raw(pixels);
    writer.PadToEven();
    return;
  }
  writer.Long(0x7FE0, 0x0010, "OB", kUndefined);
  writer.Tag(0xFFFE, 0xE000);
  writer.Number32(0);
  writer.Tag(0xFFFE, 0xE000);
  writer.Number32(length);
  writer.Raw(pixels);
  writer.PadToEven();
  writer.Tag(0xFFFE, 0xE0DD);
  writer.Number32(0);
}

}  // namespace

void WriteDicomFile(const std::string& path, const FrameFormat& format, const char* syntax,
                    Bytes pixels) {
  Writer meta;
  meta.Long(0x0002, 0x0001, "OB", 2);
  meta.Number16(0x0100);
  meta.Text(0x0002, 0x0002, "UI", "1.2.840.10008.5.1.4.1.1.7");
  meta.Text(0x0002, 0x0003, "UI", "1.2.3.4");
  meta.Text(0x0002, 0x0010, "UI", syntax);
  meta.Text(0x0002, 0x0012, "UI", "1.2.3");
  Writer writer;
  const std::vector<std::uint8_t> preamble(128);
  writer.Raw(preamble);
  const std::uint8_t mark[] = {'D', 'I', 'C', 'M', 2, 0, 0, 0, 'U', 'L', 4, 0};
  writer.Raw(mark);
  writer.Number32(static_cast<std::uint32_t>(meta.Written().size()));
  writer.Raw(meta.Written());
  writer.Text(0x0008, 0x0016, "UI", "1.2.840.10008.5.1.4.1.1.7");
  writer.Text(0x0008, 0x0018, "UI", "1.2.3.4");
  writer.Short(0x0028, 0x0002, format.samples);
  writer.Text(0x0028, 0x0004, "CS", format.photometric);
  if (format.samples > 1) writer.Short(0x0028, 0x0006, format.isPlanar ? 1 : 0);
  writer.Short(0x0028, 0x0010, format.rows);
  writer.Short(0x0028, 0x0011, format.columns);
  writer.Short(0x0028, 0x0100, format.bitsAllocated);
  writer.Short(0x0028, 0x0101, format.bitsStored);
  writer.Short(0x0028, 0x0102, format.highBit);
  writer.Short(0x0028, 0x0103, format.isSigned ? 1 : 0);
  AppendPixels(writer, format, std::strcmp(syntax, kExplicitLittle) == 0, pixels);
  WriteBytes(path, writer.Written());
}

std::vector<std::uint8_t> ReadPixelData(const std::string& path) {
  const std::vector<std::uint8_t> file = ReadBytes(path);
  // No element before it holds these bytes: the values of small images are small.
  static constexpr std::uint8_t kTag[] = {0xE0, 0x7F, 0x10, 0x00, 'O'};
  const auto found = std::search(file.begin(), file.end(), std::begin(kTag), std::end(kTag));
  if (file.end() - found < 12) return {};
  Bytes rest(found, file.end());
  const std::uint32_t length = LoadLittle32(&rest[8]);
  rest = rest.subspan(12);
  if (length != kUndefined) {
    const Bytes value = rest.first(std::min<std::size_t>(length, rest.size()));
    return {value.begin(), value.end()};
  }
  std::vector<std::uint8_t> stream;
  for (bool isTable = true; rest.size() >= 8 && LoadLittle16(&rest[2]) == 0xE000; isTable = false) {
    const std::size_t size = std::min<std::size_t>(LoadLittle32(&rest[4]), rest.size() - 8);
    const Bytes item = rest.subspan(8, size);
    if (!isTable) stream.insert(stream.end(), item.begin(), item.end());
    rest = rest.subspan(8 + size);
  }
  return stream;
}

std::vector<std::uint8_t> ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const std::string& path, Bytes bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

bool HasProgram(const std::string& program) { return Run("command -v " + program); }

bool Run(const std::string& command) {
  return std::system(("{ " + command + "; } > /dev/null 2>&1").c_str()) == 0;
}

}  // namespace tessaret::codecs::test
