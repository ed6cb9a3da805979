#include "codecs/peer_files.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "support/data_set_builder.h"

namespace tessaret::codecs::test {
namespace {

using tessaret::test::DataSetBuilder;
using tessaret::test::Encoding;
using Octets = tessaret::test::Bytes;

std::uint32_t Number32(const Octets& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t byte = 4; byte-- > 0;) number = number << 8 | bytes.at(at + byte);
  return number;
}

Octets Part(const Octets& bytes, std::size_t at, std::size_t count) {
  if (at > bytes.size() || count > bytes.size() - at) throw std::runtime_error("too few bytes");
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

/// Where the length of the pixel data is.
std::size_t PixelDataLengthAt(const Octets& file) {
  // No element before it holds these bytes: the values of small images are small.
  constexpr std::uint8_t kTag[] = {0xE0, 0x7F, 0x10, 0x00, 'O'};
  constexpr std::ptrdiff_t kHead = 8;
  const auto found = std::search(file.begin(), file.end(), std::begin(kTag), std::end(kTag));
  if (file.end() - found < kHead) throw std::runtime_error("no pixel data");
  return static_cast<std::size_t>(found + kHead - file.begin());
}

}  // namespace

testing::AssertionResult HasProgram(const std::string& program) {
  if (Run("command -v " + program)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << program << " is not installed";
}

bool Run(const std::string& command) { return RunProgram({"sh", "-c", command}); }

bool RunProgram(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  ::posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
  }
  ::pid_t child = 0;
  const int error =
      ::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return false;
  int status = 0;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Octets DicomFile(const FrameFormat& format, std::string_view syntax, const Octets& pixels) {
  DataSetBuilder built(Encoding::kExplicitLittle);
  const auto number = [&](std::uint16_t element, std::uint32_t value) {
    built.Number(0x0028, element, static_cast<std::uint16_t>(value));
  };
  constexpr std::string_view kSecondaryCapture = "1.2.840.10008.5.1.4.1.1.7";
  built.Element(0x0008, 0x0016, "UI", tessaret::test::Evened(kSecondaryCapture));
  built.Element(0x0008, 0x0018, "UI", tessaret::test::Evened("1.2.3.4"));
  number(0x0002, format.samples);
  std::string photometric = format.photometric;
  if (photometric.size() % 2 != 0) photometric.push_back(' ');
  built.Element(0x0028, 0x0004, "CS", photometric);
  if (format.samples > 1) number(0x0006, format.isPlanar ? 1 : 0);
  number(0x0010, format.rows);
  number(0x0011, format.columns);
  number(0x0100, format.bitsAllocated);
  number(0x0101, format.bitsStored);
  number(0x0102, format.highBit);
  number(0x0103, format.isSigned ? 1 : 0);
  Octets value = pixels;
  if (value.size() % 2 != 0) value.push_back(0);
  if (syntax == kExplicitLittle) {
    built.Element(0x7FE0, 0x0010, format.bitsAllocated > 8 ? "OW" : "OB", value);
  } else {
    built.Fragments({{}, value});
  }
  return tessaret::test::Joined(
      {tessaret::test::Preamble(), tessaret::test::MetaGroup(syntax), built.Done()});
}

void WriteDicomFile(const std::string& path, const FrameFormat& format, std::string_view syntax,
                    const Octets& pixels) {
  WriteBytes(path, DicomFile(format, syntax, pixels));
}

Octets PixelData(const Octets& file) {
  std::size_t at = PixelDataLengthAt(file);
  const std::uint32_t length = Number32(file, at);
  at += 4;
  if (length != tessaret::test::kNoLength) return Part(file, at, length);
  Octets stream;
  at += 8 + Number32(file, at + 4);  // the offset table
  while (Number32(file, at) == 0xE000FFFE) {
    const std::size_t size = Number32(file, at + 4);
    const Octets fragment = Part(file, at + 8, size);
    stream.insert(stream.end(), fragment.begin(), fragment.end());
    at += 8 + size;
  }
  return stream;
}

Octets ReadPixelData(const std::string& path) { return PixelData(ReadBytes(path)); }

Octets NativePixels(const Octets& file, const FrameFormat& format) {
  return Part(PixelData(file), 0, format.Size());
}

Octets PnmFile(const Octets& frame, const FrameFormat& format) {
  const unsigned most = (1U << format.bitsStored) - 1;
  const std::string head = (format.samples == 1 ? "P5\n" : "P6\n") +
                           std::to_string(format.columns) + " " + std::to_string(format.rows) +
                           "\n" + std::to_string(most) + "\n";
  Octets file = tessaret::test::BytesOf(head);
  const std::size_t width = format.BytesPerSample();
  for (std::size_t at = 0; at < frame.size(); at += width) {
    // Big endian, and a byte each where that is enough.
    if (most > 255) file.push_back(frame.at(at + 1));
    file.push_back(frame[at]);
  }
  return file;
}

Octets PnmPixels(const Octets& file, const FrameFormat& format) {
  // Four words, with one blank behind the last; then big endian where the third number is above 255.
  std::size_t at = 0;
  unsigned long most = 0;
  for (int word = 0; word < 4; ++word, ++at) {
    std::string text;
    for (; file.at(at) > ' '; ++at) text.push_back(static_cast<char>(file[at]));
    if (word == 3) most = std::stoul(text);
  }
  const std::size_t width = most > 255 ? 2 : 1;
  Octets pixels(format.Size());
  const std::size_t to = format.BytesPerSample();
  for (std::size_t sample = 0; sample < format.Samples(); ++sample) {
    for (std::size_t byte = 0; byte < width && byte < to; ++byte) {
      pixels[sample * to + byte] = file.at(at + sample * width + width - 1 - byte);
    }
  }
  return pixels;
}

}  // namespace tessaret::codecs::test
