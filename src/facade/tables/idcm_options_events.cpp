// Made by scripts/make_interface_tables.py from include/tessaret/idcm_options.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_options.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDCMOptionsEvents>() {
using I = _IDCMOptionsEvents;


static constexpr InterfaceTable kTable = {{I::kName, I::kId, nullptr, 0, "Events of that class: none."}, {}};
return kTable;
}

}  // namespace tessaret
