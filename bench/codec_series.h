// Series of one-frame images for the jobs of codecs: which methods there are, and the images in memory.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "core/comp_engine.h"
#include "core/dicom_object.h"

namespace tessaret::bench {

/// A way to compress, under the name that it has in those of jobs.
struct CodecMethod {
  std::string_view name;
  const char* uid;     // of the transfer syntax
  const char* folder;  // of the input that is compressed in this way
  bool takesBytes;     // compresses samples of 8 bits; 12 of 16 otherwise
};

std::span<const CodecMethod> CodecMethods();

/// The method of a job with the name "codec.METHOD.what".
const CodecMethod& MethodOfJob(std::string_view job);

/// Whether the codec library at hand serves the method.
bool HasCodec(const CodecMethod& method);

/// Compresses as an image workstation does: by an engine for the one object. Throws std::exception.
void Compress(DICOMObject& object, const CodecMethod& method);
/// The same back to native pixels, from whatever method the object names.
void Decompress(DICOMObject& object);

using SeriesImage = std::unique_ptr<DICOMObject>;

/// A copy of its own.
SeriesImage CopyOf(const DICOMObject& image);

/// Every `step`th file of a folder in the order of their names, as it is in there. Throws std::exception.
std::vector<SeriesImage> LoadImages(const std::filesystem::path& folder, std::size_t step);

/// Every fourth file of a native series of 12 bits, in samples that the method takes.
std::vector<SeriesImage> LoadNativeFor(const CodecMethod& method,
                                       const std::filesystem::path& folder);

/// Bytes that the pixels of the image have natively.
std::uint64_t NativeBytes(const DICOMObject& image);

/// Bytes of all fragments.
std::uint64_t CompressedBytes(const DICOMObject& image);

/// The sum of every 97th sample of native pixels, of 8 or of 16 bits.
std::uint64_t SumOfSamples(const DICOMObject& image);

/// Gives the memory of the pixels back; the image has none afterwards.
void DropPixels(DICOMObject& image);

/// What can be compressed of a native series goes into the folders of the methods below `data`. The text names those whose codecs
/// are there.
std::string CompressibleMethods();
void WriteCompressedSeries(const std::filesystem::path& native, const std::filesystem::path& data);

}  // namespace tessaret::bench
