// What loads say when there is no memory for the object itself, and what saves leave.
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
