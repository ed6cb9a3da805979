/// A control that shows a section through a volume. Class "Tessaret.DcmOblique".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/handle.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/idcm_volume.hpp"
#include "tessaret/img_flip_mode.hpp"
#include "tessaret/oblique_view_mode.hpp"

namespace tessaret {

/// Shows one section, orthogonal or oblique, of a volume. Setting a property only asks for a repaint; the section is worked out when
/// the control is painted. Everything happens on the thread of the control's window.
///
/// Systems of coordinates, from the outside in: container is what the host places its controls by; device is pixels of the window from
/// its upper left corner; image is pixels of the section; volume is voxels of the regular grid of the volume; DICOM is millimetres in
/// the patient.
///
/// Without a volume every member succeeds and leaves what it would write as it was, where nothing else is said. Points that are passed
/// as one value are arrays of numbers, of one dimension with three entries.
class IDCMOblique : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02002};
  static constexpr const char* kName = "IDCMOblique";

  /// Turns the section about the three axes, in degrees.
  virtual Status SetRotation(float RotX, float RotY, float RotZ) = 0;

  /// How it is turned, in degrees.
  virtual Status GetRotation(Out<float> RotX, Out<float> RotY, Out<float> RotZ) = 0;

  /// Moves the section, in voxels.
  virtual Status SetTranslation(float DeltaX, float DeltaY, float DeltaZ) = 0;

  /// How it is moved, in voxels.
  virtual Status GetTranslation(Out<float> DeltaX, Out<float> DeltaY, Out<float> DeltaZ) = 0;

  /// Works out the section anew. How it is turned and moved stays.
  virtual Status ResetTransform() = 0;

  /// How many window pixels an image pixel has. Below 0: as many as make the image fit the window, which is worked out at the next
  /// painting; -1 at first.
  virtual Status get_zoom(Result<double> pVal) = 0;

  /// Sets it.
  virtual Status put_zoom(double newVal) = 0;

  /// How deep the shown plane lies, as the third image coordinate of the view point; 0 without a volume.
  virtual Status get_ViewCoord(Result<float> pVal) = 0;

  /// Moves the shown plane to this depth.
  virtual Status put_ViewCoord(float newVal) = 0;

  /// The width of the section's box; -1 without a volume.
  virtual Status get_XDimension(Result<std::int16_t> pVal) = 0;

  /// Sets it.
  virtual Status put_XDimension(std::int16_t newVal) = 0;

  /// The height of the section's box; -1 without a volume.
  virtual Status get_YDimension(Result<std::int16_t> pVal) = 0;

  /// Sets it.
  virtual Status put_YDimension(std::int16_t newVal) = 0;

  /// The depth of the section's box; -1 without a volume.
  virtual Status get_ZDimension(Result<std::int16_t> pVal) = 0;

  /// Sets it.
  virtual Status put_ZDimension(std::int16_t newVal) = 0;

  /// Which section is shown, as it was chosen.
  virtual Status get_Mode(Result<_EnumObliqueViewMode> pVal) = 0;

  /// Chooses it, with the image in the middle of the window.
  virtual Status put_Mode(_EnumObliqueViewMode newVal) = 0;

  /// Which axes of the volume are shown: what the modes of the patient's planes come to for this volume. OBLIQUE_FREE for a free plane;
  /// without a volume what Mode says.
  virtual Status get_RawMode(Result<_EnumObliqueViewMode> pVal) = 0;

  /// Puts the image into the middle of the window.
  virtual Status ResetView() = 0;

  /// Does the same.
  virtual Status ResetCenter() = 0;

  /// Asks for a repaint.
  virtual Status Redraw() = 0;

  /// Puts this point of the image into the middle of the window.
  virtual Status SetCenter(double cx, double cy) = 0;

  /// The point of the image that was put there; 0 and 0 while the image itself is in the middle.
  virtual Status GetCenter(Out<double> cx, Out<double> cy) = 0;

  /// From container to device.
  virtual Status ContainerToDev(float cx, float cy, Out<std::int16_t> dev_x,
                                Out<std::int16_t> dev_y) = 0;

  /// From device to container.
  virtual Status DevToContainer(std::int16_t dx, std::int16_t dy, Out<float> cx, Out<float> cy) = 0;

  /// From container to image.
  virtual Status ContainerToImage(float cx, float cy, Out<float> x, Out<float> y) = 0;

  /// From image to container, by the nearest pixel of the window.
  virtual Status ImageToContainer(float x, float y, Out<float> cx, Out<float> cy) = 0;

  /// From container to volume, for a point of the shown plane.
  virtual Status ContainerToVol(float cx, float cy, Out<float> vx, Out<float> vy,
                                Out<float> vz) = 0;

  /// From volume to container; `pVal` is the distance of the point from the shown plane.
  virtual Status VolToContainer(float vx, float vy, float vz, Out<float> cx, Out<float> cy,
                                Result<float> pVal) = 0;

  /// Moves the shown plane through this point of the volume.
  virtual Status SetViewPoint(float x, float y, float z) = 0;

  /// The point of the volume that the shown plane goes through.
  virtual Status GetViewPoint(Out<float> x, Out<float> y, Out<float> z) = 0;

  /// Shows the plane through three points of the volume: `p0` its origin, `px` along its lines, `py` along its columns. `optimizeDims`
  /// true fits the box to the volume; `optimizeAngle` changes nothing. Mode becomes OBLIQUE_FREE. Fails with "Error in p0 or px or py
  /// parameters, must be numerical vectors of dim=3".
  virtual Status SetPlane3Pt(const Variant& p0, const Variant& px, const Variant& py,
                             VariantBool optimizeDims, VariantBool optimizeAngle) = 0;

  /// Shows the cut that goes through two points of the volume and stands upright on one of the patient's planes: `Plane` is
  /// OBLIQUE_ORTHO_AXIAL, OBLIQUE_ORTHO_SAGGITAL or OBLIQUE_ORTHO_CORONAL, and becomes the mode. Fails with "Error in p0 or p1
  /// parameters, must be numerical vectors of dim=3", "Bad CUT Plane".
  virtual Status SetCutPlane(_EnumObliqueViewMode Plane, const Variant& p0, const Variant& p1) = 0;

  /// The shown plane as an array a, b, c, d: its points have a x + b y + c z + d = 0 in the volume. Empty without a volume.
  virtual Status GetPlane(Result<Variant> Plane) = 0;

  /// The direction of the section's lines, in the volume.
  virtual Status GetXOrientation(Out<float> x, Out<float> y, Out<float> z) = 0;

  /// The direction of the section's columns, in the volume.
  virtual Status GetYOrientation(Out<float> x, Out<float> y, Out<float> z) = 0;

  /// Where the first pixel of the section lies, in the volume.
  virtual Status GetOrigin(Out<float> x, Out<float> y, Out<float> z) = 0;

  /// How the image is mirrored, on top of what the mode asks for.
  virtual Status get_ImageFlip(Result<_ImgFlipMode> pVal) = 0;

  /// Sets it.
  virtual Status put_ImageFlip(_ImgFlipMode newVal) = 0;

  /// Where the right and the lower side of the image lie in the patient, as letters with a "\" behind each of the two, such as "L\P\".
  /// Empty without a volume.
  virtual Status get_DCMOrientation(Result<String> pVal) = 0;

  /// The length of a voxel of the grid in millimetres; 0 without a volume.
  virtual Status get_VoxelSizeMM(Result<float> pVal) = 0;

  /// The plane nearest to depth `z` of the volume, and how far it lies from there in voxels. `z` has to lie in the volume.
  virtual Status GetZSliceIndex(float z, Out<float> dist, Result<std::int32_t> Idx) = 0;

  /// The extent of the section's box along the lines of the image.
  virtual Status get_RotXDim(Result<float> pVal) = 0;

  /// The extent of the section's box along the columns of the image.
  virtual Status get_RotYDim(Result<float> pVal) = 0;

  /// The extent of the section's box in depth; -1 without a volume.
  virtual Status get_RotZDim(Result<float> pVal) = 0;

  /// A name for people; that of the volume at first.
  virtual Status get_SliceName(Result<String> pVal) = 0;

  /// Sets it.
  virtual Status put_SliceName(const String& newVal) = 0;

  /// The UID of the volume's frame of reference.
  virtual Status get_FrameOfReferenceUID(Result<String> pVal) = 0;

  /// The volume that is shown, or null. The caller gets a reference of its own.
  virtual Status get_Volume(Result<IDCMVolume*> pVal) = 0;

  /// Shows another one, with a reference of its own, and its whole range of values as the window; the volume is allocated where need be.
  /// Null for none.
  virtual Status putref_Volume(IDCMVolume* newVal) = 0;

  /// Whether the colours of Lut are used; true at first.
  virtual Status get_UseLUT(Result<VariantBool> pVal) = 0;

  /// Sets it; true is exactly -1.
  virtual Status put_UseLUT(VariantBool newVal) = 0;

  /// The colour lookup, or null. The caller gets a reference of its own.
  virtual Status get_Lut(Result<IDispatch*> pVal) = 0;

  /// Sets it, with a reference of its own. Fails with "No ILut interface".
  virtual Status putref_Lut(IDispatch* newVal) = 0;

  /// The value that is shown black; the volume's least at first, 0 without a volume.
  virtual Status get_WindowMin(Result<std::int32_t> pVal) = 0;

  /// Sets it.
  virtual Status put_WindowMin(std::int32_t newVal) = 0;

  /// The value that is shown white; the volume's greatest at first, 0 without a volume.
  virtual Status get_WindowMax(Result<std::int32_t> pVal) = 0;

  /// Sets it.
  virtual Status put_WindowMax(std::int32_t newVal) = 0;

  /// The exponent by which gray is bent; at or below 0 it is not. -1 at first.
  virtual Status get_Gamma(Result<float> pVal) = 0;

  /// Sets it.
  virtual Status put_Gamma(float newVal) = 0;

  /// Whether black and white are swapped.
  virtual Status get_Invert(Result<VariantBool> pVal) = 0;

  /// Sets it; true is exactly -1.
  virtual Status put_Invert(VariantBool newVal) = 0;

  /// A second volume, for hosts that show two in one; it changes no pixel here. A reference is taken.
  virtual Status putref_MergeVolume(IDCMVolume* newVal) = 0;

  /// That volume, or null. The caller gets a reference of its own.
  virtual Status get_MergeVolume(Result<IDCMVolume*> pVal) = 0;

  /// Its colour lookup, with a reference of its own. kNoInterface for an object that is no ILut.
  virtual Status putref_MergeLut(IDispatch* newVal) = 0;

  /// That lookup, or null. The caller gets a reference of its own.
  virtual Status get_MergeLut(Result<IDispatch*> pVal) = 0;

  /// The value of the second volume that is shown white.
  virtual Status put_MergeWindowMax(std::int32_t newVal) = 0;

  /// What was set.
  virtual Status get_MergeWindowMax(Result<std::int32_t> pVal) = 0;

  /// The value of the second volume that is shown black.
  virtual Status put_MergeWindowMin(std::int32_t newVal) = 0;

  /// What was set.
  virtual Status get_MergeWindowMin(Result<std::int32_t> pVal) = 0;

  /// How much the second volume covers. Only the whole number counts: 0.5 is 0.
  virtual Status put_MergeTransparency(float newVal) = 0;

  /// The whole number that was set.
  virtual Status get_MergeTransparency(Result<float> pVal) = 0;

  /// The value of the pixel at a point of the container; 0 outside the image and before the first painting. Fails with "Bad volume type".
  virtual Status get_Value(float contX, float contY, Result<std::int32_t> pVal) = 0;

  /// The value at a point of the volume, interpolated; 0 outside.
  virtual Status get_Pixel(float x, float y, float z, Result<std::int32_t> pVal) = 0;

  /// Counts the pixels of the section within a polygon. `vx` and `vy` are arrays of 32-bit floating point numbers with the corners, in
  /// image coordinates. `Histogram` gets an array of `NumBins` numbers of 32 bits from index 0; `ValMin` and `ValMax` the least and
  /// greatest value, 128000 and -128000 where no pixel lies inside; `NumPixels` how many do; then their mean and standard
  /// deviation. Fails with "Error getting histogram".
  virtual Status GetStatistics(const Variant& vx, const Variant& vy, std::int32_t NumBins,
                               Out<std::int32_t> ValMin, Out<std::int32_t> ValMax,
                               Out<std::int32_t> NumPixels, Out<double> Mean, Out<double> StdDev,
                               Result<Variant> Histogram) = 0;

  /// The surface that is being drawn on, in OnDrawThumbnail; 0 at any other time.
  virtual Status get_hDc(Result<Handle> pVal) = 0;

  /// What the control shows, as a picture with 24 bits a pixel. New, with a reference for the caller. Fails with
  /// "DCMOblique.get_Picture():" and "Cannot get Window DC", "Cannot create Comtible Window DC" or "Cannot allocate compatible pixmap".
  virtual Status get_Picture(Result<IDispatch*> pVal) = 0;

  /// Succeeds and gives no object.
  virtual Status get_SecondaryCapture(const String& BaseUID, Result<IDCMObject*> pIObj) = 0;

  /// Where the section lies in the patient, as a new object with the elements of an image plane, for the caller.
  virtual Status get_ImagePlaneModule(Result<IDCMObject*> pVal) = 0;

  /// The line in which the planes of both controls meet, in device coordinates of this one. `ok` becomes true where it crosses the
  /// image, false where it does not, and stays as it was where the planes are parallel.
  virtual Status GetPlaneIntersection(IDCMOblique* Oblique, Out<std::int16_t> x0,
                                      Out<std::int16_t> y0, Out<std::int16_t> x1,
                                      Out<std::int16_t> y1, Out<VariantBool> ok) = 0;

  /// Draws that line, in the colour `RGB` with red in the lowest byte.
  virtual Status DrawReferencePlane(IDCMOblique* DcmOblique, std::int32_t RGB) = 0;

  /// Draws the line in which the section and the image `pImagePlane` meet. `pRet` is 0.
  virtual Status DrawImagePlane(IDCMObject* pImagePlane, std::int32_t RGB,
                                Result<VariantBool> pRet) = 0;
};

/// Events of that class. `x` and `y` are device coordinates. `Button` is 1 for the left, 2 for the right and 4 for the middle one, in a
/// move the sum of those that are down; in `Shift` 4 stands for the shift key and 8 for the control key.
class _IDCMObliqueEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F03002};
  static constexpr const char* kName = "_IDCMObliqueEvents";

  /// A button went down. The control hears of the mouse until it is up again.
  virtual Status MouseDown(std::int16_t Button, std::int16_t Shift, std::int16_t x,
                           std::int16_t y) = 0;

  /// A button went up.
  virtual Status MouseUp(std::int16_t Button, std::int16_t Shift, std::int16_t x,
                         std::int16_t y) = 0;

  /// The mouse moved. Button 16 stands for the middle one here.
  virtual Status MouseMove(std::int16_t Button, std::int16_t Shift, std::int16_t x,
                           std::int16_t y) = 0;

  /// A button was pressed twice.
  virtual Status MouseDblClick(std::int16_t Button, std::int16_t Shift, std::int16_t x,
                               std::int16_t y) = 0;

  /// The section is drawn, and what the sink draws on the surface comes on top of it. The rectangle is that of the control.
  virtual Status OnDrawThumbnail(Handle hDc, std::int32_t left, std::int32_t top,
                                 std::int32_t right, std::int32_t bottom) = 0;

  /// A character was typed.
  virtual Status KeyPress(std::int32_t Character, std::int32_t Flags) = 0;

  /// The mouse left the window.
  virtual Status OnLeaveWindow(Handle hWnd) = 0;

  /// Not told by this version.
  virtual Status ChangePlane() = 0;

  /// The wheel was turned by `delta` notches, away from the user above 0. `Shift` is 0.
  virtual Status MouseWheel(std::int16_t delta, std::int16_t Shift, std::int16_t x,
                            std::int16_t y) = 0;
};

}  // namespace tessaret
