#include "codec_series.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include "core/codec_registry.h"
#include "core/data_set_coder.h"
#include "core/module_dictionaries.h"
#include "files.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

constexpr CodecMethod kMethods[] = {
    {"rle", "1.2.840.10008.1.2.5", "CTRLE", false},
    {"jpll", "1.2.840.10008.1.2.4.70", "CTJPLL", false},
    {"jpls", "1.2.840.10008.1.2.4.80", "CTJPLS", false},
    {"j2k", "1.2.840.10008.1.2.4.90", "CTJ2K", false},
    {"jpeg", "1.2.840.10008.1.2.4.50", "CTJPEG", true},
    {"jpegext", "1.2.840.10008.1.2.4.51", "CTJPEGX", false},
};

/// What the other measuring programs compress of a series of 400.
constexpr std::size_t kCompressedStep = 4;
/// What the other measuring programs look at.
constexpr std::size_t kSumStep = 97;

constexpr TagKey kRowsTag = 0x00280010;
constexpr TagKey kColumnsTag = 0x00280011;
constexpr TagKey kBitsAllocatedTag = 0x00280100;
constexpr TagKey kBitsStoredTag = 0x00280101;
constexpr TagKey kHighBitTag = 0x00280102;

std::uint16_t Number(const DICOMObject& object, TagKey tag) {
  return object.GetUINT16(GroupOf(tag), ElementOf(tag));
}

void SetNumber(DICOMObject& object, TagKey tag, std::uint16_t value) {
  VR* vr = object.GetVR(GroupOf(tag), ElementOf(tag));
  if (vr == nullptr) throw std::runtime_error("an image without its sizes");
  vr->ReplaceValue(&value, sizeof value);
}

VR& PixelsOf(const DICOMObject& image) {
  VR* pixels = image.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
  if (pixels == nullptr) throw std::runtime_error("an image without pixels");
  return *pixels;
}

std::uint16_t SampleAt(const std::uint8_t* samples, std::size_t index) {
  std::uint16_t sample = 0;
  std::memcpy(&sample, samples + index * sizeof sample, sizeof sample);
  return sample;
}

/// Keeps the upper 8 of 12 bits.
void ReduceToBytes(DICOMObject& image) {
  VR& pixels = PixelsOf(image);
  std::vector<std::uint8_t> bytes(pixels.Length / 2);
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    bytes[at] = static_cast<std::uint8_t>(SampleAt(pixels.Data, at) >> 4);
  }
  pixels.ReplaceValue(bytes.data(), static_cast<std::uint32_t>(bytes.size()), true);
  SetNumber(image, kBitsAllocatedTag, 8);
  SetNumber(image, kBitsStoredTag, 8);
  SetNumber(image, kHighBitTag, 7);
}

SeriesImage Load(const fs::path& path) {
  DataSetCoder coder(&ModuleDictionary());
  SeriesImage image = coder.LoadFile(path.c_str(), true, false);
  if (!image || coder.LastStop().why != ParseStop::Why::kNone) {
    const char* why = coder.ErrorText();
    throw std::runtime_error("loading " + path.string() + ": " + (why != nullptr ? why : "failed"));
  }
  return image;
}

void Save(const DICOMObject& image, const fs::path& path) {
  DataSetCoder coder(&ModuleDictionary());
  if (coder.SaveKeeping(path.c_str(), 3, image)) return;
  const char* why = coder.ErrorText();
  throw std::runtime_error("saving " + path.string() + ": " + (why != nullptr ? why : "failed"));
}

}  // namespace

std::span<const CodecMethod> CodecMethods() { return kMethods; }

const CodecMethod& MethodOfJob(std::string_view job) {
  const std::string_view rest = job.substr(job.find('.') + 1);
  const std::string_view name = rest.substr(0, rest.find('.'));
  for (const CodecMethod& method : kMethods) {
    if (method.name == name) return method;
  }
  throw std::logic_error("a job of no method");
}

bool HasCodec(const CodecMethod& method) {
  return ModuleCodecRegistry().Find(method.uid) != nullptr;
}

void Compress(DICOMObject& object, const CodecMethod& method) {
  DcmCompEngine engine;
  if (!engine.Compress(&object, method.uid, nullptr)) throw std::runtime_error(engine.ErrorText);
}

void Decompress(DICOMObject& object) {
  DcmCompEngine engine;
  if (!engine.Decompress(&object, nullptr, nullptr)) throw std::runtime_error(engine.ErrorText);
}

SeriesImage CopyOf(const DICOMObject& image) {
  SeriesImage copy(image.Clone(true));
  if (!copy) throw std::bad_alloc();
  return copy;
}

std::vector<SeriesImage> LoadImages(const fs::path& folder, std::size_t step) {
  std::vector<SeriesImage> images;
  for (const fs::path& file : FilesIn(folder, step)) images.push_back(Load(file));
  if (images.empty()) throw std::runtime_error("no files in " + folder.string());
  return images;
}

std::vector<SeriesImage> LoadNativeFor(const CodecMethod& method, const fs::path& folder) {
  std::vector<SeriesImage> images = LoadImages(folder, kCompressedStep);
  if (method.takesBytes) {
    for (const SeriesImage& image : images) ReduceToBytes(*image);
  }
  return images;
}

std::uint64_t NativeBytes(const DICOMObject& image) {
  return std::uint64_t{Number(image, kRowsTag)} * Number(image, kColumnsTag) *
         (Number(image, kBitsAllocatedTag) / 8);
}

std::uint64_t CompressedBytes(const DICOMObject& image) {
  VR& pixels = PixelsOf(image);
  std::uint64_t bytes = 0;
  for (std::uint32_t at = 1; at < pixels.ItemCount(); ++at) {
    const VR* fragment = pixels.GetItem(at)->GetVR(kStructuralGroup, kItemElement);
    if (fragment != nullptr) bytes += fragment->Length;
  }
  return bytes;
}

std::uint64_t SumOfSamples(const DICOMObject& image) {
  const VR& pixels = PixelsOf(image);
  if (pixels.Data == nullptr) throw std::runtime_error("pixels that are not native");
  std::uint64_t sum = 0;
  const bool isBytes = Number(image, kBitsAllocatedTag) == 8;
  const std::size_t samples = isBytes ? pixels.Length : pixels.Length / 2;
  for (std::size_t at = 0; at < samples; at += kSumStep) {
    sum += isBytes ? std::uint16_t{pixels.Data[at]} : SampleAt(pixels.Data, at);
  }
  return sum;
}

void DropPixels(DICOMObject& image) {
  delete image.Remove(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
}

std::string CompressibleMethods() {
  std::string names;
  for (const CodecMethod& method : kMethods) {
    if (HasCodec(method)) names.append(" ").append(method.name);
  }
  return names;
}

void WriteCompressedSeries(const fs::path& native, const fs::path& data) {
  for (const CodecMethod& method : kMethods) {
    fs::remove_all(data / method.folder);
    if (!HasCodec(method)) continue;
    fs::create_directories(data / method.folder);
    for (const fs::path& file : FilesIn(native, kCompressedStep)) {
      const SeriesImage image = Load(file);
      if (method.takesBytes) ReduceToBytes(*image);
      Compress(*image, method);
      Save(*image, data / method.folder / file.filename());
    }
  }
}

}  // namespace tessaret::bench
