/* A codec library in C whose one object serves all syntaxes, implicit little endian too, and keeps the number of the next frame
   from call to call. Wherever it is called, a thread that is cancelled may end. */
#include <pthread.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <threads.h>

#include "tessaret/codec.h"

static uint32_t nextFrame = 0;
static int asked = 0;

static CodecBool CanCompress(DcmCodec* self, DICOMObject* object, const char* syntax,
                             const ImageInfo* info, void* progress) {
  CodecBool alone = 0;
  (void)self, (void)object, (void)syntax, (void)info, (void)progress;
  ++asked;
  thrd_yield();
  alone = asked == 1;
  --asked;
  return alone;
}

/* Whether this frame of `pixels` follows the one of the call before. */
static CodecBool IsNext(DcmCodec* self, const VR* pixels) {
  CodecFrame place;
  if (!tessaret_codec_frame(pixels, &place)) return 0;
  if (place.Index == 0) nextFrame = 0;
  if (place.Index != nextFrame++) {
    strcpy(self->ErrorText, "frames of two data sets at once");
    return 0;
  }
  thrd_yield();
  pthread_testcancel();
  return 1;
}

static uint32_t CompressFrame(DcmCodec* self, DICOMObject* object, const char* syntax, VR* pixels,
                              const ImageInfo* info, const uint8_t* frame, void* progress) {
  (void)object, (void)syntax, (void)progress;
  if (!IsNext(self, pixels)) return 0;
  return tessaret_codec_add_fragment(pixels, frame, info->FrameSize) ? 8 + info->FrameSize : 0;
}

static CodecBool DecompressFrame(DcmCodec* self, DICOMObject* object, const char* syntax,
                                 VR* pixels, const ImageInfo* info, uint8_t* frame,
                                 void* progress) {
  (void)object, (void)syntax, (void)progress;
  memset(frame, 0, info->FrameSize);
  return IsNext(self, pixels);
}

static const DcmCodecTable table = {CanCompress, CompressFrame, DecompressFrame};
static DcmCodec codec = {&table, 0, ""};

uint32_t DcmGetCodecCount(void) { return 4; }

CodecBool DcmGetCodecProps(uint32_t index, CodecProps* props) {
  static const CodecProps own[] = {{"1.2.999.5.0", 0, 0},
                                   {"1.2.999.5.1", 0, 0},
                                   {"1.2.999.5.10", 0, 0},
                                   {"1.2.840.10008.1.2", 0, 0}};
  pthread_testcancel();
  if (index >= sizeof(own) / sizeof(own[0])) return 0;
  *props = own[index];
  return 1;
}

DcmCodec* DcmGetCodec(uint32_t index) {
  pthread_testcancel();
  return index < 4 ? &codec : NULL;
}

void DcmFreeCodec(DcmCodec* object) {
  (void)object;
  pthread_testcancel();
}
