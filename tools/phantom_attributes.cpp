#include "phantom_attributes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "base/text.h"
#include "class_object.h"
#include "interrupt.h"
#include "object_builder.h"
#include "phantom_uids.h"

namespace tessaret::tool {
namespace {

constexpr const char* kExplicitLittleUid = "1.2.840.10008.1.2.1";

constexpr const char* kCtImage = "1.2.840.10008.5.1.4.1.1.2";
constexpr const char* kMrImage = "1.2.840.10008.5.1.4.1.1.4";
constexpr const char* kCrImage = "1.2.840.10008.5.1.4.1.1.1";
constexpr const char* kSecondaryCapture = "1.2.840.10008.5.1.4.1.1.7";
constexpr const char* kLegacyEnhancedMr = "1.2.840.10008.5.1.4.1.1.4.4";

constexpr PhantomKind kKinds[] = {
    {"ct", kCtImage, "CT", "MONOCHROME2", 1, 16, 12, false, true},
    {"mr", kMrImage, "MR", "MONOCHROME2", 1, 16, 12, false, true},
    {"multiframe", kLegacyEnhancedMr, "MR", "MONOCHROME2", 1, 16, 12, true, true},
    {"rgb", kSecondaryCapture, "OT", "RGB", 3, 8, 8, false, true},
    {"palette", kSecondaryCapture, "OT", "PALETTE COLOR", 1, 8, 8, false, true},
    {"mono1", kCrImage, "CR", "MONOCHROME1", 1, 16, 12, false, false},
};

// Air, skin, bone, brain, ventricle, ball, rod. Stored CT values are Hounsfield units plus 1024.
constexpr GreyScale kStoredHounsfield = {{24, 964, 1724, 1054, 1030, 1104, 2224}, 40};
constexpr GreyScale kMrSignal = {{10, 700, 40, 500, 1100, 900, 1600}, 200};
constexpr GreyScale kFilmDensity = {{4000, 3000, 800, 2200, 2800, 1600, 200}, 400};
constexpr GreyScale kPaletteIndex = {{0, 60, 240, 120, 40, 190, 255}, 50};
constexpr Colour kMaterialColours[kMaterials] = {{0, 0, 0},       {224, 172, 140}, {245, 240, 220},
                                                 {200, 120, 140}, {60, 90, 180},   {240, 200, 40},
                                                 {30, 200, 60}};

constexpr TextRow kCommonRows[] = {
    {0x00080005, type_code::CS, "ISO_IR 100"},
    // patient
    {0x00100010, type_code::PN, "Phantom^Ellipsoid"},
    {0x00100020, type_code::LO, "TESSARET-PHANTOM"},
    {0x00100030, type_code::DA, "19700101"},
    {0x00100040, type_code::CS, "O"},
    // study
    {0x00080020, type_code::DA, "20240102"},
    {0x00080030, type_code::TM, "120000"},
    {0x00080050, type_code::SH, "PHANTOM1"},
    {0x00080090, type_code::PN, ""},
    {0x00081030, type_code::LO, "Ellipsoid phantom"},
    {0x00200010, type_code::SH, "1"},
    // series
    {0x00080021, type_code::DA, "20240102"},
    {0x00080031, type_code::TM, "120100"},
    {0x00180015, type_code::CS, "HEAD"},
    {0x00200011, type_code::IS, "1"},
    // equipment
    {0x00080070, type_code::LO, "Tessaret"},
    {0x00081090, type_code::LO, "Ellipsoid phantom"},
    {0x00181000, type_code::LO, "1"},
    {0x00181020, type_code::LO, "1"},
    // image
    {0x00080023, type_code::DA, "20240102"},
    {0x00080033, type_code::TM, "120200"},
};

constexpr TextRow kAcquisitionTimeRows[] = {
    {0x00080022, type_code::DA, "20240102"},
    {0x00080032, type_code::TM, "120200"},
};

constexpr TextRow kAcquisitionRows[] = {
    {0x00185100, type_code::CS, "HFS"},
    {0x00200012, type_code::IS, "1"},
};

constexpr TextRow kCtRows[] = {
    {0x00080008, type_code::CS, "ORIGINAL\\PRIMARY\\AXIAL"},
    {0x00180060, type_code::DS, "120"},
    {0x00281050, type_code::DS, "40"},
    {0x00281051, type_code::DS, "400"},
    {0x00281052, type_code::DS, "-1024"},
    {0x00281053, type_code::DS, "1"},
    {0x00281054, type_code::LO, "HU"},
};

constexpr TextRow kMrTechniqueRows[] = {
    {0x00180020, type_code::CS, "SE"},  {0x00180021, type_code::CS, "NONE"},
    {0x00180022, type_code::CS, ""},    {0x00180023, type_code::CS, "2D"},
    {0x00180080, type_code::DS, "500"}, {0x00180081, type_code::DS, "15"},
    {0x00180091, type_code::IS, "1"},
};

constexpr TextRow kMrRows[] = {
    {0x00080008, type_code::CS, "ORIGINAL\\PRIMARY\\OTHER"},
    {0x00281050, type_code::DS, "800"},
    {0x00281051, type_code::DS, "1600"},
};

constexpr TextRow kCrRows[] = {
    {0x00080008, type_code::CS, "ORIGINAL\\PRIMARY"},
    {0x00180060, type_code::DS, "70"},
    {0x00185101, type_code::CS, "AP"},
    {0x00200020, type_code::CS, "L\\F"},
    {0x00281050, type_code::DS, "2048"},
    {0x00281051, type_code::DS, "4096"},
};

constexpr TextRow kSecondaryCaptureRows[] = {
    {0x00080008, type_code::CS, "DERIVED\\SECONDARY"},
    {0x00080064, type_code::CS, "SYN"},
};

constexpr TextRow kMultiFrameRows[] = {
    {0x00080008, type_code::CS, "ORIGINAL\\PRIMARY\\VOLUME\\NONE"},
    {0x0008002A, type_code::DT, "20240102120200"},
    {0x00089205, type_code::CS, "MONOCHROME"},
    {0x00089206, type_code::CS, "VOLUME"},
    {0x00089207, type_code::CS, "NONE"},
    {0x00089208, type_code::CS, "MAGNITUDE"},
    {0x00089209, type_code::CS, "UNKNOWN"},
    {0x00280301, type_code::CS, "NO"},
    {0x00282110, type_code::CS, "00"},
    {0x20500020, type_code::CS, "IDENTITY"},
};

constexpr TextRow kFrameTypeRows[] = {
    {0x00089007, type_code::CS, "ORIGINAL\\PRIMARY\\VOLUME\\NONE"},
    {0x00089205, type_code::CS, "MONOCHROME"},
    {0x00089206, type_code::CS, "VOLUME"},
    {0x00089207, type_code::CS, "NONE"},
    {0x00089208, type_code::CS, "MAGNITUDE"},
    {0x00089209, type_code::CS, "UNKNOWN"},
};

constexpr TextRow kFrameContentRows[] = {
    {0x00189074, type_code::DT, "20240102120200"},
    {0x00209056, type_code::SH, "1"},
};

constexpr TextRow kWindowRows[] = {
    {0x00281050, type_code::DS, "800"},
    {0x00281051, type_code::DS, "1600"},
};

constexpr TextRow kValueTransformRows[] = {
    {0x00281052, type_code::DS, "0"},
    {0x00281053, type_code::DS, "1"},
    {0x00281054, type_code::LO, "US"},
};

/// All that was chosen, as one line of text. UIDs are made from it.
std::string Choices(const PhantomKind& kind, const PhantomShape& shape) {
  return Format("tessaret phantom 1 kind %s size %d slices %d spacing ", kind.name, shape.size,
                shape.slices) +
         DecimalString(shape.spacing.x) + ' ' + DecimalString(shape.spacing.y) + ' ' +
         DecimalString(shape.spacing.z) + (shape.uneven ? " uneven" : "") +
         (shape.oblique ? " oblique" : "");
}

void AddOrientation(ObjectBuilder& object, const PhantomGeometry& geometry) {
  const Vector3 row = geometry.RowDirection();
  const Vector3 column = geometry.ColumnDirection();
  object.Decimals(0x00200037, {row.x, row.y, row.z, column.x, column.y, column.z});
}

/// The sides of the patient that `direction` points to, the one that it points to most first (DICOM PS3.3, C.7.6.1.1.1).
std::string Sides(const Vector3& direction) {
  struct Side {
    double amount;
    char letter;
  };
  std::array<Side, 3> sides = {{{direction.x, direction.x > 0 ? 'L' : 'R'},
                                {direction.y, direction.y > 0 ? 'P' : 'A'},
                                {direction.z, direction.z > 0 ? 'H' : 'F'}}};
  std::sort(sides.begin(), sides.end(),
            [](const Side& a, const Side& b) { return std::abs(a.amount) > std::abs(b.amount); });
  std::string letters;
  for (const Side& side : sides) {
    if (side.amount != 0) letters += side.letter;
  }
  return letters;
}

void AddPosition(ObjectBuilder& object, const PhantomGeometry& geometry, int slice) {
  const Vector3 position = geometry.Position(slice);
  object.Decimals(0x00200032, {position.x, position.y, position.z});
}

void AddMeasures(ObjectBuilder& object, const PhantomGeometry& geometry) {
  const Vector3 spacing = geometry.Shape().spacing;
  object.Decimals(0x00280030, {spacing.y, spacing.x});
  object.Decimals(0x00180050, {spacing.z});
}

void AddPlane(ObjectBuilder& object, const PhantomGeometry& geometry, int slice) {
  AddOrientation(object, geometry);
  AddPosition(object, geometry, slice);
  AddMeasures(object, geometry);
  object.Decimals(0x00201041, {geometry.SliceOffset(slice)});
  object.Texts(kAcquisitionTimeRows);
  object.Texts(kAcquisitionRows);
}

void AddPixelDescription(ObjectBuilder& object, const PhantomKind& kind,
                         const PhantomShape& shape) {
  const auto size = static_cast<std::uint16_t>(shape.size);
  object.Unsigned16(0x00280002, {kind.samples});
  object.Text(0x00280004, type_code::CS, kind.photometric);
  if (kind.samples > 1) object.Unsigned16(0x00280006, {0});
  object.Unsigned16(0x00280010, {size});
  object.Unsigned16(0x00280011, {size});
  object.Unsigned16(0x00280100, {kind.bitsAllocated});
  object.Unsigned16(0x00280101, {kind.bitsStored});
  object.Unsigned16(0x00280102, {static_cast<std::uint16_t>(kind.bitsStored - 1)});
  object.Unsigned16(0x00280103, {0});
}

void AddPixels(ObjectBuilder& object, const PhantomKind& kind, std::vector<std::uint8_t> pixels) {
  object.Bytes(0x7FE00010, kind.bitsAllocated > 8 ? type_code::OW : type_code::OB,
               std::move(pixels));
}

void AddCt(ObjectBuilder& object, const PhantomKind& kind, const PhantomGeometry& geometry,
           int slice) {
  object.Texts(kCtRows);
  AddPlane(object, geometry, slice);
  AddPixels(object, kind, DrawGrey16(geometry, slice, kStoredHounsfield));
}

void AddMr(ObjectBuilder& object, const PhantomKind& kind, const PhantomGeometry& geometry,
           int slice) {
  object.Texts(kMrRows);
  object.Texts(kMrTechniqueRows);
  AddPlane(object, geometry, slice);
  if (!geometry.Shape().uneven) object.Decimals(0x00180088, {geometry.Shape().spacing.z});
  AddPixels(object, kind, DrawGrey16(geometry, slice, kMrSignal));
}

void AddCr(ObjectBuilder& object, const PhantomKind& kind, const PhantomGeometry& geometry,
           int slice) {
  object.Texts(kCrRows);
  object.Decimals(0x00181164, {geometry.Shape().spacing.y, geometry.Shape().spacing.x});
  AddPixels(object, kind, DrawGrey16(geometry, slice, kFilmDensity));
}

void AddSecondaryCapture(ObjectBuilder& object, const PhantomGeometry& geometry, int slice) {
  object.Texts(kSecondaryCaptureRows);
  AddPlane(object, geometry, slice);
  const std::string orientation =
      Sides(geometry.RowDirection()) + '\\' + Sides(geometry.ColumnDirection());
  object.Text(0x00200020, type_code::CS, orientation);
}

void AddRgb(ObjectBuilder& object, const PhantomKind& kind, const PhantomGeometry& geometry,
            int slice) {
  AddSecondaryCapture(object, geometry, slice);
  AddPixels(object, kind, DrawColour(geometry, slice, kMaterialColours));
}

/// From black over red and yellow to white, in 256 steps.
std::vector<std::uint8_t> PaletteRamp(int begin, int end) {
  std::vector<std::uint8_t> entries;
  for (int index = 0; index < 256; ++index) {
    const int light = std::clamp((index - begin) * 255 / (end - begin), 0, 255);
    // The same byte twice spreads 8 bits over 16.
    entries.insert(entries.end(), 2, static_cast<std::uint8_t>(light));
  }
  return entries;
}

void AddPalette(ObjectBuilder& object, const PhantomKind& kind, const PhantomGeometry& geometry,
                int slice) {
  AddSecondaryCapture(object, geometry, slice);
  for (const TagKey descriptor : {0x00281101u, 0x00281102u, 0x00281103u})
    object.Unsigned16(descriptor, {256, 0, 16});
  object.Bytes(0x00281201, type_code::OW, PaletteRamp(0, 96));
  object.Bytes(0x00281202, type_code::OW, PaletteRamp(64, 192));
  object.Bytes(0x00281203, type_code::OW, PaletteRamp(160, 255));
  AddPixels(object, kind, DrawGrey8(geometry, slice, kPaletteIndex));
}

void AddSharedGroups(ObjectBuilder groups, const PhantomGeometry& geometry) {
  ObjectBuilder measures = groups.Item(0x00289110);
  AddMeasures(measures, geometry);
  ObjectBuilder orientation = groups.Item(0x00209116);
  AddOrientation(orientation, geometry);
  groups.Item(0x00189226).Texts(kFrameTypeRows);
  groups.Item(0x00289132).Texts(kWindowRows);
  groups.Item(0x00289145).Texts(kValueTransformRows);
  groups.Item(0x00209170).Texts(kMrTechniqueRows);
}

void AddFrameGroups(ObjectBuilder groups, const PhantomGeometry& geometry, int slice) {
  ObjectBuilder content = groups.Item(0x00209111);
  content.Texts(kFrameContentRows);
  content.Unsigned32(0x00209057, {static_cast<std::uint32_t>(slice + 1)});
  content.Unsigned32(0x00209157, {1, static_cast<std::uint32_t>(slice + 1)});
  ObjectBuilder position = groups.Item(0x00209113);
  AddPosition(position, geometry, slice);
  ObjectBuilder converted = groups.Item(0x00209171);
  converted.Integer(0x00200013, slice + 1);
  converted.Decimals(0x00201041, {geometry.SliceOffset(slice)});
}

/// Frames are ordered by stack, of which there is one, and by position in it.
void AddDimensions(ObjectBuilder& object, const std::string& organization) {
  constexpr TagKey kFrameContent = 0x00209111;
  object.Item(0x00209221).Text(0x00209164, type_code::UI, organization);
  for (const TagKey dimension : {0x00209056u, 0x00209057u}) {
    ObjectBuilder index = object.Item(0x00209222);
    index.Text(0x00209164, type_code::UI, organization);
    index.TagValue(0x00209165, dimension);
    index.TagValue(0x00209167, kFrameContent);
  }
}

void AddMultiFrame(ObjectBuilder& object, const PhantomKind& kind, const PhantomGeometry& geometry,
                   int) {
  object.Texts(kAcquisitionRows);
  object.Texts(kMultiFrameRows);
  object.EmptySequence(0x00400555);
  object.Integer(0x00280008, geometry.Shape().slices);
  AddDimensions(object, UidOf(Choices(kind, geometry.Shape()) + " dimensions"));
  AddSharedGroups(object.Item(0x52009229), geometry);
  std::vector<std::uint8_t> pixels;
  pixels.reserve(PixelBytes(kind, geometry.Shape()));
  for (int slice = 0; slice < geometry.Shape().slices; ++slice) {
    StopIfInterrupted();
    AddFrameGroups(object.Item(0x52009230), geometry, slice);
    const std::vector<std::uint8_t> frame = DrawGrey16(geometry, slice, kMrSignal);
    pixels.insert(pixels.end(), frame.begin(), frame.end());
  }
  AddPixels(object, kind, std::move(pixels));
}

using AddImage = void (*)(ObjectBuilder&, const PhantomKind&, const PhantomGeometry&, int slice);

/// What makes the images of each kind, in the order of kKinds.
constexpr AddImage kMakers[] = {&AddCt, &AddMr, &AddMultiFrame, &AddRgb, &AddPalette, &AddCr};
static_assert(std::size(kMakers) == std::size(kKinds));

}  // namespace

std::span<const PhantomKind> PhantomKinds() { return kKinds; }

const PhantomKind* FindPhantomKind(std::string_view name) {
  const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [name](const PhantomKind& each) { return name == each.name; });
  return kind == std::end(kKinds) ? nullptr : kind;
}

std::uint64_t PixelBytes(const PhantomKind& kind, const PhantomShape& shape) {
  const auto size = static_cast<std::uint64_t>(shape.size);
  const auto frames = kind.oneFile ? static_cast<std::uint64_t>(shape.slices) : 1;
  return size * size * frames * kind.samples * (kind.bitsAllocated / 8u);
}

int FileCount(const PhantomKind& kind, const PhantomShape& shape) {
  return kind.oneFile ? 1 : shape.slices;
}

std::string PhantomInstance(const PhantomKind& kind, const PhantomGeometry& geometry, int index) {
  return UidOf(Choices(kind, geometry.Shape()) + Format(" instance %d", index + 1));
}

Ref<IDCMObject> MakePhantom(const PhantomKind& kind, const PhantomGeometry& geometry, int index) {
  const std::string choices = Choices(kind, geometry.Shape());
  Ref<IDCMObject> made = NewObject();
  ObjectBuilder object(made);
  object.Text(0x00020010, type_code::UI, kExplicitLittleUid);
  object.Texts(kCommonRows);
  object.Text(0x00080016, type_code::UI, kind.sopClass);
  object.Text(0x00080018, type_code::UI, PhantomInstance(kind, geometry, index));
  object.Text(0x0020000D, type_code::UI, UidOf(choices + " study"));
  object.Text(0x0020000E, type_code::UI, UidOf(choices + " series"));
  // A projection has no place in space.
  if (kind.inSpace) {
    object.Text(0x00200052, type_code::UI, UidOf(choices + " frame of reference"));
    object.Text(0x00201040, type_code::LO, "");
  }
  object.Text(0x00080060, type_code::CS, kind.modality);
  object.Integer(0x00200013, index + 1);
  AddPixelDescription(object, kind, geometry.Shape());
  kMakers[&kind - kKinds](object, kind, geometry, index);
  return made;
}

}  // namespace tessaret::tool
