// The reader that takes its bytes in place and the one that goes through the operations of a stream are one reader: whatever
// the bytes, both give the same objects, results, words and places.
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "support/build_kind.h"
#include "support/guarded_block.h"
#include "support/memory_file.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

const std::string& WordsOf(const Parsed& parsed) {
  static const std::string kNone = "none";
  return parsed.error ? *parsed.error : kNone;
}

std::string DifferenceOfParses(const Parsed& a, const Parsed& b) {
  if (a.result != b.result) return "results differ";
  if (a.error != b.error) return "words differ: " + WordsOf(a) + " and " + WordsOf(b);
  if (!(a.stop == b.stop)) {
    std::ostringstream text;
    PrintTo(a.stop, &text);
    text << " and ";
    PrintTo(b.stop, &text);
    return text.str();
  }
  if (a.oddities != b.oddities) return "oddities differ";
  // Behind a failure nobody goes on, so that it does not matter how much of a cut number was taken.
  if (a.result && a.position != b.position) {
    return Format("positions differ: %u and %u", a.position, b.position);
  }
  return Difference(*a.object, *b.object);
}

/// How a data set is parsed.
struct Way {
  Encoding encoding;
  bool asFile;  // else as a data set of the encoding
  bool loadPixels = true;
  std::int32_t outEndian = kLittleEndian;
};

Parsed ParseThis(Buffer& buffer, const Way& way, const RTC* dictionary) {
  buffer.SetOutEndian(way.outEndian);
  if (!way.asFile) return ParseFrom(buffer, way.encoding, dictionary);
  return ParseFileFrom(buffer, {.start = way.encoding,
                                .loadPixels = way.loadPixels,
                                .fileMode = true,
                                .dictionary = dictionary});
}

/// Parses `bytes` in place and through a stream over the same block. What differs, or nothing.
std::string DifferenceOfInputs(Bytes& bytes, const Way& way, const RTC* dictionary) {
  const auto size = static_cast<std::uint32_t>(bytes.size());
  MemoryBuffer block(bytes.data(), size, false);
  PlainMemoryBuffer stream(bytes.data(), size, false);
  return DifferenceOfParses(ParseThis(block, way, dictionary), ParseThis(stream, way, dictionary));
}

/// The same with a block that ends where memory ends.
std::string DifferenceAtTheEndOfMemory(GuardedBlock& memory, const Bytes& bytes, std::size_t count,
                                       const Way& way, const RTC* dictionary) {
  std::uint8_t* const at = memory.Put(bytes.data(), count);
  const auto size = static_cast<std::uint32_t>(count);
  MemoryBuffer block(at, size, false);
  PlainMemoryBuffer stream(at, size, false);
  return DifferenceOfParses(ParseThis(block, way, dictionary), ParseThis(stream, way, dictionary));
}

/// The same for bytes that come from a peer, one at a time.
std::string DifferenceFromAPeer(Bytes& bytes, const Way& way, const RTC* dictionary) {
  MemoryBuffer block(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DrippingBuffer peer(bytes, 1);
  return DifferenceOfParses(ParseThis(block, way, dictionary), ParseThis(peer, way, dictionary));
}

class InputEquivalence : public ::testing::TestWithParam<Encoding> {
 protected:
  /// Some data sets that have a bit of everything and are small enough to be disturbed at every byte.
  std::vector<Bytes> SmallDataSets(std::size_t count) const {
    std::vector<Bytes> found;
    for (std::uint32_t seed = 1; found.size() < count; ++seed) {
      Bytes data = RandomDataSet(GetParam(), seed, 2);
      if (data.size() > 250 && data.size() < 700) found.push_back(std::move(data));
    }
    return found;
  }
  Bytes MetaOfParam() const { return MetaGroup(SyntaxUidOf(GetParam())); }

  const std::unique_ptr<DcmDictionary> dictionary_ =
      DictionaryOf(std::string(RandomDataSetDictionary()));
};

TEST_P(InputEquivalence, WholeDataSetsAreReadTheSame) {
  for (std::uint32_t seed = 1; seed <= Repetitions(100u, 5u); ++seed) {
    Bytes data = RandomDataSet(GetParam(), seed);
    Bytes file = Joined({MetaOfParam(), data});
    EXPECT_TRUE(Parse(GetParam(), data, dictionary_.get()).result) << seed;
    for (const RTC* dictionary :
         {static_cast<const RTC*>(dictionary_.get()), static_cast<const RTC*>(nullptr)}) {
      for (const std::int32_t outEndian : {kLittleEndian, kBigEndian}) {
        const Way way{.encoding = GetParam(), .asFile = false, .outEndian = outEndian};
        EXPECT_EQ(DifferenceOfInputs(data, way, dictionary), "") << seed;
        EXPECT_EQ(DifferenceFromAPeer(data, way, dictionary), "") << seed;
      }
      for (const bool loadPixels : {true, false}) {
        const Way way{
            .encoding = Encoding::kExplicitLittle, .asFile = true, .loadPixels = loadPixels};
        EXPECT_EQ(DifferenceOfInputs(file, way, dictionary), "") << seed;
        EXPECT_EQ(DifferenceFromAPeer(file, way, dictionary), "") << seed;
      }
    }
  }
}

TEST_P(InputEquivalence, DataSetsCutAtAnyByteAreReadTheSame) {
  for (const Bytes& data : SmallDataSets(4)) {
    const Bytes file = Joined({MetaOfParam(), data});
    for (std::size_t size = 0; size < file.size(); size += StepBy(3u)) {
      const auto end = static_cast<std::ptrdiff_t>(size);
      Bytes cutFile(file.begin(), file.begin() + end);
      const Way asFile{.encoding = Encoding::kExplicitLittle, .asFile = true};
      EXPECT_EQ(DifferenceOfInputs(cutFile, asFile, dictionary_.get()), "")
          << "file cut at " << size;
      if (size >= data.size()) continue;
      Bytes cut(data.begin(), data.begin() + end);
      const Way plain{.encoding = GetParam(), .asFile = false};
      EXPECT_EQ(DifferenceOfInputs(cut, plain, dictionary_.get()), "") << "cut at " << size;
      EXPECT_EQ(DifferenceOfInputs(cut, plain, nullptr), "") << "untyped, cut at " << size;
      EXPECT_EQ(DifferenceFromAPeer(cut, plain, dictionary_.get()), "")
          << "from a peer, cut at " << size;
    }
  }
}

// Values are copied in pieces of fixed length where that many bytes lie in memory, whoever they belong to.
TEST_P(InputEquivalence, NothingBehindTheLastByteIsTouched) {
  GuardedBlock memory(2048);
  for (const Bytes& data : SmallDataSets(4)) {
    const Bytes file = Joined({MetaOfParam(), data});
    for (std::size_t size = 0; size <= file.size(); ++size) {
      const Way asFile{.encoding = Encoding::kExplicitLittle, .asFile = true};
      EXPECT_EQ(DifferenceAtTheEndOfMemory(memory, file, size, asFile, dictionary_.get()), "")
          << "file cut at " << size;
      if (size > data.size()) continue;
      const Way plain{.encoding = GetParam(), .asFile = false};
      EXPECT_EQ(DifferenceAtTheEndOfMemory(memory, data, size, plain, dictionary_.get()), "")
          << "cut at " << size;
      EXPECT_EQ(DifferenceAtTheEndOfMemory(memory, data, size, plain, nullptr), "")
          << "untyped, cut at " << size;
    }
  }
}

TEST_P(InputEquivalence, DataSetsWithAnyByteChangedAreReadTheSame) {
  for (const Bytes& data : SmallDataSets(4)) {
    Bytes file = Joined({MetaOfParam(), data});
    for (std::size_t at = 0; at < file.size(); ++at) {
      const std::uint8_t was = file[at];
      const std::array<int, 6> values = {0x00, 0xFF, 0xFE, 0x7F, was ^ 0x01, was ^ 0x80};
      // Every byte is changed under a sanitizer too, in one way of the six.
      const std::size_t first = kInstrumented ? at % values.size() : 0;
      for (std::size_t change = first; change < values.size(); change += StepBy(values.size())) {
        const int value = values[change];
        file[at] = static_cast<std::uint8_t>(value);
        const Way way{.encoding = Encoding::kExplicitLittle, .asFile = true};
        EXPECT_EQ(DifferenceOfInputs(file, way, dictionary_.get()), "") << at << " is " << value;
        EXPECT_EQ(DifferenceOfInputs(file, way, nullptr), "")
            << "untyped, " << at << " is " << value;
      }
      file[at] = was;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Encodings, InputEquivalence, ::testing::ValuesIn(kAllEncodings),
                         [](const auto& tested) { return NameOf(tested.param); });

// Files.

Parsed LoadThrough(const std::string& path, FileBuffer& buffer, const RTC* dictionary,
                   bool loadPixels) {
  DataSetCoder coder(dictionary);
  Parsed parsed;
  auto object = coder.LoadFile(path.c_str(), loadPixels, false, &buffer);
  parsed.result = object != nullptr;
  if (object) parsed.object = std::move(object);
  parsed.error = ErrorOf(coder);
  parsed.stop = coder.LastStop();
  parsed.oddities = OdditiesOf(coder);
  // How far the stream went is compared where it was read to its end.
  parsed.position = parsed.stop.why == Why::kNone ? buffer.Position : 0;
  return parsed;
}

std::string DifferenceOfLoads(const std::string& path, const RTC* dictionary, bool loadPixels,
                              std::uint32_t piece) {
  FileBuffer file;
  const Parsed inPlace = LoadThrough(path, file, dictionary, loadPixels);
  PlainFileBuffer plain;
  const std::string difference =
      DifferenceOfParses(inPlace, LoadThrough(path, plain, dictionary, loadPixels));
  if (!difference.empty()) return "as a stream: " + difference;
  DrippingFileBuffer dripping(piece);
  const std::string dripped =
      DifferenceOfParses(inPlace, LoadThrough(path, dripping, dictionary, loadPixels));
  if (!dripped.empty()) return "in pieces: " + dripped;
  return {};
}

TEST(FileEquivalence, FilesCutAtAnyByteAreLoadedTheSame) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  MemoryFile file;
  for (const Encoding encoding : kAllEncodings) {
    const Bytes whole = FileOf(encoding, RandomDataSet(encoding, 5, 2));
    for (std::size_t size = 0; size <= whole.size(); size += StepBy(7u)) {
      file.Fill(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
      // Under a sanitizer one byte at a time for every eighth end.
      const std::uint32_t piece = kInstrumented && size % 8 != 0 ? 61 : 1;
      EXPECT_EQ(DifferenceOfLoads(file.Path(), dictionary.get(), true, piece), "")
          << NameOf(encoding) << " cut at " << size;
    }
  }
}

TEST(FileEquivalence, FilesWithAnyByteChangedAreLoadedTheSame) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  MemoryFile changed;
  for (const Encoding encoding : kAllEncodings) {
    Bytes file = FileOf(encoding, RandomDataSet(encoding, 6, 2));
    for (std::size_t at = 128; at < file.size(); at += StepBy(5u)) {
      const std::uint8_t was = file[at];
      for (const int value : {0xFF, was ^ 0x02}) {
        // Under a sanitizer a byte is changed in one way instead of two.
        if (kInstrumented && (value == 0xFF) != (at % 4 < 2)) continue;
        file[at] = static_cast<std::uint8_t>(value);
        changed.Fill(file);
        EXPECT_EQ(DifferenceOfLoads(changed.Path(), dictionary.get(), at % 2 == 0, 7), "")
            << NameOf(encoding) << " byte " << at << " is " << value;
      }
      file[at] = was;
    }
  }
}

/// Every file of the manifest, by its path.
std::vector<std::string> CorpusFiles() {
  const std::filesystem::path root = std::filesystem::path(kCorpusDir).parent_path();
  std::ifstream manifest(std::filesystem::path(kCorpusDir) / "manifest.tsv");
  std::vector<std::string> files;
  std::string line;
  std::getline(manifest, line);
  while (std::getline(manifest, line))
    files.push_back((root / line.substr(0, line.find('\t'))).string());
  return files;
}

TEST(FileEquivalence, RealFilesAreLoadedTheSame) {
  const std::vector<std::string> files = CorpusFiles();
  if (files.empty()) GTEST_SKIP() << "no real files in " << kCorpusDir;
  DcmDictionary dictionary;
  const std::filesystem::path data(kDataDir);
  ASSERT_TRUE(dictionary.AttachRTC((data / "dicom-dict.txt").c_str()));
  for (const std::string& file : files) {
    const bool small = std::filesystem::file_size(file) < Repetitions(50'000u);
    EXPECT_EQ(DifferenceOfLoads(file, &dictionary, true, small ? 1 : 4099), "") << file;
    EXPECT_EQ(DifferenceOfLoads(file, nullptr, false, 64), "") << file << " without pixels";
  }
}

}  // namespace
}  // namespace tessaret::test
