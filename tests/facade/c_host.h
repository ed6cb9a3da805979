/* What c_host.c does through the C interface, for c_interface_test.cpp. */
#ifndef TESSARET_TESTS_C_HOST_H
#define TESSARET_TESTS_C_HOST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* -1 and the texts of a known element, 0 for an unknown one; -1 without texts after a failure. */
int DescribeElement(int32_t group, int32_t element, char* type, char* name, size_t room);
/* How many members with a name and help an object of the class has; -1 where there is none. */
int CountMembers(const char* className);

/* The status of asking an object of the class for the interface; after success the name by which it describes itself, and how many
   members that has, or -1. */
int32_t QueryInterfaceOf(const char* className, const char* interfaceName, char* described,
                         size_t room, int* memberCount);
/* What a loop of the host does: watches the descriptor for so many milliseconds, then tells what there is. How many were told. */
int32_t WatchAndPump(int milliseconds);
/* The value of a member of an enumeration; -1 for a name that none has. */
int32_t ValueOf(const char* enumerator);

#ifdef __cplusplus
}
#endif

#endif
