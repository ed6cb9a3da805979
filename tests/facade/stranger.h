// An object that is none of the library's: a host may hand in what it likes.
#pragma once

#include <functional>
#include <utility>

#include "tessaret/idcm_object.hpp"
#include "tessaret/idcm_object_manager.hpp"

namespace tessaret::test {

/// Answers the question for an interface as it is told, and does nothing else. It lives as long as its block.
class Stranger final : public IDCMObject {
 public:
  using Answer = std::function<Status(const InterfaceId&, void**)>;
  explicit Stranger(Answer answer) : answer_(std::move(answer)) {}

  Status QueryInterface(const InterfaceId& id, void** object) override {
    return answer_(id, object);
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  const InterfaceInfo* Describe() override { return nullptr; }
  Status FindMember(const char*, MemberKind, std::int32_t*) override { return kNotImplemented; }
  Status Invoke(std::int32_t, Variant*, std::uint32_t, Variant*) override {
    return kNotImplemented;
  }

  Status get_VR(std::int32_t, std::int32_t, const Variant&, std::int32_t, Variant*) override {
    return kNotImplemented;
  }
  Status put_VR(std::int32_t, std::int32_t, const Variant&, std::int32_t, const Variant&) override {
    return kNotImplemented;
  }
  Status get_VRMultiplicity(std::int32_t, std::int32_t, std::int32_t*) override {
    return kNotImplemented;
  }
  Status Clear() override { return kNotImplemented; }
  Status copy(IDCMObject**) override { return kNotImplemented; }
  Status Set(IDCMObject*) override { return kNotImplemented; }
  Status Save(const String&) override { return kNotImplemented; }
  Status Load(const String&, VariantBool) override { return kNotImplemented; }
  Status get_SequencesCount(std::int32_t, std::int32_t, std::int16_t*) override {
    return kNotImplemented;
  }
  Status get_Sequence(std::int32_t, std::int32_t, std::int32_t, IDCMObject**) override {
    return kNotImplemented;
  }
  Status putref_Sequence(std::int32_t, std::int32_t, std::int32_t, IDCMObject*) override {
    return kNotImplemented;
  }
  Status GetVRDescr(std::int32_t, std::int32_t, String*, String*, std::int32_t*, std::int32_t*,
                    VariantBool*) override {
    return kNotImplemented;
  }
  Status RemoveVR(std::int32_t, std::int32_t, VariantBool*) override { return kNotImplemented; }
  Status RemoveSequence(std::int32_t, std::int32_t, std::int32_t, VariantBool*) override {
    return kNotImplemented;
  }
  Status Send(const String&, const String&, const String&, const String&, VariantBool,
              VariantBool*) override {
    return kNotImplemented;
  }
  Status PutVRRawString(std::int32_t, std::int32_t, const String&, const String&) override {
    return kNotImplemented;
  }
  Status GetVRRawString(std::int32_t, std::int32_t, String*, String*) override {
    return kNotImplemented;
  }
  Status GetFirstVR(std::int32_t*, std::int32_t*, VariantBool*) override { return kNotImplemented; }
  Status GetNextVR(std::int32_t*, std::int32_t*, VariantBool*) override { return kNotImplemented; }
  Status Translate(const String&, VariantBool*) override { return kNotImplemented; }
  Status GetVRData(std::int32_t, std::int32_t, String*, Variant*) override {
    return kNotImplemented;
  }
  Status PutVRData(std::int32_t, std::int32_t, const String&, const Variant&) override {
    return kNotImplemented;
  }
  Status IntersectPlane(IDCMObject*, VariantBool, VariantBool*, Variant*, Variant*,
                        VariantBool*) override {
    return kNotImplemented;
  }
  Status CreateSecondaryCapture(IDCMObject*, const Variant&) override { return kNotImplemented; }
  Status AddOverlay(std::int32_t*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                    const String&, const String&) override {
    return kNotImplemented;
  }

 private:
  Answer answer_;
};

/// Hands out data sets as it is told, and takes them back.
class StrangeManager final : public IDcmObjectManager {
 public:
  using Give = std::function<DICOMObject*(bool)>;
  explicit StrangeManager(Give give) : give_(std::move(give)) {}

  Status QueryInterface(const InterfaceId&, void**) override { return kNoInterface; }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  const InterfaceInfo* Describe() override { return nullptr; }
  Status FindMember(const char*, MemberKind, std::int32_t*) override { return kNotImplemented; }
  Status Invoke(std::int32_t, Variant*, std::uint32_t, Variant*) override {
    return kNotImplemented;
  }
  Status GetOwnership() override { return kOk; }
  Status SetOwner() override {
    ++takenBack;
    return kOk;
  }
  Status GetPtr(std::int32_t takes, DICOMObject** pVal) override {
    *pVal = give_(takes != 0);
    return kOk;
  }
  Status PutPtr(std::int32_t, DICOMObject*) override { return kNotImplemented; }
  Status GetVR(std::int32_t, std::int32_t, _VR_RECORD_TYPE*) override { return kNotImplemented; }
  Status PutVR(_VR_RECORD_TYPE*) override { return kNotImplemented; }

  int takenBack = 0;

 private:
  Give give_;
};

}  // namespace tessaret::test
