// The next file of a queue, loaded while the peer still works on the one before it.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>

#include "services/outgoing_object.h"

namespace tessaret {

class FileAhead {
 public:
  /// Loads the file by LoadForSending. Nothing is kept of one that is no file of a moderate size, that was changed just now, or that
  /// cannot be loaded to its end: all that is left for its turn. So is everything while there are traces, whose order is to be that of
  /// the work. Throws nothing but the end of a thread that is cancelled.
  void Load(const RTC* dictionary, const std::string& path);

  /// The object of that file; null unless it is the one that was loaded, as it was then. Nothing is kept afterwards.
  std::unique_ptr<DICOMDataObject> Take(const std::string& path);

 private:
  struct stat status_ {};
  std::unique_ptr<DICOMDataObject> object_;
};

}  // namespace tessaret
