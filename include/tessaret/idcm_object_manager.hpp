/// The way from an object of the public interface to the data set of the library's core behind it. A further interface of class
/// "Tessaret.DCMObject".
///
/// A data set has at most one owner: the object that destroys it, the sequence that it is an item of, or code that took it over. Who
/// only looks takes the pointer without ownership; the owner has to outlive that.
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/idata_set_handle.hpp"
#include "tessaret/ivr_record.hpp"

namespace tessaret {

/// A data set of the core: see src/core/dicom_object.h. Hosts only pass it on.
class DICOMObject;

/// An element as a plain record. By name it travels as an object with the interface IVRRecord.
struct _VR_RECORD_TYPE {
  std::int32_t Group = 0;      // -1: there is no such element
  std::int32_t Elem = 0;       // the same
  std::uint16_t TypeCode = 0;  // first letter times 256 plus second
  std::int32_t len = 0;        // bytes at pt, or not loaded where that is null; -1: undefined
  std::int16_t numseq = 0;     // not used
  void* DDO = nullptr;         // not used
  char* pt = nullptr;          // from new[]; whoever had the record filled frees it with delete[]
  void** seq = nullptr;        // not used
};

/// By name a data set travels as an object with the interface IDataSetHandle, which knows whether the data set still lives. One that
/// was taken over with it is destroyed with the last reference to it, unless PutPtr has passed it on.
class IDcmObjectManager : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02101};
  static constexpr const char* kName = "IDcmObjectManager";

  /// Takes the ownership away from this object, which goes on showing the data set while that lives: the caller has to see to its end.
  /// kFalse where this object is not the owner.
  virtual Status GetOwnership() = 0;

  /// Makes this object the owner again. kFalse where it is that already, and where the data set belongs to another object or to a
  /// sequence.
  virtual Status SetOwner() = 0;

  /// The data set. With GetOwnership other than 0 the caller takes it over; kFalse, with nothing given, where this object is not the
  /// owner. Null where there is none.
  virtual Status GetPtr(std::int32_t GetOwnership, Result<DICOMObject*> pVal) = 0;

  /// Shows another data set; the one that was here is destroyed if it was owned. The one that is here already stays; with SetOwnership
  /// 0 an owner gives it up, to the caller or by name to the handle. With SetOwnership other than 0 this object becomes the owner;
  /// kInvalidArgument, with nothing changed, where the data set belongs to another object or to a sequence, and by name where the
  /// handle does not own it.
  virtual Status PutPtr(std::int32_t SetOwnership, DICOMObject* newVal) = 0;

  /// Fills a record with an element: tag, type, length and a copy of its bytes. Where there is no such element, Group and Elem are -1
  /// and the length is 0. numseq, DDO and seq stay as they were.
  virtual Status GetVR(std::int32_t Group, std::int32_t Element, Result<_VR_RECORD_TYPE> VR) = 0;

  /// Makes an element as the record has it, with a copy of its bytes, in place of the value of one that is there. Nothing happens
  /// without a record or a data set. kInvalidArgument for a negative length, kException "The element holds items: remove it first".
  virtual Status PutVR(_VR_RECORD_TYPE* VrRec) = 0;
};

}  // namespace tessaret
