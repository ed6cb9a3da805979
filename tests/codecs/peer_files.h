// Minimal DICOM files around frames and code streams, for independent programs to read, and what is in those they write.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs::test {

inline constexpr const char* kExplicitLittle = "1.2.840.10008.1.2.1";

/// Native pixels where the syntax is kExplicitLittle, otherwise one frame as one fragment.
void WriteDicomFile(const std::string& path, const FrameFormat& format, const char* syntax,
                    Bytes pixels);

/// The value of Pixel Data of a file of one frame: native bytes, or all fragments in a row. Empty where there is none.
std::vector<std::uint8_t> ReadPixelData(const std::string& path);

std::vector<std::uint8_t> ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, Bytes bytes);

/// Whether the distribution's program can be started.
bool HasProgram(const std::string& program);

/// Runs a command of the shell in silence. Whether it said that all is well.
bool Run(const std::string& command);

}  // namespace tessaret::codecs::test
