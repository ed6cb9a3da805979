/* A host in C: asks the dictionary what an element is called, and goes through what an object can do. */
#include "facade/c_host.h"

#include <poll.h>
#include <string.h>

#include "tessaret/tessaret.h"

int DescribeElement(int32_t group, int32_t element, char* type, char* name, size_t room) {
  tessaret_object* dictionary = NULL;
  if (tessaret_create("Tessaret.DcmDictionary", &dictionary) < 0) return -1;
  tessaret_value arguments[4] = {{.type = TESSARET_LONG, .as.long_value = group},
                                 {.type = TESSARET_LONG, .as.long_value = element},
                                 {.type = TESSARET_EMPTY},
                                 {.type = TESSARET_EMPTY}};
  tessaret_value found = {0};
  int32_t status =
      tessaret_invoke(dictionary, "GetVRDescription", TESSARET_METHOD, arguments, 4, &found);
  if (status >= 0 && found.as.bool_value == -1) {
    strncpy(type, arguments[2].as.string_value, room);
    strncpy(name, arguments[3].as.string_value, room);
  }
  int answer = status < 0 ? -1 : found.as.bool_value;
  for (size_t at = 0; at < 4; ++at) tessaret_clear(&arguments[at]);
  tessaret_clear(&found);
  tessaret_release(dictionary);
  return answer;
}

int CountMembers(const char* className) {
  tessaret_object* object = NULL;
  if (tessaret_create(className, &object) < 0) return -1;
  const tessaret_interface_info* info = tessaret_describe(object);
  int count = 0;
  for (uint32_t at = 0; at < info->member_count; ++at) {
    if (info->members[at].name[0] != '\0' && info->members[at].help[0] != '\0') ++count;
  }
  tessaret_release(object);
  return count;
}

int32_t QueryInterfaceOf(const char* className, const char* interfaceName, char* described,
                         size_t room, int* memberCount) {
  tessaret_object* object = NULL;
  int32_t status = tessaret_create(className, &object);
  if (status < 0) return status;
  tessaret_object* other = NULL;
  status = tessaret_query(object, interfaceName, &other);
  /* The other interface keeps the object. */
  tessaret_release(object);
  *memberCount = -1;
  if (status >= 0) {
    const tessaret_interface_info* info = tessaret_describe(other);
    strncpy(described, info->name, room);
    *memberCount = (int)info->member_count;
  }
  tessaret_release(other);
  return status;
}

int32_t ValueOf(const char* enumerator) {
  uint32_t count = 0;
  const tessaret_enumeration* all = tessaret_enumerations(&count);
  for (uint32_t at = 0; at < count; ++at) {
    for (uint32_t member = 0; member < all[at].member_count; ++member) {
      if (strcmp(all[at].members[member].name, enumerator) == 0)
        return all[at].members[member].value;
    }
  }
  return -1;
}

int32_t WatchAndPump(int milliseconds) {
  struct pollfd watched = {.fd = tessaret_events_descriptor(), .events = POLLIN, .revents = 0};
  if (watched.fd < 0) return watched.fd;
  if (poll(&watched, 1, milliseconds) <= 0) return 0;
  return tessaret_pump(0);
}
