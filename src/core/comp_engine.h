// The compression engine: from compressed pixel data to native and back, by codecs that are found at run time.
//
// An engine lives for one task, in one thread; codecs that it used stay loaded until it is destroyed. Objects stay the caller's.
// On failure an object is as it was before, whatever the codec did to its elements, with one exception: once frames are being
// decompressed, the offset table is gone.
#pragma once

#include <string>
#include <vector>

#include "core/codec_call.h"
#include "core/codec_registry.h"
#include "core/dicom_object.h"

namespace tessaret {

class DcmCompEngine {
 public:
  /// With the codecs of this process.
  DcmCompEngine() : DcmCompEngine(ModuleCodecRegistry()) {}
  /// The registry must live longer.
  explicit DcmCompEngine(CodecRegistry& registry) : registry_(registry) {}
  DcmCompEngine(const DcmCompEngine&) = delete;
  DcmCompEngine& operator=(const DcmCompEngine&) = delete;
  /// Gives the codecs back.
  virtual ~DcmCompEngine();

  /// Makes the pixel data native and names explicit little endian in (0002,0010). `syntax` is the UID of what it is in; null
  /// stands for what the object names. Extended offset tables go with the frames that they are about, unless the codec has set them; so they
  /// do when compressing. True also where there is nothing to do: the object names no syntax or a native one,
  /// or its pixel data has no fragments. False for an unknown syntax, a missing codec or one that fails, missing pixel data, and
  /// sizes that do not go together or that memory cannot hold. `progress` goes to the codec as it is.
  bool Decompress(DICOMObject* object, const char* syntax, void* progress);

  /// Whether Compress to `syntax` has a chance. Changes nothing.
  bool CanCompress(DICOMObject* object, const char* syntax, void* progress);

  /// Compresses native pixel data and names `syntax` in (0002,0010). A native syntax changes (0002,0010) only: the bytes stay
  /// in the order in which they are. True also where the pixel data has no bytes. False as for Decompress, and where the
  /// pixel data is shorter than its frames. Prints the offsets of two or more frames to standard error.
  bool Compress(DICOMObject* object, const char* syntax, void* progress);

  /// Why the last operation failed: the codec's words where it had some. Empty after success.
  std::string ErrorText;

 private:
  template <class Operation>
  bool Attempt(DICOMObject* object, Operation operation);
  bool TryDecompress(DICOMObject& object, const char* syntax, void* progress);
  bool TryCanCompress(DICOMObject& object, const char* syntax, void* progress);
  bool TryCompress(DICOMObject& object, const char* syntax, void* progress);

  bool DecompressPixels(DICOMObject& object, CodecTarget target, CodecEntry& entry, VR& pixels);
  bool DecompressFrames(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info,
                        VR& native);
  bool CompressPixels(DICOMObject& object, CodecTarget target, CodecEntry& entry, VR& pixels);
  bool CompressFrames(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info,
                      const VR& native);

  CodecEntry* FindEntry(const std::string& uid);
  /// True once this engine holds the codec of the entry, be it from before.
  bool Acquire(CodecEntry& entry);
  /// False for a codec that a thread of the parent of this process was calling.
  bool IsThere(const CodecEntry& entry);
  bool ReadInfo(const DICOMObject& object, ImageInfo& info);
  bool FailAtFrame(const CodecTarget& target, const CodecConversion& conversion,
                   std::uint32_t frame);
  /// False, with these words.
  bool Fail(std::string words);

  CodecRegistry& registry_;
  std::vector<CodecEntry*> acquired_;  // each once
};

}  // namespace tessaret
