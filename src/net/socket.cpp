#include "net/socket.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <thread>

#include "base/leading_number.h"
#include "core/dump.h"
#include "core/trace.h"
#include "platform/hold_cancellation.h"
#include "platform/host_lookup.h"

namespace tessaret {
namespace {

constexpr int kBacklog = 5;
constexpr int kStoredLingerSeconds = 30;
constexpr std::int32_t kCancelWord = 1;
// A peer on this machine, or near it, mostly answers within this time; the system takes as long to wake a thread that sleeps.
constexpr std::chrono::microseconds kSoon{50};
// How many reads sleep at once after one for which nothing came soon: a peer that takes its time costs next to no processor time.
constexpr int kReadsToSleepAtOnce = 15;
// For how long no peer is taken where the system has no descriptors left.
constexpr std::chrono::milliseconds kPauseWithoutDescriptors{50};

std::atomic<std::uint16_t> instanceCount = 0;

/// The system's words for an error, as long as this lives.
class SystemWords {
 public:
  explicit SystemWords(int error) : words_(SystemErrorText(error, room_)) {}
  SystemWords(const SystemWords&) = delete;
  SystemWords& operator=(const SystemWords&) = delete;
  [[nodiscard]] const char* Text() const { return words_; }

 private:
  std::array<char, 256> room_{};
  const char* words_;
};

/// Errors of a peer that has gone again or of the way to it, or of a lack that passes.
bool IsPassing(int error) {
  switch (error) {
    case EAGAIN:
    case ECONNABORTED:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case EMFILE:
    case ENETDOWN:
    case ENETUNREACH:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
    case EPROTO:
      return true;
    default:
      return false;
  }
}

}  // namespace

/// A descriptor that stays open while this lives, whoever closes the socket.
class Socket::Held {
 public:
  Held(Socket& socket, const std::atomic<int>& field) : socket_(socket) {
    const std::lock_guard held(socket_.lock_);
    descriptor_ = field;
    ++socket_.users_;
  }
  /// Makes a new descriptor the DataSocket, unless Close was called since Open or Listen began: then it is only held.
  Held(Socket& socket, int opened) : socket_(socket), descriptor_(opened) {
    const std::lock_guard held(socket_.lock_);
    ++socket_.users_;
    if (socket_.WasClosed()) {
      socket_.retired_.push_back(opened);
    } else {
      socket_.DataSocket = opened;
    }
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() {
    const HoldCancellation hold;
    const std::lock_guard held(socket_.lock_);
    if (--socket_.users_ != 0) return;
    for (const int retired : socket_.retired_) CloseFile(retired);
    socket_.retired_.clear();
  }
  /// 0 where another thread closed the socket first.
  [[nodiscard]] int Descriptor() const { return descriptor_; }

 private:
  Socket& socket_;
  int descriptor_;
};

/// The pipe by which Close wakes Open, there while this lives.
class Socket::CancelPipe {
 public:
  explicit CancelPipe(Socket& socket) : socket_(socket) {
    std::array<int, 2> ends{};
    opened_ = OpenSocketPair(ends);
    if (!opened_.Ok()) return;
    const std::lock_guard held(socket_.lock_);
    socket_.CancelRead = ends[0];
    socket_.CancelWrite = ends[1];
  }
  CancelPipe(const CancelPipe&) = delete;
  CancelPipe& operator=(const CancelPipe&) = delete;
  ~CancelPipe() {
    if (!opened_.Ok()) return;
    const HoldCancellation hold;
    const std::lock_guard held(socket_.lock_);
    CloseFile(socket_.CancelRead.exchange(0));
    CloseFile(socket_.CancelWrite.exchange(0));
  }
  [[nodiscard]] int Error() const { return opened_.error; }
  [[nodiscard]] bool HasWord() const {
    std::int32_t word = 0;
    const SocketResult received = ReceiveSome(socket_.CancelRead, &word, sizeof word);
    return received.Ok() && received.value > 0;
  }

 private:
  Socket& socket_;
  SocketResult opened_;
};

Socket::Socket() {
  SetSocketDumpFromEnvironment();
  // Closing never needs memory.
  retired_.reserve(4);
  ++instanceCount;
}

Socket::~Socket() {
  Retire(DataSocket);
  Retire(ListenSocket);
  --instanceCount;
}

std::uint16_t Socket::InstanceCount() { return instanceCount; }

int Socket::Send(const void* buffer, std::uint32_t length) {
  if (Connected == 0) return 0;
  if (IsDumping(kDumpSocket)) {
    DumpTrace(kDumpSocket, "Sending %d bytes\n", static_cast<int>(length));
    DumpHex(buffer, length);
  }
  const Held data(*this, DataSocket);
  const auto* from = static_cast<const std::uint8_t*>(buffer);
  std::uint32_t left = length;
  int error = data.Descriptor() == 0 ? ENOTCONN : 0;
  while (left != 0 && error == 0) {
    const SocketResult sent = SendSome(data.Descriptor(), from, left);
    if (sent.Ok()) {
      from += sent.value;
      left -= static_cast<std::uint32_t>(sent.value);
    } else if (sent.error == EAGAIN) {
      Waiting room{.descriptor = data.Descriptor(), .forWriting = true};
      const SocketResult ready = WaitForSockets(room, nullptr, TimeLimit());
      error = ready.Ok() && ready.value == 0 ? ETIMEDOUT : ready.error;
    } else {
      error = sent.error;
    }
  }
  if (error == 0) return 1;
  return Fail("Send(%ud): Error binary send wsaerr=%d msg=%s", length, error,
              SystemWords(error).Text());
}

std::int64_t Socket::Read(void* buffer, std::uint32_t length) {
  if (Connected == 0) return 0;
  const Held data(*this, DataSocket);
  if (data.Descriptor() == 0) return 0;
  const Deadline deadline = TimeLimit();
  // What has come already needs no wait.
  SocketResult received = ReceiveSome(data.Descriptor(), buffer, length);
  if (received.error == EAGAIN && TimeoutSecs > 0)
    received = ReceiveSoon(data.Descriptor(), buffer, length);
  // Without it the wait is longer, and no more.
  if (received.error == EAGAIN) AcknowledgeAtOnce(data.Descriptor());
  while (received.error == EAGAIN) {
    Waiting input{.descriptor = data.Descriptor(), .forWriting = false};
    const SocketResult ready =
        TimeoutSecs < 0 ? SocketResult{-1, EINVAL} : WaitForSockets(input, nullptr, deadline);
    if (ready.value != 1) {
      Error = 1;
      ready.value == 0 ? Fail("Timeout error reading from socket")
                       : Fail("Read socket error: %d", static_cast<int>(ready.value));
      return -1;
    }
    received = ReceiveSome(data.Descriptor(), buffer, length);
  }
  if (received.Ok() && received.value == 0) return -1;
  Error = 0;
  if (received.Ok() && IsDumping(kDumpSocket)) {
    DumpTrace(kDumpSocket, "received %d bytes\n", static_cast<int>(received.value));
    DumpHex(buffer, static_cast<std::size_t>(received.value));
  }
  return received.value;
}

SocketResult Socket::ReceiveSoon(int descriptor, void* buffer, std::uint32_t length) {
  SocketResult received{-1, EAGAIN};
  if (readsToSleepAtOnce_ > 0) {
    --readsToSleepAtOnce_;
    return received;
  }
  const auto end = std::chrono::steady_clock::now() + kSoon;
  do {
    received = ReceiveSome(descriptor, buffer, length);
  } while (received.error == EAGAIN && std::chrono::steady_clock::now() < end);
  if (received.error == EAGAIN) readsToSleepAtOnce_ = kReadsToSleepAtOnce;
  return received;
}

int Socket::Open(const std::string& host, const std::string& port) {
  closingsBefore_ = closings_;
  ErrorText.front() = '\0';
  Retire(DataSocket);
  Connected = 0;
  const Deadline deadline = TimeLimit();
  const char* const hostText = host.c_str();
  const char* const portText = port.c_str();
  const hostent* entry = FindHostEntry(host, deadline);
  if (WasClosed()) return Fail("Operation Canceled");
  if (entry == nullptr) {
    return Fail("Open(%s,%s): could not resolve [%s]", hostText, portText, hostText);
  }
  const std::uint16_t portNumber = FindPort(port);
  if (portNumber == 0) {
    return Fail("Open(%s,%s): could not resolve port[%s]", hostText, portText, portText);
  }

  const SocketResult opened = OpenTcpSocket();
  if (!opened.Ok()) {
    return Fail("Open(%s,%s): could not create sopcket wsaerr=%d msg=%s", hostText, portText,
                opened.error, SystemWords(opened.error).Text());
  }
  Address = sockaddr_in{};
  Address.sin_family = AF_INET;
  Address.sin_port = portNumber;
  std::memcpy(&Address.sin_addr, entry->h_addr_list[0], sizeof Address.sin_addr);
  const Held data(*this, static_cast<int>(opened.value));
  if (WasClosed()) return Fail("Operation Canceled");
  // One that waits in calls would connect for as long as the system takes.
  int error = SetBlocking(data.Descriptor(), false).error;
  if (error == 0) error = ConnectSocket(data.Descriptor(), Address).error;
  if (error == EINPROGRESS) {
    error = AwaitConnect(data.Descriptor(), deadline);
    if (error == ECANCELED || error == ETIMEDOUT) {
      Retire(DataSocket);
      Error = error == ECANCELED ? 0 : -1;
      return Fail(error == ECANCELED ? "Operation Canceled" : "Operation timed out");
    }
  }
  Error = error == 0 ? 0 : 1;
  if (error == 0) {
    error = SetBlocking(data.Descriptor(), true).error;
  } else {
    Retire(DataSocket);
  }
  if (error != 0) {
    return Fail("Open(%s,%s): Error on connect wsaerr=%d msg=%s", hostText, portText, error,
                SystemWords(error).Text());
  }
  SetNoDelay(data.Descriptor());
  return BecomeConnected() ? 1 : Fail("Operation Canceled");
}

bool Socket::BecomeConnected() {
  const std::lock_guard held(lock_);
  if (WasClosed()) return false;
  Connected = 1;
  return true;
}

int Socket::AwaitConnect(int descriptor, const Deadline& deadline) {
  const CancelPipe pipe(*this);
  if (pipe.Error() != 0) return pipe.Error();
  Waiting connect{.descriptor = descriptor, .forWriting = true};
  Waiting cancel{.descriptor = CancelRead, .forWriting = false};
  SocketResult ready{-1, EINVAL};
  // A Close that came before the pipe was there has sent nothing.
  if (WasClosed()) {
    ready = {1, ECANCELED};
  } else if (TimeoutSecs >= 0) {
    ready = WaitForSockets(connect, &cancel, deadline);
  }
  std::fprintf(stderr, "Socket::Open() Select returned %d\n", static_cast<int>(ready.value));
  if (ready.value > 0 && pipe.HasWord()) ready.error = ECANCELED;
  if (ready.error == ECANCELED) std::fprintf(stderr, "Operation cancelled\n");
  if (ready.Ok()) return ready.value == 0 ? ETIMEDOUT : 0;
  return ready.error;
}

int Socket::Close() {
  const HoldCancellation hold;
  const std::lock_guard held(lock_);
  ++closings_;
  if (CancelRead != 0) SendSome(CancelWrite, &kCancelWord, sizeof kCancelWord);
  RetireLocked(ListenSocket);
  RetireLocked(DataSocket);
  Connected = 0;
  Listening = 0;
  return 1;
}

int Socket::Listen(const std::string& port) {
  closingsBefore_ = closings_;
  Connected = 0;
  Listening = 0;
  Retire(DataSocket);
  // Nobody would take the peers of one that listened before, and its port is to be had again.
  Retire(ListenSocket);
  const std::uint16_t portNumber = FindPort(port);
  if (portNumber == 0) return 0;
  const SocketResult opened = OpenTcpSocket();
  if (!opened.Ok()) {
    return Fail("socket(PF_INET, SOCK_STREM, IPPROT_TCP): wsaerr=%d msg=[%s]\n", opened.error,
                SystemWords(opened.error).Text());
  }
  const Held data(*this, static_cast<int>(opened.value));
  Address = sockaddr_in{};
  Address.sin_family = AF_INET;
  Address.sin_port = portNumber;
  Address.sin_addr.s_addr = htonl(INADDR_ANY);
  SetNoLinger(data.Descriptor(), kStoredLingerSeconds);
  SetReusable(data.Descriptor());
  const SocketResult bound = BindSocket(data.Descriptor(), Address);
  const SocketResult listens =
      bound.Ok() ? ListenOnSocket(data.Descriptor(), kBacklog) : SocketResult{};
  if (!bound.Ok() || !listens.Ok()) {
    Retire(DataSocket);
    const int error = bound.Ok() ? listens.error : bound.error;
    return Fail("%s(): wsaerr=%d msg=[%s]\n", bound.Ok() ? "listen" : "bind", error,
                SystemWords(error).Text());
  }
  return BecomeListening() ? 1 : Fail("Operation Canceled");
}

bool Socket::BecomeListening() {
  const std::lock_guard held(lock_);
  if (WasClosed()) return false;
  ListenSocket = DataSocket.exchange(0);
  Listening = 1;
  return true;
}

int Socket::Accept() {
  if (Listening == 0) return Fail("Accept(): Not listening");
  if (ListenSocket == 0) return Fail("Accept(): No socket opened for listening");
  const Held listener(*this, ListenSocket);
  SocketResult accepted{-1, EBADF};
  while (listener.Descriptor() != 0) {
    Waiting peer{.descriptor = listener.Descriptor(), .forWriting = false};
    const SocketResult ready = WaitForSockets(peer, nullptr, std::nullopt);
    accepted = ready.Ok() ? AcceptPeer(listener.Descriptor(), Address) : ready;
    if (accepted.Ok() || !IsPassing(accepted.error) || ListenSocket == 0) break;
    // The peer waits on; without a pause this would spin until others give descriptors back.
    if (accepted.error != EAGAIN) std::this_thread::sleep_for(kPauseWithoutDescriptors);
  }
  if (accepted.Ok() && !KeepPeer(static_cast<int>(accepted.value))) accepted = {-1, ECANCELED};
  if (!accepted.Ok()) {
    Retire(ListenSocket);
    Retire(DataSocket);
    Connected = 0;
    Listening = 0;
    return Fail("Accept(): wsaerr=%d msg=[%s]\n", accepted.error,
                SystemWords(accepted.error).Text());
  }
  return 1;
}

bool Socket::KeepPeer(int descriptor) {
  SetNoDelay(descriptor);
  const HoldCancellation hold;
  const std::lock_guard held(lock_);
  if (ListenSocket == 0) {
    CloseFile(descriptor);
    return false;
  }
  RetireLocked(DataSocket);
  DataSocket = descriptor;
  Connected = 1;
  return true;
}

void Socket::Adopt(int connected) {
  if (DataSocket != connected) ClosePeer();
  if (connected <= 0) return;
  SetNoDelay(connected);
  DataSocket = connected;
  Connected = 1;
}

void Socket::AdoptListener(int listening) {
  if (ListenSocket != listening) Retire(ListenSocket);
  ListenSocket = listening;
  Listening = listening != 0 ? 1 : 0;
}

int Socket::GiveListener() {
  Listening = 0;
  return ListenSocket.exchange(0);
}

void Socket::ClosePeer() {
  Retire(DataSocket);
  Connected = 0;
}

bool Socket::HasInput() {
  if (Connected == 0) return false;
  const Held data(*this, DataSocket);
  Waiting input{.descriptor = data.Descriptor(), .forWriting = false};
  return data.Descriptor() != 0 && WaitForSockets(input, nullptr, DeadlineIn(0)).value > 0;
}

int Socket::Fail(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(ErrorText.data(), ErrorText.size(), format, arguments);
  va_end(arguments);
  return 0;
}

Deadline Socket::TimeLimit() const {
  return std::chrono::steady_clock::now() + std::chrono::seconds(std::max(TimeoutSecs, 0));
}

const hostent* Socket::FindHostEntry(const std::string& host, const Deadline& deadline) {
  std::optional<in_addr> found;
  if (LeadingLong(host) == 0) {
    found = FindHost(host, deadline, [this] { return WasClosed(); });
    const bool isLate = deadline && std::chrono::steady_clock::now() >= *deadline;
    if (!found && isLate) return nullptr;
  }
  // A name that nobody knows is taken for an address, as one that begins with a digit.
  ResolvedAddress = found ? found->s_addr : DottedAddress(host).s_addr;
  addressList_ = {reinterpret_cast<char*>(&ResolvedAddress), nullptr};
  ResolvedAddressList = addressList_.data();
  HostEntry = hostent{};
  HostEntry.h_addrtype = AF_INET;
  HostEntry.h_length = sizeof ResolvedAddress;
  HostEntry.h_addr_list = ResolvedAddressList;
  return &HostEntry;
}

std::uint16_t Socket::FindPort(const std::string& port) {
  const auto number = static_cast<std::uint16_t>(LeadingLong(port));
  if (number != 0) return htons(number);
  const std::optional<std::uint16_t> found = FindServicePort(port);
  if (!found) {
    Fail("Error getservbyname(%s, %s)", port.c_str(), "NULL");
    return 0;
  }
  ServiceEntry = servent{};
  ServiceEntry.s_port = htons(*found);
  return htons(*found);
}

void Socket::Retire(std::atomic<int>& field) noexcept {
  const HoldCancellation hold;
  const std::lock_guard held(lock_);
  RetireLocked(field);
}

void Socket::RetireLocked(std::atomic<int>& field) noexcept {
  const int descriptor = field.exchange(0);
  if (descriptor == 0) return;
  // Closing alone would not wake a thread that waits on it.
  ShutDownSocket(descriptor);
  if (users_ == 0) {
    CloseFile(descriptor);
  } else {
    retired_.push_back(descriptor);
  }
}

}  // namespace tessaret
