#include "tessaret/version.h"

const char* tessaret_version(void) { return TESSARET_VERSION_STRING; }
