/// The version of Tessaret: numbers of the headers that a program was compiled with, and of the library that it runs
/// with. For C and C++.
#ifndef TESSARET_VERSION_H
#define TESSARET_VERSION_H

/// The three numbers of the version. While the first is 0 the second changes with every incompatible change.
#define TESSARET_VERSION_MAJOR 0
#define TESSARET_VERSION_MINOR 1
#define TESSARET_VERSION_PATCH 0

/// The version as one number that grows with it: 0.1.0 is 100, 1.2.3 is 10203.
#define TESSARET_VERSION_NUMBER \
  (TESSARET_VERSION_MAJOR * 10000 + TESSARET_VERSION_MINOR * 100 + TESSARET_VERSION_PATCH)

#define TESSARET_VERSION_QUOTE_TOKEN(token) #token
#define TESSARET_VERSION_QUOTE(token) TESSARET_VERSION_QUOTE_TOKEN(token)

/// The version as a string literal, "0.1.0".
#define TESSARET_VERSION_STRING                                                  \
  TESSARET_VERSION_QUOTE(TESSARET_VERSION_MAJOR)                                 \
  "." TESSARET_VERSION_QUOTE(TESSARET_VERSION_MINOR) "." TESSARET_VERSION_QUOTE( \
      TESSARET_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/// Returns the version of the library in use, such as "0.1.0", as ASCII text. It differs from TESSARET_VERSION_STRING
/// when a program runs with another library than it was compiled for. Never null; the text lives as long as the library
/// is loaded and belongs to it. Safe to call from any thread.
const char* tessaret_version(void);

#ifdef __cplusplus
}
#endif

#endif
