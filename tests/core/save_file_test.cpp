// Saving files: the three modes byte for byte, the switch of syntax behind the meta group, and what stays when saving fails.
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "platform/file_calls.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

/// A small instance; with a syntax if that is not empty.
std::unique_ptr<DICOMObject> Instance(std::string_view syntax = {}) {
  auto object = std::make_unique<DICOMObject>();
  if (!syntax.empty()) object->Push(NewElement(0x0002, 0x0010, type_code::UI, Evened(syntax)));
  object->Push(NewElement(0x0008, 0x0018, type_code::UI, "1.2.3."));
  object->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  return object;
}

/// The same as a data set.
Bytes InstanceIn(Encoding encoding) {
  return DataSetBuilder(encoding)
      .Element(0x0008, 0x0018, "UI", "1.2.3.")
      .Element(0x0010, 0x0010, "PN", "A ");
}

/// The meta group of that instance as it is to be written.
Bytes MetaNaming(std::string_view syntax) {
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1})
      .Element(0x0002, 0x0003, "UI", "1.2.3.")
      .Element(0x0002, 0x0010, "UI", Evened(syntax))
      .Element(0x0002, 0x0012, "UI", "1.2.826.0.1.5518204.7.460.20000624")
      .Element(0x0002, 0x0013, "SH", "QX/W32/1.6.9")
      .Element(0x0002, 0x0016, "AE", std::string(16, ' '));
  return MetaGroupOf(elements, static_cast<std::uint32_t>(elements.Size()));
}

class SaveFile : public ::testing::Test {
 protected:
  /// Saves `object` and answers what is in the file.
  Bytes Save(std::int32_t mode, DICOMObject& object, FileBuffer* buffer = nullptr) {
    DataSetCoder coder;
    EXPECT_TRUE(coder.SaveFile(Path().c_str(), mode, object, buffer));
    EXPECT_EQ(coder.ErrorText(), nullptr);
    EXPECT_EQ(folder_.Listing(), "file.dcm");
    return ReadBytes(Path());
  }
  std::string Path() const { return folder_.File("file.dcm"); }

  TempFolder folder_;
};

TEST_F(SaveFile, ModeOneIsImplicitLittleEndianAlone) {
  const auto object = Instance(SyntaxUidOf(kBig));
  EXPECT_EQ(Save(1, *object), InstanceIn(kImplicit));
  EXPECT_TRUE(object->IsEmpty());
}

TEST_F(SaveFile, ModeTwoIsThePreambleAndImplicitLittleEndianWithoutMetaGroup) {
  EXPECT_EQ(Save(2, *Instance(SyntaxUidOf(kBig))), Joined({Preamble(), InstanceIn(kImplicit)}));
}

TEST_F(SaveFile, ModeThreeIsAFileInTheSyntaxThatTheObjectNames) {
  for (const Encoding encoding : kAllEncodings) {
    const std::string_view syntax = SyntaxUidOf(encoding);
    EXPECT_EQ(Save(3, *Instance(syntax)),
              Joined({Preamble(), MetaNaming(syntax), InstanceIn(encoding)}));
  }
  EXPECT_EQ(Save(3, *Instance("1.2.840.10008.1.2.4.50")),
            Joined({Preamble(), MetaNaming("1.2.840.10008.1.2.4.50"), InstanceIn(kExplicit)}));
}

TEST_F(SaveFile, ModeThreeWithoutASyntaxIsImplicitLittleEndianAndSaysSo) {
  EXPECT_EQ(Save(3, *Instance()),
            Joined({Preamble(), MetaNaming(SyntaxUidOf(kImplicit)), InstanceIn(kImplicit)}));
}

TEST_F(SaveFile, AnyOtherModeDoesNothing) {
  for (const std::int32_t mode : {-1, 0, 4, 100}) {
    const auto object = Instance();
    DataSetCoder coder;
    EXPECT_FALSE(coder.SaveFile(Path().c_str(), mode, *object));
    EXPECT_EQ(CountOf(*object), 2u);
    EXPECT_EQ(folder_.Listing(), "");
  }
}

TEST_F(SaveFile, ASaveThatIsRefusedForgetsTheErrorBeforeIt) {
  for (const bool keeping : {false, true}) {
    const auto object = Instance();
    const auto save = [&](DataSetCoder& coder, const char* path, std::int32_t mode) {
      return keeping ? coder.SaveKeeping(path, mode, *object) : coder.SaveFile(path, mode, *object);
    };
    for (const bool nullPath : {false, true}) {
      DataSetCoder coder;
      EXPECT_FALSE(save(coder, folder_.File("nowhere/file.dcm").c_str(), 3));
      ASSERT_EQ(coder.LastOpenError(), ENOENT);
      coder.SetError("from before");
      EXPECT_FALSE(nullPath ? save(coder, nullptr, 3) : save(coder, Path().c_str(), 4));
      EXPECT_EQ(coder.LastOpenError(), 0);
      EXPECT_EQ(coder.ErrorText(), nullptr);
    }
    EXPECT_EQ(CountOf(*object), 2u);
  }
}

TEST_F(SaveFile, AFileThatIsThereStaysWhereNoneIsToBeReplaced) {
  DataSetCoder coder;
  coder.ReplacesFiles = false;
  EXPECT_TRUE(coder.SaveFile(Path().c_str(), 1, *Instance()));
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 2, *Instance()));
  EXPECT_EQ(coder.LastOpenError(), EEXIST);
  EXPECT_FALSE(coder.SaveKeeping(Path().c_str(), 2, *Instance()));
  EXPECT_EQ(coder.LastOpenError(), EEXIST);
  EXPECT_EQ(ReadBytes(Path()), InstanceIn(kImplicit));

  // One that comes while the bytes are written stays as well.
  std::filesystem::remove(Path());
  FileFailure calls;
  calls.RunBefore(FileCall::kSync, 1, [this] { WriteText(Path(), "early"); });
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 1, *Instance()));
  EXPECT_EQ(ErrorOf(coder), SystemErrorText(EEXIST));
  EXPECT_EQ(ReadText(Path()), "early");
  EXPECT_EQ(folder_.Listing(), "file.dcm");
}

TEST_F(SaveFile, AnEmptyObjectIsAnEmptyDataSet) {
  DICOMObject object;
  EXPECT_EQ(Save(1, object), Bytes());
  EXPECT_EQ(Save(2, object), Preamble());
  DICOMObject other;
  EXPECT_EQ(CountOf(*DataSetCoder().LoadFile((Save(3, other), Path().c_str()), true, true)), 6u);
}

TEST_F(SaveFile, TheCallingTitleGoesIntoTheMetaGroup) {
  DataSetCoder coder;
  coder.CallingAETitle = "WORKSTATION";
  ASSERT_TRUE(coder.SaveFile(Path().c_str(), 3, *Instance()));
  const auto loaded = coder.LoadFile(Path().c_str(), true, true);
  EXPECT_EQ(ValueText(At(*loaded, 0x0002, 0x0016)), "WORKSTATION     ");
}

TEST_F(SaveFile, LargeValuesAndManyElementsComeWhole) {
  DICOMObject object;
  DataSetBuilder expected(kImplicit);
  // Around the sizes at which a stream to a file changes its ways.
  constexpr std::size_t kSizes[] = {32598, 32600, 32602, 65536, 1 << 20, (1 << 20) + 2, 3 << 20};
  std::uint16_t element = 1;
  for (const std::size_t size : kSizes) {
    object.Push(NewElement(0x0009, element, type_code::OB, Pattern(size, element)));
    expected.Element(0x0009, element, "OB", Pattern(size, element));
    ++element;
  }
  for (std::uint32_t number = 0; number < 20000; ++number) {
    const auto group = static_cast<std::uint16_t>(0x0011 + 2 * (number / 10000));
    const auto tag = static_cast<std::uint16_t>(0x0010 + number % 10000);
    object.Push(NewElement(group, tag, type_code::LO, Pattern(number % 100 * 2, number)));
    expected.Element(group, tag, "LO", Pattern(number % 100 * 2, number));
  }
  EXPECT_EQ(Save(1, object), expected.Done());
}

// The switch behind the meta group.

/// An instance with two elements that have one tag now, the latter of which stays, and one that has left the meta group.
std::unique_ptr<DICOMObject> InstanceWithChangedTags() {
  auto object = Instance(SyntaxUidOf(kExplicit));
  object->Push(NewElement(0x0002, 0x0001, type_code::LO, "away"));
  object->Push(NewElement(0x0002, 0x0012, type_code::UI, Evened(SyntaxUidOf(kExplicit))));
  object->Push(NewElement(0x0002, 0x0100, type_code::UI, "1.2."));
  object->GetVR(0x0002, 0x0001)->Group = 0x0009;
  object->GetVR(0x0002, 0x0012)->Element = 0x0010;
  return object;
}

TEST_F(SaveFile, ElementsWhoseTagsWereChangedWhereTheyLieGoOutUnderTheirNewOnes) {
  const Bytes data = DataSetBuilder(kExplicit)
                         .Element(0x0008, 0x0018, "UI", "1.2.3.")
                         .Element(0x0009, 0x0001, "LO", "away")
                         .Element(0x0010, 0x0010, "PN", "A ");
  const Bytes file = Joined({Preamble(), MetaNaming(SyntaxUidOf(kExplicit)), data});
  EXPECT_EQ(Save(3, *InstanceWithChangedTags()), file);
  EXPECT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), 3, *InstanceWithChangedTags()));
  EXPECT_EQ(ReadBytes(Path()), file);
  // What was popped before the save, here the one that has left, does not come back.
  const auto popped = InstanceWithChangedTags();
  delete popped->Pop();
  EXPECT_EQ(Save(3, *popped),
            Joined({Preamble(), MetaNaming(SyntaxUidOf(kExplicit)), InstanceIn(kExplicit)}));
}

TEST_F(SaveFile, ATagChangedInALargeObjectThatWasFilledOutOfOrderGoesOutAsItsNewOne) {
  // More than 512 elements behind each new one make a tree of the list.
  const auto fill = [](std::uint16_t uidElement) {
    auto object = std::make_unique<DICOMObject>();
    for (std::uint16_t element = 3000; element > 0; --element) {
      object->Push(NewElement(0x0011, element, type_code::LO, "x "));
    }
    object->Push(NewElement(0x0008, uidElement, type_code::UI, "1.2.3."));
    return object;
  };
  const Bytes file = Save(3, *fill(0x0018));
  const auto changed = fill(0x0019);
  changed->GetVR(0x0008, 0x0019)->Element = 0x0018;
  EXPECT_EQ(Save(3, *changed), file);
}

TEST_F(SaveFile, AnUnknownSyntaxFailsAtTheFirstElementBehindTheMetaGroup) {
  const auto object = Instance("1.2.3");
  DataSetCoder coder;
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 3, *object));
  EXPECT_EQ(coder.ErrorText(), nullptr);
  EXPECT_TRUE(object->IsEmpty());
  EXPECT_EQ(folder_.Listing(), "");
  // Without such an element there is nothing that could not be encoded.
  DICOMObject metaOnly;
  metaOnly.Push(NewElement(0x0002, 0x0010, type_code::UI, Evened("1.2.3")));
  EXPECT_TRUE(coder.SaveFile(Path().c_str(), 3, metaOnly));
}

Bytes WriteFileStream(DICOMObject& object, std::int32_t code, Buffer* given = nullptr) {
  DataSetCoder coder;
  CollectingBuffer buffer;
  EXPECT_TRUE(coder.File_ParseDCMIntoRawVR(object, given != nullptr ? *given : buffer, code));
  return buffer.Written();
}

TEST_F(SaveFile, GroupLengthsOfADataSetGoOutInImplicitFormOnly) {
  for (const std::int32_t code : {100, 101}) {
    const auto encoding = static_cast<Encoding>(code);
    DICOMObject object;
    object.Push(NewElement(0x0002, 0x0000, type_code::UL, Bytes{1, 0, 0, 0}));
    object.Push(NewElement(0x0008, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
    object.Push(NewElement(0x0008, 0x0060, type_code::CS, "MR"));
    DataSetBuilder expected(encoding);
    expected.Element(0x0002, 0x0000, "UL", Bytes{1, 0, 0, 0});
    if (encoding == kImplicit) expected.Element(0x0008, 0x0000, "UL", Bytes{9, 0, 0, 0});
    expected.Element(0x0008, 0x0060, "CS", "MR");
    EXPECT_EQ(WriteFileStream(object, code), expected.Done());
  }
}

TEST_F(SaveFile, AGroupLengthInFrontOfTheSwitchGoesByTheFormOfTheMetaGroup) {
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0010, type_code::UI, Evened(SyntaxUidOf(kImplicit))));
  object.Push(NewElement(0x0008, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
  object.Push(NewElement(0x0008, 0x0060, type_code::CS, "MR"));
  object.Push(NewElement(0x0010, 0x0000, type_code::UL, Bytes{7, 0, 0, 0}));
  EXPECT_EQ(WriteFileStream(object, 101),
            Joined({DataSetBuilder(kExplicit).Element(0x0002, 0x0010, "UI",
                                                      Evened(SyntaxUidOf(kImplicit))),
                    DataSetBuilder(kImplicit)
                        .Element(0x0008, 0x0060, "CS", "MR")
                        .Element(0x0010, 0x0000, "UL", Bytes{7, 0, 0, 0})}));
}

TEST_F(SaveFile, GroupLengthsWithinItemsStayOut) {
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0008, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
  object.Push(item.release());
  EXPECT_EQ(WriteFileStream(object, 100),
            DataSetBuilder(kImplicit)
                .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {{}})
                .Done());
}

TEST_F(SaveFile, UidsKeepTheirBlanksAtTheOutermostLevelOnly) {
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0008, 0x1150, type_code::UI, "1.2 "));
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x0018, type_code::UI, "1.2 "));
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
  object.Push(item.release());
  const Bytes corrected =
      DataSetBuilder(kExplicit).Element(0x0008, 0x1150, "UI", Bytes{'1', '.', '2', 0});
  EXPECT_EQ(WriteFileStream(object, 101),
            DataSetBuilder(kExplicit)
                .Element(0x0008, 0x0018, "UI", "1.2 ")
                .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {corrected})
                .Done());
}

TEST_F(SaveFile, TheCodeSetsTheIncomingByteOrderAndTheSwitchTheOutgoingOne) {
  const std::pair<std::int32_t, std::int32_t> codes[] = {
      {100, kLittleEndian}, {101, kLittleEndian}, {102, kBigEndian}};
  for (const auto& [code, order] : codes) {
    DICOMObject object;
    CollectingBuffer buffer;
    WriteFileStream(object, code, &buffer);
    EXPECT_EQ(buffer.InEndian, order);
    EXPECT_EQ(buffer.OutEndian, kLittleEndian);
  }
  CollectingBuffer buffer;
  WriteFileStream(*Instance(SyntaxUidOf(kBig)), 101, &buffer);
  EXPECT_EQ(buffer.OutEndian, kBigEndian);
  WriteFileStream(*Instance(SyntaxUidOf(kImplicit)), 101, &buffer);
  EXPECT_EQ(buffer.OutEndian, kLittleEndian);
}

TEST_F(SaveFile, TypesThatAreNotKnownAreLookedUp) {
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"PN\"\n");
  for (const VrCode type : {type_code::kNone, type_code::UN}) {
    DICOMObject object;
    object.Push(NewElement(0x0010, 0x0010, type, "A "));
    object.Push(NewElement(0x0011, 0x0001, type, "B "));
    DataSetCoder coder(dictionary.get());
    CollectingBuffer buffer;
    EXPECT_TRUE(coder.File_ParseDCMIntoRawVR(object, buffer, 101));
    EXPECT_EQ(buffer.Written(), DataSetBuilder(kExplicit)
                                    .Element(0x0010, 0x0010, "PN", "A ")
                                    .Element(0x0011, 0x0001, "UN", "B ")
                                    .Done());
  }
}

TEST_F(SaveFile, FragmentsAndOddValuesGoOutAsInADataSet) {
  for (const Encoding encoding : kAllEncodings) {
    DICOMObject object;
    object.Push(NewElement(0x0002, 0x0010, type_code::UI, Evened(SyntaxUidOf(encoding))));
    object.Push(NewElement(0x0010, 0x0020, type_code::LO, "odd"));
    object.Push(NewElement(0x7FE0, 0x0010, type_code::OB, ""));
    auto* fragment = new DICOMObject;
    fragment->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, Bytes{1, 2, 3, 4}));
    object.Push(fragment);
    EXPECT_EQ(WriteFileStream(object, 101),
              Joined({DataSetBuilder(kExplicit).Element(0x0002, 0x0010, "UI",
                                                        Evened(SyntaxUidOf(encoding))),
                      DataSetBuilder(encoding)
                          .Element(0x0010, 0x0020, "LO", std::string_view("odd\0", 4))
                          .Fragments({{1, 2, 3, 4}})}));
  }
}

TEST_F(SaveFile, ASyntaxMayEndWithABlank) {
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0010, type_code::UI, "1.2.840.10008.1.2 "));
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  EXPECT_EQ(WriteFileStream(object, 101),
            Joined({DataSetBuilder(kExplicit).Element(0x0002, 0x0010, "UI", "1.2.840.10008.1.2 "),
                    DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "PN", "A ")}));
}

TEST_F(SaveFile, ASyntaxThatItsLengthFieldCannotStateLeavesAFileThatCanBeRead) {
  for (const Encoding encoding : kAllEncodings) {
    // NULs behind the UID up to a length that states 64 * 1024 too little.
    std::string syntax(SyntaxUidOf(encoding));
    const std::size_t stated = syntax.size() + 1;
    syntax.resize(65536 + stated);
    const auto object = std::make_unique<DICOMObject>();
    object->Push(NewElement(0x0002, 0x0010, type_code::UI, syntax));
    object->Push(NewElement(0x0008, 0x0018, type_code::UI, "1.2.3."));
    object->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
    const Bytes expected =
        Joined({Preamble(), MetaNaming(SyntaxUidOf(encoding)), InstanceIn(encoding)});
    ASSERT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), 3, *object));
    EXPECT_EQ(ReadBytes(Path()), expected);
    EXPECT_EQ(At(*object, 0x0002, 0x0010).Length, syntax.size());
    EXPECT_EQ(Save(3, *object), expected);
  }
}

// What was read and is written again.

TEST_F(SaveFile, WhatIsLoadedAndSavedHoldsTheSameDataSet) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  for (const Encoding encoding : kAllEncodings) {
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
      const Bytes file = FileOf(encoding, RandomDataSet(encoding, seed));
      DataSetCoder coder(dictionary.get());
      const auto first = coder.LoadMemory(file.data(), file.size(), true, true);
      ASSERT_NE(first, nullptr);
      const std::unique_ptr<DICOMObject> clone(first->Clone(false));
      ASSERT_TRUE(coder.SaveFile(Path().c_str(), 3, *clone));
      const Bytes once = ReadBytes(Path());
      const auto second = coder.LoadFile(Path().c_str(), true, true);
      ASSERT_NE(second, nullptr);
      const std::unique_ptr<DICOMObject> again(second->Clone(false));
      ASSERT_TRUE(coder.SaveFile(Path().c_str(), 3, *again));
      EXPECT_EQ(ReadBytes(Path()), once) << NameOf(encoding) << " seed " << seed;
    }
  }
}

TEST_F(SaveFile, AHeaderWithoutItsPixelsIsRefusedWithWords) {
  const Bytes file =
      FileOf(kExplicit, DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, "OW", Pattern(100)));
  WriteBytes(Path(), file);
  DataSetCoder coder;
  const auto header = coder.LoadFile(Path().c_str(), false, true);
  ASSERT_NE(header, nullptr);
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 3, *header));
  EXPECT_STREQ(coder.ErrorText(), "VR(7FE0,0010) has a length but no value");
  EXPECT_EQ(ReadBytes(Path()), file);
  EXPECT_EQ(folder_.Listing(), "file.dcm");
}

// Saving without emptying.

/// What SaveFile of a shallow clone writes, and whether it did.
std::pair<bool, Bytes> SavedThroughAClone(const std::string& path, const DICOMObject& object,
                                          std::int32_t mode, const RTC* dictionary) {
  const std::unique_ptr<DICOMObject> clone(object.Clone(false));
  const bool saved = DataSetCoder(dictionary).SaveFile(path.c_str(), mode, *clone);
  return {saved, saved ? ReadBytes(path) : Bytes()};
}

TEST_F(SaveFile, SavingAnObjectThatIsKeptWritesTheVeryFileOfAClone) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  for (const Encoding encoding : kAllEncodings) {
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
      // With a meta group of its own, with one that names a syntax of another, and without.
      const Bytes data = RandomDataSet(encoding, seed, 2);
      for (const Bytes& file :
           {FileOf(encoding, data), Joined({MetaGroup("1.2.840.10008.1.2.4.50"), data})}) {
        DataSetCoder coder(dictionary.get());
        const auto object = coder.LoadMemory(file.data(), file.size(), true, false);
        if (object == nullptr) continue;
        for (const std::int32_t mode : {1, 2, 3}) {
          const auto [saved, expected] =
              SavedThroughAClone(Path(), *object, mode, dictionary.get());
          const std::unique_ptr<DICOMObject> before(object->Clone(true));
          ASSERT_EQ(coder.SaveKeeping(Path().c_str(), mode, *object), saved);
          EXPECT_EQ(ReadBytes(Path()), expected);
          const std::unique_ptr<DICOMObject> after(object->Clone(true));
          EXPECT_EQ(Difference(*before, *after), "");
        }
      }
    }
  }
}

TEST_F(SaveFile, SavingAnObjectThatIsKeptWritesTheMetaGroupWhereNothingIsToFollow) {
  DICOMObject empty;
  DICOMObject command;
  command.Push(NewElement(0x0000, 0x0110, type_code::US, "AB"));
  for (const DICOMObject* object : {&empty, &command}) {
    const auto [saved, expected] = SavedThroughAClone(Path(), *object, 3, nullptr);
    ASSERT_TRUE(saved);
    ASSERT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), 3, *object));
    EXPECT_EQ(ReadBytes(Path()), expected);
  }
}

TEST_F(SaveFile, SavingAnObjectThatIsKeptFailsWhereAClonesSaveFails) {
  DICOMObject header;
  header.Push(NewElement(0x0002, 0x0010, type_code::UI, Evened(SyntaxUidOf(kExplicit))));
  header.Push(new VR(0x7FE0, 0x0010, 100, nullptr));
  const auto unknown = Instance("1.2.3");
  for (const DICOMObject* object :
       {static_cast<const DICOMObject*>(&header), static_cast<const DICOMObject*>(unknown.get())}) {
    DataSetCoder coder;
    EXPECT_FALSE(coder.SaveKeeping(Path().c_str(), 3, *object));
    EXPECT_FALSE(SavedThroughAClone(Path(), *object, 3, nullptr).first);
    EXPECT_EQ(folder_.Listing(), "");
  }
  EXPECT_FALSE(DataSetCoder().SaveKeeping(Path().c_str(), 4, header));
  EXPECT_FALSE(DataSetCoder().SaveKeeping(nullptr, 3, header));
  EXPECT_EQ(CountOf(header), 2u);
}

TEST_F(SaveFile, SavingAnObjectThatIsKeptDeclaresItsPixelsWithoutTouchingThem) {
  const auto object = Instance("1.2.840.10008.1.2.4.50");
  object->Push(NewElement(0x0028, 0x0100, type_code::US, Bytes{16, 0}));
  object->Push(NewElement(0x7FE0, 0x0010, type_code::OB, Bytes{1, 2}));
  const auto [saved, expected] = SavedThroughAClone(Path(), *object, 3, nullptr);
  ASSERT_TRUE(saved);
  ASSERT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), 3, *object));
  EXPECT_EQ(ReadBytes(Path()), expected);
  EXPECT_EQ(At(*object, 0x7FE0, 0x0010).TypeCode, type_code::OB);
  EXPECT_EQ(TagsOf(*object), "(0002,0010) (0008,0018) (0010,0010) (0028,0100) (7FE0,0010)");
}

TEST_F(SaveFile, SavingAnObjectThatIsKeptCorrectsUidsInTheFileAndNotInTheObject) {
  // The values are literals, where nothing can be written; one is longer than what an element has room for, and one of
  // odd length.
  constexpr std::string_view kUids[] = {"1.2 ", "1.2.3.4.5.6.7.8.9.10.11.12.13.14.15.16.17 ",
                                        "1.2.3.4 ", "12  ", " "};
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
  for (const std::string_view uid : kUids) {
    auto item = std::make_unique<DICOMObject>();
    auto* bytes = reinterpret_cast<std::uint8_t*>(const_cast<char*>(uid.data()));
    item->Push(new VR(0x0008, 0x1150, static_cast<std::uint32_t>(uid.size()), bytes, false));
    At(*item, 0x0008, 0x1150).TypeCode = type_code::UI;
    object.Push(item.release());
  }
  for (const std::int32_t mode : {1, 2, 3}) {
    ASSERT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), mode, object));
    const Bytes kept = ReadBytes(Path());
    for (std::uint32_t number = 0; number < std::size(kUids); ++number) {
      EXPECT_EQ(ValueText(At(ItemAt(object, 0x0008, 0x1140, number), 0x0008, 0x1150)),
                kUids[number]);
    }
    // What a clone that is written changes are the bytes that it shares: a deep one has its own.
    const std::unique_ptr<DICOMObject> clone(object.Clone(true));
    ASSERT_TRUE(DataSetCoder().SaveFile(Path().c_str(), mode, *clone));
    EXPECT_EQ(ReadBytes(Path()), kept);
  }
  // Neither where a tag that was changed in place has the elements copied into their order.
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  At(object, 0x0010, 0x0010).Element = 0x0020;
  for (const std::int32_t mode : {1, 2, 3}) {
    ASSERT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), mode, object));
    for (std::uint32_t number = 0; number < std::size(kUids); ++number) {
      EXPECT_EQ(ValueText(At(ItemAt(object, 0x0008, 0x1140, number), 0x0008, 0x1150)),
                kUids[number]);
    }
  }
}

TEST_F(SaveFile, SavingAnObjectThatIsKeptWritesPixelDataOfAnyTypeAsACloneDoes) {
  for (const VrCode type : {type_code::kNone, type_code::UN, type_code::OB, type_code::OW,
                            type_code::US, type_code::LO, type_code::SQ}) {
    for (const char* syntax : {"", "1.2.840.10008.1.2", "1.2.840.10008.1.2.1",
                               "1.2.840.10008.1.2.2", "1.2.840.10008.1.2.4.50"}) {
      for (const std::size_t size : {0u, 100u, 70000u}) {
        const auto object = Instance(syntax);
        object->Push(NewElement(0x0028, 0x0100, type_code::US, Bytes{16, 0}));
        object->Push(NewElement(0x7FE0, 0x0010, type, Pattern(size)));
        if (size == 0) {
          auto* fragment = new DICOMObject;
          fragment->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, Bytes{1, 2}));
          object->Push(fragment);
        }
        for (const std::int32_t mode : {1, 2, 3}) {
          const auto [saved, expected] = SavedThroughAClone(Path(), *object, mode, nullptr);
          ASSERT_TRUE(saved);
          ASSERT_TRUE(DataSetCoder().SaveKeeping(Path().c_str(), mode, *object));
          EXPECT_EQ(ReadBytes(Path()), expected) << type << ' ' << syntax << ' ' << size;
          // No value goes missing under any name.
          EXPECT_GE(expected.size(), size + (size == 0 ? 2 : 0));
        }
      }
    }
  }
}

// Streams of the caller.

TEST_F(SaveFile, UsesTheStreamThatItIsGivenAndClosesIt) {
  class Watching : public FileBuffer {
   public:
    bool OpenForWrite(const char* path) override {
      ++opened;
      return FileBuffer::OpenForWrite(path);
    }
    int opened = 0;
  } buffer;
  Save(1, *Instance(), &buffer);
  EXPECT_EQ(buffer.opened, 1);
  EXPECT_EQ(buffer.Stream, nullptr);
}

TEST_F(SaveFile, OneStreamServesManySaves) {
  FileBuffer buffer;
  for (const Encoding encoding : {kBig, kExplicit, kBig, kImplicit}) {
    const std::string_view syntax = SyntaxUidOf(encoding);
    EXPECT_EQ(Save(3, *Instance(syntax), &buffer),
              Joined({Preamble(), MetaNaming(syntax), InstanceIn(encoding)}));
  }
  EXPECT_EQ(Save(1, *Instance(), &buffer), InstanceIn(kImplicit));
}

TEST_F(SaveFile, AfterABigEndianSaveAStreamReadsValuesAsTheyStand) {
  FileBuffer buffer;
  auto object = Instance(SyntaxUidOf(kBig));
  object->Push(NewElement(0x0028, 0x0010, type_code::US, Bytes{2, 0}));
  Save(3, *object, &buffer);
  EXPECT_EQ(buffer.OutEndian, kLittleEndian);
  const auto loaded = DataSetCoder().LoadFile(Path().c_str(), true, true, &buffer);
  EXPECT_EQ(ValueText(At(*loaded, 0x0028, 0x0010)), std::string("\x02\x00", 2));
}

TEST_F(SaveFile, TheMetaGroupIsLittleEndianWhateverTheStreamWasLeftAt) {
  FileBuffer buffer;
  buffer.SetOutEndian(kBigEndian);
  const std::string_view syntax = SyntaxUidOf(kExplicit);
  EXPECT_EQ(Save(3, *Instance(syntax), &buffer),
            Joined({Preamble(), MetaNaming(syntax), InstanceIn(kExplicit)}));
}

TEST_F(SaveFile, AFailedSaveLeavesNothingInTheStreamForTheNext) {
  FileBuffer buffer;
  DataSetCoder coder;
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 3, *Instance("1.2.3"), &buffer));
  EXPECT_EQ(buffer.OutSize, 0);
  EXPECT_EQ(Save(1, *Instance(), &buffer), InstanceIn(kImplicit));
}

TEST_F(SaveFile, AStreamThatCannotTakeThePreambleFailsTheSave) {
  class Refusing : public FileBuffer {
   public:
    int SendBinary(const void*, std::uint32_t) override { return 0; }
  } buffer;
  DataSetCoder coder;
  DICOMObject empty;
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 2, empty, &buffer));
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 1, *Instance(), &buffer));
  EXPECT_EQ(folder_.Listing(), "");
}

// Places that cannot be written.

TEST_F(SaveFile, APlaceThatCannotBeOpenedFailsWithoutWords) {
  const std::string places[] = {folder_.File("nowhere/file.dcm"), folder_.Path().string(), "",
                                folder_.File("file.dcm/x")};
  WriteBytes(Path(), {1});
  for (const std::string& place : places) {
    DataSetCoder coder;
    coder.SetError("from before");
    const auto object = Instance();
    EXPECT_FALSE(coder.SaveFile(place.c_str(), 3, *object)) << place;
    EXPECT_EQ(coder.ErrorText(), nullptr) << place;
    // It was not touched yet.
    EXPECT_EQ(TagsOf(*object), "(0008,0018) (0010,0010)") << place;
  }
  DataSetCoder coder;
  EXPECT_FALSE(coder.SaveFile(nullptr, 3, *Instance()));
  EXPECT_EQ(folder_.Listing(), "file.dcm");
}

TEST_F(SaveFile, APlaceThatCannotBeOpenedIsToldByItsNumber) {
  DataSetCoder coder;
  EXPECT_FALSE(coder.SaveFile(folder_.File("nowhere/file.dcm").c_str(), 3, *Instance()));
  EXPECT_EQ(coder.LastOpenError(), ENOENT);
  // What is no regular file is found out only when it is opened for writing; so is a process without descriptors left.
  const std::string socket = folder_.File("socket");
  ASSERT_EQ(::mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
  EXPECT_FALSE(coder.SaveFile(socket.c_str(), 3, *Instance()));
  EXPECT_EQ(coder.LastOpenError(), ENXIO);
  {
    FileFailure failure;
    failure.FailCall(FileCall::kOpen, 2, EMFILE);
    EXPECT_FALSE(coder.SaveKeeping(Path().c_str(), 3, *Instance()));
    EXPECT_EQ(coder.LastOpenError(), EMFILE);
  }
  EXPECT_TRUE(coder.SaveFile(Path().c_str(), 3, *Instance()));
  EXPECT_EQ(coder.LastOpenError(), 0);
  EXPECT_EQ(folder_.Listing(), "file.dcm socket");
}

TEST_F(SaveFile, ReplacesAFileAndKeepsItsPermissions) {
  WriteBytes(Path(), Pattern(100000));
  ASSERT_EQ(::chmod(Path().c_str(), 0640), 0);
  EXPECT_EQ(Save(1, *Instance()), InstanceIn(kImplicit));
  struct stat status {};
  ASSERT_EQ(::stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(SaveFile, FollowsALinkToWhatItNames) {
  const std::string link = folder_.File("link.dcm");
  ASSERT_EQ(::symlink("file.dcm", link.c_str()), 0);
  DataSetCoder coder;
  // The link dangles at first and does not the second time.
  for (int time = 0; time < 2; ++time) {
    ASSERT_TRUE(coder.SaveFile(link.c_str(), 1, *Instance()));
    EXPECT_EQ(folder_.Listing(), "file.dcm link.dcm");
    EXPECT_EQ(ReadBytes(Path()), InstanceIn(kImplicit));
    struct stat status {};
    ASSERT_EQ(::lstat(link.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
  }
}

TEST_F(SaveFile, ALinkThatNamesItselfCannotBeOpened) {
  const std::string link = folder_.File("link.dcm");
  ASSERT_EQ(::symlink("link.dcm", link.c_str()), 0);
  EXPECT_FALSE(DataSetCoder().SaveFile(link.c_str(), 1, *Instance()));
  EXPECT_EQ(folder_.Listing(), "link.dcm");
}

TEST_F(SaveFile, WritesToADeviceDirectlyAndTellsItsError) {
  DataSetCoder coder;
  EXPECT_TRUE(coder.SaveFile("/dev/null", 3, *Instance()));
  EXPECT_FALSE(coder.SaveFile("/dev/full", 3, *Instance()));
  EXPECT_EQ(ErrorOf(coder), SystemErrorText(ENOSPC));
}

/// What a thread works with that is cancelled while it saves.
struct CancelledSave {
  std::string path;
  std::int32_t mode;
  FileBuffer buffer;
};

/// Saves a big endian file through the buffer of `save` in a thread that is cancelled when it comes to write for the
/// `nth` time. Whether that happened.
bool IsCancelledAtWrite(int nth, CancelledSave& save) {
  FileFailure calls;
  calls.RunBefore(FileCall::kWrite, nth, [] { ::pthread_cancel(::pthread_self()); });
  pthread_t thread{};
  const auto run = [](void* given) -> void* {
    auto& own = *static_cast<CancelledSave*>(given);
    const auto object = Instance("1.2.840.10008.1.2.2");
    DataSetCoder().SaveFile(own.path.c_str(), own.mode, *object, &own.buffer);
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    return nullptr;
  };
  EXPECT_EQ(::pthread_create(&thread, nullptr, run, &save), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  return answer == PTHREAD_CANCELED;
}

TEST_F(SaveFile, AfterACancelledSaveTheNextOneThroughItsBufferHasNothingOfIt) {
  for (const std::int32_t mode : {1, 3}) {
    CancelledSave save{Path(), mode, {}};
    int nth = 1;
    for (; IsCancelledAtWrite(nth, save); ++nth) {
      EXPECT_EQ(folder_.Listing(), "");
      EXPECT_EQ(save.buffer.OutEndian, kLittleEndian);
      EXPECT_EQ(Save(1, *Instance(), &save.buffer), InstanceIn(kImplicit));
      std::filesystem::remove(Path());
    }
    // The preamble is written by itself.
    EXPECT_EQ(nth, mode == 1 ? 2 : 3);
    std::filesystem::remove(Path());
  }
}

}  // namespace
}  // namespace tessaret::test
