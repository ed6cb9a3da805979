// F33: eight threads, each with objects of its own or all with one that nobody changes.
#include <gtest/gtest.h>

#include "fault_helpers.h"
#include "support/all_threads.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

class FileThreads : public ::testing::Test {
 protected:
  const std::unique_ptr<DcmDictionary> dictionary_ =
      DictionaryOf(std::string(RandomDataSetDictionary()));
  TempFolder folder_;
};

TEST_F(FileThreads, ThreadsLoadAndSaveFilesOfTheirOwnWithOneDictionary) {
  OnAllThreads([&](int number) {
    const std::string path = folder_.File("own" + std::to_string(number) + ".dcm");
    for (std::uint32_t seed = 0; seed < 10; ++seed) {
      const Loaded loaded = LoadFileOf(SeedFile(seed), {.dictionary = dictionary_.get()});
      ASSERT_NE(loaded.object, nullptr);
      DataSetCoder coder(dictionary_.get());
      const std::unique_ptr<DICOMObject> clone(loaded.object->Clone(false));
      ASSERT_TRUE(coder.SaveFile(path.c_str(), 3, *clone));
      const Loaded again = LoadPath(path, {.dictionary = dictionary_.get()});
      ASSERT_NE(again.object, nullptr);
      EXPECT_EQ(CountOf(*again.object) >= CountOf(*loaded.object), true);
    }
  });
}

TEST_F(FileThreads, ThreadsLoadOneFile) {
  const std::string path = folder_.File("one.dcm");
  WriteBytes(path, SeedFile(1));
  const Loaded first = LoadPath(path);
  OnAllThreads([&](int number) {
    for (int time = 0; time < 20; ++time) {
      PlainFileBuffer plain;
      const Loaded loaded = LoadPath(path, {.buffer = number % 2 == 0 ? &plain : nullptr});
      ASSERT_NE(loaded.object, nullptr);
      EXPECT_EQ(Difference(*loaded.object, *first.object), "");
    }
  });
}

TEST_F(FileThreads, ThreadsReadOneObjectThatNobodyChanges) {
  const Loaded loaded = LoadBlock(SeedFile(2), {.dictionary = dictionary_.get()});
  const DICOMObject& object = *loaded.object;
  OnAllThreads([&](int) {
    for (int time = 0; time < 20; ++time) {
      const std::unique_ptr<DICOMObject> deep(object.Clone(true));
      EXPECT_EQ(CountOf(*deep), CountOf(object));
      const std::unique_ptr<DICOMObject> shallow(object.Clone(false));
      EXPECT_EQ(CountOf(*shallow), CountOf(object));
      EXPECT_EQ(Difference(object, object), "");
    }
  });
}

TEST_F(FileThreads, ThreadsSaveOneObjectToPlacesOfTheirOwn) {
  const Loaded loaded =
      LoadBlock(FileOf(Encoding::kExplicitLittle, PatientAnd(Encoding::kExplicitLittle, {})));
  OnAllThreads([&](int number) {
    const std::string path = folder_.File("own" + std::to_string(number) + ".dcm");
    for (int time = 0; time < 5; ++time) {
      DataSetCoder coder;
      ASSERT_TRUE(coder.SaveKeeping(path.c_str(), 3, *loaded.object));
      EXPECT_TRUE(HasPatient(*LoadPath(path).object));
    }
  });
}

TEST_F(FileThreads, ThreadsSaveToOnePlaceAndOneOfThemWinsWhole) {
  const std::string path = folder_.File("one.dcm");
  OnAllThreads([&](int number) {
    for (int time = 0; time < 5; ++time) {
      DICOMObject object;
      object.Push(NewElement(0x0010, 0x0020, type_code::LO,
                             std::string(60'000, static_cast<char>('A' + number))));
      EXPECT_TRUE(DataSetCoder().SaveFile(path.c_str(), 3, object));
    }
  });
  const Loaded winner = LoadPath(path, {.strict = true});
  ASSERT_NE(winner.object, nullptr);
  const std::string value = ValueText(At(*winner.object, 0x0010, 0x0020));
  EXPECT_EQ(value, std::string(60'000, value[0]));
  EXPECT_EQ(folder_.Listing(), "one.dcm");
}

}  // namespace
}  // namespace tessaret::test
