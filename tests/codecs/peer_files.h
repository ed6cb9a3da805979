// Independent programs of the distribution and the files that they read and write. `./dev test` installs them
// all: a test that misses one fails, since a comparison that was not made shows nowhere else.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "frame_format.h"
#include "support/bytes.h"

namespace tessaret::codecs::test {

using tessaret::test::ReadBytes;
using tessaret::test::WriteBytes;

inline constexpr std::string_view kExplicitLittle = "1.2.840.10008.1.2.1";

/// Whether the distribution's program can be started; a failure says which one is missing.
testing::AssertionResult HasProgram(const std::string& program);

/// Runs a program, of which nothing is seen, and waits for it. Whether it ended well.
bool RunProgram(const std::vector<std::string>& command);

/// The same for a command of the shell.
bool Run(const std::string& command);

/// A file with one frame of this format: native where the syntax is kExplicitLittle, otherwise `pixels` is a code stream, which becomes
/// one fragment.
tessaret::test::Bytes DicomFile(const FrameFormat& format, std::string_view syntax,
                                const tessaret::test::Bytes& pixels);
void WriteDicomFile(const std::string& path, const FrameFormat& format, std::string_view syntax,
                    const tessaret::test::Bytes& pixels);

/// The value of Pixel Data of a file of one frame in explicit little endian: native bytes, or all fragments in a row.
tessaret::test::Bytes PixelData(const tessaret::test::Bytes& file);
tessaret::test::Bytes ReadPixelData(const std::string& path);

/// The same of a native file, as many bytes as the format means.
tessaret::test::Bytes NativePixels(const tessaret::test::Bytes& file, const FrameFormat& format);

/// A PGM or PPM file of a frame whose samples are unsigned.
tessaret::test::Bytes PnmFile(const tessaret::test::Bytes& frame, const FrameFormat& format);

/// The samples of such a file in the format's layout.
tessaret::test::Bytes PnmPixels(const tessaret::test::Bytes& file, const FrameFormat& format);

}  // namespace tessaret::codecs::test
