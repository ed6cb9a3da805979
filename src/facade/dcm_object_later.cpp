// Members that stand in their slots and have no body in this version.
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {
namespace {

Status NotAvailable() {
  dcm_object::FailWith("This is not available in this version");
  return kNotImplemented;
}

}  // namespace

Status CDCMObject::IntersectPlane(IDCMObject*, VariantBool, VariantBool*, Variant*, Variant*,
                                  VariantBool*) {
  return NotAvailable();
}

Status CDCMObject::CreateSecondaryCapture(IDCMObject*, const Variant&) { return NotAvailable(); }

Status CDCMObject::AddOverlay(std::int32_t*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                              const String&, const String&) {
  return NotAvailable();
}

}  // namespace tessaret
