// What the library makes of files, for the tests that hold it against independent programs. Not installed.
//
//   interop_peer list FILE...                     every element with its type and bytes, also those of items
//   interop_peer list-little FILE...              the same, with the numbers of big endian files turned round
//   interop_peer resave SYNTAX IN OUT [IN OUT]... loads, and saves with a meta header in the transfer syntax of the UID
//                                                 SYNTAX, or in its own when that is "same"
//   interop_peer send PORT FILE...                loads with what compressed pixels the file has, and sends the object to a node of
//                                                 this machine
//
// Fields are separated by tabs. Exit code 1 when some file could not be loaded, saved or sent.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "base/text.h"
#include "core/data_set_coder.h"
#include "support/bytes.h"
#include "support/compare_objects.h"
#include "support/sha256.h"
#include "support/test_paths.h"
#include "tessaret/tessaret.hpp"

namespace tessaret::test {
namespace {

constexpr std::uint32_t kShownWhole = 32;

/// The bytes of one number of a type; 1 for text and bytes.
std::size_t NumberBytes(VrCode type) {
  switch (type) {
    case type_code::US:
    case type_code::SS:
    case type_code::OW:
    case type_code::AT:
      return 2;
    case type_code::UL:
    case type_code::SL:
    case type_code::FL:
    case type_code::OF:
    case MakeTypeCode('O', 'L'):
      return 4;
    case type_code::FD:
    case MakeTypeCode('O', 'D'):
    case MakeTypeCode('O', 'V'):
    case MakeTypeCode('S', 'V'):
    case MakeTypeCode('U', 'V'):
      return 8;
    default:
      return 1;
  }
}

/// The bytes in hexadecimal digits; of long values the digest.
std::string BytesText(const VR& vr, bool turnRound) {
  if (vr.Data == nullptr) return "";
  Bytes bytes(vr.Data, vr.Data + vr.Length);
  const std::size_t width = turnRound ? NumberBytes(vr.TypeCode) : 1;
  for (std::size_t at = 0; at + width <= bytes.size(); at += width) {
    std::reverse(&bytes[at], &bytes[at] + width);
  }
  if (bytes.size() > kShownWhole) return Sha256(bytes.data(), bytes.size());
  std::string digits;
  for (const std::uint8_t byte : bytes) digits += Format("%2.2x", byte);
  return digits;
}

/// The type as letters, or as a number where it has none.
std::string LettersOf(const VR& vr) {
  const std::string letters = {FirstLetter(vr.TypeCode), SecondLetter(vr.TypeCode)};
  const bool upperCase =
      std::all_of(letters.begin(), letters.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
  return upperCase ? letters : Format("%4.4x", vr.TypeCode);
}

void ListElements(const DICOMObject& object, const std::string& before, bool turnRound) {
  object.Elements.ForEach([&](VR& vr) {
    const std::string path = before + Format("(%4.4x,%4.4x)", vr.Group, vr.Element);
    const bool sequence = vr.Items != nullptr || vr.TypeCode == type_code::SQ;
    std::printf("%s\t%s\t%s\t%s\n", sequence ? "sequence" : "element", path.c_str(),
                LettersOf(vr).c_str(), BytesText(vr, turnRound && vr.Group != 2).c_str());
    for (std::uint32_t at = 0; at < vr.ItemCount(); ++at) {
      ListElements(*vr.GetItem(at), path + "[" + std::to_string(at) + "]", turnRound);
    }
  });
}

bool IsBigEndianFile(const DICOMObject& object) {
  const VR* syntax = object.GetVR(0x0002, 0x0010);
  return syntax != nullptr && ValueText(*syntax).starts_with("1.2.840.10008.1.2.2");
}

bool List(const RTC& dictionary, const char* path, bool little) {
  DataSetCoder coder(&dictionary);
  const auto object = coder.LoadFile(path, true, false);
  if (object == nullptr) return false;
  std::printf("file\t%s\n", path);
  ListElements(*object, "", little && IsBigEndianFile(*object));
  return true;
}

void SetSyntax(DICOMObject& object, std::string_view uid) {
  auto syntax = std::make_unique<VR>(std::uint16_t{2}, std::uint16_t{0x10},
                                     static_cast<std::uint32_t>(uid.size()), true);
  std::memcpy(syntax->Data, uid.data(), uid.size());
  syntax->TypeCode = type_code::UI;
  object.Push(syntax.get());
  syntax.release();
}

bool Resave(const RTC& dictionary, std::string_view syntax, const char* from, const char* to) {
  DataSetCoder coder(&dictionary);
  const auto object = coder.LoadFile(from, true, false);
  if (object != nullptr && syntax != "same") SetSyntax(*object, syntax);
  if (object != nullptr && coder.SaveFile(to, 3, *object)) return true;
  std::fprintf(stderr, "%s: %s\n", from,
               coder.ErrorText() == nullptr ? "failed" : coder.ErrorText());
  return false;
}

bool Send(const char* port, const char* path) {
  const auto object = Create<IDCMObject>("Tessaret.DCMObject");
  VariantBool sent;
  const bool done = object.As<IDcmFile>()->LoadFile(path, LOAD_PIXELS, ENCODING_NONE) == kOk &&
                    object->Send("127.0.0.1", port, "HERE", "ARCHIVE", {}, &sent) == kOk;
  if (!done) std::fprintf(stderr, "%s: %s\n", path, LastError().text.c_str());
  return done && sent.IsTrue();
}

int Run(int count, char** words) {
  RTC dictionary;
  const std::string path = std::string(kDataDir) + "/dicom-dict.txt";
  if (!dictionary.AttachRTC(path.c_str())) return 2;
  const std::string_view verb = count > 1 ? words[1] : "";
  bool done = true;
  if (verb == "list" || verb == "list-little") {
    for (int at = 2; at < count; ++at) {
      done = List(dictionary, words[at], verb == "list-little") && done;
    }
  } else if (verb == "resave" && count > 2) {
    for (int at = 3; at + 1 < count; at += 2) {
      done = Resave(dictionary, words[2], words[at], words[at + 1]) && done;
    }
  } else if (verb == "send" && count > 3) {
    for (int at = 3; at < count; ++at) done = Send(words[2], words[at]) && done;
  } else {
    return 2;
  }
  return done ? 0 : 1;
}

}  // namespace
}  // namespace tessaret::test

int main(int count, char** words) { return tessaret::test::Run(count, words); }
