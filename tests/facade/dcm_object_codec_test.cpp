// Pixel data of an object through codecs: a codec library is found beside the data files, as it would be beside an installed library.
#include <gtest/gtest.h>

#include "facade/dcm_object_helpers.h"
#include "services/codec_place.h"
#include "services/store_provider.h"

namespace tessaret::test {
namespace {

const testing::Environment* const kPlace = testing::AddGlobalTestEnvironment(new CodecPlace);

Ref<IDCMObject> Image(std::uint32_t frames) {
  auto object = NewObject();
  EXPECT_EQ(ManagerOf(object)->PutPtr(1, NewImage(frames).release()), kOk);
  return object;
}

Status Translate(const Ref<IDCMObject>& object, const String& syntax, std::int16_t& done) {
  VariantBool answer = VariantBool::Of(77);
  const Status status = object->Translate(syntax, &answer);
  done = answer.value;
  return status;
}

TEST(DCMObjectCodecs, TurnPixelDataIntoASyntaxAndBack) {
  for (const std::uint32_t frames : {1u, 3u}) {
    const auto object = Image(frames);
    std::int16_t done = 0;
    ASSERT_EQ(Translate(object, kToy, done), kOk) << LastError().text;
    EXPECT_EQ(done, -1);
    EXPECT_EQ(Text(object, 0x0002, 0x0010), kToy);
    // The offset table, empty for one frame, and an item a frame.
    EXPECT_EQ(CountOf(object, 0x7FE0, 0x0010), static_cast<std::int16_t>(1 + frames));
    EXPECT_EQ(Raw(ItemOf(object, 0x7FE0, 0x0010, 0), 0xFFFE, 0xE000).size(),
              frames == 1 ? 0u : 4 * frames);
    ASSERT_EQ(Translate(object, String(), done), kOk);
    EXPECT_EQ(done, 77);
    EXPECT_EQ(Text(object, 0x0002, 0x0010), "1.2.840.10008.1.2.1");
    EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(frames));
  }
}

TEST(DCMObjectCodecs, TurnPixelDataNativeOnTheWayIn) {
  const TempFolder folder;
  const String path = folder.File("toy.dcm");
  std::int16_t done = 0;
  {
    const auto object = Image(3);
    ASSERT_EQ(Translate(object, kToy, done), kOk);
    ASSERT_EQ(object->Save(path), kOk) << LastError().text;
  }
  const auto object = NewObject();
  ASSERT_EQ(object->Load(path, true), kOk) << LastError().text;
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(3));
  EXPECT_EQ(CountOf(object, 0x7FE0, 0x0010), 0);
  EXPECT_EQ(Text(object, 0x0002, 0x0010), "1.2.840.10008.1.2.1");
  // Without pixels nothing is asked of the codec.
  ASSERT_EQ(object->Load(path, false), kOk);
  EXPECT_EQ(Text(object, 0x0002, 0x0010), kToy);
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), Bytes());
}

TEST(DCMObjectCodecs, WhatTheCodecCannotReadIsThereAsItCame) {
  const TempFolder folder;
  const String path = folder.File("toy.dcm");
  const Bytes junk = {9, 9};
  std::int16_t done = 0;
  {
    const auto object = Image(2);
    ASSERT_EQ(Translate(object, kToy, done), kOk);
    const Variant bytes = VariantArray::OfBytes(junk);
    ASSERT_EQ(ItemOf(object, 0x7FE0, 0x0010, 2)->PutVRData(0xFFFE, 0xE000, "OB", bytes), kOk);
    ASSERT_EQ(object->Save(path), kOk) << LastError().text;
  }
  const auto object = NewObject();
  EXPECT_FAILS_WITH(object->Load(path, true), "Unsupported Encapsulated Transfer Syntax");
  EXPECT_EQ(Text(object, 0x0002, 0x0010), kToy);
  // The offset table is gone; the fragments of both frames are there.
  ASSERT_EQ(CountOf(object, 0x7FE0, 0x0010), 2);
  EXPECT_EQ(Raw(ItemOf(object, 0x7FE0, 0x0010, 1), 0xFFFE, 0xE000), junk);
  EXPECT_EQ(ManagerOf(object)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(object)->SetOwner(), kOk);
}

TEST(DCMObjectCodecs, WhatLostItsOffsetTableKeepsAllItsFragments) {
  const TempFolder folder;
  const auto object = Image(3);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  const auto fragment = [](const Ref<IDCMObject>& in, std::int32_t index) {
    return Raw(ItemOf(in, 0x7FE0, 0x0010, index), 0xFFFE, 0xE000);
  };
  const Bytes good[] = {fragment(object, 1), fragment(object, 2), fragment(object, 3)};
  const auto set = [&](std::int32_t index, const Bytes& bytes) {
    const Variant value = VariantArray::OfBytes(bytes);
    ASSERT_EQ(ItemOf(object, 0x7FE0, 0x0010, index)->PutVRData(0xFFFE, 0xE000, "OB", value), kOk);
  };
  set(3, {9, 9});
  // A second failure takes nothing more away.
  for (int time = 0; time < 2; ++time) {
    EXPECT_FAILS_WITH(Translate(object, String(), done), "toy: the frame does not unpack");
    ASSERT_EQ(CountOf(object, 0x7FE0, 0x0010), 3);
    EXPECT_EQ(fragment(object, 0), good[0]);
  }
  set(2, good[2]);
  // In a file the first fragment would be taken for the table: an empty one stands before it.
  Ref<IDCMObject> copy;
  ASSERT_EQ(object->copy(copy.Receive()), kOk);
  for (const auto& each : {object, copy}) {
    ASSERT_EQ(each->Save(folder.File("lost.dcm")), kOk) << LastError().text;
    const auto loaded = NewObject();
    ASSERT_EQ(loaded->Load(folder.File("lost.dcm"), true), kOk) << LastError().text;
    EXPECT_EQ(Raw(loaded, 0x7FE0, 0x0010), NativePixels(3));
    ASSERT_EQ(Translate(each, String(), done), kOk) << LastError().text;
    EXPECT_EQ(Raw(each, 0x7FE0, 0x0010), NativePixels(3));
  }
}

TEST(DCMObjectCodecs, ASingleFragmentIsEnoughWithoutAnOffsetTable) {
  const auto object = Image(1);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  const Bytes good = Raw(ItemOf(object, 0x7FE0, 0x0010, 1), 0xFFFE, 0xE000);
  const auto set = [&](std::int32_t index, const Bytes& bytes) {
    const Variant value = VariantArray::OfBytes(bytes);
    ASSERT_EQ(ItemOf(object, 0x7FE0, 0x0010, index)->PutVRData(0xFFFE, 0xE000, "OB", value), kOk);
  };
  set(1, {9, 9});
  EXPECT_EQ(Translate(object, String(), done), kException);
  set(0, good);
  ASSERT_EQ(Translate(object, String(), done), kOk) << LastError().text;
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(1));
}

TEST(DCMObjectCodecs, WidePixelsOfACodecGoIntoABigEndianFileAsWords) {
  const TempFolder folder;
  const auto object = Image(1);
  // Four pixels of two bytes instead of eight of one.
  ASSERT_EQ(Put(object, 0x0028, 0x0100, std::int32_t{16}), kOk);
  ASSERT_EQ(Put(object, 0x0028, 0x0011, std::int32_t{2}), kOk);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk) << LastError().text;
  ASSERT_EQ(Translate(object, String(), done), kOk) << LastError().text;
  for (const char* little : {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1"}) {
    ASSERT_EQ(Translate(object, little, done), kOk) << LastError().text;
    EXPECT_EQ(Describe(object, 0x7FE0, 0x0010).type, "OB") << "as codecs leave it";
  }
  ASSERT_EQ(Translate(object, "1.2.840.10008.1.2.2", done), kOk) << LastError().text;
  EXPECT_EQ(Describe(object, 0x7FE0, 0x0010).type, "OW");
  ASSERT_EQ(object->Save(folder.File("big.dcm")), kOk) << LastError().text;
  // The last element of the file: tag, OW, two bytes of nothing, the length, and words with their high byte first.
  Bytes expected = {0x7F, 0xE0, 0, 0x10, 'O', 'W', 0, 0, 0, 0, 0, 8};
  const Bytes pixels = NativePixels(1);
  for (std::size_t at = 0; at < pixels.size(); at += 2) {
    expected.push_back(pixels[at + 1]);
    expected.push_back(pixels[at]);
  }
  const Bytes saved = ReadBytes(folder.File("big.dcm"));
  EXPECT_EQ(Bytes(saved.end() - 20, saved.end()), expected);
  const auto loaded = NewObject();
  ASSERT_EQ(loaded->Load(folder.File("big.dcm"), true), kOk);
  EXPECT_EQ(Raw(loaded, 0x7FE0, 0x0010), pixels);
  // What was big endian before, and called bytes, stays as it is.
  ASSERT_EQ(loaded->PutVRData(0x7FE0, 0x0010, "OB", VariantArray::OfBytes(pixels)), kOk);
  ASSERT_EQ(Translate(loaded, "1.2.840.10008.1.2.2", done), kOk);
  ASSERT_EQ(loaded->Save(folder.File("bytes.dcm")), kOk);
  const Bytes bytes = ReadBytes(folder.File("bytes.dcm"));
  EXPECT_EQ(Bytes(bytes.end() - 8, bytes.end()), pixels);
}

TEST(DCMObjectCodecs, TheWayBackByNameDropsTheNameForImplicit) {
  const auto object = Image(1);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  ASSERT_EQ(Translate(object, "1.2.840.10008.1.2", done), kOk);
  EXPECT_EQ(done, -1);
  EXPECT_FALSE(Describe(object, 0x0002, 0x0010).found.IsTrue());
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(1));
}

TEST(DCMObjectCodecs, OneThatCannotSaysFalse) {
  const auto object = Image(1);
  // An odd frame is what the toy refuses.
  ASSERT_EQ(Put(object, 0x0028, 0x0010, std::int32_t{1}), kOk);
  ASSERT_EQ(Put(object, 0x0028, 0x0011, std::int32_t{7}), kOk);
  std::int16_t done = 0;
  EXPECT_EQ(Translate(object, kToy, done), kOk);
  EXPECT_EQ(done, 0);
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(1));
  EXPECT_EQ(Text(object, 0x0002, 0x0010), "1.2.840.10008.1.2.1");
}

TEST(DCMObjectCodecs, NumbersOfABigEndianFileAreCompressedAsTheyAre) {
  const auto object = Image(1);
  ASSERT_EQ(Put(object, 0x0002, 0x0010, "1.2.840.10008.1.2.2"), kOk);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk) << LastError().text;
  EXPECT_EQ(done, -1);
  ASSERT_EQ(Translate(object, String(), done), kOk);
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(1));
}

TEST(DCMObjectCodecs, WhatIsNotCompressedStaysBigEndian) {
  constexpr const char* kBig = "1.2.840.10008.1.2.2";
  const auto name = [](const Ref<IDCMObject>& object) { return Text(object, 0x0002, 0x0010); };
  const auto make = [&] {
    auto object = Image(1);
    EXPECT_EQ(Put(object, 0x0002, 0x0010, kBig), kOk);
    return object;
  };
  std::int16_t done = 0;
  // An odd frame is what the toy refuses.
  const auto odd = make();
  ASSERT_EQ(Put(odd, 0x0028, 0x0010, std::int32_t{1}), kOk);
  ASSERT_EQ(Put(odd, 0x0028, 0x0011, std::int32_t{7}), kOk);
  EXPECT_EQ(Translate(odd, kToy, done), kOk);
  EXPECT_EQ(done, 0);
  EXPECT_EQ(name(odd), kBig);
  // Two frames are named, and the bytes are those of one.
  const auto cut = make();
  ASSERT_EQ(Put(cut, 0x0028, 0x0008, "2"), kOk);
  EXPECT_FAILS_WITH(Translate(cut, kToy, done),
                    "The pixel data has 8 bytes, but 2 frames of 8 bytes are named");
  EXPECT_EQ(done, 0);
  EXPECT_EQ(name(cut), kBig);
  EXPECT_EQ(Raw(cut, 0x7FE0, 0x0010), NativePixels(1));
  // Without bytes there is nothing to do.
  const auto none = make();
  ASSERT_EQ(Put(none, 0x7FE0, 0x0010, Variant()), kOk);
  EXPECT_EQ(Translate(none, kToy, done), kOk);
  EXPECT_EQ(done, -1);
  EXPECT_EQ(name(none), kBig);
  EXPECT_EQ(Translate(none, "1.2.840.10008.1.2.1", done), kOk);
  EXPECT_EQ(name(none), "1.2.840.10008.1.2.1");
}

TEST(DCMObjectCodecs, ABrokenStreamFailsWithTheCodecsWords) {
  const auto object = Image(2);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  const Variant junk = VariantArray::OfBytes(Bytes{9, 9});
  ASSERT_EQ(ItemOf(object, 0x7FE0, 0x0010, 2)->PutVRData(0xFFFE, 0xE000, "OB", junk), kOk);
  EXPECT_EQ(Translate(object, String(), done), kException);
  EXPECT_FALSE(LastError().text.empty());
  EXPECT_EQ(Text(object, 0x0002, 0x0010), kToy);
}

/// A saved file without what its meta header has behind the transfer syntax.
Bytes WithoutMetaBehindSyntax(Bytes file) {
  constexpr std::ptrdiff_t kLength = 128 + 4 + 8;  // where (0002,0000) has its value
  const std::ptrdiff_t end = kLength + 4 + file[kLength];
  const Bytes behind = {0x02, 0x00, 0x12, 0x00};
  const auto cut = std::search(file.begin(), file.end(), behind.begin(), behind.end());
  file[kLength] = static_cast<std::uint8_t>(cut - file.begin() - kLength - 4);
  file.erase(cut, file.begin() + end);
  return file;
}

TEST(DCMObjectCodecs, ASyntaxThatDoesNotStayInTheObjectHoldsForItsFragmentsAllTheSame) {
  const TempFolder folder;
  const std::string path = folder.File("toy.dcm");
  std::int16_t done = 0;
  {
    const auto object = Image(2);
    ASSERT_EQ(Translate(object, kToy, done), kOk);
    ASSERT_EQ(object->Save(path), kOk) << LastError().text;
  }
  WriteBytes(path, WithoutMetaBehindSyntax(ReadBytes(path)));
  const auto object = NewObject();
  ASSERT_EQ(object->Load(path, true), kOk) << LastError().text;
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(2));
  EXPECT_EQ(Text(object, 0x0002, 0x0010), "1.2.840.10008.1.2.1");
  // Loaded with its fragments it is translated likewise.
  ASSERT_EQ(object.As<IDcmFile>()->LoadFile(path, LOAD_PIXELS, {}), kOk);
  EXPECT_FALSE(Describe(object, 0x0002, 0x0010).found.IsTrue());
  EXPECT_EQ(CountOf(object, 0x7FE0, 0x0010), 3);
  ASSERT_EQ(Translate(object, String(), done), kOk) << LastError().text;
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(2));
}

TEST(DCMObjectCodecs, TheNameInTheObjectGoesBeforeThatOfItsFile) {
  const TempFolder folder;
  const std::string path = folder.File("toy.dcm");
  std::int16_t done = 0;
  {
    const auto object = Image(2);
    ASSERT_EQ(Translate(object, kToy, done), kOk);
    ASSERT_EQ(object->Save(path), kOk) << LastError().text;
  }
  const auto object = NewObject();
  ASSERT_EQ(object.As<IDcmFile>()->LoadFile(path, LOAD_PIXELS, {}), kOk);
  const auto name = [&](const char* syntax) {
    ASSERT_EQ(Put(object, 0x0002, 0x0010, syntax), kOk) << LastError().text;
  };
  name("1.2.999.77");
  EXPECT_FAILS_WITH(Translate(object, String(), done), "Unknown transfer syntax [1.2.999.77]");
  name(kToy);
  ASSERT_EQ(Translate(object, String(), done), kOk) << LastError().text;
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), NativePixels(2));
}

TEST(DCMObjectCodecs, ARefusalIsNoFailureAndSaysWhy) {
  const auto object = Image(1);
  const auto why = [&] {
    String words;
    EXPECT_EQ(object.As<IDcmFile>()->get_Refusal(&words), kOk);
    return words.Narrow();
  };
  EXPECT_EQ(why(), "");
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, "1.2.3", done), kOk);
  EXPECT_EQ(done, 0);
  EXPECT_EQ(why(), "Unknown transfer syntax [1.2.3]");
  ASSERT_EQ(Put(object, 0x0028, 0x0010, std::int32_t{1}), kOk);
  ASSERT_EQ(Put(object, 0x0028, 0x0011, std::int32_t{7}), kOk);
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  EXPECT_EQ(done, 0);
  EXPECT_EQ(why(), "The object cannot be held in transfer syntax [1.2.999.1]");
  // A failure is told as one, and what was said before is gone.
  ASSERT_EQ(Put(object, 0x0028, 0x0011, std::int32_t{100}), kOk);
  EXPECT_EQ(Translate(object, kToy, done), kException);
  EXPECT_EQ(why(), "");
  EXPECT_EQ(object.As<IDcmFile>()->get_Refusal(nullptr), kPointer);
}

TEST(DCMObjectCodecs, FragmentsAreSentAsTheyAreWhereThePeerTakesThem) {
  StoreProvider provider({.syntaxes = {kToy}});
  const auto object = Image(2);
  ASSERT_EQ(Put(object, 0x0008, 0x0016, "1.2.840.10008.5.1.4.1.1.7"), kOk);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  VariantBool sent;
  ASSERT_EQ(object->Send("127.0.0.1", provider.Port(), "A", "B", {}, &sent), kOk)
      << LastError().text;
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].syntax, kToy);
  EXPECT_EQ(ItemsOf(*provider.stored[0].object), ItemsOf(*CoreOf(object)));
}

TEST(DCMObjectCodecs, FragmentsAreSentNativeWhereThePeerDoesNot) {
  StoreProvider provider;
  const auto object = Image(2);
  ASSERT_EQ(Put(object, 0x0008, 0x0016, "1.2.840.10008.5.1.4.1.1.7"), kOk);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  const std::vector<Bytes> before = ItemsOf(*CoreOf(object));
  VariantBool sent;
  ASSERT_EQ(object->Send("127.0.0.1", provider.Port(), "A", "B", {}, &sent), kOk)
      << LastError().text;
  // The object itself stays compressed, its offset table included.
  EXPECT_EQ(ItemsOf(*CoreOf(object)), before);
  EXPECT_EQ(Text(object, 0x0002, 0x0010), kToy);
  // What cannot be decoded cannot be sent, and stays too.
  const Variant junk = VariantArray::OfBytes(Bytes{9, 9});
  ASSERT_EQ(ItemOf(object, 0x7FE0, 0x0010, 2)->PutVRData(0xFFFE, 0xE000, "OB", junk), kOk);
  EXPECT_FAILS_WITH(object->Send("127.0.0.1", provider.Port(), "A", "B", {}, &sent),
                    "Error during transfer");
  EXPECT_FALSE(sent.IsTrue());
  EXPECT_EQ(CountOf(object, 0x7FE0, 0x0010), 3);
  provider.End();
  ASSERT_EQ(provider.stored.size(), 1u);
  EXPECT_EQ(provider.stored[0].syntax, "1.2.840.10008.1.2");
  EXPECT_EQ(ValueOf(PixelsOf(*provider.stored[0].object)), NativePixels(2));
}

TEST(DCMObjectCodecs, FragmentsOfAnIconAreSentInTheirOwnSyntaxOrNotAtAll) {
  const auto object = Image(2);
  ASSERT_EQ(Put(object, 0x0008, 0x0016, "1.2.840.10008.5.1.4.1.1.7"), kOk);
  std::int16_t done = 0;
  ASSERT_EQ(Translate(object, kToy, done), kOk);
  constexpr TagKey kIcon = MakeTagKey(0x0088, 0x0200);
  CoreOf(object)->Push(NewSequence(kIcon, {NewCompressed(1, kToy, 1).release()}));
  const auto iconIn = [](const DICOMObject& in) {
    return ItemsOf(*in.GetVR(GroupOf(kIcon), ElementOf(kIcon))->GetItem(0));
  };
  const std::vector<Bytes> pixels = ItemsOf(*CoreOf(object));
  const std::vector<Bytes> icon = iconIn(*CoreOf(object));
  VariantBool sent;
  for (const char* syntax : {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1"}) {
    StoreProvider native({.namedSyntax = syntax});
    EXPECT_FAILS_WITH(object->Send("127.0.0.1", native.Port(), "A", "B", {}, &sent),
                      "Error during transfer");
    EXPECT_FALSE(sent.IsTrue());
    native.End();
    EXPECT_EQ(native.associations, 1u);
    EXPECT_EQ(native.stored.size(), 0u) << syntax;
  }
  StoreProvider own({.syntaxes = {kToy}});
  ASSERT_EQ(object->Send("127.0.0.1", own.Port(), "A", "B", {}, &sent), kOk) << LastError().text;
  own.End();
  ASSERT_EQ(own.stored.size(), 1u);
  EXPECT_EQ(own.stored[0].syntax, kToy);
  EXPECT_EQ(ItemsOf(*own.stored[0].object), pixels);
  EXPECT_EQ(iconIn(*own.stored[0].object), icon);
  EXPECT_EQ(ItemsOf(*CoreOf(object)), pixels) << "the object itself stays as it is";
  EXPECT_EQ(iconIn(*CoreOf(object)), icon);
}

}  // namespace
}  // namespace tessaret::test
