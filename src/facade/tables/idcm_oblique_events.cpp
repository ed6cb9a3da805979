// Made by scripts/make_interface_tables.py from include/tessaret/idcm_oblique.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_oblique.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDCMObliqueEvents>() {
using I = _IDCMObliqueEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::MouseDown)>::Describe({{{"Button", ArgumentFlow::kIn}, {"Shift", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::MouseUp)>::Describe({{{"Button", ArgumentFlow::kIn}, {"Shift", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::MouseMove)>::Describe({{{"Button", ArgumentFlow::kIn}, {"Shift", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}}});
static constexpr auto kArguments3 = Signature<decltype(&I::MouseDblClick)>::Describe({{{"Button", ArgumentFlow::kIn}, {"Shift", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::OnDrawThumbnail)>::Describe({{{"hDc", ArgumentFlow::kIn}, {"left", ArgumentFlow::kIn}, {"top", ArgumentFlow::kIn}, {"right", ArgumentFlow::kIn}, {"bottom", ArgumentFlow::kIn}}});
static constexpr auto kArguments5 = Signature<decltype(&I::KeyPress)>::Describe({{{"Character", ArgumentFlow::kIn}, {"Flags", ArgumentFlow::kIn}}});
static constexpr auto kArguments6 = Signature<decltype(&I::OnLeaveWindow)>::Describe({{{"hWnd", ArgumentFlow::kIn}}});
static constexpr auto kArguments7 = Signature<decltype(&I::ChangePlane)>::Describe({});
static constexpr auto kArguments8 = Signature<decltype(&I::MouseWheel)>::Describe({{{"delta", ArgumentFlow::kIn}, {"Shift", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"MouseDown", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "A button went down. The control hears of the mouse until it is up again."},
{"MouseUp", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "A button went up."},
{"MouseMove", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "The mouse moved. Button 16 stands for the middle one here."},
{"MouseDblClick", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "A button was pressed twice."},
{"OnDrawThumbnail", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "The section is drawn, and what the sink draws on the surface comes on top of it. The rectangle is that of the control."},
{"KeyPress", MemberKind::kMethod, kArguments5.data(), kArguments5.size(), "A character was typed."},
{"OnLeaveWindow", MemberKind::kMethod, kArguments6.data(), kArguments6.size(), "The mouse left the window."},
{"ChangePlane", MemberKind::kMethod, kArguments7.data(), kArguments7.size(), "Not told by this version."},
{"MouseWheel", MemberKind::kMethod, kArguments8.data(), kArguments8.size(), "The wheel was turned by `delta` notches, away from the user above 0. `Shift` is 0."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::MouseDown>,
&CallMember<&I::MouseUp>,
&CallMember<&I::MouseMove>,
&CallMember<&I::MouseDblClick>,
&CallMember<&I::OnDrawThumbnail>,
&CallMember<&I::KeyPress>,
&CallMember<&I::OnLeaveWindow>,
&CallMember<&I::ChangePlane>,
&CallMember<&I::MouseWheel>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 9, "Events of that class. `x` and `y` are device coordinates. `Button` is 1 for the left, 2 for the right and 4 for the middle one, in a\n"
        "move the sum of those that are down; in `Shift` 4 stands for the shift key and 8 for the control key."}, kCalls};
return kTable;
}

}  // namespace tessaret
