// Loading files and blocks of memory.
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "platform/file_calls.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr const char* kNoMark = "Error checking DICOM MetaHeader";
constexpr const char* kParseError = "Error parsing DICOM Object";

Bytes PatientIn(Encoding encoding) {
  return DataSetBuilder(encoding)
      .Element(0x0008, 0x0060, "CS", "MR")
      .Element(0x0010, 0x0010, "PN", "A ");
}

/// What came of a load.
struct Loaded {
  std::unique_ptr<DICOMDataObject> object;
  std::optional<std::string> error;
  ParseStop stop;
};

struct LoadHow {
  bool loadPixels = true;
  bool strict = false;
};

Loaded LoadMemory(const Bytes& bytes, const LoadHow& how = {}) {
  DataSetCoder coder;
  Loaded loaded;
  loaded.object = coder.LoadMemory(bytes.data(), bytes.size(), how.loadPixels, how.strict);
  loaded.error = ErrorOf(coder);
  loaded.stop = coder.LastStop();
  return loaded;
}

class LoadFile : public ::testing::Test {
 protected:
  Loaded LoadPath(const char* path, const LoadHow& how = {}, FileBuffer* buffer = nullptr) {
    DataSetCoder coder;
    Loaded loaded;
    loaded.object = coder.LoadFile(path, how.loadPixels, how.strict, buffer);
    loaded.error = ErrorOf(coder);
    loaded.stop = coder.LastStop();
    return loaded;
  }
  Loaded Load(const Bytes& bytes, const LoadHow& how = {}, FileBuffer* buffer = nullptr) {
    WriteBytes(Path(), bytes);
    return LoadPath(Path().c_str(), how, buffer);
  }
  std::string Path() const { return folder_.File("file.dcm"); }

  TempFolder folder_;
};

TEST_F(LoadFile, ReadsAFileInEachEncoding) {
  for (const Encoding encoding : kAllEncodings) {
    for (const bool strict : {false, true}) {
      const Loaded loaded = Load(FileOf(encoding, PatientIn(encoding)), {.strict = strict});
      ASSERT_NE(loaded.object, nullptr);
      EXPECT_EQ(loaded.error, std::nullopt);
      EXPECT_EQ(loaded.stop.why, Why::kNone);
      EXPECT_EQ(TagsOf(*loaded.object),
                "(0002,0000) (0002,0001) (0002,0010) (0002,0012) (0008,0060) (0010,0010)");
      EXPECT_EQ(ValueText(At(*loaded.object, 0x0010, 0x0010)), "A ");
      // Positions count from the start of the file.
      EXPECT_EQ(At(*loaded.object, 0x0002, 0x0000).StreamPosition, 132u);
      EXPECT_EQ(At(*loaded.object, 0x0008, 0x0060).StreamPosition,
                132 + MetaGroup(SyntaxUidOf(encoding)).size());
    }
  }
}

TEST_F(LoadFile, ReadsAMetaGroupInTheFormOfItsSixthByte) {
  // Against the standard it is implicit here: (0002,0000) of 4 bytes with 26 behind it, (0002,0010) of 18.
  for (const Encoding encoding : kAllEncodings) {
    const std::string syntax = TextOf(Evened(SyntaxUidOf(encoding)));
    const auto size = static_cast<std::uint32_t>(8 + syntax.size() + 10);
    const Bytes meta = DataSetBuilder(kImplicit)
                           .Head(0x0002, 0x0000, "UL", 4)
                           .U32(size)
                           .Element(0x0002, 0x0010, "UI", syntax)
                           .Element(0x0002, 0x0012, "UI", "1.");
    const Bytes bytes = Joined({Preamble(), meta, PatientIn(encoding)});
    for (const Loaded& loaded : {Load(bytes, {.strict = true}), LoadMemory(bytes)}) {
      ASSERT_NE(loaded.object, nullptr);
      EXPECT_EQ(TagsOf(*loaded.object),
                "(0002,0000) (0002,0010) (0002,0012) (0008,0060) (0010,0010)");
      EXPECT_EQ(ValueText(At(*loaded.object, 0x0010, 0x0010)), "A ");
    }
  }
}

TEST_F(LoadFile, PositionsGoOnBehindLargeValues) {
  DataSetBuilder data(kExplicit);
  std::vector<std::uint32_t> starts;
  for (std::uint16_t element = 1; element <= 4; ++element) {
    starts.push_back(static_cast<std::uint32_t>(data.Size()));
    data.Element(0x0011, element, "OB", Pattern(element * 70'001u));
    starts.push_back(static_cast<std::uint32_t>(data.Size()));
    data.Element(0x0011, static_cast<std::uint16_t>(element + 0x10), "LO", "x ");
  }
  // The elements do not stand in the order of their tags.
  const Loaded loaded = Load(data);
  ASSERT_NE(loaded.object, nullptr);
  for (std::uint16_t element = 1; element <= 4; ++element) {
    EXPECT_EQ(At(*loaded.object, 0x0011, element).StreamPosition, starts[(element - 1u) * 2]);
    const auto small = static_cast<std::uint16_t>(element + 0x10);
    EXPECT_EQ(At(*loaded.object, 0x0011, small).StreamPosition, starts[(element - 1u) * 2 + 1]);
    EXPECT_EQ(ValueText(At(*loaded.object, 0x0011, element)), TextOf(Pattern(element * 70'001u)));
  }
}

TEST_F(LoadFile, WhatThePreambleHoldsDoesNotMatter) {
  for (const std::uint8_t filling : Bytes{0x00, 0x41, 0xFF}) {
    const Bytes bytes = Joined({Bytes(128, filling), BytesOf("DICM"),
                                MetaGroup(SyntaxUidOf(kExplicit)), PatientIn(kExplicit)});
    EXPECT_EQ(CountOf(*Load(bytes, {.strict = true}).object), 6u);
  }
}

TEST_F(LoadFile, AMissingFileHasTheWordsOfTheSystem) {
  const Loaded loaded = LoadPath(folder_.File("nowhere.dcm").c_str());
  EXPECT_EQ(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, SystemErrorText(ENOENT));
}

TEST_F(LoadFile, ANullPathIsAnErrorWithWords) {
  const Loaded loaded = LoadPath(nullptr);
  EXPECT_EQ(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, SystemErrorText(EINVAL));
}

TEST_F(LoadFile, ADirectoryHasTheWordsOfTheSystem) {
  for (const bool strict : {false, true}) {
    const Loaded loaded = LoadPath(folder_.Path().c_str(), {.strict = strict});
    EXPECT_EQ(loaded.object, nullptr);
    EXPECT_EQ(loaded.error, strict ? kNoMark : SystemErrorText(EISDIR));
  }
}

TEST_F(LoadFile, EachLoadForgetsTheErrorBeforeIt) {
  WriteBytes(Path(), FileOf(kExplicit, PatientIn(kExplicit)));
  DataSetCoder coder;
  EXPECT_EQ(coder.LoadFile(folder_.File("nowhere.dcm").c_str(), true, false), nullptr);
  EXPECT_NE(coder.ErrorText(), nullptr);
  EXPECT_NE(coder.LoadFile(Path().c_str(), true, false), nullptr);
  EXPECT_EQ(coder.ErrorText(), nullptr);
  EXPECT_TRUE(coder.FileMode);
}

TEST_F(LoadFile, EachLoadForgetsHowTheOneBeforeItEnded) {
  const Bytes whole = FileOf(kExplicit, PatientIn(kExplicit));
  const Bytes cut(whole.begin(), whole.end() - 1);
  WriteBytes(Path(), cut);
  DataSetCoder coder;
  EXPECT_NE(coder.LoadFile(Path().c_str(), true, true), nullptr);
  EXPECT_EQ(coder.LastStop().why, Why::kTruncated);
  // Neither of these comes to a parse.
  EXPECT_EQ(coder.LoadFile(folder_.File("nowhere.dcm").c_str(), true, true), nullptr);
  EXPECT_EQ(coder.LastStop(), ParseStop());
  EXPECT_EQ(coder.LoadMemory(cut.data(), cut.size(), true, true), nullptr);
  EXPECT_EQ(coder.LastStop().why, Why::kTruncated);
  EXPECT_EQ(coder.LoadMemory(nullptr, 100, true, true), nullptr);
  EXPECT_EQ(coder.LastStop(), ParseStop());
}

// Files without the mark.

TEST_F(LoadFile, StrictRefusesAFileWithoutTheMark) {
  for (const Bytes& bytes :
       {Bytes(), Bytes(131, 0), Bytes(132, 0), PatientIn(kExplicit),
        Joined({Bytes(128, 0), BytesOf("DICOM")}), Joined({Bytes(128, 0), BytesOf("dicm")}),
        Joined({Bytes(127, 0), BytesOf("DICM")})}) {
    const Loaded loaded = Load(bytes, {.strict = true});
    EXPECT_EQ(loaded.object, nullptr);
    EXPECT_EQ(loaded.error, kNoMark);
    EXPECT_EQ(LoadMemory(bytes, {.strict = true}).error, kNoMark);
    EXPECT_EQ(LoadMemory(bytes, {.strict = true}).object, nullptr);
  }
}

TEST_F(LoadFile, ReadsAFileWithoutPreambleFromItsStartInTheFormOfItsSixthByte) {
  for (const Encoding encoding : {kImplicit, kExplicit}) {
    const Loaded loaded = Load(PatientIn(encoding));
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(TagsOf(*loaded.object), "(0008,0060) (0010,0010)");
    EXPECT_EQ(At(*loaded.object, 0x0008, 0x0060).StreamPosition, 0u);
    EXPECT_EQ(At(*loaded.object, 0x0008, 0x0060).TypeCode,
              encoding == kExplicit ? type_code::CS : type_code::kNone);
  }
}

TEST_F(LoadFile, ReadsAMetaGroupWithoutPreamble) {
  const Loaded loaded = Load(Joined({MetaGroup(SyntaxUidOf(kImplicit)), PatientIn(kImplicit)}));
  EXPECT_EQ(ValueText(At(*loaded.object, 0x0010, 0x0010)), "A ");
}

/// A stream of one element (0010,0010) whose sixth byte is `sixth`; 255 bytes and more follow.
Bytes WithSixthByte(std::uint8_t sixth) {
  Bytes bytes = {0x10, 0x00, 0x10, 0x00, 0x00, sixth, 0x00, 0x00};
  bytes.resize(8 + (std::size_t{sixth} << 8), 'x');
  return bytes;
}

TEST_F(LoadFile, TakesASixthByteAboveTenForALetter) {
  // 10 is the length of an implicit element: 10 * 256 bytes. 11 is a letter: the element has a length of 0.
  const Loaded implicit = Load(WithSixthByte(10));
  EXPECT_EQ(At(*implicit.object, 0x0010, 0x0010).Length, 2560u);
  const Loaded taken = Load(WithSixthByte(11));
  EXPECT_EQ(At(*taken.object, 0x0010, 0x0010).Length, 0u);
  EXPECT_EQ(At(*taken.object, 0x0010, 0x0010).TypeCode, 11);
  // From 128 on it is negative, and so not above 10.
  EXPECT_EQ(At(*Load(WithSixthByte(127)).object, 0x0010, 0x0010).Length, 0u);
  EXPECT_EQ(At(*Load(WithSixthByte(128)).object, 0x0010, 0x0010).Length, 32768u);
  EXPECT_EQ(At(*Load(WithSixthByte(255)).object, 0x0010, 0x0010).Length, 65280u);
  for (const std::uint8_t sixth : Bytes{10, 11, 127, 128, 255}) {
    const Loaded memory = LoadMemory(WithSixthByte(sixth));
    EXPECT_EQ(memory.object != nullptr, sixth == 10 || sixth > 127) << int{sixth};
  }
}

TEST_F(LoadFile, AnEmptyOrTinyFileIsAnEmptyObject) {
  for (std::size_t size = 0; size < 8; ++size) {
    const Loaded loaded = Load(Bytes(size, 0x01));
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_TRUE(loaded.object->IsEmpty());
    EXPECT_EQ(loaded.error, std::nullopt);
    EXPECT_EQ(loaded.stop.why, size == 0 ? Why::kNone : Why::kTruncated);
    EXPECT_EQ(LoadMemory(Bytes(size, 0x01)).object != nullptr, size == 0);
  }
}

TEST_F(LoadFile, APreambleAloneIsAnEmptyObject) {
  const Loaded loaded = Load(Preamble(), {.strict = true});
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_TRUE(loaded.object->IsEmpty());
  EXPECT_TRUE(LoadMemory(Preamble(), {.strict = true}).object->IsEmpty());
}

// Files that end early or make no sense.

TEST_F(LoadFile, ATruncatedFileIsWhatCouldBeReadOfIt) {
  const Bytes whole = FileOf(kExplicit, DataSetBuilder(kExplicit)
                                            .Raw(PatientIn(kExplicit))
                                            .Element(0x7FE0, 0x0010, "OW", Pattern(100)));
  const Loaded loaded = Load(Bytes(whole.begin(), whole.end() - 1));
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, std::nullopt);
  EXPECT_EQ(TagsOf(*loaded.object),
            "(0002,0000) (0002,0001) (0002,0010) (0002,0012) (0008,0060) (0010,0010)");
  EXPECT_EQ(loaded.stop, (ParseStop{Why::kTruncated, whole.size() - 112, 0x7FE0, 0x0010}));
}

TEST_F(LoadFile, ATruncatedBlockFails) {
  const Bytes whole = FileOf(kExplicit, PatientIn(kExplicit));
  const Loaded loaded = LoadMemory(Bytes(whole.begin(), whole.end() - 1));
  EXPECT_EQ(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, kParseError);
  EXPECT_EQ(loaded.stop.why, Why::kTruncated);
}

TEST_F(LoadFile, AnUnknownSyntaxGivesTheMetaGroupAlone) {
  const Bytes bytes = Joined({Preamble(), MetaGroup("1.2.3"), PatientIn(kExplicit)});
  const Loaded loaded = Load(bytes);
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, std::nullopt);
  EXPECT_EQ(TagsOf(*loaded.object), "(0002,0000) (0002,0001) (0002,0010) (0002,0012)");
  EXPECT_EQ(loaded.stop.why, Why::kUnknownSyntax);
  EXPECT_EQ(LoadMemory(bytes).error, kParseError);
}

TEST_F(LoadFile, SequencesNestedTooDeeplyFailWithWords) {
  Bytes inside;
  for (int level = 0; level < 257; ++level) {
    inside = DataSetBuilder(kExplicit).Sequence(0x0008, 0x1140, Lengths::kUndefined,
                                                Lengths::kUndefined, {inside});
  }
  for (const Loaded& loaded : {Load(inside), LoadMemory(inside)}) {
    EXPECT_EQ(loaded.object, nullptr);
    EXPECT_EQ(loaded.error, "Sequences are nested too deeply");
    EXPECT_EQ(loaded.stop.why, Why::kTooDeep);
  }
}

TEST_F(LoadFile, GoesOnBehindAStrayDelimiterAsIfAtTheStart) {
  // The parse ends with success there, the file has not ended: the rest is read in the form of the first byte behind the
  // preamble, with a meta group in it or not.
  const Bytes stray = DataSetBuilder(kExplicit).EndItem();
  const Bytes rest = DataSetBuilder(kExplicit).Element(0x0010, 0x0020, "LO", "B ");
  const Bytes bytes = Joined({FileOf(kExplicit, PatientIn(kExplicit)), stray, rest, stray});
  // All of it waits in chunks of this one when the first parse ends, with nothing more to come from the file.
  PlainFileBuffer plain;
  for (FileBuffer* buffer : {static_cast<FileBuffer*>(nullptr), static_cast<FileBuffer*>(&plain)}) {
    const Loaded loaded = Load(bytes, {}, buffer);
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(ValueText(At(*loaded.object, 0x0010, 0x0020)), "B ");
    EXPECT_EQ(loaded.stop.why, Why::kNone);
  }
}

TEST_F(LoadFile, ABlockIsReadUpToAStrayDelimiter) {
  const Bytes stray = DataSetBuilder(kExplicit).EndItem();
  const Loaded loaded =
      LoadMemory(Joined({PatientIn(kExplicit), stray,
                         DataSetBuilder(kExplicit).Element(0x0010, 0x0020, "LO", "B ")}));
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(TagsOf(*loaded.object), "(0008,0060) (0010,0010)");
}

// Pixel data that is not wanted.

TEST_F(LoadFile, WithoutPixelsEverythingBeforeThemIsThere) {
  const Bytes data = DataSetBuilder(kExplicit)
                         .Raw(PatientIn(kExplicit))
                         .Element(0x7FE0, 0x0010, "OW", Pattern(100000))
                         .Element(0xFFFC, 0xFFFC, "OB", "x ");
  const Loaded loaded = Load(FileOf(kExplicit, data), {.loadPixels = false});
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, std::nullopt);
  EXPECT_EQ(loaded.stop.why, Why::kPixelData);
  EXPECT_EQ(At(*loaded.object, 0x7FE0, 0x0010).Length, 100000u);
  EXPECT_EQ(At(*loaded.object, 0x7FE0, 0x0010).Data, nullptr);
  EXPECT_EQ(loaded.object->GetVR(0xFFFC, 0xFFFC), nullptr);
}

TEST_F(LoadFile, ABlockWhosePixelsAreNotWantedFails) {
  const Bytes data = DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, "OW", Pattern(10));
  const Loaded loaded = LoadMemory(FileOf(kExplicit, data), {.loadPixels = false});
  EXPECT_EQ(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, kParseError);
  EXPECT_EQ(loaded.stop.why, Why::kPixelData);
}

TEST_F(LoadFile, WithoutPixelsALongFileIsHardlyRead) {
  const Bytes data = DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, "OW", Bytes(10 << 20, 1));
  WriteBytes(Path(), FileOf(kExplicit, data));
  FileFailure watch;
  ASSERT_NE(LoadPath(Path().c_str(), {.loadPixels = false}).object, nullptr);
  EXPECT_LE(watch.Calls(FileCall::kRead), 2);
}

// Streams of the caller.

TEST_F(LoadFile, UsesTheStreamThatItIsGivenAndLeavesItOpen) {
  class Watching : public FileBuffer {
   public:
    bool OpenForRead(const char* path) override {
      ++opened;
      return FileBuffer::OpenForRead(path);
    }
    int opened = 0;
  } buffer;
  const Bytes bytes = FileOf(kExplicit, PatientIn(kExplicit));
  const Loaded loaded = Load(bytes, {}, &buffer);
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(buffer.opened, 1);
  EXPECT_NE(buffer.Stream, nullptr);
  EXPECT_EQ(buffer.Position, bytes.size());
}

TEST_F(LoadFile, ReadsThroughAnyStream) {
  const Bytes bytes = FileOf(kImplicit, DataSetBuilder(kImplicit)
                                            .Raw(PatientIn(kImplicit))
                                            .Element(0x7FE0, 0x0010, "OW", Pattern(5000)));
  PlainFileBuffer plain;
  DrippingFileBuffer dripping;
  for (FileBuffer* buffer :
       {static_cast<FileBuffer*>(&plain), static_cast<FileBuffer*>(&dripping)}) {
    const Loaded loaded = Load(bytes, {.strict = true}, buffer);
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(ValueText(At(*loaded.object, 0x7FE0, 0x0010)), TextOf(Pattern(5000)));
  }
}

TEST_F(LoadFile, OneStreamServesManyLoads) {
  FileBuffer buffer;
  for (const Encoding encoding : {Encoding::kExplicitBig, kImplicit, kExplicit}) {
    const Loaded loaded = Load(FileOf(encoding, PatientIn(encoding)), {}, &buffer);
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(ValueText(At(*loaded.object, 0x0010, 0x0010)), "A ");
    EXPECT_EQ(At(*loaded.object, 0x0002, 0x0000).StreamPosition, 132u);
  }
}

TEST_F(LoadFile, ABigEndianFileKeepsItsNumbersInTheOrderOfTheFile) {
  const Bytes data = DataSetBuilder(Encoding::kExplicitBig).Number(0x0028, 0x0010, 512);
  const Loaded loaded = Load(FileOf(Encoding::kExplicitBig, data));
  EXPECT_EQ(ValueText(At(*loaded.object, 0x0028, 0x0010)), std::string("\x02\x00", 2));
}

TEST_F(LoadFile, AStreamErrorHasTheWordsOfTheSystem) {
  // A large value, so that reads are still to come when the error does.
  const Bytes bytes = FileOf(kExplicit, DataSetBuilder(kExplicit)
                                            .Raw(PatientIn(kExplicit))
                                            .Element(0x7FE0, 0x0010, "OW", Pattern(300000)));
  WriteBytes(Path(), bytes);
  int reads = 0;
  {
    FileFailure watch;
    ASSERT_NE(LoadPath(Path().c_str()).object, nullptr);
    reads = watch.Calls(FileCall::kRead);
  }
  ASSERT_GT(reads, 1);
  for (int nth = 1; nth <= reads; ++nth) {
    FileFailure failure;
    failure.FailCall(FileCall::kRead, nth, EIO);
    const Loaded loaded = LoadPath(Path().c_str());
    EXPECT_EQ(loaded.object, nullptr);
    EXPECT_EQ(loaded.error, SystemErrorText(EIO));
  }
}

TEST_F(LoadFile, WordsOfAParseThatSucceedsEndTheLoadAllTheSame) {
  class Complaining : public DataSetCoder {
   public:
    bool File_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject&, std::int32_t, bool) override {
      std::uint8_t byte = 0;
      buffer.Read8(&byte);
      ++parses;
      SetError("does not please");
      return true;
    }
    int parses = 0;
  } coder;
  WriteBytes(Path(), FileOf(kExplicit, PatientIn(kExplicit)));
  EXPECT_EQ(coder.LoadFile(Path().c_str(), true, true), nullptr);
  EXPECT_STREQ(coder.ErrorText(), "does not please");
  EXPECT_EQ(coder.parses, 1);
}

TEST_F(LoadFile, AStreamThatIsInErrorFromTheStartIsNotParsed) {
  class Broken : public FileBuffer {
   public:
    bool HasError() override { return true; }
    std::string ErrorText() override { return "broken from the start"; }
  } buffer;
  class Counting : public DataSetCoder {
   public:
    bool File_ParseRawVRIntoDCM(Buffer&, DICOMObject&, std::int32_t, bool) override {
      ++parses;
      return true;
    }
    int parses = 0;
  } coder;
  WriteBytes(Path(), FileOf(kExplicit, PatientIn(kExplicit)));
  EXPECT_EQ(coder.LoadFile(Path().c_str(), true, true, &buffer), nullptr);
  EXPECT_STREQ(coder.ErrorText(), "broken from the start");
  EXPECT_EQ(coder.parses, 0);
}

TEST_F(LoadFile, AStreamThatCannotGoBackIsAnErrorAndNotReadFromTheMiddle) {
  class OneWay : public FileBuffer {
   public:
    bool Seek(std::uint64_t offset) override { return offset >= 132 && FileBuffer::Seek(offset); }
  } buffer;
  const Loaded loaded = Load(PatientIn(kExplicit), {}, &buffer);
  EXPECT_EQ(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, kParseError);
}

TEST_F(LoadFile, AnErrorOnTheWayBackHasTheWordsOfTheStream) {
  class Breaking : public FileBuffer {
   public:
    bool Seek(std::uint64_t offset) override {
      broken_ = broken_ || offset < 132;
      return !broken_ && FileBuffer::Seek(offset);
    }
    bool HasError() override { return broken_ || FileBuffer::HasError(); }
    std::string ErrorText() override { return "broken on the way back"; }

   private:
    bool broken_ = false;
  } buffer;
  const Loaded loaded = Load(PatientIn(kExplicit), {}, &buffer);
  EXPECT_EQ(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, "broken on the way back");
}

// Exceptions.

/// Both ways to load give null and the words when the parser of `coder` throws.
void ExpectParseErrors(DataSetCoder& coder, const std::string& path) {
  WriteBytes(path, Preamble());
  EXPECT_EQ(coder.LoadFile(path.c_str(), true, false), nullptr);
  EXPECT_STREQ(coder.ErrorText(), kParseError);
  coder.SetError(nullptr);
  EXPECT_EQ(coder.LoadMemory(nullptr, 0, true, false), nullptr);
  EXPECT_STREQ(coder.ErrorText(), kParseError);
}

TEST_F(LoadFile, AnExceptionOfTheParserIsAnErrorWithWords) {
  class Throwing : public DataSetCoder {
   public:
    bool File_ParseRawVRIntoDCM(Buffer&, DICOMObject& object, std::int32_t, bool) override {
      object.Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
      throw std::runtime_error("in the parser");
    }
  } coder;
  ExpectParseErrors(coder, Path());
}

TEST_F(LoadFile, WhateverIsThrownIsAnErrorWithWords) {
  class Throwing : public DataSetCoder {
   public:
    bool File_ParseRawVRIntoDCM(Buffer&, DICOMObject&, std::int32_t, bool) override {
      throw "in the parser";
    }
    bool AddMetaHeader(DICOMObject&, std::int32_t) override { throw "in the writer"; }
  } coder;
  ExpectParseErrors(coder, Path());
  DICOMObject object;
  EXPECT_FALSE(coder.SaveFile(Path().c_str(), 3, object));
  EXPECT_NE(coder.ErrorText(), nullptr);
  EXPECT_EQ(ReadBytes(Path()), Preamble());
}

TEST_F(LoadFile, AThreadThatIsCancelledWhileItLoadsEnds) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  static std::string path;
  path = "/dev/fd/" + std::to_string(ends[0]);
  pthread_t thread{};
  const auto load = [](void*) -> void* {
    DataSetCoder().LoadFile(path.c_str(), true, false);
    return nullptr;
  };
  ASSERT_EQ(::pthread_create(&thread, nullptr, load, nullptr), 0);
  EXPECT_EQ(::pthread_cancel(thread), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  EXPECT_EQ(answer, PTHREAD_CANCELED);
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST_F(LoadFile, AThreadThatIsCancelledWhenItsFileClosesEndsTheLoadFirst) {
  static std::string path;
  static bool loaded = false;
  path = Path();
  WriteBytes(path, FileOf(kExplicit, PatientIn(kExplicit)));
  FileFailure calls;
  calls.RunBefore(FileCall::kClose, 1, [] { ::pthread_cancel(::pthread_self()); });
  pthread_t thread{};
  const auto load = [](void*) -> void* {
    loaded = DataSetCoder().LoadFile(path.c_str(), true, false) != nullptr;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    return &loaded;
  };
  ASSERT_EQ(::pthread_create(&thread, nullptr, load, nullptr), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  EXPECT_EQ(answer, &loaded);
  EXPECT_TRUE(loaded);
}

// Blocks of memory.

TEST_F(LoadFile, ReadsABlockInEachEncodingAndLeavesItAlone) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = FileOf(encoding, PatientIn(encoding));
    const Loaded loaded = LoadMemory(bytes, {.strict = true});
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(loaded.error, std::nullopt);
    EXPECT_EQ(Difference(*loaded.object, *Load(bytes).object), "");
    EXPECT_EQ(bytes, FileOf(encoding, PatientIn(encoding)));
  }
}

TEST_F(LoadFile, TakesNoBlockThatIsNotThereOrCannotBeCounted) {
  DataSetCoder coder;
  EXPECT_EQ(coder.LoadMemory(nullptr, 100, true, false), nullptr);
  EXPECT_STREQ(coder.ErrorText(), kParseError);
  const Bytes bytes = FileOf(kExplicit, {});
  EXPECT_EQ(coder.LoadMemory(bytes.data(), std::uint64_t{1} << 31, true, false), nullptr);
  EXPECT_STREQ(coder.ErrorText(), kParseError);
  EXPECT_NE(coder.LoadMemory(nullptr, 0, true, false), nullptr);
  EXPECT_EQ(coder.ErrorText(), nullptr);
}

TEST_F(LoadFile, ABlockIsReadAsAFileToo) {
  DataSetCoder coder;
  EXPECT_FALSE(coder.FileMode);
  const Bytes bytes = FileOf(kExplicit, PatientIn(kExplicit));
  EXPECT_NE(coder.LoadMemory(bytes.data(), bytes.size(), true, true), nullptr);
  EXPECT_TRUE(coder.FileMode);
}

// Pipes.

constexpr std::size_t kPieces[] = {1, 7, 128, 131, 132, 4096};

class Pipe : public LoadFile {
 protected:
  void SetUp() override {
    ASSERT_EQ(::mkfifo(Path().c_str(), 0600), 0);
    // A reader that gives up must not take the test down with its writer.
    ::signal(SIGPIPE, SIG_IGN);
  }

  /// Loads from the pipe while `bytes` go into it in pieces of `piece`.
  Loaded LoadWhile(const Bytes& bytes, std::size_t piece, const LoadHow& how = {}) {
    std::thread writer([&] {
      const FileResult opened = OpenFile(Path().c_str(), O_WRONLY);
      for (std::size_t at = 0; at < bytes.size(); at += piece) {
        WriteAll(static_cast<int>(opened.value), bytes.data() + at,
                 std::min(piece, bytes.size() - at));
        std::this_thread::yield();
      }
      CloseFile(static_cast<int>(opened.value));
    });
    Loaded loaded = LoadPath(Path().c_str(), how);
    writer.join();
    return loaded;
  }
};

TEST_F(Pipe, AFileComesThroughAPipeInPiecesOfAnySize) {
  const Bytes bytes = FileOf(kExplicit, DataSetBuilder(kExplicit)
                                            .Raw(PatientIn(kExplicit))
                                            .Element(0x7FE0, 0x0010, "OW", Pattern(3000)));
  for (const std::size_t piece : kPieces) {
    const Loaded loaded = LoadWhile(bytes, piece, {.strict = true});
    ASSERT_NE(loaded.object, nullptr) << piece;
    EXPECT_EQ(ValueText(At(*loaded.object, 0x7FE0, 0x0010)), TextOf(Pattern(3000)));
  }
}

TEST_F(Pipe, SoDoesADataSetWithoutPreamble) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Raw(PatientIn(kExplicit))
                          .Element(0x7FE0, 0x0010, "OW", Pattern(3000));
  for (const std::size_t piece : kPieces) {
    const Loaded loaded = LoadWhile(bytes, piece);
    ASSERT_NE(loaded.object, nullptr) << piece;
    EXPECT_EQ(TagsOf(*loaded.object), "(0008,0060) (0010,0010) (7FE0,0010)") << piece;
  }
  const Loaded tiny = LoadWhile(PatientIn(kExplicit), 1);
  ASSERT_NE(tiny.object, nullptr);
  EXPECT_EQ(TagsOf(*tiny.object), "(0008,0060) (0010,0010)");
}

}  // namespace
}  // namespace tessaret::test
