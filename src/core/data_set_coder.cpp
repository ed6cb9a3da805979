#include "core/data_set_coder.h"

#include "core/element_reader.h"
#include "core/element_writer.h"
#include "core/meta_header.h"
#include "core/window_input.h"

namespace tessaret {
namespace {

// Each way to read has a frame of its own: through streams every level of nesting is another call, and the stack is to hold
// all that kMaxNesting allows.

template <class Read, class... Source>
[[gnu::noinline]] bool ReadInPlace(DataSetCoder& coder, Read& read, Source&... source) {
  WindowInput input(source...);
  ElementReader reader(coder, input);
  return read(reader);
}

template <class Read>
[[gnu::noinline]] bool ReadThroughStream(DataSetCoder& coder, Read& read, Buffer& buffer) {
  BufferInput input(coder, buffer);
  ElementReader reader(coder, input);
  return read(reader);
}

/// Runs `read` on an ElementReader over the quickest input that the buffer allows.
template <class Read>
bool WithReader(DataSetCoder& coder, Buffer& buffer, Read read) {
  if (auto* file = dynamic_cast<FileBuffer*>(&buffer); file != nullptr) {
    if (FileStream* stream = file->LendStream(); stream != nullptr)
      return ReadInPlace(coder, read, *file, *stream);
  } else if (auto* memory = dynamic_cast<MemoryBuffer*>(&buffer); memory != nullptr) {
    if (const std::uint8_t* block = memory->LendBlock(); block != nullptr)
      return ReadInPlace(coder, read, *memory, block);
  }
  return ReadThroughStream(coder, read, buffer);
}

void TraceStart(std::string_view words) {
  if (IsDumping(kDumpParse)) AppendToDump(words);
}

}  // namespace

DataSetCoder::~DataSetCoder() = default;

void DataSetCoder::SetError(const char* text) noexcept {
  if (text == nullptr) {
    errorText_.reset();
    return;
  }
  try {
    errorText_ = text;
  } catch (const std::bad_alloc&) {
    errorText_ = "No memory";  // short enough to need none
  }
}

void DataSetCoder::StartDataSet() noexcept {
  stop_ = {};
  oddities_.Clear();
}

bool DataSetCoder::Stop(const ParseStop& stop) {
  if (stop_.why == ParseStop::Why::kNone) stop_ = stop;
  return false;
}

bool DataSetCoder::Implicit_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object,
                                              std::int32_t depth) {
  if (depth == 0) StartDataSet();
  return WithReader(*this, buffer, [&](auto& reader) {
    return reader.ReadLevel(object, ElementForm::kImplicit, depth);
  });
}

bool DataSetCoder::Implicit_ParseDCMIntoRawVR(DICOMObject& object, Buffer& buffer,
                                              std::int32_t depth) {
  return ElementWriter(*this, buffer).WriteLevel(object, ElementForm::kImplicit, depth);
}

bool DataSetCoder::ImplicitLittleIn(Buffer& buffer, DICOMObject& object) {
  TraceStart(parse_trace::kImplicitLittleIn);
  buffer.SetInEndian(kLittleEndian);
  return Implicit_ParseRawVRIntoDCM(buffer, object, 0);
}

bool DataSetCoder::ImplicitLittleOut(DICOMObject& object, Buffer& buffer) {
  TraceStart(parse_trace::kImplicitLittleOut);
  buffer.SetOutEndian(kLittleEndian);
  return Implicit_ParseDCMIntoRawVR(object, buffer, 0);
}

bool DataSetCoder::Explicit_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object,
                                              std::int32_t depth) {
  if (depth == 0) StartDataSet();
  return WithReader(*this, buffer, [&](auto& reader) {
    return reader.ReadLevel(object, ElementForm::kExplicit, depth);
  });
}

bool DataSetCoder::Explicit_ParseDCMIntoRawVR(DICOMObject& object, Buffer& buffer,
                                              std::int32_t depth) {
  return ElementWriter(*this, buffer).WriteLevel(object, ElementForm::kExplicit, depth);
}

bool DataSetCoder::ExplicitLittleIn(Buffer& buffer, DICOMObject& object) {
  TraceStart(parse_trace::kExplicitLittleIn);
  buffer.SetInEndian(kLittleEndian);
  return Explicit_ParseRawVRIntoDCM(buffer, object, 0);
}

bool DataSetCoder::ExplicitLittleOut(DICOMObject& object, Buffer& buffer) {
  TraceStart(parse_trace::kExplicitLittleOut);
  buffer.SetOutEndian(kLittleEndian);
  return Explicit_ParseDCMIntoRawVR(object, buffer, 0);
}

bool DataSetCoder::ExplicitBigIn(Buffer& buffer, DICOMObject& object) {
  TraceStart(parse_trace::kExplicitBigIn);
  buffer.SetInEndian(kBigEndian);
  return Explicit_ParseRawVRIntoDCM(buffer, object, 0);
}

bool DataSetCoder::ExplicitBigOut(DICOMObject& object, Buffer& buffer) {
  TraceStart(parse_trace::kExplicitBigOut);
  buffer.SetOutEndian(kBigEndian);
  return Explicit_ParseDCMIntoRawVR(object, buffer, 0);
}

bool DataSetCoder::File_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object, std::int32_t code,
                                          bool loadPixels) {
  stop_ = {};
  return WithReader(*this, buffer,
                    [&](auto& reader) { return reader.ReadFile(object, code, loadPixels); });
}

bool DataSetCoder::File_ParseDCMIntoRawVR(DICOMObject& object, Buffer& buffer, std::int32_t code) {
  return ElementWriter(*this, buffer).WriteFile(object, code);
}

bool DataSetCoder::WriteEncapsulated(ItemArray& items, Buffer& buffer) {
  return ElementWriter(*this, buffer).WriteFragments(items);
}

bool DataSetCoder::ReadEncapsulated(Buffer& buffer, DICOMObject& object) {
  return WithReader(*this, buffer, [&](auto& reader) { return reader.ReadFragments(object); });
}

bool DataSetCoder::AddMetaHeader(DICOMObject& object, std::int32_t mode) {
  BuildMetaHeader(object, mode, CallingAETitle);
  return true;
}

}  // namespace tessaret
