/* The same kind of codec in C: every byte is turned round by a key, half a frame goes into each of two fragments. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "tessaret/codec.h"

enum { kKey = 0xA5, kIS = 0x4953 };

typedef struct CToyCodec {
  DcmCodec base;
  uint32_t calls;
} CToyCodec;

static CodecBool CanCompress(DcmCodec* self, DICOMObject* object, const char* syntax,
                             const ImageInfo* info, void* progress) {
  (void)syntax;
  (void)progress;
  ++((CToyCodec*)self)->calls;
  if (tessaret_codec_uint16(object, 0x0028, 0x0010) == info->Rows) return 1;
  snprintf(self->ErrorText, sizeof(self->ErrorText), "C toy: %u rows", (unsigned)info->Rows);
  return 0;
}

/* The bytes that are to be turned, in small steps since C has no container for them. */
static CodecBool AddTurned(VR* pixels, const uint8_t* bytes, uint32_t count) {
  uint8_t turned[4096];
  if (count > sizeof(turned)) return 0;
  for (uint32_t at = 0; at < count; ++at) turned[at] = (uint8_t)(bytes[at] ^ kKey);
  return tessaret_codec_add_fragment(pixels, turned, count);
}

static uint32_t CompressFrame(DcmCodec* self, DICOMObject* object, const char* syntax, VR* pixels,
                              const ImageInfo* info, const uint8_t* frame, void* progress) {
  const uint32_t half = info->FrameSize / 2;
  (void)object;
  (void)syntax;
  (void)progress;
  if (half == 0 || half % 2 != 0 || half * 2 != info->FrameSize ||
      !AddTurned(pixels, frame, half) || !AddTurned(pixels, frame + half, half)) {
    snprintf(self->ErrorText, sizeof(self->ErrorText), "C toy: frames of %u bytes",
             (unsigned)info->FrameSize);
    return 0;
  }
  return 2 * 8 + info->FrameSize;
}

static CodecBool DecompressFrame(DcmCodec* self, DICOMObject* object, const char* syntax,
                                 VR* pixels, const ImageInfo* info, uint8_t* frame,
                                 void* progress) {
  CodecFrame place;
  uint32_t made = 0;
  (void)syntax;
  (void)progress;
  if (!tessaret_codec_frame(pixels, &place)) return 0;
  for (uint32_t half = 0; half < 2; ++half) {
    uint32_t length = 0;
    const uint8_t* bytes = tessaret_codec_fragment(pixels, place.Index * 2 + half, &length);
    if (bytes == NULL || length > info->FrameSize - made) {
      snprintf(self->ErrorText, sizeof(self->ErrorText), "C toy: frame %u", (unsigned)place.Index);
      return 0;
    }
    for (uint32_t at = 0; at < length; ++at) frame[made++] = (uint8_t)(bytes[at] ^ kKey);
  }
  return tessaret_codec_set(object, 0x0028, 0x0006, 0, (const uint8_t*)"\0\0", 2);
}

static const DcmCodecTable table = {CanCompress, CompressFrame, DecompressFrame};
static CToyCodec codec = {{&table, 0, ""}, 0};

uint32_t DcmGetCodecCount(void) { return 1; }

CodecBool DcmGetCodecProps(uint32_t index, CodecProps* props) {
  static const CodecProps own = {"1.2.999.2", 0, 0};
  if (index != 0) return 0;
  *props = own;
  return 1;
}

DcmCodec* DcmGetCodec(uint32_t index) { return index == 0 ? &codec.base : NULL; }

void DcmFreeCodec(DcmCodec* object) { (void)object; }
