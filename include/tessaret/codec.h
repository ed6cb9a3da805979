/// The contract of codec libraries, for C++ and for C (C11). A codec library is a shared object that the engine finds at run
/// time by its name; it turns the pixels of one frame from native to compressed and back, for the transfer syntaxes it lists.
///
/// Such a library exports the four functions DcmGetCodecCount, DcmGetCodecProps, DcmGetCodec and DcmFreeCodec, and hands out
/// codec objects with three operations. It links libtessaret for the functions tessaret_codec_*, by which it looks at elements
/// and changes them; at run time it meets the copy that the host has loaded. The engine loads "DcmCodec.dll" and then the
/// libraries that "DcmCodecMgr.ini" beside the process's program names, one a line. Each is looked for beside the data files
/// and beside the library itself, then by the loader. Files are read and written in the transfer syntaxes that the library itself
/// knows: the native ones, RLE, JPEG, JPEG-LS, JPEG 2000 and MPEG2 (DICOM PS3.6, A). What is in any other cannot be saved.
///
/// Threads: entry points are called by one thread at a time. So is a codec object: the engine holds all other threads back
/// while it converts the frames of one data set, from the first to the last, also where the object serves several syntaxes.
/// Where the props of the syntax have TESSARET_CODEC_CONCURRENT any number of threads call the one object at once, each with a
/// data set of its own; such a codec tells its failures by tessaret_codec_fail, for ErrorText is then neither read nor written
/// by the engine. In a child of fork a codec that another thread of the parent was calling is not called any more, but for a
/// concurrent one. Any fork of the process waits while an entry point runs, and while a library is loaded or unloaded: neither may
/// these fork, nor wait for a thread that does. They start a program by posix_spawn, which waits for nobody; operations may fork.
///
/// A codec may throw C++ exceptions: each is a failure. It never calls the engine or the classes of the library.
///
/// In C++ everything stands in the namespace tessaret, the exported functions too (their linkage is that of C).
#ifndef TESSARET_CODEC_H
#define TESSARET_CODEC_H

#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#else
#include <stddef.h>
#include <stdint.h>
#endif

/// Put before the entry points of a library, so that they are seen even if it hides its other symbols.
#define TESSARET_CODEC_EXPORT __attribute__((visibility("default")))

/// Bytes of DcmCodec::ErrorText, the terminating NUL included.
#define TESSARET_CODEC_ERROR_SIZE 512
/// Bytes of a UID and of ImageInfo::Photometric, the terminating NUL included.
#define TESSARET_CODEC_TEXT_SIZE 64
/// In CodecProps::Flags: the syntax is native, no pixels need to be converted for it.
#define TESSARET_CODEC_NATIVE 0x00000001u
/// In CodecProps::Flags: the codec object may be called by several threads at once.
#define TESSARET_CODEC_CONCURRENT 0x00000002u

#ifdef __cplusplus
namespace tessaret {
extern "C" {

/// A data set, and one element of it. Only pointers to them are handed about; what is in them the functions below tell.
class DICOMObject;
struct VR;
class DcmCodec;
#else
typedef struct DICOMObject DICOMObject;
typedef struct VR VR;
typedef struct DcmCodec DcmCodec;
#endif

/// 0 is false, anything else true.
typedef uint8_t CodecBool;

/// What a library says of one transfer syntax. The layout is part of the contract.
typedef struct CodecProps {
  char UID[TESSARET_CODEC_TEXT_SIZE]; /* of the transfer syntax, NUL terminated */
  uint32_t Reserved;                  /* kept and not looked at */
  uint32_t Flags;                     /* TESSARET_CODEC_... */
} CodecProps;

/// What the engine read out of the data set. The numbers fit together and fit 32 bits. Where frames are converted no size is
/// 0; CanCompress is asked about any data set and may meet zeros. The layout is part of the contract.
typedef struct ImageInfo {
  uint32_t
      BytesPerSample; /* Bits Allocated modulo 8 plus Bits Allocated divided by 8: 2 for 16, 5 for 12 */
  uint32_t Samples; /* samples per pixel */
  uint32_t Columns;
  uint32_t Rows;
  uint32_t PixelStride; /* bytes from a sample to that of the next pixel */
  uint32_t LineStride;  /* bytes from a row to the next */
  uint32_t FrameSize;   /* bytes of a native frame */
  uint32_t PlaneSize;   /* bytes of one plane where samples lie in planes, otherwise 1 */
  uint32_t Frames;
  uint32_t BitsStored;
  char Photometric
      [TESSARET_CODEC_TEXT_SIZE]; /* without blanks at its ends, cut where too long, NUL terminated */
} ImageInfo;

/// Where in a data set the present call stands.
typedef struct CodecFrame {
  uint32_t Index;  /* of the frame, from 0 */
  uint32_t Frames; /* how many there are */
  /* When decompressing, the value of the offset table as it came: little endian numbers of 32 bits that count from the first
     fragment's item. It may be empty, and it may be wrong. Null when compressing. */
  const uint8_t* OffsetTable;
  uint32_t OffsetTableLength; /* in bytes */
} CodecFrame;

#ifndef __cplusplus
/// The operations of a codec object, for libraries in C: see the C++ class below for what each does. `self` is the object.
typedef struct DcmCodecTable {
  CodecBool (*CanCompress)(DcmCodec* self, DICOMObject* object, const char* syntax,
                           const ImageInfo* info, void* progress);
  uint32_t (*CompressFrame)(DcmCodec* self, DICOMObject* object, const char* syntax, VR* pixels,
                            const ImageInfo* info, const uint8_t* frame, void* progress);
  CodecBool (*DecompressFrame)(DcmCodec* self, DICOMObject* object, const char* syntax, VR* pixels,
                               const ImageInfo* info, uint8_t* frame, void* progress);
} DcmCodecTable;

/// A codec object as C lays it out; a C++ compiler lays the class below out in the same way. A C library keeps one constant
/// DcmCodecTable and has DcmGetCodec hand out a structure that begins with these fields, behind which it may keep its own:
///
///     static const DcmCodecTable table = {CanCompress, CompressFrame, DecompressFrame};
///     static DcmCodec codec = {&table, 0, ""};
///     DcmCodec* DcmGetCodec(uint32_t index) { return index == 0 ? &codec : NULL; }
///     void DcmFreeCodec(DcmCodec* object) { (void)object; }
///
/// None of the three may be null.
struct DcmCodec {
  const DcmCodecTable* Table;
  uintptr_t Reserved;                        /* the library's own; the engine does not look at it */
  char ErrorText[TESSARET_CODEC_ERROR_SIZE]; /* NUL terminated, must be writable */
};
#endif

/* ---- What a codec library exports ---- */

/// How many syntaxes it serves. Has to be there; the engine does not use the number.
TESSARET_CODEC_EXPORT uint32_t DcmGetCodecCount(void);

/// Fills `props`, which is the caller's, for the syntax of this index. False past the last. Called with 0, 1, ... and soon
/// after the library was loaded; it is then unloaded until one of its syntaxes is wanted. A library with more than 1024
/// syntaxes, or that throws here, is left out as a whole.
TESSARET_CODEC_EXPORT CodecBool DcmGetCodecProps(uint32_t index, CodecProps* props);

/// The codec object for the syntax of this index, which stays the library's until it comes back by DcmFreeCodec; null where it
/// cannot be had. One object at a time is asked for each syntax and serves all engines. It may be the same for several syntaxes;
/// then it comes back once for each.
TESSARET_CODEC_EXPORT DcmCodec* DcmGetCodec(uint32_t index);

/// Takes back what DcmGetCodec gave, once. The library is unloaded next.
TESSARET_CODEC_EXPORT void DcmFreeCodec(DcmCodec* codec);

/* ---- What the engine offers to codecs ----
   None of these functions throws. All take null for "not there". Data set and elements belong to the engine and its caller; a
   codec frees none of them. One thread at a time looks at a data set; fragments' bytes, once pointers to them were taken, may
   be read by any thread until the last frame of the data set is done or failed. */

/// The element of this tag, or null. It stays with the data set.
const VR* tessaret_codec_element(const DICOMObject* object, uint16_t group, uint16_t element);

/// The value of an element that has exactly two bytes, as a number; 0 for any other, or none.
uint16_t tessaret_codec_uint16(const DICOMObject* object, uint16_t group, uint16_t element);

/// The two letters of the type: the first times 256 plus the second. 0 where it is not known.
uint16_t tessaret_codec_type(const VR* element);

/// How many bytes tessaret_codec_bytes points to; 0 where that is null.
uint32_t tessaret_codec_length(const VR* element);

/// The value as it is stored, not terminated; null where there is none. It stays with the element, until that is set anew.
const uint8_t* tessaret_codec_bytes(const VR* element);

/// The number of items of a sequence, or of the fragments of `pixels` (without the offset table).
uint32_t tessaret_codec_item_count(const VR* element);

/// The item at `index` from 0, or null. It stays with the element. Of the items of pixel data see tessaret_codec_fragment.
const DICOMObject* tessaret_codec_item(const VR* element, uint32_t index);

/// The bytes of the fragment at `index` from 0 of the pixel data that DecompressFrame was given, or that CompressFrame has made
/// so far; they stay with it. `length` gets their number, 0 on failure. Null, with a length of 0, also where a fragment is empty.
const uint8_t* tessaret_codec_fragment(const VR* pixels, uint32_t index, uint32_t* length);

/// Appends an item with a copy of these bytes, a NUL behind an odd number, to the pixel data that CompressFrame was given. False,
/// and nothing is appended, for any other element, null or no bytes, and without memory.
CodecBool tessaret_codec_add_fragment(VR* pixels, const uint8_t* bytes, uint32_t length);

/// Gives the element of this tag a copy of these bytes as its value; without it, adds it. An odd number is made even, by a blank
/// for types of text and by a NUL otherwise. Type 0 keeps that of the element that is there (UN for a new one). What is nested in
/// the element goes. For the data set of the present CompressFrame or DecompressFrame, and in the thread of that call; when the
/// conversion fails in the end, the engine takes the change back. False, and nothing changes, otherwise, for what is the
/// engine's (group 0002, (7FE0,0010), element number 0000, group FFFE), and without memory.
/// Extended offset tables, their lengths and the total length, (7FE0,0001) to (7FE0,0003), go with the pixel data that they are
/// about: those stay after a conversion that the codec has set in it.
CodecBool tessaret_codec_set(DICOMObject* object, uint16_t group, uint16_t element, uint16_t type,
                             const uint8_t* bytes, uint32_t length);

/// Fills `frame`, which is the caller's, for the pixel data that the present CompressFrame or DecompressFrame was given. The
/// offset table stays until the last frame is done. False, and nothing is filled, for any other element and in other threads.
CodecBool tessaret_codec_frame(const VR* pixels, CodecFrame* frame);

/// Says why the present call fails, in place of ErrorText. The text is copied. Does nothing outside of a call.
void tessaret_codec_fail(const char* text);

#ifdef __cplusplus
}  // extern "C"

/// A codec object: a class of the library's own derives from this. The table of functions, its order, and the place of the
/// fields behind it are part of the contract; nothing virtual may be added here, a destructor neither.
///
/// `syntax` is the UID of the transfer syntax, NUL terminated; `progress` is the host's, handed through, and may be null. All
/// pointers last for the call only, but for what is told above of elements and fragments.
class DcmCodec {
 public:
  /// Whether `object` can be held in this syntax. Changes nothing. False may come with words.
  virtual CodecBool CanCompress(DICOMObject* object, const char* syntax, const ImageInfo* info,
                                void* progress) = 0;

  /// Compresses the `info->FrameSize` bytes at `frame`, which stay the engine's, and appends the result to `pixels` by
  /// tessaret_codec_add_fragment. Frames come in their order. The result is the number of bytes by which the next frame lies
  /// further on, which makes the offset table: for each fragment 8 and its even length. 0 is a failure, with words; so is
  /// no fragment, and a number above what was appended.
  virtual std::uint32_t CompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                                      const ImageInfo* info, const std::uint8_t* frame,
                                      void* progress) = 0;

  /// Writes the `info->FrameSize` bytes of the next native frame to `frame`, the engine's, and nothing outside of them. What is
  /// left unwritten is 0, but not necessarily where the data set has more than 64 MiB. `pixels` has the fragments of all
  /// frames; tessaret_codec_frame tells which is asked for. False is a failure, with words.
  virtual CodecBool DecompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                                    const ImageInfo* info, std::uint8_t* frame, void* progress) = 0;

  std::uintptr_t Reserved = 0;  // the library's own; the engine does not look at it
  char ErrorText[TESSARET_CODEC_ERROR_SIZE] = {};  // why the last call failed, NUL terminated

 protected:
  DcmCodec() = default;
  ~DcmCodec() = default;
};

#define TESSARET_CODEC_ASSERT static_assert
#else
#define TESSARET_CODEC_ASSERT _Static_assert
#endif

TESSARET_CODEC_ASSERT(sizeof(CodecProps) == 72, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(CodecProps, UID) == 0, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(CodecProps, Reserved) == 64, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(CodecProps, Flags) == 68, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(sizeof(ImageInfo) == 104, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(ImageInfo, BytesPerSample) == 0,
                      "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(ImageInfo, FrameSize) == 24, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(ImageInfo, BitsStored) == 36, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(offsetof(ImageInfo, Photometric) == 40, "the layout is part of the contract");
TESSARET_CODEC_ASSERT(sizeof(DcmCodec) == 2 * sizeof(void*) + TESSARET_CODEC_ERROR_SIZE,
                      "the layout is part of the contract");
#undef TESSARET_CODEC_ASSERT

#ifdef __cplusplus
}  // namespace tessaret
#endif

#endif
