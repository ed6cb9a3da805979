// A data set in explicit big endian.
#include "native_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tessaret::DataSetCoder;
  tessaret::fuzz::CheckNativeEncoding(tessaret::fuzz::Input(data, size),
                                      {&DataSetCoder::ExplicitBigIn, &DataSetCoder::ExplicitBigOut,
                                       tessaret::ElementForm::kExplicit});
  return 0;
}
