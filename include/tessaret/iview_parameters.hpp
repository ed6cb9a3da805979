/// How an image is shown. Class "Tessaret.ViewParameter".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/img_flip_mode.hpp"

namespace tessaret {

/// Which part of an image is in view, with which window, gamma and colours, and how it is mirrored or turned. It holds no pixels.
///
/// World coordinates are those of the image before it is mirrored or turned, in pixels; window coordinates are pixels of the window
/// or bitmap that it is shown in. Nothing is checked: a window without a width has an infinite zoom.
class IViewParameters : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02004};
  static constexpr const char* kName = "IViewParameters";

  /// The colour lookup, or null. The caller gets a reference of its own.
  virtual Status get_Lut(Result<IDispatch*> pVal) = 0;

  /// Sets it, with a reference of its own; null takes it away. Any object that can be called by name is accepted here; whether it is
  /// an ILut counts where the view is drawn. kNoInterface for others.
  virtual Status putref_Lut(IDispatch* newVal) = 0;

  /// The left end of what is in view, in world coordinates; 0 at first, as are the other three.
  virtual Status get_x0(Result<float> pVal) = 0;

  /// Sets the left end.
  virtual Status put_x0(float newVal) = 0;

  /// The upper end of what is in view.
  virtual Status get_y0(Result<float> pVal) = 0;

  /// Sets the upper end.
  virtual Status put_y0(float newVal) = 0;

  /// The right end of what is in view.
  virtual Status get_x1(Result<float> pVal) = 0;

  /// Sets the right end.
  virtual Status put_x1(float newVal) = 0;

  /// The lower end of what is in view.
  virtual Status get_y1(Result<float> pVal) = 0;

  /// Sets the lower end.
  virtual Status put_y1(float newVal) = 0;

  /// The middle of what is in view, across.
  virtual Status get_XCenter(Result<float> pVal) = 0;

  /// Moves what is in view there, without changing its size.
  virtual Status put_XCenter(float newVal) = 0;

  /// The middle of what is in view, down.
  virtual Status get_YCenter(Result<float> pVal) = 0;

  /// Moves what is in view there, without changing its size.
  virtual Status put_YCenter(float newVal) = 0;

  /// The exponent by which gray is bent; at or below 0 it is not. -1 at first.
  virtual Status get_Gamma(Result<float> pVal) = 0;

  /// Sets it.
  virtual Status put_Gamma(float newVal) = 0;

  /// The value that is shown black. -33000 here and in WindowMax says that no window was chosen yet.
  virtual Status get_WindowMin(Result<std::int32_t> pVal) = 0;

  /// Sets it.
  virtual Status put_WindowMin(std::int32_t newVal) = 0;

  /// The value that is shown white.
  virtual Status get_WindowMax(Result<std::int32_t> pVal) = 0;

  /// Sets it.
  virtual Status put_WindowMax(std::int32_t newVal) = 0;

  /// What was set last.
  virtual Status get_Flip(Result<_ImgFlipMode> pVal) = 0;

  /// Mirrors the view in these directions, on top of how it is mirrored and turned already: the same value set twice ends where it began.
  virtual Status put_Flip(_ImgFlipMode newVal) = 0;

  /// Whether black and white are swapped.
  virtual Status get_Invert(Result<VariantBool> pVal) = 0;

  /// Sets it; any value but 0 is true.
  virtual Status put_Invert(VariantBool newVal) = 0;

  /// Whether the image's own window is to be used. Kept for hosts; true at first.
  virtual Status get_UseVoiLut(Result<VariantBool> pVal) = 0;

  /// Sets it; any value but 0 is true.
  virtual Status put_UseVoiLut(VariantBool newVal) = 0;

  /// Whether colours are to be used. Kept for hosts: MergeOnDIB draws through a Lut whenever there is one.
  virtual Status get_UseLUT(Result<VariantBool> pVal) = 0;

  /// Sets it; any value but 0 is true.
  virtual Status put_UseLUT(VariantBool newVal) = 0;

  /// Whether enlarged pixels are to be smoothed. Kept for hosts; true at first.
  virtual Status get_Interpolate(Result<VariantBool> pVal) = 0;

  /// Sets it; any value but 0 is true.
  virtual Status put_Interpolate(VariantBool newVal) = 0;

  /// How many window pixels a world pixel has, for what is in view to fit a window of `dx` by `dy` pixels. By a quarter turn dx and dy
  /// are swapped first.
  virtual Status get_zoom(std::int32_t dx, std::int32_t dy, Result<float> pVal) = 0;

  /// Changes what is in view, around its middle, so that a window of `dx` by `dy` pixels shows it at this zoom. Below 0 nothing changes.
  virtual Status put_zoom(std::int32_t dx, std::int32_t dy, float zoom) = 0;

  /// Always 0.
  virtual Status get_Rotation(Result<float> pVal) = 0;

  /// Does nothing.
  virtual Status put_Rotation(float newVal) = 0;

  /// Turns the view by a quarter.
  virtual Status Rotate90() = 0;

  /// Neither mirrored nor turned any more. Flip keeps its value.
  virtual Status ResetTransform() = 0;

  /// Swaps left and right.
  virtual Status FlipHorz() = 0;

  /// Turns the view upside down.
  virtual Status FlipVert() = 0;

  /// How the view is mirrored and turned, as a matrix of 2 by 2, row by row: 1, 0, 0, 1 where it is not.
  virtual Status GetTransform(Out<std::int16_t> m00, Out<std::int16_t> m01, Out<std::int16_t> m10,
                              Out<std::int16_t> m11) = 0;

  /// Sets the matrix.
  virtual Status SetTransform(std::int16_t m00, std::int16_t m01, std::int16_t m10,
                              std::int16_t m11) = 0;

  /// Always true.
  virtual Status get_ValidView(Result<VariantBool> pVal) = 0;

  /// From window to world, whatever the name says: `x` and `y` are pixels of a window of `ViewDx` by `ViewDy` pixels, and become world
  /// coordinates.
  virtual Status TransformWorldToImage(std::int32_t ViewDx, std::int32_t ViewDy, InOut<float> x,
                                       InOut<float> y) = 0;

  /// From world to window, whatever the name says: `x` and `y` are world coordinates, and become pixels of a window of `ViewDx` by
  /// `ViewDy` pixels.
  virtual Status TransformImageToWorld(std::int32_t ViewDx, std::int32_t ViewDy, InOut<float> x,
                                       InOut<float> y) = 0;

  /// The corners x0, y0 and x1, y1, each taken through TransformWorldToImage for a window of `ImgDx` by `ImgDy` pixels and put in order,
  /// the smaller one first.
  virtual Status GetWorldViewport(std::int32_t ImgDx, std::int32_t ImgDy, Out<float> x0,
                                  Out<float> y0, Out<float> x1, Out<float> y1) = 0;

  /// Takes over all of another view but its Flip, whose effect is in the matrix; its Lut is shared. Fails with "CViewParameter::Copy:
  /// Bad source" for null and for an object that is no IViewParameters.
  virtual Status copy(IDispatch* pViewPars) = 0;

  /// Where the sides of the view lie in the patient. `Orientation` is that of the image, the letters of the rows, "\" and those of the
  /// columns, such as "L\P"; the answer has the same form. Null where no "\" is in it.
  virtual Status GetDicomOrientation(const String& Orientation,
                                     Result<String> pViewOrientation) = 0;
};

}  // namespace tessaret
