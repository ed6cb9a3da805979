// Dictionaries of the host's own, and the two forms of their files.
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "facade/named_call.h"
#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/temp_folder.h"
#include "tessaret/tessaret.hpp"

namespace tessaret::test {
namespace {

constexpr const char* kText =
    "first line\n"
    "{0x0010 0x0010 LO \"Name of mine\"}\n"
    "{0x0009 0x1001 PN \" a, \\\"b\\\" \\\\ c\"}\n"
    "(0011,1002) VR=\"US\"\n";

Variant BytesVariant(std::string_view text) {
  return Variant(
      VariantArray::OfBytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}));
}

#define EXPECT_DICTIONARY_FAILS_WITH(status, words)          \
  do {                                                       \
    EXPECT_EQ((status), kException);                         \
    EXPECT_EQ(LastError().text, (words));                    \
    EXPECT_EQ(LastError().source, "Tessaret.DcmDictionary"); \
  } while (false)

class DictionaryFile : public testing::Test {
 protected:
  /// Every element in a line: tag, letters and name.
  std::string Listing() const {
    std::int32_t count = -7;
    EXPECT_EQ(file_->get_ElementsCount(&count), kOk);
    std::string lines;
    for (std::int32_t at = 0; at < count; ++at) {
      std::int32_t group = -1;
      std::int32_t element = -1;
      String letters;
      String name;
      VariantBool found;
      EXPECT_EQ(file_->GetElementAt(at, &group, &element, &letters, &name, &found), kOk);
      EXPECT_TRUE(found.IsTrue());
      char tag[16];
      std::snprintf(tag, sizeof tag, "%04x%04x ", static_cast<unsigned>(group),
                    static_cast<unsigned>(element));
      lines += tag + letters.Narrow() + " [" + name.Narrow() + "]\n";
    }
    return lines;
  }
  std::string NameOf(std::int32_t group, std::int32_t element) {
    String letters;
    String name("unknown");
    VariantBool found;
    EXPECT_EQ(dictionary_->GetVRDescription(group, element, &letters, &name, &found), kOk);
    return name.Narrow();
  }
  std::string FormOf(bool binary) {
    Variant bytes;
    EXPECT_EQ(file_->GetBytes(binary, &bytes), kOk) << LastError().text;
    const auto all = bytes.AsArray()->Bytes();
    return {all.begin(), all.end()};
  }

  TempFolder folder_;
  Ref<IDcmDictionary> dictionary_ = Create<IDcmDictionary>("Tessaret.DcmDictionary");
  Ref<IDcmDictionaryFile> file_ = dictionary_.As<IDcmDictionaryFile>();
};

// A separator at the start of a name is skipped where a backslash does not keep it.
constexpr const char* kListing =
    "00091001 PN [a, \"b\" \\ c]\n"
    "00100010 LO [Name of mine]\n"
    "00111002 US []\n";

TEST_F(DictionaryFile, IsLookedUpInPlaceOfTheLibrarys) {
  EXPECT_EQ(NameOf(0x0010, 0x0010), "Patient's Name");
  std::int32_t all = 0;
  std::int16_t entries = 0;
  ASSERT_EQ(file_->get_ElementsCount(&all), kOk);
  ASSERT_EQ(dictionary_->get_NumEntries(&entries), kOk);
  EXPECT_EQ(all, entries);
  WriteText(folder_.File("mine"), kText);
  for (int way = 0; way < 2; ++way) {
    ASSERT_EQ(
        way == 0 ? file_->LoadFile(folder_.File("mine")) : file_->LoadBytes(BytesVariant(kText)),
        kOk)
        << LastError().text;
    EXPECT_EQ(Listing(), kListing);
    EXPECT_EQ(NameOf(0x0010, 0x0010), "Name of mine");
    EXPECT_EQ(NameOf(0x0010, 0x0020), "unknown");
    ASSERT_EQ(dictionary_->get_NumEntries(&entries), kOk);
    EXPECT_EQ(entries, 3);
    // For this object alone.
    String letters;
    String name;
    VariantBool found;
    const auto other = Create<IDcmDictionary>("Tessaret.DcmDictionary");
    ASSERT_EQ(other->GetVRDescription(0x0010, 0x0010, &letters, &name, &found), kOk);
    EXPECT_EQ(name.Narrow(), "Patient's Name");
    ASSERT_EQ(file_->Unload(), kOk);
    EXPECT_EQ(NameOf(0x0010, 0x0010), "Patient's Name");
  }
}

TEST_F(DictionaryFile, GoesFromTextToBinaryAndBack) {
  ASSERT_EQ(file_->LoadBytes(BytesVariant(kText)), kOk);
  const std::string binary = FormOf(true);
  EXPECT_EQ(binary.substr(0, 10), std::string("#!BinRTC\n\0", 10));
  // 20 bytes of head, 4 and 12 for each of three elements, and the names with their NULs: 11, 13 and 1.
  EXPECT_EQ(binary.size(), 20u + 3 * 16 + 11 + 13 + 1);
  const std::string text = FormOf(false);
  EXPECT_EQ(text,
            "# Elements of the data dictionary\n"
            "{0x0009 0x1001 PN \"a, \\\"b\\\" \\\\ c\"}\n"
            "{0x0010 0x0010 LO \"Name of mine\"}\n"
            "(0011,1002) VR=\"US\"\n");
  for (const std::string& form : {binary, text}) {
    ASSERT_EQ(file_->LoadBytes(BytesVariant(form)), kOk) << LastError().text;
    EXPECT_EQ(Listing(), kListing);
    EXPECT_EQ(FormOf(true), binary);
    EXPECT_EQ(FormOf(false), text);
  }
}

TEST_F(DictionaryFile, KeepsTheWholeDictionaryOfTheLibraryInBothForms) {
  const std::string listing = Listing();
  EXPECT_GT(listing.size(), 100000u);
  for (const bool binary : {true, false}) {
    ASSERT_EQ(file_->SaveFile(folder_.File("all"), binary, false), kOk) << LastError().text;
    EXPECT_EQ(ReadText(folder_.File("all")), FormOf(binary));
    ASSERT_EQ(file_->LoadFile(folder_.File("all")), kOk) << LastError().text;
    EXPECT_EQ(Listing(), listing);
    ASSERT_EQ(file_->Unload(), kOk);
  }
}

TEST_F(DictionaryFile, KeepsNamesThatAreHardToWrite) {
  // A binary file of one entry: (0009,0001) LO, with a name of signs that mean something in text.
  const std::string name = "'\" {(\\\n, \xE9";
  std::string file("#!BinRTC\n\0\0\0\1\0\0\0\1\0\0\0\1\0\x09\0\x09\0\1\0OL\0\0\0\0\0\0", 36);
  ASSERT_EQ(file.size(), 20u + 16);
  ASSERT_EQ(file_->LoadBytes(BytesVariant(file + name + '\0')), kOk) << LastError().text;
  EXPECT_EQ(Listing(), "00090001 LO [" + name + "]\n");
  ASSERT_EQ(file_->LoadBytes(BytesVariant(FormOf(false))), kOk) << LastError().text;
  EXPECT_EQ(Listing(), "00090001 LO ['\" {(\\ , \xE9]\n");
  // A blank at the start stays, which would be skipped otherwise; so does one that was a line end.
  ASSERT_EQ(file_->LoadBytes(BytesVariant(file + "\nname" + '\0')), kOk) << LastError().text;
  ASSERT_EQ(file_->LoadBytes(BytesVariant(FormOf(false))), kOk) << LastError().text;
  EXPECT_EQ(Listing(), "00090001 LO [ name]\n");
}

TEST_F(DictionaryFile, SaysWhatTextCannotHold) {
  const std::string file("#!BinRTC\n\0\0\0\1\0\0\0\0\0\0\0\1\0\x09\0\x09\0\1\0 L\0\0\0\0\0\0", 36);
  ASSERT_EQ(file_->LoadBytes(BytesVariant(file)), kOk) << LastError().text;
  Variant bytes("old");
  EXPECT_DICTIONARY_FAILS_WITH(file_->GetBytes(false, &bytes),
                               "Type of (0009,0001) cannot be written as text");
  EXPECT_EQ(bytes.ToString().Utf8(), "old");
  EXPECT_DICTIONARY_FAILS_WITH(file_->SaveFile(folder_.File("out"), false, false),
                               "Type of (0009,0001) cannot be written as text");
  EXPECT_EQ(folder_.Listing(), "");
}

TEST_F(DictionaryFile, WithoutNamesStaysWithoutThemInItsBinaryForm) {
  const std::string file("#!BinRTC\n\0\0\0\1\0\0\0\0\0\0\0\1\0\x09\0\x09\0\1\0OL\0\0\0\0\0\0", 36);
  ASSERT_EQ(file_->LoadBytes(BytesVariant(file)), kOk) << LastError().text;
  EXPECT_EQ(Listing(), "00090001 LO []\n");
  EXPECT_EQ(FormOf(true), file);
}

TEST_F(DictionaryFile, ThatCouldNotBeLoadedIsNotSaved) {
  // In binary form 16 bytes an element, 13,440,020 in all; as text 20, which is more than the 16 MiB that are loaded.
  constexpr std::uint32_t kCount = 840'000;
  constexpr std::uint32_t kFirst = 0x00100000;
  std::vector<std::uint32_t> words{kCount, 0};
  words.reserve(2 + 4 * kCount);
  for (std::uint32_t tag = kFirst; tag < kFirst + kCount; ++tag) words.push_back(tag);
  for (std::uint32_t tag = kFirst; tag < kFirst + kCount; ++tag) {
    words.push_back(tag << 16 | tag >> 16);
    words.push_back('L' << 8 | 'O');
    words.push_back(0);
  }
  std::string file("#!BinRTC\n\0\0\0", 12);
  // The numbers of the file are those of the machine.
  file.append(reinterpret_cast<const char*>(words.data()), words.size() * sizeof(words[0]));
  ASSERT_EQ(file_->LoadBytes(BytesVariant(file)), kOk) << LastError().text;
  EXPECT_DICTIONARY_FAILS_WITH(file_->SaveFile(folder_.File("out"), false, false),
                               "File too large");
  EXPECT_EQ(folder_.Listing(), "");
  EXPECT_EQ(file_->SaveFile(folder_.File("out"), true, false), kOk);
  EXPECT_EQ(ReadText(folder_.File("out")), file);
}

TEST_F(DictionaryFile, RefusesWhatCannotBeReadAndKeepsWhatItHas) {
  ASSERT_EQ(file_->LoadBytes(BytesVariant(kText)), kOk);
  EXPECT_DICTIONARY_FAILS_WITH(
      file_->LoadFile(folder_.File("none")),
      "Error reading [" + folder_.File("none") + "]: No such file or directory");
  WriteText(folder_.File("bad"), "first\n{0x0010 0x0010 L \"Name\"}\n");
  EXPECT_DICTIONARY_FAILS_WITH(
      file_->LoadFile(folder_.File("bad")),
      "Error reading [" + folder_.File("bad") + "]: line 2: a type needs two letters");
  EXPECT_DICTIONARY_FAILS_WITH(
      file_->LoadBytes(BytesVariant("first\n{0x0010 0x0010 L \"Name\"}\n")),
      "Error reading dictionary: line 2: a type needs two letters");
  EXPECT_EQ(file_->LoadBytes(BytesVariant("")), kException);
  EXPECT_EQ(file_->LoadBytes(Variant("text")), kTypeMismatch);
  EXPECT_EQ(file_->LoadBytes(Variant()), kTypeMismatch);
  // As good as bytes, but not what is asked for: entries of another type, two dimensions, none.
  const std::string_view text = kText;
  const auto size = static_cast<std::uint32_t>(text.size());
  const ArrayBound plane[] = {{0, size}, {0, 1}};
  VariantArray others[] = {VariantArray(VariantType::kSignedByte, size),
                           VariantArray(VariantType::kByte, plane),
                           VariantArray(VariantType::kByte, std::span<const ArrayBound>())};
  for (VariantArray& other : others) {
    if (other.Count() != 0) std::memcpy(other.Data(), text.data(), text.size());
    EXPECT_EQ(file_->LoadBytes(Variant(other)), kTypeMismatch);
  }
  EXPECT_EQ(Listing(), kListing);
}

TEST_F(DictionaryFile, LeavesAFileThatIsThereWhereItIsTold) {
  ASSERT_EQ(file_->LoadBytes(BytesVariant(kText)), kOk);
  WriteText(folder_.File("out"), "old");
  EXPECT_DICTIONARY_FAILS_WITH(file_->SaveFile(folder_.File("out"), true, true), "File exists");
  EXPECT_EQ(ReadText(folder_.File("out")), "old");
  EXPECT_EQ(file_->SaveFile(folder_.File("out"), true, false), kOk);
  EXPECT_EQ(ReadText(folder_.File("out")), FormOf(true));
}

TEST_F(DictionaryFile, ListsUidsInOrder) {
  std::int32_t count = 0;
  ASSERT_EQ(file_->get_UIDsCount(&count), kOk);
  EXPECT_GT(count, 100);
  std::string last;
  bool hasImplicit = false;
  for (std::int32_t at = 0; at < count; ++at) {
    String uid;
    VariantBool found;
    ASSERT_EQ(file_->GetUIDAt(at, &uid, &found), kOk);
    ASSERT_TRUE(found.IsTrue());
    EXPECT_LT(last, uid.Narrow());
    last = uid.Narrow();
    hasImplicit = hasImplicit || last == "1.2.840.10008.1.2";
  }
  EXPECT_TRUE(hasImplicit);
  for (const std::int32_t at : {-1, count, 2147483647}) {
    String uid("old");
    VariantBool found = true;
    ASSERT_EQ(file_->GetUIDAt(at, &uid, &found), kOk);
    EXPECT_FALSE(found.IsTrue());
    EXPECT_EQ(uid.Utf8(), "old");
  }
}

TEST_F(DictionaryFile, HasNoElementsOutsideItsRange) {
  ASSERT_EQ(file_->LoadBytes(BytesVariant(kText)), kOk);
  for (const std::int32_t at : {-1, 3, 2147483647}) {
    std::int32_t group = 77;
    std::int32_t element = 78;
    String letters("old");
    String name("name");
    VariantBool found = true;
    ASSERT_EQ(file_->GetElementAt(at, &group, &element, &letters, &name, &found), kOk);
    EXPECT_FALSE(found.IsTrue());
    EXPECT_EQ(group, 77);
    EXPECT_EQ(element, 78);
    EXPECT_EQ(letters.Utf8(), "old");
    EXPECT_EQ(name.Utf8(), "name");
  }
}

TEST_F(DictionaryFile, IsThereByName) {
  const auto call = [&](const char* name, MemberKind kind, std::vector<Variant> arguments) {
    return CallNamed(*file_.Get(), name, kind, arguments);
  };
  call("LoadBytes", MemberKind::kMethod, {BytesVariant(kText)});
  EXPECT_EQ(call("ElementsCount", MemberKind::kGet, {}).AsLong(), 3);
  // Whether files are kept may be left away.
  call("SaveFile", MemberKind::kMethod, {folder_.File("out"), VariantBool(true)});
  EXPECT_EQ(ReadText(folder_.File("out")), FormOf(true));
  call("LoadFile", MemberKind::kMethod, {folder_.File("out")});
  EXPECT_EQ(Listing(), kListing);
  call("Unload", MemberKind::kMethod, {});
  EXPECT_GT(call("ElementsCount", MemberKind::kGet, {}).AsLong(), 5000);
  EXPECT_TRUE(call("GetUIDAt", MemberKind::kMethod, {0, Variant()}).AsBool().IsTrue());
}

TEST_F(DictionaryFile, SaysWhenMemoryEndsAndKeepsWhatItHas) {
  ASSERT_EQ(file_->LoadBytes(BytesVariant("first\n{0x0010 0x0020 LO \"Old\"}\n")), kOk);
  const Variant mine = BytesVariant(kText);
  const String in(folder_.File("mine"));
  const String out(folder_.File("out"));
  WriteText(in.Utf8(), kText);
  // What is said needs no room of its own.
  EXPECT_EQ(file_->LoadFile(folder_.File("none")), kException);
  const auto failEach = [&](const char* what, const auto& call) {
    std::uint64_t refused = 0;
    test::FailEveryAllocation([&] {
      const Status status = call();
      if (status == kOk) return;
      ++refused;
      EXPECT_EQ(status, kOutOfMemory) << what << ": " << tessaret_last_error_text();
      EXPECT_STREQ(tessaret_last_error_text(), "Not enough memory") << what;
    });
    EXPECT_GT(refused, 0u) << what;
  };
  for (const bool isFile : {true, false}) {
    std::int32_t before = 1;
    failEach("load", [&] {
      const Status status = isFile ? file_->LoadFile(in) : file_->LoadBytes(mine);
      std::int32_t count = 0;
      EXPECT_EQ(file_->get_ElementsCount(&count), kOk);
      EXPECT_EQ(count, status == kOk ? 3 : before);
      before = count;  // looking up quickly is no need
      return status;
    });
    ASSERT_EQ(Listing(), kListing);
    ASSERT_EQ(file_->LoadBytes(BytesVariant("first\n{0x0010 0x0020 LO \"Old\"}\n")), kOk);
  }
  for (const bool binary : {true, false}) {
    failEach("bytes", [&] {
      Variant bytes(7);
      const Status status = file_->GetBytes(binary, &bytes);
      EXPECT_EQ(bytes.IsArray(), status == kOk);
      return status;
    });
    failEach("save", [&] { return file_->SaveFile(out, binary, false); });
    EXPECT_EQ(ReadText(out.Utf8()), FormOf(binary));
  }
  EXPECT_EQ(folder_.Listing(), "mine out");
  failEach("element", [&] {
    std::int32_t group = 77;
    std::int32_t element = 78;
    String letters;
    String name;
    VariantBool found;
    const Status status = file_->GetElementAt(0, &group, &element, &letters, &name, &found);
    EXPECT_EQ(found.IsTrue(), status == kOk);
    EXPECT_EQ(group, status == kOk ? 0x0010 : 77);
    EXPECT_EQ(element, status == kOk ? 0x0020 : 78);
    EXPECT_EQ(letters.IsNull(), status != kOk);
    EXPECT_EQ(name.IsNull(), status != kOk);
    return status;
  });
  failEach("uid", [&] {
    String uid;
    VariantBool found;
    const Status status = file_->GetUIDAt(0, &uid, &found);
    EXPECT_EQ(found.IsTrue(), status == kOk);
    EXPECT_EQ(uid.IsNull(), status != kOk);
    return status;
  });
}

TEST_F(DictionaryFile, RefusesNullPointers) {
  std::int32_t number = 0;
  String text;
  VariantBool flag;
  EXPECT_EQ(file_->get_ElementsCount(nullptr), kPointer);
  EXPECT_EQ(file_->get_UIDsCount(nullptr), kPointer);
  EXPECT_EQ(file_->GetUIDAt(0, nullptr, &flag), kPointer);
  EXPECT_EQ(file_->GetUIDAt(0, &text, nullptr), kPointer);
  EXPECT_EQ(file_->GetBytes(true, nullptr), kPointer);
  EXPECT_EQ(file_->GetElementAt(0, nullptr, &number, &text, &text, &flag), kPointer);
  EXPECT_EQ(file_->GetElementAt(0, &number, nullptr, &text, &text, &flag), kPointer);
  EXPECT_EQ(file_->GetElementAt(0, &number, &number, nullptr, &text, &flag), kPointer);
  EXPECT_EQ(file_->GetElementAt(0, &number, &number, &text, nullptr, &flag), kPointer);
  EXPECT_EQ(file_->GetElementAt(0, &number, &number, &text, &text, nullptr), kPointer);
}

}  // namespace
}  // namespace tessaret::test
