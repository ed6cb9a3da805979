#include "core/codec_library.h"

#include <pthread.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"

namespace tessaret {
namespace {

using Names = std::vector<std::string>;

/// The names in the text, each with "|" behind it.
std::string NamesIn(std::string_view text) {
  std::string all;
  for (const std::string& name : LibraryNamesIn(text)) all += name + "|";
  return all;
}

TEST(CodecList, EachLineIsANameWithoutItsEnd) {
  EXPECT_EQ(NamesIn("a.dll\nb.so\r\n c d \nlast"), "a.dll|b.so| c d |last|");
  EXPECT_EQ(NamesIn(""), "");
  EXPECT_EQ(NamesIn("\n\r\n\n"), "");
  EXPECT_EQ(NamesIn("a\r\r\n"), "a\r|") << "one end a line";
  EXPECT_EQ(NamesIn("a\rb\n"), "a\rb|");
}

TEST(CodecList, ANulEndsALine) {
  EXPECT_EQ(NamesIn(std::string_view("a\0b\nc\n", 6)), "a|c|");
  EXPECT_EQ(NamesIn(std::string_view("\0b\n", 3)), "");
}

TEST(CodecList, ALineOfMoreThan260CharactersNamesNothing) {
  const std::string longest(260, 'n');
  EXPECT_EQ(NamesIn(longest + "\r\n"), longest + "|");
  EXPECT_EQ(NamesIn(longest + "n\nnext\n"), "next|");
}

TEST(CodecLibrary, IsLookedForInTheDirectoriesInTheirOrder) {
  const test::TempFolder first;
  const test::TempFolder second;
  const Names places = {first.Path().string() + "/", second.Path().string() + "/"};
  const std::string name = "made_up_name.dll";
  EXPECT_FALSE(LoadCodecLibrary(places, name).IsLoaded());
  std::filesystem::copy(test::CodecFolder() + "bad_codec.so", second.File(name));
  EXPECT_EQ(SyntaxesOf(LoadCodecLibrary(places, name)).size(), 20u);
  std::filesystem::copy(test::CodecFolder() + "toy_codec.so", first.File(name));
  EXPECT_EQ(SyntaxesOf(LoadCodecLibrary(places, name)).size(), 1u);
  test::WriteText(first.File("broken.dll"), "no library");
  std::filesystem::copy(test::CodecFolder() + "toy_codec.so", second.File("broken.dll"));
  EXPECT_TRUE(LoadCodecLibrary(places, "broken.dll").IsLoaded()) << "the next one is taken";
}

TEST(CodecLibrary, IsLookedForByTheLoaderUnderABareNameOnly) {
  EXPECT_TRUE(LoadCodecLibrary({}, "libc.so.6").IsLoaded());
  const std::string folder = test::CodecFolder();
  EXPECT_TRUE(LoadCodecLibrary({}, folder + "toy_codec.so").IsLoaded());
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  EXPECT_FALSE(LoadCodecLibrary({}, "./toy_codec.so").IsLoaded()) << "the working directory";
  EXPECT_TRUE(LoadCodecLibrary({folder}, "./toy_codec.so").IsLoaded());
  std::filesystem::current_path(before);
  EXPECT_FALSE(LoadCodecLibrary({folder}, "").IsLoaded());
}

std::vector<CodecProps> SyntaxesIn(const std::string& name) {
  return SyntaxesOf(LoadCodecLibrary({test::CodecFolder()}, name));
}

TEST(CodecLibrary, ListsItsSyntaxesUntilItSaysFalse) {
  const std::vector<CodecProps> toy = SyntaxesIn("toy_codec.so");
  ASSERT_EQ(toy.size(), 1u);
  EXPECT_EQ(UidOf(toy[0]), test::kToy);
  EXPECT_EQ(toy[0].Reserved, 0x01020304u);
  const std::vector<CodecProps> bad = SyntaxesIn("bad_codec.so");
  ASSERT_EQ(bad.size(), 20u);
  EXPECT_EQ(UidOf(bad[17]), "") << "an empty UID ends nothing";
  EXPECT_EQ(UidOf(bad[19]), std::string(64, '9')) << "a UID without its NUL";
  EXPECT_EQ(bad[12].Flags, TESSARET_CODEC_NATIVE);
}

TEST(CodecLibrary, ListsNothingWhereItIsNoneNeverEndsOrThrows) {
  EXPECT_TRUE(SyntaxesOf(SharedLibrary()).empty());
  EXPECT_TRUE(SyntaxesIn("no_codec.so").empty());
  EXPECT_TRUE(SyntaxesIn("endless_codec.so").empty());
  EXPECT_TRUE(SyntaxesIn("throwing_codec.so").empty());
  EXPECT_TRUE(SyntaxesIn("countless_codec.so").empty()) << "without DcmGetCodecCount";
  EXPECT_EQ(SyntaxesIn("listing_codec.so").size(), 1u);
}

TEST(CodecLibrary, MayListAThousandSyntaxesEachWithPropsOfItsOwn) {
  const std::vector<CodecProps> full = SyntaxesIn("full_codec.so");
  ASSERT_EQ(full.size(), 1024u);
  EXPECT_EQ(full[0].Flags, TESSARET_CODEC_NATIVE);
  EXPECT_EQ(full[1].Flags, 0u) << "what is not filled in is 0";
  EXPECT_EQ(UidOf(full[1023]), "1.2.999.4.4.1023");
}

TEST(CodecLibrary, GivesNoCodecWhereItHasNoneOrAnIncompleteOne) {
  EXPECT_EQ(GetCodec(SharedLibrary(), 0).codec, nullptr);
  const SharedLibrary listing = LoadCodecLibrary({test::CodecFolder()}, "listing_codec.so");
  EXPECT_EQ(GetCodec(listing, 0).codec, nullptr);
  const SharedLibrary bad = LoadCodecLibrary({test::CodecFolder()}, "bad_codec.so");
  const SharedLibrary keeping = LoadCodecLibrary({test::CodecFolder()}, "keeping_codec.so");
  EXPECT_EQ(GetCodec(keeping, 0).codec, nullptr) << "it is not even asked without DcmFreeCodec";
  for (const std::uint32_t index : {5u, 6u, 7u, 8u, 100u, 101u, 102u}) {
    EXPECT_EQ(GetCodec(bad, index).codec, nullptr) << index;
  }
  EXPECT_EQ(bad.FindFunction<int()>("CountIncompleteOnesGivenBack")(), 4);
  const LoadedCodec good = GetCodec(bad, 0);
  ASSERT_NE(good.codec, nullptr);
  FreeCodec(good);
}

TEST(CodecLibrary, AThreadThatIsCancelledEndsBehindTheEntryPoints) {
  std::atomic<bool> gone = false;
  std::thread([&gone] {
    ::pthread_cancel(::pthread_self());  // takes place where a call lets it
    const SharedLibrary library = LoadCodecLibrary({test::CodecFolder()}, "one_object_codec.so");
    const bool lists = SyntaxesOf(library).size() == 4;
    const LoadedCodec loaded = GetCodec(library, 0);
    if (loaded.codec != nullptr) FreeCodec(loaded);
    gone = lists && loaded.codec != nullptr;
    ::pthread_testcancel();
    gone = false;
  }).join();
  EXPECT_TRUE(gone);
}

}  // namespace
}  // namespace tessaret
