#include "core/codec_registry.h"

#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"
#include "core/comp_engine.h"
#include "platform/file_calls.h"
#include "support/allocation_failure.h"
#include "support/child_process.h"

namespace tessaret {
namespace {

using test::TestCodecs;

std::vector<std::string> UidsIn(CodecRegistry& registry) {
  registry.Find("");
  std::vector<std::string> uids;
  for (const auto& [uid, entry] : registry.Entries()) uids.push_back(uid);
  return uids;
}

TEST(CodecRegistry, KnowsTheNativeSyntaxesWithoutALibrary) {
  TestCodecs codecs("missing.so");
  EXPECT_EQ(UidsIn(codecs.registry),
            (std::vector<std::string>{"1.2.840.10008.1.2", "1.2.840.10008.1.2.1",
                                      "1.2.840.10008.1.2.2"}));
  for (const auto& [uid, entry] : codecs.registry.Entries()) {
    EXPECT_EQ(UidOf(entry.Props), uid);
    EXPECT_TRUE(entry.IsNative() && entry.IsBuiltIn() && !entry.IsConcurrent());
  }
}

TEST(CodecRegistry, TakesTheCensusOnceAndKeepsNoLibrary) {
  TestCodecs codecs("toy_codec.so", "toy_codec_c.so\nmissing.so\nno_codec.so\n");
  EXPECT_TRUE(codecs.asked.empty()) << "nothing before the first question";
  EXPECT_EQ(codecs.registry.Find("1.2.3"), nullptr);
  const CodecEntry* toy = codecs.registry.Find(test::kToy);
  ASSERT_NE(toy, nullptr);
  EXPECT_EQ(toy->LibraryName, "DcmCodec.dll");
  EXPECT_EQ(toy->Index, 0u);
  EXPECT_EQ(toy->Props.Reserved, 0x01020304u);
  EXPECT_EQ(codecs.registry.Find(test::kCToy)->LibraryName, "toy_codec_c.so");
  const std::map<std::string, int> once = {
      {"DcmCodec.dll", 1}, {"toy_codec_c.so", 1}, {"missing.so", 1}, {"no_codec.so", 1}};
  EXPECT_EQ(codecs.asked, once);
  EXPECT_FALSE(test::IsInProcess("toy_codec.so"));
  EXPECT_FALSE(test::IsInProcess("toy_codec_c.so"));
}

TEST(CodecRegistry, OrdersEntriesByTheTextOfTheirUids) {
  TestCodecs codecs("bad_codec.so");
  const std::vector<std::string> uids = UidsIn(codecs.registry);
  EXPECT_EQ(uids.size(), 23u);
  EXPECT_TRUE(std::is_sorted(uids.begin(), uids.end()));
  EXPECT_EQ(uids.front(), "") << "an empty UID is an entry like others";
  EXPECT_EQ(codecs.registry.Find(test::BadUid(10))->Index, 10u);
  EXPECT_EQ(codecs.registry.Find(std::string(64, '9'))->Index, 19u) << "behind the empty one";
}

TEST(CodecRegistry, TheLaterOfTwoLibrariesWins) {
  TestCodecs codecs("toy_codec.so", "overriding_codec.so\r\n");
  const CodecEntry* toy = codecs.registry.Find(test::kToy);
  ASSERT_NE(toy, nullptr);
  EXPECT_EQ(toy->LibraryName, "overriding_codec.so");
  EXPECT_EQ(toy->Index, 1u);
  EXPECT_EQ(toy->Props.Reserved, 77u);
  TestCodecs other("overriding_codec.so", "toy_codec.so");
  EXPECT_EQ(other.registry.Find(test::kToy)->LibraryName, "toy_codec.so");
}

TEST(CodecRegistry, ALibraryMayListANativeSyntax) {
  TestCodecs codecs("overriding_codec.so");
  const CodecEntry* entry = codecs.registry.Find("1.2.840.10008.1.2.1");
  ASSERT_NE(entry, nullptr);
  EXPECT_FALSE(entry->IsBuiltIn());
  EXPECT_TRUE(entry->IsNative());
  EXPECT_TRUE(codecs.registry.Find("1.2.840.10008.1.2")->IsBuiltIn());
}

TEST(CodecRegistry, LibrariesThatGoWrongInTheCensusAreLeftOut) {
  TestCodecs codecs("endless_codec.so", "throwing_codec.so\nno_codec.so\n\ntoy_codec_c.so\n");
  EXPECT_EQ(UidsIn(codecs.registry).size(), 4u);
  EXPECT_NE(codecs.registry.Find(test::kCToy), nullptr);
}

TEST(CodecRegistry, AListThatIsNotThereOrTooLargeNamesNothing) {
  const test::TempFolder folder;
  int asked = 0;
  const auto load = [&asked](const std::string&) {
    ++asked;
    return SharedLibrary();
  };
  for (const std::string& list :
       {folder.File("missing.ini"), folder.Path().string(), folder.File("large.ini")}) {
    test::WriteText(folder.File("large.ini"), "a\n" + std::string(kLargestCodecList, '\n'));
    asked = 0;
    CodecRegistry registry({list, load});
    EXPECT_EQ(UidsIn(registry).size(), 3u);
    EXPECT_EQ(asked, 1) << list;
  }
}

TEST(CodecRegistry, LoadsACodecForItsFirstUserAndUnloadsItBehindTheLast) {
  TestCodecs codecs("toy_codec.so");
  CodecEntry& entry = *codecs.registry.Find(test::kToy);
  EXPECT_EQ(entry.UseCount, 0u);
  ASSERT_TRUE(codecs.registry.Acquire(entry));
  DcmCodec* codec = entry.Codec;
  EXPECT_NE(codec, nullptr);
  EXPECT_EQ(entry.UseCount, 1u);
  EXPECT_TRUE(test::IsInProcess("toy_codec.so"));
  ASSERT_TRUE(codecs.registry.Acquire(entry));
  EXPECT_EQ(entry.Codec, codec);
  EXPECT_EQ(entry.UseCount, 2u);
  EXPECT_EQ(codecs.asked["DcmCodec.dll"], 2) << "once in the census, once for the codec";
  codecs.registry.Release(entry);
  EXPECT_EQ(entry.Codec, codec);
  codecs.registry.Release(entry);
  EXPECT_EQ(entry.UseCount, 0u);
  EXPECT_EQ(entry.Codec, nullptr);
  EXPECT_EQ(entry.FreeCodec, nullptr);
  EXPECT_FALSE(entry.Module.IsLoaded());
  EXPECT_FALSE(test::IsInProcess("toy_codec.so"));
  EXPECT_TRUE(codecs.registry.Acquire(entry)) << "and again";
  codecs.registry.Release(entry);
}

TEST(CodecRegistry, SyntaxesThatShareACodecShareItsLock) {
  TestCodecs codecs("one_object_codec.so", "toy_codec.so");
  CodecEntry& first = *codecs.registry.Find("1.2.999.5.0");
  CodecEntry& second = *codecs.registry.Find("1.2.999.5.1");
  CodecEntry& toy = *codecs.registry.Find(test::kToy);
  for (CodecEntry* entry : {&first, &second, &toy}) ASSERT_TRUE(codecs.registry.Acquire(*entry));
  ASSERT_NE(first.Calls, nullptr);
  EXPECT_EQ(second.Calls, first.Calls);
  EXPECT_NE(toy.Calls, first.Calls);
  codecs.registry.Release(first);
  EXPECT_EQ(first.Calls, nullptr);
  EXPECT_NE(second.Calls, nullptr) << "the other one is still in use";
  ASSERT_TRUE(codecs.registry.Acquire(first));
  EXPECT_EQ(first.Calls, second.Calls);
  for (CodecEntry* entry : {&first, &second, &toy}) codecs.registry.Release(*entry);
}

TEST(CodecRegistry, ACodecThatCannotBeHadLeavesNothingBehind) {
  TestCodecs codecs("bad_codec.so", "listing_codec.so");
  for (const std::string& uid : {test::BadUid(5), test::BadUid(6), test::BadUid(7), test::BadUid(8),
                                 std::string("1.2.999.4.3")}) {
    CodecEntry& entry = *codecs.registry.Find(uid);
    EXPECT_FALSE(codecs.registry.Acquire(entry)) << uid;
    EXPECT_EQ(entry.UseCount, 0u);
    EXPECT_EQ(entry.Codec, nullptr);
    EXPECT_FALSE(entry.Module.IsLoaded());
  }
  EXPECT_FALSE(test::IsInProcess("bad_codec.so"));
}

TEST(CodecRegistry, ALibraryThatIsGoneSinceTheCensusGivesNoCodec) {
  const test::TempFolder folder;
  // Under its own name the loader would find the one that this build has made.
  const std::string name = "gone.codec";
  const std::string library = folder.File(name);
  std::filesystem::copy(test::CodecFolder() + "toy_codec.so", library);
  CodecRegistry registry({folder.File("none.ini"), [&](const std::string&) {
                            return LoadCodecLibrary({folder.Path().string() + "/"}, name);
                          }});
  CodecEntry* entry = registry.Find(test::kToy);
  ASSERT_NE(entry, nullptr);
  std::filesystem::remove(library);
  EXPECT_FALSE(registry.Acquire(*entry));
}

TEST(CodecRegistry, ACensusWithoutMemoryIsTakenAnew) {
  auto codecs = std::make_unique<TestCodecs>("toy_codec.so", "bad_codec.so\n");
  CodecEntry* entry = nullptr;
  const std::uint64_t allocations = test::FailEveryAllocation([&] {
    try {
      entry = codecs->registry.Find(test::kToy);
    } catch (const std::bad_alloc&) {
      entry = nullptr;
    }
  });
  EXPECT_GT(allocations, 20u);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(codecs->registry.Entries().size(), 24u);
}

/// The library gives its files up while this lives.
struct GivenUpFiles {
  GivenUpFiles() { CancelFileCalls(true); }
  GivenUpFiles(const GivenUpFiles&) = delete;
  GivenUpFiles& operator=(const GivenUpFiles&) = delete;
  ~GivenUpFiles() { CancelFileCalls(false); }
};

TEST(CodecRegistry, AListThatWasGivenUpIsReadWithALaterQuestion) {
  TestCodecs codecs("toy_codec.so", "toy_codec_c.so\n");
  CodecEntry* toy = nullptr;
  {
    const GivenUpFiles givenUp;
    toy = codecs.registry.Find(test::kToy);
    ASSERT_NE(toy, nullptr) << "the first library counts";
    EXPECT_EQ(codecs.registry.Find(test::kCToy), nullptr);
    EXPECT_EQ(UidsIn(codecs.registry).size(), 4u);
    EXPECT_EQ(codecs.asked["DcmCodec.dll"], 1) << "once until the list can be read";
  }
  ASSERT_TRUE(codecs.registry.Acquire(*toy));
  const DcmCodec* codec = toy->Codec;
  EXPECT_NE(codecs.registry.Find(test::kCToy), nullptr);
  EXPECT_EQ(codecs.registry.Find(test::kToy), toy) << "what is in use stays what it is";
  EXPECT_EQ(toy->Codec, codec);
  EXPECT_EQ(UidsIn(codecs.registry).size(), 5u);
  codecs.registry.Release(*toy);
  const std::map<std::string, int> asked = {{"DcmCodec.dll", 3}, {"toy_codec_c.so", 1}};
  EXPECT_EQ(codecs.asked, asked) << "two censuses and a codec";
}

TEST(CodecRegistry, WhatALaterCensusReplacesIsGoodForThoseWhoHaveIt) {
  // The list names the first library by its path: each syntax has another origin then, and the same codec object.
  const std::string listed = test::CodecFolder() + "one_object_codec.so";
  TestCodecs codecs("one_object_codec.so", listed + "\n");
  CodecEntry* before = nullptr;
  CodecEntry* builtIn = nullptr;
  {
    const GivenUpFiles givenUp;
    before = codecs.registry.Find("1.2.999.5.0");
    builtIn = codecs.registry.Find("1.2.840.10008.1.2.1");
    ASSERT_NE(before, nullptr);
    ASSERT_TRUE(codecs.registry.Acquire(*before));
  }
  CodecEntry* after = codecs.registry.Find("1.2.999.5.0");
  ASSERT_NE(after, nullptr);
  EXPECT_NE(after, before);
  EXPECT_EQ(after->LibraryName, listed);
  EXPECT_EQ(codecs.registry.Find("1.2.840.10008.1.2.1"), builtIn);
  EXPECT_EQ(before->LibraryName, "DcmCodec.dll");
  ASSERT_TRUE(codecs.registry.Acquire(*after));
  EXPECT_EQ(after->Codec, before->Codec);
  EXPECT_EQ(after->Calls, before->Calls) << "one lock for one codec object";
  codecs.registry.Release(*before);
  EXPECT_EQ(before->Codec, nullptr);
  ASSERT_TRUE(codecs.registry.Acquire(*before)) << "and again";
  codecs.registry.Release(*before);
  codecs.registry.Release(*after);
  EXPECT_FALSE(test::IsInProcess("one_object_codec.so"));
}

TEST(CodecRegistry, ALaterCensusWithoutMemoryLeavesTheEntriesAsTheyWere) {
  TestCodecs codecs("toy_codec.so", "bad_codec.so\n");
  CodecEntry* toy = nullptr;
  {
    const GivenUpFiles givenUp;
    toy = codecs.registry.Find(test::kToy);
  }
  ASSERT_NE(toy, nullptr);
  bool isWhole = false;
  test::FailEveryAllocation(
      [&] {
        try {
          isWhole = codecs.registry.Find(test::BadUid(0)) != nullptr;
        } catch (const std::bad_alloc&) {
          isWhole = false;
        }
      },
      [&] { EXPECT_EQ(codecs.registry.Entries().size(), isWhole ? 24u : 4u); });
  EXPECT_TRUE(isWhole);
  EXPECT_EQ(codecs.registry.Find(test::kToy), toy);
}

TEST(CodecRegistry, WithoutADescriptorTheCensusIsNotWhole) {
  const int result = test::RunInChild([] {
    TestCodecs codecs("toy_codec.so", "toy_codec_c.so\n");
    rlimit before{};
    if (::getrlimit(RLIMIT_NOFILE, &before) != 0) return 1;
    const rlimit none{0, before.rlim_max};
    if (::setrlimit(RLIMIT_NOFILE, &none) != 0) return 2;
    const bool isNative = codecs.registry.Find("1.2.840.10008.1.2") != nullptr;
    const bool isListed = codecs.registry.Find(test::kToy) != nullptr;
    if (::setrlimit(RLIMIT_NOFILE, &before) != 0) return 3;
    if (!isNative || isListed) return 4;
    if (codecs.registry.Find(test::kToy) == nullptr) return 5;
    return codecs.registry.Find(test::kCToy) != nullptr ? 0 : 6;
  });
  EXPECT_EQ(result, 0);
}

TEST(CodecRegistry, OfThisProcessLooksBesideTheDataAndBesideTheProgram) {
  const int result = test::RunInChild([] {
    const test::TempFolder folder;
    std::filesystem::copy(test::CodecFolder() + "toy_codec.so", folder.File("DcmCodec.dll"));
    ::setenv("TESSARET_DATA_DIR", folder.Path().c_str(), 1);
    const CodecPlaces places = CodecPlaces::OfThisProcess();
    if (places.listFile != std::string(test::kBinaryDir) + "/bin/DcmCodecMgr.ini") return 1;
    if (ModuleCodecRegistry().Find(test::kToy) == nullptr) return 2;
    const auto object = test::NewImage(2);
    DcmCompEngine engine;
    if (!engine.Compress(object.get(), test::kToy, nullptr)) return 3;
    return engine.Decompress(object.get(), nullptr, nullptr) ? 0 : 4;
  });
  EXPECT_EQ(result, 0);
}

TEST(CodecRegistry, APlaceThatIsNamedFromTheWorkingDirectoryStaysWhenThatChanges) {
  const int result = test::RunInChild([] {
    const test::TempFolder folder;
    std::filesystem::create_directory(folder.File("data"));
    std::filesystem::copy(test::CodecFolder() + "toy_codec.so", folder.File("data/DcmCodec.dll"));
    std::filesystem::current_path(folder.Path());
    ::setenv("TESSARET_DATA_DIR", "data", 1);
    const bool isListed = ModuleCodecRegistry().Find(test::kToy) != nullptr;
    std::filesystem::current_path("/");
    if (!isListed) return 1;
    DcmCompEngine engine;
    return engine.Compress(test::NewImage(1).get(), test::kToy, nullptr) ? 0 : 2;
  });
  EXPECT_EQ(result, 0);
}

TEST(CodecRegistry, WhereTheProgramIsNotKnownTheWorkingDirectoryHasNoList) {
  constexpr int kNotAllowed = 77;
  const test::TempFolder root;  // there is no /proc below it
  test::WriteText(root.File(kCodecListFile), "toy_codec.so");
  const int result = test::RunInChild([&root] {
    if (::chroot(root.Path().c_str()) != 0 || ::chdir("/") != 0) return kNotAllowed;
    return CodecPlaces::OfThisProcess().listFile.empty() ? 0 : 1;
  });
  if (result == kNotAllowed) GTEST_SKIP() << "only the superuser can hide /proc";
  EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace tessaret
