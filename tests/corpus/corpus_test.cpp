// Real files, against what independent programs say about them.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/data_set_coder.h"
#include "core/transfer_syntax.h"
#include "corpus/known_differences.h"
#include "corpus/manifest.h"
#include "corpus/saved_form.h"
#include "support/build_kind.h"
#include "support/bytes.h"
#include "support/compare_objects.h"
#include "support/odd_streams.h"
#include "support/sha256.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

using Object = std::unique_ptr<DICOMDataObject>;
using Why = ParseStop::Why;

constexpr CompareLeniently kAfterSaving = {.positions = true, .sequenceLengths = true};

/// Processor time of this thread, in seconds: on a busy machine time on the wall says nothing about a reader.
double ProcessorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class Corpus : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    dictionary_ = std::make_unique<RTC>();
    const auto path = std::filesystem::path(kDataDir) / "dicom-dict.txt";
    dictionary_->AttachRTC(path.c_str());
  }
  static void TearDownTestSuite() { dictionary_.reset(); }

  void SetUp() override {
    if (Manifest().empty()) GTEST_SKIP() << "no manifest.tsv in " << kCorpusDir;
    ASSERT_NE(dictionary_->RunTimeClass(0x0010, 0x0010, nullptr), type_code::kNone);
  }

  static const RTC& Dictionary() { return *dictionary_; }

  /// Loads without asking for the "DICM" mark.
  static Object Load(const std::string& path, DataSetCoder& coder, bool loadPixels = true) {
    coder.Dictionary = dictionary_.get();
    return coder.LoadFile(path.c_str(), loadPixels, false);
  }
  static Object Load(const std::string& path) {
    DataSetCoder coder;
    return Load(path, coder);
  }

  static bool SaveClone(const std::string& path, const DICOMObject& object) {
    const std::unique_ptr<DICOMObject> clone(object.Clone(false));
    return DataSetCoder(dictionary_.get()).SaveFile(path.c_str(), 3, *clone);
  }

 private:
  static inline std::unique_ptr<RTC> dictionary_;
};

/// Sums up sizes and times, and says them at its end.
class Tally {
 public:
  explicit Tally(const char* what) : what_(what) {}
  Tally(const Tally&) = delete;
  Tally& operator=(const Tally&) = delete;
  ~Tally() {
    std::printf("%s: %d files, %.1f MB, %.3f s\n", what_, files_, bytes_ / 1e6, seconds_);
  }
  void Add(const std::string& path, double seconds) {
    ++files_;
    bytes_ += static_cast<double>(std::filesystem::file_size(path));
    seconds_ += seconds;
  }

 private:
  const char* what_;
  int files_ = 0;
  double bytes_ = 0;
  double seconds_ = 0;
};

TEST_F(Corpus, HoldsTheFilesThatTheManifestDescribes) {
  for (const ManifestRow& row : Manifest()) {
    const Bytes bytes = ReadBytes(PathOf(row));
    EXPECT_EQ(Sha256(bytes.data(), bytes.size()), row.sha256) << row.path;
  }
}

const char* NameOf(Why why) {
  switch (why) {
    case Why::kNone:
      return "ends with the stream";
    case Why::kTruncated:
      return "is truncated";
    case Why::kMissingEnd:
      return "lacks a delimiter at its end";
    case Why::kStrayTag:
      return "has a stray tag";
    case Why::kUnknownSyntax:
      return "has an unknown syntax";
    case Why::kPixelData:
      return "ends at the pixel data";
    case Why::kOrphanItem:
      return "has an orphan item";
    case Why::kTooDeep:
      return "is nested too deeply";
    case Why::kTooLong:
      return "has a length beyond the stream";
  }
  return "";
}

std::string Outcome(std::uint64_t elements, Why why) {
  return std::to_string(elements) + " elements, " + NameOf(why);
}

TEST_F(Corpus, EveryFileLoadsWithTheElementsThatTheManifestCountsButForTheListedOnes) {
  Tally tally("loaded");
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    DataSetCoder coder;
    const double start = ProcessorSeconds();
    const Object object = Load(PathOf(row), coder);
    tally.Add(PathOf(row), ProcessorSeconds() - start);
    ASSERT_NE(object, nullptr) << coder.ErrorText();
    EXPECT_EQ(coder.ErrorText(), nullptr);
    const KnownDifference* known = FindRow(kKnownDifferences, row.path);
    const std::string expected = known != nullptr ? Outcome(known->elements, known->stop)
                                                  : Outcome(row.elements.value_or(0), Why::kNone);
    EXPECT_EQ(Outcome(object->Elements.Size(), coder.LastStop().why), expected);
  }
}

const ManifestRow* FindManifestRow(std::string_view path) {
  const auto& rows = Manifest();
  const auto found = std::find_if(rows.begin(), rows.end(),
                                  [&](const ManifestRow& row) { return row.path == path; });
  return found == rows.end() ? nullptr : &*found;
}

TEST_F(Corpus, EveryListedDifferenceHasItsFileAndIsOne) {
  for (const KnownDifference& known : kKnownDifferences) {
    SCOPED_TRACE(known.path);
    const ManifestRow* row = FindManifestRow(known.path);
    ASSERT_NE(row, nullptr);
    EXPECT_TRUE(known.elements != row->elements || known.stop != Why::kNone);
  }
  for (const KnownSavedDifference& known : kKnownSavedDifferences) {
    EXPECT_NE(FindManifestRow(known.path), nullptr) << known.path;
    EXPECT_NE(known.difference, "") << known.path;
  }
}

TEST_F(Corpus, OnlyListedFilesNameASyntaxThatIsNotKnown) {
  for (const ManifestRow& row : Manifest()) {
    if (row.transferSyntax.empty() || FindTransferSyntax(row.transferSyntax)) continue;
    const KnownDifference* known = FindRow(kKnownDifferences, row.path);
    ASSERT_NE(known, nullptr) << row.path;
    EXPECT_EQ(known->stop, Why::kUnknownSyntax) << row.path;
  }
}

TEST_F(Corpus, EveryFileEndsWithinASecondInEveryWayOfLoading) {
  // A build that is not optimised and counts its own lines takes several times as long.
  const double bound = kAsShipped ? 1.0 : 5.0;
  std::vector<std::string> paths = OtherFiles();
  for (const ManifestRow& row : Manifest()) paths.push_back(PathOf(row));
  for (const std::string& path : paths) {
    for (const bool strict : {false, true}) {
      for (const bool loadPixels : {false, true}) {
        DataSetCoder coder(&Dictionary());
        const double start = ProcessorSeconds();
        const Object object = coder.LoadFile(path.c_str(), loadPixels, strict);
        EXPECT_LT(ProcessorSeconds() - start, bound) << path;
        EXPECT_TRUE(object != nullptr || coder.ErrorText() != nullptr) << path;
      }
    }
  }
}

TEST_F(Corpus, FilesThatAreNotDicomAreRefusedWhenTheMarkIsAskedFor) {
  for (const std::string& path : OtherFiles()) {
    DataSetCoder coder(&Dictionary());
    EXPECT_EQ(coder.LoadFile(path.c_str(), true, true), nullptr) << path;
    EXPECT_STREQ(coder.ErrorText(), "Error checking DICOM MetaHeader") << path;
  }
}

/// The text of a UID, without padding.
std::string UidIn(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  std::string uid = vr == nullptr ? std::string() : ValueText(*vr);
  while (!uid.empty() && (uid.back() == '\0' || uid.back() == ' ')) uid.pop_back();
  return uid;
}

void ExpectMetaHeaderOf(const DICOMObject& source, const DICOMObject& saved) {
  const bool namesSyntax = source.GetVR(0x0002, 0x0010) != nullptr;
  EXPECT_EQ(UidIn(saved, 0x0002, 0x0010),
            namesSyntax ? UidIn(source, 0x0002, 0x0010) : "1.2.840.10008.1.2");
  EXPECT_EQ(UidIn(saved, 0x0002, 0x0002), UidIn(source, 0x0008, 0x0016));
  EXPECT_EQ(UidIn(saved, 0x0002, 0x0003), UidIn(source, 0x0008, 0x0018));
}

TEST_F(Corpus, EveryFileSavedLoadsAgainToAnEqualObjectButForTheListedOnes) {
  const TempFolder folder;
  const std::string saved = folder.File("saved.dcm");
  Tally tally("saved and loaded again");
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    const Object first = Load(PathOf(row));
    ASSERT_NE(first, nullptr);
    const double start = ProcessorSeconds();
    ASSERT_TRUE(SaveClone(saved, *first));
    DataSetCoder coder;
    const Object second = Load(saved, coder);
    tally.Add(PathOf(row), ProcessorSeconds() - start);
    ASSERT_NE(second, nullptr);
    const KnownSavedDifference* known = FindRow(kKnownSavedDifferences, row.path);
    if (known == nullptr) {
      ExpectMetaHeaderOf(*first, *second);
      EXPECT_STREQ(NameOf(coder.LastStop().why), NameOf(Why::kNone));
    }
    TakeSavedForm(*first, Dictionary());
    RemoveMetaGroup(*second);
    EXPECT_EQ(Difference(*first, *second, kAfterSaving), known != nullptr ? known->difference : "");
  }
}

TEST_F(Corpus, SavingWithoutACloneWritesTheSameBytesAndKeepsTheObject) {
  const TempFolder folder;
  const std::string fromClone = folder.File("clone.dcm");
  const std::string kept = folder.File("kept.dcm");
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    const Object object = Load(PathOf(row));
    ASSERT_TRUE(SaveClone(fromClone, *object));
    const std::size_t elements = object->Elements.Size();
    ASSERT_TRUE(DataSetCoder(&Dictionary()).SaveKeeping(kept.c_str(), 3, *object));
    EXPECT_TRUE(ReadBytes(fromClone) == ReadBytes(kept));
    EXPECT_EQ(object->Elements.Size(), elements);
  }
}

/// Removes what stands in the stream from `position` on, whatever its tag.
void CutAt(DICOMObject& object, std::uint32_t position) {
  std::vector<TagKey> keys;
  object.Elements.ForEach([&](const VR& vr) {
    if (vr.StreamPosition >= position) keys.push_back(vr.Key());
  });
  for (const TagKey key : keys) delete object.Remove(GroupOf(key), ElementOf(key));
  object.SequenceBytes = 0;  // fragments counted too
}

TEST_F(Corpus, WithoutPixelsAFileLoadsAsFarAsItsPixelData) {
  int ended = 0;
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    const Object whole = Load(PathOf(row));
    DataSetCoder coder;
    const Object header = Load(PathOf(row), coder, false);
    ASSERT_NE(header, nullptr);
    if (coder.LastStop().why == Why::kPixelData) {
      ++ended;
      const VR* pixels = header->GetVR(0x7FE0, 0x0010);
      ASSERT_NE(pixels, nullptr);
      EXPECT_EQ(pixels->Data, nullptr);
      EXPECT_EQ(pixels->Items, nullptr);
      if (const VR* loaded = whole->GetVR(0x7FE0, 0x0010); loaded != nullptr) {
        EXPECT_EQ(pixels->Length, loaded->Items != nullptr ? kUndefinedLength : loaded->Length);
      }
      const std::uint32_t position = pixels->StreamPosition;
      CutAt(*whole, position);
      CutAt(*header, position);
    }
    EXPECT_EQ(Difference(*whole, *header), "");
  }
  EXPECT_GT(ended, 0);
}

TEST_F(Corpus, AFileInMemoryLoadsToTheSameObjectOrNotAtAll) {
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    DataSetCoder coder;
    const Object fromFile = Load(PathOf(row), coder);
    const Bytes bytes = ReadBytes(PathOf(row));
    DataSetCoder memoryCoder(&Dictionary());
    const Object fromMemory = memoryCoder.LoadMemory(bytes.data(), bytes.size(), true, false);
    if (coder.LastStop().why != Why::kNone && coder.LastStop().why != Why::kMissingEnd) {
      EXPECT_EQ(fromMemory, nullptr);
      EXPECT_STREQ(memoryCoder.ErrorText(), "Error parsing DICOM Object");
      EXPECT_STREQ(NameOf(memoryCoder.LastStop().why), NameOf(coder.LastStop().why));
    } else {
      ASSERT_NE(fromMemory, nullptr);
      EXPECT_EQ(Difference(*fromFile, *fromMemory), "");
    }
  }
}

// The stream's own operations, in pieces that fit neither elements nor blocks, against the reader that looks into the
// file.
TEST_F(Corpus, AFileThatComesInPiecesLoadsToTheSameObject) {
  constexpr std::uint32_t kPiece = 997;
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    DataSetCoder coder;
    const Object whole = Load(PathOf(row), coder);
    DrippingFileBuffer buffer(kPiece);
    DataSetCoder dripCoder(&Dictionary());
    const Object pieces = dripCoder.LoadFile(PathOf(row).c_str(), true, false, &buffer);
    ASSERT_NE(pieces, nullptr);
    EXPECT_EQ(Difference(*whole, *pieces), "");
    EXPECT_STREQ(NameOf(dripCoder.LastStop().why), NameOf(coder.LastStop().why));
    EXPECT_EQ(dripCoder.LastStop().position, coder.LastStop().position);
  }
}

/// The bytes of one number: in big endian OW values are written as 16-bit words, whatever the samples are.
std::size_t NumberBytes(const VR& pixels, const ManifestRow& row) {
  return std::max<std::size_t>(row.bitsAllocated / 8, pixels.TypeCode == type_code::OW ? 2 : 1);
}

/// The image as the manifest's digest has it: in little endian, without what fills the value up.
Bytes LittleEndianImage(const VR& pixels, const ManifestRow& row) {
  Bytes bytes(pixels.Data, pixels.Data + pixels.Length);
  const std::size_t width = NumberBytes(pixels, row);
  if (row.transferSyntax == "1.2.840.10008.1.2.2") {
    for (auto at = bytes.begin(); bytes.end() - at >= static_cast<std::ptrdiff_t>(width);) {
      const auto next = at + static_cast<std::ptrdiff_t>(width);
      std::reverse(at, next);
      at = next;
    }
  }
  bytes.resize(std::min<std::uint64_t>(bytes.size(), ImageBytes(row)));
  return bytes;
}

TEST_F(Corpus, NativePixelDataAreThoseOfTheManifest) {
  int compared = 0;
  for (const ManifestRow& row : Manifest()) {
    const Object object = Load(PathOf(row));
    const VR* pixels = object->GetVR(0x7FE0, 0x0010);
    if (row.pixelSha256.empty() || pixels == nullptr || pixels->Items != nullptr) continue;
    ++compared;
    const Bytes image = LittleEndianImage(*pixels, row);
    EXPECT_EQ(Sha256(image.data(), image.size()), row.pixelSha256) << row.path;
  }
  std::printf("native images compared: %d\n", compared);
  EXPECT_GT(compared, 0);
}

}  // namespace
}  // namespace tessaret::test
