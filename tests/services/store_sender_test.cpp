// A queue of files on its way to a node in this process.
#include "services/store_sender.h"

#include <cerrno>
#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/codec_helpers.h"
#include "core/module_dictionaries.h"
#include "core/object_maker.h"
#include "core/type_code.h"
#include "platform/socket_calls.h"
#include "services/heard_events.h"
#include "services/store_files.h"
#include "services/store_provider.h"
#include "services/store_target.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

class StoreSending : public testing::Test {
 protected:
  std::string Add(const std::string& name, const Bytes& content) {
    WriteBytes(folder_.File(name), content);
    files_.push_back(folder_.File(name));
    return files_.back();
  }

  bool Send(const std::string& port, std::int32_t timeoutSecs = 20) {
    return sender_.Send(TargetAt(port, timeoutSecs), classes_, isCancelled_);
  }

  const TempFolder folder_;
  std::vector<std::string> files_;
  std::set<std::string> classes_ = {kCTStorage};
  std::atomic<bool> isCancelled_ = false;
  Heard heard_;
  StoreSender sender_{files_, heard_};
};

TEST_F(StoreSending, FilesGoInTheirOrderOverOneAssociation) {
  files_ = WriteNumberedImages(folder_, 5);
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("sent 0 0", "sent 1 1", "sent 2 2", "sent 3 3", "sent 4 4",
                                        "finished 5 0"));
  EXPECT_EQ(sender_.Sent, 5u);
  EXPECT_EQ(sender_.Errors, 0u);
  EXPECT_EQ(sender_.Response.status, 0);
  provider.End();
  EXPECT_EQ(provider.associations, 1u);
  EXPECT_EQ(provider.releases, 1u);
  ASSERT_EQ(provider.stored.size(), 5u);
  for (std::size_t at = 0; at < 5; ++at) {
    EXPECT_EQ(provider.stored[at].instance, "1.2.3." + std::to_string(at));
    EXPECT_EQ(provider.stored[at].sopClass, kCTStorage);
  }
}

TEST_F(StoreSending, EachClassIsProposedInImplicitAndThenInExplicitForm) {
  classes_ = {kMRStorage, "1.2.3", kCTStorage};
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  // The classes in the order of their text.
  const std::string both = ": 1.2.840.10008.1.2 1.2.840.10008.1.2.1";
  EXPECT_THAT(provider.proposals,
              ElementsAre("1.2.3" + both, kCTStorage + both, kMRStorage + both));
  EXPECT_EQ(provider.titles, "HERE             > THERE           ");
}

TEST_F(StoreSending, AnEmptyQueueConnectsAndReleases) {
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("finished 0 0"));
  provider.End();
  EXPECT_EQ(provider.associations, 1u);
  EXPECT_EQ(provider.releases, 1u);
}

TEST_F(StoreSending, WithoutAClassNothingIsProposed) {
  classes_.clear();
  Add("a", ImageFile());
  StoreProvider provider;
  EXPECT_FALSE(Send(provider.Port()));
  EXPECT_EQ(sender_.Failure,
            "Connection to  127.0.0.1: THERE permanently refused\nNon active link");
  EXPECT_EQ(sender_.LinkWords, "No SOP Class proposed");
  EXPECT_THAT(heard_.lines, ElementsAre());
  provider.End();
  EXPECT_EQ(provider.associations, 0u);
}

TEST_F(StoreSending, ARefusalIsToldByItsNumbers) {
  Add("a", ImageFile());
  AnsweringPeer refusing(Refusal(2, 3, 2));
  EXPECT_FALSE(Send(refusing.Port()));
  EXPECT_EQ(sender_.Failure,
            "Connection to  127.0.0.1: THERE temporarily refused\nUnupported Application Context");
  EXPECT_EQ(sender_.LinkWords,
            "Connection rejected transient: service-provider (Presentation related function), "
            "application context name not supported");
  EXPECT_THAT(heard_.lines, ElementsAre());
}

TEST_F(StoreSending, APeerThatTakesNoClassIsNoAssociation) {
  Add("a", ImageFile());
  // An A-ASSOCIATE-AC with nothing in it but titles: type 2, a length of 68, version 1, and 66 further bytes.
  Bytes nothing = {2, 0, 0, 0, 0, 68, 0, 1};
  nothing.resize(6 + 68, 0);
  AnsweringPeer peer(nothing);
  EXPECT_FALSE(Send(peer.Port()));
  EXPECT_THAT(sender_.LinkWords, StartsWith("No Accepted presentation Context found"));
  EXPECT_THAT(heard_.lines, ElementsAre());
}

TEST_F(StoreSending, ABrokenFileDoesNotStopTheOthers) {
  Add("1", ImageFile("1.2.3.1"));
  const std::string missing = folder_.File("2");
  files_.push_back(missing);
  const std::string empty = Add("3", {});
  Add("4", ImageFile("1.2.3.4"));
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines,
              ElementsAre("sent 1 0", "error 2 1", "error 3 2", "sent 4 3", "finished 2 2"));
  EXPECT_THAT(heard_.errors[0], StartsWith("Error sending [" + missing + "]: "));
  EXPECT_GT(heard_.errors[0].size(), ("Error sending [" + missing + "]: ").size());
  EXPECT_THAT(heard_.errors[1], StartsWith("Error sending [" + empty + "]: "));
  EXPECT_EQ(sender_.LinkWords, "") << "the files are to blame";
}

TEST_F(StoreSending, AFileThatIsCutIsNotSentAsIfItWereWhole) {
  const Bytes whole = ImageFile("1.2.3.1");
  const std::string cut = Add("1", Bytes(whole.begin(), whole.end() - 1));
  Add("2", ImageFile("1.2.3.2"));
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("error 1 0", "sent 2 1", "finished 1 1"));
  // Pixels are the last element, with a head of twelve bytes and eight of its own.
  EXPECT_THAT(heard_.errors,
              ElementsAre("Error sending [" + cut + "]: The file cannot be read beyond offset " +
                          std::to_string(whole.size() - 20)));
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].instance, "1.2.3.2");
}

TEST_F(StoreSending, AFileOfASyntaxThatNobodyKnowsIsToldByItsName) {
  const std::string path = Add("1", CompressedFile("1.2.999.77", {1, 2}));
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.errors, ElementsAre("Error sending [" + path +
                                         "]: Unsupported compressed Transfer Syntax [1.2.999.77]"));
  EXPECT_EQ(sender_.LinkWords, "") << "the file is to blame";
}

TEST_F(StoreSending, ElementsWithoutATypeGetThatOfTheDictionary) {
  ASSERT_TRUE(StartDictionaries(kDataDir));
  Add("1", ImageFile("1.2.3", kCTStorage, Encoding::kImplicitLittle));
  StoreProvider provider({.syntaxes = {kExplicit}});
  EXPECT_TRUE(Send(provider.Port()));
  StopDictionaries();
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].object->GetVR(0x0010, 0x0010)->TypeCode, type_code::PN);
  EXPECT_EQ(provider.stored[0].object->GetVR(0x0028, 0x0010)->TypeCode, type_code::US);
}

TEST_F(StoreSending, AValueTooLongForTheExplicitFormOfItsTypeArrivesWhole) {
  ASSERT_TRUE(StartDictionaries(kDataDir));
  // (3006,0050), contour data, is DS, for whose length there are two bytes; 65534 is the greatest even one.
  const std::string most(65534, '1');
  const std::string more(65536, '2');
  for (const std::string& contour : {most, more}) {
    Add(std::to_string(contour.size()),
        ImageHead(Encoding::kImplicitLittle, kCTStorage, "1.2.3", 2, 16)
            .Element(0x3006, 0x0050, "DS", contour)
            .Element(0x7FE0, 0x0010, "OW", LittleWords())
            .Done());
  }
  StoreProvider provider({.syntaxes = {kExplicit}});
  EXPECT_TRUE(Send(provider.Port()));
  StopDictionaries();
  provider.End();
  EXPECT_THAT(heard_.errors, ElementsAre());
  ASSERT_EQ(provider.stored.size(), 2u);
  for (const bool isMore : {false, true}) {
    const DICOMObject& stored = *provider.stored[isMore ? 1 : 0].object;
    const VR* contour = stored.GetVR(0x3006, 0x0050);
    ASSERT_NE(contour, nullptr);
    EXPECT_EQ(contour->TypeCode, isMore ? type_code::UN : type_code::DS);
    EXPECT_EQ(ValueOf(*contour), BytesOf(isMore ? more : most));
    EXPECT_EQ(ValueOf(*stored.GetVR(0x7FE0, 0x0010)), LittleWords());
  }
}

TEST_F(StoreSending, NumbersTooManyForTheirTypeKeepTheirOrderUnderNoType) {
  ASSERT_TRUE(StartDictionaries(kDataDir));
  // (0054,0010), energy window vector, is US. What is of no known type is little endian whatever surrounds it (DICOM PS3.5, 6.2.2).
  Bytes numbers;
  for (int i = 0; i < 32768; ++i) numbers.insert(numbers.end(), {0x01, 0x02});
  Add("a", ImageHead(Encoding::kImplicitLittle, kCTStorage, "1.2.3", 2, 16)
               .Element(0x0054, 0x0010, "US", numbers)
               .Element(0x7FE0, 0x0010, "OW", LittleWords())
               .Done());
  StoreProvider provider({.namedSyntax = kBig});
  EXPECT_TRUE(Send(provider.Port()));
  StopDictionaries();
  provider.End();
  EXPECT_THAT(heard_.errors, ElementsAre());
  ASSERT_EQ(provider.stored.size(), 1u);
  const DICOMObject& stored = *provider.stored[0].object;
  const VR* vector = stored.GetVR(0x0054, 0x0010);
  ASSERT_NE(vector, nullptr);
  EXPECT_EQ(vector->TypeCode, type_code::UN);
  EXPECT_EQ(ValueOf(*vector), numbers);
  EXPECT_EQ(ValueOf(*stored.GetVR(0x0028, 0x0100)), (Bytes{0, 16}));
}

TEST_F(StoreSending, AFileInASyntaxThatThePeerTookStaysAsItIs) {
  Add("a", ImageFile());
  StoreProvider provider({.syntaxes = {kExplicit}});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].syntax, kExplicit);
  const DICOMObject& object = *provider.stored[0].object;
  EXPECT_EQ(ValueOf(*object.GetVR(0x7FE0, 0x0010)), LittleWords());
  EXPECT_EQ(object.GetVR(0x7FE0, 0x0010)->TypeCode, type_code::OW);
  EXPECT_EQ(TextOf(*object.GetVR(0x0010, 0x0010)), "Doe^Jane");
  // The head of the file is no part of what is sent: what stands there came with the context.
  EXPECT_EQ(object.GetVR(0x0002, 0x0001), nullptr);
  EXPECT_EQ(object.GetVR(0x0002, 0x0012), nullptr);
}

TEST_F(StoreSending, FragmentsOfASyntaxThatThePeerTookStayAsTheyAre) {
  // No codec is there for it: nothing but leaving them alone can send them.
  const std::string syntax = "1.2.840.10008.1.2.4.100";
  Add("a", CompressedFile(syntax, {0, 0, 1, 0xB3, 0xFE, 0xFF}));
  StoreProvider provider({.namedSyntax = syntax});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_THAT(heard_.errors, ElementsAre());
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].syntax, syntax);
  EXPECT_EQ(ItemsOf(*provider.stored[0].object),
            (std::vector<Bytes>{{}, {0, 0, 1, 0xB3, 0xFE, 0xFF}}));
}

TEST_F(StoreSending, FragmentsOfAnIconGoAsTheyAreOrNotAtAll) {
  const std::string syntax = "1.2.840.10008.1.2.4.100";
  Add("a", CompressedFileWithIcon(syntax, {0, 0, 1, 0xB3}, {0, 0, 1, 0xB8}));
  {
    StoreProvider provider({.namedSyntax = syntax});
    EXPECT_TRUE(Send(provider.Port()));
    provider.End();
    EXPECT_THAT(heard_.errors, ElementsAre());
    ASSERT_EQ(provider.stored.size(), 1u);
    EXPECT_EQ(provider.stored[0].syntax, syntax);
    DICOMObject& came = *provider.stored[0].object;
    EXPECT_EQ(ItemsOf(came), (std::vector<Bytes>{{}, {0, 0, 1, 0xB3}}));
    ASSERT_NE(came.GetVR(0x0088, 0x0200), nullptr);
    EXPECT_EQ(ItemsOf(*came.GetVR(0x0088, 0x0200)->GetItem(0)),
              (std::vector<Bytes>{{}, {0, 0, 1, 0xB8}}));
  }
  // By the name of a native syntax, to a peer that takes another one.
  files_.clear();
  std::vector<std::string> expected;
  for (const Encoding encoding : {Encoding::kImplicitLittle, Encoding::kExplicitBig}) {
    expected.push_back("Error sending [" +
                       Add(NameOf(encoding), NativeFileWithIcon(encoding, {0, 0, 1, 0xB8})) +
                       "]: The pixel data are not in the accepted Transfer Syntax");
  }
  Add("whole", ImageFile("1.2.3.7"));
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  StoreProvider provider({.syntaxes = {kExplicit}});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_EQ(heard_.errors, expected);
  EXPECT_THAT(links, ElementsAre("", "", "")) << "the files are to blame";
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].instance, "1.2.3.7");
}

TEST_F(StoreSending, FilesOfAnyNativeFormArriveTheSameInEitherForm) {
  for (const Encoding encoding : kAllEncodings) {
    Add(NameOf(encoding), ImageFile("1.2.3", kCTStorage, encoding));
  }
  for (const char* syntax : {kImplicit, kExplicit}) {
    StoreProvider provider({.syntaxes = {syntax}});
    heard_.errors.clear();
    EXPECT_TRUE(Send(provider.Port()));
    provider.End();
    EXPECT_THAT(heard_.errors, ElementsAre());
    ASSERT_EQ(provider.stored.size(), 3u);
    for (const StoredObject& came : provider.stored) {
      EXPECT_EQ(came.syntax, syntax);
      EXPECT_EQ(ValueOf(*came.object->GetVR(0x7FE0, 0x0010)), LittleWords());
      EXPECT_EQ(ValueOf(*came.object->GetVR(0x0028, 0x0100)), (Bytes{16, 0}));
      EXPECT_EQ(TextOf(*came.object->GetVR(0x0028, 0x0004)), "MONOCHROME2 ");
    }
  }
}

TEST_F(StoreSending, AClassThatWasNotAddedHasNoContext) {
  const std::string path = Add("a", ImageFile("1.2.3", kMRStorage));
  Add("b", ImageFile("1.2.3"));
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("error a 0", "sent b 1", "finished 1 1"));
  EXPECT_THAT(heard_.errors, ElementsAre("Error sending [" + path +
                                         "]: Cannot find Presentation Context for SOP " +
                                         "Class[1.2.840.10008.5.1.4.1.1.4]"));
}

TEST_F(StoreSending, AFileWithoutASyntaxIsNotTranscoded) {
  // A bare data set names none.
  const std::string path =
      Add("a", ImageHead(Encoding::kImplicitLittle, kMRStorage, "1.2.3", 2, 16).Done());
  Add("b", ImageHead(Encoding::kImplicitLittle, kCTStorage, "1.2.4", 2, 16).Done());
  StoreProvider provider;
  heard_.afterEach = [&] {
    if (!heard_.errors.empty() && heard_.lines.size() == 1) {
      EXPECT_EQ(sender_.LinkWords, "SOP Class not supported [1.2.840.10008.5.1.4.1.1.4]");
    }
  };
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("error a 0", "sent b 1", "finished 1 1"));
  EXPECT_THAT(heard_.errors, ElementsAre("Error sending [" + path +
                                         "]: SOP Class not supported [1.2.840.10008.5.1.4.1.1.4]"));
}

TEST_F(StoreSending, NativePixelsAreNotSentByTheNameOfACompressedSyntax) {
  // A bare data set, which names no syntax, to a peer that takes a syntax which it was not offered.
  const std::string path = Add("a", ImageHead(Encoding::kImplicitLittle, kCTStorage, "1.2.3", 2, 16)
                                        .Element(0x7FE0, 0x0010, "OW", LittleWords())
                                        .Done());
  StoreProvider provider({.namedSyntax = "1.2.840.10008.1.2.4.50"});
  heard_.afterEach = [&] {
    if (heard_.lines.size() == 1) {
      EXPECT_EQ(sender_.LinkWords, "The pixel data are not in the accepted Transfer Syntax");
    }
  };
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 0u);
  EXPECT_EQ(provider.releases, 1u);
  EXPECT_THAT(heard_.errors,
              ElementsAre("Error sending [" + path +
                          "]: The pixel data are not in the accepted Transfer " + "Syntax"));
}

TEST_F(StoreSending, ASyntaxThatWasNotOfferedIsThePeersFault) {
  Add("a", ImageFile());
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  StoreProvider provider({.namedSyntax = "1.2.840.10008.1.2.4.100"});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 0u);
  EXPECT_THAT(links, ElementsAre("Error encoding to Transfer Syntax [1.2.840.10008.1.2.1]"));
}

TEST_F(StoreSending, FragmentsOfNoNamedSyntaxAreTheFilesFault) {
  // Bare data sets, of a class that is agreed and of one that is not.
  const auto fragments = [&](std::string_view sopClass) {
    DataSetBuilder data = ImageHead(Encoding::kExplicitLittle, sopClass, "1.2.3", 4, 8);
    return data.Fragments({{}, {1, 2}}).Done();
  };
  const std::string agreed = Add("a", fragments(kCTStorage));
  // By a name that says that there are none, which the peer did not take: the implicit one is proposed first.
  const std::string misnamed = Add(
      "c",
      FileOf(
          Encoding::kExplicitLittle,
          ImageHead(Encoding::kExplicitLittle, kCTStorage, "1.2.3", 4, 8).Fragments({{}, {1, 2}})));
  const std::string other = Add("b", fragments(kMRStorage));
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 0u);
  const std::string notAgreed = "SOP Class not supported [1.2.840.10008.5.1.4.1.1.4]";
  EXPECT_THAT(heard_.errors,
              ElementsAre("Error sending [" + agreed +
                              "]: The pixel data are not in the accepted Transfer Syntax",
                          "Error sending [" + misnamed +
                              "]: The pixel data are not in the accepted Transfer Syntax",
                          "Error sending [" + other + "]: " + notAgreed));
  EXPECT_THAT(links, ElementsAre("", "", notAgreed));
}

TEST_F(StoreSending, FragmentsGoByNoOtherNativeName) {
  const std::string notTaken = "]: The pixel data are not in the accepted Transfer Syntax";
  const std::string noContext =
      "Cannot find Presentation Context for SOP Class[1.2.840.10008.5.1.4.1.1.4]";
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  const auto add = [&](Encoding encoding, const char* name, std::string_view sopClass) {
    return Add(name, FileOf(encoding,
                            ImageHead(encoding, sopClass, "1.2.3", 4, 8).Fragments({{}, {1, 2}})));
  };
  const std::string implicit = add(Encoding::kImplicitLittle, "a", kCTStorage);
  const std::string big = add(Encoding::kExplicitBig, "b", kCTStorage);
  const std::string other = add(Encoding::kImplicitLittle, "c", kMRStorage);
  StoreProvider provider({.syntaxes = {kExplicit}});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 0u);
  EXPECT_THAT(heard_.errors, ElementsAre("Error sending [" + implicit + notTaken,
                                         "Error sending [" + big + notTaken,
                                         "Error sending [" + other + "]: " + noContext));
  EXPECT_THAT(links, ElementsAre("", "", noContext));
}

TEST_F(StoreSending, FragmentsByANativeNameAreTheFilesFaultWhateverThePeerNames) {
  const std::string file = Add(
      "a",
      FileOf(
          Encoding::kExplicitLittle,
          ImageHead(Encoding::kExplicitLittle, kCTStorage, "1.2.3", 4, 8).Fragments({{}, {1, 2}})));
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  StoreProvider provider({.namedSyntax = kBig});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 0u);
  EXPECT_THAT(heard_.errors,
              ElementsAre("Error sending [" + file +
                          "]: The pixel data are not in the accepted Transfer Syntax"));
  EXPECT_THAT(links, ElementsAre(""));
}

TEST_F(StoreSending, WidePixelsThatAreCalledBytesAreTurnedForABigEndianSyntax) {
  // A bare data set, which names no syntax, and a file that is big endian itself.
  for (const Encoding encoding : {Encoding::kExplicitLittle, Encoding::kExplicitBig}) {
    const DataSetBuilder data = ImageHead(encoding, kCTStorage, "1.2.3", 2, 16)
                                    .Element(0x7FE0, 0x0010, "OB", Bytes{1, 2, 3, 4, 5, 6, 7, 8});
    Add(encoding == Encoding::kExplicitBig ? "b" : "a",
        encoding == Encoding::kExplicitBig ? FileOf(encoding, data) : data.Done());
  }
  StoreProvider provider({.namedSyntax = kBig});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  EXPECT_THAT(heard_.errors, ElementsAre());
  ASSERT_EQ(provider.stored.size(), 2u);
  const VR& turned = *provider.stored[0].object->GetVR(0x7FE0, 0x0010);
  EXPECT_EQ(turned.TypeCode, type_code::OW);
  EXPECT_EQ(ValueOf(turned), (Bytes{2, 1, 4, 3, 6, 5, 8, 7}));
  const VR& kept = *provider.stored[1].object->GetVR(0x7FE0, 0x0010);
  EXPECT_EQ(kept.TypeCode, type_code::OB);
  EXPECT_EQ(ValueOf(kept), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(StoreSending, AFileWithoutAClassIsToBlameItself) {
  Add("0", ImageFile("1.2.3", kMRStorage));
  const std::string named = Add("a", ImageFile("1.2.3", ""));
  const std::string bare =
      Add("b", ImageHead(Encoding::kImplicitLittle, "", "1.2.3", 2, 16).Done());
  // Blanked out it is none either.
  const std::string namedBlank = Add("c", ImageFile("1.2.3", "  "));
  const std::string bareBlank =
      Add("d", ImageHead(Encoding::kImplicitLittle, "  ", "1.2.3", 2, 16).Done());
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  const auto errorOf = [](const std::string& file, const char* words) {
    return "Error sending [" + file + "]: " + words;
  };
  const char* const noContext = "Cannot find Presentation Context for SOP Class[]";
  const char* const notSupported = "SOP Class not supported []";
  EXPECT_THAT(heard_.errors,
              ElementsAre(testing::_, errorOf(named, noContext), errorOf(bare, notSupported),
                          errorOf(namedBlank, noContext), errorOf(bareBlank, notSupported)));
  EXPECT_THAT(links, ElementsAre(StartsWith("Cannot find Presentation Context"), "", "", "", ""));
}

TEST_F(StoreSending, ABareDataSetGoesAsTheClassOfItsModality) {
  DataSetBuilder data(Encoding::kImplicitLittle);
  data.Element(0x0008, 0x0018, "UI", Evened("1.2.3")).Element(0x0008, 0x0060, "CS", "ct");
  Add("a", data);
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.errors, ElementsAre());
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].sopClass, kCTStorage);
}

TEST_F(StoreSending, ARefusedObjectCountsAsSent) {
  for (const char* name : {"1", "2", "3"}) Add(name, ImageFile());
  StoreProvider provider({.answer = [](std::size_t at) {
    constexpr std::uint16_t kStatuses[] = {0xA700, 0xB000, 0};
    return StoreAnswer{.status = kStatuses[at], .comment = at == 0 ? "no room " : ""};
  }});
  std::vector<std::string> responses;
  heard_.afterEach = [&] {
    responses.push_back(std::to_string(sender_.Response.status) + sender_.Response.comment);
  };
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("sent 1 0", "sent 2 1", "sent 3 2", "finished 3 0"));
  // 0xA700 and 0xB000.
  EXPECT_THAT(responses, ElementsAre("42752no room", "45056", "0"));
}

TEST_F(StoreSending, AFailureHasNoResponse) {
  Add("1", ImageFile());
  files_.push_back(folder_.File("missing"));
  StoreProvider provider({.answer = [](std::size_t) { return StoreAnswer{.status = 0xC000}; }});
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_EQ(sender_.Response.status, -1);
}

TEST_F(StoreSending, CancelledBetweenTwoFilesItStopsBeforeTheNext) {
  for (const char* name : {"1", "2", "3"}) Add(name, ImageFile());
  StoreProvider provider;
  heard_.afterEach = [&] { isCancelled_ = heard_.lines.size() == 2; };
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines, ElementsAre("sent 1 0", "sent 2 1", "finished 2 0"));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 2u);
  EXPECT_EQ(provider.releases, 1u);
}

TEST_F(StoreSending, AFileThatIsAddedMeanwhileIsSentToo) {
  Add("1", ImageFile("1.2.3.1"));
  StoreProvider provider;
  heard_.afterEach = [&] {
    if (files_.size() < 40) Add("more" + std::to_string(files_.size()), ImageFile("1.2.3.2"));
  };
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_EQ(sender_.Sent, 40u);
  EXPECT_EQ(heard_.lines.back(), "finished 40 0");
}

TEST_F(StoreSending, AfterALostLinkEachFileEndsInAnErrorOfItsOwn) {
  for (const char* name : {"1", "2", "3", "4"}) Add(name, ImageFile());
  StoreProvider provider({.answer = [](std::size_t at) {
    return StoreAnswer{.instead =
                           at == 1 ? StoreAnswer::Instead::kClose : StoreAnswer::Instead::kNothing};
  }});
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(heard_.lines,
              ElementsAre("sent 1 0", "error 2 1", "error 3 2", "error 4 3", "finished 1 3"));
  EXPECT_THAT(heard_.errors, ElementsAre(EndsWith("2]: The peer has closed the link"),
                                         EndsWith("3]: The association has ended"),
                                         EndsWith("4]: The association has ended")));
  EXPECT_THAT(links, ElementsAre("", "The peer has closed the link", "The association has ended",
                                 "The association has ended"));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 2u);
  EXPECT_EQ(provider.associations, 1u);
}

TEST_F(StoreSending, BehindALostLinkNoFileIsToBlame) {
  Add("1", ImageFile());
  Add("2", ImageHead(Encoding::kImplicitLittle, "", "1.2.3", 2, 16).Done());
  StoreProvider provider(
      {.answer = [](std::size_t) { return StoreAnswer{.instead = StoreAnswer::Instead::kClose}; }});
  std::vector<std::string> links;
  heard_.afterEach = [&] { links.push_back(sender_.LinkWords); };
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_THAT(links, ElementsAre("The peer has closed the link", "The association has ended"));
}

// Of sends by one thread: 0 all go, 1 the next goes in part, 2 the next fails.
thread_local int breakingSends = 0;
thread_local int sendsSeen = 0;

int BreakSends(SocketCall call, std::size_t& count) {
  if (call == SocketCall::kSend) ++sendsSeen;
  if (call != SocketCall::kSend || breakingSends == 0) return 0;
  if (breakingSends == 2) {
    breakingSends = 0;
    sendsSeen = 0;
    return ECONNRESET;
  }
  breakingSends = 2;
  count = 100;
  return 0;
}

TEST_F(StoreSending, TheEndIsToldWhileTheAssociationStands) {
  Add("a", ImageFile());
  StoreProvider provider;
  SetSocketCallHook(&BreakSends);
  heard_.afterEach = [&] { sendsSeen = 0; };
  // A release would have been sent by then.
  heard_.atEnd = [&] { EXPECT_EQ(sendsSeen, 0); };
  EXPECT_TRUE(Send(provider.Port()));
  SetSocketCallHook(nullptr);
  EXPECT_EQ(sendsSeen, 1);
  provider.End();
  EXPECT_EQ(provider.releases, 1u);
}

TEST_F(StoreSending, NothingFollowsAMessageThatWentInPart) {
  for (const char* name : {"1", "2", "3"}) Add(name, ImageFile());
  StoreProvider provider;
  SetSocketCallHook(&BreakSends);
  heard_.afterEach = [&] { breakingSends = heard_.lines.size() == 1 ? 1 : 0; };
  EXPECT_TRUE(Send(provider.Port()));
  SetSocketCallHook(nullptr);
  EXPECT_THAT(heard_.lines, ElementsAre("sent 1 0", "error 2 1", "error 3 2", "finished 1 2"));
  EXPECT_THAT(heard_.errors, testing::Each(testing::HasSubstr("Error binary send wsaerr=104")));
  provider.End();
  EXPECT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.releases, 0u);
  EXPECT_EQ(sendsSeen, 0) << "not even a release";
}

TEST_F(StoreSending, AnAnswerThatDoesNotComeIsWaitedForOnce) {
  for (const char* name : {"1", "2"}) Add(name, ImageFile());
  std::atomic<bool> mayGoOn = false;
  StoreProvider provider({.answer = [&](std::size_t) {
    while (!mayGoOn) std::this_thread::yield();
    return StoreAnswer{};
  }});
  heard_.atEnd = [&] { mayGoOn = true; };
  EXPECT_TRUE(Send(provider.Port(), 1));
  EXPECT_THAT(heard_.errors, ElementsAre(EndsWith("1]: Timeout error reading from socket"),
                                         EndsWith("2]: Timeout error reading from socket")));
  EXPECT_EQ(heard_.lines.back(), "finished 0 2");
}

TEST_F(StoreSending, WithoutATimeThatOfASocketStands) {
  Add("1", ImageFile());
  StoreProvider provider({.answer = [](std::size_t) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    return StoreAnswer{};
  }});
  EXPECT_TRUE(Send(provider.Port(), 0));
  EXPECT_THAT(heard_.lines, ElementsAre("sent 1 0", "finished 1 0"));
}

TEST_F(StoreSending, WhateverComesInsteadOfAnAnswerIsTheFilesError) {
  using Instead = StoreAnswer::Instead;
  for (const char* name : {"1", "2", "3"}) Add(name, ImageFile());
  struct Row {
    Instead instead;
    const char* words;
    bool goesOn;
  };
  for (const Row& row :
       {Row{Instead::kAbort, "The association has ended", false},
        Row{Instead::kRelease, "The association has ended", false},
        Row{Instead::kOther, "Got command 0x8020 where response 0x8001 was awaited", true}}) {
    heard_ = {};
    StoreSender sender(files_, heard_);
    StoreProvider provider({.answer = [&](std::size_t at) {
      return StoreAnswer{.instead = at == 1 ? row.instead : Instead::kNothing};
    }});
    EXPECT_TRUE(sender.Send(TargetAt(provider.Port()), classes_, isCancelled_));
    EXPECT_THAT(heard_.lines,
                row.goesOn ? ElementsAre("sent 1 0", "error 2 1", "sent 3 2", "finished 2 1")
                           : ElementsAre("sent 1 0", "error 2 1", "error 3 2", "finished 1 2"));
    ASSERT_FALSE(heard_.errors.empty());
    EXPECT_EQ(heard_.errors[0], "Error sending [" + files_[1] + "]: " + row.words);
    provider.End();
    EXPECT_EQ(provider.releases, row.goesOn ? 1u : 0u);
  }
}

TEST_F(StoreSending, AnObjectIsWholeWhateverItsLength) {
  // Around the length of one fragment, and of many.
  const Bytes head = ImageHead(Encoding::kImplicitLittle, kCTStorage, "1.2.3", 2, 16).Done();
  const std::size_t rest = 4096 - head.size() - 8;
  std::vector<std::size_t> sizes = {rest - 2, rest, rest + 2, rest + 4096, 1000000};
  for (const std::size_t size : sizes) {
    DataSetBuilder data = ImageHead(Encoding::kImplicitLittle, kCTStorage, "1.2.3", 2, 16);
    data.Element(0x7FE0, 0x0010, "OW", Pattern(size));
    Add(std::to_string(size), FileOf(Encoding::kImplicitLittle, data));
  }
  StoreProvider provider({.syntaxes = {kImplicit}});
  EXPECT_TRUE(Send(provider.Port()));
  provider.End();
  ASSERT_EQ(provider.stored.size(), sizes.size());
  for (std::size_t at = 0; at < sizes.size(); ++at) {
    EXPECT_EQ(ValueOf(*provider.stored[at].object->GetVR(0x7FE0, 0x0010)), Pattern(sizes[at]));
  }
}

TEST_F(StoreSending, AThousandFilesGoOverOneAssociation) {
  Add("only", ImageFile());
  files_.assign(1000, files_[0]);
  StoreProvider provider;
  EXPECT_TRUE(Send(provider.Port()));
  EXPECT_EQ(sender_.Sent, 1000u);
  provider.End();
  EXPECT_EQ(provider.associations, 1u);
  EXPECT_EQ(provider.stored.size(), 1000u);
}

}  // namespace
}  // namespace tessaret::test
