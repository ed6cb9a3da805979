/* Compiled as C11: what a host in C does with an object, a member at a time, with the values that come back. */
#include "facade/c_object_host.h"

#include <stdio.h>
#include <string.h>

#include "tessaret/tessaret.h"

#define NOT_AVAILABLE ((int32_t)0x80004001)
#define WITH_WORDS ((int32_t)0x80020009)

/* Ends the walk with the line unless it holds. */
#define CHECK(holds)               \
  do {                             \
    if (!(holds)) return __LINE__; \
  } while (0)

static tessaret_value Nothing(void) {
  tessaret_value value;
  memset(&value, 0, sizeof value);
  return value;
}

static tessaret_value Long(int32_t number) {
  tessaret_value value = Nothing();
  value.type = TESSARET_LONG;
  value.as.long_value = number;
  return value;
}

static tessaret_value Text(const char* text) {
  tessaret_value value = Nothing();
  value.type = TESSARET_STRING;
  value.as.string_value = text;
  return value;
}

static tessaret_value Bool(int16_t truth) {
  tessaret_value value = Nothing();
  value.type = TESSARET_BOOL;
  value.as.bool_value = truth;
  return value;
}

static tessaret_value Object(tessaret_object* object) {
  tessaret_value value = Nothing();
  value.type = TESSARET_OBJECT;
  value.as.object_value = object;
  return value;
}

static int IsText(const tessaret_value* value, const char* text) {
  return value->type == TESSARET_STRING && strcmp(value->as.string_value, text) == 0;
}

static int IsTrue(const tessaret_value* value) {
  return value->type == TESSARET_BOOL && value->as.bool_value == -1;
}

static int IsFalse(const tessaret_value* value) {
  return value->type == TESSARET_BOOL && value->as.bool_value == 0;
}

/* Arguments and result of the call under way; one walk runs at a time. */
static tessaret_value arguments[8];
static tessaret_value result;

static void ClearAll(void) {
  unsigned at;
  for (at = 0; at < 8; ++at) tessaret_clear(&arguments[at]);
  tessaret_clear(&result);
}

static int32_t Call(tessaret_object* object, const char* name, uint32_t count) {
  return tessaret_invoke(object, name, TESSARET_METHOD, arguments, count, &result);
}

static int32_t Get(tessaret_object* object, const char* name, uint32_t count) {
  return tessaret_get(object, name, arguments, count, &result);
}

static void Tag(int32_t group, int32_t element) {
  ClearAll();
  arguments[0] = Long(group);
  arguments[1] = Long(element);
}

static int32_t PutText(tessaret_object* object, int32_t group, int32_t element, const char* text) {
  Tag(group, element);
  arguments[2] = Text(text);
  return tessaret_put(object, "VR", arguments, 3);
}

static int WalkValues(tessaret_object* object) {
  CHECK(PutText(object, 0x0010, 0x0020, "id") == 0);
  Tag(0x0010, 0x0020);
  CHECK(Get(object, "VR", 2) == 0 && IsText(&result, "id"));

  Tag(0x0008, 0x0008);
  arguments[2] = Text("CS");
  arguments[3] = Long(1);
  arguments[4] = Text("PRIMARY");
  CHECK(tessaret_put(object, "VR", arguments, 5) == 0);
  Tag(0x0008, 0x0008);
  CHECK(Get(object, "VRMultiplicity", 2) == 0 && result.as.long_value == 2);

  Tag(0x0010, 0x0020);
  CHECK(Call(object, "GetVRDescr", 6) == 0 && IsTrue(&result));
  CHECK(IsText(&arguments[2], "Patient ID") && IsText(&arguments[3], "LO"));
  CHECK(arguments[4].as.long_value == 2 && arguments[5].as.long_value == 1);

  Tag(0x0010, 0x0020);
  arguments[2] = Text("LO");
  arguments[3] = Text(" raw ");
  CHECK(Call(object, "PutVRRawString", 4) == 0);
  Tag(0x0010, 0x0020);
  CHECK(Call(object, "GetVRRawString", 4) == 0 && IsText(&arguments[3], " raw "));
  ClearAll();
  return 0;
}

static int WalkBytes(tessaret_object* object) {
  uint8_t bytes[3] = {1, 2, 3};
  const tessaret_bound bound = {0, 3};
  const tessaret_array array = {&bound, bytes, 3, 1};
  Tag(0x0009, 0x1001);
  arguments[2] = Text("UN");
  arguments[3].type = TESSARET_ARRAY | TESSARET_BYTE;
  arguments[3].as.array_value = &array;
  CHECK(Call(object, "PutVRData", 4) == 0);
  Tag(0x0009, 0x1001);
  CHECK(Call(object, "GetVRData", 4) == 0 && IsText(&arguments[2], "UN"));
  CHECK(arguments[3].type == (TESSARET_ARRAY | TESSARET_BYTE));
  CHECK(arguments[3].as.array_value->count == 3);
  CHECK(memcmp(arguments[3].as.array_value->entries, bytes, 3) == 0);

  Tag(0x0009, 0x1001);
  CHECK(Call(object, "RemoveVR", 2) == 0);
  Tag(0x0009, 0x1001);
  CHECK(Call(object, "GetVRData", 4) == WITH_WORDS);
  CHECK(strcmp(tessaret_last_error_text(), "Non existing VR") == 0);
  CHECK(strcmp(tessaret_last_error_source(), "Tessaret.DCMObject") == 0);

  ClearAll();
  CHECK(Call(object, "GetFirstVR", 2) == 0 && IsTrue(&result));
  CHECK(arguments[0].as.long_value == 0x0008 && arguments[1].as.long_value == 0x0008);
  CHECK(Call(object, "GetNextVR", 2) == 0 && IsTrue(&result));
  CHECK(arguments[0].as.long_value == 0x0010 && arguments[1].as.long_value == 0x0020);
  CHECK(Call(object, "GetNextVR", 2) == 0 && IsFalse(&result));
  ClearAll();
  return 0;
}

static int WalkSequences(tessaret_object* object) {
  tessaret_object* item = NULL;
  tessaret_object* copy = NULL;
  CHECK(tessaret_create("Tessaret.DCMObject", &item) == 0);
  CHECK(PutText(item, 0x0010, 0x0020, "item") == 0);
  Tag(0x0008, 0x1140);
  arguments[2] = Long(0);
  arguments[3] = Object(item);
  CHECK(tessaret_invoke(object, "Sequence", TESSARET_PUTREF, arguments, 4, NULL) == 0);
  tessaret_release(item);
  Tag(0x0008, 0x1140);
  CHECK(Get(object, "SequencesCount", 2) == 0 && result.as.short_value == 1);
  Tag(0x0008, 0x1140);
  arguments[2] = Long(0);
  CHECK(Get(object, "Sequence", 3) == 0 && result.type == TESSARET_OBJECT);
  item = result.as.object_value;
  tessaret_retain(item);
  Tag(0x0010, 0x0020);
  CHECK(Get(item, "VR", 2) == 0 && IsText(&result, "item"));
  tessaret_release(item);
  Tag(0x0008, 0x1140);
  arguments[2] = Long(0);
  CHECK(Call(object, "RemoveSequence", 3) == 0);
  Tag(0x0008, 0x1140);
  CHECK(Get(object, "SequencesCount", 2) == 0 && result.as.short_value == 1);

  ClearAll();
  CHECK(Call(object, "copy", 0) == 0 && result.type == TESSARET_OBJECT);
  copy = result.as.object_value;
  tessaret_retain(copy);
  ClearAll();
  CHECK(Call(object, "Clear", 0) == 0);
  ClearAll();
  CHECK(Call(object, "GetFirstVR", 2) == 0 && IsFalse(&result));
  ClearAll();
  arguments[0] = Object(copy);
  CHECK(Call(object, "Set", 1) == 0);
  tessaret_release(copy);
  Tag(0x0010, 0x0020);
  CHECK(Get(object, "VR", 2) == 0 && IsText(&result, " raw"));
  ClearAll();
  return 0;
}

static int WalkFiles(tessaret_object* object, const char* folder) {
  char path[512];
  snprintf(path, sizeof path, "%s/object.dcm", folder);
  ClearAll();
  arguments[0] = Text("1.2.840.10008.1.2.1");
  CHECK(Call(object, "Translate", 1) == 0 && IsTrue(&result));
  ClearAll();
  arguments[0] = Text(path);
  CHECK(Call(object, "Save", 1) == 0);
  ClearAll();
  CHECK(Call(object, "Clear", 0) == 0);
  ClearAll();
  arguments[0] = Text(path);
  arguments[1] = Bool(-1);
  CHECK(Call(object, "Load", 2) == 0);
  Tag(0x0002, 0x0010);
  CHECK(Get(object, "VR", 2) == 0 && IsText(&result, "1.2.840.10008.1.2.1"));
  snprintf(path, sizeof path, "%s/missing.dcm", folder);
  ClearAll();
  arguments[0] = Text(path);
  arguments[1] = Bool(0);
  CHECK(Call(object, "Load", 2) == WITH_WORDS);
  CHECK(strcmp(tessaret_last_error_text(), "No such file or directory") == 0);
  ClearAll();
  return 0;
}

static int WalkSending(tessaret_object* object) {
  ClearAll();
  arguments[0] = Text("localhost");
  arguments[1] = Long(104);
  arguments[2] = Text("A");
  arguments[3] = Text("B");
  CHECK(Call(object, "Send", 4) == WITH_WORDS);
  CHECK(strcmp(tessaret_last_error_text(), "Empty object") == 0);
  ClearAll();
  return 0;
}

static int WalkLaterMembers(tessaret_object* object) {
  ClearAll();
  arguments[1] = Bool(-1);
  CHECK(Call(object, "IntersectPlane", 2) == NOT_AVAILABLE);
  CHECK(strcmp(tessaret_last_error_text(), "This is not available in this version") == 0);
  ClearAll();
  CHECK(Call(object, "CreateSecondaryCapture", 2) == NOT_AVAILABLE);
  ClearAll();
  arguments[1] = arguments[2] = arguments[3] = arguments[4] = Long(0);
  arguments[5] = arguments[6] = Text("G");
  CHECK(Call(object, "AddOverlay", 7) == NOT_AVAILABLE);
  ClearAll();
  return 0;
}

int WalkObject(const char* folder) {
  tessaret_object* object = NULL;
  int line;
  CHECK(tessaret_create("Tessaret.DCMObject", &object) == 0);
  line = WalkValues(object);
  if (line == 0) line = WalkBytes(object);
  if (line == 0) line = WalkSequences(object);
  if (line == 0) line = WalkFiles(object, folder);
  if (line == 0) line = WalkSending(object);
  if (line == 0) line = WalkLaterMembers(object);
  ClearAll();
  tessaret_release(object);
  return line;
}

static int WalkRecord(tessaret_object* manager) {
  tessaret_object* record;
  Tag(0x0010, 0x0020);
  CHECK(Call(manager, "GetVR", 2) == 0 && result.type == TESSARET_OBJECT);
  record = result.as.object_value;
  tessaret_retain(record);
  ClearAll();
  CHECK(Get(record, "Group", 0) == 0 && result.as.long_value == 0x0010);
  CHECK(Get(record, "Elem", 0) == 0 && result.as.long_value == 0x0020);
  CHECK(Get(record, "TypeCode", 0) == 0 && result.as.long_value == 'L' * 256 + 'O');
  CHECK(Get(record, "len", 0) == 0 && result.as.long_value == 2);
  CHECK(Get(record, "pt", 0) == 0 && result.as.array_value->count == 2);
  CHECK(memcmp(result.as.array_value->entries, "id", 2) == 0);
  ClearAll();
  arguments[0] = Long(0x0021);
  CHECK(tessaret_put(record, "Elem", arguments, 1) == 0);
  ClearAll();
  arguments[0] = Object(record);
  CHECK(Call(manager, "PutVR", 1) == 0);
  tessaret_release(record);
  ClearAll();
  return 0;
}

static int WalkOwnership(tessaret_object* object, tessaret_object* manager) {
  tessaret_value handle;
  CHECK(WalkRecord(manager) == 0);
  Tag(0x0010, 0x0021);
  CHECK(Get(object, "VR", 2) == 0 && IsText(&result, "id"));
  ClearAll();
  CHECK(Call(manager, "GetOwnership", 0) == 0);
  CHECK(Call(manager, "GetOwnership", 0) == 1);
  CHECK(Call(manager, "SetOwner", 0) == 0);
  CHECK(Call(manager, "SetOwner", 0) == 1);
  arguments[0] = Long(1);
  CHECK(Call(manager, "GetPtr", 1) == 0 && result.type == TESSARET_OBJECT);
  handle = result;
  result = Nothing();
  CHECK(Get(handle.as.object_value, "IsAlive", 0) == 0 && IsTrue(&result));
  ClearAll();
  arguments[0] = Long(1);
  arguments[1] = Object(handle.as.object_value);
  CHECK(Call(manager, "PutPtr", 2) == 0);
  ClearAll();
  CHECK(Call(object, "Clear", 0) == 0);
  tessaret_clear(&handle);
  return 0;
}

int WalkManager(void) {
  tessaret_object* object = NULL;
  tessaret_object* manager = NULL;
  int line;
  CHECK(tessaret_create("Tessaret.DCMObject", &object) == 0);
  CHECK(PutText(object, 0x0010, 0x0020, "id") == 0);
  CHECK(tessaret_query(object, "IDcmObjectManager", &manager) == 0);
  line = WalkOwnership(object, manager);
  ClearAll();
  tessaret_release(manager);
  tessaret_release(object);
  return line;
}

static int WalkEntries(tessaret_object* dictionary) {
  ClearAll();
  CHECK(Get(dictionary, "NumEntries", 0) == 0 && result.as.short_value > 1000);
  ClearAll();
  arguments[0] = Long(0);
  CHECK(Call(dictionary, "GetEntry", 3) == 0 && IsTrue(&result));
  CHECK(arguments[1].as.long_value == 0 && arguments[2].as.long_value == 0);
  Tag(0x0010, 0x0010);
  CHECK(Call(dictionary, "GetVRDescription", 4) == 0 && IsTrue(&result));
  CHECK(IsText(&arguments[2], "PN") && IsText(&arguments[3], "Patient's Name"));
  ClearAll();
  arguments[0] = Text("1.2.840.10008.5.1.4.1.1.2");
  CHECK(Call(dictionary, "GetUIDDescription", 5) == 0 && IsTrue(&result));
  CHECK(IsText(&arguments[3], "CT") && IsTrue(&arguments[4]));
  ClearAll();
  return 0;
}

int WalkDictionary(void) {
  tessaret_object* dictionary = NULL;
  int line;
  CHECK(tessaret_create("Tessaret.DcmDictionary", &dictionary) == 0);
  line = WalkEntries(dictionary);
  ClearAll();
  tessaret_release(dictionary);
  return line;
}

static int WalkOption(tessaret_object* options) {
  ClearAll();
  arguments[0] = Bool(-1);
  CHECK(tessaret_put(options, "UseTotokuLUT", arguments, 1) == 0);
  CHECK(Get(options, "UseTotokuLUT", 0) == 0 && IsTrue(&result));
  arguments[0] = Bool(0);
  CHECK(tessaret_put(options, "UseTotokuLUT", arguments, 1) == 0);
  CHECK(Get(options, "UseTotokuLUT", 0) == 0 && IsFalse(&result));
  ClearAll();
  return 0;
}

int WalkOptions(void) {
  tessaret_object* options = NULL;
  int line;
  CHECK(tessaret_create("Tessaret.DCMOptions", &options) == 0);
  line = WalkOption(options);
  ClearAll();
  tessaret_release(options);
  return line;
}
