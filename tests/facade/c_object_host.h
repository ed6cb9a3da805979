/* Every member of the classes that are complete, called by name from C, for c_object_test.cpp. */
#ifndef TESSARET_TESTS_C_OBJECT_HOST_H
#define TESSARET_TESTS_C_OBJECT_HOST_H

#ifdef __cplusplus
extern "C" {
#endif

/* Each answers 0, or the line of c_object_host.c where something was not as it should be. `folder` is for files. */
int WalkObject(const char* folder);
int WalkManager(void);
int WalkDictionary(void);
int WalkOptions(void);

#ifdef __cplusplus
}
#endif

#endif
