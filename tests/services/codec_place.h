// Has the library of a test program start with the codecs of the tests, as it would with those installed beside it.
#pragma once

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"
#include "core/transfer_syntax.h"

namespace tessaret::test {

/// The toy is "DcmCodec.dll", and its syntax one that files may have. For AddGlobalTestEnvironment: the place counts from the first use
/// of a codec on, and the library reads its codecs once a process.
class CodecPlace : public testing::Environment {
 public:
  void SetUp() override {
    for (const char* name : {"dicom-dict.txt", "uid-dict.txt"})
      std::filesystem::create_symlink(std::filesystem::path(kDataDir) / name, folder_.File(name));
    std::filesystem::create_symlink(CodecFolder() + "toy_codec.so", folder_.File("DcmCodec.dll"));
    ::setenv("TESSARET_DATA_DIR", folder_.Path().c_str(), 1);
    TransferSyntaxCodec toy{};
    std::strncpy(toy.UID, kToy, sizeof toy.UID - 1);
    toy.Code = kExplicitLittle;
    AddedTransferSyntaxes().Add(toy);
  }

 private:
  TempFolder folder_;
};

}  // namespace tessaret::test
