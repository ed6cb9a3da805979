// A host in C++: shows what is in a DICOM file, makes a changed copy of it, and hears a failure in words.
//
//     walk IN OUT      OUT gets another patient's name, a remark about where it came from, and the explicit little endian encoding
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <string>

#include <tessaret/tessaret.hpp>

using namespace tessaret;

namespace {

constexpr const char* kExplicitLittleEndian = "1.2.840.10008.1.2.1";

/// Text of a file has a character a byte: what is not printable is written with an escape.
std::string Shown(const std::string& text) {
  std::string shown;
  for (const char c : text.substr(0, 60)) {
    const auto byte = static_cast<unsigned char>(c);
    char escape[5];
    std::snprintf(escape, sizeof(escape), "\\x%02x", byte);
    shown += byte >= 0x20 && byte < 0x7F ? std::string(1, c) : escape;
  }
  return shown;
}

/// Every value of an element as text; of bytes only how many they are.
std::string ValuesOf(IDCMObject& dataSet, std::int32_t group, std::int32_t element) {
  std::int32_t count = 0;
  dataSet.get_VRMultiplicity(group, element, &count);
  std::string all;
  for (std::int32_t at = 0; at == 0 || at < count; ++at) {
    Variant value;
    dataSet.get_VR(group, element, {}, at, &value);
    if (value.IsArray()) return std::to_string(value.AsArray()->Count()) + " bytes";
    if (at > 0) all += '\\';
    if (Succeeded(value.ChangeType(VariantType::kString))) all += value.ToString().Narrow();
  }
  return all;
}

/// One element a line, the items of sequences below it.
void Show(IDCMObject& dataSet, const std::string& indent) {
  std::int32_t group = 0;
  std::int32_t element = 0;
  VariantBool found;
  dataSet.GetFirstVR(&group, &element, &found);
  while (found) {
    String name, type;
    std::int32_t length = 0;
    std::int32_t count = 0;
    dataSet.GetVRDescr(group, element, &name, &type, &length, &count, &found);
    std::int16_t items = 0;
    dataSet.get_SequencesCount(group, element, &items);
    const std::string value = type.Narrow() == "SQ" ? std::to_string(items) + " items"
                                                    : ValuesOf(dataSet, group, element);
    std::printf("%s(%04x,%04x) %s %s: %s\n", indent.c_str(), static_cast<unsigned>(group),
                static_cast<unsigned>(element), type.Narrow().c_str(), name.Narrow().c_str(),
                Shown(value).c_str());
    for (std::int16_t index = 0; index < items; ++index) {
      Ref<IDCMObject> item;
      dataSet.get_Sequence(group, element, index, item.Receive());
      if (item) Show(*item, indent + "    ");
    }
    dataSet.GetNextVR(&group, &element, &found);
  }
}

/// Another name, and an item that says what the data set was made from.
Status Change(IDCMObject& dataSet) {
  const auto source = Create<IDCMObject>("Tessaret.DCMObject");
  if (!source) return kFail;
  Variant uid;
  dataSet.get_VR(0x0008, 0x0016, {}, 0, &uid);
  source->put_VR(0x0008, 0x1150, {}, 0, uid);
  dataSet.get_VR(0x0008, 0x0018, {}, 0, &uid);
  source->put_VR(0x0008, 0x1155, {}, 0, uid);
  // Behind the items that are there.
  Status status = dataSet.putref_Sequence(0x0008, 0x2112, -1, source.Get());
  if (Succeeded(status)) status = dataSet.put_VR(0x0010, 0x0010, {}, 0, "Walked^Through");
  if (Succeeded(status)) status = dataSet.put_VR(0x0008, 0x0008, {}, 0, "DERIVED");
  if (Succeeded(status)) status = dataSet.RemoveVR(0x0010, 0x0030, nullptr);
  return status;
}

int Fail(const std::string& subject, int code) {
  std::cerr << subject << ": " << LastError().text << '\n';
  return code;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "walk IN OUT\n";
    return 1;
  }
  const auto dataSet = Create<IDCMObject>("Tessaret.DCMObject");
  if (!dataSet) return Fail("Tessaret.DCMObject", 1);
  if (Failed(dataSet->Load(arguments[1], true))) return Fail(arguments[1], 1);
  Show(*dataSet, "");
  if (Failed(Change(*dataSet))) return Fail(arguments[1], 1);
  VariantBool done;
  if (Failed(dataSet->Translate(kExplicitLittleEndian, &done))) return Fail(arguments[1], 1);
  if (Failed(dataSet->Save(arguments[2]))) return Fail(arguments[2], 5);
  return 0;
}
