// Files of an object, and the native transfer syntaxes.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "facade/dcm_object_helpers.h"
#include "support/allocation_failure.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr std::string_view kImplicit = "1.2.840.10008.1.2";
constexpr std::string_view kExplicit = "1.2.840.10008.1.2.1";
constexpr std::string_view kMpeg = "1.2.840.10008.1.2.4.100";

/// An image of 2 x 1 pixels of 16 bits, 0x0102 and 0x0304, with an element behind them.
DataSetBuilder ImageIn(Encoding encoding) {
  DataSetBuilder image(encoding);
  image.Element(0x0008, 0x0016, "UI", Evened("1.2.840.10008.5.1.4.1.1.7"))
      .Element(0x0010, 0x0010, "PN", "Doe^John")
      .Head(0x0018, 0x9073, "FD", 8);
  // 1.0 as a number of 8 bytes.
  const bool big = encoding == Encoding::kExplicitBig;
  for (int at = 0; at < 8; ++at) {
    const int byte = big ? at : 7 - at;
    image.U8(byte == 0 ? 0x3F : byte == 1 ? 0xF0 : 0);
  }
  image.Number(0x0028, 0x0010, 1).Number(0x0028, 0x0011, 2).Number(0x0028, 0x0100, 16);
  image.Head(0x7FE0, 0x0010, "OW", 4).U16(0x0102).U16(0x0304);
  image.Element(0xFFFC, 0xFFFC, "OB", Bytes{0, 0});
  return image;
}

class ObjectFiles : public testing::Test {
 protected:
  std::string FileWith(const Bytes& bytes, const std::string& name = "in.dcm") {
    WriteBytes(folder_.File(name), bytes);
    return folder_.File(name);
  }
  /// What another reader of the library sees in the file at `path`.
  Ref<IDCMObject> Read(const std::string& path) {
    auto object = NewObject();
    EXPECT_EQ(object->Load(path, true), kOk) << LastError().text;
    return object;
  }

  TempFolder folder_;
  Ref<IDCMObject> object_ = NewObject();
};

TEST_F(ObjectFiles, AreLoadedInEveryNativeEncodingWithTheSameNumbers) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    ASSERT_EQ(object_->Load(FileWith(FileOf(encoding, ImageIn(encoding))), true), kOk);
    EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
    EXPECT_EQ(Get(object_, 0x0028, 0x0011).AsLong(), 2);
    EXPECT_EQ(Get(object_, 0x0018, 0x9073).AsDouble(), 1.0);
    EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010), (Bytes{0x02, 0x01, 0x04, 0x03}));
    EXPECT_EQ(Text(object_, 0x0002, 0x0010), SyntaxUidOf(encoding));
  }
}

TEST_F(ObjectFiles, WithoutAMarkAreLoadedFromTheirFirstByte) {
  for (const Encoding encoding : {Encoding::kImplicitLittle, Encoding::kExplicitLittle}) {
    SCOPED_TRACE(NameOf(encoding));
    ASSERT_EQ(object_->Load(FileWith(ImageIn(encoding)), true), kOk) << LastError().text;
    EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
    EXPECT_EQ(Get(object_, 0x0028, 0x0011).AsLong(), 2);
    EXPECT_FALSE(Describe(object_, 0x0002, 0x0010).found.IsTrue());
  }
}

TEST_F(ObjectFiles, OfBigEndianHaveTheirNumbersAlsoWhereTheNameOfTheSyntaxIsNotKept) {
  // Without its length the meta header ends with its first element, which takes effect all the same.
  Bytes file = Preamble();
  DataSetBuilder meta(Encoding::kExplicitLittle);
  meta.Element(0x0002, 0x0010, "UI", Evened(std::string(SyntaxUidOf(Encoding::kExplicitBig))));
  const Bytes dataSet = ImageIn(Encoding::kExplicitBig);
  file.insert(file.end(), meta.Done().begin(), meta.Done().end());
  file.insert(file.end(), dataSet.begin(), dataSet.end());
  ASSERT_EQ(object_->Load(FileWith(file), true), kOk) << LastError().text;
  EXPECT_FALSE(Describe(object_, 0x0002, 0x0010).found.IsTrue());
  EXPECT_EQ(Get(object_, 0x0028, 0x0011).AsLong(), 2);
  EXPECT_EQ(Get(object_, 0x0018, 0x9073).AsDouble(), 1.0);
  EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010), (Bytes{0x02, 0x01, 0x04, 0x03}));
}

TEST_F(ObjectFiles, AreSavedInTheirOwnEncoding) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes dataSet = ImageIn(encoding);
    ASSERT_EQ(object_->Load(FileWith(FileOf(encoding, dataSet)), true), kOk);
    ASSERT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
    Bytes saved = ReadBytes(folder_.File("out.dcm"));
    ASSERT_GT(saved.size(), dataSet.size());
    EXPECT_EQ(Bytes(saved.end() - static_cast<std::ptrdiff_t>(dataSet.size()), saved.end()),
              dataSet);
    // The object is as it was.
    EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010), (Bytes{0x02, 0x01, 0x04, 0x03}));
  }
}

TEST_F(ObjectFiles, ChangeTheirEncodingByName) {
  for (const Encoding from : kAllEncodings) {
    for (const Encoding to : kAllEncodings) {
      SCOPED_TRACE(std::string(NameOf(from)) + " to " + NameOf(to));
      ASSERT_EQ(object_->Load(FileWith(FileOf(from, ImageIn(from))), true), kOk);
      VariantBool done;
      ASSERT_EQ(object_->Translate(String(SyntaxUidOf(to)), &done), kOk);
      EXPECT_EQ(done.value, -1);
      // Implicit little endian is what an object without a name is saved in.
      if (to == Encoding::kImplicitLittle) {
        EXPECT_FALSE(Describe(object_, 0x0002, 0x0010).found.IsTrue());
      } else {
        EXPECT_EQ(Text(object_, 0x0002, 0x0010), SyntaxUidOf(to));
      }
      ASSERT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
      const Bytes dataSet = ImageIn(to);
      const Bytes saved = ReadBytes(folder_.File("out.dcm"));
      EXPECT_EQ(Bytes(saved.end() - static_cast<std::ptrdiff_t>(dataSet.size()), saved.end()),
                dataSet);
    }
  }
}

TEST_F(ObjectFiles, WithoutPixelsEndAtThem) {
  const std::string path =
      FileWith(FileOf(Encoding::kExplicitLittle, ImageIn(Encoding::kExplicitLittle)));
  // Only -1 asks for pixels.
  for (const int asked : {0, 1, 2, -2}) {
    ASSERT_EQ(object_->Load(path, VariantBool::Of(static_cast<std::int16_t>(asked))), kOk);
    EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
    EXPECT_TRUE(Describe(object_, 0x7FE0, 0x0010).found.IsTrue());
    EXPECT_TRUE(Get(object_, 0x7FE0, 0x0010).IsEmpty());
    EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010), Bytes());
    EXPECT_FALSE(Describe(object_, 0xFFFC, 0xFFFC).found.IsTrue());
  }
  // It would be damaged as a file.
  EXPECT_FAILS_WITH(object_->Save(folder_.File("out.dcm")),
                    "VR(7FE0,0010) has a length but no value");
  EXPECT_FALSE(std::filesystem::exists(folder_.File("out.dcm")));
}

TEST_F(ObjectFiles, ThatCannotBeReadLeaveNothing) {
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  EXPECT_FAILS_WITH(object_->Load(folder_.File("missing.dcm"), true), "No such file or directory");
  EXPECT_EQ(CoreOf(object_), nullptr);
  // It owns whatever comes here.
  EXPECT_EQ(ManagerOf(object_)->SetOwner(), kFalse);
  // A load that works makes it whole again, and its owner.
  ASSERT_EQ(
      object_->Load(FileWith(FileOf(Encoding::kExplicitLittle, ImageIn(Encoding::kExplicitLittle))),
                    true),
      kOk);
  EXPECT_EQ(ManagerOf(object_)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(object_)->SetOwner(), kOk);
}

TEST_F(ObjectFiles, HaveAPathInAnyLanguage) {
  const std::string path = folder_.File("Müller 写真.dcm");
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  ASSERT_EQ(object_->Save(path), kOk);
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(Text(Read(path), 0x0010, 0x0020), "id");
}

TEST_F(ObjectFiles, WithoutANameAreRefused) {
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  for (const String& name : {String(), String("")}) {
    EXPECT_TRUE(Failed(object_->Save(name)));
    EXPECT_FALSE(LastError().text.empty());
    EXPECT_TRUE(Failed(NewObject()->Load(name, true)));
    EXPECT_FALSE(LastError().text.empty());
  }
  EXPECT_EQ(Text(object_, 0x0010, 0x0020), "id");
}

TEST_F(ObjectFiles, ANameWithANulInItIsNotCutThere) {
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  std::string path = folder_.File("a.dcm");
  const std::string cut = path;
  path += std::string("\0.txt", 5);
  EXPECT_FAILS_WITH(object_->Save(String(std::string_view(path))), "Invalid argument");
  EXPECT_FALSE(std::filesystem::exists(cut));
  ASSERT_EQ(object_->Save(cut), kOk);
  EXPECT_FAILS_WITH(object_->Load(String(std::string_view(path)), true), "Invalid argument");
  EXPECT_EQ(CoreOf(object_), nullptr);
}

TEST_F(ObjectFiles, ThatCannotBeWrittenSayWhy) {
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  EXPECT_FAILS_WITH(object_->Save(folder_.File("no/such/folder.dcm")), "No such file or directory");
  EXPECT_FAILS_WITH(object_->Save(folder_.Path().string()), "Is a directory");
}

TEST_F(ObjectFiles, KeepWhatWasThereWhereAnObjectCannotBeEncoded) {
  const std::string path = FileWith(BytesOf("precious"));
  ASSERT_EQ(Put(object_, 0x0002, 0x0010, "1.2.3.4.5"), kOk);
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  EXPECT_TRUE(Failed(object_->Save(path)));
  EXPECT_FALSE(LastError().text.empty());
  EXPECT_EQ(ReadBytes(path), BytesOf("precious"));
}

TEST_F(ObjectFiles, AreImplicitWhereNoSyntaxIsNamed) {
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  ASSERT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
  EXPECT_EQ(Text(Read(folder_.File("out.dcm")), 0x0002, 0x0010), kImplicit);
  const Bytes saved = ReadBytes(folder_.File("out.dcm"));
  const Bytes dataSet =
      DataSetBuilder(Encoding::kImplicitLittle).Element(0x0010, 0x0020, "LO", "id");
  EXPECT_EQ(Bytes(saved.end() - static_cast<std::ptrdiff_t>(dataSet.size()), saved.end()), dataSet);
}

TEST_F(ObjectFiles, ThatEndEarlyAreThereAsFarAsTheyGo) {
  Bytes file = FileOf(Encoding::kExplicitLittle, ImageIn(Encoding::kExplicitLittle));
  file.resize(file.size() - 12);
  ASSERT_EQ(object_->Load(FileWith(file), true), kOk);
  EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
}

TEST_F(ObjectFiles, InASyntaxWithoutACodecStayCompressed) {
  DataSetBuilder image(Encoding::kExplicitLittle);
  image.Element(0x0010, 0x0010, "PN", "Doe^John").Fragments({Bytes(), Bytes{1, 2, 3, 4}});
  Bytes file = Preamble();
  const Bytes meta = MetaGroup(kMpeg);
  file.insert(file.end(), meta.begin(), meta.end());
  file.insert(file.end(), image.Done().begin(), image.Done().end());
  const std::string path = FileWith(file);
  EXPECT_FAILS_WITH(object_->Load(path, true), "Unsupported Encapsulated Transfer Syntax");
  EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
  EXPECT_EQ(CountOf(object_, 0x7FE0, 0x0010), 2);
  EXPECT_EQ(Raw(ItemOf(object_, 0x7FE0, 0x0010, 1), 0xFFFE, 0xE000), (Bytes{1, 2, 3, 4}));
  // It is saved as it came.
  ASSERT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
  const Bytes saved = ReadBytes(folder_.File("out.dcm"));
  const Bytes& dataSet = image.Done();
  EXPECT_EQ(Bytes(saved.end() - static_cast<std::ptrdiff_t>(dataSet.size()), saved.end()), dataSet);
  VariantBool done = VariantBool::Of(77);
  EXPECT_TRUE(Failed(object_->Translate(String(kExplicit), &done)));
  EXPECT_FALSE(LastError().text.empty());
  EXPECT_EQ(done.value, 77);
  // Without pixels there is nothing to be turned.
  EXPECT_EQ(object_->Load(path, false), kOk);
}

TEST_F(ObjectFiles, WithoutASyntaxAreNativeToTranslate) {
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  VariantBool done = VariantBool::Of(77);
  EXPECT_EQ(object_->Translate(String(), &done), kOk);
  EXPECT_EQ(done.value, 77);
  EXPECT_EQ(object_->Translate(String("1.2.3.4"), &done), kOk);
  EXPECT_EQ(done.value, 0);
  done = true;
  EXPECT_EQ(object_->Translate(String(""), &done), kOk);
  EXPECT_EQ(done.value, 0);
}

TEST_F(ObjectFiles, OfBigEndianAreStillThatWhereASyntaxIsNotServed) {
  const Bytes dataSet = ImageIn(Encoding::kExplicitBig);
  ASSERT_EQ(object_->Load(FileWith(FileOf(Encoding::kExplicitBig, dataSet)), true), kOk);
  VariantBool done = true;
  EXPECT_EQ(object_->Translate(String("1.2.3.4"), &done), kOk);
  EXPECT_EQ(done.value, 0);
  EXPECT_EQ(Text(object_, 0x0002, 0x0010), SyntaxUidOf(Encoding::kExplicitBig));
  ASSERT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
  const Bytes saved = ReadBytes(folder_.File("out.dcm"));
  EXPECT_EQ(Bytes(saved.end() - static_cast<std::ptrdiff_t>(dataSet.size()), saved.end()), dataSet);
}

TEST_F(ObjectFiles, OfBigEndianHaveNumbersRoundAlsoWhereTheTypeIsTheDictionarys) {
  const auto put = [this](std::int32_t group, std::int32_t element, const char* type) {
    const Variant bytes = VariantArray::OfBytes(Bytes{1, 2});
    ASSERT_EQ(object_->PutVRData(group, element, type, bytes), kOk);
  };
  put(0x0009, 0x1001, "UN");
  put(0x0028, 0x0106, "UN");
  put(0x0028, 0x0107, "");
  put(0x0028, 0x0110, "US");
  VariantBool done;
  ASSERT_EQ(object_->Translate(SyntaxUidOf(Encoding::kExplicitBig), &done), kOk);
  ASSERT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
  DataSetBuilder dataSet(Encoding::kExplicitBig);
  dataSet.Element(0x0009, 0x1001, "UN", Bytes{1, 2})
      .Number(0x0028, 0x0106, 0x0201)
      .Number(0x0028, 0x0107, 0x0201)
      .Number(0x0028, 0x0110, 0x0201);
  const Bytes saved = ReadBytes(folder_.File("out.dcm"));
  const Bytes& expected = dataSet.Done();
  EXPECT_EQ(Bytes(saved.end() - static_cast<std::ptrdiff_t>(expected.size()), saved.end()),
            expected);
  // The object itself stays.
  EXPECT_EQ(Raw(object_, 0x0028, 0x0106), (Bytes{1, 2}));
  EXPECT_EQ(Describe(object_, 0x0028, 0x0106).type, "UN");
}

TEST_F(ObjectFiles, TakeASyntaxWithTheNulThatPadsItInAFile) {
  ASSERT_EQ(Put(object_, 0x0002, 0x0010, std::string(SyntaxUidOf(Encoding::kExplicitBig))), kOk);
  ASSERT_EQ(Put(object_, 0x0010, 0x0020, "id"), kOk);
  VariantBool done;
  constexpr std::string_view kPadded("1.2.840.10008.1.2.1\0", 20);
  ASSERT_EQ(object_->Translate(String(kPadded), &done), kOk);
  EXPECT_TRUE(done.IsTrue());
  EXPECT_EQ(Text(object_, 0x0002, 0x0010), kExplicit);
}

TEST_F(ObjectFiles, AnythingUnforeseenOnTheWayInIsNoDicomFile) {
  const String path =
      FileWith(FileOf(Encoding::kExplicitLittle, ImageIn(Encoding::kExplicitLittle)));
  ASSERT_EQ(object_->Load(path, true), kOk);
  int failures = 0;
  for (std::uint64_t allocation = 1; allocation < 200; ++allocation) {
    Status status = kOk;
    {
      const AllocationFailure failure(allocation);
      status = object_->Load(path, true);
    }
    if (Succeeded(status)) continue;
    EXPECT_EQ(status, kException) << allocation;
    EXPECT_FALSE(LastError().text.empty());
    // Where the reader itself ran out of memory the words are its own.
    if (LastError().text != "Not a DICOM FILE") continue;
    ++failures;
    EXPECT_EQ(LastError().source, "Tessaret.DCMObject");
    EXPECT_EQ(CoreOf(object_), nullptr) << allocation;
  }
  // The path and what watches the new data set are made outside the reader.
  EXPECT_GT(failures, 1);
  EXPECT_EQ(object_->Load(path, true), kOk);
}

TEST_F(ObjectFiles, DirectoriesAndPipesAreNoFiles) {
  EXPECT_TRUE(Failed(object_->Load(folder_.Path().string(), true)));
  EXPECT_FALSE(LastError().text.empty());
  EXPECT_TRUE(Failed(object_->Load("/dev/null", true)) || CoreOf(object_)->IsEmpty());
}

}  // namespace
}  // namespace tessaret::test
