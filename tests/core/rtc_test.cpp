// The data dictionary: loading, looking up, giving types to elements.
#include "core/rtc.h"

#include <array>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/small_stack.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret {
namespace {

using test::TempFolder;
using test::WriteText;

constexpr std::string_view kSmall =
    "# test\n"
    "{0x0010 0x0010 PN \"Patient's Name\"}\n"
    "{0x0010 0x0020 LO \"Patient ID\"}\n"
    "{0x0008 0x1140 SQ \"Referenced Image Sequence\"}\n"
    "{0x0028 0x0010 US \"Rows\"}\n";

bool Attach(RTC& rtc, std::string_view text) { return rtc.AttachBytes(text.data(), text.size()); }

std::string DescriptionOf(const RTC& rtc, std::uint16_t group, std::uint16_t element) {
  std::array<char, kDescriptionBuffer> text;
  text.fill('?');
  rtc.RunTimeClass(group, element, text.data());
  return text.data();
}

VrCode TypeOf(const RTC& rtc, std::uint16_t group, std::uint16_t element) {
  return rtc.RunTimeClass(group, element, nullptr);
}

/// Everything that a dictionary shows, for comparing.
std::string Shown(const RTC& rtc) {
  std::ostringstream out;
  for (std::uint32_t at = 0; rtc.Table && at < rtc.Table->Count; ++at) {
    const _RTCElement& entry = rtc.Table->Elements[at];
    out << rtc.Table->Keys[at] << ' ' << entry.Group << ' ' << entry.Element << ' '
        << entry.TypeCode << ' ' << (entry.Description == nullptr ? "-" : entry.Description)
        << '\n';
  }
  return out.str();
}

std::unique_ptr<DcmDictionary> Small() {
  auto rtc = std::make_unique<DcmDictionary>();
  EXPECT_TRUE(Attach(*rtc, kSmall));
  return rtc;
}

TEST(RTC, IsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<RTC>);
  EXPECT_FALSE(std::is_copy_assignable_v<RTC>);
}

TEST(DcmDictionary, KeepsDescriptionsAndIsEmptyAtFirst) {
  const DcmDictionary rtc;
  EXPECT_NE(rtc.KeepDescriptions, 0u);
  EXPECT_EQ(rtc.Table, nullptr);
}

TEST(RTC, AnswersNothingWhenEmpty) {
  const RTC rtc;
  EXPECT_EQ(TypeOf(rtc, 0x0010, 0x0010), 0);
  EXPECT_EQ(DescriptionOf(rtc, 0x0010, 0x0010), "");
}

// Loading.

TEST(RTC, AttachesAFile) {
  const TempFolder folder;
  WriteText(folder.File("d.txt"), kSmall);
  RTC rtc;
  EXPECT_TRUE(rtc.AttachRTC(folder.File("d.txt").c_str()));
  EXPECT_EQ(rtc.Table->Count, 4u);
  EXPECT_EQ(rtc.Table->Capacity, 4u);
  EXPECT_EQ(TypeOf(rtc, 0x0010, 0x0010), type_code::PN);
  EXPECT_EQ(rtc.LastErrorText(), "");
}

TEST(RTC, SortsKeysAndElementsTogether) {
  const auto rtc = Small();
  const TagKey expected[] = {0x00081140, 0x00100010, 0x00100020, 0x00280010};
  const VrCode types[] = {type_code::SQ, type_code::PN, type_code::LO, type_code::US};
  ASSERT_EQ(rtc->Table->Count, 4u);
  for (std::uint32_t at = 0; at < 4; ++at) {
    EXPECT_EQ(rtc->Table->Keys[at], expected[at]);
    EXPECT_EQ(rtc->Table->Elements[at].Group, expected[at] >> 16);
    EXPECT_EQ(rtc->Table->Elements[at].Element, expected[at] & 0xFFFF);
    EXPECT_EQ(rtc->Table->Elements[at].TypeCode, types[at]);
  }
}

TEST(RTC, ReplacesWhatWasLoaded) {
  const auto rtc = Small();
  ASSERT_TRUE(Attach(*rtc, "\n{0x0008 0x0060 CS \"Modality\"}\n"));
  EXPECT_EQ(rtc->Table->Count, 1u);
  EXPECT_EQ(TypeOf(*rtc, 0x0010, 0x0010), 0);
  EXPECT_EQ(TypeOf(*rtc, 0x0008, 0x0060), type_code::CS);
}

TEST(RTC, StaysAsItWasWhenThereIsNoFile) {
  const TempFolder folder;
  const auto rtc = Small();
  const std::string before = Shown(*rtc);
  EXPECT_FALSE(rtc->AttachRTC(nullptr));
  EXPECT_EQ(rtc->LastErrorText(), "there is no path");
  EXPECT_FALSE(rtc->AttachRTC(folder.File("absent").c_str()));
  EXPECT_EQ(rtc->LastErrorText(), "No such file or directory");
  EXPECT_FALSE(rtc->AttachRTC(folder.Path().c_str()));
  EXPECT_EQ(rtc->LastErrorText(), "Is a directory");
  EXPECT_FALSE(rtc->AttachRTC(""));
  EXPECT_EQ(Shown(*rtc), before);
  EXPECT_EQ(DescriptionOf(*rtc, 0x0010, 0x0020), "Patient ID");
}

TEST(RTC, StaysAsItWasWhenAFileCannotBeReadOn) {
  const TempFolder folder;
  WriteText(folder.File("d.txt"), "\n{0x0008 0x0060 CS \"Modality\"}\n");
  const auto rtc = Small();
  const std::string before = Shown(*rtc);
  test::FileFailure failure;
  failure.FailCall(FileCall::kRead, 1, EIO);
  EXPECT_FALSE(rtc->AttachRTC(folder.File("d.txt").c_str()));
  EXPECT_EQ(rtc->LastErrorText(), "Input/output error");
  EXPECT_EQ(Shown(*rtc), before);
}

TEST(RTC, StaysAsItWasWhenAFileBreaksItsGrammar) {
  const auto rtc = Small();
  const std::string before = Shown(*rtc);
  EXPECT_FALSE(Attach(*rtc, "\n{16 16 PN \"good\"}\n{16 32 LO \"cut"));
  EXPECT_EQ(rtc->LastErrorText(), "line 3: the record has no end");
  EXPECT_EQ(Shown(*rtc), before);
  EXPECT_EQ(TypeOf(*rtc, 0x0028, 0x0010), type_code::US);
}

TEST(RTC, TellsNoErrorOnceALoadHasSucceeded) {
  RTC rtc;
  EXPECT_FALSE(rtc.AttachRTC(nullptr));
  EXPECT_NE(rtc.LastErrorText(), "");
  EXPECT_TRUE(Attach(rtc, kSmall));
  EXPECT_EQ(rtc.LastErrorText(), "");
}

TEST(RTC, AFileWithoutAnEntryIsAFailureAndLeavesTheDictionaryEmpty) {
  for (const std::string_view text :
       {"", "# nothing\n", "{16 16 PN \"first line\"}\n", "\n(0010,0010) VM=\"1\"\n"}) {
    const auto rtc = Small();
    EXPECT_FALSE(Attach(*rtc, text)) << text;
    EXPECT_EQ(rtc->Table, nullptr) << text;
    EXPECT_EQ(rtc->LastErrorText(), "there is no entry; the first line of a text is never one");
    EXPECT_EQ(TypeOf(*rtc, 0x0010, 0x0010), 0) << text;
  }
}

TEST(RTC, RefusesAFileThatIsLargerThanTheLimit) {
  const TempFolder folder;
  const std::string path = folder.File("large");
  WriteText(path, "# sparse\n");
  const auto rtc = Small();
  std::filesystem::resize_file(path, (16u << 20) + 1);
  EXPECT_FALSE(rtc->AttachRTC(path.c_str()));
  EXPECT_EQ(rtc->LastErrorText(), "File too large");
  // At the limit it is read, and refused for what is in it.
  std::filesystem::resize_file(path, 16u << 20);
  EXPECT_FALSE(rtc->AttachRTC(path.c_str()));
  EXPECT_EQ(rtc->LastErrorText(), "line 2: there is a NUL byte");
  EXPECT_EQ(rtc->Table->Count, 4u);
}

TEST(RTC, RefusesMoreBytesThanTheLimitOfAFile) {
  const auto rtc = Small();
  const std::string before = Shown(*rtc);
  const std::string entry = "\n{0x0008 0x0060 CS \"Modality\"}\n";
  // Lines of blanks behind an entry.
  const auto withBlanks = [&](std::size_t size) {
    std::string text = entry;
    text.resize(size, ' ');
    for (std::size_t at = entry.size(); at < size; at += 1000) text[at] = '\n';
    return text;
  };
  EXPECT_FALSE(Attach(*rtc, withBlanks((16u << 20) + 1)));
  EXPECT_EQ(rtc->LastErrorText(), "too many bytes");
  EXPECT_EQ(Shown(*rtc), before);
  EXPECT_TRUE(Attach(*rtc, withBlanks(16u << 20)));
}

TEST(RTC, ANullPathThrowsNothingWhereverMemoryRunsOut) {
  const auto rtc = Small();
  test::FailEveryAllocation([&] {
    EXPECT_FALSE(rtc->AttachRTC(nullptr));
    EXPECT_FALSE(rtc->LoadBinary(nullptr));
  });
  EXPECT_EQ(rtc->Table->Count, 4u);
}

TEST(RTC, AnEndlessDeviceIsRefused) {
  RTC rtc;
  EXPECT_FALSE(rtc.AttachRTC("/dev/zero"));
  EXPECT_NE(rtc.LastErrorText(), "");
}

TEST(RTC, AttachesWholeOrNotAtAllWhereverMemoryRunsOut) {
  const TempFolder folder;
  WriteText(folder.File("d.txt"),
            "\n{0x0020 0x0010 SH \"Study ID\"}\n{0x0008 0x0060 CS \"Modality\"}\n");
  const auto rtc = Small();
  const std::string before = Shown(*rtc);
  const std::string after = "524384 8 96 17235 Modality\n2097168 32 16 21320 Study ID\n";
  const std::string path = folder.File("d.txt");
  bool failed = true;
  for (std::uint64_t nth = 1; failed; ++nth) {
    bool attached = false;
    {
      const test::AllocationFailure failure(nth);
      attached = rtc->AttachRTC(path.c_str());
      failed = failure.Happened();
    }
    // Where the work goes on without the memory, a load may succeed all the same.
    EXPECT_TRUE(attached || failed) << nth;
    EXPECT_EQ(rtc->LastErrorText().empty(), attached) << nth;
    EXPECT_EQ(Shown(*rtc), attached ? after : before) << nth;
    ASSERT_TRUE(Attach(*rtc, kSmall));
  }
}

TEST(RTC, DetachFreesAllThatAttachTook) {
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, kSmall));
  const test::AllocationWatch watch;
  EXPECT_TRUE(rtc.DetachRTC());
  // The table, its two arrays, the index and the descriptions.
  EXPECT_EQ(watch.Outstanding(), -5);
  EXPECT_EQ(rtc.Table, nullptr);
  EXPECT_EQ(TypeOf(rtc, 0x0010, 0x0010), 0);
  EXPECT_TRUE(rtc.DetachRTC());
}

TEST(RTC, DetachesWhatItHoldsBeforeItTakesAnything) {
  struct Counting : RTC {
    bool DetachRTC() override {
      ++detached;
      return RTC::DetachRTC();
    }
    int detached = 0;
  };
  Counting rtc;
  EXPECT_TRUE(Attach(rtc, kSmall));
  EXPECT_EQ(rtc.detached, 1);
  EXPECT_FALSE(Attach(rtc, "\n{16"));
  EXPECT_EQ(rtc.detached, 1);
}

TEST(RTC, CanBeLoadedAgainAfterDetach) {
  const auto rtc = Small();
  rtc->DetachRTC();
  EXPECT_TRUE(Attach(*rtc, kSmall));
  EXPECT_EQ(TypeOf(*rtc, 0x0010, 0x0010), type_code::PN);
}

// Looking up.

TEST(RTC, WritesTheDescriptionIntoTheBuffer) {
  const auto rtc = Small();
  EXPECT_EQ(DescriptionOf(*rtc, 0x0010, 0x0010), "Patient's Name");
}

TEST(RTC, EmptiesTheBufferForAnUnknownTag) {
  const auto rtc = Small();
  EXPECT_EQ(DescriptionOf(*rtc, 0x0010, 0x0011), "");
}

TEST(RTC, WritesTheLongestDescriptionIntoABufferOfTheStatedSize) {
  RTC rtc;
  const std::string longest(kLongestToken, 'd');
  ASSERT_TRUE(Attach(rtc, "\n{16 16 PN \"" + longest + "\"}\n"));
  EXPECT_EQ(DescriptionOf(rtc, 16, 16), longest);
}

TEST(RTC, WithoutDescriptionsEveryOneIsAnEmptyText) {
  RTC rtc(false);
  std::string text(kSmall);
  text += "(0008,0060) VR=\"CS\" Keyword=\"Modality\"\n";
  ASSERT_TRUE(Attach(rtc, text));
  ASSERT_EQ(rtc.Table->Count, 5u);
  for (std::uint32_t at = 0; at < 5; ++at) {
    const _RTCElement& entry = rtc.Table->Elements[at];
    EXPECT_EQ(entry.Description, nullptr);
    EXPECT_EQ(DescriptionOf(rtc, entry.Group, entry.Element), "");
    EXPECT_NE(TypeOf(rtc, entry.Group, entry.Element), 0);
  }
}

TEST(RTC, AnswersZeroBelowBetweenAndAboveItsKeys) {
  const auto rtc = Small();
  EXPECT_EQ(TypeOf(*rtc, 0x0000, 0x0000), 0);
  EXPECT_EQ(TypeOf(*rtc, 0x0008, 0x113F), 0);
  EXPECT_EQ(TypeOf(*rtc, 0x0010, 0x0015), 0);
  EXPECT_EQ(TypeOf(*rtc, 0x0028, 0x0011), 0);
  EXPECT_EQ(TypeOf(*rtc, 0xFFFF, 0xFFFF), 0);
}

TEST(RTC, OfTwoEntriesOfATagTheFirstInTheFileCounts) {
  RTC rtc;
  ASSERT_TRUE(Attach(rtc,
                     "\n{16 32 LO \"b\"}\n{16 16 PN \"first\"}\n{16 8 LO \"a\"}\n"
                     "{16 16 LT \"second\"}\n{16 16 UT \"third\"}\n"));
  EXPECT_EQ(rtc.Table->Count, 5u);
  EXPECT_EQ(TypeOf(rtc, 16, 16), type_code::PN);
  EXPECT_EQ(DescriptionOf(rtc, 16, 16), "first");
  EXPECT_STREQ(rtc.Table->Elements[2].Description, "second");
}

TEST(RTC, OfManyEntriesOfATagTheFirstInTheFileCounts) {
  std::string text = "\n{16 17 US \"last\"}\n";
  for (int at = 0; at < 100; ++at) text += "{16 16 US \"" + std::to_string(at) + "\"}\n";
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, text));
  EXPECT_EQ(DescriptionOf(rtc, 16, 16), "0");
  for (std::uint32_t at = 0; at < 100; ++at) {
    EXPECT_EQ(rtc.Table->Elements[at].Description, std::to_string(at));
  }
}

TEST(RTC, FindsTheEntryItself) {
  const auto rtc = Small();
  EXPECT_EQ(rtc->Find(0x00100010), &rtc->Table->Elements[1]);
  EXPECT_EQ(rtc->Find(0x00100011), nullptr);
}

TEST(RTC, LooksUpWithoutAnIndexWhereItsKeysCrowd) {
  // Multiples of the inverse of the index's multiplier all have the same home in it.
  std::string text = "\n";
  std::vector<TagKey> keys;
  for (std::uint32_t at = 0; at < 100; ++at) {
    const TagKey key = (0x12340000 + at) * 0x0E8B2F51u;
    keys.push_back(key);
    text += "{" + std::to_string(GroupOf(key)) + " " + std::to_string(ElementOf(key)) + " US \"" +
            std::to_string(key) + "\"}\n";
  }
  ASSERT_EQ(0x0E8B2F51u * 0x9E3779B1u, 1u);
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, text));
  for (const TagKey key : keys) {
    EXPECT_EQ(DescriptionOf(rtc, GroupOf(key), ElementOf(key)), std::to_string(key));
    EXPECT_EQ(TypeOf(rtc, GroupOf(key), static_cast<std::uint16_t>(ElementOf(key) + 1)), 0);
  }
}

// Types of elements.

class TypesOfElements : public testing::Test {
 protected:
  /// The type that an element of this tag and type gets, and the answer.
  std::pair<bool, VrCode> Typed(std::uint16_t group, std::uint16_t element, VrCode type,
                                bool withItems = false) {
    VR vr(group, element, 0, nullptr);
    vr.TypeCode = type;
    if (withItems) vr.AddItem(new DICOMObject);
    const bool known = rtc_->RunTimeClass(&vr);
    return {known, vr.TypeCode};
  }

  using Answer = std::pair<bool, VrCode>;
  const std::unique_ptr<DcmDictionary> rtc_ = Small();
};

TEST_F(TypesOfElements, OneThatHasATypeKeepsIt) {
  EXPECT_EQ(Typed(0x0010, 0x0010, type_code::LT), Answer(true, type_code::LT));
  EXPECT_EQ(Typed(0x0009, 0x0010, type_code::LT), Answer(true, type_code::LT));
}

TEST_F(TypesOfElements, OneWithoutATypeGetsThatOfTheDictionary) {
  EXPECT_EQ(Typed(0x0010, 0x0010, type_code::kNone), Answer(true, type_code::PN));
  EXPECT_EQ(Typed(0x0008, 0x1140, type_code::kNone), Answer(true, type_code::SQ));
}

TEST_F(TypesOfElements, OneOfUnknownTypeGetsThatOfTheDictionary) {
  EXPECT_EQ(Typed(0x0010, 0x0010, type_code::UN), Answer(true, type_code::PN));
}

TEST_F(TypesOfElements, AKnownTagWithItemsGetsTheTypeOfTheDictionary) {
  EXPECT_EQ(Typed(0x0010, 0x0010, type_code::kNone, true), Answer(true, type_code::PN));
}

TEST_F(TypesOfElements, APrivateTagGetsUNOrSQWithItems) {
  EXPECT_EQ(Typed(0x0009, 0x1010, type_code::kNone), Answer(false, type_code::UN));
  EXPECT_EQ(Typed(0x0009, 0x1010, type_code::UN), Answer(false, type_code::UN));
  EXPECT_EQ(Typed(0x0009, 0x1010, type_code::kNone, true), Answer(false, type_code::SQ));
  EXPECT_EQ(Typed(0x0009, 0x1010, type_code::UN, true), Answer(false, type_code::SQ));
}

TEST_F(TypesOfElements, AnEmptyDictionaryKnowsNone) {
  rtc_->DetachRTC();
  EXPECT_EQ(Typed(0x0010, 0x0010, type_code::kNone), Answer(false, type_code::UN));
}

TEST_F(TypesOfElements, NullIsNotKnown) {
  EXPECT_FALSE(rtc_->RunTimeClass(static_cast<VR*>(nullptr)));
  EXPECT_FALSE(rtc_->RunTimeClass(static_cast<DICOMObject*>(nullptr)));
}

// Types of objects.

VR* NewVR(std::uint16_t group, std::uint16_t element) { return new VR(group, element, 0, nullptr); }

TEST(TypesOfObjects, EveryElementGetsItsTypeAndStaysInItsPlace) {
  const auto rtc = Small();
  DICOMObject object;
  object.Push(NewVR(0x0028, 0x0010));
  object.Push(NewVR(0x0010, 0x0010));
  VR* name = object.GetVR(0x0010, 0x0010);
  EXPECT_TRUE(rtc->RunTimeClass(&object));
  EXPECT_EQ(object.GetVR(0x0010, 0x0010), name);
  EXPECT_EQ(name->TypeCode, type_code::PN);
  EXPECT_EQ(object.GetVR(0x0028, 0x0010)->TypeCode, type_code::US);
  EXPECT_EQ(object.GetFirstVR(), name);
}

TEST(TypesOfObjects, OneUnknownElementMakesTheAnswerFalseAndTheOthersAreTypedStill) {
  const auto rtc = Small();
  DICOMObject object;
  object.Push(NewVR(0x0009, 0x1010));
  object.Push(NewVR(0x0010, 0x0010));
  object.Push(NewVR(0x0011, 0x1010));
  object.Push(NewVR(0x0028, 0x0010));
  EXPECT_FALSE(rtc->RunTimeClass(&object));
  EXPECT_EQ(object.GetVR(0x0009, 0x1010)->TypeCode, type_code::UN);
  EXPECT_EQ(object.GetVR(0x0010, 0x0010)->TypeCode, type_code::PN);
  EXPECT_EQ(object.GetVR(0x0028, 0x0010)->TypeCode, type_code::US);
}

TEST(TypesOfObjects, NestedItemsAreTypedToo) {
  const auto rtc = Small();
  for (const std::uint16_t innermost : std::initializer_list<std::uint16_t>{0x0010, 0x0011}) {
    DICOMObject object;
    object.Push(NewVR(0x0008, 0x1140));
    auto* first = new DICOMObject;
    auto* second = new DICOMObject;
    object.Push(first);
    object.Push(second);
    first->Push(NewVR(0x0010, 0x0020));
    second->Push(NewVR(0x0008, 0x1140));
    auto* inner = new DICOMObject;
    second->Push(inner);
    inner->Push(NewVR(0x0028, innermost));
    // The answer is that of the innermost element: all others are known.
    EXPECT_EQ(rtc->RunTimeClass(&object), innermost == 0x0010);
    EXPECT_EQ(object.GetVR(0x0008, 0x1140)->TypeCode, type_code::SQ);
    EXPECT_EQ(first->GetVR(0x0010, 0x0020)->TypeCode, type_code::LO);
    EXPECT_EQ(second->GetVR(0x0008, 0x1140)->TypeCode, type_code::SQ);
    EXPECT_EQ(inner->GetVR(0x0028, innermost)->TypeCode,
              innermost == 0x0010 ? type_code::US : type_code::UN);
  }
}

TEST(TypesOfObjects, ItemsOfAnElementThatHasItsTypeAreTypedToo) {
  const auto rtc = Small();
  DICOMObject object;
  VR* sequence = NewVR(0x0009, 0x1010);
  sequence->TypeCode = type_code::SQ;
  object.Push(sequence);
  auto* item = new DICOMObject;
  object.Push(item);
  item->Push(NewVR(0x0010, 0x0010));
  EXPECT_TRUE(rtc->RunTimeClass(&object));
  EXPECT_EQ(item->GetVR(0x0010, 0x0010)->TypeCode, type_code::PN);
}

TEST(TypesOfObjects, AnEmptyObjectIsKnown) {
  DICOMObject object;
  EXPECT_TRUE(Small()->RunTimeClass(&object));
}

TEST(TypesOfObjects, AWalkStartsAgainAndAnItemGoesToTheLastElement) {
  const auto rtc = Small();
  DICOMObject object;
  object.Push(NewVR(0x0028, 0x0010));
  object.Push(NewVR(0x0010, 0x0010));
  object.Push(NewVR(0x0010, 0x0020));
  const std::unique_ptr<VR> popped(object.Pop());
  EXPECT_TRUE(rtc->RunTimeClass(&object));
  EXPECT_EQ(object.Iterating, 0u);
  EXPECT_EQ(object.LastPushedVR, object.GetVR(0x0028, 0x0010));
  const std::unique_ptr<VR> next(object.Pop());
  EXPECT_EQ(next->Key(), 0x00100020u);
}

TEST(TypesOfObjects, ElementsStayInAnObjectThatForwardsWhatIsPushed) {
  const auto rtc = Small();
  DICOMObject target;
  DICOMObject object;
  object.Push(NewVR(0x0010, 0x0010));
  object.PushTarget = &target;
  EXPECT_TRUE(rtc->RunTimeClass(&object));
  EXPECT_TRUE(target.IsEmpty());
  EXPECT_EQ(object.GetVR(0x0010, 0x0010)->TypeCode, type_code::PN);
}

TEST(TypesOfObjects, NoElementIsLostWhereverMemoryRunsOut) {
  const auto rtc = Small();
  DICOMObject object;
  object.Push(NewVR(0x0008, 0x1140));
  for (int at = 0; at < 5; ++at) {
    auto* item = new DICOMObject;
    object.Push(item);
    item->Push(NewVR(0x0010, 0x0010));
  }
  object.Push(NewVR(0x0028, 0x0010));
  bool typed = false;
  test::FailEveryAllocation([&] {
    try {
      typed = rtc->RunTimeClass(&object);
    } catch (const std::bad_alloc&) {
      typed = false;
    }
    ASSERT_EQ(object.Elements.Size(), 2u);
    ASSERT_EQ(object.GetVR(0x0008, 0x1140)->ItemCount(), 5u);
  });
  EXPECT_TRUE(typed);
}

/// An object of `levels` sequences one in the other, an unknown element in the innermost.
DICOMObject* Nested(int levels) {
  auto* object = new DICOMObject;
  object->Push(NewVR(0x0009, 0x1010));
  for (int level = 0; level < levels; ++level) {
    auto* outer = new DICOMObject;
    outer->Push(NewVR(0x0008, 0x1140));
    outer->Push(object);
    object = outer;
  }
  return object;
}

TEST(TypesOfObjects, AnyDepthIsTypedOnASmallStack) {
  test::RunOnStack(test::kSmallStack, [] {
    const std::unique_ptr<DICOMObject> object(Nested(200000));
    EXPECT_FALSE(Small()->RunTimeClass(object.get()));
    int levels = 0;
    VR* vr = object->GetFirstVR();
    for (; vr->Items != nullptr; vr = vr->GetItem(0)->GetFirstVR()) {
      ASSERT_EQ(vr->TypeCode, type_code::SQ);
      ++levels;
    }
    EXPECT_EQ(levels, 200000);
    EXPECT_EQ(vr->TypeCode, type_code::UN);
  });
}

// The dictionary that the library brings.

struct KnownEntry {
  std::uint16_t group;
  std::uint16_t element;
  const char* type;
  const char* name;
};

// From the tables of DICOM PS3.6 and PS3.7.
constexpr KnownEntry kKnownEntries[] = {
    {0x0000, 0x0100, "US", "Command Field"},
    {0x0002, 0x0010, "UI", "Transfer Syntax UID"},
    {0x0008, 0x0005, "CS", "Specific Character Set"},
    {0x0008, 0x0018, "UI", "SOP Instance UID"},
    {0x0008, 0x0060, "CS", "Modality"},
    {0x0010, 0x0010, "PN", "Patient's Name"},
    {0x0010, 0x0020, "LO", "Patient ID"},
    {0x0018, 0x0050, "DS", "Slice Thickness"},
    {0x0020, 0x000D, "UI", "Study Instance UID"},
    {0x0020, 0x0032, "DS", "Image Position (Patient)"},
    {0x0028, 0x0010, "US", "Rows"},
    {0x0028, 0x0301, "CS", "Burned In Annotation"},
    {0x0040, 0xA730, "SQ", "Content Sequence"},
    {0x0054, 0x0081, "US", "Number of Slices"},
    {0x3006, 0x0020, "SQ", "Structure Set ROI Sequence"},
    {0x6002, 0x3000, "OW", "Overlay Data"},
    {0x7FE0, 0x0010, "OW", "Pixel Data"},
};

class RealDictionary : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(rtc_.AttachRTC(path_.c_str())) << path_ << rtc_.LastErrorText();
  }

  const std::string path_ = std::string(test::kDataDir) + "/dicom-dict.txt";
  DcmDictionary rtc_;
};

TEST_F(RealDictionary, KnowsElementsOfTheStandard) {
  for (const KnownEntry& known : kKnownEntries) {
    const VrCode type = TypeOf(rtc_, known.group, known.element);
    EXPECT_EQ((std::string{FirstLetter(type), SecondLetter(type)}), known.type) << known.name;
    EXPECT_EQ(DescriptionOf(rtc_, known.group, known.element), known.name);
  }
}

TEST_F(RealDictionary, LendsItsTypesUnlessADescendantMayAnswerInItsOwnWay) {
  class Descendant : public DcmDictionary {};
  Descendant descendant;
  ASSERT_TRUE(descendant.AttachRTC(path_.c_str()));
  EXPECT_EQ(descendant.PlainTypes(), nullptr);
  EXPECT_EQ(DcmDictionary().PlainTypes(), nullptr);
  ASSERT_NE(rtc_.PlainTypes(), nullptr);
  EXPECT_EQ(rtc_.PlainTypes()->TypeOf(0x00280010), type_code::US);
}

TEST_F(RealDictionary, FindsEveryKeyAsThePlainSearchDoes) {
  const RtcTable& table = *rtc_.Table;
  ASSERT_GT(table.Count, 5000u);
  for (std::uint32_t at = 0; at < table.Count; ++at) {
    const std::int64_t plain = SearchKeys(table.Keys.get(), table.Count, table.Keys[at]);
    ASSERT_EQ(plain, at);
    ASSERT_EQ(rtc_.Find(table.Keys[at]), &table.Elements[at]);
    ASSERT_EQ(TypeOf(rtc_, table.Elements[at].Group, table.Elements[at].Element),
              table.Elements[at].TypeCode);
  }
}

/// The tags and types of a file of which every line is as plain as the library's own.
std::map<TagKey, std::string> PlainEntries(const std::string& path) {
  std::map<TagKey, std::string> entries;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] != '{') continue;
    const auto group = static_cast<TagKey>(std::stoul(line.substr(3, 4), nullptr, 16));
    const auto element = static_cast<TagKey>(std::stoul(line.substr(10, 4), nullptr, 16));
    entries[group << 16 | element] = line.substr(15, 2);
  }
  return entries;
}

TEST_F(RealDictionary, AgreesWithAnotherReaderOnAHundredThousandTags) {
  const std::map<TagKey, std::string> expected = PlainEntries(path_);
  ASSERT_EQ(expected.size(), rtc_.Table->Count);
  std::vector<TagKey> keys;
  for (const auto& [key, type] : expected) keys.insert(keys.end(), {key - 1, key, key + 1});
  std::mt19937 random(3);
  while (keys.size() < 100000) keys.push_back(static_cast<TagKey>(random()));
  std::size_t hits = 0;
  for (const TagKey key : keys) {
    const VrCode type = TypeOf(rtc_, GroupOf(key), ElementOf(key));
    const auto found = expected.find(key);
    const std::string letters = type == 0 ? "" : std::string{FirstLetter(type), SecondLetter(type)};
    ASSERT_EQ(letters, found == expected.end() ? "" : found->second) << std::hex << key;
    hits += type != 0;
  }
  EXPECT_GT(hits, expected.size());
}

TEST_F(RealDictionary, DoesNotKnowPrivateTags) {
  for (std::uint32_t group = 1; group < 0x10000; group += 2) {
    ASSERT_EQ(TypeOf(rtc_, static_cast<std::uint16_t>(group), 0x1010), 0) << group;
  }
}

TEST_F(RealDictionary, CutAnywhereIsEitherShorterOrRefused) {
  const test::Bytes bytes = test::ReadBytes(path_);
  const std::uint32_t whole = rtc_.Table->Count;
  RTC cut;
  // Under a sanitizer at every seventh byte: each time the whole dictionary is read.
  for (std::size_t size = bytes.size() - 300; size < bytes.size(); size += test::StepBy(7u)) {
    const bool good = cut.AttachBytes(bytes.data(), size);
    if (good) {
      EXPECT_LE(cut.Table->Count, whole);
      EXPECT_GE(cut.Table->Count, whole - 10);
    } else {
      EXPECT_EQ(cut.LastErrorText().substr(0, 5), "line ");
    }
  }
}

}  // namespace
}  // namespace tessaret
