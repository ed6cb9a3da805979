#include "facade/module.h"

#include "component/component_object.h"
#include "component/report.h"
#include "core/module_dictionaries.h"
#include "facade/class_ids.h"
#include "facade/dcm_dictionary.h"
#include "facade/dcm_object.h"
#include "facade/dcm_options.h"
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
     &NotYet<ids::kDcmCStore>},
};

/// The outcome of the one attempt.
struct Start {
  Start() {
    RegisterClasses(kClasses);
    const MessageSink sink = [this](const std::string& text, const std::string& caption) {
      why = text;
      WriteMessageToStandardError(text, caption);
    };
    started = StartDictionaries(ModuleDirectory(), sink);
    ReadOptions();
  }

  bool started = false;
  std::string why;
};

const Start& TheStart() {
  static const Start start;
  return start;
}

}  // namespace

std::span<const ClassRow> AllClasses() { return kClasses; }

bool StartModule() { return TheStart().started; }

const std::string& WhyNotStarted() { return TheStart().why; }

}  // namespace tessaret
