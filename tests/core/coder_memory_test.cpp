// What loads say when there is no memory for the object itself, and what writers leave.
#include <cerrno>
#include <set>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/object_maker.h"
#include "platform/file_calls.h"
#include "support/allocation_failure.h"
#include "support/memory_file.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

TEST(CoderMemory, EachStepOfALoadHasItsWords) {
  const MemoryFile file(
      FileOf(Encoding::kExplicitLittle,
             DataSetBuilder(Encoding::kExplicitLittle).Element(0x0010, 0x0010, "PN", "A ")));
  const std::string path = file.Path();
  std::set<std::string> words;
  FailEveryAllocation([&] {
    DataSetCoder coder;
    if (coder.LoadFile(path.c_str(), true, true) == nullptr) words.insert(coder.ErrorText());
  });
  // No stream, no object, no element.
  EXPECT_EQ(words.count(SystemErrorText(ENOMEM)), 1u);
  EXPECT_EQ(words.count("Error creating DICOM OBJECT"), 1u);
  EXPECT_EQ(words.count("Error parsing DICOM Object"), 1u);
}

TEST(CoderMemory, AnObjectWhoseWritingFindsNoMemoryKeepsItsElements) {
  // A short item, and behind it more than one portion of a stream.
  std::set<bool> itemsLeftEmpty;
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    const std::unique_ptr<DICOMObject> object(
        NewObject({NewSequence(kSequenceTag, {NewObject({NewVR(kTextTag, "short")})}),
                   NewVR(MakeTagKey(0x7001, 0x0010), Pattern(100000))}));
    CollectingBuffer buffer;
    bool thrown = false;
    {
      const AllocationFailure failure(nth);
      try {
        EXPECT_TRUE(DataSetCoder().ExplicitLittleOut(*object, buffer));
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      happened = failure.Happened();
    }
    EXPECT_EQ(thrown, happened) << nth;
    ASSERT_EQ(CountOf(*object), thrown ? 2u : 0u) << nth;
    if (thrown) itemsLeftEmpty.insert(InnerOf(*object)->IsEmpty());
  }
  // Before the item was written, and behind it.
  EXPECT_EQ(itemsLeftEmpty, (std::set<bool>{false, true}));
}

TEST(CoderMemory, ASaveThatFindsNoMemoryClosesTheStreamThatItWasGiven) {
  const TempFolder folder;
  const std::string path = folder.File("file.dcm");
  std::set<std::string> words;
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    const auto object = NewNest(3);
    DataSetCoder coder;
    FileBuffer buffer;
    bool saved = false;
    {
      const AllocationFailure failure(nth);
      saved = coder.SaveFile(path.c_str(), 3, *object, &buffer);
      happened = failure.Happened();
    }
    EXPECT_EQ(buffer.Stream, nullptr) << nth;
    EXPECT_EQ(buffer.OutSize, 0) << nth;
    EXPECT_EQ(folder.Listing(), saved ? "file.dcm" : "") << nth;
    EXPECT_TRUE(saved || happened);
    if (coder.ErrorText() != nullptr) words.insert(coder.ErrorText());
  }
  EXPECT_EQ(words.count("Not enough memory to save the object"), 1u);
}

}  // namespace
}  // namespace tessaret::test
