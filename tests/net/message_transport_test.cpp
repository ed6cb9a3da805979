// Objects over an association: which context and encoding they go in, and what is made of what comes.
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "core/transfer_syntax.h"
#include "net/command_elements.h"
#include "net/scripted_peer.h"
#include "platform/socket_calls.h"
#include "support/data_set_builder.h"
#include "support/socket_failure.h"

namespace tessaret::test {
namespace {

const std::vector<Agreed> kContexts = {
    {1, kEcho, kImplicit}, {3, kCt, kExplicit}, {5, kFind, kBigEndianSyntax}};

/// (0010,0020) LO "ID", and (0028,0010) US 257, which reads the same in both orders: values go as they stand in memory.
Bytes SmallSet(Encoding encoding) {
  return DataSetBuilder(encoding).Element(0x0010, 0x0020, "LO", "ID").Number(0x0028, 0x0010, 257);
}

void FillSmallSet(DICOMObject& object) {
  PutBytes(object, 0x0010, 0x0020, type_code::LO, "ID");
  PutNumber16(object, 0x0028, 0x0010, 257);
}

std::string ValueOf(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  return vr == nullptr ? "absent"
                       : std::string(reinterpret_cast<const char*>(vr->Data), vr->Length);
}

// --- writing ---

TEST(WriteMessage, EncodesDataInTheSyntaxOfItsContext) {
  const struct {
    std::string_view sopClass;
    std::uint8_t id;
    Encoding encoding;
  } rows[] = {{kEcho, 1, Encoding::kImplicitLittle},
              {kCt, 3, Encoding::kExplicitLittle},
              {kFind, 5, Encoding::kExplicitBig}};
  for (const auto& row : rows) {
    Association association(kContexts);
    DICOMDataObject object;
    FillSmallSet(object);
    EXPECT_TRUE(association.pdu.Write(object, UID(row.sopClass)));
    EXPECT_TRUE(object.IsEmpty());
    EXPECT_EQ(association.peer.Received(), Data(row.id, kLastPart, SmallSet(row.encoding)));
  }
}

TEST(WriteMessage, TurnsBackToLittleEndianBehindBig) {
  Association association(kContexts);
  for (const auto& [sopClass, encoding] :
       {std::pair{kFind, Encoding::kExplicitBig}, std::pair{kEcho, Encoding::kImplicitLittle},
        std::pair{kFind, Encoding::kExplicitBig}, std::pair{kCt, Encoding::kExplicitLittle}}) {
    DICOMDataObject object;
    FillSmallSet(object);
    EXPECT_TRUE(association.pdu.Write(object, UID(sopClass)));
    const std::uint8_t id = association.pdu.ContextIDFor(UID(sopClass));
    EXPECT_EQ(association.peer.Received(), Data(id, kLastPart, SmallSet(encoding)));
  }
}

TEST(WriteMessage, EncodesCommandsImplicitInAnyContextWithTheirLengthInFront) {
  for (const bool byIdentifier : {false, true}) {
    Association association(kContexts);
    DICOMCommandObject command;
    PutNumber32(command, 0x0000, 0x0000, 4711);
    PutUid(command, 0x0000, 0x0002, kCt);  // 25 bytes, which count for 26
    PutNumber16(command, 0x0000, 0x0100, 0x8001);
    EXPECT_TRUE(byIdentifier ? association.pdu.Write(command, std::uint8_t{5})
                             : association.pdu.Write(command, UID(kFind)));
    const Bytes elements =
        Joined({Elements().Uid(0, 2, kCt), Elements().Number(0, 0x0100, 0x8001)});
    EXPECT_EQ(elements.size(), 8u + 26 + 8 + 2);
    EXPECT_EQ(association.peer.Received(),
              Data(5, kWholeCommand, Joined({Elements().Value(0, 0, {44, 0, 0, 0}), elements})));
  }
}

TEST(WriteMessage, CountsTheGroupLengthUpToTheFirstOtherGroup) {
  DICOMCommandObject command;
  PutNumber32(command, 0x0000, 0x0000, 0);
  PutNumber16(command, 0x0000, 0x0100, 1);
  auto* odd =
      new VR(std::uint16_t{0}, std::uint16_t{0x0902}, 3u, new std::uint8_t[3]{'o', 'd', 'd'});
  command.Push(odd);
  PutNumber16(command, 0x0008, 0x0001, 1);
  EXPECT_EQ(CommandGroupLength(command), 10u + 12u);
  EXPECT_EQ(CommandGroupLength(DICOMCommandObject()), 0u);
}

TEST(WriteMessage, SendsACommandAndItsDataOneBehindTheOther) {
  Association association(kContexts);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  DICOMDataObject object;
  FillSmallSet(object);
  EXPECT_TRUE(association.pdu.Write(command, &object, UID(kCt)));
  const Bytes commandBytes = Command().Number(0x0100, 1);
  EXPECT_EQ(association.peer.Received(),
            Joined({Data(3, kWholeCommand, commandBytes),
                    Data(3, kLastPart, SmallSet(Encoding::kExplicitLittle))}));
  EXPECT_EQ(association.pdu.PDataTF.MessagePresentationContextID, 3);

  DICOMCommandObject alone;
  PutNumber16(alone, 0x0000, 0x0100, 1);
  EXPECT_TRUE(association.pdu.Write(alone, nullptr, UID(kCt)));
  EXPECT_EQ(association.peer.Received(), Data(3, kWholeCommand, commandBytes));
}

TEST(WriteMessage, SendsLongDataInFragmentsBehindTheCommand) {
  Association association(kContexts);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  const Bytes pixels = Pattern(10000);
  DICOMDataObject object;
  PutBytes(object, 0x7FE0, 0x0010, type_code::OW,
           {reinterpret_cast<const char*>(pixels.data()), pixels.size()});
  EXPECT_TRUE(association.pdu.Write(command, &object, UID(kEcho)));
  EXPECT_EQ(association.peer.Received(),
            Joined({Data(1, kWholeCommand, Command().Number(0x0100, 1)),
                    Fragmented(1, 0, Elements().Value(0x7FE0, 0x0010, pixels))}));
}

Bytes* sharedValue = nullptr;

int ChangeLastByteBeforeSending(SocketCall call, std::size_t&) {
  if (call == SocketCall::kSend) sharedValue->back() = 0xEE;
  return 0;
}

TEST(WriteMessage, SendsLongValuesThatAreSharedFromWhereTheyLie) {
  // What is changed after it was encoded, and before it is sent, shows that there is no copy.
  for (const bool isShared : {true, false}) {
    Association association(kContexts);
    DICOMCommandObject command;
    PutNumber16(command, 0x0000, 0x0100, 1);
    Bytes pixels = Pattern(100000);
    DICOMDataObject object;
    auto element = std::make_unique<VR>(std::uint16_t{0x7FE0}, std::uint16_t{0x0010}, 100000u,
                                        pixels.data(), false);
    element->TypeCode = type_code::OW;
    auto own = std::make_unique<VR>(*element, true);
    object.Push(isShared ? element.release() : own.release());
    sharedValue = &pixels;
    SetSocketCallHook(&ChangeLastByteBeforeSending);
    EXPECT_TRUE(association.pdu.Write(command, &object, UID(kEcho)));
    SetSocketCallHook(nullptr);
    Bytes expected = Pattern(100000);
    if (isShared) expected.back() = 0xEE;
    EXPECT_EQ(association.peer.Received(),
              Joined({Data(1, kWholeCommand, Command().Number(0x0100, 1)),
                      Fragmented(1, 0, Elements().Value(0x7FE0, 0x0010, expected))}));
  }
}

TEST(WriteMessage, SendsLongFragmentsThatAreSharedFromWhereTheyLie) {
  Association association(kContexts);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  Bytes fragment = Pattern(100000);
  auto pixels = std::make_unique<VR>();
  pixels->Group = 0x7FE0;
  pixels->Element = 0x0010;
  pixels->TypeCode = type_code::OB;
  for (const std::uint32_t length : {0u, 100000u}) {
    auto item = std::make_unique<DICOMObject>();
    item->Push(new VR(std::uint16_t{0xFFFE}, std::uint16_t{0xE000}, length,
                      length == 0 ? nullptr : fragment.data(), false));
    ASSERT_TRUE(pixels->AddItem(item.release()));
  }
  DICOMDataObject object;
  object.Push(pixels.release());
  sharedValue = &fragment;
  SetSocketCallHook(&ChangeLastByteBeforeSending);
  EXPECT_TRUE(association.pdu.Write(command, &object, UID(kEcho)));
  SetSocketCallHook(nullptr);
  Bytes changed = Pattern(100000);
  changed.back() = 0xEE;
  const Bytes expected = Joined({{0xE0, 0x7F, 0x10, 0x00, 0xFF, 0xFF, 0xFF, 0xFF},
                                 {0xFE, 0xFF, 0x00, 0xE0, 0, 0, 0, 0},
                                 {0xFE, 0xFF, 0x00, 0xE0, 0xA0, 0x86, 0x01, 0x00},
                                 changed,
                                 {0xFE, 0xFF, 0xDD, 0xE0, 0, 0, 0, 0}});
  EXPECT_EQ(
      association.peer.Received(),
      Joined({Data(1, kWholeCommand, Command().Number(0x0100, 1)), Fragmented(1, 0, expected)}));
}

/// A long value that its element owns, of a type without meaning.
std::unique_ptr<VR> OwnBytes(std::uint16_t group, std::uint16_t element, const Bytes& bytes) {
  auto vr = std::make_unique<VR>(group, element, static_cast<std::uint32_t>(bytes.size()), true);
  vr->TypeCode = type_code::OB;
  std::copy(bytes.begin(), bytes.end(), vr->Data);
  return vr;
}

std::unique_ptr<VR> Sharing(const VR& owner, std::uint16_t group, std::uint16_t element) {
  auto vr = std::make_unique<VR>(owner, false);
  vr->Group = group;
  vr->Element = element;
  return vr;
}

// The object is empty, and its own bytes are gone, before the message is sent.
TEST(WriteMessage, SendsWhatAnElementSharesWithAnotherOfTheObject) {
  const Bytes bytes = Pattern(100000);
  Association association(kContexts);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  DICOMDataObject object;
  auto owner = OwnBytes(0x0009, 0x1001, bytes);
  object.Push(Sharing(*owner, 0x0011, 0x1001).release());
  object.Push(owner.release());
  EXPECT_TRUE(association.pdu.Write(command, &object, UID(kEcho)));
  EXPECT_EQ(
      association.peer.Received(),
      Joined({Data(1, kWholeCommand, Command().Number(0x0100, 1)),
              Fragmented(1, 0,
                         Elements().Value(0x0009, 0x1001, bytes).Value(0x0011, 0x1001, bytes))}));
}

TEST(WriteMessage, SendsWhatAnElementSharesWithOneWithinAnItem) {
  const Bytes bytes = Pattern(100000);
  Association association(kContexts);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  auto owner = OwnBytes(0x0009, 0x1001, bytes);
  DICOMDataObject object;
  object.Push(Sharing(*owner, 0x0009, 0x1001).release());
  auto item = std::make_unique<DICOMObject>();
  item->Push(owner.release());
  auto sequence = std::make_unique<VR>();
  sequence->Group = 0x0040;
  sequence->Element = 0xA730;
  sequence->TypeCode = type_code::SQ;
  ASSERT_TRUE(sequence->AddItem(item.release()));
  object.Push(sequence.release());
  EXPECT_TRUE(association.pdu.Write(command, &object, UID(kEcho)));
  const Bytes element = Elements().Value(0x0009, 0x1001, bytes);
  const Bytes expected = Joined({element,
                                 {0x40, 0x00, 0x30, 0xA7, 0xFF, 0xFF, 0xFF, 0xFF},
                                 {0xFE, 0xFF, 0x00, 0xE0, 0xFF, 0xFF, 0xFF, 0xFF},
                                 element,
                                 {0xFE, 0xFF, 0x0D, 0xE0, 0, 0, 0, 0},
                                 {0xFE, 0xFF, 0xDD, 0xE0, 0, 0, 0, 0}});
  EXPECT_EQ(
      association.peer.Received(),
      Joined({Data(1, kWholeCommand, Command().Number(0x0100, 1)), Fragmented(1, 0, expected)}));
}

TEST(WriteMessage, SendsWhatAnElementSharesWithOneOfTheCommand) {
  const Bytes bytes = Pattern(100000);
  Association association(kContexts);
  DICOMCommandObject command;
  auto owner = OwnBytes(0x0000, 0x0901, bytes);
  DICOMDataObject object;
  object.Push(Sharing(*owner, 0x0009, 0x1001).release());
  command.Push(owner.release());
  EXPECT_TRUE(association.pdu.Write(command, &object, UID(kEcho)));
  const Bytes elements = Elements().Value(0x0000, 0x0901, bytes);
  const std::size_t length = elements.size();
  Elements head;
  head.Value(0, 0,
             {static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(length >> 8),
              static_cast<std::uint8_t>(length >> 16), 0});
  EXPECT_EQ(association.peer.Received(),
            Joined({Fragmented(1, kCommandPart, Joined({head, elements})),
                    Fragmented(1, 0, Elements().Value(0x0009, 0x1001, bytes))}));
}

TEST(WriteMessage, SendsNothingOfAnObjectThatIsNestedTooDeeply) {
  Association association(kContexts);
  DICOMDataObject object;
  DICOMObject* innermost = &object;
  for (int depth = 0; depth < 100000; ++depth) {
    auto sequence = std::make_unique<VR>();
    sequence->Group = 0x0040;
    sequence->Element = 0xA730;
    sequence->TypeCode = type_code::SQ;
    auto item = std::make_unique<DICOMObject>();
    DICOMObject* const next = item.get();
    ASSERT_TRUE(sequence->AddItem(item.release()));
    innermost->Push(sequence.release());
    innermost = next;
  }
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  EXPECT_FALSE(association.pdu.Write(command, &object, UID(kEcho)));
  EXPECT_TRUE(association.peer.Received().empty());
  EXPECT_EQ(association.pdu.Link.Connected, 1);
}

TEST(WriteMessage, SendsWhatStandsInTheBuffer) {
  Association association(kContexts);
  association.pdu.PDataTF.VRBuffer.Write8(7);
  association.pdu.PDataTF.MessageControl = kCommandPart;
  EXPECT_TRUE(association.pdu.Write(std::uint8_t{5}));
  EXPECT_EQ(association.peer.Received(), Data(5, kWholeCommand, {7}));
}

TEST(WriteMessage, RepeatsNoReservedByteOfThePeer) {
  Association association(kContexts);
  Bytes asked = Data(3, kWholeCommand, Command().Number(0x0100, 1));
  asked[1] = 9;
  association.peer.Send(asked);
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 3);
  EXPECT_EQ(association.pdu.PDataTF.Reserved1, 9);
  EXPECT_TRUE(association.pdu.Write(command, std::uint8_t{3}));
  EXPECT_EQ(association.peer.Received(), Data(3, kWholeCommand, Command().Number(0x0100, 1)));
}

TEST(WriteMessage, SendsNothingOfWhatAnEarlierFailureLeftInTheBuffer) {
  Association association(kContexts);
  association.pdu.PDataTF.VRBuffer.Write8(7);
  DICOMDataObject object;
  FillSmallSet(object);
  EXPECT_TRUE(association.pdu.Write(object, UID(kCt)));
  EXPECT_EQ(association.peer.Received(), Data(3, kLastPart, SmallSet(Encoding::kExplicitLittle)));
  association.pdu.PDataTF.VRBuffer.Write8(7);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  EXPECT_TRUE(association.pdu.Write(command, UID(kCt)));
  EXPECT_EQ(association.peer.Received(), Data(3, kWholeCommand, Command().Number(0x0100, 1)));
}

TEST(WriteMessage, BeginsANewOneWhereTheLinkBeforeWasLostWithinOne) {
  Association association(kContexts);
  const Bytes message = Pattern(200000);
  association.pdu.PDataTF.VRBuffer.Write(message.data(),
                                         static_cast<std::uint32_t>(message.size()));
  {
    SocketFailure failure;
    failure.FailCall(SocketCall::kSend, 2, ECONNRESET);
    EXPECT_FALSE(association.pdu.Write(std::uint8_t{3}));
  }
  EXPECT_EQ(association.pdu.Link.Connected, 0);
  const Connection again;
  association.pdu.Link.Adopt(again.ours);
  association.pdu.PDataTF.VRBuffer.Write(message.data(), 10);
  EXPECT_TRUE(association.pdu.Write(std::uint8_t{3}));
  EXPECT_EQ(again.peer.Received(), Data(3, kLastPart, Pattern(10)));
}

TEST(WriteMessage, SendsNothingAtAllForAnObjectWithoutElements) {
  Association association(kContexts);
  DICOMDataObject object;
  EXPECT_TRUE(association.pdu.Write(object, UID(kCt)));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(WriteMessage, HasWordsForAClassThatWasNotAccepted) {
  Association association(kContexts);
  DICOMDataObject object;
  FillSmallSet(object);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  EXPECT_FALSE(association.pdu.Write(object, UID("1.2.3")));
  EXPECT_EQ(Words(association.pdu), "SOP Class not supported [1.2.3]");
  association.pdu.SetError(nullptr);
  EXPECT_FALSE(association.pdu.Write(command, UID("1.2.3")));
  EXPECT_EQ(Words(association.pdu), "SOP Class not supported [1.2.3]");
  association.pdu.SetError(nullptr);
  EXPECT_FALSE(association.pdu.Write(command, &object, UID("1.2.3")));
  EXPECT_EQ(Words(association.pdu), "SOP Class not supported [1.2.3]");
  EXPECT_FALSE(object.IsEmpty());
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(WriteMessage, HasWordsForContextsAndSyntaxesThatAreNotThere) {
  Association association({{1, kEcho, "1.2.3"}, {3, kCt, ""}});
  DICOMDataObject object;
  FillSmallSet(object);
  PDataTF data;
  EXPECT_FALSE(association.pdu.ParseOutgoing(object, data.VRBuffer, 0xAB));
  EXPECT_EQ(Words(association.pdu), "Bad Presentation Context ID[0xAB]");
  EXPECT_FALSE(association.pdu.ParseOutgoing(object, data.VRBuffer, 3));
  EXPECT_EQ(Words(association.pdu), "Bad Presentation Context ID[0x3]");
  EXPECT_FALSE(association.pdu.ParseOutgoing(object, data.VRBuffer, 1));
  EXPECT_EQ(Words(association.pdu), "Bad Transfer Syntax[1.2.3], codec not found");
  // A command is not sent alone where its data cannot be encoded.
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 1);
  EXPECT_FALSE(association.pdu.Write(command, &object, UID(kEcho)));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(WriteMessage, GoesByTheAnswerThatAcceptsWhereAPeerGaveTwo) {
  Association association({{1, kCt, kBigEndianSyntax}, {1, kCt, kImplicit}});
  auto& answers = association.pdu.AAssociateAC.PresentationContexts;
  answers[0].Result = 4;
  association.pdu.AcceptedContexts.erase(association.pdu.AcceptedContexts.begin());
  DICOMDataObject object;
  FillSmallSet(object);
  EXPECT_TRUE(association.pdu.Write(object, UID(kCt)));
  EXPECT_EQ(association.peer.Received(), Data(1, kLastPart, SmallSet(Encoding::kImplicitLittle)));
  // The first one of two that accept.
  answers[0].Result = 0;
  answers[0].TransferSyntax.Set(kExplicit);
  FillSmallSet(object);
  EXPECT_TRUE(association.pdu.Write(object, UID(kCt)));
  EXPECT_EQ(association.peer.Received(), Data(1, kLastPart, SmallSet(Encoding::kExplicitLittle)));
  // One that accepts without saying what is no context, whatever comes behind.
  answers[0].TransferSyntax.Set("");
  FillSmallSet(object);
  EXPECT_FALSE(association.pdu.Write(object, UID(kCt)));
  EXPECT_EQ(Words(association.pdu), "Bad Presentation Context ID[0x1]");
  // Where none accepts, the first one that has a syntax counts: the caller has named the context.
  answers[0].Result = answers[1].Result = 4;
  PDataTF data;
  FillSmallSet(object);
  EXPECT_TRUE(association.pdu.ParseOutgoing(object, data.VRBuffer, 1));
}

TEST(WriteMessage, HasWordsForALinkThatIsClosedWhileItEncodes) {
  class Closing : public PDU_Service {
   public:
    bool ParseOutgoing(DICOMObject& object, Buffer& buffer, std::uint8_t contextID) override {
      Link.Close();
      return PDU_Service::ParseOutgoing(object, buffer, contextID);
    }
  };
  for (const bool hasCommand : {false, true}) {
    Association other(kContexts);
    Closing pdu;
    pdu.AcceptedContexts = other.pdu.AcceptedContexts;
    pdu.AAssociateAC = other.pdu.AAssociateAC;
    const Connection connection;
    pdu.Link.Adopt(connection.ours);
    DICOMDataObject object;
    FillSmallSet(object);
    DICOMCommandObject command;
    PutNumber16(command, 0x0000, 0x0100, 1);
    EXPECT_FALSE(hasCommand ? pdu.Write(command, &object, UID(kCt)) : pdu.Write(object, UID(kCt)));
    EXPECT_EQ(Words(pdu), "The link was closed");
    EXPECT_EQ(connection.peer.ReceiveToEnd(), Bytes());
  }
}

TEST(WriteMessage, NamesValuesThatAreTooLongForTheExplicitFormOfTheirType) {
  // DS has two bytes for the length, of which 65534 is the greatest even one; at the top and within an item.
  const std::string most(65534, '1');
  const std::string more(65536, '2');
  for (const auto& row : {std::pair{kImplicit, Encoding::kImplicitLittle},
                          std::pair{kExplicit, Encoding::kExplicitLittle},
                          std::pair{kBigEndianSyntax, Encoding::kExplicitBig}}) {
    const Encoding encoding = row.second;
    const bool isExplicit = encoding != Encoding::kImplicitLittle;
    Association association({{1, kCt, row.first}});
    DICOMDataObject object;
    object.Push(new VR(0x3006, 0x0039, 0, nullptr));
    object.GetVR(0x3006, 0x0039)->TypeCode = type_code::SQ;
    auto* item = new DICOMDataObject;
    PutBytes(*item, 0x3006, 0x0050, type_code::DS, more);
    object.Push(item);
    PutBytes(object, 0x3006, 0x0050, type_code::DS, most);
    // A UID is padded with NUL in the form in which it is one.
    PutBytes(object, 0x3008, 0x0010, type_code::UI, std::string(65535, '3') + ' ');
    std::thread peer([&] {
      Bytes data;
      for (;;) {
        const Bytes pdu = association.peer.ReceivePdu();
        if (pdu.size() < 12) break;
        data.insert(data.end(), pdu.begin() + 12, pdu.end());
        if ((pdu[11] & kLastPart) != 0) break;
      }
      const std::string uid = std::string(65535, '3') + (isExplicit ? ' ' : '\0');
      const Bytes inner = DataSetBuilder(encoding).Element(0x3006, 0x0050, "UN", more).Done();
      EXPECT_EQ(data,
                DataSetBuilder(encoding)
                    .Sequence(0x3006, 0x0039, Lengths::kUndefined, Lengths::kUndefined, {inner})
                    .Element(0x3006, 0x0050, "DS", most)
                    .Element(0x3008, 0x0010, "UN", uid)
                    .Done());
    });
    EXPECT_TRUE(association.pdu.Write(object, UID(kCt)));
    peer.join();
  }
}

TEST(WriteMessage, KnowsSyntaxesThatWereAddedAtRunTime) {
  TransferSyntaxCodec ours{"1.2.3.4", 0, kExplicitLittle, 0};
  TransferSyntaxCodec strange{"1.2.3.5", 0, 103, 0};
  AddedTransferSyntaxes().Add(ours);
  AddedTransferSyntaxes().Add(strange);
  Association association({{1, kEcho, "1.2.3.4"}, {3, kCt, "1.2.3.5"}});
  DICOMDataObject object;
  FillSmallSet(object);
  EXPECT_TRUE(association.pdu.Write(object, UID(kEcho)));
  EXPECT_EQ(association.peer.Received(), Data(1, kLastPart, SmallSet(Encoding::kExplicitLittle)));
  FillSmallSet(object);
  association.pdu.SetError(nullptr);
  EXPECT_FALSE(association.pdu.Write(object, UID(kCt)));
  EXPECT_EQ(Words(association.pdu), "");
  AddedTransferSyntaxes().Clear();
}

TEST(WriteMessage, PrefersTheObjectsOwnSyntaxWhereThePeerTookIt) {
  // The table begins with implicit little endian, explicit little endian and explicit big endian.
  Association association({{1, kCt, kBigEndianSyntax},
                           {3, kCt, kExplicit},
                           {5, kCt, kImplicit},
                           {7, kEcho, kBigEndianSyntax}});
  const auto contextFor = [&](std::string_view own, std::string_view sopClass) {
    DICOMDataObject object;
    FillSmallSet(object);
    if (!own.empty()) PutUid(object, 0x0002, 0x0010, own);
    PDataTF data;
    return association.pdu.ParseOutgoingForClass(object, data.VRBuffer, UID(sopClass));
  };
  EXPECT_EQ(contextFor(kExplicit, kCt), 3);
  EXPECT_EQ(contextFor(kBigEndianSyntax, kCt), 1);
  EXPECT_EQ(contextFor("1.2.840.10008.1.2.4.50", kCt), 5);
  EXPECT_EQ(contextFor("1.2.3", kCt), 5);
  EXPECT_EQ(contextFor("", kCt), 5);
  EXPECT_EQ(contextFor(kImplicit, kEcho), 7);
  EXPECT_EQ(contextFor("", "1.2.3"), 0);
  EXPECT_EQ(Words(association.pdu), "Cannot find Presentation Context for [1.2.3]");
}

TEST(WriteMessage, TakesTheFirstSyntaxOfTheTableWhereNoClassIsInHand) {
  const auto contextAmong = [](const std::vector<Agreed>& contexts) {
    Association association(contexts);
    DICOMDataObject object;
    FillSmallSet(object);
    PDataTF data;
    return association.pdu.ParseOutgoingAny(object, data.VRBuffer);
  };
  EXPECT_EQ(contextAmong({{1, kCt, kBigEndianSyntax}, {3, kEcho, kImplicit}}), 3);
  EXPECT_EQ(contextAmong({{1, kCt, kBigEndianSyntax}, {3, kEcho, "1.2.3"}}), 1);
  EXPECT_EQ(contextAmong({{3, kEcho, "1.2.3"}}), 0);
  EXPECT_EQ(contextAmong({}), 0);
}

TEST(WriteMessage, AnswersInTheContextOfTheRequest) {
  Association association({{1, kCt, kImplicit}, {3, kCt, kExplicit}, {5, kEcho, kImplicit}});
  const auto respond = [&] {
    DICOMCommandObject command;
    PutNumber16(command, 0x0000, 0x0100, 0x8001);
    EXPECT_TRUE(association.pdu.Respond(command, nullptr, UID(kCt)));
    return association.peer.Received();
  };
  const Bytes command = Command().Number(0x0100, 0x8001);
  association.pdu.PDataTF.MessagePresentationContextID = 3;
  EXPECT_EQ(respond(), Data(3, kWholeCommand, command));
  // A request that came where its class was not agreed is answered where it was.
  association.pdu.PDataTF.MessagePresentationContextID = 5;
  EXPECT_EQ(respond(), Data(1, kWholeCommand, command));
  // One whose class was not agreed at all has no other place.
  association.pdu.AcceptedContexts.erase(association.pdu.AcceptedContexts.begin(),
                                         association.pdu.AcceptedContexts.begin() + 2);
  association.pdu.PDataTF.MessagePresentationContextID = 5;
  EXPECT_EQ(respond(), Data(5, kWholeCommand, command));
  association.pdu.PDataTF.MessagePresentationContextID = 3;
  DICOMCommandObject unplaced;
  PutNumber16(unplaced, 0x0000, 0x0100, 0x8001);
  EXPECT_FALSE(association.pdu.Respond(unplaced, nullptr, UID(kCt)));
  EXPECT_EQ(Words(association.pdu), "SOP Class not supported [1.2.840.10008.5.1.4.1.1.2]");
}

TEST(WriteMessage, LeavesTheSocketsWordsWhereTheLinkIsLost) {
  Association association(kContexts);
  association.peer.Close();
  DICOMDataObject object;
  FillSmallSet(object);
  EXPECT_FALSE(association.pdu.Write(object, UID(kCt)));
  EXPECT_EQ(Words(association.pdu), association.pdu.Link.GetLastError());
  EXPECT_NE(Words(association.pdu).find("Error binary send"), std::string::npos);
}

// --- reading ---

TEST(ReadMessage, DecodesDataByItsContextAndNotesTheSyntax) {
  const struct {
    std::uint8_t id;
    std::string_view syntax;
    Encoding encoding;
  } rows[] = {{1, kImplicit, Encoding::kImplicitLittle},
              {3, kExplicit, Encoding::kExplicitLittle},
              {5, kBigEndianSyntax, Encoding::kExplicitBig}};
  for (const auto& row : rows) {
    Association association(kContexts);
    // Data that name another syntax themselves.
    const Bytes lying = DataSetBuilder(row.encoding).Element(0x0002, 0x0010, "UI", "1.2.3.");
    association.peer.Send(Data(row.id, kLastPart, Joined({lying, SmallSet(row.encoding)})));
    DICOMDataObject object;
    EXPECT_EQ(association.pdu.Read(object), row.id);
    EXPECT_EQ(UidOf(object, 0x0002, 0x0010)->View(), row.syntax);
    EXPECT_EQ(ValueOf(object, 0x0010, 0x0020), "ID");
    EXPECT_EQ(object.GetVR(0x0010, 0x0020)->TypeCode,
              row.id == 1 ? type_code::kNone : type_code::LO);
    EXPECT_EQ(association.pdu.Link.Connected, 1);
  }
}

TEST(ReadMessage, DecodesCommandsImplicitInAnyContext) {
  Association association(kContexts);
  association.peer.Send(Data(5, kWholeCommand, Command().Number(0x0100, 0x0030)));
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 5);
  EXPECT_EQ(Number16(command, 0, 0x0100), 0x0030);
  EXPECT_EQ(command.GetVR(0x0002, 0x0010), nullptr);
}

TEST(ReadMessage, GoesByTheMarkOfTheFragmentAndNotByTheKindOfObject) {
  Association association(kContexts);
  association.peer.Send(Joined({Data(3, kLastPart, SmallSet(Encoding::kExplicitLittle)),
                                Data(3, kWholeCommand, Command().Number(0x0100, 0x0030))}));
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 3);
  EXPECT_EQ(ValueOf(command, 0x0010, 0x0020), "ID");
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 3);
  EXPECT_EQ(Number16(object, 0, 0x0100), 0x0030);
}

TEST(ReadMessage, DeliversTwoMessagesOfOnePduByTwoCalls) {
  Association association(kContexts);
  association.peer.Send(
      Joined({Pdu(4, Joined({Pdv(3, kWholeCommand, Command().Number(0x0100, 1)),
                             Pdv(3, kLastPart, SmallSet(Encoding::kExplicitLittle))})),
              ReleaseRequest()}));
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 3);
  EXPECT_EQ(Number16(command, 0, 0x0100), 1);
  EXPECT_TRUE(association.pdu.HasInput());
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 3);
  EXPECT_EQ(ValueOf(object, 0x0010, 0x0020), "ID");
  DICOMCommandObject none;
  EXPECT_EQ(association.pdu.Read(none), 0);
  EXPECT_EQ(association.peer.Received(), ReleaseAnswer());
}

TEST(ReadMessage, TakesAMessageWithoutAByte) {
  Association association(kContexts);
  association.peer.Send(Data(3, kLastPart, {}));
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 3);
  EXPECT_EQ(UidOf(object, 0x0002, 0x0010)->View(), kExplicit);
  EXPECT_EQ(association.pdu.Link.Connected, 1);
}

TEST(ReadMessage, GoesOnInAPduWhoseRestBeginsAMessage) {
  Association association(kContexts);
  const Bytes whole = SmallSet(Encoding::kExplicitLittle);
  const Bytes head(whole.begin(), whole.begin() + 5);
  const Bytes rest(whole.begin() + 5, whole.end());
  association.peer.Send(
      Joined({Pdu(4, Joined({Pdv(3, kWholeCommand, Command().Number(0x0100, 1)), Pdv(3, 0, head)})),
              Data(3, 0, {}), Data(3, kLastPart, rest)}));
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 3);
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 3);
  EXPECT_EQ(ValueOf(object, 0x0010, 0x0020), "ID");
}

TEST(ReadMessage, BringsWhatComesByteByByte) {
  Association association(kContexts);
  const Bytes stream = Joined({Data(3, kWholeCommand, Command().Number(0x0100, 1)),
                               Fragmented(3, 0, SmallSet(Encoding::kExplicitLittle))});
  std::thread slow([&] {
    for (const std::uint8_t byte : stream) association.peer.Send({byte});
  });
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 3);
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 3);
  EXPECT_EQ(ValueOf(object, 0x0010, 0x0020), "ID");
  slow.join();
}

TEST(ReadMessage, BringsLongMessagesWhole) {
  Association association(kContexts);
  const Bytes pixels = Pattern(3 << 20);
  const Bytes message = Elements().Value(0x7FE0, 0x0010, pixels);
  std::thread sender([&] {
    // One PDU with one PDV, as no fragment of ours is.
    association.peer.Send(Data(1, kLastPart, message));
  });
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 1);
  sender.join();
  ASSERT_NE(object.GetVR(0x7FE0, 0x0010), nullptr);
  EXPECT_EQ(ValueOf(object, 0x7FE0, 0x0010), TextOf(pixels));
  // What was read is not held any longer.
  EXPECT_TRUE(association.pdu.PDataTF.Message().empty());
  EXPECT_EQ(association.pdu.PDataTF.VRBuffer.Available(), 0u);
}

struct Ending {
  const char* name;
  Bytes sent;
  const char* words;
  bool staysOpen;
  Bytes answer;
};

TEST(ReadMessage, ActsOnEveryTypeOfPdu) {
  const Ending endings[] = {
      {"a request", RequestFor({{1, kEcho, {kImplicit}}}),
       "Got unexpected A-ASSCIATE-RQ, sending A-Abort-RQ", false, OurAbort()},
      {"an acceptance", Associate(2, "A", "B", ApplicationItem()),
       "Got unexpected A-ASSCIATE-AC, sending A-Abort-RQ", false, OurAbort()},
      {"a refusal", Reject(1, 1, 1), "Got unexpected A-ASSCIATE-RJ, sending A-Abort-RQ", false,
       OurAbort()},
      {"bad data",
       Pdu(4, Joined({Big32(1), {1, 3}})),
       "Error reading P-DATA-TF from network",
       true,
       {}},
      {"a release", ReleaseRequest(), "", true, ReleaseAnswer()},
      {"a release of another length", {5, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0}, "", true, {}},
      {"an answer to a release", ReleaseAnswer(), "", false, {}},
      {"an abort", AbortPdu(2, 6), "", false, {}},
      {"type 0", {0}, "DUL: Received unknown item type 0, sending A-Abort-RQ", false, OurAbort()},
      {"type 8", {8}, "DUL: Received unknown item type 8, sending A-Abort-RQ", false, OurAbort()},
      {"type 255",
       {255},
       "DUL: Received unknown item type FF, sending A-Abort-RQ",
       false,
       OurAbort()},
      {"the end", {}, "The peer has closed the link", false, {}},
      {"a broken command", Data(1, kWholeCommand, {0, 0, 0, 1, 40, 0, 0, 0, 1}),
       "Error parsing P-DATA-TF Payload, sending A-Abort-RQ", false, OurAbort()},
      {"broken data", Data(3, kLastPart, {8, 0, 0, 1, 'U', 'S', 40, 0, 1}),
       "Error parsing P-DATA-TF Payload, sending A-Abort-RQ", false, OurAbort()},
      {"data of no context", Data(9, kLastPart, Elements().Number(8, 1, 1)),
       "Error parsing P-DATA-TF Payload, sending A-Abort-RQ", false, OurAbort()},
      {"a command of the context that means none",
       Data(0, kWholeCommand, Command().Number(0x0100, 1)),
       "Error parsing P-DATA-TF Payload, sending A-Abort-RQ", false, OurAbort()},
  };
  for (const Ending& ending : endings) {
    Association association(kContexts);
    association.peer.SendAll(ending.sent);
    DICOMDataObject object;
    association.pdu.PDataTF.MsgStatus = -1;  // of a message before
    EXPECT_EQ(association.pdu.Read(object), 0) << ending.name;
    EXPECT_NE(association.pdu.PDataTF.MsgStatus, -1) << ending.name;
    EXPECT_EQ(Words(association.pdu), ending.words) << ending.name;
    EXPECT_EQ(association.pdu.Link.Connected != 0, ending.staysOpen) << ending.name;
    EXPECT_EQ(association.peer.Received(), ending.answer) << ending.name;
    if (!ending.staysOpen) {
      EXPECT_EQ(association.pdu.Read(object), 0) << ending.name;
    }
  }
}

TEST(ReadMessage, HasOtherWordsForFailuresInTheRestOfAPdu) {
  const struct {
    Bytes rest;
    const char* words;
    bool staysOpen;
    Bytes answer;
  } rows[] = {
      {Joined({Big32(1), {3, 2}}), "Error reading data from network", true, {}},
      {Pdv(3, kLastPart, {8, 0, 0, 1, 'U', 'S', 40, 0, 1}),
       "Error parsing DICOM Data, sending AAbortRQ", false, OurAbort()},
  };
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.SendAll(
        Pdu(4, Joined({Pdv(3, kWholeCommand, Command().Number(0x0100, 1)), row.rest})));
    DICOMCommandObject command;
    EXPECT_EQ(association.pdu.Read(command), 3);
    DICOMDataObject object;
    EXPECT_EQ(association.pdu.Read(object), 0);
    EXPECT_EQ(Words(association.pdu), row.words);
    EXPECT_EQ(association.pdu.Link.Connected != 0, row.staysOpen);
    EXPECT_EQ(association.peer.Received(), row.answer);
  }
}

TEST(ReadMessage, TriesToAbortALinkOnWhichNothingComes) {
  Association association(kContexts);
  association.pdu.Link.TimeoutSecs = 1;
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 0);
  EXPECT_EQ(Words(association.pdu), "Timeout error reading from socket");
  EXPECT_EQ(association.pdu.Link.Connected, 0);
  EXPECT_EQ(association.peer.ReceiveToEnd(), OurAbort());
}

/// What a peer may say where the rest of a message is awaited.
const Ending kInterruptions[] = {
    {"a request", RequestFor({{1, kEcho, {kImplicit}}}),
     "Got unexpected A-ASSCIATE-RQ, sending A-Abort-RQ", false, OurAbort()},
    {"an acceptance", Associate(2, "A", "B", ApplicationItem()),
     "Got unexpected A-ASSCIATE-AC, sending A-Abort-RQ", false, OurAbort()},
    {"a refusal", Reject(1, 1, 1), "Got unexpected A-ASSCIATE-RJ, sending A-Abort-RQ", false,
     OurAbort()},
    {"a release", ReleaseRequest(), "", true, ReleaseAnswer()},
    {"an answer to a release", ReleaseAnswer(), "", false, {}},
    {"an abort of the provider", AbortPdu(2, 6), "", false, {}},
    {"an abort of the user", AbortPdu(0, 0), "", false, {}},
    {"an abort and garbage", Joined({AbortPdu(0, 0), Bytes(1000, 0xEE)}), "", false, {}},
    {"an abort and the rest",
     Joined({AbortPdu(0, 0), Data(3, kLastPart, Bytes(4))}),
     "",
     false,
     {}},
    {"type 0", {0}, "DUL: Received unknown item type 0, sending A-Abort-RQ", false, OurAbort()},
    {"type 8", {8}, "DUL: Received unknown item type 8, sending A-Abort-RQ", false, OurAbort()},
    {"the end", {}, "The peer has closed the link", false, {}},
};

TEST(ReadMessage, KeepsNothingOfAMessageThatIsInterrupted) {
  const struct {
    Bytes begun;
    bool hasCommand;
  } beginnings[] = {
      {Data(3, 0, Pattern(100000)), false},
      {Data(3, kCommandPart, Bytes(5)), false},
      {Data(3, kWholeCommand, Command().Number(0x0100, 1)), true},
      {Joined({Data(3, kWholeCommand, Command().Number(0x0100, 1)), Data(3, 0, Pattern(5000))}),
       true},
  };
  for (const auto& beginning : beginnings) {
    for (const Ending& ending : kInterruptions) {
      Association association(kContexts);
      PDU_Service& pdu = association.pdu;
      association.peer.SendAll(Joined({beginning.begun, ending.sent}));
      DICOMCommandObject command;
      if (beginning.hasCommand) {
        EXPECT_EQ(pdu.Read(command), 3) << ending.name;
      }
      DICOMDataObject object;
      EXPECT_EQ(pdu.Read(object), 0) << ending.name;
      EXPECT_EQ(Words(pdu), ending.words) << ending.name;
      EXPECT_EQ(pdu.Link.Connected != 0, ending.staysOpen) << ending.name;
      EXPECT_EQ(association.peer.Received(), ending.answer) << ending.name;
      // Of a link that stays open it is dropped by whoever closes it.
      if (ending.staysOpen) pdu.Close();
      EXPECT_TRUE(object.IsEmpty()) << ending.name;
      EXPECT_TRUE(pdu.PDataTF.Message().empty()) << ending.name;
      EXPECT_EQ(pdu.InSize, 0) << ending.name;
      EXPECT_EQ(pdu.Read(object), 0) << ending.name;
    }
  }
}

TEST(ReadMessage, TakesNothingBehindAnAbort) {
  const Bytes message = Data(3, kWholeCommand, Command().Number(0x0100, 1));
  for (const Bytes& garbage : {Bytes(100000, 0xEE), message, ReleaseRequest(), AbortPdu(2, 6)}) {
    Association association(kContexts);
    association.peer.Send(Joined({AbortPdu(0, 0), garbage}));
    DICOMCommandObject command;
    EXPECT_EQ(association.pdu.Read(command), 0);
    EXPECT_EQ(association.pdu.Read(command), 0);
    EXPECT_TRUE(command.IsEmpty());
    EXPECT_EQ(Words(association.pdu), "");
    EXPECT_EQ(association.peer.ReceiveToEnd(), Bytes());
    // Nor is it there when the next link stands.
    Connection next;
    association.pdu.Link.Adopt(next.ours);
    next.peer.Send(message);
    EXPECT_EQ(association.pdu.Read(command), 3);
    EXPECT_EQ(association.pdu.Link.Connected, 1);
  }
}

TEST(ReadMessage, AnswersNothingWhereThereIsNoLink) {
  PDU_Service pdu;
  pdu.PDataTF.MsgStatus = 1;
  DICOMDataObject object;
  EXPECT_EQ(pdu.Read(object), 0);
  EXPECT_EQ(Words(pdu), "");
}

TEST(ReadMessage, SendsItsOwnNumbersInAnAbortWhateverWasReceived) {
  Association association(kContexts);
  association.pdu.AAbortRQ.Source = 2;
  association.pdu.AAbortRQ.Reason = 4;
  association.peer.Send({9});
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 0);
  EXPECT_EQ(association.peer.ReceiveToEnd(), OurAbort());
}

TEST(ReadMessage, TakesNothingOfTheLinkForAValueThatClaimsMore) {
  Association association(kContexts);
  // The value claims 100 bytes of which 4 came; another message follows.
  association.peer.Send(Joined({Data(1, kLastPart, {0x10, 0, 0x10, 0, 100, 0, 0, 0, 1, 2, 3, 4}),
                                Data(1, kWholeCommand, Command().Number(0x0100, 1))}));
  DICOMDataObject object;
  EXPECT_EQ(association.pdu.Read(object), 0);
  EXPECT_EQ(association.pdu.Link.Connected, 0);
}

}  // namespace
}  // namespace tessaret::test
