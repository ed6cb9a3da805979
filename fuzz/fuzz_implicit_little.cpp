// A data set in implicit little endian.
#include "native_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tessaret::DataSetCoder;
  tessaret::fuzz::CheckNativeEncoding(
      tessaret::fuzz::Input(data, size),
      {&DataSetCoder::ImplicitLittleIn, &DataSetCoder::ImplicitLittleOut,
       tessaret::ElementForm::kImplicit});
  return 0;
}
