// Turns byte streams into data sets and back, for the three native encodings, and reads and writes DICOM files
// (DICOM PS3.5, 7; PS3.10, 7). Each load or save has a coder of its own: construct, attach the dictionary, load or save,
// destroy. The association of the network derives from it, so that its messages come through the same readers.
//
// One thread at a time; the dictionary may be shared.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/dicom_object.h"
#include "core/file_buffer.h"
#include "core/parse_oddity.h"
#include "core/rtc.h"
#include "core/transfer_syntax.h"

namespace tessaret {

/// How deep sequences may nest, in levels of sequence and item. Real reports reach about 15. A stream or an object that is
/// deeper is refused, because reading and writing use one stack frame a level.
inline constexpr std::int32_t kMaxNesting = 256;
/// Each level is one call for the sequence and one for the item.
inline constexpr std::int32_t kMaxDepth = 2 * kMaxNesting;

/// Where and why the last parse ended before it had all that the stream was to hold. Only a missing delimiter at the end of the
/// stream leaves a note behind a parse that answers true.
struct ParseStop {
  enum class Why {
    kNone,        // it came to its end
    kTruncated,   // the stream ended within an element
    kMissingEnd,  // the stream ended where the delimiter of a sequence, an item or fragments was due
    kStrayTag,    // a structural tag that is no item and no delimiter
    kUnknownSyntax,  // the meta header names a transfer syntax that is in no table
    kPixelData,      // the pixel data was not asked for
    kOrphanItem,     // an item with no element before it, or an element that the object refused
    kTooDeep,        // sequences nested deeper than kMaxNesting
    kTooLong,        // a length beyond what the stream says it holds
  };
  Why why = Why::kNone;
  // Stream offset of the element that could not be read, modulo 4 GiB like Buffer::Position; of the end of the stream, with
  // group and element 0, where a delimiter is missing.
  std::uint64_t position = 0;
  std::uint16_t group = 0;
  std::uint16_t element = 0;
};

class DataSetCoder {
 public:
  DataSetCoder() = default;
  /// Works with `dictionary`, which is not owned and must outlive the coder; null leaves implicit elements untyped.
  explicit DataSetCoder(const RTC* dictionary) : Dictionary(dictionary) {}
  DataSetCoder(const DataSetCoder&) = delete;
  DataSetCoder& operator=(const DataSetCoder&) = delete;
  virtual ~DataSetCoder();

  // Readers: append what `buffer` holds to `object` and answer true at the end of the stream or a delimiter. False after
  // a failure, with everything that could be read in `object`; ErrorText() is set where a failure has words. Throws
  // std::bad_alloc. `depth` is 0 for a data set and more within its sequences.
  // Writers: pop `object` empty into `buffer`. False, with the rest destroyed, when it cannot be encoded. Throw
  // std::bad_alloc: then `object` keeps its elements, but items and fragments that were written are empty, and `buffer`
  // has a part of the bytes.

  virtual bool Implicit_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object, std::int32_t depth);
  virtual bool Implicit_ParseDCMIntoRawVR(DICOMObject& object, Buffer& buffer, std::int32_t depth);
  virtual bool ImplicitLittleIn(Buffer& buffer, DICOMObject& object);
  virtual bool ImplicitLittleOut(DICOMObject& object, Buffer& buffer);
  virtual bool Explicit_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object, std::int32_t depth);
  virtual bool Explicit_ParseDCMIntoRawVR(DICOMObject& object, Buffer& buffer, std::int32_t depth);
  virtual bool ExplicitLittleIn(Buffer& buffer, DICOMObject& object);
  virtual bool ExplicitLittleOut(DICOMObject& object, Buffer& buffer);
  virtual bool ExplicitBigIn(Buffer& buffer, DICOMObject& object);
  virtual bool ExplicitBigOut(DICOMObject& object, Buffer& buffer);
  /// Reads meta header and data set: starts with `code`, and goes on with the transfer syntax that the meta header names.
  /// Without `loadPixels` the parse ends at (7FE0,0010) with false, that element being there without its bytes.
  virtual bool File_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object, std::int32_t code,
                                      bool loadPixels);
  /// Writes meta header and data set, switching to the transfer syntax of (0002,0010) behind the meta header. False for a
  /// syntax that is in no table.
  virtual bool File_ParseDCMIntoRawVR(DICOMObject& object, Buffer& buffer, std::int32_t code);
  /// Writes the fragments that `items` hold, and the delimiter. The item objects are emptied.
  virtual bool WriteEncapsulated(ItemArray& items, Buffer& buffer);
  /// Reads fragments up to the delimiter, or the end of the stream, as items of the element that was pushed last.
  virtual bool ReadEncapsulated(Buffer& buffer, DICOMObject& object);
  /// Builds group 0002 anew. With `mode` 3 the object's own (0002,0010) is kept, with 2 it becomes implicit little endian.
  virtual bool AddMetaHeader(DICOMObject& object, std::int32_t mode);

  /// Loads a DICOM file. The object, which the caller owns, or null with ErrorText() set. A stream that ends early, or
  /// cannot be read on, gives the object as far as it came: see LastStop(). `strict` refuses a file without the "DICM"
  /// mark. `fileBuffer` is used when it is not null, and left open.
  std::unique_ptr<DICOMDataObject> LoadFile(const char* path, bool loadPixels, bool strict,
                                            FileBuffer* fileBuffer = nullptr);
  /// The same from a block of memory, which stays the caller's and of which at most 2^31 - 1 bytes are taken. Here every parse
  /// that does not come to the end of the block gives null, also one that ends at pixel data that is not wanted.
  std::unique_ptr<DICOMDataObject> LoadMemory(const void* bytes, std::uint64_t size,
                                              bool loadPixels, bool strict);
  /// Loads a bare data set in the encoding `code`, as LoadFile loads a file: no preamble, mark or meta header is looked for.
  std::unique_ptr<DICOMDataObject> LoadBareFile(const char* path, std::int32_t code,
                                                bool loadPixels, FileBuffer* fileBuffer = nullptr);
  /// Loads from a block of memory what LoadFile loads from a file: the object as far as it came. With a `code` that is
  /// not 0 there is a bare data set in that encoding, and `strict` counts for nothing. More than 2^31 - 1 bytes are refused.
  std::unique_ptr<DICOMDataObject> LoadBlock(const void* bytes, std::uint64_t size, bool loadPixels,
                                             bool strict, std::int32_t code = 0);
  /// Saves `object`, which is popped empty, so that callers pass a shallow clone. Mode 1: implicit little endian without
  /// preamble; 2: preamble, then implicit little endian without meta header; 3: preamble, meta header, and the data set in
  /// the syntax of (0002,0010). The file comes to its place whole, or what was there stays and the answer is false, with
  /// the system's words in ErrorText() after an error of the file system. Any other mode and a null path are refused, with
  /// the words and the number of the save before cleared.
  bool SaveFile(const char* path, std::int32_t mode, DICOMObject& object,
                FileBuffer* fileBuffer = nullptr);

  /// Writes the very file that SaveFile of a shallow clone would write, and leaves `object` as it is: several threads may
  /// save one object, each by a coder of its own. The file differs in two cases: where only tags within items
  /// were changed in place, these elements stand where their old tags were, where a clone files them anew; and a descendant's
  /// AddMetaHeader and writers are not called.
  bool SaveKeeping(const char* path, std::int32_t mode, const DICOMObject& object);

  /// Appends the bytes of that file to `bytes`. False, with what was written so far, where the object cannot be encoded. Throws
  /// std::bad_alloc.
  bool SaveToMemory(std::int32_t mode, const DICOMObject& object, std::vector<std::uint8_t>& bytes);

  /// What went wrong, or null. Loads and saves start without words; what the other readers and writers find stays from call
  /// to call.
  [[nodiscard]] const char* ErrorText() const { return errorText_ ? errorText_->c_str() : nullptr; }
  /// The system's error number when the last save could not open its place, which has no words; otherwise 0.
  [[nodiscard]] int LastOpenError() const { return systemError_; }
  /// Whether memory ended during the last load by one of the functions above that give an object. Its words are those of any
  /// bytes that cannot be read.
  [[nodiscard]] bool LackedMemory() const { return lackedMemory_; }
  /// Replaces the words; null clears them.
  void SetError(const char* text) noexcept;
  /// How the last parse ended. A load starts without a note, and so does a parse of a file or of a data set (depth 0);
  /// ReadEncapsulated by itself leaves one that is there.
  [[nodiscard]] const ParseStop& LastStop() const { return stop_; }
  /// What was odd in what was read. A load starts without, and so does a parse of a data set (depth 0); a parse of a file and
  /// ReadEncapsulated by themselves add to what is there.
  [[nodiscard]] std::span<const ParseOddity> Oddities() const { return oddities_.All(); }
  void Note(const ParseOddity& oddity) { oddities_.Note(oddity); }
  /// Whether the level that was read last ended by a delimiter; for the readers, which may be several for one stream.
  [[nodiscard]] bool EndedByDelimiter() const { return endedByDelimiter_; }
  void NoteEnd(bool byDelimiter) { endedByDelimiter_ = byDelimiter; }
  /// How the last parse of a file read when it ended: the encoding of the data set, or that of the meta header where no data
  /// set was met. 0 before the first, and for a stream without a byte.
  [[nodiscard]] std::int32_t LastCode() const { return lastCode_; }
  void NoteCode(std::int32_t code) { lastCode_ = code; }
  /// Notes why a parse ends. The first note counts: it comes from the innermost level. Always false.
  bool Stop(const ParseStop& stop);

  const RTC* Dictionary = nullptr;  // not owned
  /// Values of pixel data and fragments with more bytes than this are stepped over by readers that read pixels: see
  /// VR::IsSteppedOver. The bytes are not looked at where the stream can go ahead without them.
  std::uint32_t LongestPixelValue = kUndefinedLength;
  bool FileMode = false;  // true from the first load of a file on: group 0002 is a meta header
  /// Whether a save may take the place of a file that is there. Where not, the error is that the file exists, also for one
  /// that comes there during the save.
  bool ReplacesFiles = true;
  /// Goes into (0002,0016), 16 bytes, filled up with blanks.
  std::string CallingAETitle;

 private:
  /// Forgets how the last load ended.
  void StartLoad() noexcept;
  void StartDataSet() noexcept;
  /// Ends a load that memory, or anything else that is thrown, broke off: null with words.
  std::unique_ptr<DICOMDataObject> GiveUpLoad(bool lacksMemory, const char* words) noexcept;
  /// What `load()` gives, or the end of a load that something thrown broke off.
  template <class Load>
  std::unique_ptr<DICOMDataObject> Loaded(Load load);
  std::unique_ptr<DICOMDataObject> LoadFrom(FileBuffer& buffer, const char* path, bool loadPixels,
                                            bool strict);
  std::unique_ptr<DICOMDataObject> LoadBareFrom(FileBuffer& buffer, const char* path,
                                                std::int32_t code, bool loadPixels);
  /// Reads `buffer` to its end, also behind stray delimiters, each of which ends a parse. False with words after an error.
  bool ReadAll(FileBuffer& buffer, DICOMObject& object, std::int32_t code, bool loadPixels);
  /// Puts what `encode(FileBuffer&)` writes at `path`, whole or not at all.
  template <class Encode>
  bool SaveWhole(const char* path, std::int32_t mode, FileBuffer* fileBuffer, Encode encode);
  template <class Encode>
  bool SaveStaged(const char* path, FileBuffer& buffer, Encode encode);

  std::optional<std::string> errorText_;
  ParseStop stop_;
  ParseOddities oddities_;
  std::int32_t lastCode_ = 0;
  bool endedByDelimiter_ = false;
  bool lackedMemory_ = false;
  int systemError_ = 0;
};

}  // namespace tessaret
