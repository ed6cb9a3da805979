#include "many_elements.h"

#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "base/text.h"
#include "core/module_dictionaries.h"
#include "defined_lengths.h"
#include "object_builder.h"
#include "synthetic.h"

namespace tessaret::bench {
namespace {

constexpr std::uint16_t kAcquisitionGroup = 0x0018;
constexpr std::size_t kSmallElements = 93;
constexpr TagKey kRegionSequence = 0x30060039;
constexpr TagKey kContourSequence = 0x30060040;
constexpr TagKey kContourImageSequence = 0x30060016;
constexpr unsigned kPoints = 12;  // numbers in the value of a contour

/// The attributes of a contour: the first ones of a group that has many of all types.
std::vector<_RTCElement> SmallElements() {
  const RtcTable& table = *ModuleDictionary().Table;
  std::vector<_RTCElement> found;
  for (std::uint32_t at = 0; at < table.Count && found.size() < kSmallElements; ++at) {
    const _RTCElement& entry = table.Elements[at];
    const bool isNumber = entry.TypeCode == type_code::US || entry.TypeCode == type_code::FD ||
                          entry.TypeCode == type_code::FL;
    if (entry.Group != kAcquisitionGroup || entry.Element == 0) continue;
    if (isNumber || HasRandomText(entry.TypeCode)) found.push_back(entry);
  }
  if (found.size() < kSmallElements) throw std::runtime_error("the data dictionary is too small");
  return found;
}

void AddSmallElement(ObjectBuilder& to, const _RTCElement& entry, Dice& dice) {
  const TagKey tag = MakeTagKey(entry.Group, entry.Element);
  switch (entry.TypeCode) {
    case type_code::US:
      return to.U16(tag, static_cast<std::uint16_t>(dice.Roll()));
    case type_code::FD:
      return to.F64(tag, dice.Below(100000) / 3.0);
    case type_code::FL:
      return to.F32(tag, static_cast<float>(dice.Below(100000)) / 3.0F);
    default:
      return to.Text(tag, RandomText(entry.TypeCode, dice));
  }
}

std::string PointsText(Dice& dice) {
  std::string text;
  for (unsigned point = 0; point < kPoints; ++point) {
    text += Format("%s%d.%02u", point == 0 ? "" : "\\", static_cast<int>(dice.Below(400)) - 200,
                   dice.Below(100));
  }
  return text;
}

void AddContour(DICOMObject& region, const std::vector<_RTCElement>& small, Dice& dice) {
  DICOMObject& item = ObjectBuilder(region).Item(kContourSequence);
  ObjectBuilder contour(item);
  for (const _RTCElement& entry : small) AddSmallElement(contour, entry, dice);
  ObjectBuilder image(contour.Item(kContourImageSequence));
  image.Text(0x00081150, kCtImageStorage);
  image.Text(0x00081155, MakeUid(dice.Roll()));
  contour.Text(0x30060042, "CLOSED_PLANAR");
  contour.Text(0x30060044, "0.8");
  contour.Text(0x30060046, Format("%u", kPoints / 3));
  contour.Text(0x30060048, Format("%u", dice.Below(1000)));
  contour.Text(0x30060050, PointsText(dice));
}

void AddHeader(DICOMObject& object, ManyForm form) {
  ObjectBuilder header(object);
  header.Text(0x00080005, "ISO_IR 100");
  header.Text(0x00080016, kRtStructureSetStorage);
  header.Text(0x00080018, MakeUid(5000 + static_cast<std::uint64_t>(form)));
  header.Text(0x00080020, "20240304");
  header.Text(0x00080030, "093000");
  header.Text(0x00080060, "RTSTRUCT");
  header.Text(0x00080070, "TESSARET");
  header.Text(0x00100010, "Phantom^Many");
  header.Text(0x00100020, "PID-3");
  header.Text(0x0020000D, MakeUid(6001));
  header.Text(0x0020000E, MakeUid(6002));
  header.Text(0x30060002, "CONTOURS");
}

void AddRegions(DICOMObject& object, const ManySize& size) {
  const std::vector<_RTCElement> small = SmallElements();
  Dice dice(size.regions);
  for (std::uint32_t number = 1; number <= size.regions; ++number) {
    DICOMObject& item = ObjectBuilder(object).Item(kRegionSequence);
    ObjectBuilder region(item);
    region.Text(0x3006002A, Format("%u\\128\\255", dice.Below(256)));
    for (std::uint32_t contour = 0; contour < size.contours; ++contour) {
      AddContour(item, small, dice);
    }
    region.Text(0x30060084, Format("%u", number));
  }
}

/// The sequence is the last element of its data set, so the file is the one without it with its bytes behind.
void SaveWithDefinedLengths(DICOMObject& object, const std::filesystem::path& path) {
  const std::unique_ptr<VR> sequence(
      object.Remove(GroupOf(kRegionSequence), ElementOf(kRegionSequence)));
  SaveObject(object, Syntax::kExplicit, path);
  const std::vector<std::uint8_t> bytes = EncodeWithDefinedLengths(*sequence);
  std::ofstream file(path, std::ios::binary | std::ios::app);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

void WriteManyElements(const ManySize& size, ManyForm form, const std::filesystem::path& path) {
  DICOMDataObject object;
  AddHeader(object, form);
  AddRegions(object, size);
  if (form == ManyForm::kExplicitDefined) {
    SaveWithDefinedLengths(object, path);
  } else {
    SaveObject(object, form == ManyForm::kImplicit ? Syntax::kImplicit : Syntax::kExplicit, path);
  }
}

}  // namespace tessaret::bench
