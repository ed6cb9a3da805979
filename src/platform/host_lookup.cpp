#include "platform/host_lookup.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

#include "platform/file_calls.h"
#include "platform/hold_cancellation.h"

namespace tessaret {
namespace {

constexpr std::chrono::milliseconds kBetweenQuestions{20};
constexpr std::size_t kMostServiceBytes = std::size_t{1} << 16;

std::atomic<HostLookup> hostLookup = nullptr;

std::optional<in_addr> AskSystem(const std::string& name) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0) return std::nullopt;
  std::optional<in_addr> address;
  if (found != nullptr) address = reinterpret_cast<sockaddr_in*>(found->ai_addr)->sin_addr;
  ::freeaddrinfo(found);
  return address;
}

std::optional<in_addr> Ask(const std::string& name) {
  const HostLookup replaced = hostLookup.load();
  return replaced == nullptr ? AskSystem(name) : replaced(name);
}

/// One look-up, shared by who waits for it and the thread that makes it.
struct Lookup {
  std::string name;
  std::mutex lock;
  std::condition_variable changed;
  bool isDone = false;
  std::optional<in_addr> address;
};

void Make(const std::shared_ptr<Lookup>& lookup) noexcept {
  std::optional<in_addr> address;
  try {
    address = Ask(lookup->name);
  } catch (...) {  // without memory nothing is found
  }
  const std::lock_guard held(lookup->lock);
  lookup->isDone = true;
  lookup->address = address;
  lookup->changed.notify_all();
}

/// Keeps the library that this code lies in loaded for ever, since a thread that is left behind will return to it.
void StayLoaded() noexcept {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<const void*>(&StayLoaded), &info) == 0) return;
  ::dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

/// The thread of a look-up, which is left behind where its caller does not stay until the end, be it that it is cancelled itself.
class Maker {
 public:
  explicit Maker(const std::shared_ptr<Lookup>& lookup) : thread_(&Make, lookup) {}
  Maker(const Maker&) = delete;
  Maker& operator=(const Maker&) = delete;
  ~Maker() {
    if (!thread_.joinable()) return;
    const HoldCancellation hold;
    StayLoaded();
    thread_.detach();
  }
  /// Once it has answered.
  void Join() {
    const HoldCancellation hold;
    thread_.join();
  }

 private:
  std::thread thread_;
};

}  // namespace

std::optional<in_addr> FindHost(const std::string& name, const Deadline& deadline,
                                const std::function<bool()>& isGivenUp) {
  std::shared_ptr<Lookup> lookup;
  std::optional<Maker> maker;
  try {
    lookup = std::make_shared<Lookup>();
    lookup->name = name;
    maker.emplace(lookup);
  } catch (const std::exception&) {
    // Without a thread, or memory for one, it is made here, for as long as the system takes.
    return Ask(name);
  }
  std::unique_lock held(lookup->lock);
  while (!lookup->isDone) {
    const bool isLate = deadline && std::chrono::steady_clock::now() >= *deadline;
    if (isLate || isGivenUp() || AreFileCallsCancelled()) return std::nullopt;
    lookup->changed.wait_for(held, kBetweenQuestions);
  }
  held.unlock();
  maker->Join();
  return lookup->address;
}

in_addr DottedAddress(const std::string& text) { return in_addr{::inet_addr(text.c_str())}; }

std::optional<std::uint16_t> FindServicePort(const std::string& name) {
  servent entry{};
  servent* found = nullptr;
  for (std::size_t size = 1024; size <= kMostServiceBytes; size *= 2) {
    const std::unique_ptr<char[]> room(new (std::nothrow) char[size]);
    if (!room) return std::nullopt;
    const int answer = ::getservbyname_r(name.c_str(), nullptr, &entry, room.get(), size, &found);
    if (answer == ERANGE) continue;
    if (answer != 0 || found == nullptr) return std::nullopt;
    return ntohs(static_cast<std::uint16_t>(found->s_port));
  }
  return std::nullopt;
}

void SetHostLookup(HostLookup lookup) { hostLookup = lookup; }

}  // namespace tessaret
