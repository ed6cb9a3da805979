// A shared library that is loaded at run time and unloaded again.
#pragma once

#include <string>
#include <utility>

namespace tessaret {

/// Holds one library loaded, or none. Loading and unloading run code of the library: what it throws then ends the process, and a
/// thread that is to be cancelled lives on for so long.
class SharedLibrary {
 public:
  SharedLibrary() = default;
  SharedLibrary(SharedLibrary&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  SharedLibrary& operator=(SharedLibrary&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~SharedLibrary() { Unload(); }

  /// Loads the library at `path`, or by the loader's search where that has no "/" in it. Nothing is loaded on failure, and for
  /// an empty name, which would stand for the program itself, and one with a NUL in it.
  static SharedLibrary Load(const std::string& path) noexcept;

  [[nodiscard]] bool IsLoaded() const noexcept { return handle_ != nullptr; }

  /// The address of what the library, or one that it is linked with, exports under this name; null when there is none.
  [[nodiscard]] void* Find(const char* name) const noexcept;

  /// The same for a function of this type.
  template <class Function>
  [[nodiscard]] Function* FindFunction(const char* name) const noexcept {
    return reinterpret_cast<Function*>(Find(name));
  }

  void Unload() noexcept;

 private:
  void* handle_ = nullptr;
};

}  // namespace tessaret
