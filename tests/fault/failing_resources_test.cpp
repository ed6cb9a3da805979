// Memory and file calls that fail, each in turn. A load gives the whole object or fails with words; a save leaves the old file or
// the whole new one at its place and nothing beside it; nothing leaks and everything goes on afterwards.
#include <signal.h>

#include <cerrno>
#include <thread>

#include <gtest/gtest.h>

#include "fault_helpers.h"
#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

/// A file with a bit of everything: sequences of both kinds, fragments, a value that is read directly.
Bytes FileWithEverything(Encoding encoding) {
  const Bytes leaf = DataSetBuilder(encoding)
                         .Element(0x0008, 0x1150, "UI", Evened("1.2.3"))
                         .Element(0x0040, 0xA160, "UT", Pattern(300));
  const Bytes inner = DataSetBuilder(encoding).Sequence(0x0040, 0x0275, Lengths::kUndefined,
                                                        Lengths::kDefined, {leaf, leaf});
  return FileOf(encoding, DataSetBuilder(encoding)
                              .Sequence(0x0008, 0x1140, Lengths::kDefined, Lengths::kUndefined,
                                        {inner, leaf, {}})
                              .Element(0x0010, 0x0010, "PN", "Doe^John")
                              .Element(0x0042, 0x0011, "OB", Pattern(100'000))
                              .Fragments({{}, Pattern(50), Pattern(70)}));
}

class FailingResources : public ::testing::TestWithParam<Encoding> {
 protected:
  void SetUp() override { ASSERT_NE(whole_.object, nullptr); }

  /// Runs `scenario` with every allocation failing in turn; the scenario itself checks what came of it. Blocks that stay in
  /// the library's own stores for the next object are no leak: they do not grow with the number of runs.
  template <class Scenario>
  void FailEach(Scenario scenario) {
    scenario();
    const AllocationWatch watch;
    const std::uint64_t runs = FailEveryAllocation(scenario);
    EXPECT_GT(runs, 0u);
    EXPECT_LE(watch.Outstanding(), 8) << "after " << runs << " runs";
    scenario();
  }

  void ExpectWholeOrWords(const Loaded& loaded) {
    if (loaded.object == nullptr) {
      EXPECT_NE(loaded.error, std::nullopt);
    } else {
      EXPECT_EQ(Difference(*loaded.object, *whole_.object), "");
    }
  }

  const std::unique_ptr<DcmDictionary> dictionary_ =
      DictionaryOf("(0008,1140) VR=\"SQ\"\n(0040,0275) VR=\"SQ\"\n(0008,1150) VR=\"UI\"\n");
  const Bytes bytes_ = FileWithEverything(GetParam());
  const MemoryFile file_{bytes_};
  const std::string source_ = file_.Path();
  const Loaded whole_ = LoadBlock(bytes_, {.dictionary = dictionary_.get()});
  TempFolder folder_;
  const std::string place_ = folder_.File("saved.dcm");
};

// O01: the library's own part of each scenario runs under the failure; what the test compares with comes before.

TEST_P(FailingResources, LoadingAFileWithoutMemoryGivesAllOrWords) {
  for (const bool loadPixels : {true, false}) {
    FailEach([&] {
      DataSetCoder coder(dictionary_.get());
      const auto object = coder.LoadFile(source_.c_str(), loadPixels, false);
      if (object == nullptr) {
        EXPECT_NE(coder.ErrorText(), nullptr);
      } else {
        EXPECT_EQ(CountOf(*object), CountOf(*whole_.object));
        EXPECT_EQ(coder.LastStop().why, loadPixels ? Why::kNone : Why::kPixelData);
      }
    });
  }
}

TEST_P(FailingResources, LoadingThroughAStreamWithoutMemoryGivesAllOrWords) {
  FailEach([&] {
    PlainFileBuffer stream;
    DataSetCoder coder(dictionary_.get());
    const auto object = coder.LoadFile(source_.c_str(), true, true, &stream);
    if (object == nullptr) {
      EXPECT_NE(coder.ErrorText(), nullptr);
    } else {
      EXPECT_EQ(coder.LastStop().why, Why::kNone);
    }
  });
}

TEST_P(FailingResources, LoadingABlockWithoutMemoryGivesAllOrWords) {
  FailEach([&] {
    DataSetCoder coder(dictionary_.get());
    const auto object = coder.LoadMemory(bytes_.data(), bytes_.size(), true, true);
    EXPECT_EQ(object == nullptr, coder.ErrorText() != nullptr);
    if (object) {
      EXPECT_EQ(coder.LastStop().why, Why::kNone);
    }
  });
}

/// What is the same whatever the encoding.
class FailingResourcesOnce : public FailingResources {};

TEST_P(FailingResourcesOnce, LoadingWhatFailsAnywayWithoutMemoryFailsWithWords) {
  Bytes deep;
  for (int level = 0; level < 300; ++level)
    deep = DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", kNoLength).Item().Raw(deep);
  FailEach([&] {
    DataSetCoder coder;
    EXPECT_EQ(coder.LoadMemory(deep.data(), deep.size(), true, false), nullptr);
    EXPECT_NE(coder.ErrorText(), nullptr);
    EXPECT_EQ(coder.LoadFile("/nowhere/at/all/in/this/system.dcm", true, false), nullptr);
    EXPECT_NE(coder.ErrorText(), nullptr);
  });
}

TEST_P(FailingResources, ReadersWithoutMemoryThrowAndLeaveAnObjectThatCanBeUsed) {
  FailEach([&] {
    Bytes& block = const_cast<Bytes&>(bytes_);
    DataSetCoder coder(dictionary_.get());
    coder.FileMode = true;
    DICOMDataObject object;
    try {
      MemoryBuffer buffer(block.data() + 132, static_cast<std::uint32_t>(block.size() - 132),
                          false);
      coder.File_ParseRawVRIntoDCM(buffer, object, 101, true);
    } catch (const std::bad_alloc&) {
      // What was read so far is there, and can be walked and destroyed.
    }
    std::size_t elements = 0;
    for (const VR* vr = object.GetFirstVR(); vr != nullptr; vr = object.GetNextVR(vr)) ++elements;
    EXPECT_EQ(elements, CountOf(object));
  });
}

TEST_P(FailingResources, CopyingWithoutMemoryGivesAllOrNothing) {
  for (const bool deep : {true, false}) {
    FailEach([&] {
      const std::unique_ptr<DICOMObject> clone(whole_.object->Clone(deep));
      if (clone) {
        EXPECT_EQ(CountOf(*clone), CountOf(*whole_.object));
      }
    });
  }
  FailEach([&] {
    DICOMObject target;
    if (target.CopyFrom(*whole_.object)) {
      EXPECT_EQ(CountOf(target), CountOf(*whole_.object));
    }
  });
}

/// Saves from a shallow clone, as callers do.
bool SaveClone(DataSetCoder& coder, const std::string& place, std::int32_t mode,
               const DICOMObject& object) {
  const std::unique_ptr<DICOMObject> clone(object.Clone(false));
  return clone != nullptr && coder.SaveFile(place.c_str(), mode, *clone);
}

TEST_P(FailingResources, SavingWithoutMemoryLeavesTheOldOrTheNewFile) {
  for (const std::int32_t mode : {1, 2, 3}) {
    DataSetCoder first(dictionary_.get());
    ASSERT_TRUE(SaveClone(first, place_, mode, *whole_.object));
    const Bytes saved = ReadBytes(place_);
    const Bytes old = Pattern(1000);
    for (const bool keeping : {false, true}) {
      std::uint64_t saves = 0;
      FailEach([&] {
        bool done = false;
        {
          DataSetCoder coder(dictionary_.get());
          done = keeping ? coder.SaveKeeping(place_.c_str(), mode, *whole_.object)
                         : SaveClone(coder, place_, mode, *whole_.object);
        }
        saves += done ? 1 : 0;
      });
      // Before the first failure and after the last one at least.
      EXPECT_GE(saves, 2u);
      // The same once more, looking at the place after every run: reading it takes memory of its own.
      for (std::uint64_t nth = 1;; ++nth) {
        WriteBytes(place_, old);
        bool done = false;
        bool happened = false;
        {
          const AllocationFailure failure(nth);
          DataSetCoder coder(dictionary_.get());
          done = keeping ? coder.SaveKeeping(place_.c_str(), mode, *whole_.object)
                         : SaveClone(coder, place_, mode, *whole_.object);
          happened = failure.Happened();
        }
        ASSERT_EQ(ReadBytes(place_), done ? saved : old) << nth;
        ASSERT_EQ(folder_.Listing(), "saved.dcm") << nth;
        if (!happened) break;
      }
      EXPECT_EQ(
          Difference(*whole_.object, *LoadBlock(bytes_, {.dictionary = dictionary_.get()}).object),
          "");
    }
  }
}

TEST_P(FailingResources, LoadingAndSavingWithoutMemoryLeavesTheOldOrTheNewFile) {
  for (std::uint64_t nth = 1;; ++nth) {
    bool done = false;
    bool happened = false;
    {
      const AllocationFailure failure(nth);
      DataSetCoder coder(dictionary_.get());
      const auto object = coder.LoadFile(source_.c_str(), true, true);
      done = object != nullptr && coder.SaveFile(place_.c_str(), 3, *object);
      happened = failure.Happened();
    }
    const std::string listing = folder_.Listing();
    ASSERT_EQ(listing, done ? "saved.dcm" : "") << nth;
    if (done) {
      EXPECT_EQ(LoadPath(place_, {.dictionary = dictionary_.get()}).stop.why, Why::kNone);
      std::filesystem::remove(place_);
    }
    if (!happened) break;
  }
}

// O02

constexpr int kErrors[] = {EIO, ENOSPC, EINTR, EMFILE, EACCES};

TEST_P(FailingResources, LoadingWithAnyFileCallFailingGivesAllOrWords) {
  PlainFileBuffer plain;
  for (FileBuffer* stream : {static_cast<FileBuffer*>(nullptr), static_cast<FileBuffer*>(&plain)}) {
    const LoadHow how{.dictionary = dictionary_.get(), .buffer = stream};
    int calls = 0;
    {
      FileFailure watch;
      LoadPath(source_, how);
      plain.Close();
      calls = watch.Calls();
    }
    for (int nth = 1; nth <= calls; ++nth) {
      for (const int error : kErrors) {
        Loaded loaded;
        {
          FileFailure failure;
          failure.FailCall(nth, error);
          loaded = LoadPath(source_, how);
          plain.Close();
        }
        ExpectWholeOrWords(loaded);
        if (error == EINTR) {
          EXPECT_NE(loaded.object, nullptr);
        }
      }
    }
  }
}

TEST_P(FailingResources, LoadingInShortAndInterruptedReadsGivesAll) {
  for (const std::size_t most : std::initializer_list<std::size_t>{1, 3, 127, 4096}) {
    FileFailure failure;
    failure.LimitCount(FileCall::kRead, most);
    failure.InterruptEveryCall();
    const Loaded loaded = LoadPath(source_, {.dictionary = dictionary_.get()});
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(Difference(*loaded.object, *whole_.object), "");
  }
}

TEST_P(FailingResources, SavingWithAnyFileCallFailingLeavesTheOldOrTheNewFile) {
  DataSetCoder coder(dictionary_.get());
  ASSERT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
  const Bytes saved = ReadBytes(place_);
  const Bytes old = Pattern(1000);
  for (const bool replaces : {true, false}) {
    for (const int error : kErrors) {
      for (int nth = 1;; ++nth) {
        std::filesystem::remove(place_);
        if (replaces) WriteBytes(place_, old);
        bool done = false;
        int calls = 0;
        {
          FileFailure failure;
          failure.FailCall(nth, error);
          done = coder.SaveKeeping(place_.c_str(), 3, *whole_.object);
          calls = failure.Calls();
        }
        const std::string there = done || replaces ? "saved.dcm" : "";
        ASSERT_EQ(folder_.Listing(), there) << "call " << nth << " error " << error;
        if (!there.empty()) {
          ASSERT_EQ(ReadBytes(place_), done ? saved : old) << "call " << nth << " error " << error;
        }
        if (error == EINTR) {
          EXPECT_TRUE(done);
        }
        if (nth > calls) break;
      }
    }
  }
}

TEST_P(FailingResources, SavingInShortAndInterruptedWritesIsTheSameFile) {
  DataSetCoder coder(dictionary_.get());
  ASSERT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
  const Bytes saved = ReadBytes(place_);
  for (const std::size_t most : std::initializer_list<std::size_t>{97, 4096}) {
    FileFailure failure;
    failure.LimitCount(FileCall::kWrite, most);
    failure.InterruptEveryCall();
    ASSERT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
    EXPECT_EQ(ReadBytes(place_), saved);
  }
}

// O03

TEST_P(FailingResources, AFullDiskAtAnyStepLeavesTheOldFile) {
  DataSetCoder coder(dictionary_.get());
  ASSERT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
  const Bytes saved = ReadBytes(place_);
  const Bytes old = Pattern(1000);
  WriteBytes(place_, old);
  for (std::uint64_t room = 0; room < saved.size(); room += 4096) {
    FileFailure failure;
    failure.FillDiskAfter(room);
    EXPECT_FALSE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
    EXPECT_EQ(ErrorOf(coder), SystemErrorText(ENOSPC));
    EXPECT_EQ(ReadBytes(place_), old);
    EXPECT_EQ(folder_.Listing(), "saved.dcm");
  }
  FileFailure failure;
  failure.FillDiskAfter(saved.size());
  EXPECT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
  EXPECT_EQ(ReadBytes(place_), saved);
}

// O04

TEST_P(FailingResources, AProcessKilledAtAnyFileCallLeavesTheOldOrTheNewFile) {
  DataSetCoder coder(dictionary_.get());
  ASSERT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
  const Bytes saved = ReadBytes(place_);
  const Bytes old = Pattern(1000);
  for (int nth = 1;; ++nth) {
    WriteBytes(place_, old);
    const int result = RunInChild([&] {
      FileFailure failure;
      failure.KillAtCall(nth);
      return coder.SaveKeeping(place_.c_str(), 3, *whole_.object) ? 0 : 1;
    });
    const Bytes left = ReadBytes(place_);
    EXPECT_TRUE(left == old || left == saved) << nth;
    // The next save takes away what the killed one left.
    ASSERT_TRUE(coder.SaveKeeping(place_.c_str(), 3, *whole_.object));
    EXPECT_EQ(folder_.Listing(), "saved.dcm") << nth;
    if (result == 0) break;
    ASSERT_EQ(result, -SIGKILL);
  }
}

INSTANTIATE_TEST_SUITE_P(Encodings, FailingResourcesOnce, ::testing::Values(kExplicit));
INSTANTIATE_TEST_SUITE_P(Encodings, FailingResources, ::testing::ValuesIn(kAllEncodings),
                         [](const auto& tested) { return NameOf(tested.param); });

}  // namespace
}  // namespace tessaret::test
