#include "facade/dcm_cstore.h"

#include <utility>

#include "base/checked.h"
#include "base/text.h"
#include "facade/class_ids.h"
#include "facade/guard.h"
#include "services/peer_verification.h"

namespace tessaret {
namespace {

template <class Work>
Status Answer(Work work) {
  return Guarded<IDcmCStore>(class_id::kDcmCStore, work);
}

Status FailWith(const std::string& words) {
  return Report(class_id::kDcmCStore, words.c_str(), IDcmCStore::kId);
}

std::int16_t ShortOf(std::size_t count) { return SaturatingCast<std::int16_t>(count); }

StoreTarget TargetOf(const String& host, const String& port, const String& localTitle,
                     const String& remoteTitle, std::int32_t timeoutSecs) {
  return {.host = host.Utf8(),
          .port = port.Utf8(),
          .localTitle = localTitle.Utf8(),
          .remoteTitle = remoteTitle.Utf8(),
          .timeoutSecs = timeoutSecs};
}

}  // namespace

/// Turns what the sender tells into events.
class CDcmCStore::Listener final : public StoreListener {
 public:
  explicit Listener(CDcmCStore& store) : store_(store) {}

  void OnSent(const std::string& path, std::size_t index) override {
    TakeState();
    store_.Fire<&_IDcmCStoreEvents::SopSent>(String::FromUtf8(path), ShortOf(index));
  }
  void OnError(const std::string& path, std::size_t index, const std::string& words) override {
    TakeState();
    store_.Fire<&_IDcmCStoreEvents::SopError>(String::FromUtf8(path), ShortOf(index),
                                              String::FromUtf8(words));
  }
  void OnFinished(std::size_t sent, std::size_t errors) override {
    store_.Fire<&_IDcmCStoreEvents::Finished>(ShortOf(sent), ShortOf(errors));
  }

 private:
  void TakeState() {
    store_.sent_ = store_.sender_->Sent;
    store_.response_ = store_.sender_->Response;
    store_.associationError_ = store_.sender_->LinkWords;
  }

  CDcmCStore& store_;
};

Status CDcmCStore::SendFiles(const String& host, const String& port, const String& LocalAE,
                             const String& RemoteAE, std::int32_t TimeoutSecs) {
  if (TimeoutSecs < 0) return kInvalidArgument;
  if (sender_ != nullptr) return FailWith("Files are being sent already");
  // A sink may let go of the last reference but this.
  const Ref<IObject> alive(static_cast<IDcmCStore*>(this));
  return Answer([&] {
    Listener listener(*this);
    StoreSender sender(files_, listener);
    isCancelled_ = false;
    sent_ = 0;
    response_ = {};
    associationError_.clear();
    const StoreTarget target = TargetOf(host, port, LocalAE, RemoteAE, TimeoutSecs);
    struct Running {
      StoreSender*& sender;
      ~Running() { sender = nullptr; }
    } const running{sender_};
    sender_ = &sender;
    if (sender.Send(target, sopClasses_, isCancelled_)) return kOk;
    associationError_ = sender.LinkWords;
    return FailWith(sender.Failure);
  });
}

Status CDcmCStore::AddFile(const String& FilePath, const String& SOPClassUID) {
  return Answer([&] {
    // As it stands in its element it has a NUL or a blank behind it.
    const std::string sopClass(Trimmed(SOPClassUID.Narrow()));
    std::string path = FilePath.Utf8();
    // A class without a name cannot be proposed.
    const auto added =
        sopClass.empty() ? std::pair(sopClasses_.end(), false) : sopClasses_.insert(sopClass);
    try {
      files_.push_back(std::move(path));
    } catch (...) {
      if (added.second) sopClasses_.erase(added.first);
      throw;
    }
    return kOk;
  });
}

Status CDcmCStore::Cancel() {
  isCancelled_ = true;
  return kOk;
}

Status CDcmCStore::get_NumFiles(std::int16_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = ShortOf(files_.size());
  return kOk;
}

Status CDcmCStore::get_SentFiles(std::int16_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = ShortOf(sent_);
  return kOk;
}

Status CDcmCStore::get_FileName(std::int16_t Idx, String* pVal) {
  if (pVal == nullptr) return kPointer;
  if (Idx < 0 || static_cast<std::size_t>(Idx) >= files_.size()) return kInvalidArgument;
  return Answer([&] {
    *pVal = String::FromUtf8(files_[static_cast<std::size_t>(Idx)]);
    return kOk;
  });
}

Status CDcmCStore::get_ResponseStatus(std::int32_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = response_.status;
  return kOk;
}

Status CDcmCStore::get_ResponseComment(String* pVal) {
  if (pVal == nullptr) return kPointer;
  return Guarded<IDcmStoreResponse>(class_id::kDcmCStore, [&] {
    *pVal = String::FromNarrow(response_.comment);
    return kOk;
  });
}

Status CDcmCStore::get_AssociationError(String* pVal) {
  if (pVal == nullptr) return kPointer;
  return Guarded<IDcmStoreResponse>(class_id::kDcmCStore, [&] {
    *pVal = String::FromUtf8(associationError_);
    return kOk;
  });
}

Status CDcmCStore::Verify(const String& host, const String& port, const String& LocalAE,
                          const String& RemoteAE, std::int32_t TimeoutSecs, VariantBool* Answered) {
  if (Answered == nullptr) return kPointer;
  *Answered = false;
  if (TimeoutSecs < 0) return kInvalidArgument;
  return Guarded<IDcmVerification>(class_id::kDcmCStore, [&] {
    associationError_.clear();
    const VerificationOutcome outcome =
        VerifyPeer(TargetOf(host, port, LocalAE, RemoteAE, TimeoutSecs));
    associationError_ = outcome.linkWords;
    *Answered = outcome.isAnswered;
    if (outcome.failure.empty()) return kOk;
    return Report(class_id::kDcmCStore, outcome.failure.c_str(), IDcmVerification::kId);
  });
}

}  // namespace tessaret
