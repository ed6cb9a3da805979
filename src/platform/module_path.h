// Where the library lies, and where its data files are.
#pragma once

#include <string>

namespace tessaret {

/// The directory with "dicom-dict.txt" and the other files that belong to the library, ending in "/". In this order: what
/// the environment variable TESSARET_DATA_DIR names, whether or not the files are there; the directory of the file that this
/// code was loaded from; "share/tessaret" beside that directory, or beside the one above it, where an installed copy keeps them.
/// The directory of the code when no place has the files.
std::string ModuleDirectory();

/// The directory of the file that this code was loaded from, ending in "/".
std::string CodeDirectory();

/// The directory of the program that this process runs, ending in "/", also when the program's file is gone meanwhile; empty where
/// the system does not tell.
std::string ProgramDirectory();

}  // namespace tessaret
