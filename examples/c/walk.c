/* A host in C: shows what is in a DICOM file, makes a changed copy of it, and hears a failure in words.
 *
 *     walk IN OUT      OUT gets another patient's name, a remark about where it came from, and the explicit little endian encoding
 *
 * Every member is called by its name with an array of values. What a call writes is cleared with tessaret_clear. */
#include <stdio.h>
#include <string.h>

#include <tessaret/tessaret.h>

#define EXPLICIT_LITTLE_ENDIAN "1.2.840.10008.1.2.1"

static tessaret_value Long(int32_t number) {
  tessaret_value value = {0};
  value.type = TESSARET_LONG;
  value.as.long_value = number;
  return value;
}

static tessaret_value Text(const char* text) {
  tessaret_value value = {0};
  value.type = TESSARET_STRING;
  value.as.string_value = text;
  return value;
}

static tessaret_value Bool(int16_t truth) {
  tessaret_value value = {0};
  value.type = TESSARET_BOOL;
  value.as.bool_value = truth;
  return value;
}

static tessaret_value Object(tessaret_object* object) {
  tessaret_value value = {0};
  value.type = TESSARET_OBJECT;
  value.as.object_value = object;
  return value;
}

static int32_t Call(tessaret_object* object, const char* name, tessaret_value* arguments,
                    uint32_t count, tessaret_value* result) {
  return tessaret_invoke(object, name, TESSARET_METHOD, arguments, count, result);
}

/* A whole number that a property with a tag has. */
static int32_t NumberOf(tessaret_object* object, const char* property, int32_t group,
                        int32_t element) {
  tessaret_value arguments[2] = {Long(group), Long(element)};
  tessaret_value result = {0};
  if (tessaret_get(object, property, arguments, 2, &result) < 0) return 0;
  return result.type == TESSARET_SHORT ? result.as.short_value : result.as.long_value;
}

/* Text of up to 60 bytes; what is not printable is written with an escape. */
static void PrintText(const char* text, uint32_t length) {
  uint32_t at;
  for (at = 0; at < length && at < 60; ++at) {
    const unsigned byte = (unsigned char)text[at];
    if (byte >= 0x20 && byte < 0x7F) {
      putchar((int)byte);
    } else {
      printf("\\x%02x", byte);
    }
  }
}

static void PrintValue(const tessaret_value* value) {
  switch (value->type) {
    case TESSARET_SHORT:
      printf("%d", value->as.short_value);
      break;
    case TESSARET_LONG:
      printf("%ld", (long)value->as.long_value);
      break;
    case TESSARET_FLOAT:
      printf("%g", (double)value->as.float_value);
      break;
    case TESSARET_DOUBLE:
      printf("%.15g", value->as.double_value);
      break;
    case TESSARET_DATE:
      printf("day %.5f", value->as.date_value);
      break;
    case TESSARET_STRING:
      PrintText(value->as.string_value, value->length);
      break;
    case TESSARET_ARRAY | TESSARET_BYTE:
      printf("%llu bytes", (unsigned long long)value->as.array_value->count);
      break;
    default:
      break;
  }
}

static void PrintValues(tessaret_object* object, int32_t group, int32_t element) {
  const int32_t count = NumberOf(object, "VRMultiplicity", group, element);
  int32_t at;
  for (at = 0; at == 0 || at < count; ++at) {
    /* The type is left as it is: an empty value stands for an argument that is left away. */
    tessaret_value arguments[4] = {Long(group), Long(element), {0}, Long(at)};
    tessaret_value value = {0};
    if (at > 0) putchar('\\');
    if (tessaret_get(object, "VR", arguments, 4, &value) < 0) return;
    PrintValue(&value);
    tessaret_clear(&value);
  }
}

static void Show(tessaret_object* object, int depth);

static void ShowElement(tessaret_object* object, int32_t group, int32_t element, int depth) {
  tessaret_value described[6] = {Long(group), Long(element)};
  tessaret_value found = {0};
  const int32_t items = NumberOf(object, "SequencesCount", group, element);
  int32_t at;
  if (Call(object, "GetVRDescr", described, 6, &found) < 0) return;
  printf("%*s(%04x,%04x) %s %s: ", 4 * depth, "", (unsigned)group, (unsigned)element,
         described[3].as.string_value, described[2].as.string_value);
  if (strcmp(described[3].as.string_value, "SQ") == 0) {
    printf("%ld items", (long)items);
  } else {
    PrintValues(object, group, element);
  }
  putchar('\n');
  tessaret_clear(&described[2]);
  tessaret_clear(&described[3]);
  for (at = 0; at < items; ++at) {
    tessaret_value arguments[3] = {Long(group), Long(element), Long(at)};
    tessaret_value item = {0};
    if (tessaret_get(object, "Sequence", arguments, 3, &item) >= 0 && item.as.object_value != NULL)
      Show(item.as.object_value, depth + 1);
    tessaret_clear(&item);
  }
}

/* One element a line, the items of sequences below it. */
static void Show(tessaret_object* object, int depth) {
  tessaret_value tag[2] = {{0}, {0}};
  tessaret_value found = {0};
  Call(object, "GetFirstVR", tag, 2, &found);
  while (found.as.bool_value != 0) {
    ShowElement(object, tag[0].as.long_value, tag[1].as.long_value, depth);
    if (Call(object, "GetNextVR", tag, 2, &found) < 0) break;
  }
}

static int32_t Put(tessaret_object* object, int32_t group, int32_t element, tessaret_value value) {
  tessaret_value arguments[3] = {Long(group), Long(element)};
  arguments[2] = value;
  return tessaret_put(object, "VR", arguments, 3);
}

/* Takes a value of one data set over into another one. */
static int32_t Copy(tessaret_object* from, int32_t fromElement, tessaret_object* to,
                    int32_t toElement) {
  tessaret_value arguments[2] = {Long(0x0008), Long(fromElement)};
  tessaret_value value = {0};
  int32_t status = tessaret_get(from, "VR", arguments, 2, &value);
  if (status >= 0) status = Put(to, 0x0008, toElement, value);
  tessaret_clear(&value);
  return status;
}

/* Another name, and an item that says what the data set was made from. */
static int32_t Change(tessaret_object* object) {
  tessaret_object* source = NULL;
  tessaret_value arguments[4] = {Long(0x0008), Long(0x2112), Long(-1)};
  tessaret_value removed[2] = {Long(0x0010), Long(0x0030)};
  int32_t status = tessaret_create("Tessaret.DCMObject", &source);
  if (status >= 0) status = Copy(object, 0x0016, source, 0x1150);
  if (status >= 0) status = Copy(object, 0x0018, source, 0x1155);
  arguments[3] = Object(source);
  if (status >= 0)
    status = tessaret_invoke(object, "Sequence", TESSARET_PUTREF, arguments, 4, NULL);
  tessaret_release(source);
  if (status >= 0) status = Put(object, 0x0010, 0x0010, Text("Walked^Through"));
  if (status >= 0) status = Put(object, 0x0008, 0x0008, Text("DERIVED"));
  if (status >= 0) status = Call(object, "RemoveVR", removed, 2, NULL);
  return status;
}

static int Fail(const char* subject, int code) {
  fprintf(stderr, "%s: %s\n", subject, tessaret_last_error_text());
  return code;
}

static int Walk(tessaret_object* object, const char* in, const char* out) {
  tessaret_value load[2] = {Text(in), Bool(-1)};
  tessaret_value syntax = Text(EXPLICIT_LITTLE_ENDIAN);
  tessaret_value save = Text(out);
  if (Call(object, "Load", load, 2, NULL) < 0) return Fail(in, 1);
  Show(object, 0);
  if (Change(object) < 0) return Fail(in, 1);
  if (Call(object, "Translate", &syntax, 1, NULL) < 0) return Fail(in, 1);
  return Call(object, "Save", &save, 1, NULL) < 0 ? Fail(out, 5) : 0;
}

int main(int count, char** arguments) {
  tessaret_object* object = NULL;
  int code;
  if (count != 3) {
    fprintf(stderr, "walk IN OUT\n");
    return 1;
  }
  if (tessaret_create("Tessaret.DCMObject", &object) < 0) return Fail("Tessaret.DCMObject", 1);
  code = Walk(object, arguments[1], arguments[2]);
  tessaret_release(object);
  return code;
}
