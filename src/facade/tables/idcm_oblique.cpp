// Made by scripts/make_interface_tables.py from include/tessaret/idcm_oblique.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_oblique.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDCMOblique>() {
using I = IDCMOblique;

static constexpr auto kArguments0 = Signature<decltype(&I::SetRotation)>::Describe({{{"RotX", ArgumentFlow::kIn}, {"RotY", ArgumentFlow::kIn}, {"RotZ", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::GetRotation)>::Describe({{{"RotX", ArgumentFlow::kOut}, {"RotY", ArgumentFlow::kOut}, {"RotZ", ArgumentFlow::kOut}}});
static constexpr auto kArguments2 = Signature<decltype(&I::SetTranslation)>::Describe({{{"DeltaX", ArgumentFlow::kIn}, {"DeltaY", ArgumentFlow::kIn}, {"DeltaZ", ArgumentFlow::kIn}}});
static constexpr auto kArguments3 = Signature<decltype(&I::GetTranslation)>::Describe({{{"DeltaX", ArgumentFlow::kOut}, {"DeltaY", ArgumentFlow::kOut}, {"DeltaZ", ArgumentFlow::kOut}}});
static constexpr auto kArguments4 = Signature<decltype(&I::ResetTransform)>::Describe({});
static constexpr auto kArguments5 = Signature<decltype(&I::get_zoom)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments6 = Signature<decltype(&I::put_zoom)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments7 = Signature<decltype(&I::get_ViewCoord)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments8 = Signature<decltype(&I::put_ViewCoord)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments9 = Signature<decltype(&I::get_XDimension)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments10 = Signature<decltype(&I::put_XDimension)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments11 = Signature<decltype(&I::get_YDimension)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments12 = Signature<decltype(&I::put_YDimension)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments13 = Signature<decltype(&I::get_ZDimension)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments14 = Signature<decltype(&I::put_ZDimension)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments15 = Signature<decltype(&I::get_Mode)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_EnumObliqueViewMode"}}});
static constexpr auto kArguments16 = Signature<decltype(&I::put_Mode)>::Describe({{{"newVal", ArgumentFlow::kIn, 0, "_EnumObliqueViewMode"}}});
static constexpr auto kArguments17 = Signature<decltype(&I::get_RawMode)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_EnumObliqueViewMode"}}});
static constexpr auto kArguments18 = Signature<decltype(&I::ResetView)>::Describe({});
static constexpr auto kArguments19 = Signature<decltype(&I::ResetCenter)>::Describe({});
static constexpr auto kArguments20 = Signature<decltype(&I::Redraw)>::Describe({});
static constexpr auto kArguments21 = Signature<decltype(&I::SetCenter)>::Describe({{{"cx", ArgumentFlow::kIn}, {"cy", ArgumentFlow::kIn}}});
static constexpr auto kArguments22 = Signature<decltype(&I::GetCenter)>::Describe({{{"cx", ArgumentFlow::kOut}, {"cy", ArgumentFlow::kOut}}});
static constexpr auto kArguments23 = Signature<decltype(&I::ContainerToDev)>::Describe({{{"cx", ArgumentFlow::kIn}, {"cy", ArgumentFlow::kIn}, {"dev_x", ArgumentFlow::kOut}, {"dev_y", ArgumentFlow::kOut}}});
static constexpr auto kArguments24 = Signature<decltype(&I::DevToContainer)>::Describe({{{"dx", ArgumentFlow::kIn}, {"dy", ArgumentFlow::kIn}, {"cx", ArgumentFlow::kOut}, {"cy", ArgumentFlow::kOut}}});
static constexpr auto kArguments25 = Signature<decltype(&I::ContainerToImage)>::Describe({{{"cx", ArgumentFlow::kIn}, {"cy", ArgumentFlow::kIn}, {"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}}});
static constexpr auto kArguments26 = Signature<decltype(&I::ImageToContainer)>::Describe({{{"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"cx", ArgumentFlow::kOut}, {"cy", ArgumentFlow::kOut}}});
static constexpr auto kArguments27 = Signature<decltype(&I::ContainerToVol)>::Describe({{{"cx", ArgumentFlow::kIn}, {"cy", ArgumentFlow::kIn}, {"vx", ArgumentFlow::kOut}, {"vy", ArgumentFlow::kOut}, {"vz", ArgumentFlow::kOut}}});
static constexpr auto kArguments28 = Signature<decltype(&I::VolToContainer)>::Describe({{{"vx", ArgumentFlow::kIn}, {"vy", ArgumentFlow::kIn}, {"vz", ArgumentFlow::kIn}, {"cx", ArgumentFlow::kOut}, {"cy", ArgumentFlow::kOut}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments29 = Signature<decltype(&I::SetViewPoint)>::Describe({{{"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"z", ArgumentFlow::kIn}}});
static constexpr auto kArguments30 = Signature<decltype(&I::GetViewPoint)>::Describe({{{"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments31 = Signature<decltype(&I::SetPlane3Pt)>::Describe({{{"p0", ArgumentFlow::kIn}, {"px", ArgumentFlow::kIn}, {"py", ArgumentFlow::kIn}, {"optimizeDims", ArgumentFlow::kIn}, {"optimizeAngle", ArgumentFlow::kIn}}});
static constexpr auto kArguments32 = Signature<decltype(&I::SetCutPlane)>::Describe({{{"Plane", ArgumentFlow::kIn, 0, "_EnumObliqueViewMode"}, {"p0", ArgumentFlow::kIn}, {"p1", ArgumentFlow::kIn}}});
static constexpr auto kArguments33 = Signature<decltype(&I::GetPlane)>::Describe({{{"Plane", ArgumentFlow::kResult}}});
static constexpr auto kArguments34 = Signature<decltype(&I::GetXOrientation)>::Describe({{{"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments35 = Signature<decltype(&I::GetYOrientation)>::Describe({{{"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments36 = Signature<decltype(&I::GetOrigin)>::Describe({{{"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments37 = Signature<decltype(&I::get_ImageFlip)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_ImgFlipMode"}}});
static constexpr auto kArguments38 = Signature<decltype(&I::put_ImageFlip)>::Describe({{{"newVal", ArgumentFlow::kIn, 0, "_ImgFlipMode"}}});
static constexpr auto kArguments39 = Signature<decltype(&I::get_DCMOrientation)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments40 = Signature<decltype(&I::get_VoxelSizeMM)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments41 = Signature<decltype(&I::GetZSliceIndex)>::Describe({{{"z", ArgumentFlow::kIn}, {"dist", ArgumentFlow::kOut}, {"Idx", ArgumentFlow::kResult}}});
static constexpr auto kArguments42 = Signature<decltype(&I::get_RotXDim)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments43 = Signature<decltype(&I::get_RotYDim)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments44 = Signature<decltype(&I::get_RotZDim)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments45 = Signature<decltype(&I::get_SliceName)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments46 = Signature<decltype(&I::put_SliceName)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments47 = Signature<decltype(&I::get_FrameOfReferenceUID)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments48 = Signature<decltype(&I::get_Volume)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments49 = Signature<decltype(&I::putref_Volume)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments50 = Signature<decltype(&I::get_UseLUT)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments51 = Signature<decltype(&I::put_UseLUT)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments52 = Signature<decltype(&I::get_Lut)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments53 = Signature<decltype(&I::putref_Lut)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments54 = Signature<decltype(&I::get_WindowMin)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments55 = Signature<decltype(&I::put_WindowMin)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments56 = Signature<decltype(&I::get_WindowMax)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments57 = Signature<decltype(&I::put_WindowMax)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments58 = Signature<decltype(&I::get_Gamma)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments59 = Signature<decltype(&I::put_Gamma)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments60 = Signature<decltype(&I::get_Invert)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments61 = Signature<decltype(&I::put_Invert)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments62 = Signature<decltype(&I::putref_MergeVolume)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments63 = Signature<decltype(&I::get_MergeVolume)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments64 = Signature<decltype(&I::putref_MergeLut)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments65 = Signature<decltype(&I::get_MergeLut)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments66 = Signature<decltype(&I::put_MergeWindowMax)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments67 = Signature<decltype(&I::get_MergeWindowMax)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments68 = Signature<decltype(&I::put_MergeWindowMin)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments69 = Signature<decltype(&I::get_MergeWindowMin)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments70 = Signature<decltype(&I::put_MergeTransparency)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments71 = Signature<decltype(&I::get_MergeTransparency)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments72 = Signature<decltype(&I::get_Value)>::Describe({{{"contX", ArgumentFlow::kIn}, {"contY", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments73 = Signature<decltype(&I::get_Pixel)>::Describe({{{"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"z", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments74 = Signature<decltype(&I::GetStatistics)>::Describe({{{"vx", ArgumentFlow::kIn}, {"vy", ArgumentFlow::kIn}, {"NumBins", ArgumentFlow::kIn}, {"ValMin", ArgumentFlow::kOut}, {"ValMax", ArgumentFlow::kOut}, {"NumPixels", ArgumentFlow::kOut}, {"Mean", ArgumentFlow::kOut}, {"StdDev", ArgumentFlow::kOut}, {"Histogram", ArgumentFlow::kResult}}});
static constexpr auto kArguments75 = Signature<decltype(&I::get_hDc)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments76 = Signature<decltype(&I::get_Picture)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments77 = Signature<decltype(&I::get_SecondaryCapture)>::Describe({{{"BaseUID", ArgumentFlow::kIn}, {"pIObj", ArgumentFlow::kResult}}});
static constexpr auto kArguments78 = Signature<decltype(&I::get_ImagePlaneModule)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments79 = Signature<decltype(&I::GetPlaneIntersection)>::Describe({{{"Oblique", ArgumentFlow::kIn}, {"x0", ArgumentFlow::kOut}, {"y0", ArgumentFlow::kOut}, {"x1", ArgumentFlow::kOut}, {"y1", ArgumentFlow::kOut}, {"ok", ArgumentFlow::kOut}}});
static constexpr auto kArguments80 = Signature<decltype(&I::DrawReferencePlane)>::Describe({{{"DcmOblique", ArgumentFlow::kIn}, {"RGB", ArgumentFlow::kIn}}});
static constexpr auto kArguments81 = Signature<decltype(&I::DrawImagePlane)>::Describe({{{"pImagePlane", ArgumentFlow::kIn}, {"RGB", ArgumentFlow::kIn}, {"pRet", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"SetRotation", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Turns the section about the three axes, in degrees."},
{"GetRotation", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "How it is turned, in degrees."},
{"SetTranslation", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Moves the section, in voxels."},
{"GetTranslation", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "How it is moved, in voxels."},
{"ResetTransform", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "Works out the section anew. How it is turned and moved stays."},
{"zoom", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "How many window pixels an image pixel has. Below 0: as many as make the image fit the window, which is worked out at the next\n"
        "painting; -1 at first."},
{"zoom", MemberKind::kPut, kArguments6.data(), kArguments6.size(), "Sets it."},
{"ViewCoord", MemberKind::kGet, kArguments7.data(), kArguments7.size(), "How deep the shown plane lies, as the third image coordinate of the view point; 0 without a volume."},
{"ViewCoord", MemberKind::kPut, kArguments8.data(), kArguments8.size(), "Moves the shown plane to this depth."},
{"XDimension", MemberKind::kGet, kArguments9.data(), kArguments9.size(), "The width of the section's box; -1 without a volume."},
{"XDimension", MemberKind::kPut, kArguments10.data(), kArguments10.size(), "Sets it."},
{"YDimension", MemberKind::kGet, kArguments11.data(), kArguments11.size(), "The height of the section's box; -1 without a volume."},
{"YDimension", MemberKind::kPut, kArguments12.data(), kArguments12.size(), "Sets it."},
{"ZDimension", MemberKind::kGet, kArguments13.data(), kArguments13.size(), "The depth of the section's box; -1 without a volume."},
{"ZDimension", MemberKind::kPut, kArguments14.data(), kArguments14.size(), "Sets it."},
{"Mode", MemberKind::kGet, kArguments15.data(), kArguments15.size(), "Which section is shown, as it was chosen."},
{"Mode", MemberKind::kPut, kArguments16.data(), kArguments16.size(), "Chooses it, with the image in the middle of the window."},
{"RawMode", MemberKind::kGet, kArguments17.data(), kArguments17.size(), "Which axes of the volume are shown: what the modes of the patient's planes come to for this volume. OBLIQUE_FREE for a free plane;\n"
        "without a volume what Mode says."},
{"ResetView", MemberKind::kMethod, kArguments18.data(), kArguments18.size(), "Puts the image into the middle of the window."},
{"ResetCenter", MemberKind::kMethod, kArguments19.data(), kArguments19.size(), "Does the same."},
{"Redraw", MemberKind::kMethod, kArguments20.data(), kArguments20.size(), "Asks for a repaint."},
{"SetCenter", MemberKind::kMethod, kArguments21.data(), kArguments21.size(), "Puts this point of the image into the middle of the window."},
{"GetCenter", MemberKind::kMethod, kArguments22.data(), kArguments22.size(), "The point of the image that was put there; 0 and 0 while the image itself is in the middle."},
{"ContainerToDev", MemberKind::kMethod, kArguments23.data(), kArguments23.size(), "From container to device."},
{"DevToContainer", MemberKind::kMethod, kArguments24.data(), kArguments24.size(), "From device to container."},
{"ContainerToImage", MemberKind::kMethod, kArguments25.data(), kArguments25.size(), "From container to image."},
{"ImageToContainer", MemberKind::kMethod, kArguments26.data(), kArguments26.size(), "From image to container, by the nearest pixel of the window."},
{"ContainerToVol", MemberKind::kMethod, kArguments27.data(), kArguments27.size(), "From container to volume, for a point of the shown plane."},
{"VolToContainer", MemberKind::kMethod, kArguments28.data(), kArguments28.size(), "From volume to container; `pVal` is the distance of the point from the shown plane."},
{"SetViewPoint", MemberKind::kMethod, kArguments29.data(), kArguments29.size(), "Moves the shown plane through this point of the volume."},
{"GetViewPoint", MemberKind::kMethod, kArguments30.data(), kArguments30.size(), "The point of the volume that the shown plane goes through."},
{"SetPlane3Pt", MemberKind::kMethod, kArguments31.data(), kArguments31.size(), "Shows the plane through three points of the volume: `p0` its origin, `px` along its lines, `py` along its columns. `optimizeDims`\n"
        "true fits the box to the volume; `optimizeAngle` changes nothing. Mode becomes OBLIQUE_FREE. Fails with \"Error in p0 or px or py\n"
        "parameters, must be numerical vectors of dim=3\"."},
{"SetCutPlane", MemberKind::kMethod, kArguments32.data(), kArguments32.size(), "Shows the cut that goes through two points of the volume and stands upright on one of the patient's planes: `Plane` is\n"
        "OBLIQUE_ORTHO_AXIAL, OBLIQUE_ORTHO_SAGGITAL or OBLIQUE_ORTHO_CORONAL, and becomes the mode. Fails with \"Error in p0 or p1\n"
        "parameters, must be numerical vectors of dim=3\", \"Bad CUT Plane\"."},
{"GetPlane", MemberKind::kMethod, kArguments33.data(), kArguments33.size(), "The shown plane as an array a, b, c, d: its points have a x + b y + c z + d = 0 in the volume. Empty without a volume."},
{"GetXOrientation", MemberKind::kMethod, kArguments34.data(), kArguments34.size(), "The direction of the section's lines, in the volume."},
{"GetYOrientation", MemberKind::kMethod, kArguments35.data(), kArguments35.size(), "The direction of the section's columns, in the volume."},
{"GetOrigin", MemberKind::kMethod, kArguments36.data(), kArguments36.size(), "Where the first pixel of the section lies, in the volume."},
{"ImageFlip", MemberKind::kGet, kArguments37.data(), kArguments37.size(), "How the image is mirrored, on top of what the mode asks for."},
{"ImageFlip", MemberKind::kPut, kArguments38.data(), kArguments38.size(), "Sets it."},
{"DCMOrientation", MemberKind::kGet, kArguments39.data(), kArguments39.size(), "Where the right and the lower side of the image lie in the patient, as letters with a \"\\\" behind each of the two, such as \"L\\P\\\".\n"
        "Empty without a volume."},
{"VoxelSizeMM", MemberKind::kGet, kArguments40.data(), kArguments40.size(), "The length of a voxel of the grid in millimetres; 0 without a volume."},
{"GetZSliceIndex", MemberKind::kMethod, kArguments41.data(), kArguments41.size(), "The plane nearest to depth `z` of the volume, and how far it lies from there in voxels. `z` has to lie in the volume."},
{"RotXDim", MemberKind::kGet, kArguments42.data(), kArguments42.size(), "The extent of the section's box along the lines of the image."},
{"RotYDim", MemberKind::kGet, kArguments43.data(), kArguments43.size(), "The extent of the section's box along the columns of the image."},
{"RotZDim", MemberKind::kGet, kArguments44.data(), kArguments44.size(), "The extent of the section's box in depth; -1 without a volume."},
{"SliceName", MemberKind::kGet, kArguments45.data(), kArguments45.size(), "A name for people; that of the volume at first."},
{"SliceName", MemberKind::kPut, kArguments46.data(), kArguments46.size(), "Sets it."},
{"FrameOfReferenceUID", MemberKind::kGet, kArguments47.data(), kArguments47.size(), "The UID of the volume's frame of reference."},
{"Volume", MemberKind::kGet, kArguments48.data(), kArguments48.size(), "The volume that is shown, or null. The caller gets a reference of its own."},
{"Volume", MemberKind::kPutRef, kArguments49.data(), kArguments49.size(), "Shows another one, with a reference of its own, and its whole range of values as the window; the volume is allocated where need be.\n"
        "Null for none."},
{"UseLUT", MemberKind::kGet, kArguments50.data(), kArguments50.size(), "Whether the colours of Lut are used; true at first."},
{"UseLUT", MemberKind::kPut, kArguments51.data(), kArguments51.size(), "Sets it; true is exactly -1."},
{"Lut", MemberKind::kGet, kArguments52.data(), kArguments52.size(), "The colour lookup, or null. The caller gets a reference of its own."},
{"Lut", MemberKind::kPutRef, kArguments53.data(), kArguments53.size(), "Sets it, with a reference of its own. Fails with \"No ILut interface\"."},
{"WindowMin", MemberKind::kGet, kArguments54.data(), kArguments54.size(), "The value that is shown black; the volume's least at first, 0 without a volume."},
{"WindowMin", MemberKind::kPut, kArguments55.data(), kArguments55.size(), "Sets it."},
{"WindowMax", MemberKind::kGet, kArguments56.data(), kArguments56.size(), "The value that is shown white; the volume's greatest at first, 0 without a volume."},
{"WindowMax", MemberKind::kPut, kArguments57.data(), kArguments57.size(), "Sets it."},
{"Gamma", MemberKind::kGet, kArguments58.data(), kArguments58.size(), "The exponent by which gray is bent; at or below 0 it is not. -1 at first."},
{"Gamma", MemberKind::kPut, kArguments59.data(), kArguments59.size(), "Sets it."},
{"Invert", MemberKind::kGet, kArguments60.data(), kArguments60.size(), "Whether black and white are swapped."},
{"Invert", MemberKind::kPut, kArguments61.data(), kArguments61.size(), "Sets it; true is exactly -1."},
{"MergeVolume", MemberKind::kPutRef, kArguments62.data(), kArguments62.size(), "A second volume, for hosts that show two in one; it changes no pixel here. A reference is taken."},
{"MergeVolume", MemberKind::kGet, kArguments63.data(), kArguments63.size(), "That volume, or null. The caller gets a reference of its own."},
{"MergeLut", MemberKind::kPutRef, kArguments64.data(), kArguments64.size(), "Its colour lookup, with a reference of its own. kNoInterface for an object that is no ILut."},
{"MergeLut", MemberKind::kGet, kArguments65.data(), kArguments65.size(), "That lookup, or null. The caller gets a reference of its own."},
{"MergeWindowMax", MemberKind::kPut, kArguments66.data(), kArguments66.size(), "The value of the second volume that is shown white."},
{"MergeWindowMax", MemberKind::kGet, kArguments67.data(), kArguments67.size(), "What was set."},
{"MergeWindowMin", MemberKind::kPut, kArguments68.data(), kArguments68.size(), "The value of the second volume that is shown black."},
{"MergeWindowMin", MemberKind::kGet, kArguments69.data(), kArguments69.size(), "What was set."},
{"MergeTransparency", MemberKind::kPut, kArguments70.data(), kArguments70.size(), "How much the second volume covers. Only the whole number counts: 0.5 is 0."},
{"MergeTransparency", MemberKind::kGet, kArguments71.data(), kArguments71.size(), "The whole number that was set."},
{"Value", MemberKind::kGet, kArguments72.data(), kArguments72.size(), "The value of the pixel at a point of the container; 0 outside the image and before the first painting. Fails with \"Bad volume type\"."},
{"Pixel", MemberKind::kGet, kArguments73.data(), kArguments73.size(), "The value at a point of the volume, interpolated; 0 outside."},
{"GetStatistics", MemberKind::kMethod, kArguments74.data(), kArguments74.size(), "Counts the pixels of the section within a polygon. `vx` and `vy` are arrays of 32-bit floating point numbers with the corners, in\n"
        "image coordinates. `Histogram` gets an array of `NumBins` numbers of 32 bits from index 0; `ValMin` and `ValMax` the least and\n"
        "greatest value, 128000 and -128000 where no pixel lies inside; `NumPixels` how many do; then their mean and standard\n"
        "deviation. Fails with \"Error getting histogram\"."},
{"hDc", MemberKind::kGet, kArguments75.data(), kArguments75.size(), "The surface that is being drawn on, in OnDrawThumbnail; 0 at any other time."},
{"Picture", MemberKind::kGet, kArguments76.data(), kArguments76.size(), "What the control shows, as a picture with 24 bits a pixel. New, with a reference for the caller. Fails with\n"
        "\"DCMOblique.get_Picture():\" and \"Cannot get Window DC\", \"Cannot create Comtible Window DC\" or \"Cannot allocate compatible pixmap\"."},
{"SecondaryCapture", MemberKind::kGet, kArguments77.data(), kArguments77.size(), "Succeeds and gives no object."},
{"ImagePlaneModule", MemberKind::kGet, kArguments78.data(), kArguments78.size(), "Where the section lies in the patient, as a new object with the elements of an image plane, for the caller."},
{"GetPlaneIntersection", MemberKind::kMethod, kArguments79.data(), kArguments79.size(), "The line in which the planes of both controls meet, in device coordinates of this one. `ok` becomes true where it crosses the\n"
        "image, false where it does not, and stays as it was where the planes are parallel."},
{"DrawReferencePlane", MemberKind::kMethod, kArguments80.data(), kArguments80.size(), "Draws that line, in the colour `RGB` with red in the lowest byte."},
{"DrawImagePlane", MemberKind::kMethod, kArguments81.data(), kArguments81.size(), "Draws the line in which the section and the image `pImagePlane` meet. `pRet` is 0."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::SetRotation>,
&CallMember<&I::GetRotation>,
&CallMember<&I::SetTranslation>,
&CallMember<&I::GetTranslation>,
&CallMember<&I::ResetTransform>,
&CallMember<&I::get_zoom>,
&CallMember<&I::put_zoom>,
&CallMember<&I::get_ViewCoord>,
&CallMember<&I::put_ViewCoord>,
&CallMember<&I::get_XDimension>,
&CallMember<&I::put_XDimension>,
&CallMember<&I::get_YDimension>,
&CallMember<&I::put_YDimension>,
&CallMember<&I::get_ZDimension>,
&CallMember<&I::put_ZDimension>,
&CallMember<&I::get_Mode>,
&CallMember<&I::put_Mode>,
&CallMember<&I::get_RawMode>,
&CallMember<&I::ResetView>,
&CallMember<&I::ResetCenter>,
&CallMember<&I::Redraw>,
&CallMember<&I::SetCenter>,
&CallMember<&I::GetCenter>,
&CallMember<&I::ContainerToDev>,
&CallMember<&I::DevToContainer>,
&CallMember<&I::ContainerToImage>,
&CallMember<&I::ImageToContainer>,
&CallMember<&I::ContainerToVol>,
&CallMember<&I::VolToContainer>,
&CallMember<&I::SetViewPoint>,
&CallMember<&I::GetViewPoint>,
&CallMember<&I::SetPlane3Pt>,
&CallMember<&I::SetCutPlane>,
&CallMember<&I::GetPlane>,
&CallMember<&I::GetXOrientation>,
&CallMember<&I::GetYOrientation>,
&CallMember<&I::GetOrigin>,
&CallMember<&I::get_ImageFlip>,
&CallMember<&I::put_ImageFlip>,
&CallMember<&I::get_DCMOrientation>,
&CallMember<&I::get_VoxelSizeMM>,
&CallMember<&I::GetZSliceIndex>,
&CallMember<&I::get_RotXDim>,
&CallMember<&I::get_RotYDim>,
&CallMember<&I::get_RotZDim>,
&CallMember<&I::get_SliceName>,
&CallMember<&I::put_SliceName>,
&CallMember<&I::get_FrameOfReferenceUID>,
&CallMember<&I::get_Volume>,
&CallMember<&I::putref_Volume>,
&CallMember<&I::get_UseLUT>,
&CallMember<&I::put_UseLUT>,
&CallMember<&I::get_Lut>,
&CallMember<&I::putref_Lut>,
&CallMember<&I::get_WindowMin>,
&CallMember<&I::put_WindowMin>,
&CallMember<&I::get_WindowMax>,
&CallMember<&I::put_WindowMax>,
&CallMember<&I::get_Gamma>,
&CallMember<&I::put_Gamma>,
&CallMember<&I::get_Invert>,
&CallMember<&I::put_Invert>,
&CallMember<&I::putref_MergeVolume>,
&CallMember<&I::get_MergeVolume>,
&CallMember<&I::putref_MergeLut>,
&CallMember<&I::get_MergeLut>,
&CallMember<&I::put_MergeWindowMax>,
&CallMember<&I::get_MergeWindowMax>,
&CallMember<&I::put_MergeWindowMin>,
&CallMember<&I::get_MergeWindowMin>,
&CallMember<&I::put_MergeTransparency>,
&CallMember<&I::get_MergeTransparency>,
&CallMember<&I::get_Value>,
&CallMember<&I::get_Pixel>,
&CallMember<&I::GetStatistics>,
&CallMember<&I::get_hDc>,
&CallMember<&I::get_Picture>,
&CallMember<&I::get_SecondaryCapture>,
&CallMember<&I::get_ImagePlaneModule>,
&CallMember<&I::GetPlaneIntersection>,
&CallMember<&I::DrawReferencePlane>,
&CallMember<&I::DrawImagePlane>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 82, "Shows one section, orthogonal or oblique, of a volume. Setting a property only asks for a repaint; the section is worked out when\n"
        "the control is painted. Everything happens on the thread of the control's window.\n"
        "\n"
        "Systems of coordinates, from the outside in: container is what the host places its controls by; device is pixels of the window from\n"
        "its upper left corner; image is pixels of the section; volume is voxels of the regular grid of the volume; DICOM is millimetres in\n"
        "the patient.\n"
        "\n"
        "Without a volume every member succeeds and leaves what it would write as it was, where nothing else is said. Points that are passed\n"
        "as one value are arrays of numbers, of one dimension with three entries."}, kCalls};
return kTable;
}

}  // namespace tessaret
