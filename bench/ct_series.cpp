#include "ct_series.h"

#include <string>
#include <string_view>

#include "base/text.h"
#include "synthetic.h"

namespace tessaret::bench {
namespace {

struct TextRow {
  TagKey tag;
  std::string_view text;
};

constexpr TextRow kCtTexts[] = {
    {0x00080005, "ISO_IR 100"},
    {0x00080008, "ORIGINAL\\PRIMARY\\AXIAL"},
    {0x00080012, "20240304"},
    {0x00080013, "094500.250"},
    {0x00080016, kCtImageStorage},
    {0x00080020, "20240304"},
    {0x00080021, "20240304"},
    {0x00080022, "20240304"},
    {0x00080023, "20240304"},
    {0x00080030, "093000"},
    {0x00080031, "093210"},
    {0x00080032, "093215.500"},
    {0x00080033, "093240"},
    {0x00080050, "A-2024-0001"},
    {0x00080060, "CT"},
    {0x00080070, "TESSARET"},
    {0x00080080, "Hospital of Made-up Patients"},
    {0x00080081, "7 Nowhere Lane"},
    {0x00080090, "Referring^Rita"},
    {0x00081010, "CT-ROOM-2"},
    {0x00081030, "Chest and abdomen"},
    {0x0008103E, "Thin slices, soft kernel"},
    {0x00081040, "Radiology"},
    {0x00081050, "Reading^Rob"},
    {0x00081070, "Operating^Olga"},
    {0x00081090, "Arithmetic 2000"},
    {0x00082111, "made of ellipses and noise"},
    {0x00100030, "19680229"},
    {0x00100040, "O"},
    {0x00101010, "056Y"},
    {0x00101020, "1.82"},
    {0x00101030, "78.5"},
    {0x00104000, "nobody"},
    {0x00180010, "NONE"},
    {0x00180015, "CHEST"},
    {0x00180022, "HELICAL MODE"},
    {0x00180060, "120"},
    {0x00180090, "500.000000"},
    {0x00181000, "SERIAL-0007"},
    {0x00181020, "4.2.1"},
    {0x00181030, "Chest routine"},
    {0x00181100, "360.000000"},
    {0x00181110, "1040.000000"},
    {0x00181111, "570.000000"},
    {0x00181120, "0.000000"},
    {0x00181130, "151.500000"},
    {0x00181140, "CW"},
    {0x00181150, "500"},
    {0x00181151, "220"},
    {0x00181152, "110"},
    {0x00181160, "WEDGE"},
    {0x00181170, "52000"},
    {0x00181190, "0.900000"},
    {0x00181210, "SOFT30"},
    {0x00185100, "FFS"},
    {0x00200010, "STUDY-1"},
    {0x00200011, "3"},
    {0x00200012, "1"},
    {0x00200037, "1\\0\\0\\0\\1\\0"},
    {0x00201040, "SN"},
    {0x00280004, "MONOCHROME2"},
    {0x00281050, "40"},
    {0x00281051, "400"},
    {0x00281052, "-1024"},
    {0x00281053, "1"},
    {0x00281054, "HU"},
    {0x00400002, "20240304"},
    {0x00400003, "092500"},
    {0x00400244, "20240304"},
    {0x00400245, "093000"},
    {0x00400253, "STEP-0001"},
    {0x00400254, "Chest and abdomen"},
};

constexpr TextRow kMultiFrameTexts[] = {
    {0x00080005, "ISO_IR 100"},
    {0x00080008, "DERIVED\\SECONDARY"},
    {0x00080016, kMultiFrameWordScStorage},
    {0x00080020, "20240304"},
    {0x00080030, "093000"},
    {0x00080050, "A-2024-0002"},
    {0x00080060, "OT"},
    {0x00080064, "WSD"},
    {0x00080090, "Referring^Rita"},
    {0x00100010, "Phantom^Frames"},
    {0x00100020, "PID-4"},
    {0x00100030, "19680229"},
    {0x00100040, "O"},
    {0x00200010, "STUDY-2"},
    {0x00200011, "1"},
    {0x00200013, "1"},
    {0x00280004, "MONOCHROME2"},
    {0x00281052, "-1024"},
    {0x00281053, "1"},
    {0x00281054, "HU"},
};

constexpr std::uint64_t kMultiFrameKey = 4000;

template <std::size_t count>
void AddTexts(ObjectBuilder& to, const TextRow (&rows)[count]) {
  for (const TextRow& row : rows) to.Text(row.tag, row.text);
}

/// Millimetres with six digits.
std::string Millimetres(double value) { return FormatFixed(value); }

/// A key of its own for each UID of a series.
std::uint64_t KeyOf(const SeriesPlan& plan, std::uint64_t number) {
  return plan.key * 1'000'000 + number;
}

void AddPixelFormat(ObjectBuilder& to, const VolumeSize& size) {
  to.U16(0x00280002, 1);
  to.U16(0x00280010, size.rows);
  to.U16(0x00280011, size.columns);
  to.U16(0x00280100, 16);
  to.U16(0x00280101, 12);
  to.U16(0x00280102, 11);
  to.U16(0x00280103, 0);
}

void AddCode(DICOMObject& item, std::string_view value, std::string_view scheme,
             std::string_view meaning) {
  ObjectBuilder code(item);
  code.Text(0x00080100, value);
  code.Text(0x00080102, scheme);
  code.Text(0x00080104, meaning);
}

void AddSequences(ObjectBuilder& header, const SeriesPlan& plan) {
  AddCode(header.Item(0x00081032), "CHESTABD", "99TESSARET", "Chest and abdomen");
  ObjectBuilder referenced(header.Item(0x00081140));
  referenced.Text(0x00081150, kCtImageStorage);
  referenced.Text(0x00081155, MakeUid(KeyOf(plan, 900'000)));
  ObjectBuilder request(header.Item(0x00400275));
  request.Text(0x00400007, "Chest and abdomen");
  AddCode(request.Item(0x00400008), "P5-08000", "SRT", "Computed Tomography");
  request.Text(0x00400009, "STEP-1");
  request.Text(0x00401001, "REQUEST-1");
}

void AddPrivateBlock(ObjectBuilder& header, const std::string& number) {
  header.PrivateText(0x00090010, type_code::LO, "TESSARET BENCH");
  header.PrivateText(0x00091001, type_code::LO, "a value of the maker");
  header.PrivateText(0x00091002, type_code::IS, number);
  header.U16(0x00091003, 7);
  header.F64(0x00091004, 3.25);
}

void AddExposure(ObjectBuilder& header) {
  header.F64(0x00189305, 0.5);
  header.F64(0x00189306, 0.625);
  header.F64(0x00189307, 40);
  header.F64(0x00189311, 0.984);
}

void AddPlace(ObjectBuilder& header, const SeriesPlan& plan, std::uint32_t slice) {
  const std::string left = Millimetres(-plan.pixelSpacing * (plan.size.columns - 1) / 2);
  const std::string front = Millimetres(-plan.pixelSpacing * (plan.size.rows - 1) / 2);
  const std::string height = Millimetres(plan.sliceDistance * slice - 160);
  const std::string spacing = Millimetres(plan.pixelSpacing);
  const std::string distance = Millimetres(plan.sliceDistance);
  header.Text(0x00180050, distance);
  header.Text(0x00180088, distance);
  header.Text(0x00200032, left + "\\" + front + "\\" + height);
  header.Text(0x00201041, height);
  header.Text(0x00280030, spacing + "\\" + spacing);
}

void AddIdentity(ObjectBuilder& header, const SeriesPlan& plan, std::uint32_t slice) {
  const std::string number = Format("%u", slice + 1);
  header.Text(0x00080018, MakeUid(KeyOf(plan, 1000 + slice)));
  header.Text(0x00100010, std::string("Phantom^") + plan.patientId);
  header.Text(0x00100020, plan.patientId);
  header.Text(0x0020000D, MakeUid(KeyOf(plan, 1)));
  header.Text(0x0020000E, MakeUid(KeyOf(plan, 2)));
  header.Text(0x00200013, number);
  header.Text(0x00200052, MakeUid(KeyOf(plan, 3)));
  header.Text(0x00204000, "slice " + number);
  AddPrivateBlock(header, number);
}

/// A fixed permutation: the step is a prime that divides no number of slices in use.
std::string FileName(std::uint32_t slice, std::uint32_t slices) {
  return Format("I%06u", (slice * 7919 + 13) % slices + 1);
}

}  // namespace

void WriteCtSeries(const SeriesPlan& plan, const std::vector<std::uint16_t>& volume, Syntax syntax,
                   const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (std::uint32_t slice = 0; slice < plan.size.slices; ++slice) {
    DICOMDataObject object;
    ObjectBuilder header(object);
    AddTexts(header, kCtTexts);
    AddIdentity(header, plan, slice);
    AddSequences(header, plan);
    AddExposure(header);
    AddPlace(header, plan, slice);
    AddPixelFormat(header, plan.size);
    header.Pixels(SliceOf(volume, plan.size, slice));
    SaveObject(object, syntax, folder / FileName(slice, plan.size.slices));
  }
}

void WriteMultiFrame(const VolumeSize& size, const std::vector<std::uint16_t>& volume,
                     const std::filesystem::path& path) {
  DICOMDataObject object;
  ObjectBuilder header(object);
  AddTexts(header, kMultiFrameTexts);
  header.Text(0x00080018, MakeUid(kMultiFrameKey));
  header.Text(0x0020000D, MakeUid(kMultiFrameKey + 1));
  header.Text(0x0020000E, MakeUid(kMultiFrameKey + 2));
  header.Text(0x00280008, Format("%u", size.slices));
  header.Text(0x00280030, "0.7\\0.7");
  AddPixelFormat(header, size);
  header.Pixels(volume);
  SaveObject(object, Syntax::kExplicit, path);
}

}  // namespace tessaret::bench
