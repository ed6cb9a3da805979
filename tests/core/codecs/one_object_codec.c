/* A codec library in C whose one object serves two syntaxes and keeps the number of the next frame from call to call. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <threads.h>

#include "tessaret/codec.h"

static uint32_t nextFrame = 0;

static CodecBool CanCompress(DcmCodec* self, DICOMObject* object, const char* syntax,
                             const ImageInfo* info, void* progress) {
  (void)self, (void)object, (void)syntax, (void)info, (void)progress;
  return 0;
}

static uint32_t CompressFrame(DcmCodec* self, DICOMObject* object, const char* syntax, VR* pixels,
                              const ImageInfo* info, const uint8_t* frame, void* progress) {
  (void)self, (void)object, (void)syntax, (void)pixels, (void)info, (void)frame, (void)progress;
  return 0;
}

static CodecBool DecompressFrame(DcmCodec* self, DICOMObject* object, const char* syntax,
                                 VR* pixels, const ImageInfo* info, uint8_t* frame,
                                 void* progress) {
  CodecFrame place;
  (void)object, (void)syntax, (void)progress;
  if (!tessaret_codec_frame(pixels, &place)) return 0;
  if (place.Index == 0) nextFrame = 0;
  if (place.Index != nextFrame++) {
    strcpy(self->ErrorText, "frames of two data sets at once");
    return 0;
  }
  memset(frame, 0, info->FrameSize);
  thrd_yield();
  return 1;
}

static const DcmCodecTable table = {CanCompress, CompressFrame, DecompressFrame};
static DcmCodec codec = {&table, 0, ""};

uint32_t DcmGetCodecCount(void) { return 2; }

CodecBool DcmGetCodecProps(uint32_t index, CodecProps* props) {
  static const CodecProps own[] = {{"1.2.999.5.0", 0, 0}, {"1.2.999.5.1", 0, 0}};
  if (index >= sizeof(own) / sizeof(own[0])) return 0;
  *props = own[index];
  return 1;
}

DcmCodec* DcmGetCodec(uint32_t index) { return index < 2 ? &codec : NULL; }

void DcmFreeCodec(DcmCodec* object) { (void)object; }
