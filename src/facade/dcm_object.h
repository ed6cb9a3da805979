// Class "Tessaret.DCMObject": a data set behind the public interface.
//
// The numbers of the data set are little endian, whatever file it came from and whatever (0002,0010) names: Load turns those of a big
// endian file round, and Save turns them back.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "component/event_source.h"
#include "core/object_watch.h"
#include "facade/reading_notes.h"
#include "tessaret/idcm_file.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/idcm_object_manager.hpp"

namespace tessaret {

class DcmCompEngine;

class CDCMObject final
    : public ComponentObject<CallableByName<IDCMObject>, EventSource<_IDCMObjectEvents>,
                             CallableByName<IDcmObjectManager>, CallableByName<IDcmFile>> {
 public:
  /// With a new, empty data set, which it owns. Throws std::bad_alloc.
  explicit CDCMObject(IObject* outer);

  /// Shows `object`, which stays somebody else's, or a deep copy of it, which it owns. `parent` is what has to live as long, or null.
  /// Gives a reference for the caller. Throws std::bad_alloc.
  static Ref<IDCMObject> Wrap(DICOMObject* object, bool copy, IDCMObject* parent = nullptr);

  Status get_VR(std::int32_t Group, std::int32_t Element, const Variant& TypeCode, std::int32_t VM,
                Variant* pVal) override;
  Status put_VR(std::int32_t Group, std::int32_t Element, const Variant& TypeCode, std::int32_t VM,
                const Variant& newVal) override;
  Status get_VRMultiplicity(std::int32_t Group, std::int32_t Element, std::int32_t* pVal) override;
  Status Clear() override;
  Status copy(IDCMObject** pVal) override;
  Status Set(IDCMObject* Object) override;
  Status Save(const String& FileName) override;
  Status Load(const String& FileName, VariantBool LoadPixels) override;
  Status get_SequencesCount(std::int32_t Group, std::int32_t Element, std::int16_t* pVal) override;
  Status get_Sequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                      IDCMObject** pVal) override;
  Status putref_Sequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                         IDCMObject* newVal) override;
  Status GetVRDescr(std::int32_t Group, std::int32_t Elem, String* Descr, String* TypeCode,
                    std::int32_t* Length, std::int32_t* VM, VariantBool* Found) override;
  Status RemoveVR(std::int32_t Group, std::int32_t Element, VariantBool* Removed) override;
  Status RemoveSequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                        VariantBool* Removed) override;
  Status Send(const String& host, const String& port, const String& LocalAETitle,
              const String& RemoteAETitle, VariantBool GetOwnership, VariantBool* Sent) override;
  Status PutVRRawString(std::int32_t Group, std::int32_t Elem, const String& TypeCode,
                        const String& val) override;
  Status GetVRRawString(std::int32_t Group, std::int32_t Elem, String* TypeCode,
                        String* val) override;
  Status GetFirstVR(std::int32_t* Group, std::int32_t* Element, VariantBool* Found) override;
  Status GetNextVR(std::int32_t* Group, std::int32_t* Element, VariantBool* Found) override;
  Status Translate(const String& trSyntax, VariantBool* Done) override;
  Status GetVRData(std::int32_t Group, std::int32_t Element, String* TypeCode,
                   Variant* BinArray) override;
  Status PutVRData(std::int32_t Group, std::int32_t Element, const String& TypeCode,
                   const Variant& BinArray) override;
  Status IntersectPlane(IDCMObject* pIObj, VariantBool Pixels, VariantBool* Coplanar, Variant* p0,
                        Variant* p1, VariantBool* bExists) override;
  Status CreateSecondaryCapture(IDCMObject* pIRefDcm, const Variant& pIPic) override;
  Status AddOverlay(std::int32_t* ovlIndex, std::int32_t x0, std::int32_t y0, std::int32_t x1,
                    std::int32_t y1, const String& type, const String& description) override;

  Status GetOwnership() override;
  Status SetOwner() override;
  Status GetPtr(std::int32_t GetOwnership, DICOMObject** pVal) override;
  Status PutPtr(std::int32_t SetOwnership, DICOMObject* newVal) override;
  Status GetVR(std::int32_t Group, std::int32_t Element, _VR_RECORD_TYPE* VR) override;
  Status PutVR(_VR_RECORD_TYPE* VrRec) override;

  Status LoadFile(const String& FileName, std::int32_t Options,
                  _EnumDataEncoding Encoding) override;
  Status LoadDescriptor(std::int32_t Descriptor, std::int32_t Options,
                        _EnumDataEncoding Encoding) override;
  Status LoadBytes(const Variant& Bytes, std::int32_t Options, _EnumDataEncoding Encoding) override;
  Status get_ReadEncoding(_EnumDataEncoding* pVal) override;
  Status get_HasMark(VariantBool* pVal) override;
  Status get_BytesRead(double* pVal) override;
  Status get_NamedSyntax(String* pVal) override;
  Status get_NamedEncoding(_EnumDataEncoding* pVal) override;
  Status GetFirstTag(std::int32_t* Group, std::int32_t* Element, VariantBool* Found) override;
  Status GetMetaLength(double* Stated, double* Counted, VariantBool* Found) override;
  Status GetEnd(double* Offset, std::int32_t* Group, std::int32_t* Element,
                _EnumReadingEnd* End) override;
  Status get_SystemError(String* pVal) override;
  Status get_OdditiesCount(std::int32_t* pVal) override;
  Status GetOddity(std::int32_t Idx, double* Offset, std::int32_t* Group, std::int32_t* Element,
                   _EnumReadingOddity* Kind) override;
  Status SaveFile(const String& FileName, _EnumSaveForm Form, std::int32_t Options) override;
  Status SaveBytes(_EnumSaveForm Form, std::int32_t Options, Variant* Bytes) override;
  Status GetElement(std::int32_t Group, std::int32_t Element, String* TypeCode, double* Length,
                    double* Offset, VariantBool* HasValue, std::int32_t* ItemsCount,
                    VariantBool* Found) override;
  Status GetListing(Variant* Levels, Variant* Tags, Variant* TypeCodes, Variant* Lengths,
                    Variant* Offsets, Variant* HaveValues, Variant* ItemsCounts,
                    std::int32_t* Count) override;
  Status GetBytes(std::int32_t Group, std::int32_t Element, double Offset, std::int32_t Count,
                  Variant* Bytes) override;
  Status SetType(std::int32_t Group, std::int32_t Element, const String& TypeCode,
                 VariantBool* Found) override;
  Status get_HasPixelsOfDoubtfulOrder(VariantBool* pVal) override;
  Status get_Text(String* pVal) override;
  Status get_Refusal(String* pVal) override;
  Status GetElementText(std::int32_t Group, std::int32_t Element, std::int32_t FirstLine,
                        std::int32_t Room, String* Text) override;

 private:
  struct Showing {
    DICOMObject* object;
    IDCMObject* parent;
  };
  explicit CDCMObject(const Showing& what);
  ~CDCMObject() override;

  /// Ends with the data set that was here: destroys it if it is owned.
  void LetGo() noexcept;
  /// Gives the reference to Parent back, and with it as many levels as hang on it, on a flat stack.
  void LeaveParent() noexcept;
  /// LetGo, and then `object` is here and owned. Throws std::bad_alloc before anything changes.
  void Replace(std::unique_ptr<DICOMObject> object);
  void BecomeOwner(ObjectWatch object) noexcept;

  /// The element with this tag, with a type: `letters` where it has none yet, or else what the dictionary says. Null where there is none.
  VR* Find(std::int32_t group, std::int32_t element, VrCode letters = type_code::kNone);
  /// Remembers `vr`, which lies in the data set, or nothing.
  void Remember(VR* vr) noexcept;
  /// Puts `vr` into the data set. Throws std::bad_alloc.
  VR& Add(std::unique_ptr<VR> vr);
  Status PutNew(std::int32_t group, std::int32_t element, const Variant& typeCode,
                std::int32_t index, const Variant& value);
  /// Makes `bytes` the value of `vr`, or of a new element, which then has the type `type`.
  Status PutBytes(VR* vr, TagKey tag, VrCode type, std::string_view bytes);
  Status LoadFrom(const std::string& path, bool loadPixels);
  /// Has the engine make the pixel data native. Throws std::bad_alloc.
  bool MakeNative(DcmCompEngine& engine);
  /// Loads what `read(coder, loadPixels, strict)` gives, by a coder that follows `options`, of _EnumLoadOption, and says what it
  /// met, and notes that. Empty, or why nothing was loaded. Throws std::bad_alloc.
  template <class Read>
  std::string LoadNoting(std::int32_t options, Read read);
  /// What the members of IDcmFile answer to that: none of them calls bytes broken for which there was no memory. Throws
  /// std::bad_alloc.
  Status AnswerOfLoad(const std::string& why) const;
  /// Loads likewise through `buffer`.
  std::string LoadThrough(FileBuffer& buffer, const std::string& path, std::int32_t options,
                          std::int32_t code);
  /// Adds an element for items. Throws std::bad_alloc.
  VR& AddSequence(TagKey tag);
  /// Takes the data set of `source`, which has to be `expected`, over as an item.
  Status Nest(TagKey tag, std::int32_t index, IDcmObjectManager& source,
              const DICOMObject* expected);

  bool Owner = false;
  ObjectWatch Object;
  VR* CurrentVR = nullptr;  // what Find found last, while the data set is of this revision
  std::uint64_t currentRevision_ = 0;
  std::unique_ptr<ReadingNotes> notes_;  // of the last load; null before the first
  std::unique_ptr<std::string>
      refusal_;            // why the last Translate answered false; null where it did not
  Ref<IDCMObject> Parent;  // what shows the data set in which this one is an item
};

}  // namespace tessaret
