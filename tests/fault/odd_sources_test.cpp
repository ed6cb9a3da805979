// Sources that are no ordinary files: directories, devices, pipes, files that change while they are read.
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include <gtest/gtest.h>

#include "fault_helpers.h"
#include "platform/file_calls.h"
#include "support/measured_child.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr const char* kNoMark = "Error checking DICOM MetaHeader";

TEST(OddSources, ADirectoryIsAnError) {
  const TempFolder folder;
  EXPECT_EQ(LoadPath(folder.Path().string()).error, SystemErrorText(EISDIR));
  EXPECT_EQ(LoadPath(folder.Path().string(), {.strict = true}).error, kNoMark);
  PlainFileBuffer plain;
  EXPECT_EQ(LoadPath(folder.Path().string(), {.buffer = &plain}).error, SystemErrorText(EISDIR));
}

TEST(OddSources, ADeviceWithoutEndEndsInNoTime) {
  const Measured measured = RunMeasured([] {
    const Loaded loaded = LoadPath("/dev/zero");
    PlainFileBuffer plain;
    const Loaded throughStream = LoadPath("/dev/zero", {.buffer = &plain});
    return loaded.object == nullptr && loaded.error && throughStream.object == nullptr &&
                   throughStream.error
               ? 0
               : 1;
  });
  EXPECT_EQ(measured.result, 0);
  EXPECT_LE(measured.seconds, 1);
  EXPECT_EQ(LoadPath("/dev/zero", {.strict = true}).error, kNoMark);
}

TEST(OddSources, ADeviceWithoutBytesIsEmptyOrAnError) {
  const Loaded loaded = LoadPath("/dev/null");
  EXPECT_TRUE(loaded.error.has_value() || loaded.object->IsEmpty());
}

TEST(OddSources, APseudoFileThatSaysItIsEmptyIsRead) {
  // Its size is 0 and its bytes are there: they are no DICOM, and the load ends.
  const Loaded loaded = LoadPath("/proc/self/status");
  EXPECT_TRUE(loaded.object != nullptr || loaded.error.has_value());
  EXPECT_NE(loaded.stop.why, Why::kNone);
}

/// Loads from one end of a socket pair or pipe while a thread writes `bytes` into the other in pieces.
Loaded LoadWhileSent(int readEnd, int writeEnd, const Bytes& bytes, std::size_t piece) {
  std::thread sender([&] {
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      WriteAll(writeEnd, bytes.data() + at, std::min(piece, bytes.size() - at));
    }
    ::close(writeEnd);
  });
  Loaded loaded = LoadPath("/proc/self/fd/" + std::to_string(readEnd));
  ::close(readEnd);
  sender.join();
  return loaded;
}

TEST(OddSources, FilesComeThroughPipesWholeAndCut) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  for (std::uint32_t seed = 0; seed < 6; ++seed) {
    const Bytes bytes = SeedFile(seed);
    for (std::size_t size = 132; size <= bytes.size(); size += 97) {
      const Bytes cut = Cut(bytes, size);
      int ends[2];
      ASSERT_EQ(::pipe(ends), 0);
      const Loaded piped = LoadWhileSent(ends[0], ends[1], cut, 61);
      const Loaded filed = LoadFileOf(cut);
      ASSERT_NE(piped.object, nullptr);
      EXPECT_EQ(Difference(*piped.object, *filed.object), "")
          << "seed " << seed << " cut at " << size;
      EXPECT_EQ(piped.stop, filed.stop);
    }
  }
}

TEST(OddSources, ALargeValueComesThroughAPipe) {
  const Bytes value = Pattern(5'000'000);
  const Bytes bytes =
      FileOf(kExplicit,
             PatientAnd(kExplicit, DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, "OW", value)));
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const Loaded loaded = LoadWhileSent(ends[0], ends[1], bytes, 100'000);
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(ValueText(At(*loaded.object, 0x7FE0, 0x0010)), TextOf(value));
}

TEST(OddSources, APeerThatClaimsMuchAndLeavesCostsWhatItSent) {
  const Bytes bytes =
      FileOf(kExplicit, PatientAnd(kExplicit, DataSetBuilder(kExplicit)
                                                  .Head(0x7FE0, 0x0010, "OW", 0xFFFFFFF0)
                                                  .Raw(Bytes(3'000'000, 1))));
  const Measured measured = RunMeasured([&] {
    int ends[2];
    if (::pipe(ends) != 0) return 2;
    const Loaded loaded = LoadWhileSent(ends[0], ends[1], bytes, 65536);
    return loaded.object && HasPatient(*loaded.object) && loaded.stop.why == Why::kTruncated ? 0
                                                                                             : 1;
  });
  EXPECT_EQ(measured.result, 0);
  // Memory doubles as bytes arrive: 4 MiB and the 2 MiB before it, beside the thread and the window.
  EXPECT_LE(measured.peakGrowth, 24u << 20);
}

// O08. The file changes at a chosen read.

class ChangesWhileRead : public ::testing::Test {
 protected:
  void TearDown() override { SetFileCallHook(nullptr); }

  /// Has the file become `size` bytes long before read number `nth`.
  void ResizeBeforeRead(const MemoryFile& file, int nth, off_t size) {
    descriptor = file.Descriptor();
    readsToGo = nth;
    newSize = size;
    SetFileCallHook([](FileCall call, std::size_t&) {
      if (call == FileCall::kRead && --readsToGo == 0 && ::ftruncate(descriptor, newSize) != 0)
        return EIO;
      return 0;
    });
  }

  static inline int descriptor = -1;
  static inline int readsToGo = 0;
  static inline off_t newSize = 0;
};

TEST_F(ChangesWhileRead, AFileThatShrinksIsWhatWasStillThere) {
  const Bytes bytes =
      FileOf(kExplicit, PatientAnd(kExplicit, DataSetBuilder(kExplicit).Element(
                                                  0x7FE0, 0x0010, "OW", Pattern(1'000'000))));
  for (int nth = 1; nth <= 4; ++nth) {
    for (const off_t size : {0, 100, 140, 5000, 500'000}) {
      for (const bool plain : {false, true}) {
        MemoryFile file(bytes);
        ResizeBeforeRead(file, nth, size);
        PlainFileBuffer stream;
        const Loaded loaded = LoadPath(file.Path(), {.buffer = plain ? &stream : nullptr});
        SetFileCallHook(nullptr);
        ASSERT_NE(loaded.object, nullptr);
        EXPECT_EQ(loaded.error, std::nullopt);
        // The pixel data is there whole, or not at all.
        const VR* pixels = loaded.object->GetVR(0x7FE0, 0x0010);
        if (pixels != nullptr) {
          EXPECT_EQ(ValueText(*pixels), TextOf(Pattern(1'000'000)));
        }
      }
    }
  }
}

TEST_F(ChangesWhileRead, AFileThatGrowsIsReadWithoutHarm) {
  const Bytes bytes =
      FileOf(kExplicit, PatientAnd(kExplicit, DataSetBuilder(kExplicit).Element(
                                                  0x7FE0, 0x0010, "OW", Pattern(100'000))));
  for (int nth = 1; nth <= 3; ++nth) {
    MemoryFile file(bytes);
    ResizeBeforeRead(file, nth, static_cast<off_t>(bytes.size()) + 100'000);
    const Loaded loaded = LoadPath(file.Path());
    SetFileCallHook(nullptr);
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_TRUE(HasPatient(*loaded.object));
    EXPECT_EQ(ValueText(At(*loaded.object, 0x7FE0, 0x0010)), TextOf(Pattern(100'000)));
  }
}

// O06

TEST(OddSources, APipeWhoseReaderLeftIsAnErrorOfTheSave) {
  const TempFolder folder;
  const std::string path = folder.File("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  DICOMObject object;
  object.Push(NewElement(0x7FE0, 0x0010, type_code::OW, Pattern(1'000'000)));
  std::thread reader([&] {
    const FileResult opened = OpenFile(path.c_str(), O_RDONLY);
    char some[100];
    ReadSome(static_cast<int>(opened.value), some, sizeof some);
    CloseFile(static_cast<int>(opened.value));
  });
  DataSetCoder coder;
  EXPECT_FALSE(coder.SaveFile(path.c_str(), 3, object));
  reader.join();
  EXPECT_EQ(ErrorOf(coder), SystemErrorText(EPIPE));
}

}  // namespace
}  // namespace tessaret::test
