// Class "Tessaret.DCMOptions".
#pragma once

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "component/event_source.h"
#include "tessaret/idcm_options.hpp"

namespace tessaret {

/// Reads the options from the user's settings.
void ReadOptions();

class CDCMOptions final
    : public ComponentObject<CallableByName<IDCMOptions>, EventSource<_IDCMOptionsEvents>> {
 public:
  explicit CDCMOptions(IObject* outer);

  Status get_UseTotokuLUT(VariantBool* pVal) override;
  Status put_UseTotokuLUT(VariantBool newVal) override;
};

}  // namespace tessaret
