// One object that is in memory, sent to a node in this process.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/object_maker.h"
#include "facade/dcm_object_helpers.h"
#include "services/store_files.h"
#include "services/store_provider.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

using testing::ElementsAre;

class ObjectSending : public testing::Test {
 protected:
  Ref<IDCMObject> Loaded(const Bytes& file) {
    WriteBytes(folder_.File("in.dcm"), file);
    auto object = NewObject();
    EXPECT_EQ(object->Load(folder_.File("in.dcm"), true), kOk) << LastError().text;
    return object;
  }
  Status Send(const Ref<IDCMObject>& object, const std::string& port) {
    sent_ = VariantBool::Of(77);
    return object->Send("127.0.0.1", port, "HERE", "THERE", {}, &sent_);
  }

  const TempFolder folder_;
  VariantBool sent_;
};

TEST_F(ObjectSending, GoesOverAnAssociationOfItsOwn) {
  StoreProvider provider;
  const auto object = Loaded(ImageFile());
  ASSERT_EQ(Send(object, provider.Port()), kOk) << LastError().text;
  EXPECT_EQ(sent_.value, -1);
  provider.End();
  EXPECT_EQ(provider.associations, 1u);
  EXPECT_EQ(provider.releases, 1u);
  EXPECT_EQ(provider.titles, "HERE             > THERE           ");
  EXPECT_THAT(provider.proposals,
              ElementsAre("1.2.840.10008.5.1.4.1.1.2: 1.2.840.10008.1.2.1 1.2.840.10008.1.2"));
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].instance, "1.2.3.4");
  EXPECT_EQ(ValueOf(*provider.stored[0].object->GetVR(0x7FE0, 0x0010)), LittleWords());
  EXPECT_EQ(TextOf(*provider.stored[0].object->GetVR(0x0010, 0x0010)), "Doe^Jane");
}

TEST_F(ObjectSending, SendsNativePixelsByNoCompressedName) {
  // The peer takes a syntax that it was not offered.
  StoreProvider provider({.namedSyntax = "1.2.840.10008.1.2.4.100"});
  EXPECT_FAILS_WITH(Send(Loaded(ImageFile()), provider.Port()), "Error during transfer");
  provider.End();
  EXPECT_EQ(provider.stored.size(), 0u);
  EXPECT_EQ(provider.releases, 1u);
}

TEST_F(ObjectSending, SendsNoFragmentsByAnotherNameThanTheirOwn) {
  // They say that there are none; the peer takes another native syntax, offered or not.
  for (const auto& [encoding, accepted] : {std::pair{Encoding::kExplicitLittle, kImplicit},
                                           std::pair{Encoding::kImplicitLittle, kExplicit},
                                           std::pair{Encoding::kExplicitBig, kExplicit}}) {
    const Bytes files[] = {
        FileOf(encoding, ImageHead(encoding, kCTStorage, "1.2.3", 4, 8).Fragments({{}, {1, 2}})),
        NativeFileWithIcon(encoding, {1, 2})};
    StoreProvider provider({.namedSyntax = accepted});
    for (const Bytes& file : files) {
      EXPECT_FAILS_WITH(Send(Loaded(file), provider.Port()), "Error during transfer");
    }
    provider.End();
    EXPECT_EQ(provider.associations, 2u);
    EXPECT_EQ(provider.stored.size(), 0u);
  }
}

TEST_F(ObjectSending, LeavesTheObjectAsItIs) {
  for (const Encoding encoding : kAllEncodings) {
    for (const char* syntax : {kImplicit, kExplicit, kBig}) {
      StoreProvider provider({.syntaxes = {syntax}});
      const auto object = Loaded(ImageFile("1.2.3.4", kCTStorage, encoding));
      ASSERT_EQ(object->Save(folder_.File("before.dcm")), kOk);
      const bool isProposed = syntax != kBig || encoding == Encoding::kExplicitBig;
      const bool isExplicit = syntax == kExplicit && encoding != Encoding::kExplicitLittle;
      const Status status = Send(object, provider.Port());
      EXPECT_EQ(status, isProposed && !isExplicit ? kOk : kException) << syntax;
      ASSERT_EQ(object->Save(folder_.File("after.dcm")), kOk);
      EXPECT_EQ(ReadBytes(folder_.File("after.dcm")), ReadBytes(folder_.File("before.dcm")));
      provider.End();
      if (Failed(status)) continue;
      ASSERT_EQ(provider.stored.size(), 1u);
      EXPECT_EQ(provider.stored[0].syntax, syntax);
      // The provider leaves numbers in the order in which they came.
      const Bytes bigWords = {0x01, 0x02, 0x03, 0x04, 0x80, 0x01, 0x00, 0xFF};
      EXPECT_EQ(ValueOf(*provider.stored[0].object->GetVR(0x7FE0, 0x0010)),
                syntax == kBig ? bigWords : LittleWords());
    }
  }
}

TEST_F(ObjectSending, TurnsWidePixelsThatAreCalledBytesForTheWireAlone) {
  // As codecs leave them; the peer names a syntax that it was not offered.
  const Bytes words = {1, 2, 3, 4, 5, 6, 7, 8};
  const auto object = Loaded(FileOf(Encoding::kExplicitLittle,
                                    ImageHead(Encoding::kExplicitLittle, kCTStorage, "1.2.3", 2, 16)
                                        .Element(0x7FE0, 0x0010, "OB", words)));
  ASSERT_EQ(object->Save(folder_.File("before.dcm")), kOk);
  StoreProvider provider({.namedSyntax = kBig});
  EXPECT_EQ(Send(object, provider.Port()), kOk);
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  const VR& pixels = *provider.stored[0].object->GetVR(0x7FE0, 0x0010);
  EXPECT_EQ(pixels.TypeCode, type_code::OW);
  EXPECT_EQ(ValueOf(pixels), (Bytes{2, 1, 4, 3, 6, 5, 8, 7}));
  ASSERT_EQ(object->Save(folder_.File("after.dcm")), kOk);
  EXPECT_EQ(ReadBytes(folder_.File("after.dcm")), ReadBytes(folder_.File("before.dcm")));
}

TEST_F(ObjectSending, PadsUidsForTheWireAlone) {
  StoreProvider provider;
  // A blank behind a UID is not to be sent; the object keeps it.
  const auto object = Loaded(ImageFile("1.2.3 "));
  ASSERT_EQ(Send(object, provider.Port()), kOk) << LastError().text;
  String type;
  String value;
  ASSERT_EQ(object->GetVRRawString(0x0008, 0x0018, &type, &value), kOk);
  EXPECT_EQ(value.Utf8(), "1.2.3 ");
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(ValueOf(*provider.stored[0].object->GetVR(0x0008, 0x0018)),
            (Bytes{'1', '.', '2', '.', '3', 0}));
}

TEST_F(ObjectSending, WithoutASyntaxImplicitIsProposedAlone) {
  StoreProvider provider;
  const auto object = NewObject();
  ASSERT_EQ(Put(object, 0x0008, 0x0016, kCTStorage), kOk);
  ASSERT_EQ(Put(object, 0x0008, 0x0018, "1.2.3"), kOk);
  ASSERT_EQ(Send(object, provider.Port()), kOk) << LastError().text;
  provider.End();
  EXPECT_THAT(provider.proposals, ElementsAre("1.2.840.10008.5.1.4.1.1.2: 1.2.840.10008.1.2"));
  EXPECT_EQ(provider.stored.at(0).instance, "1.2.3");
}

TEST_F(ObjectSending, ElementsWithoutATypeGetThatOfTheDictionary) {
  StoreProvider provider({.syntaxes = {kExplicit}});
  const auto object = Loaded(ImageFile());
  // Its element is replaced by one of which nothing is known.
  ASSERT_EQ(object->RemoveVR(0x0010, 0x0010, nullptr), kOk);
  ASSERT_EQ(object->PutVRRawString(0x0010, 0x0010, "UN", "Doe^Jane"), kOk);
  ASSERT_EQ(Send(object, provider.Port()), kOk) << LastError().text;
  provider.End();
  EXPECT_EQ(provider.stored.at(0).object->GetVR(0x0010, 0x0010)->TypeCode, type_code::PN);
}

TEST_F(ObjectSending, NeedsASopClass) {
  StoreProvider provider;
  const auto object = ObjectOfPatient("1");
  EXPECT_FAILS_WITH(Send(object, provider.Port()), "Missing SOP Class for C-STORE");
  EXPECT_EQ(sent_.value, 0);
  // What could not be loaded leaves no data set.
  const auto none = NewObject();
  EXPECT_NE(none->Load(folder_.File("missing"), true), kOk);
  EXPECT_FAILS_WITH(Send(none, provider.Port()), "Empty object");
  // One that no association can name is none.
  for (const std::string& text :
       {std::string(), std::string("  "), std::string(2, '\0'), "1." + std::string(64, '2')}) {
    ASSERT_EQ(object->PutVRRawString(0x0008, 0x0016, "UI", text), kOk);
    EXPECT_FAILS_WITH(Send(object, provider.Port()), "Missing SOP Class for C-STORE");
  }
  provider.End();
  EXPECT_EQ(provider.associations, 0u);
}

TEST_F(ObjectSending, TellsWhyThereIsNoAssociation) {
  const auto object = Loaded(ImageFile());
  AnsweringPeer refusing(Refusal(2, 1, 7));
  EXPECT_FAILS_WITH(Send(object, refusing.Port()),
                    "Connection to  127.0.0.1: THERE temporarily refused\nUnknown remote AETitle");
  EXPECT_EQ(sent_.value, 0);
  StoreProvider other({.callingTitle = "OTHER"});
  EXPECT_FAILS_WITH(Send(object, other.Port()),
                    "Connection to  127.0.0.1: THERE permanently refused\nUnknown local AETitle");
}

TEST_F(ObjectSending, ALinkThatEndsIsAnErrorDuringTransfer) {
  StoreProvider provider(
      {.answer = [](std::size_t) { return StoreAnswer{.instead = StoreAnswer::Instead::kClose}; }});
  EXPECT_FAILS_WITH(Send(Loaded(ImageFile()), provider.Port()), "Error during transfer");
  EXPECT_EQ(sent_.value, 0);
}

TEST_F(ObjectSending, AnyAnswerIsOne) {
  StoreProvider provider({.answer = [](std::size_t) { return StoreAnswer{.status = 0xA700}; }});
  EXPECT_EQ(Send(Loaded(ImageFile()), provider.Port()), kOk);
  EXPECT_EQ(sent_.value, -1);
}

TEST_F(ObjectSending, OwnershipHasNoEffect) {
  StoreProvider provider;
  const auto object = Loaded(ImageFile());
  for (const bool owned : {true, false}) {
    VariantBool sent;
    ASSERT_EQ(object->Send("127.0.0.1", provider.Port(), "HERE", "THERE", owned, &sent), kOk);
    EXPECT_TRUE(sent.IsTrue());
    EXPECT_EQ(Text(object, 0x0010, 0x0010), "Doe^Jane");
  }
  EXPECT_EQ(object->Send("127.0.0.1", provider.Port(), "HERE", "THERE", {}, nullptr), kPointer);
}

}  // namespace
}  // namespace tessaret::test
