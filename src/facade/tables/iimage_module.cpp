// Made by scripts/make_interface_tables.py from include/tessaret/iimage_module.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/iimage_module.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IImageModule>() {
using I = IImageModule;

static constexpr auto kArguments0 = Signature<decltype(&I::get_ImageType)>::Describe({{{"pVal", ArgumentFlow::kResult, 0, "_EnumImageType"}}});
static constexpr auto kArguments1 = Signature<decltype(&I::put_ImageType)>::Describe({{{"newVal", ArgumentFlow::kIn, 0, "_EnumImageType"}}});
static constexpr auto kArguments2 = Signature<decltype(&I::get_dx)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::get_dy)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments4 = Signature<decltype(&I::get_BytesPerPixel)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::get_NumChannels)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments6 = Signature<decltype(&I::get_NumFrames)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments7 = Signature<decltype(&I::get_BitsStored)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments8 = Signature<decltype(&I::put_BitsStored)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments9 = Signature<decltype(&I::Transform)>::Describe({{{"v00", ArgumentFlow::kIn}, {"v01", ArgumentFlow::kIn}, {"v10", ArgumentFlow::kIn}, {"v11", ArgumentFlow::kIn}}});
static constexpr auto kArguments10 = Signature<decltype(&I::get_ImageDataSize)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments11 = Signature<decltype(&I::get_ImageLineSize)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments12 = Signature<decltype(&I::get_XSpacing)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments13 = Signature<decltype(&I::put_XSpacing)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments14 = Signature<decltype(&I::get_yspacing)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments15 = Signature<decltype(&I::put_yspacing)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments16 = Signature<decltype(&I::CreateImage)>::Describe({{{"dx", ArgumentFlow::kIn}, {"dy", ArgumentFlow::kIn}, {"nFrames", ArgumentFlow::kIn}, {"type", ArgumentFlow::kIn, 0, "_EnumImageType"}, {"nBitsStored", ArgumentFlow::kIn}, {"Signed", ArgumentFlow::kIn}}});
static constexpr auto kArguments17 = Signature<decltype(&I::GetLine)>::Describe({{{"nFrame", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"dx", ArgumentFlow::kIn}, {"bufLength", ArgumentFlow::kIn}, {"pLine", ArgumentFlow::kResult}}});
static constexpr auto kArguments18 = Signature<decltype(&I::PutLine)>::Describe({{{"nFrame", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"dx", ArgumentFlow::kIn}, {"bufLength", ArgumentFlow::kIn}, {"pLine", ArgumentFlow::kIn}}});
static constexpr auto kArguments19 = Signature<decltype(&I::Dispose)>::Describe({});
static constexpr auto kArguments20 = Signature<decltype(&I::Resize)>::Describe({{{"zoom", ArgumentFlow::kIn}}});
static constexpr auto kArguments21 = Signature<decltype(&I::GetMinMax)>::Describe({{{"Min", ArgumentFlow::kOut}, {"Max", ArgumentFlow::kOut}}});
static constexpr auto kArguments22 = Signature<decltype(&I::ApplyVOILut)>::Describe({{{"wmin", ArgumentFlow::kIn}, {"wmax", ArgumentFlow::kIn}}});
static constexpr auto kArguments23 = Signature<decltype(&I::ApplyLUT)>::Describe({{{"Lut", ArgumentFlow::kIn}}});
static constexpr auto kArguments24 = Signature<decltype(&I::Invert)>::Describe({});
static constexpr auto kArguments25 = Signature<decltype(&I::SaveRawFile)>::Describe({{{"File", ArgumentFlow::kIn}}});
static constexpr auto kArguments26 = Signature<decltype(&I::SetModalityLUT)>::Describe({{{"rescale", ArgumentFlow::kIn}, {"intercept", ArgumentFlow::kIn}}});
static constexpr auto kArguments27 = Signature<decltype(&I::GetModalityLUT)>::Describe({{{"rescale", ArgumentFlow::kOut}, {"intercept", ArgumentFlow::kOut}}});
static constexpr auto kArguments28 = Signature<decltype(&I::SetInterpolation)>::Describe({{{"interpolation", ArgumentFlow::kIn}}});
static constexpr auto kArguments29 = Signature<decltype(&I::GetInterpolation)>::Describe({{{"interpolation", ArgumentFlow::kResult}}});
static constexpr auto kArguments30 = Signature<decltype(&I::MergeOnDIB)>::Describe({{{"hDIB", ArgumentFlow::kIn}, {"Idx", ArgumentFlow::kIn}, {"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"viewPars", ArgumentFlow::kIn}, {"mergeType", ArgumentFlow::kIn, 0, "_EnumMergeType"}, {"trasp", ArgumentFlow::kIn}, {"mask", ArgumentFlow::kOptional}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments31 = Signature<decltype(&I::MergeOnDC)>::Describe({});
static constexpr auto kArguments32 = Signature<decltype(&I::RegionGrow)>::Describe({});
static constexpr auto kArguments33 = Signature<decltype(&I::get_Monochrome1)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments34 = Signature<decltype(&I::get_Signed)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments35 = Signature<decltype(&I::put_Signed)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments36 = Signature<decltype(&I::get_x0)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments37 = Signature<decltype(&I::put_x0)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments38 = Signature<decltype(&I::get_y0)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments39 = Signature<decltype(&I::put_y0)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments40 = Signature<decltype(&I::DrawBlended)>::Describe({});
static constexpr auto kArguments41 = Signature<decltype(&I::get_Histogram)>::Describe({{{"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"ImageType", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "How samples are stored."},
{"ImageType", MemberKind::kPut, kArguments1.data(), kArguments1.size(), "Turns all pixels into this form. Between grays values are shifted so that BitsStored becomes the new width; to colours the\n"
        "upper 8 bits count, from colours 0.3 of the first byte, 0.59 of the second and 0.11 of the third."},
{"dx", MemberKind::kGet, kArguments2.data(), kArguments2.size(), "The width of a frame."},
{"dy", MemberKind::kGet, kArguments3.data(), kArguments3.size(), "The height of a frame."},
{"BytesPerPixel", MemberKind::kGet, kArguments4.data(), kArguments4.size(), "The height of a frame, whatever the name says: hosts count on it."},
{"NumChannels", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "1 for gray, 3 for colours."},
{"NumFrames", MemberKind::kGet, kArguments6.data(), kArguments6.size(), "How many frames there are."},
{"BitsStored", MemberKind::kGet, kArguments7.data(), kArguments7.size(), "How many bits of a sample count."},
{"BitsStored", MemberKind::kPut, kArguments8.data(), kArguments8.size(), "Changes it, of images with 16 bits only: values are shifted by the difference, and up to 8 bits or beyond 16 the image becomes one\n"
        "of that width."},
{"Transform", MemberKind::kMethod, kArguments9.data(), kArguments9.size(), "Turns, mirrors or scales all frames about their middle by the matrix v00, v01 / v10, v11, which leads from the new image to the old\n"
        "one. Pixels from outside become 0."},
{"ImageDataSize", MemberKind::kGet, kArguments10.data(), kArguments10.size(), "The bytes of all pixels, those between lines included."},
{"ImageLineSize", MemberKind::kGet, kArguments11.data(), kArguments11.size(), "The bytes from one line to the next."},
{"XSpacing", MemberKind::kGet, kArguments12.data(), kArguments12.size(), "The distance of two columns in millimetres; 1 in a new image."},
{"XSpacing", MemberKind::kPut, kArguments13.data(), kArguments13.size(), "Sets it."},
{"yspacing", MemberKind::kGet, kArguments14.data(), kArguments14.size(), "The distance of two lines in millimetres; 1 in a new image."},
{"yspacing", MemberKind::kPut, kArguments15.data(), kArguments15.size(), "Sets it."},
{"CreateImage", MemberKind::kMethod, kArguments16.data(), kArguments16.size(), "Makes all pixels anew, for `nFrames` frames of `dx` by `dy`. `nBitsStored` bits of a sample count. `Signed` is true at exactly\n"
        "-1; then all samples are the least number of these bits at first, otherwise 0."},
{"GetLine", MemberKind::kMethod, kArguments17.data(), kArguments17.size(), "Gives the bytes of `dx` pixels of line `y` from column `x` on: as many whole pixels as the line has from there, and as fit into\n"
        "`bufLength` bytes. `pLine` gets an array of bytes from index 0, a sample of more bytes with its lowest one first."},
{"PutLine", MemberKind::kMethod, kArguments18.data(), kArguments18.size(), "Puts them, from an array of bytes of one dimension. What goes beyond the line, `bufLength` or the array is left out."},
{"Dispose", MemberKind::kMethod, kArguments19.data(), kArguments19.size(), "Frees the pixels."},
{"Resize", MemberKind::kMethod, kArguments20.data(), kArguments20.size(), "Scales all frames. Below 0.3 each new pixel is the mean of those that it covers, otherwise it is interpolated. kNotImplemented for\n"
        "IMAGE_GRAY32."},
{"GetMinMax", MemberKind::kMethod, kArguments21.data(), kArguments21.size(), "The least and the greatest of the first samples, as many as all frames together have lines."},
{"ApplyVOILut", MemberKind::kMethod, kArguments22.data(), kArguments22.size(), "Spreads the values from `wmin` to `wmax` over all that BitsStored can hold; both are taken through the modality lookup backwards\n"
        "first. Lower values become the least, higher ones the greatest."},
{"ApplyLUT", MemberKind::kMethod, kArguments23.data(), kArguments23.size(), "Turns gray into colours by an ILut, which is told the range that BitsStored can hold. Null does nothing."},
{"Invert", MemberKind::kMethod, kArguments24.data(), kArguments24.size(), "Swaps dark and bright."},
{"SaveRawFile", MemberKind::kMethod, kArguments25.data(), kArguments25.size(), "Succeeds and does nothing."},
{"SetModalityLUT", MemberKind::kMethod, kArguments26.data(), kArguments26.size(), "Sets the pair that leads from samples to values of the modality."},
{"GetModalityLUT", MemberKind::kMethod, kArguments27.data(), kArguments27.size(), "Gives that pair; 1 and 0 at first."},
{"SetInterpolation", MemberKind::kMethod, kArguments28.data(), kArguments28.size(), "Whether enlarged pixels are to be smoothed: any number but 0 says so."},
{"GetInterpolation", MemberKind::kMethod, kArguments29.data(), kArguments29.size(), "1 or 0; 1 in a new image."},
{"MergeOnDIB", MemberKind::kMethod, kArguments30.data(), kArguments30.size(), "Draws the first frame over the bitmap `hDIB`, which has 32 bits a pixel and stays the caller's. `viewPars` says what is in view, with\n"
        "which window and colours; without an ILut there gray is drawn as red. `trasp` is how much it covers, from 0 to 1. Samples of 0\n"
        "cover nothing. The other arguments change nothing, and `pVal` is not written.\n"
        "Fails with \"CImageModule::MergeOnDIB: Bad HDIB handle\", \"CImageModule::MergeOnDIB: Unsupported DIB format, onli BI_RGB\",\n"
        "\"CImageModule::MergeOnDIB: 32 bits not supported yet\"; kNoInterface for `viewPars` that are no IViewParameters."},
{"MergeOnDC", MemberKind::kMethod, kArguments31.data(), kArguments31.size(), "Succeeds and does nothing."},
{"RegionGrow", MemberKind::kMethod, kArguments32.data(), kArguments32.size(), "Succeeds and does nothing."},
{"Monochrome1", MemberKind::kGet, kArguments33.data(), kArguments33.size(), "Whether low values are bright."},
{"Signed", MemberKind::kGet, kArguments34.data(), kArguments34.size(), "Whether samples have a sign."},
{"Signed", MemberKind::kPut, kArguments35.data(), kArguments35.size(), "Changes it: half the range is added to every sample."},
{"x0", MemberKind::kGet, kArguments36.data(), kArguments36.size(), "Where the image begins across; 0 at first. Kept for hosts."},
{"x0", MemberKind::kPut, kArguments37.data(), kArguments37.size(), "Sets it."},
{"y0", MemberKind::kGet, kArguments38.data(), kArguments38.size(), "Where the image begins down; 0 at first. Kept for hosts."},
{"y0", MemberKind::kPut, kArguments39.data(), kArguments39.size(), "Sets it."},
{"DrawBlended", MemberKind::kMethod, kArguments40.data(), kArguments40.size(), "Succeeds and does nothing."},
{"Histogram", MemberKind::kGet, kArguments41.data(), kArguments41.size(), "How many samples have which value, as an array of numbers of 32 bits, from index 0, with an entry for each value that BitsStored\n"
        "can hold. It counts the first line once for each line; of IMAGE_GRAY32 and IMAGE_RGB all entries are 0. Fails with \"Cannot\n"
        "allocate histogram array\"."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_ImageType>,
&CallMember<&I::put_ImageType>,
&CallMember<&I::get_dx>,
&CallMember<&I::get_dy>,
&CallMember<&I::get_BytesPerPixel>,
&CallMember<&I::get_NumChannels>,
&CallMember<&I::get_NumFrames>,
&CallMember<&I::get_BitsStored>,
&CallMember<&I::put_BitsStored>,
&CallMember<&I::Transform>,
&CallMember<&I::get_ImageDataSize>,
&CallMember<&I::get_ImageLineSize>,
&CallMember<&I::get_XSpacing>,
&CallMember<&I::put_XSpacing>,
&CallMember<&I::get_yspacing>,
&CallMember<&I::put_yspacing>,
&CallMember<&I::CreateImage>,
&CallMember<&I::GetLine>,
&CallMember<&I::PutLine>,
&CallMember<&I::Dispose>,
&CallMember<&I::Resize>,
&CallMember<&I::GetMinMax>,
&CallMember<&I::ApplyVOILut>,
&CallMember<&I::ApplyLUT>,
&CallMember<&I::Invert>,
&CallMember<&I::SaveRawFile>,
&CallMember<&I::SetModalityLUT>,
&CallMember<&I::GetModalityLUT>,
&CallMember<&I::SetInterpolation>,
&CallMember<&I::GetInterpolation>,
&CallMember<&I::MergeOnDIB>,
&CallMember<&I::MergeOnDC>,
&CallMember<&I::RegionGrow>,
&CallMember<&I::get_Monochrome1>,
&CallMember<&I::get_Signed>,
&CallMember<&I::put_Signed>,
&CallMember<&I::get_x0>,
&CallMember<&I::put_x0>,
&CallMember<&I::get_y0>,
&CallMember<&I::put_y0>,
&CallMember<&I::DrawBlended>,
&CallMember<&I::get_Histogram>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 42, "Pixels that are made, filled line by line, changed as a whole and drawn. It knows nothing of DICOM but a rescale pair, and is used\n"
        "by one thread at a time. Members that need pixels are for images that CreateImage, or whoever gave the image, has filled. Lines,\n"
        "columns and frames count from 0; coordinates are pixels with (0, 0) at the left end of the first line."}, kCalls};
return kTable;
}

}  // namespace tessaret
