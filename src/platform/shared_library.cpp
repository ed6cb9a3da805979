#include "platform/shared_library.h"

#include <dlfcn.h>

#include "platform/file_calls.h"

namespace tessaret {

SharedLibrary SharedLibrary::Load(const std::string& path) noexcept {
  SharedLibrary library;
  if (!path.empty() && !HasNul(path)) library.handle_ = ::dlopen(path.c_str(), RTLD_NOW);
  return library;
}

void* SharedLibrary::Find(const char* name) const noexcept {
  return handle_ == nullptr ? nullptr : ::dlsym(handle_, name);
}

void SharedLibrary::Unload() noexcept {
  if (handle_ != nullptr) ::dlclose(std::exchange(handle_, nullptr));
}

}  // namespace tessaret
