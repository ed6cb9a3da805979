#include "platform/shared_library.h"

#include <dlfcn.h>

#include "platform/file_calls.h"
#include "platform/hold_cancellation.h"

namespace tessaret {

SharedLibrary SharedLibrary::Load(const std::string& path) noexcept {
  const HoldCancellation hold;
  SharedLibrary library;
  if (!path.empty() && !HasNul(path)) library.handle_ = ::dlopen(path.c_str(), RTLD_NOW);
  return library;
}

void* SharedLibrary::Find(const char* name) const noexcept {
  return handle_ == nullptr ? nullptr : ::dlsym(handle_, name);
}

void SharedLibrary::Unload() noexcept {
  const HoldCancellation hold;
  if (handle_ != nullptr) ::dlclose(std::exchange(handle_, nullptr));
}

}  // namespace tessaret
