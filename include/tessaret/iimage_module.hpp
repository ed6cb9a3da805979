/// Raster images of one or more frames. Class "Tessaret.ImageModule".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/handle.hpp"
#include "tessaret/image_type.hpp"
#include "tessaret/merge_type.hpp"

namespace tessaret {

/// Pixels that are made, filled line by line, changed as a whole and drawn. It knows nothing of DICOM but a rescale pair, and is used
/// by one thread at a time. Members that need pixels are for images that CreateImage, or whoever gave the image, has filled. Lines,
/// columns and frames count from 0; coordinates are pixels with (0, 0) at the left end of the first line.
class IImageModule : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02006};
  static constexpr const char* kName = "IImageModule";

  /// How samples are stored.
  virtual Status get_ImageType(Result<_EnumImageType> pVal) = 0;

  /// Turns all pixels into this form. Between grays values are shifted so that BitsStored becomes the new width; to colours the
  /// upper 8 bits count, from colours 0.3 of the first byte, 0.59 of the second and 0.11 of the third.
  virtual Status put_ImageType(_EnumImageType newVal) = 0;

  /// The width of a frame.
  virtual Status get_dx(Result<std::int32_t> pVal) = 0;

  /// The height of a frame.
  virtual Status get_dy(Result<std::int32_t> pVal) = 0;

  /// The height of a frame, whatever the name says: hosts count on it.
  virtual Status get_BytesPerPixel(Result<std::int32_t> pVal) = 0;

  /// 1 for gray, 3 for colours.
  virtual Status get_NumChannels(Result<std::int32_t> pVal) = 0;

  /// How many frames there are.
  virtual Status get_NumFrames(Result<std::int32_t> pVal) = 0;

  /// How many bits of a sample count.
  virtual Status get_BitsStored(Result<std::int32_t> pVal) = 0;

  /// Changes it, of images with 16 bits only: values are shifted by the difference, and up to 8 bits or beyond 16 the image becomes one
  /// of that width.
  virtual Status put_BitsStored(std::int32_t newVal) = 0;

  /// Turns, mirrors or scales all frames about their middle by the matrix v00, v01 / v10, v11, which leads from the new image to the old
  /// one. Pixels from outside become 0.
  virtual Status Transform(float v00, float v01, float v10, float v11) = 0;

  /// The bytes of all pixels, those between lines included.
  virtual Status get_ImageDataSize(Result<std::int32_t> pVal) = 0;

  /// The bytes from one line to the next.
  virtual Status get_ImageLineSize(Result<std::int32_t> pVal) = 0;

  /// The distance of two columns in millimetres; 1 in a new image.
  virtual Status get_XSpacing(Result<float> pVal) = 0;

  /// Sets it.
  virtual Status put_XSpacing(float newVal) = 0;

  /// The distance of two lines in millimetres; 1 in a new image.
  virtual Status get_yspacing(Result<float> pVal) = 0;

  /// Sets it.
  virtual Status put_yspacing(float newVal) = 0;

  /// Makes all pixels anew, for `nFrames` frames of `dx` by `dy`. `nBitsStored` bits of a sample count. `Signed` is true at exactly
  /// -1; then all samples are the least number of these bits at first, otherwise 0.
  virtual Status CreateImage(std::int32_t dx, std::int32_t dy, std::int32_t nFrames,
                             _EnumImageType type, std::int32_t nBitsStored, VariantBool Signed) = 0;

  /// Gives the bytes of `dx` pixels of line `y` from column `x` on: as many whole pixels as the line has from there, and as fit into
  /// `bufLength` bytes. `pLine` gets an array of bytes from index 0, a sample of more bytes with its lowest one first.
  virtual Status GetLine(std::int32_t nFrame, std::int32_t x, std::int32_t y, std::int32_t dx,
                         std::int32_t bufLength, Result<Variant> pLine) = 0;

  /// Puts them, from an array of bytes of one dimension. What goes beyond the line, `bufLength` or the array is left out.
  virtual Status PutLine(std::int32_t nFrame, std::int32_t x, std::int32_t y, std::int32_t dx,
                         std::int32_t bufLength, const Variant& pLine) = 0;

  /// Frees the pixels.
  virtual Status Dispose() = 0;

  /// Scales all frames. Below 0.3 each new pixel is the mean of those that it covers, otherwise it is interpolated. kNotImplemented for
  /// IMAGE_GRAY32.
  virtual Status Resize(double zoom) = 0;

  /// The least and the greatest of the first samples, as many as all frames together have lines.
  virtual Status GetMinMax(Out<std::int32_t> Min, Out<std::int32_t> Max) = 0;

  /// Spreads the values from `wmin` to `wmax` over all that BitsStored can hold; both are taken through the modality lookup backwards
  /// first. Lower values become the least, higher ones the greatest.
  virtual Status ApplyVOILut(std::int32_t wmin, std::int32_t wmax) = 0;

  /// Turns gray into colours by an ILut, which is told the range that BitsStored can hold. Null does nothing.
  virtual Status ApplyLUT(IDispatch* Lut) = 0;

  /// Swaps dark and bright.
  virtual Status Invert() = 0;

  /// Succeeds and does nothing.
  virtual Status SaveRawFile(const String& File) = 0;

  /// Sets the pair that leads from samples to values of the modality.
  virtual Status SetModalityLUT(float rescale, float intercept) = 0;

  /// Gives that pair; 1 and 0 at first.
  virtual Status GetModalityLUT(Out<float> rescale, Out<float> intercept) = 0;

  /// Whether enlarged pixels are to be smoothed: any number but 0 says so.
  virtual Status SetInterpolation(std::int32_t interpolation) = 0;

  /// 1 or 0; 1 in a new image.
  virtual Status GetInterpolation(Result<std::int32_t> interpolation) = 0;

  /// Draws the first frame over the bitmap `hDIB`, which has 32 bits a pixel and stays the caller's. `viewPars` says what is in view, with
  /// which window and colours; without an ILut there gray is drawn as red. `trasp` is how much it covers, from 0 to 1. Samples of 0
  /// cover nothing. The other arguments change nothing, and `pVal` is not written.
  /// Fails with "CImageModule::MergeOnDIB: Bad HDIB handle", "CImageModule::MergeOnDIB: Unsupported DIB format, onli BI_RGB",
  /// "CImageModule::MergeOnDIB: 32 bits not supported yet"; kNoInterface for `viewPars` that are no IViewParameters.
  virtual Status MergeOnDIB(Handle hDIB, std::int32_t Idx, std::int32_t x, std::int32_t y,
                            IDispatch* viewPars, _EnumMergeType mergeType, float trasp,
                            Optional<const Variant&> mask, Result<Variant> pVal) = 0;

  /// Succeeds and does nothing.
  virtual Status MergeOnDC() = 0;

  /// Succeeds and does nothing.
  virtual Status RegionGrow() = 0;

  /// Whether low values are bright.
  virtual Status get_Monochrome1(Result<VariantBool> pVal) = 0;

  /// Whether samples have a sign.
  virtual Status get_Signed(Result<VariantBool> pVal) = 0;

  /// Changes it: half the range is added to every sample.
  virtual Status put_Signed(VariantBool newVal) = 0;

  /// Where the image begins across; 0 at first. Kept for hosts.
  virtual Status get_x0(Result<float> pVal) = 0;

  /// Sets it.
  virtual Status put_x0(float newVal) = 0;

  /// Where the image begins down; 0 at first. Kept for hosts.
  virtual Status get_y0(Result<float> pVal) = 0;

  /// Sets it.
  virtual Status put_y0(float newVal) = 0;

  /// Succeeds and does nothing.
  virtual Status DrawBlended() = 0;

  /// How many samples have which value, as an array of numbers of 32 bits, from index 0, with an entry for each value that BitsStored
  /// can hold. It counts the first line once for each line; of IMAGE_GRAY32 and IMAGE_RGB all entries are 0. Fails with "Cannot
  /// allocate histogram array".
  virtual Status get_Histogram(Result<Variant> pVal) = 0;
};

}  // namespace tessaret
