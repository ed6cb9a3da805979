// Independent programs of the distribution and the files that they read and write. Tests skip what is not installed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "frame_format.h"
#include "support/bytes.h"

namespace tessaret::codecs::test {

bool IsInstalled(const std::string& program);

/// Runs a program, of which nothing is seen, and waits for it. Whether it ended well.
bool RunProgram(const std::vector<std::string>& command);

/// A file with one frame of this format: native where `syntax` is that of explicit little endian, otherwise `pixels` is a code stream.
tessaret::test::Bytes DicomFile(const FrameFormat& format, std::string_view syntax,
                                const tessaret::test::Bytes& pixels);

inline constexpr std::string_view kExplicitLittle = "1.2.840.10008.1.2.1";

/// The pixels of a native file in explicit little endian, as many bytes as the format means.
tessaret::test::Bytes NativePixels(const tessaret::test::Bytes& file, const FrameFormat& format);

/// All fragments of a file of one frame.
tessaret::test::Bytes CodeStream(const tessaret::test::Bytes& file);

/// The samples of a PGM or PPM file in the format's layout.
tessaret::test::Bytes PnmPixels(const tessaret::test::Bytes& file, const FrameFormat& format);

}  // namespace tessaret::codecs::test
