// What loads say when there is no memory for the object itself.
#include <cerrno>
#include <set>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "platform/file_calls.h"
#include "support/allocation_failure.h"
#include "support/memory_file.h"

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

}  // namespace
}  // namespace tessaret::test
