// Loading with options, and what the reader notes.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "facade/dcm_file_helpers.h"
#include "facade/named_call.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/memory_file.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr _EnumDataEncoding CodeOf(Encoding encoding) {
  return static_cast<_EnumDataEncoding>(encoding);
}

/// Two elements before one with two pixels of 16 bits, 0x0102 and 0x0304.
DataSetBuilder ImageIn(Encoding encoding) {
  DataSetBuilder image(encoding);
  image.Element(0x0010, 0x0010, "PN", "Doe^John").Number(0x0028, 0x0011, 2);
  image.Head(0x7FE0, 0x0010, "OW", 4).U16(0x0102).U16(0x0304);
  return image;
}

/// Words that count from 0x0100, and an element behind them.
DataSetBuilder LongImageIn(Encoding encoding, std::uint32_t size) {
  DataSetBuilder image(encoding);
  image.Element(0x0010, 0x0010, "PN", "Doe^John").Head(0x7FE0, 0x0010, "OW", size);
  for (std::uint32_t at = 0; at < size / 2; ++at)
    image.U16(static_cast<std::uint16_t>(0x0100 + at));
  return image.Element(0xFFFC, 0xFFFC, "OB", "end ");
}

class FileLoading : public testing::Test {
 protected:
  std::string FileWith(const Bytes& bytes) {
    WriteBytes(folder_.File("in.dcm"), bytes);
    return folder_.File("in.dcm");
  }
  Status LoadBytes(const Bytes& bytes, std::int32_t options = LOAD_PIXELS,
                   _EnumDataEncoding encoding = ENCODING_NONE) {
    return file_->LoadBytes(BytesVariant(bytes), options, encoding);
  }
  std::string NamedSyntax() {
    String text("untouched");
    EXPECT_EQ(file_->get_NamedSyntax(&text), kOk);
    return text.Narrow();
  }
  std::int32_t ReadEncoding() {
    auto code = static_cast<_EnumDataEncoding>(-7);
    EXPECT_EQ(file_->get_ReadEncoding(&code), kOk);
    return code;
  }
  bool HasMark() {
    VariantBool has;
    EXPECT_EQ(file_->get_HasMark(&has), kOk);
    return has.IsTrue();
  }
  double BytesRead() {
    double count = -7;
    EXPECT_EQ(file_->get_BytesRead(&count), kOk);
    return count;
  }
  std::int32_t OdditiesCount() {
    std::int32_t count = -7;
    EXPECT_EQ(file_->get_OdditiesCount(&count), kOk);
    return count;
  }
  /// As hexadecimal digits; "none" where there is none.
  std::string FirstTag() {
    std::int32_t group = 0;
    std::int32_t element = 0;
    VariantBool found;
    EXPECT_EQ(file_->GetFirstTag(&group, &element, &found), kOk);
    if (!found.IsTrue()) return "none";
    char text[16];
    std::snprintf(text, sizeof text, "%04X,%04X", static_cast<unsigned>(group),
                  static_cast<unsigned>(element));
    return text;
  }
  void ExpectImage() {
    EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
    EXPECT_EQ(Get(object_, 0x0028, 0x0011).AsLong(), 2);
    EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010), (Bytes{0x02, 0x01, 0x04, 0x03}));
  }

  TempFolder folder_;
  Ref<IDCMObject> object_ = NewObject();
  Ref<IDcmFile> file_ = FileFacetOf(object_);
};

TEST_F(FileLoading, GivesTheSameFromAFileADescriptorAndBytesInEveryEncoding) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes bytes = FileOf(encoding, ImageIn(encoding));
    const MemoryFile memory(bytes);
    for (int way = 0; way < 3; ++way) {
      SCOPED_TRACE(way);
      ASSERT_EQ(object_->Clear(), kOk);
      ASSERT_EQ(way == 0   ? file_->LoadFile(FileWith(bytes), LOAD_PIXELS, ENCODING_NONE)
                : way == 1 ? file_->LoadDescriptor(memory.Descriptor(), LOAD_PIXELS, ENCODING_NONE)
                           : LoadBytes(bytes),
                kOk);
      ExpectImage();
      EXPECT_EQ(ReadEncoding(), static_cast<std::int32_t>(encoding));
      EXPECT_TRUE(HasMark());
      EXPECT_EQ(BytesRead(), static_cast<double>(bytes.size()));
      EXPECT_EQ(NamedSyntax(), SyntaxUidOf(encoding));
      EXPECT_EQ(FirstTag(), "0002,0000");
      EXPECT_EQ(EndOf(file_), (Met{READ_TO_THE_END, 0, 0, 0}));
      EXPECT_EQ(OdditiesCount(), 0);
    }
  }
}

TEST_F(FileLoading, WithoutPixelsStopsAtThemAndSaysSo) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes dataSet = ImageIn(encoding);
    const Bytes bytes = FileOf(encoding, dataSet);
    // Head and value of the pixel data: 8 + 4 bytes, and 4 more where there are letters.
    const double offset =
        static_cast<double>(bytes.size()) - (encoding == Encoding::kImplicitLittle ? 12 : 16);
    for (int way = 0; way < 2; ++way) {
      ASSERT_EQ(way == 0 ? file_->LoadFile(FileWith(bytes), 0, ENCODING_NONE) : LoadBytes(bytes, 0),
                kOk);
      EXPECT_EQ(EndOf(file_), (Met{READ_TO_PIXELS, offset, 0x7FE0, 0x0010}));
      const Stored pixels = StoredIn(file_, 0x7FE0, 0x0010);
      EXPECT_TRUE(pixels.found.IsTrue());
      EXPECT_FALSE(pixels.hasValue.IsTrue());
      EXPECT_EQ(pixels.length, 4);
      EXPECT_EQ(pixels.offset, offset);
      EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
    }
  }
}

TEST_F(FileLoading, StepsOverLongPixelsAndReadsOnBehindThem) {
  constexpr std::uint32_t kSize = 4098;
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes bytes = FileOf(encoding, LongImageIn(encoding, kSize));
    ASSERT_EQ(LoadBytes(bytes), kOk);
    String whole;
    ASSERT_EQ(file_->get_Text(&whole), kOk);
    const MemoryFile memory(bytes);
    for (int way = 0; way < 3; ++way) {
      SCOPED_TRACE(way);
      const std::int32_t how = LOAD_SKIPS_PIXELS | LOAD_STRICT;
      ASSERT_EQ(way == 0   ? file_->LoadFile(FileWith(bytes), how, ENCODING_NONE)
                : way == 1 ? file_->LoadDescriptor(memory.Descriptor(), how, ENCODING_NONE)
                           : LoadBytes(bytes, how),
                kOk);
      EXPECT_EQ(EndOf(file_), (Met{READ_TO_THE_END, 0, 0, 0}));
      EXPECT_EQ(BytesRead(), static_cast<double>(bytes.size()));
      EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
      EXPECT_EQ(Raw(object_, 0xFFFC, 0xFFFC), BytesOf("end "));
      const Stored pixels = StoredIn(file_, 0x7FE0, 0x0010);
      EXPECT_FALSE(pixels.hasValue.IsTrue());
      EXPECT_EQ(pixels.length, kSize);
      EXPECT_EQ(pixels.type, "OW");
      String text;
      ASSERT_EQ(file_->get_Text(&text), kOk);
      EXPECT_EQ(text, whole);
    }
  }
}

TEST_F(FileLoading, GivesTheBeginningOfWhatItSteppedOverAndNoMore) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    ASSERT_EQ(LoadBytes(FileOf(encoding, LongImageIn(encoding, 5000)), LOAD_SKIPS_PIXELS), kOk);
    const auto range = [&](double offset, std::int32_t count) {
      Variant bytes("untouched");
      EXPECT_EQ(file_->GetBytes(0x7FE0, 0x0010, offset, count, &bytes), kOk);
      return BytesIn(bytes);
    };
    // Little endian, as all numbers are here.
    EXPECT_EQ(range(0, 4), (Bytes{0x00, 0x01, 0x01, 0x01}));
    EXPECT_EQ(range(0, 5000).size(), 256u);
    EXPECT_EQ(range(254, 100), (Bytes{0x7F, 0x01}));
    EXPECT_EQ(range(256, 100), Bytes());
    EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010), Bytes());
    Ref<IDCMObject> copy;
    ASSERT_EQ(object_->copy(copy.Receive()), kOk);
    EXPECT_EQ(StoredIn(FileFacetOf(copy), 0x7FE0, 0x0010).length, 5000);
  }
}

TEST_F(FileLoading, LeavesShortPixelsAsTheyAreWhenItStepsOverLongOnes) {
  for (const Encoding encoding : kAllEncodings) {
    ASSERT_EQ(LoadBytes(FileOf(encoding, LongImageIn(encoding, 4096)), LOAD_SKIPS_PIXELS), kOk);
    EXPECT_TRUE(StoredIn(file_, 0x7FE0, 0x0010).hasValue.IsTrue());
    EXPECT_EQ(Raw(object_, 0x7FE0, 0x0010).size(), 4096u);
    EXPECT_EQ(object_->Save(folder_.File("out.dcm")), kOk);
  }
}

TEST_F(FileLoading, StepsOverLongFragmentsAlone) {
  DataSetBuilder image(Encoding::kExplicitLittle);
  image.Fragments({{}, Pattern(4096), Pattern(5000)}).Element(0xFFFC, 0xFFFC, "OB", "end ");
  ASSERT_EQ(LoadBytes(image, LOAD_SKIPS_PIXELS), kOk);
  EXPECT_EQ(StoredIn(file_, 0x7FE0, 0x0010).items, 3);
  EXPECT_EQ(Raw(object_, 0xFFFC, 0xFFFC), BytesOf("end "));
  const auto fragment = [&](std::int32_t index) {
    return StoredIn(FileFacetOf(ItemOf(object_, 0x7FE0, 0x0010, index)), 0xFFFE, 0xE000);
  };
  EXPECT_TRUE(fragment(1).hasValue.IsTrue());
  EXPECT_FALSE(fragment(2).hasValue.IsTrue());
  EXPECT_EQ(fragment(2).length, 5000);
  EXPECT_FAILS_WITH(object_->Save(folder_.File("out.dcm")),
                    "VR(FFFE,E000) was stepped over when it was read");
}

TEST_F(FileLoading, NeitherSavesNorConvertsWhatItSteppedOver) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    ASSERT_EQ(LoadBytes(FileOf(encoding, LongImageIn(encoding, 5000)), LOAD_SKIPS_PIXELS), kOk);
    const char* const words = "VR(7FE0,0010) was stepped over when it was read";
    EXPECT_FAILS_WITH(object_->Save(folder_.File("out.dcm")), words);
    Variant bytes;
    for (const _EnumSaveForm form : {SAVE_BARE, SAVE_WITHOUT_META_HEADER, SAVE_COMPLETE}) {
      EXPECT_FAILS_WITH(file_->SaveFile(folder_.File("out.dcm"), form, 0), words);
      EXPECT_FAILS_WITH(file_->SaveBytes(form, 0, &bytes), words);
    }
    // Called a sequence it would be an empty one.
    VariantBool found;
    ASSERT_EQ(file_->SetType(0x7FE0, 0x0010, "SQ", &found), kOk);
    EXPECT_FAILS_WITH(object_->Save(folder_.File("out.dcm")), words);
    // A value that is put there is like any other.
    ASSERT_EQ(object_->PutVRData(0x7FE0, 0x0010, "OW", BytesVariant({1, 2})), kOk);
    EXPECT_EQ(object_->Save(folder_.File("in.dcm")), kOk);
  }
  EXPECT_EQ(folder_.Listing(), "in.dcm");
}

TEST_F(FileLoading, TellsWhereWhatItStepsOverIsCut) {
  Bytes bytes = FileOf(Encoding::kExplicitLittle, LongImageIn(Encoding::kExplicitLittle, 200000));
  bytes.resize(bytes.size() - 16);  // the last element, of 12 and 4 bytes
  const double pixels = static_cast<double>(bytes.size()) - 200012;
  bytes.pop_back();
  for (int way = 0; way < 2; ++way) {
    ASSERT_EQ(way == 0 ? file_->LoadFile(FileWith(bytes), LOAD_SKIPS_PIXELS, ENCODING_NONE)
                       : LoadBytes(bytes, LOAD_SKIPS_PIXELS),
              kOk);
    EXPECT_EQ(EndOf(file_), (Met{READ_CUT_ELEMENT, pixels, 0x7FE0, 0x0010}));
    EXPECT_FALSE(StoredIn(file_, 0x7FE0, 0x0010).found.IsTrue());
    EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
  }
}

TEST_F(FileLoading, StrictlyTakesOnlyWhatHasTheMark) {
  const Bytes bare = ImageIn(Encoding::kExplicitLittle);
  const Bytes marked = FileOf(Encoding::kExplicitLittle, bare);
  EXPECT_EQ(LoadBytes(marked, LOAD_PIXELS | LOAD_STRICT), kOk);
  EXPECT_EQ(file_->LoadFile(FileWith(marked), LOAD_PIXELS | LOAD_STRICT, ENCODING_NONE), kOk);
  EXPECT_FAILS_WITH(LoadBytes(bare, LOAD_STRICT), "Error checking DICOM MetaHeader");
  EXPECT_FAILS_WITH(file_->LoadFile(FileWith(bare), LOAD_STRICT, ENCODING_NONE),
                    "Error checking DICOM MetaHeader");
  EXPECT_EQ(BytesRead(), 0);
  // Without it the first element tells the encoding.
  ASSERT_EQ(LoadBytes(bare), kOk);
  ExpectImage();
  EXPECT_FALSE(HasMark());
  EXPECT_EQ(FirstTag(), "0010,0010");
  EXPECT_EQ(NamedSyntax(), "");
  EXPECT_EQ(ReadEncoding(), ENCODING_EXPLICIT_LITTLE);
}

TEST_F(FileLoading, TakesABareDataSetInTheEncodingThatItIsTold) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes bytes = ImageIn(encoding);
    const MemoryFile memory(bytes);
    for (int way = 0; way < 3; ++way) {
      SCOPED_TRACE(way);
      const _EnumDataEncoding code = CodeOf(encoding);
      ASSERT_EQ(way == 0   ? file_->LoadFile(FileWith(bytes), LOAD_PIXELS, code)
                : way == 1 ? file_->LoadDescriptor(memory.Descriptor(), LOAD_PIXELS, code)
                           : LoadBytes(bytes, LOAD_PIXELS, code),
                kOk);
      ExpectImage();
      EXPECT_EQ(ReadEncoding(), static_cast<std::int32_t>(encoding));
      EXPECT_EQ(FirstTag(), "0010,0010");
      EXPECT_FALSE(HasMark());
      EXPECT_EQ(BytesRead(), static_cast<double>(bytes.size()));
      EXPECT_EQ(EndOf(file_), (Met{READ_TO_THE_END, 0, 0, 0}));
    }
  }
}

TEST_F(FileLoading, GoesAsFarAsTheBytesDoAndSaysWhereTheyEnd) {
  const Bytes dataSet = ImageIn(Encoding::kExplicitLittle);
  Bytes bytes = FileOf(Encoding::kExplicitLittle, dataSet);
  const double pixels = static_cast<double>(bytes.size()) - 16;
  bytes.pop_back();
  for (int way = 0; way < 2; ++way) {
    ASSERT_EQ(
        way == 0 ? file_->LoadFile(FileWith(bytes), LOAD_PIXELS, ENCODING_NONE) : LoadBytes(bytes),
        kOk);
    EXPECT_EQ(Text(object_, 0x0010, 0x0010), "Doe^John");
    EXPECT_FALSE(StoredIn(file_, 0x7FE0, 0x0010).found.IsTrue());
    EXPECT_EQ(EndOf(file_), (Met{READ_CUT_ELEMENT, pixels, 0x7FE0, 0x0010}));
  }
}

TEST_F(FileLoading, SaysWhereSequencesBecomeTooDeep) {
  constexpr int kDeepest = 256;
  DataSetBuilder deep(Encoding::kExplicitLittle);
  for (int level = 0; level <= kDeepest; ++level)
    deep.Head(0x0040, 0xA730, "SQ", 0xFFFFFFFF).Item(0xFFFFFFFF);
  EXPECT_FAILS_WITH(LoadBytes(deep), "Sequences are nested too deeply");
  // The heads of a sequence and of an item take 12 and 8 bytes; the last sequence is the one too many.
  EXPECT_EQ(EndOf(file_), (Met{READ_TOO_DEEP, kDeepest * 20 + 12, 0, 0}));
  EXPECT_FAILS_WITH(object_->Save(folder_.File("out")), "Empty object");
}

TEST_F(FileLoading, TurnsWhatABigEndianFileHoldsBeforeAStrayDelimiter) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    DataSetBuilder image(encoding);
    image.Number(0x0028, 0x0010, 512).EndSequence().Number(0x0028, 0x0011, 256);
    const Bytes bytes = FileOf(encoding, image);
    for (int way = 0; way < 2; ++way) {
      ASSERT_EQ(way == 0 ? object_->Load(FileWith(bytes), true) : LoadBytes(bytes), kOk);
      EXPECT_EQ(Get(object_, 0x0028, 0x0010).AsLong(), 512);
      EXPECT_EQ(OddityOf(file_, 0).what, ODDITY_STRAY_DELIMITER);
    }
    // One encoding counts for all of a bare data set.
    ASSERT_EQ(LoadBytes(image, LOAD_PIXELS, CodeOf(encoding)), kOk);
    EXPECT_EQ(Get(object_, 0x0028, 0x0010).AsLong(), 512);
    EXPECT_EQ(Get(object_, 0x0028, 0x0011).AsLong(), 256);
  }
}

TEST_F(FileLoading, HasNoEncodingWithoutAByteToReadIt) {
  for (const Bytes& bytes : {Bytes(), Preamble()}) {
    for (int way = 0; way < 2; ++way) {
      ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
      ASSERT_EQ(way == 0 ? file_->LoadFile(FileWith(bytes), 0, ENCODING_NONE) : LoadBytes(bytes),
                kOk);
      EXPECT_EQ(ReadEncoding(), ENCODING_NONE);
      EXPECT_EQ(HasMark(), !bytes.empty());
      EXPECT_EQ(BytesRead(), static_cast<double>(bytes.size()));
    }
  }
  EXPECT_FAILS_WITH(file_->LoadFile(folder_.Path().string(), 0, ENCODING_NONE), "Is a directory");
  EXPECT_EQ(ReadEncoding(), ENCODING_NONE);
}

TEST_F(FileLoading, SaysWhatTheMetaHeaderStatesOfItsLength) {
  const Bytes image = ImageIn(Encoding::kExplicitLittle);
  const Bytes uid = Evened("1.2.840.10008.1.2.1");
  const Bytes syntax =
      DataSetBuilder(Encoding::kExplicitLittle).Element(0x0002, 0x0010, "UI", uid).Done();
  const auto counted = static_cast<double>(syntax.size());
  double stated = -7;
  double found = -7;
  VariantBool known;
  for (const std::uint32_t length : {28u, 36u}) {
    ASSERT_EQ(LoadBytes(Joined({Preamble(), MetaGroupOf(syntax, length), image})), kOk);
    ASSERT_EQ(file_->GetMetaLength(&stated, &found, &known), kOk);
    EXPECT_TRUE(known.IsTrue());
    EXPECT_EQ(stated, length);
    // A head of 8 bytes and 20 characters.
    EXPECT_EQ(counted, 28);
    EXPECT_EQ(found, 28);
    EXPECT_EQ(NamedSyntax(), "1.2.840.10008.1.2.1");
  }
  ASSERT_EQ(LoadBytes(image), kOk);
  stated = found = -7;
  ASSERT_EQ(file_->GetMetaLength(&stated, &found, &known), kOk);
  EXPECT_FALSE(known.IsTrue());
  EXPECT_EQ(stated, -7);
  EXPECT_EQ(found, -7);
}

TEST_F(FileLoading, NamesASyntaxThatItDoesNotKnow) {
  const Bytes syntax =
      DataSetBuilder(Encoding::kExplicitLittle).Element(0x0002, 0x0010, "UI", "1.2.3.4.");
  const Bytes image = ImageIn(Encoding::kExplicitLittle);
  const Bytes head = Joined({Preamble(), MetaGroupOf(syntax, 16)});
  ASSERT_EQ(LoadBytes(Joined({head, image})), kOk);
  EXPECT_EQ(NamedSyntax(), "1.2.3.4.");
  EXPECT_EQ(EndOf(file_).what, READ_UNKNOWN_SYNTAX);
  EXPECT_EQ(EndOf(file_).offset, static_cast<double>(head.size()));
  EXPECT_FALSE(StoredIn(file_, 0x0010, 0x0010).found.IsTrue());
}

TEST_F(FileLoading, TellsOddities) {
  DataSetBuilder twice(Encoding::kExplicitLittle);
  twice.Element(0x0010, 0x0020, "LO", "first ").Element(0x0010, 0x0020, "LO", "second");
  twice.EndSequence();
  twice.Element(0x0010, 0x0040, "CS", "F ");
  ASSERT_EQ(LoadBytes(twice), kOk);
  EXPECT_EQ(Text(object_, 0x0010, 0x0020), "second");
  EXPECT_EQ(Text(object_, 0x0010, 0x0040), "F");
  ASSERT_EQ(OdditiesCount(), 2);
  EXPECT_EQ(OddityOf(file_, 0), (Met{ODDITY_TWICE, 14, 0x0010, 0x0020}));
  EXPECT_EQ(OddityOf(file_, 1), (Met{ODDITY_STRAY_DELIMITER, 28, 0xFFFE, 0xE0DD}));
  for (const std::int32_t index : {2, -1, 2147483647})
    EXPECT_EQ(OddityOf(file_, index), (Met{ODDITY_NONE, -7, -7, -7}));
  // The next load starts without them.
  ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
  EXPECT_EQ(OdditiesCount(), 0);
}

TEST_F(FileLoading, LeavesNotesBehindTheOldLoadToo) {
  const Bytes bytes = FileOf(Encoding::kExplicitBig, ImageIn(Encoding::kExplicitBig));
  ASSERT_EQ(object_->Load(FileWith(bytes), false), kOk);
  EXPECT_EQ(ReadEncoding(), ENCODING_EXPLICIT_BIG);
  EXPECT_EQ(EndOf(file_).what, READ_TO_PIXELS);
  EXPECT_TRUE(HasMark());
  // What is done to the data set does not change them; they are not those of a copy.
  ASSERT_EQ(object_->Clear(), kOk);
  EXPECT_EQ(ReadEncoding(), ENCODING_EXPLICIT_BIG);
  Ref<IDCMObject> copy;
  ASSERT_EQ(object_->copy(copy.Receive()), kOk);
  auto code = static_cast<_EnumDataEncoding>(-7);
  ASSERT_EQ(FileFacetOf(copy)->get_ReadEncoding(&code), kOk);
  EXPECT_EQ(code, ENCODING_NONE);
}

TEST_F(FileLoading, KeepsCompressedPixelsAsTheyAre) {
  DataSetBuilder image(Encoding::kExplicitLittle);
  image.Element(0x0010, 0x0010, "PN", "A ").Fragments({{}, {1, 2, 3, 4}});
  const Bytes syntax = DataSetBuilder(Encoding::kExplicitLittle)
                           .Element(0x0002, 0x0010, "UI", Evened("1.2.840.10008.1.2.4.50"));
  ASSERT_EQ(LoadBytes(Joined({Preamble(), MetaGroupOf(syntax, 30), image})), kOk);
  const Stored pixels = StoredIn(file_, 0x7FE0, 0x0010);
  EXPECT_EQ(pixels.items, 2);
  EXPECT_FALSE(pixels.hasValue.IsTrue());
  // The fragment has no type, and is given none by being looked at.
  const Ref<IDCMObject> fragment = ItemOf(object_, 0x7FE0, 0x0010, 1);
  for (int time = 0; time < 2; ++time) {
    const Stored inside = StoredIn(FileFacetOf(fragment), 0xFFFE, 0xE000);
    EXPECT_EQ(inside.type, "");
    EXPECT_EQ(inside.length, 4);
  }
}

TEST_F(FileLoading, ReadsADescriptorFromWhereItStandsAndLeavesItOpen) {
  const Bytes bytes = FileOf(Encoding::kExplicitLittle, ImageIn(Encoding::kExplicitLittle));
  const MemoryFile memory(Joined({Bytes{1, 2, 3}, bytes}));
  ASSERT_EQ(::lseek(memory.Descriptor(), 3, SEEK_SET), 3);
  ASSERT_EQ(file_->LoadDescriptor(memory.Descriptor(), LOAD_PIXELS, ENCODING_NONE), kOk);
  ExpectImage();
  EXPECT_NE(::fcntl(memory.Descriptor(), F_GETFD), -1);
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(::write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  ::close(ends[1]);
  ASSERT_EQ(object_->Clear(), kOk);
  ASSERT_EQ(file_->LoadDescriptor(ends[0], LOAD_PIXELS, ENCODING_NONE), kOk);
  ExpectImage();
  ::close(ends[0]);
  EXPECT_FAILS_WITH(file_->LoadDescriptor(ends[0], LOAD_PIXELS, ENCODING_NONE),
                    "Bad file descriptor");
}

TEST_F(FileLoading, FailsWithTheWordsOfTheSystem) {
  ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
  EXPECT_FAILS_WITH(file_->LoadFile(folder_.File("none"), 0, ENCODING_NONE),
                    "No such file or directory");
  String words;
  ASSERT_EQ(file_->get_SystemError(&words), kOk);
  EXPECT_EQ(words.Utf8(), "No such file or directory");
  EXPECT_EQ(ReadEncoding(), ENCODING_NONE);
  EXPECT_EQ(FirstTag(), "none");
  // There is no data set any more.
  EXPECT_FAILS_WITH(object_->Save(folder_.File("out")), "Empty object");
  // A path that is refused is a load too: nothing stays of the one before.
  const String noPath(std::string_view("a\0b", 3));
  for (int way = 0; way < 2; ++way) {
    ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
    EXPECT_FAILS_WITH(
        way == 0 ? file_->LoadFile(noPath, 0, ENCODING_NONE) : object_->Load(noPath, false),
        "Invalid argument");
    EXPECT_EQ(ReadEncoding(), ENCODING_NONE);
    EXPECT_FAILS_WITH(object_->Save(folder_.File("out")), "Empty object");
  }
  ASSERT_EQ(file_->LoadBytes(Variant(), LOAD_PIXELS, ENCODING_NONE), kOk);
  ASSERT_EQ(file_->get_SystemError(&words), kOk);
  EXPECT_EQ(words.Utf8(), "");
  EXPECT_EQ(BytesRead(), 0);
}

TEST_F(FileLoading, RefusesWhatItDoesNotKnowWithNothingChanged) {
  ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
  const Variant bytes = BytesVariant(ImageIn(Encoding::kExplicitLittle));
  const std::string path = FileWith(ImageIn(Encoding::kExplicitLittle));
  for (const std::int32_t options : {8, -1, 8 + LOAD_PIXELS, LOAD_SKIPS_PIXELS + LOAD_PIXELS}) {
    EXPECT_EQ(file_->LoadBytes(bytes, options, ENCODING_NONE), kInvalidArgument);
    EXPECT_EQ(file_->LoadFile(path, options, ENCODING_NONE), kInvalidArgument);
    EXPECT_EQ(file_->LoadDescriptor(0, options, ENCODING_NONE), kInvalidArgument);
  }
  for (const int code : {1, 99, 103, -1})
    EXPECT_EQ(file_->LoadBytes(bytes, 0, static_cast<_EnumDataEncoding>(code)), kInvalidArgument);
  EXPECT_EQ(file_->LoadBytes(bytes, LOAD_STRICT, ENCODING_EXPLICIT_LITTLE), kInvalidArgument);
  EXPECT_EQ(file_->LoadBytes(Variant("text"), 0, ENCODING_NONE), kTypeMismatch);
  EXPECT_EQ(file_->LoadBytes(Variant(VariantArray(VariantType::kShort, 3)), 0, ENCODING_NONE),
            kTypeMismatch);
  ExpectImage();
  EXPECT_EQ(ReadEncoding(), ENCODING_EXPLICIT_LITTLE);
}

TEST_F(FileLoading, RefusesMoreBytesThanItCanCountWithNothingChanged) {
  constexpr std::uint32_t kOneTooMany = 1u << 31;
  const auto pages = static_cast<std::uint64_t>(::sysconf(_SC_AVPHYS_PAGES));
  const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  if (kInstrumented || pages * pageSize < std::uint64_t{2} * kOneTooMany)
    GTEST_SKIP() << "2 GiB of memory are too much here";
  Variant bytes;
  try {
    bytes = VariantArray(VariantType::kByte, kOneTooMany);
  } catch (const std::bad_alloc&) {
    GTEST_SKIP() << "2 GiB of memory are not to be had";
  }
  ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
  EXPECT_EQ(file_->LoadBytes(bytes, LOAD_PIXELS, ENCODING_NONE), kTypeMismatch);
  ExpectImage();
  EXPECT_EQ(ReadEncoding(), ENCODING_EXPLICIT_LITTLE);
}

TEST_F(FileLoading, RefusesNullPointers) {
  std::int32_t number = 0;
  double offset = 0;
  VariantBool flag;
  auto end = READ_TO_THE_END;
  auto kind = ODDITY_NONE;
  EXPECT_EQ(file_->get_ReadEncoding(nullptr), kPointer);
  EXPECT_EQ(file_->get_HasMark(nullptr), kPointer);
  EXPECT_EQ(file_->get_BytesRead(nullptr), kPointer);
  EXPECT_EQ(file_->get_NamedSyntax(nullptr), kPointer);
  EXPECT_EQ(file_->get_SystemError(nullptr), kPointer);
  EXPECT_EQ(file_->get_OdditiesCount(nullptr), kPointer);
  EXPECT_EQ(file_->GetFirstTag(nullptr, &number, &flag), kPointer);
  EXPECT_EQ(file_->GetFirstTag(&number, nullptr, &flag), kPointer);
  EXPECT_EQ(file_->GetFirstTag(&number, &number, nullptr), kPointer);
  EXPECT_EQ(file_->GetMetaLength(nullptr, &offset, &flag), kPointer);
  EXPECT_EQ(file_->GetMetaLength(&offset, nullptr, &flag), kPointer);
  EXPECT_EQ(file_->GetMetaLength(&offset, &offset, nullptr), kPointer);
  EXPECT_EQ(file_->GetEnd(nullptr, &number, &number, &end), kPointer);
  EXPECT_EQ(file_->GetEnd(&offset, nullptr, &number, &end), kPointer);
  EXPECT_EQ(file_->GetEnd(&offset, &number, nullptr, &end), kPointer);
  EXPECT_EQ(file_->GetEnd(&offset, &number, &number, nullptr), kPointer);
  EXPECT_EQ(file_->GetOddity(0, nullptr, &number, &number, &kind), kPointer);
  EXPECT_EQ(file_->GetOddity(0, &offset, nullptr, &number, &kind), kPointer);
  EXPECT_EQ(file_->GetOddity(0, &offset, &number, nullptr, &kind), kPointer);
  EXPECT_EQ(file_->GetOddity(0, &offset, &number, &number, nullptr), kPointer);
}

TEST_F(FileLoading, IsThereByName) {
  const auto call = [&](const char* name, MemberKind kind, std::vector<Variant>& arguments) {
    return CallNamed(*file_.Get(), name, kind, arguments);
  };
  const Bytes bytes = FileOf(Encoding::kExplicitBig, ImageIn(Encoding::kExplicitBig));
  std::vector<Variant> none;
  // Options may be left away: no pixels then.
  std::vector<Variant> given{BytesVariant(bytes)};
  call("LoadBytes", MemberKind::kMethod, given);
  EXPECT_EQ(call("ReadEncoding", MemberKind::kGet, none).AsLong(), 102);
  EXPECT_TRUE(call("HasMark", MemberKind::kGet, none).AsBool().IsTrue());
  EXPECT_EQ(call("NamedSyntax", MemberKind::kGet, none).ToString().Utf8(), "1.2.840.10008.1.2.2");
  std::vector<Variant> place(3);
  EXPECT_EQ(call("GetEnd", MemberKind::kMethod, place).AsLong(), 5);
  EXPECT_EQ(place[0].AsDouble(), static_cast<double>(bytes.size()) - 16);
  EXPECT_EQ(place[1].AsLong(), 0x7FE0);
  EXPECT_EQ(place[2].AsLong(), 0x0010);
  given = {FileWith(bytes), 1};
  call("LoadFile", MemberKind::kMethod, given);
  EXPECT_EQ(call("BytesRead", MemberKind::kGet, none).AsDouble(),
            static_cast<double>(bytes.size()));
  EXPECT_EQ(call("OdditiesCount", MemberKind::kGet, none).AsLong(), 0);
}

TEST_F(FileLoading, SaysWhenMemoryEnds) {
  const Bytes bytes =
      FileOf(Encoding::kExplicitLittle, LongImageIn(Encoding::kExplicitLittle, 5000));
  const Variant given = BytesVariant(bytes);
  const String path(FileWith(bytes));
  const MemoryFile memory(bytes);
  for (const _EnumDataEncoding encoding : {ENCODING_NONE, ENCODING_EXPLICIT_LITTLE}) {
    for (int way = 0; way < 6; ++way) {
      SCOPED_TRACE(way);
      const std::int32_t options = way < 3 ? LOAD_PIXELS : LOAD_SKIPS_PIXELS;
      std::uint64_t failures = 0;
      FailEveryAllocation([&] {
        ASSERT_EQ(::lseek(memory.Descriptor(), 0, SEEK_SET), 0);
        const Status status = way % 3 == 0 ? file_->LoadBytes(given, options, encoding)
                              : way % 3 == 1
                                  ? file_->LoadFile(path, options, encoding)
                                  : file_->LoadDescriptor(memory.Descriptor(), options, encoding);
        if (status == kOk) return;
        ++failures;
        // A stream that has no memory for itself has the words of the system.
        const bool isOfSystem =
            status == kException && LastError().text == "Cannot allocate memory";
        EXPECT_TRUE(isOfSystem || status == kOutOfMemory) << LastError().text;
      });
      EXPECT_GT(failures, 0u);
    }
  }
  ASSERT_EQ(LoadBytes(ImageIn(Encoding::kExplicitLittle)), kOk);
  ExpectImage();
}

}  // namespace
}  // namespace tessaret::test
