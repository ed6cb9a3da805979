// Objects on their way to a peer: what is loaded, and when pixel data changes its transfer syntax.
#include "services/outgoing_object.h"

#include <gtest/gtest.h>

#include "core/linked_buffer.h"
#include "core/module_dictionaries.h"
#include "core/value_order.h"
#include "net/command_elements.h"
#include "services/codec_place.h"
#include "services/store_files.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

const testing::Environment* const kPlace = testing::AddGlobalTestEnvironment(new CodecPlace);

// A run of eight bytes of 7 in the toy's form: how many, and the byte turned round by 0x5A.
const Bytes kToyFragment = {8, 0x07 ^ 0x5A};
const Bytes kEightSevens(8, 7);

class OutgoingObject : public testing::Test {
 protected:
  OutgoingObject() { pdu_.AttachDictionary(&ModuleDictionary(), false); }

  void Accept(std::string_view sopClass, std::string_view syntax, std::uint8_t identifier = 1) {
    PresentationContextAccept context;
    context.PresentationContextID = identifier;
    context.Result = 0;
    context.AbstractSyntax = AbstractSyntax(sopClass);
    context.TransferSyntax = TransferSyntax(syntax);
    pdu_.AcceptedContexts.push_back(context);
  }

  std::unique_ptr<DICOMDataObject> Load(const Bytes& file) {
    WriteBytes(folder_.File("in.dcm"), file);
    OutgoingFile loaded = LoadForSending(pdu_, folder_.File("in.dcm"));
    EXPECT_NE(loaded.object, nullptr) << pdu_.GetLastError();
    EXPECT_EQ(loaded.lack, "");
    return std::move(loaded.object);
  }

  std::string Transcode(DICOMDataObject& object, std::string_view sopClass = kCTStorage) {
    return TranscodeForPeer(pdu_, object, UID(sopClass));
  }

  static std::string NamedIn(const DICOMObject& object) {
    return std::string(tessaret::SyntaxOf(object).View());
  }

  const TempFolder folder_;
  PDU_Service pdu_;
};

TEST_F(OutgoingObject, IsLoadedWithItsPixels) {
  const auto object = Load(ImageFile());
  EXPECT_EQ(NamedIn(*object), kExplicit);
  EXPECT_EQ(ValueOf(PixelsOf(*object)), LittleWords());
  const auto compressed = Load(CompressedFile(kToy, kToyFragment));
  EXPECT_EQ(ItemsOf(*compressed), (std::vector<Bytes>{{}, kToyFragment}));
}

TEST_F(OutgoingObject, NumbersOfABigEndianFileAreTurnedRound) {
  const auto object = Load(ImageFile("1.2.3.4", kCTStorage, Encoding::kExplicitBig));
  EXPECT_EQ(NamedIn(*object), kBig);
  EXPECT_EQ(ValueOf(PixelsOf(*object)), LittleWords());
  EXPECT_EQ(ValueOf(*object->GetVR(0x0028, 0x0100)), (Bytes{16, 0}));
}

TEST_F(OutgoingObject, FragmentsKeepTheNameOfTheirSyntaxWhereTheFilesDoesNotStay) {
  // Without its length group 2 ends at its first element, and the name is not kept.
  DataSetBuilder meta(Encoding::kExplicitLittle);
  meta.Element(0x0002, 0x0010, "UI", Evened(kToy));
  const Bytes whole = CompressedFile(kToy, kToyFragment);
  const std::size_t dataSet = Joined({Preamble(), MetaGroup(kToy)}).size();
  const Bytes file =
      Joined({Preamble(), meta.Done(),
              Bytes(whole.begin() + static_cast<std::ptrdiff_t>(dataSet), whole.end())});
  const auto object = Load(file);
  EXPECT_EQ(NamedIn(*object), kToy);
  // Native pixels mean the same under any name.
  const Bytes native = ImageFile();
  const std::size_t nativeSet = Joined({Preamble(), MetaGroup(kExplicit)}).size();
  DataSetBuilder nativeMeta(Encoding::kExplicitLittle);
  nativeMeta.Element(0x0002, 0x0010, "UI", Evened(kExplicit));
  const auto plain =
      Load(Joined({Preamble(), nativeMeta.Done(),
                   Bytes(native.begin() + static_cast<std::ptrdiff_t>(nativeSet), native.end())}));
  EXPECT_EQ(NamedIn(*plain), "");
}

TEST_F(OutgoingObject, FragmentsOfAnIconKeepThatNameToo) {
  DataSetBuilder meta(Encoding::kExplicitLittle);
  meta.Element(0x0002, 0x0010, "UI", Evened(kToy));
  const Bytes data = ImageHeadWithIcon(Encoding::kExplicitLittle, 2, 16, kToyFragment)
                         .Element(0x7FE0, 0x0010, "OW", LittleWords())
                         .Done();
  EXPECT_EQ(NamedIn(*Load(Joined({Preamble(), meta.Done(), data}))), kToy);
}

TEST_F(OutgoingObject, FragmentsAreFoundAtAnyDepth) {
  const auto nest = NewNest(200000);
  DICOMObject* innermost = nest.get();
  while (DICOMObject* inner = InnerOf(*innermost)) innermost = inner;
  innermost->Push(NewVR(kPixelDataTag, LittleWords(), type_code::OW));
  EXPECT_FALSE(HasFragments(*nest)) << "native pixels are none";
  innermost->Push(NewSequence(kPixelDataTag, {}));
  EXPECT_FALSE(HasFragments(*nest)) << "nor is an element without items";
  VR* fragment = NewVR(MakeTagKey(kStructuralGroup, kItemElement), kToyFragment);
  innermost->Push(NewSequence(kPixelDataTag, {NewObject({fragment})}));
  EXPECT_TRUE(HasFragments(*nest));
}

TEST_F(OutgoingObject, WhatIsNoFileHasWords) {
  EXPECT_EQ(LoadForSending(pdu_, folder_.File("missing.dcm")).object, nullptr);
  EXPECT_STREQ(pdu_.GetLastError(), "No such file or directory");
}

TEST_F(OutgoingObject, APathIsNotCutAtANul) {
  WriteBytes(folder_.File("in"), ImageFile());
  EXPECT_EQ(LoadForSending(pdu_, folder_.File("in") + std::string("\0.dcm", 5)).object, nullptr);
  EXPECT_STREQ(pdu_.GetLastError(), "Invalid argument");
}

TEST_F(OutgoingObject, AFileThatEndsEarlyLacksSomething) {
  const auto lackOf = [&](const Bytes& whole, std::size_t size) {
    WriteBytes(folder_.File("in.dcm"), Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(size)));
    return LoadForSending(pdu_, folder_.File("in.dcm")).lack;
  };
  const auto beyond = [](std::size_t offset) {
    return "The file cannot be read beyond offset " + std::to_string(offset);
  };
  const Bytes native = ImageFile();
  EXPECT_EQ(lackOf(native, native.size()), "");
  // The last element: a head of twelve bytes and eight of pixels.
  const std::size_t pixels = native.size() - 12 - 8;
  for (std::size_t size = pixels + 1; size < native.size(); ++size) {
    EXPECT_EQ(lackOf(native, size), beyond(pixels)) << size;
  }
  EXPECT_EQ(lackOf(native, pixels), "") << "where an element ends a file may end";
  const Bytes compressed = CompressedFile(kToy, kToyFragment);
  EXPECT_EQ(lackOf(compressed, compressed.size()), "");
  // Behind the fragments the delimiter is due, of eight bytes; without it another fragment may have been there.
  EXPECT_EQ(lackOf(compressed, compressed.size() - 8), beyond(compressed.size() - 8));
  EXPECT_NE(lackOf(compressed, compressed.size() - 9), "");
}

TEST_F(OutgoingObject, ASyntaxWithoutACodecIsUnsupported) {
  Accept(kCTStorage, kImplicit);
  const auto object = Load(CompressedFile(kToy, kToyFragment));
  PutUid(*object, 0x0002, 0x0010, "1.2.999.77");
  EXPECT_EQ(Transcode(*object), "]: Unsupported compressed Transfer Syntax [1.2.999.77]");
}

TEST_F(OutgoingObject, PixelsThatCannotBeDecodedAreNotSent) {
  Accept(kCTStorage, kImplicit);
  const auto object = Load(CompressedFile(kToy, {9, 9}));
  EXPECT_EQ(Transcode(*object), "]: Error decoding compressed Transfer Syntax [1.2.999.1]");
}

TEST_F(OutgoingObject, AClassThatWasNotAcceptedHasNoContext) {
  Accept(kMRStorage, kImplicit);
  const auto object = Load(CompressedFile(kToy, kToyFragment));
  EXPECT_EQ(Transcode(*object),
            "]: Cannot find Presentation Context for SOP Class[1.2.840.10008.5.1.4.1.1.2]");
  const auto native = Load(ImageFile());
  EXPECT_EQ(Transcode(*native),
            "]: Cannot find Presentation Context for SOP Class[1.2.840.10008.5.1.4.1.1.2]");
}

TEST_F(OutgoingObject, AnAcceptedContextWithoutASyntaxIsNone) {
  Accept(kCTStorage, "");
  const auto object = Load(CompressedFile(kToy, kToyFragment));
  EXPECT_EQ(Transcode(*object), "]: No presentation context for Transfer Syntax [1.2.999.1]");
}

TEST_F(OutgoingObject, WhatCannotBeEncodedIsNamedByItsOwnSyntax) {
  Accept(kCTStorage, "1.2.999.88");
  const auto object = Load(CompressedFile(kToy, kToyFragment));
  EXPECT_EQ(Transcode(*object), "]: Error encoding to Transfer Syntax [1.2.999.1]");
}

TEST_F(OutgoingObject, TheCodecIsAskedForBeforeThePeer) {
  const auto unknown = Load(CompressedFile(kToy, kToyFragment));
  PutUid(*unknown, 0x0002, 0x0010, "1.2.999.77");
  EXPECT_EQ(Transcode(*unknown), "]: Unsupported compressed Transfer Syntax [1.2.999.77]");
  const auto broken = Load(CompressedFile(kToy, {9, 9}));
  EXPECT_EQ(Transcode(*broken), "]: Error decoding compressed Transfer Syntax [1.2.999.1]");
}

TEST_F(OutgoingObject, FragmentsBecomeNativeForANativeSyntax) {
  for (const char* syntax : {kImplicit, kExplicit}) {
    pdu_.AcceptedContexts.clear();
    Accept(kCTStorage, syntax);
    const auto object = Load(CompressedFile(kToy, kToyFragment));
    EXPECT_EQ(Transcode(*object), "");
    EXPECT_EQ(ValueOf(PixelsOf(*object)), kEightSevens);
    EXPECT_EQ(NamedIn(*object), syntax == kImplicit ? "" : kExplicit);
  }
}

TEST_F(OutgoingObject, NativePixelsBecomeFragmentsWhereThatIsWhatThePeerTook) {
  Accept(kCTStorage, kToy);
  const Bytes file = FileOf(Encoding::kExplicitLittle,
                            ImageHead(Encoding::kExplicitLittle, kCTStorage, "1.2.3", 4, 8)
                                .Element(0x7FE0, 0x0010, "OB", kEightSevens));
  const auto object = Load(file);
  EXPECT_EQ(Transcode(*object), "");
  EXPECT_EQ(ItemsOf(*object), (std::vector<Bytes>{{}, kToyFragment}));
  EXPECT_EQ(NamedIn(*object), kToy);
}

TEST_F(OutgoingObject, NativeSyntaxesChangeTheNameAlone) {
  Accept(kCTStorage, kExplicit);
  for (const Encoding encoding : kAllEncodings) {
    const auto object = Load(ImageFile("1.2.3.4", kCTStorage, encoding));
    EXPECT_EQ(Transcode(*object), "");
    EXPECT_EQ(ValueOf(PixelsOf(*object)), LittleWords());
    EXPECT_EQ(NamedIn(*object), kExplicit);
  }
}

TEST_F(OutgoingObject, FragmentsByTheNameOfANativeSyntaxBecomeNothingElse) {
  const struct {
    Encoding encoding;
    std::string_view accepted;
  } rows[] = {{Encoding::kImplicitLittle, kExplicit}, {Encoding::kExplicitBig, kExplicit},
              {Encoding::kExplicitBig, kImplicit},    {Encoding::kExplicitLittle, kImplicit},
              {Encoding::kImplicitLittle, kToy},      {Encoding::kExplicitLittle, kToy}};
  for (const auto& row : rows) {
    pdu_.AcceptedContexts.clear();
    Accept(kCTStorage, row.accepted);
    const auto object = Load(
        FileOf(row.encoding,
               ImageHead(row.encoding, kCTStorage, "1.2.3", 4, 8).Fragments({{}, kToyFragment})));
    ASSERT_TRUE(HasFragments(*object));
    const std::string own = NamedIn(*object);
    EXPECT_EQ(Transcode(*object), "");
    EXPECT_EQ(NamedIn(*object), own);
    EXPECT_FALSE(CanGoAsItIs(pdu_, *object, UID(kCTStorage)));
  }
}

TEST_F(OutgoingObject, FragmentsOfAnIconGoByTheNameOfTheirOwnSyntaxOnly) {
  const UID sopClass(kCTStorage);
  const Bytes files[] = {CompressedFileWithIcon(kToy, kToyFragment, kToyFragment),
                         // The icon alone is compressed.
                         Joined({Preamble(), MetaGroup(kToy),
                                 ImageHeadWithIcon(Encoding::kExplicitLittle, 2, 16, kToyFragment)
                                     .Element(0x7FE0, 0x0010, "OW", LittleWords())
                                     .Done()})};
  for (const Bytes& file : files) {
    for (const std::string_view accepted : {kImplicit, kExplicit, kBig, "1.2.999.88"}) {
      pdu_.AcceptedContexts.clear();
      Accept(kCTStorage, accepted);
      const auto object = Load(file);
      EXPECT_FALSE(CanGoAsItIs(pdu_, *object, sopClass)) << accepted;
      EXPECT_EQ(Transcode(*object), "]: Error decoding compressed Transfer Syntax [1.2.999.1]")
          << accepted;
    }
    pdu_.AcceptedContexts.clear();
    Accept(kCTStorage, kToy);
    EXPECT_TRUE(CanGoAsItIs(pdu_, *Load(file), sopClass));
  }
}

TEST_F(OutgoingObject, FragmentsOfAnIconByTheNameOfANativeSyntaxBecomeNothingElse) {
  const UID sopClass(kCTStorage);
  for (const Encoding encoding : kAllEncodings) {
    const std::string_view own = SyntaxUidOf(encoding);
    for (const std::string_view accepted : {kImplicit, kExplicit, kBig, kToy}) {
      SCOPED_TRACE(std::string(NameOf(encoding)) + " for " + std::string(accepted));
      pdu_.AcceptedContexts.clear();
      Accept(kCTStorage, accepted);
      const auto object = Load(NativeFileWithIcon(encoding, kToyFragment));
      EXPECT_EQ(CanGoAsItIs(pdu_, *object, sopClass), accepted == own);
      if (accepted == own) continue;
      EXPECT_EQ(Transcode(*object), "");
      EXPECT_EQ(NamedIn(*object), own);
      EXPECT_EQ(ValueOf(PixelsOf(*object)), LittleWords());
      EXPECT_FALSE(CanGoAsItIs(pdu_, *object, sopClass));
    }
  }
}

TEST_F(OutgoingObject, DecodedWordsAreTurnedForABigEndianSyntax) {
  // Two rows of two words, each byte a run of one.
  Bytes fragment;
  for (std::uint8_t byte = 1; byte <= 8; ++byte) {
    fragment.insert(fragment.end(), {std::uint8_t{1}, static_cast<std::uint8_t>(byte ^ 0x5A)});
  }
  Accept(kCTStorage, kBig);
  for (const bool isWide : {false, true}) {
    const Bytes file = Joined(
        {Preamble(), MetaGroup(kToy),
         ImageHead(Encoding::kExplicitLittle, kCTStorage, "1.2.3", isWide ? 2 : 4, isWide ? 16 : 8)
             .Fragments({{}, fragment})
             .Done()});
    const auto object = Load(file);
    EXPECT_EQ(Transcode(*object), "");
    EXPECT_TRUE(CanGoAsItIs(pdu_, *object, UID(kCTStorage)));
    TurnForBigEndian(*object, pdu_.Dictionary);
    EXPECT_EQ(PixelsOf(*object).TypeCode, isWide ? type_code::OW : type_code::OB);
    EXPECT_EQ(ValueOf(PixelsOf(*object)),
              (isWide ? Bytes{2, 1, 4, 3, 6, 5, 8, 7} : Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
  }
}

TEST_F(OutgoingObject, TheFirstContextOfTheClassCounts) {
  Accept(kCTStorage, kExplicit, 3);
  Accept(kCTStorage, "1.2.999.88", 5);
  const auto object = Load(CompressedFile(kToy, kToyFragment));
  EXPECT_EQ(Transcode(*object), "");
  EXPECT_EQ(NamedIn(*object), kExplicit);
}

TEST_F(OutgoingObject, FragmentsGoAsTheyAreInTheirOwnSyntaxOnly) {
  const auto native = Load(ImageFile());
  const auto compressed = Load(CompressedFile(kToy, kToyFragment));
  const UID sopClass(kCTStorage);
  Accept(kCTStorage, kImplicit);
  EXPECT_TRUE(CanGoAsItIs(pdu_, *native, sopClass));
  EXPECT_FALSE(CanGoAsItIs(pdu_, *compressed, sopClass));
  // They would be written in the first context.
  Accept(kCTStorage, kToy, 3);
  EXPECT_FALSE(CanGoAsItIs(pdu_, *compressed, sopClass));
  pdu_.AcceptedContexts.erase(pdu_.AcceptedContexts.begin());
  EXPECT_TRUE(CanGoAsItIs(pdu_, *compressed, sopClass));
  // Writing has words for what was not agreed at all.
  EXPECT_TRUE(CanGoAsItIs(pdu_, *compressed, UID(kMRStorage)));
}

TEST_F(OutgoingObject, NativePixelsGoAsTheyAreInSyntaxesOfNativePixelsOnly) {
  const auto native = Load(ImageFile());
  const UID sopClass(kCTStorage);
  const struct {
    std::string_view syntax;
    bool expected;
  } rows[] = {{kImplicit, true},
              {kExplicit, true},
              {kBig, true},
              {"1.2.840.10008.1.2.4.50", false},
              // Writing it has words for these.
              {"", true},
              {"1.2.3.4.5", true}};
  EXPECT_TRUE(CanGoAsItIs(pdu_, *native, sopClass));
  for (const auto& row : rows) {
    pdu_.AcceptedContexts.clear();
    Accept(kCTStorage, row.syntax);
    EXPECT_EQ(CanGoAsItIs(pdu_, *native, sopClass), row.expected) << row.syntax;
  }
  pdu_.AcceptedContexts.clear();
  Accept(kCTStorage, "1.2.840.10008.1.2.4.50");
  Accept(kCTStorage, kExplicit);
  EXPECT_FALSE(CanGoAsItIs(pdu_, *native, sopClass));
  // A data set without pixels may be of a compressed syntax as well as of any other.
  for (const std::string_view own : {"", kExplicit, "1.2.840.10008.1.2.4.50"}) {
    DICOMDataObject report;
    if (!own.empty()) PutUid(report, 0x0002, 0x0010, own);
    EXPECT_TRUE(CanGoAsItIs(pdu_, report, sopClass)) << own;
  }
}

TEST_F(OutgoingObject, AShallowCloneHasUidsOfItsOwnWhereTheirPadsAreToBecomeOthers) {
  ASSERT_TRUE(StartDictionaries(kDataDir));
  const std::string list = std::string(32, '1') + '\\' + std::string(32, '2') + ' ';
  // Long values go from where they lie, and are not copied for nothing.
  const std::string lengthy = std::string((1 << 14) - 1, '1') + ' ';
  const std::string tooLong = std::string((1 << 16) - 1, '1') + ' ';  // for two bytes of length
  constexpr std::uint16_t kClasses = 0x001A;  // (0008,001A), related general SOP classes: UI
  constexpr std::uint16_t kName = 0x1080;     // (0008,1080), LO
  const struct {
    std::uint16_t element;
    VrCode type;
    std::string_view text;
    bool isShared;
  } rows[] = {
      {kClasses, type_code::UN, list, false},       {kClasses, type_code::UN, lengthy, false},
      {kClasses, type_code::kNone, lengthy, false}, {kClasses, type_code::UI, lengthy, false},
      {kClasses, type_code::UN, tooLong, true},     {kClasses, type_code::UN, "1.2.34", true},
      {kClasses, type_code::LO, "1.2.3 ", true},    {kName, type_code::UI, "1.2.3 ", false},
      {kName, type_code::UI, "1.2.34", true},       {kName, type_code::UN, "1.2.3 ", true},
      {kName, type_code::kNone, lengthy, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.element) + " " + std::to_string(row.type) + " " +
                 std::to_string(row.text.size()));
    DICOMDataObject object;
    PutBytes(object, 0x0008, row.element, row.type, row.text);
    object.Push(new VR(0x0040, 0xA730, 0, nullptr));
    auto* item = new DICOMDataObject;
    PutBytes(*item, 0x0008, row.element, row.type, row.text);
    object.Push(item);
    DICOMDataObject clone;
    CloneInto(object, false, pdu_.Dictionary, clone);
    const VR& top = *clone.GetVR(0x0008, row.element);
    EXPECT_EQ(top.Data == object.GetVR(0x0008, row.element)->Data, row.isShared);
    const VR& nested =
        *clone.GetVR(0x0040, 0xA730)->Items->First->value->GetVR(0x0008, row.element);
    EXPECT_EQ(nested.Data == item->GetVR(0x0008, row.element)->Data, row.isShared);
    EXPECT_EQ(ValueOf(nested), BytesOf(row.text));
    // Whatever form it is written in, the object stays.
    for (const bool isExplicit : {false, true}) {
      DICOMDataObject sent;
      CloneInto(object, false, pdu_.Dictionary, sent);
      LinkedBuffer bytes;
      EXPECT_TRUE(isExplicit ? pdu_.ExplicitLittleOut(sent, bytes)
                             : pdu_.ImplicitLittleOut(sent, bytes));
      EXPECT_EQ(ValueOf(*object.GetVR(0x0008, row.element)), BytesOf(row.text));
    }
  }
  StopDictionaries();
}

TEST_F(OutgoingObject, ACloneTakesElementsThatHaveNoBytesAsTheyAre) {
  Bytes none(1, ' ');
  DICOMDataObject object;
  // Its value was never here.
  object.Push(new VR(0x0009, 0x1000, 8, nullptr));
  object.Push(new VR(0x0009, 0x1001, 0, none.data() + 1, false));
  DICOMDataObject clone;
  CloneInto(object, false, nullptr, clone);
  EXPECT_EQ(clone.GetVR(0x0009, 0x1000)->Length, 8u);
  EXPECT_EQ(clone.GetVR(0x0009, 0x1000)->Data, nullptr);
  EXPECT_EQ(clone.GetVR(0x0009, 0x1001)->Length, 0u);
  EXPECT_EQ(clone.GetVR(0x0009, 0x1001)->Data, none.data() + 1);
}

TEST_F(OutgoingObject, NothingIsWrittenToALinkThatIsLost) {
  Accept(kCTStorage, kImplicit);
  const auto object = Load(ImageFile());
  DicomStorage storage(*object);
  EXPECT_FALSE(StoreOver(pdu_, storage, *object));
  EXPECT_EQ(pdu_.GetLastError(), nullptr);
}

}  // namespace
}  // namespace tessaret::test
