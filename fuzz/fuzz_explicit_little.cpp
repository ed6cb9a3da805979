// A data set in explicit little endian.
#include "native_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tessaret::DataSetCoder;
  tessaret::fuzz::CheckNativeEncoding(
      tessaret::fuzz::Input(data, size),
      {&DataSetCoder::ExplicitLittleIn, &DataSetCoder::ExplicitLittleOut,
       tessaret::ElementForm::kExplicit});
  return 0;
}
