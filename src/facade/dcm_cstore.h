// Class "Tessaret.DcmCStore": a queue of files behind the public interface.
#pragma once

#include <atomic>
#include <set>
#include <string>
#include <vector>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "component/event_source.h"
#include "services/store_sender.h"
#include "tessaret/idcm_cstore.hpp"
#include "tessaret/idcm_store_response.hpp"
#include "tessaret/idcm_verification.hpp"

namespace tessaret {

class CDcmCStore final
    : public ComponentObject<CallableByName<IDcmCStore>, EventSource<_IDcmCStoreEvents>,
                             CallableByName<IDcmStoreResponse>, CallableByName<IDcmVerification>> {
 public:
  explicit CDcmCStore(IObject* outer) : ComponentObject(outer) {}

  Status SendFiles(const String& host, const String& port, const String& LocalAE,
                   const String& RemoteAE, std::int32_t TimeoutSecs) override;
  Status AddFile(const String& FilePath, const String& SOPClassUID) override;
  Status Cancel() override;
  Status get_NumFiles(std::int16_t* pVal) override;
  Status get_SentFiles(std::int16_t* pVal) override;
  Status get_FileName(std::int16_t Idx, String* pVal) override;

  Status get_ResponseStatus(std::int32_t* pVal) override;
  Status get_ResponseComment(String* pVal) override;
  Status get_AssociationError(String* pVal) override;

  Status Verify(const String& host, const String& port, const String& LocalAE,
                const String& RemoteAE, std::int32_t TimeoutSecs, VariantBool* Answered) override;

 private:
  class Listener;

  std::vector<std::string> files_;  // in UTF-8
  std::set<std::string> sopClasses_;
  std::atomic<bool> isCancelled_ = false;
  StoreSender* sender_ = nullptr;  // while SendFiles runs
  std::size_t sent_ = 0;
  StoreResponse response_;
  std::string associationError_;
};

}  // namespace tessaret
