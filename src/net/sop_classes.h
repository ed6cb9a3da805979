// SOP classes that the services know by name (DICOM PS3.4, annexes B and C; PS3.6, annex A). Only the UIDs are used.
#pragma once

#include <array>

namespace tessaret::sop_class {

inline constexpr char kVerification[] = "1.2.840.10008.1.1";

inline constexpr char kComputedRadiography[] = "1.2.840.10008.5.1.4.1.1.1";
inline constexpr char kCT[] = "1.2.840.10008.5.1.4.1.1.2";
inline constexpr char kRetiredUltrasoundMultiframe[] = "1.2.840.10008.5.1.4.1.1.3";
inline constexpr char kMR[] = "1.2.840.10008.5.1.4.1.1.4";
inline constexpr char kRetiredNuclearMedicine[] = "1.2.840.10008.5.1.4.1.1.5";
inline constexpr char kRetiredUltrasound[] = "1.2.840.10008.5.1.4.1.1.6";
inline constexpr char kSecondaryCapture[] = "1.2.840.10008.5.1.4.1.1.7";
inline constexpr char kOverlay[] = "1.2.840.10008.5.1.4.1.1.8";
inline constexpr char kCurve[] = "1.2.840.10008.5.1.4.1.1.9";
inline constexpr char kModalityLut[] = "1.2.840.10008.5.1.4.1.1.10";
inline constexpr char kVoiLut[] = "1.2.840.10008.5.1.4.1.1.11";
// Private image storage of GE.
inline constexpr char kGEPrivate[] = "1.2.840.113619.4.2";
inline constexpr char kGESecondPrivate[] = "1.2.840.113619.4.3";

inline constexpr char kPatientRootQuery[] = "1.2.840.10008.5.1.4.1.2.1.1";
inline constexpr char kPatientRootMove[] = "1.2.840.10008.5.1.4.1.2.1.2";
inline constexpr char kStudyRootQuery[] = "1.2.840.10008.5.1.4.1.2.2.1";
inline constexpr char kStudyRootMove[] = "1.2.840.10008.5.1.4.1.2.2.2";
inline constexpr char kStudyRootGet[] = "1.2.840.10008.5.1.4.1.2.2.3";
inline constexpr char kPatientStudyOnlyQuery[] = "1.2.840.10008.5.1.4.1.2.3.1";
inline constexpr char kPatientStudyOnlyMove[] = "1.2.840.10008.5.1.4.1.2.3.2";

}  // namespace tessaret::sop_class
