#include "facade/module.h"

#include <atomic>
#include <cerrno>
#include <mutex>

#include "component/component_object.h"
#include "component/object_count.h"
#include "component/report.h"
#include "core/module_dictionaries.h"
#include "core/vr_pool.h"
#include "facade/class_ids.h"
#include "facade/dcm_cstore.h"
#include "facade/dcm_dictionary.h"
#include "facade/dcm_object.h"
#include "facade/dcm_options.h"
#include "platform/file_calls.h"
#include "platform/fork_locks.h"
#include "platform/library_end.h"
#include "platform/module_path.h"

namespace tessaret {
namespace {

/// Stands for a class whose body is still to come.
template <const ClassId& kId>
Status NotYet(IObject*, const InterfaceId& id, void** object) {
  if (object == nullptr) return kPointer;
  *object = nullptr;
  Report(kId, "This class is not available in this version", id);
  return kNotImplemented;
}

namespace ids = class_id;

constexpr ClassRow kClasses[] = {
    {"Tessaret.DCMObject", ids::kDCMObject, "IDCMObject", "_IDCMObjectEvents",
     &CreateObjectOf<CDCMObject>},
    {"Tessaret.DcmOblique", ids::kDcmOblique, "IDCMOblique", "_IDCMObliqueEvents",
     &NotYet<ids::kDcmOblique>},
    {"Tessaret.DCMDicomDir", ids::kDCMDicomDir, "IDCMDicomDir", "_IDCMDicomDirEvents",
     &NotYet<ids::kDCMDicomDir>},
    {"Tessaret.ViewParameter", ids::kViewParameter, "IViewParameters", "",
     &NotYet<ids::kViewParameter>},
    {"Tessaret.DCMOptions", ids::kDCMOptions, "IDCMOptions", "_IDCMOptionsEvents",
     &CreateObjectOf<CDCMOptions>},
    {"Tessaret.ImageModule", ids::kImageModule, "IImageModule", "", &NotYet<ids::kImageModule>},
    {"Tessaret.DcmDictionary", ids::kDcmDictionary, "IDcmDictionary", "",
     &CreateObjectOf<CDcmDictionary>},
    {"Tessaret.DCMVolume", ids::kDCMVolume, "IDCMVolume", "_IDCMVolumeEvents",
     &NotYet<ids::kDCMVolume>},
    {"Tessaret.DcmQueryRetrieve", ids::kDcmQueryRetrieve, "IDcmQueryRetrieve",
     "_IDcmQueryRetrieveEvents", &NotYet<ids::kDcmQueryRetrieve>},
    {"Tessaret.XDIDomain", ids::kXDIDomain, "IXDIDomain", "", &NotYet<ids::kXDIDomain>},
    {"Tessaret.XDIConsumer", ids::kXDIConsumer, "IXDIConsumer", "_IXDIConsumerEvents",
     &NotYet<ids::kXDIConsumer>},
    {"Tessaret.DcmCStore", ids::kDcmCStore, "IDcmCStore", "_IDcmCStoreEvents",
     &CreateObjectOf<CDcmCStore>},
};

/// The words of a failed start with what the data dictionary keeps beside them, and the file that the words of the UID dictionary may
/// lack.
std::string InFull(const std::string& words, const std::string& directory) {
  const std::string& reason = ModuleDictionary().LastErrorText();
  std::string full = reason.empty() ? words : words + ": " + reason;
  if (full.find('[' + directory) != std::string::npos) return full;
  return "Error reading [" + directory + kUidDictionaryFile + "]: " + full;
}

/// The outcome of the one attempt.
struct Start {
  explicit Start(bool isQuiet) {
    RegisterClasses(kClasses);
    std::string title;
    const MessageSink sink = [&](const std::string& text, const std::string& caption) {
      why = text;
      title = caption;
    };
    const std::string directory = ModuleDirectory();
    started = StartDictionaries(directory, sink);
    if (!started) {
      whyInFull = InFull(why, directory);
      if (whyInFull.ends_with(SystemErrorText(ECANCELED))) throw StartCancelled(whyInFull);
      if (!isQuiet) WriteMessageToStandardError(why, title);
    }
    ReadOptions();
  }

  bool started = false;
  std::string why;
  std::string whyInFull;
};

constinit std::atomic<const Start*> theStart = nullptr;

/// Who asks first says whether a failure is told.
const Start& TheStart(bool isQuiet = false) {
  if (const Start* const made = theStart.load(std::memory_order_acquire)) return *made;
  // The lock of the static object itself no fork would wait for.
  const std::lock_guard lock(forkLocks.start);
  static const Start start(isQuiet);
  theStart.store(&start, std::memory_order_release);
  return start;
}

[[gnu::destructor]] void GoWithTheLibrary() noexcept {
  if (!DoesProcessEnd() && MayUnload()) FreeVrBlocks();
}

}  // namespace

std::span<const ClassRow> AllClasses() { return kClasses; }

bool StartModule() { return TheStart().started; }

bool StartModuleQuietly() { return TheStart(true).started; }

const std::string& WhyNotStarted() { return TheStart().why; }

const std::string& WhyNotStartedInFull() { return TheStart().whyInFull; }

}  // namespace tessaret
