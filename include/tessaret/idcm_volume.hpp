/// Volumes of voxels, made of the images of a series. Class "Tessaret.DCMVolume".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/iimage_module.hpp"
#include "tessaret/intersection_type.hpp"
#include "tessaret/voxel_type.hpp"

namespace tessaret {

/// A stack of planes: either the instances of one series, added one by one and sorted in the patient's space, or a plain box that Create
/// makes. Planes and instances count from 0.
///
/// Three systems of coordinates: DICOM is millimetres in the patient; pixels of a plane are columns and lines of its image; volume is
/// voxels of a regular grid whose first axis runs along the lines of the planes, the second along their columns, and the third from
/// plane to plane, against the cross product of the first two.
///
/// Members of a volume of DICOM instances fail with "Not a DICOM Volume" for a plain box and before UpdateVolume; those that need any
/// volume with "No volume defined". An index outside is "Bad plane index" where nothing else is said.
class IDCMVolume : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02008};
  static constexpr const char* kName = "IDCMVolume";

  /// Makes a plain box of `dz` planes of `dx` by `dy` voxels, with memory for them. `ZArray`, where it is not empty, is an array of 32-bit
  /// floating point numbers with `dz` entries in one dimension: where each plane lies, in millimetres. Fails with "ZArray must be a R4
  /// (single) array [1..dz]", "ZArray must be a R4 (single) array", "Not enough memory for volume".
  virtual Status Create(_EnumVoxelType type, std::int32_t dx, std::int32_t dy, std::int32_t dz,
                        Optional<const Variant&> ZArray) = 0;

  /// Where the first voxel lies, in millimetres in the patient.
  virtual Status GetOrigin(Out<float> x, Out<float> y, Out<float> z) = 0;

  /// Sets it.
  virtual Status PutOrigin(float x, float y, float z) = 0;

  /// The directions of lines and of columns in the patient, as unit vectors.
  virtual Status GetOrientation(Out<float> rowX, Out<float> rowY, Out<float> rowZ, Out<float> colX,
                                Out<float> colY, Out<float> colZ) = 0;

  /// Sets them.
  virtual Status SetOrientation(float rowX, float rowY, float rowZ, float colX, float colY,
                                float colZ) = 0;

  /// Sets the distances of columns, lines and planes, in millimetres.
  virtual Status SetSpacing(float x, float y, float z) = 0;

  /// Gives them.
  virtual Status GetSpacing(Out<float> x, Out<float> y, Out<float> z) = 0;

  /// Makes plane `Idx` the pixels of `image`, which the volume holds from then on. Allocate comes before. Fails with "Must create volume
  /// first", "PutPlane: Bad Plane IDX", "Volume must be allocated before putting planes".
  virtual Status putref_Plane(std::int32_t Idx, IImageModule* image) = 0;

  /// Lets go of all voxels and instances. The UIDs stay.
  virtual Status Dispose() = 0;

  /// Adds an instance, of which a reference is kept. All have to be of one series and one frame of reference and parallel to each other.
  /// Fails with "Missing Series UID", "IOD must be of the same series", "Missing frame of reference", "IOD must have the same plane of
  /// reference", "Missing Image Plane", "Missing SOP Instance UID", "Bad Plane Orientation in Volume IOD", "Volume planes must be
  /// parallel".
  virtual Status AddIOD(IDCMObject* iod) = 0;

  /// Sorts what was added and works out the geometry; no pixel is read. Fails with "No IOD added to volume", "Error getting
  /// IDcmObjectManager", "Cannor find Image Plane".
  virtual Status UpdateVolume() = 0;

  /// How many columns and lines the planes have, and how many planes there are.
  virtual Status GetDimensions(Out<std::int32_t> dx, Out<std::int32_t> dy,
                               Out<std::int32_t> dz) = 0;

  /// The length of a voxel of the regular grid in millimetres.
  virtual Status get_VoxelSize(Result<float> pVal) = 0;

  /// The least value of all voxels.
  virtual Status get_Min(Result<double> pVal) = 0;

  /// The greatest value of all voxels.
  virtual Status get_Max(Result<double> pVal) = 0;

  /// Makes the volume ready for its planes, which come by setting Plane; UpdateVolume is done first where it is due. Fails with "Error
  /// allocating volume".
  virtual Status Allocate() = 0;

  /// Ends a loading of pixels that is under way. It may be called from OnProgress or another thread.
  virtual Status StopElab() = 0;

  /// Which instance, in the order in which they were added, plane `PlaneIdx` is.
  virtual Status get_VolumePlaneToIOD(std::int32_t PlaneIdx, Result<std::int32_t> pVal) = 0;

  /// Which plane instance `IODIdx` is.
  virtual Status get_IODToVolumePlane(std::int32_t IODIdx, Result<std::int32_t> pVal) = 0;

  /// Puts the instances into the order of their planes, so that both indices are the same.
  virtual Status ReorderIOD() = 0;

  /// The UID of the frame of reference; empty before the first instance.
  virtual Status get_FrameOfReferenceUID(Result<String> pVal) = 0;

  /// The UID of the series; empty before the first instance.
  virtual Status get_SeriesUID(Result<String> pVal) = 0;

  /// A name for people.
  virtual Status get_VolName(Result<String> pVal) = 0;

  /// Sets it.
  virtual Status put_VolName(const String& newVal) = 0;

  /// Whether the planes of both volumes are parallel, within the angle `Theta` in radians; 0 stands for 0.01. False for null.
  virtual Status IsAligned(IDCMVolume* vol, float Theta, Result<VariantBool> pVal) = 0;

  /// Where the first pixel of plane `Idx` lies, in millimetres in the patient.
  virtual Status GetPlaneOrigin(std::int32_t Idx, Out<float> x, Out<float> y, Out<float> z) = 0;

  /// The plane nearest to a point of the patient, in millimetres: `Idx` is its instance, `delta` how far the point lies from it in
  /// voxels of the grid.
  virtual Status FindPlane(float x, float y, float z, Out<float> delta,
                           Result<std::int32_t> Idx) = 0;

  /// Which instance has the SOP instance UID of `iod`; -1 where there is none.
  virtual Status get_IODIdx(IDCMObject* iod, Result<std::int32_t> pVal) = 0;

  /// Instance `Idx`, with a reference for the caller. Fails with "CDCMVolume::get_IOD: Bad Idx".
  virtual Status get_IOD(std::int32_t Idx, Result<IDCMObject*> pVal) = 0;

  /// The plane nearest to the image `iod`: `Idx` is its instance, `delta` the distance in millimetres. -1 where `iod` has another frame
  /// of reference or is not parallel. Fails with "Missing plane origin", "Missing plane orientation", "Bad Origin format", "Bad
  /// Orientation format".
  virtual Status FindNearestPlane(IDCMObject* iod, Out<float> delta, Result<std::int32_t> Idx) = 0;

  /// From voxels of the grid to millimetres in the patient.
  virtual Status VolumeToDicom(float vx, float vy, float vz, Out<float> dcmX, Out<float> dcmY,
                               Out<float> dcmZ) = 0;

  /// From millimetres in the patient to voxels of the grid.
  virtual Status DicomToVolume(float dcmX, float dcmY, float dcmZ, Out<float> vx, Out<float> vy,
                               Out<float> vz) = 0;

  /// True for a volume of DICOM instances; fails with "Not a DICOM Volume" for any other.
  virtual Status get_IsDicomVolume(Result<VariantBool> pVal) = 0;

  /// How plane `Idx` and the image `iod` meet. INTERSECT_PARALLEL: `pResult` is their distance, a 32-bit floating point number.
  /// INTERSECT_SEGMENT: an array of such numbers with two dimensions from 1 to 2, the ends of the segment in pixels of the plane; the
  /// first index is the coordinate, the second the end. Fails with "CDCMVolume::IntersectPlane: Bad plane index", "Bad Origin in
  /// Volume IOD", "Bad Plane Orientation in Volume IOD".
  virtual Status IntersectPlane(std::int32_t Idx, IDCMObject* iod, Out<Variant> pResult,
                                Result<_EnumIntersectionType> pVal) = 0;

  /// How many planes there are; 0 without a volume.
  virtual Status get_NumPlanes(Result<std::int32_t> pVal) = 0;

  /// From column `ix` and line `iy` of plane `Idx` to voxels of the grid.
  virtual Status PlaneToVolume(std::int32_t Idx, float ix, float iy, Out<float> vx, Out<float> vy,
                               Out<float> vz) = 0;

  /// Writes the voxels of all planes to a file, line by line, with nothing else. Does nothing without a volume; a failed write is not
  /// told.
  virtual Status Save(const String& fname) = 0;

  /// Where plane `Idx` lies along the third axis, in voxels of the grid.
  virtual Status get_PlaneZ(std::int32_t Idx, Result<float> pVal) = 0;

  /// The plane nearest to `z`, which is millimetres from the first plane; `delta` is how far it lies from it.
  virtual Status PlaneZToIdx(float z, Out<float> delta, Result<std::int32_t> Idx) = 0;

  /// A section of the volume in the plane of the image `pImage`, of its size and spacing, with 16 bits. New, with a reference for the
  /// caller.
  virtual Status get_AlignedImage(IDCMObject* pImage, Result<IImageModule*> pVal) = 0;
};

/// Events of that class. They come on the calling thread.
class _IDCMVolumeEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F03008};
  static constexpr const char* kName = "_IDCMVolumeEvents";

  /// How much of a loading is done, from 0 to 100.
  virtual Status OnProgress(std::int16_t Percente) = 0;
};

}  // namespace tessaret
