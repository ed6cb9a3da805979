#include "core/object_watch.h"

namespace tessaret {

ObjectWatch::ObjectWatch(DICOMObject* object) {
  if (object == nullptr) return;
  if (object->Mark == nullptr) object->Mark = new ObjectMark(*object);
  mark_ = object->Mark;
  mark_->Hold();
}

}  // namespace tessaret
