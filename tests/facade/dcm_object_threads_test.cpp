// Threads that each work with objects of their own. They share the class table, the module's dictionaries, the codecs and the count
// of living objects.
#include <array>
#include <string>

#include <gtest/gtest.h>

#include "facade/dcm_object_helpers.h"
#include "support/all_threads.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr int kRounds = 60;
constexpr const char* kImplicitUid = "1.2.840.10008.1.2";

class ObjectsInThreads : public testing::Test {
 protected:
  ObjectsInThreads() {
    for (const Encoding encoding : kAllEncodings) {
      DataSetBuilder item(encoding);
      item.Element(0x0008, 0x1155, "UI", "1.23");
      DataSetBuilder sample(encoding);
      sample.Element(0x0010, 0x0010, "PN", "Doe^John").Number(0x0028, 0x0100, 16);
      sample.Sequence(0x0040, 0x0275, Lengths::kUndefined, Lengths::kUndefined, {item});
      WriteBytes(PathOf(encoding), FileOf(encoding, sample));
    }
  }
  std::string PathOf(Encoding encoding) const {
    return folder_.File(std::string(NameOf(encoding)) + ".dcm");
  }

  TempFolder folder_;
};

TEST_F(ObjectsInThreads, CreateLoadChangeSaveAndReleaseThem) {
  OnAllThreads([&](int number) {
    const std::string own = folder_.File("own" + std::to_string(number) + ".dcm");
    for (int round = 0; round < kRounds; ++round) {
      const std::string id = std::to_string(number * kRounds + round);
      const Ref<IDCMObject> object = NewObject();
      ASSERT_EQ(object->Load(PathOf(kAllEncodings[(number + round) % 3]), true), kOk);
      ASSERT_EQ(Text(object, 0x0010, 0x0010), "Doe^John");
      ASSERT_EQ(Get(object, 0x0028, 0x0100).AsLong(), 16);
      const Ref<IDCMObject> item = ItemOf(object, 0x0040, 0x0275, 0);
      ASSERT_EQ(Put(item, 0x0008, 0x1155, "1.2." + id), kOk);
      ASSERT_EQ(Put(object, 0x0010, 0x0020, id), kOk);
      VariantBool done;
      ASSERT_EQ(object->Translate(String(kImplicitUid), &done), kOk);
      ASSERT_TRUE(done.IsTrue());
      ASSERT_EQ(object->Save(own), kOk) << LastError().text;
      const Ref<IDCMObject> again = NewObject();
      ASSERT_EQ(again->Load(own, false), kOk) << LastError().text;
      ASSERT_EQ(Text(again, 0x0010, 0x0020), id);
      ASSERT_EQ(Text(ItemOf(again, 0x0040, 0x0275, 0), 0x0008, 0x1155), "1.2." + id);
    }
  });
}

TEST_F(ObjectsInThreads, HearOfTheirOwnFailuresOnly) {
  OnAllThreads([&](int number) {
    const Ref<IDCMObject> object = NewObject();
    for (int round = 0; round < kRounds; ++round) {
      const std::string missing = folder_.File("missing" + std::to_string(number));
      if ((number + round) % 2 == 0) {
        ASSERT_TRUE(Failed(object->Load(missing, true)));
        const std::string words = LastError().text;
        ASSERT_NE(words.find("No such file or directory"), std::string::npos) << words;
      } else {
        ASSERT_EQ(object->Load(PathOf(Encoding::kExplicitLittle), true), kOk);
      }
    }
  });
}

TEST_F(ObjectsInThreads, KeepTheLibraryLoadedUntilTheLastIsReleased) {
  ASSERT_TRUE(CanUnload());
  OnAllThreads([&](int) {
    for (int round = 0; round < 200; ++round) {
      const Ref<IDCMObject> object = NewObject();
      ASSERT_FALSE(CanUnload());
    }
  });
  EXPECT_TRUE(CanUnload());
}

TEST_F(ObjectsInThreads, AreReleasedByAnotherThreadThanMadeThem) {
  std::array<Ref<IDCMObject>, kThreads> objects;
  for (std::size_t round = 0; round < 20; ++round) {
    OnAllThreads([&](int number) {
      Ref<IDCMObject>& mine = objects[(static_cast<std::size_t>(number) + round) % kThreads];
      if (mine) {
        ASSERT_EQ(Text(ItemOf(mine, 0x0040, 0x0275, 0), 0x0008, 0x1155), "1.23");
      }
      mine = NewObject();
      ASSERT_EQ(mine->Load(PathOf(Encoding::kExplicitBig), true), kOk);
    });
  }
}

}  // namespace
}  // namespace tessaret::test
