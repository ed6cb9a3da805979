// Objects of the public interface, read and filled in few words.
#pragma once

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "core/dicom_object.h"
#include "support/bytes.h"
#include "tessaret/tessaret.hpp"

namespace tessaret::test {

inline Ref<IDCMObject> NewObject() { return Create<IDCMObject>("Tessaret.DCMObject"); }

inline Ref<IDcmObjectManager> ManagerOf(const Ref<IDCMObject>& object) {
  return object.As<IDcmObjectManager>();
}

/// The data set behind `object`.
inline DICOMObject* CoreOf(const Ref<IDCMObject>& object) {
  DICOMObject* core = nullptr;
  EXPECT_EQ(ManagerOf(object)->GetPtr(0, &core), kOk);
  return core;
}

inline Variant Get(const Ref<IDCMObject>& object, std::int32_t group, std::int32_t element,
                   std::int32_t index = 0, const Variant& type = {}) {
  Variant value(std::int32_t{-77});
  EXPECT_EQ(object->get_VR(group, element, type, index, &value), kOk);
  return value;
}

/// A value that is text.
inline std::string Text(const Ref<IDCMObject>& object, std::int32_t group, std::int32_t element,
                        std::int32_t index = 0) {
  const Variant value = Get(object, group, element, index);
  EXPECT_TRUE(value.Is(VariantType::kString));
  return value.ToString().Narrow();
}

inline Status Put(const Ref<IDCMObject>& object, std::int32_t group, std::int32_t element,
                  const Variant& value, const Variant& type = {}, std::int32_t index = 0) {
  return object->put_VR(group, element, type, index, value);
}

/// The bytes of an element, whatever they mean.
inline Bytes Raw(const Ref<IDCMObject>& object, std::int32_t group, std::int32_t element) {
  String type;
  Variant value;
  EXPECT_EQ(object->GetVRData(group, element, &type, &value), kOk);
  if (value.AsArray() == nullptr) return {};
  const auto bytes = value.AsArray()->Bytes();
  return {bytes.begin(), bytes.end()};
}

struct Description {
  VariantBool found;
  std::string name, type;
  std::int32_t length = -7;
  std::int32_t count = -7;
};

inline Description Describe(const Ref<IDCMObject>& object, std::int32_t group,
                            std::int32_t element) {
  Description description;
  String name("untouched"), type("untouched");
  EXPECT_EQ(object->GetVRDescr(group, element, &name, &type, &description.length,
                               &description.count, &description.found),
            kOk);
  description.name = name.Narrow();
  description.type = type.Narrow();
  return description;
}

inline std::int16_t CountOf(const Ref<IDCMObject>& object, std::int32_t group,
                            std::int32_t element) {
  std::int16_t count = -7;
  EXPECT_EQ(object->get_SequencesCount(group, element, &count), kOk);
  return count;
}

inline Ref<IDCMObject> ItemOf(const Ref<IDCMObject>& object, std::int32_t group,
                              std::int32_t element, std::int32_t index) {
  Ref<IDCMObject> item;
  EXPECT_EQ(object->get_Sequence(group, element, index, item.Receive()), kOk);
  return item;
}

/// An object with this Patient ID.
inline Ref<IDCMObject> ObjectOfPatient(const std::string& id) {
  Ref<IDCMObject> object = NewObject();
  EXPECT_EQ(Put(object, 0x0010, 0x0020, id), kOk);
  return object;
}

/// Says when it dies.
class Witness : public DICOMObject {
 public:
  explicit Witness(bool& died) : died_(died) { died_ = false; }
  Witness(const Witness&) = delete;
  Witness& operator=(const Witness&) = delete;
  ~Witness() override {
    EXPECT_FALSE(died_);
    died_ = true;
  }

 private:
  bool& died_;
};

/// The words of a failure that has them.
#define EXPECT_FAILS_WITH(status, words)                               \
  do {                                                                 \
    EXPECT_EQ((status), static_cast<::tessaret::Status>(0x80020009u)); \
    EXPECT_EQ(::tessaret::LastError().text, (words));                  \
    EXPECT_EQ(::tessaret::LastError().source, "Tessaret.DCMObject");   \
  } while (false)

}  // namespace tessaret::test
