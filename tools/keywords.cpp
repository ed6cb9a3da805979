#include "keywords.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace tessaret::tool {
namespace {

struct OddKeyword {
  std::string_view name;
  std::string_view keyword;
};

/// What the standard calls otherwise than the rule would: the rows of data/tables whose keyword does not follow from the name.
constexpr OddKeyword kOddKeywords[] = {
    {"2D Degree of Freedom Axis", "TwoDDegreeOfFreedomAxis"},
    {"2D Degree of Freedom Sequence", "TwoDDegreeOfFreedomSequence"},
    {"2D Implant Template Group Member Matching Axes",
     "TwoDImplantTemplateGroupMemberMatchingAxes"},
    {"2D Implant Template Group Member Matching Point",
     "TwoDImplantTemplateGroupMemberMatchingPoint"},
    {"2D Line Coordinates", "TwoDLineCoordinates"},
    {"2D Line Coordinates Sequence", "TwoDLineCoordinatesSequence"},
    {"2D Mating Axes", "TwoDMatingAxes"},
    {"2D Mating Feature Coordinates Sequence", "TwoDMatingFeatureCoordinatesSequence"},
    {"2D Mating Point", "TwoDMatingPoint"},
    {"2D Plane Coordinates Sequence", "TwoDPlaneCoordinatesSequence"},
    {"2D Plane Intersection", "TwoDPlaneIntersection"},
    {"2D Point Coordinates", "TwoDPointCoordinates"},
    {"2D Point Coordinates Sequence", "TwoDPointCoordinatesSequence"},
    {"3D Degree of Freedom Axis", "ThreeDDegreeOfFreedomAxis"},
    {"3D Implant Template Group Member Matching Axes",
     "ThreeDImplantTemplateGroupMemberMatchingAxes"},
    {"3D Implant Template Group Member Matching Point",
     "ThreeDImplantTemplateGroupMemberMatchingPoint"},
    {"3D Line Coordinates", "ThreeDLineCoordinates"},
    {"3D Mating Axes", "ThreeDMatingAxes"},
    {"3D Mating Point", "ThreeDMatingPoint"},
    {"3D Plane Normal", "ThreeDPlaneNormal"},
    {"3D Plane Origin", "ThreeDPlaneOrigin"},
    {"3D Point Coordinates", "ThreeDPointCoordinates"},
    {"3D Rendering Type", "ThreeDRenderingType"},
    {"A-scan Rate", "AscanRate"},
    {"ASL Bolus Cut-off Delay Time", "ASLBolusCutoffDelayTime"},
    {"ASL Bolus Cut-off Flag", "ASLBolusCutoffFlag"},
    {"ASL Bolus Cut-off Technique", "ASLBolusCutoffTechnique"},
    {"ASL Bolus Cut-off Timing Sequence", "ASLBolusCutoffTimingSequence"},
    {"B-scan Cycle Time", "BscanCycleTime"},
    {"B-scan Cycle Time Vector", "BscanCycleTimeVector"},
    {"B-scan Rate", "BscanRate"},
    {"B-scan Slab Thickness", "BscanSlabThickness"},
    {"Chemical Shift Maximum Integration Limit in ppm",
     "ChemicalShiftMaximumIntegrationLimitInppm"},
    {"Chemical Shift Minimum Integration Limit in ppm",
     "ChemicalShiftMinimumIntegrationLimitInppm"},
    {"De-coupled Nucleus", "DecoupledNucleus"},
    {"De-coupling", "Decoupling"},
    {"De-coupling Chemical Shift Reference", "DecouplingChemicalShiftReference"},
    {"De-coupling Frequency", "DecouplingFrequency"},
    {"De-coupling Method", "DecouplingMethod"},
    {"De-identification Method", "DeidentificationMethod"},
    {"De-identification Method Code Sequence", "DeidentificationMethodCodeSequence"},
    {"Distance Between B-scan Slabs", "DistanceBetweenBscanSlabs"},
    {"Entrance Dose in mGy", "EntranceDoseInmGy"},
    {"Exposure Time in ms", "ExposureTimeInms"},
    {"Exposure Time in uS", "ExposureTimeInuS"},
    {"Exposure in mAs", "ExposureInmAs"},
    {"Exposure in uAs", "ExposureInuAs"},
    {"Frame Numbers of Interest (FOI)", "FrameNumbersOfInterest"},
    {"ISO Speed Latitude yyy", "ISOSpeedLatitudeyyy"},
    {"ISO Speed Latitude zzz", "ISOSpeedLatitudezzz"},
    {"Moving Window Padding Sength", "MovingWindowPaddingLength"},
    {"Multi-energy Acquisition Description", "MultienergyAcquisitionDescription"},
    {"Multi-energy CT Acquisition", "MultienergyCTAcquisition"},
    {"Multi-energy CT Acquisition Sequence", "MultienergyCTAcquisitionSequence"},
    {"Multi-energy CT Characteristics Sequence", "MultienergyCTCharacteristicsSequence"},
    {"Multi-energy CT Path Index", "MultienergyCTPathIndex"},
    {"Multi-energy CT Path Sequence", "MultienergyCTPathSequence"},
    {"Multi-energy CT Processing Sequence", "MultienergyCTProcessingSequence"},
    {"Multi-energy CT X-Ray Detector Sequence", "MultienergyCTXRayDetectorSequence"},
    {"Multi-energy CT X-Ray Source Sequence", "MultienergyCTXRaySourceSequence"},
    {"Multi-energy Detector Type", "MultienergyDetectorType"},
    {"Multi-energy Source Technique", "MultienergySourceTechnique"},
    {"Number of B-scans Per Frame", "NumberOfBscansPerFrame"},
    {"Number of Completed Sub-operations", "NumberOfCompletedSuboperations"},
    {"Number of Failed Sub-operations", "NumberOfFailedSuboperations"},
    {"Number of Remaining Sub-operations", "NumberOfRemainingSuboperations"},
    {"Number of Warning Sub-operations", "NumberOfWarningSuboperations"},
    {"OCT B-scan Analysis Acquisition Parameters Sequence",
     "OCTBscanAnalysisAcquisitionParametersSequence"},
    {"RT Image Frame kV Radiation Acquisition Sequence",
     "RTImageFramekVRadiationAcquisitionSequence"},
    {"Radius Along the Wedge", "RadiusAlongWedge"},
    {"Spatial Pre-saturation", "SpatialPresaturation"},
    {"X-Ray Tube Current in mA", "XRayTubeCurrentInmA"},
    {"X-Ray Tube Current in uA", "XRayTubeCurrentInuA"},
    {"dB/dt", "dBdt"},
};

static_assert(std::ranges::is_sorted(kOddKeywords, {}, &OddKeyword::name));

bool IsLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

char Capital(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

std::string KeywordOf(std::string_view name) {
  const auto* odd = std::ranges::lower_bound(kOddKeywords, name, {}, &OddKeyword::name);
  if (odd != std::end(kOddKeywords) && odd->name == name) return std::string(odd->keyword);
  std::string keyword;
  keyword.reserve(name.size());
  bool isStart = true;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const char c = name[at];
    if (c == '\'') {
      // What stands before and behind is one word, and "'s" no part of it.
      if (name.substr(at).starts_with("'s")) ++at;
    } else if (c == '(' && name.substr(at).starts_with("(s)")) {
      // The plural is part of its word.
      keyword += isStart ? 'S' : 's';
      isStart = false;
      at += 2;
    } else {
      if (IsLetterOrDigit(c)) keyword += isStart ? Capital(c) : c;
      isStart = !IsLetterOrDigit(c);
    }
  }
  return keyword;
}

std::optional<TagKey> Keywords::Find(const std::string& keyword) {
  if (tags_.empty()) Read();
  const auto found = std::ranges::find(tags_, keyword, &Entry::keyword);
  return found == tags_.end() ? std::nullopt : std::optional(found->tag);
}

std::string Keywords::Of(TagKey tag) const {
  String type;
  String name;
  VariantBool found;
  dictionary_->GetVRDescription(GroupOf(tag), ElementOf(tag), &type, &name, &found);
  return found.IsTrue() ? KeywordOf(name.Narrow()) : std::string();
}

void Keywords::Read() {
  for (std::int32_t index = 0; index <= INT16_MAX; ++index) {
    std::int32_t group = 0;
    std::int32_t element = 0;
    VariantBool found;
    dictionary_->GetEntry(static_cast<std::int16_t>(index), &group, &element, &found);
    if (!found.IsTrue()) return;
    const auto tag =
        MakeTagKey(static_cast<std::uint16_t>(group), static_cast<std::uint16_t>(element));
    tags_.push_back({Of(tag), tag});
  }
}

}  // namespace tessaret::tool
