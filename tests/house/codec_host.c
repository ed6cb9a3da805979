/* A host in C: turns a small image into a transfer syntax of codecs and back.
 *
 *     codec_host SYNTAX ITEMS [gone]     the pixel data has so many items meanwhile; with `gone` the program's file is deleted
 *                                        before the library is used
 *
 * Ends with 0 when the pixels came back as they were, otherwise says on standard error what went wrong. */
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <tessaret/tessaret.h>

/* Two frames of 4 x 2 pixels of 8 bits. */
#define PIXELS "ABCDEFGHIJKLMNOP"

static tessaret_value Long(int32_t number) {
  return (tessaret_value){.type = TESSARET_LONG, .as.long_value = number};
}

static tessaret_value Text(const char* text) {
  return (tessaret_value){.type = TESSARET_STRING, .as.string_value = text};
}

static int Fail(const char* what) {
  fprintf(stderr, "%s: %s\n", what, tessaret_last_error_text());
  return 1;
}

static int Put(tessaret_object* object, int32_t group, int32_t element, tessaret_value value) {
  tessaret_value arguments[3] = {Long(group), Long(element), value};
  return tessaret_put(object, "VR", arguments, 3) >= 0;
}

static int PutPixels(tessaret_object* object) {
  char pixels[] = PIXELS;
  const tessaret_bound bound = {0, sizeof(pixels) - 1};
  const tessaret_array array = {&bound, pixels, sizeof(pixels) - 1, 1};
  tessaret_value arguments[4] = {
      Long(0x7FE0),
      Long(0x0010),
      Text("OW"),
      {.type = TESSARET_BYTE | TESSARET_ARRAY, .as.array_value = &array}};
  return tessaret_invoke(object, "PutVRData", TESSARET_METHOD, arguments, 4, NULL) >= 0;
}

static int Fill(tessaret_object* object) {
  return Put(object, 0x0002, 0x0010, Text("1.2.840.10008.1.2.1")) &&
         Put(object, 0x0028, 0x0002, Long(1)) && Put(object, 0x0028, 0x0004, Text("MONOCHROME2")) &&
         Put(object, 0x0028, 0x0008, Text("2")) && Put(object, 0x0028, 0x0010, Long(2)) &&
         Put(object, 0x0028, 0x0011, Long(4)) && Put(object, 0x0028, 0x0100, Long(8)) &&
         Put(object, 0x0028, 0x0101, Long(8)) && PutPixels(object);
}

static int Items(tessaret_object* object) {
  tessaret_value arguments[2] = {Long(0x7FE0), Long(0x0010)};
  tessaret_value count = {0};
  if (tessaret_get(object, "SequencesCount", arguments, 2, &count) < 0) return -1;
  return count.as.short_value;
}

static int HasPixels(tessaret_object* object) {
  tessaret_value arguments[4] = {Long(0x7FE0), Long(0x0010), {0}, {0}};
  int same = 0;
  if (tessaret_invoke(object, "GetVRData", TESSARET_METHOD, arguments, 4, NULL) >= 0) {
    const tessaret_array* bytes =
        arguments[3].type == (TESSARET_BYTE | TESSARET_ARRAY) ? arguments[3].as.array_value : NULL;
    same = bytes != NULL && bytes->count == sizeof(PIXELS) - 1 &&
           memcmp(bytes->entries, PIXELS, sizeof(PIXELS) - 1) == 0;
  }
  tessaret_clear(&arguments[2]);
  tessaret_clear(&arguments[3]);
  return same;
}

static int ThereAndBack(tessaret_object* object, const char* syntax, const char* items) {
  char found[16];
  tessaret_value target = Text(syntax);
  tessaret_value done = {0};
  if (!Fill(object)) return Fail("the image");
  if (tessaret_invoke(object, "Translate", TESSARET_METHOD, &target, 1, &done) < 0 ||
      done.as.bool_value != -1)
    return Fail(syntax);
  snprintf(found, sizeof(found), "%d", Items(object));
  if (strcmp(found, items) != 0) return Fail(found);
  if (tessaret_invoke(object, "Translate", TESSARET_METHOD, NULL, 0, NULL) < 0) return Fail("back");
  return HasPixels(object) ? 0 : Fail("other pixels");
}

int main(int count, char** arguments) {
  tessaret_object* object = NULL;
  int result = 0;
  if (count < 3) return 2;
  if (count > 3 && unlink(arguments[0]) != 0) return 2;
  if (tessaret_create("Tessaret.DCMObject", &object) < 0) return Fail("no object");
  result = ThereAndBack(object, arguments[1], arguments[2]);
  tessaret_release(object);
  return result;
}
