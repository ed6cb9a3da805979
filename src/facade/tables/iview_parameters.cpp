// Made by scripts/make_interface_tables.py from include/tessaret/iview_parameters.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/iview_parameters.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IViewParameters>() {
using I = IViewParameters;

static constexpr auto kArguments0 = Signature<decltype(&I::get_Lut)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::putref_Lut)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::get_x0)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::put_x0)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::get_y0)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::put_y0)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments6 = Signature<decltype(&I::get_x1)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments7 = Signature<decltype(&I::put_x1)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments8 = Signature<decltype(&I::get_y1)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments9 = Signature<decltype(&I::put_y1)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments10 = Signature<decltype(&I::get_XCenter)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments11 = Signature<decltype(&I::put_XCenter)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments12 = Signature<decltype(&I::get_YCenter)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments13 = Signature<decltype(&I::put_YCenter)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments14 = Signature<decltype(&I::get_Gamma)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments15 = Signature<decltype(&I::put_Gamma)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments16 = Signature<decltype(&I::get_WindowMin)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments17 = Signature<decltype(&I::put_WindowMin)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments18 = Signature<decltype(&I::get_WindowMax)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments19 = Signature<decltype(&I::put_WindowMax)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments20 = Signature<decltype(&I::get_Flip)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_ImgFlipMode"}}});
static constexpr auto kArguments21 = Signature<decltype(&I::put_Flip)>::Describe({{{"newVal", ArgumentFlow::kIn, 0, "_ImgFlipMode"}}});
static constexpr auto kArguments22 = Signature<decltype(&I::get_Invert)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments23 = Signature<decltype(&I::put_Invert)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments24 = Signature<decltype(&I::get_UseVoiLut)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments25 = Signature<decltype(&I::put_UseVoiLut)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments26 = Signature<decltype(&I::get_UseLUT)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments27 = Signature<decltype(&I::put_UseLUT)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments28 = Signature<decltype(&I::get_Interpolate)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments29 = Signature<decltype(&I::put_Interpolate)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments30 = Signature<decltype(&I::get_zoom)>::Describe({{{"dx", ArgumentFlow::kIn}, {"dy", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments31 = Signature<decltype(&I::put_zoom)>::Describe({{{"dx", ArgumentFlow::kIn}, {"dy", ArgumentFlow::kIn}, {"zoom", ArgumentFlow::kIn}}});
static constexpr auto kArguments32 = Signature<decltype(&I::get_Rotation)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments33 = Signature<decltype(&I::put_Rotation)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments34 = Signature<decltype(&I::Rotate90)>::Describe({});
static constexpr auto kArguments35 = Signature<decltype(&I::ResetTransform)>::Describe({});
static constexpr auto kArguments36 = Signature<decltype(&I::FlipHorz)>::Describe({});
static constexpr auto kArguments37 = Signature<decltype(&I::FlipVert)>::Describe({});
static constexpr auto kArguments38 = Signature<decltype(&I::GetTransform)>::Describe({{{"m00", ArgumentFlow::kOut}, {"m01", ArgumentFlow::kOut}, {"m10", ArgumentFlow::kOut}, {"m11", ArgumentFlow::kOut}}});
static constexpr auto kArguments39 = Signature<decltype(&I::SetTransform)>::Describe({{{"m00", ArgumentFlow::kIn}, {"m01", ArgumentFlow::kIn}, {"m10", ArgumentFlow::kIn}, {"m11", ArgumentFlow::kIn}}});
static constexpr auto kArguments40 = Signature<decltype(&I::get_ValidView)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments41 = Signature<decltype(&I::TransformWorldToImage)>::Describe({{{"ViewDx", ArgumentFlow::kIn}, {"ViewDy", ArgumentFlow::kIn}, {"x", ArgumentFlow::kInOut}, {"y", ArgumentFlow::kInOut}}});
static constexpr auto kArguments42 = Signature<decltype(&I::TransformImageToWorld)>::Describe({{{"ViewDx", ArgumentFlow::kIn}, {"ViewDy", ArgumentFlow::kIn}, {"x", ArgumentFlow::kInOut}, {"y", ArgumentFlow::kInOut}}});
static constexpr auto kArguments43 = Signature<decltype(&I::GetWorldViewport)>::Describe({{{"ImgDx", ArgumentFlow::kIn}, {"ImgDy", ArgumentFlow::kIn}, {"x0", ArgumentFlow::kOut}, {"y0", ArgumentFlow::kOut}, {"x1", ArgumentFlow::kOut}, {"y1", ArgumentFlow::kOut}}});
static constexpr auto kArguments44 = Signature<decltype(&I::copy)>::Describe({{{"pViewPars", ArgumentFlow::kIn}}});
static constexpr auto kArguments45 = Signature<decltype(&I::GetDicomOrientation)>::Describe({{{"Orientation", ArgumentFlow::kIn}, {"pViewOrientation", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"Lut", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "The colour lookup, or null. The caller gets a reference of its own."},
{"Lut", MemberKind::kPutRef, kArguments1.data(), kArguments1.size(), "Sets it, with a reference of its own; null takes it away. Any object that can be called by name is accepted here; whether it is\n"
        "an ILut counts where the view is drawn. kNoInterface for others."},
{"x0", MemberKind::kGet, kArguments2.data(), kArguments2.size(), "The left end of what is in view, in world coordinates; 0 at first, as are the other three."},
{"x0", MemberKind::kPut, kArguments3.data(), kArguments3.size(), "Sets the left end."},
{"y0", MemberKind::kGet, kArguments4.data(), kArguments4.size(), "The upper end of what is in view."},
{"y0", MemberKind::kPut, kArguments5.data(), kArguments5.size(), "Sets the upper end."},
{"x1", MemberKind::kGet, kArguments6.data(), kArguments6.size(), "The right end of what is in view."},
{"x1", MemberKind::kPut, kArguments7.data(), kArguments7.size(), "Sets the right end."},
{"y1", MemberKind::kGet, kArguments8.data(), kArguments8.size(), "The lower end of what is in view."},
{"y1", MemberKind::kPut, kArguments9.data(), kArguments9.size(), "Sets the lower end."},
{"XCenter", MemberKind::kGet, kArguments10.data(), kArguments10.size(), "The middle of what is in view, across."},
{"XCenter", MemberKind::kPut, kArguments11.data(), kArguments11.size(), "Moves what is in view there, without changing its size."},
{"YCenter", MemberKind::kGet, kArguments12.data(), kArguments12.size(), "The middle of what is in view, down."},
{"YCenter", MemberKind::kPut, kArguments13.data(), kArguments13.size(), "Moves what is in view there, without changing its size."},
{"Gamma", MemberKind::kGet, kArguments14.data(), kArguments14.size(), "The exponent by which gray is bent; at or below 0 it is not. -1 at first."},
{"Gamma", MemberKind::kPut, kArguments15.data(), kArguments15.size(), "Sets it."},
{"WindowMin", MemberKind::kGet, kArguments16.data(), kArguments16.size(), "The value that is shown black. -33000 here and in WindowMax says that no window was chosen yet."},
{"WindowMin", MemberKind::kPut, kArguments17.data(), kArguments17.size(), "Sets it."},
{"WindowMax", MemberKind::kGet, kArguments18.data(), kArguments18.size(), "The value that is shown white."},
{"WindowMax", MemberKind::kPut, kArguments19.data(), kArguments19.size(), "Sets it."},
{"Flip", MemberKind::kGet, kArguments20.data(), kArguments20.size(), "What was set last."},
{"Flip", MemberKind::kPut, kArguments21.data(), kArguments21.size(), "Mirrors the view in these directions, on top of how it is mirrored and turned already: the same value set twice ends where it began."},
{"Invert", MemberKind::kGet, kArguments22.data(), kArguments22.size(), "Whether black and white are swapped."},
{"Invert", MemberKind::kPut, kArguments23.data(), kArguments23.size(), "Sets it; any value but 0 is true."},
{"UseVoiLut", MemberKind::kGet, kArguments24.data(), kArguments24.size(), "Whether the image's own window is to be used. Kept for hosts; true at first."},
{"UseVoiLut", MemberKind::kPut, kArguments25.data(), kArguments25.size(), "Sets it; any value but 0 is true."},
{"UseLUT", MemberKind::kGet, kArguments26.data(), kArguments26.size(), "Whether colours are to be used. Kept for hosts: MergeOnDIB draws through a Lut whenever there is one."},
{"UseLUT", MemberKind::kPut, kArguments27.data(), kArguments27.size(), "Sets it; any value but 0 is true."},
{"Interpolate", MemberKind::kGet, kArguments28.data(), kArguments28.size(), "Whether enlarged pixels are to be smoothed. Kept for hosts; true at first."},
{"Interpolate", MemberKind::kPut, kArguments29.data(), kArguments29.size(), "Sets it; any value but 0 is true."},
{"zoom", MemberKind::kGet, kArguments30.data(), kArguments30.size(), "How many window pixels a world pixel has, for what is in view to fit a window of `dx` by `dy` pixels. By a quarter turn dx and dy\n"
        "are swapped first."},
{"zoom", MemberKind::kPut, kArguments31.data(), kArguments31.size(), "Changes what is in view, around its middle, so that a window of `dx` by `dy` pixels shows it at this zoom. Below 0 nothing changes."},
{"Rotation", MemberKind::kGet, kArguments32.data(), kArguments32.size(), "Always 0."},
{"Rotation", MemberKind::kPut, kArguments33.data(), kArguments33.size(), "Does nothing."},
{"Rotate90", MemberKind::kMethod, kArguments34.data(), kArguments34.size(), "Turns the view by a quarter."},
{"ResetTransform", MemberKind::kMethod, kArguments35.data(), kArguments35.size(), "Neither mirrored nor turned any more. Flip keeps its value."},
{"FlipHorz", MemberKind::kMethod, kArguments36.data(), kArguments36.size(), "Swaps left and right."},
{"FlipVert", MemberKind::kMethod, kArguments37.data(), kArguments37.size(), "Turns the view upside down."},
{"GetTransform", MemberKind::kMethod, kArguments38.data(), kArguments38.size(), "How the view is mirrored and turned, as a matrix of 2 by 2, row by row: 1, 0, 0, 1 where it is not."},
{"SetTransform", MemberKind::kMethod, kArguments39.data(), kArguments39.size(), "Sets the matrix."},
{"ValidView", MemberKind::kGet, kArguments40.data(), kArguments40.size(), "Always true."},
{"TransformWorldToImage", MemberKind::kMethod, kArguments41.data(), kArguments41.size(), "From window to world, whatever the name says: `x` and `y` are pixels of a window of `ViewDx` by `ViewDy` pixels, and become world\n"
        "coordinates."},
{"TransformImageToWorld", MemberKind::kMethod, kArguments42.data(), kArguments42.size(), "From world to window, whatever the name says: `x` and `y` are world coordinates, and become pixels of a window of `ViewDx` by\n"
        "`ViewDy` pixels."},
{"GetWorldViewport", MemberKind::kMethod, kArguments43.data(), kArguments43.size(), "The corners x0, y0 and x1, y1, each taken through TransformWorldToImage for a window of `ImgDx` by `ImgDy` pixels and put in order,\n"
        "the smaller one first."},
{"copy", MemberKind::kMethod, kArguments44.data(), kArguments44.size(), "Takes over all of another view but its Flip, whose effect is in the matrix; its Lut is shared. Fails with \"CViewParameter::Copy:\n"
        "Bad source\" for null and for an object that is no IViewParameters."},
{"GetDicomOrientation", MemberKind::kMethod, kArguments45.data(), kArguments45.size(), "Where the sides of the view lie in the patient. `Orientation` is that of the image, the letters of the rows, \"\\\" and those of the\n"
        "columns, such as \"L\\P\"; the answer has the same form. Null where no \"\\\" is in it."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_Lut>,
&CallMember<&I::putref_Lut>,
&CallMember<&I::get_x0>,
&CallMember<&I::put_x0>,
&CallMember<&I::get_y0>,
&CallMember<&I::put_y0>,
&CallMember<&I::get_x1>,
&CallMember<&I::put_x1>,
&CallMember<&I::get_y1>,
&CallMember<&I::put_y1>,
&CallMember<&I::get_XCenter>,
&CallMember<&I::put_XCenter>,
&CallMember<&I::get_YCenter>,
&CallMember<&I::put_YCenter>,
&CallMember<&I::get_Gamma>,
&CallMember<&I::put_Gamma>,
&CallMember<&I::get_WindowMin>,
&CallMember<&I::put_WindowMin>,
&CallMember<&I::get_WindowMax>,
&CallMember<&I::put_WindowMax>,
&CallMember<&I::get_Flip>,
&CallMember<&I::put_Flip>,
&CallMember<&I::get_Invert>,
&CallMember<&I::put_Invert>,
&CallMember<&I::get_UseVoiLut>,
&CallMember<&I::put_UseVoiLut>,
&CallMember<&I::get_UseLUT>,
&CallMember<&I::put_UseLUT>,
&CallMember<&I::get_Interpolate>,
&CallMember<&I::put_Interpolate>,
&CallMember<&I::get_zoom>,
&CallMember<&I::put_zoom>,
&CallMember<&I::get_Rotation>,
&CallMember<&I::put_Rotation>,
&CallMember<&I::Rotate90>,
&CallMember<&I::ResetTransform>,
&CallMember<&I::FlipHorz>,
&CallMember<&I::FlipVert>,
&CallMember<&I::GetTransform>,
&CallMember<&I::SetTransform>,
&CallMember<&I::get_ValidView>,
&CallMember<&I::TransformWorldToImage>,
&CallMember<&I::TransformImageToWorld>,
&CallMember<&I::GetWorldViewport>,
&CallMember<&I::copy>,
&CallMember<&I::GetDicomOrientation>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 46, "Which part of an image is in view, with which window, gamma and colours, and how it is mirrored or turned. It holds no pixels.\n"
        "\n"
        "World coordinates are those of the image before it is mirrored or turned, in pixels; window coordinates are pixels of the window\n"
        "or bitmap that it is shown in. Nothing is checked: a window without a width has an infinite zoom."}, kCalls};
return kTable;
}

}  // namespace tessaret
