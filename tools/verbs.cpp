#include "verbs.h"

namespace tessaret::tool {
namespace {

constexpr Verb kVerbs[] = {
    {"dump", "Show what DICOM files hold", &SetUpDump},
    {"get", "Print values of a DICOM file, for scripts", &SetUpGet},
    {"set", "Change elements of a DICOM file", &SetUpSet},
    {"check", "Say which DICOM files do not read, and why", &SetUpCheck},
    {"convert", "Write a DICOM file anew in another encoding", &SetUpConvert},
    {"transcode", "Write a DICOM file with its pixel data in another transfer syntax",
     &SetUpTranscode},
    {"echo", "Ask a DICOM node whether it is there", &SetUpEcho},
    {"send", "Send DICOM files to a node", &SetUpSend},
    {"dictionary", "Tell what the dictionaries know of a tag, a UID or a word", &SetUpDictionary},
    {"phantom", "Make a series of test images", &SetUpPhantom},
    {"__man", "Write man pages and completions", &SetUpManual, false},
};

}  // namespace

std::span<const Verb> Verbs() { return kVerbs; }

}  // namespace tessaret::tool
