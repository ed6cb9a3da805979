// The one TCP endpoint of the library, over IPv4. It keeps the words of its last error, bounds every wait by one timeout, and can be
// closed by another thread, which ends what it waits for. Nothing here throws, but that a new one may find no memory.
//
// One thread at a time, but for Close: any thread may call it at any time, and no descriptor is closed while another thread still
// uses it.
#pragma once

#include <netdb.h>
#include <netinet/in.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/socket_calls.h"

namespace tessaret {

class Socket {
 public:
  /// Idle, with a timeout of 300 seconds. Switches the trace of sockets on where the environment variable "DCM_DUMP_SOCKET" is there.
  Socket();
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  /// Sends all of `length` bytes. 1; 0 when not connected, and with words when the link is lost, or the peer takes nothing for
  /// TimeoutSecs seconds.
  virtual int Send(const void* buffer, std::uint32_t length);
  /// Receives what has come, at most `length` bytes, and waits for the first of them. The number received; 0 when not connected; -1
  /// after a timeout or a wait that failed, with Error and words set, where the link is lost, with the words as they were, and where
  /// the peer has closed, with both as they were.
  virtual std::int64_t Read(void* buffer, std::uint32_t length);
  virtual ~Socket();
  /// Connects. `host` is a name, or an address if it begins with a digit other than 0; `port` is a number, or the name of a service. 1;
  /// 0 with words. Writes "Socket::Open() Select returned %d\n" to the standard error stream when the connect had to be waited for.
  virtual int Open(const std::string& host, const std::string& port);

  /// Waits for peers on `port` of every local address. 1; 0 with words. What was open or listened before is closed either way.
  int Listen(const std::string& port);
  /// Waits without a limit until a peer connects. 1; 0 with words.
  int Accept();
  /// Always 1. From another thread: ends what this socket waits for, within milliseconds.
  int Close();

  /// Takes a connected descriptor over, and closes what is open unless that is the very one. 0 and below are none.
  void Adopt(int connected);
  /// Listens on a descriptor that listens already and is the caller's. It must not be closed before GiveListener.
  void AdoptListener(int listening);
  /// Listens no more; the descriptor, which is the caller's again.
  int GiveListener();
  /// Closes the connection alone.
  void ClosePeer();
  /// Whether bytes, the end of the stream or an error can be had now, without waiting.
  bool HasInput();

  [[nodiscard]] const char* GetLastError() const { return ErrorText.data(); }

  std::int32_t Error = 0;  // not 0 after a failed connect, and a failed or timed-out read
  std::uint32_t ResolvedAddress = 0;     // of the host, in network order
  char** ResolvedAddressList = nullptr;  // leads to it alone
  std::atomic<int> DataSocket = 0;       // connected, or being so; 0: none
  std::atomic<int> ListenSocket = 0;     // 0: none
  std::atomic<std::int32_t> Connected = 0;
  std::atomic<std::int32_t> Listening = 0;
  std::array<char, 256> ErrorText{};  // words of the last error, cut to fit
  sockaddr_in Address{};   // the peer's after Open and Accept, the local one after Listen
  hostent HostEntry{};     // leads into this object
  servent ServiceEntry{};  // of a port that was named; its pointers are null
  std::int32_t TimeoutSecs = 300;
  // The two ends of the pipe by which Close ends a connect; 0: no connect is in progress.
  std::atomic<int> CancelRead = 0;
  std::atomic<int> CancelWrite = 0;

  /// How many there are in the process.
  static std::uint16_t InstanceCount();

 private:
  class CancelPipe;
  class Held;

  /// Leaves the words, cut to fit, for which no memory is taken. Always 0.
  [[gnu::format(printf, 2, 3)]] int Fail(const char* format, ...);
  /// Whether Close was called since Open or Listen began.
  [[nodiscard]] bool WasClosed() const { return closings_ != closingsBefore_; }
  [[nodiscard]] Deadline TimeLimit() const;

  const hostent* FindHostEntry(const std::string& host, const Deadline& deadline);
  /// The port in network order; 0 with words where there is none.
  std::uint16_t FindPort(const std::string& port);
  /// Waits for the connect in progress. 0 when it is over, ECANCELED, ETIMEDOUT, or the error of a failed wait.
  int AwaitConnect(int descriptor, const Deadline& deadline);
  /// Receives what comes within a few microseconds, in which a thread that sleeps would not even wake. EAGAIN when nothing did.
  SocketResult ReceiveSoon(int descriptor, void* buffer, std::uint32_t length);
  // What a call leads to. False, with what was open closed, where another thread has called Close meanwhile: nothing changes then.
  bool BecomeConnected();
  bool BecomeListening();
  bool KeepPeer(int descriptor);
  /// Closes what the field holds, now or when the last call that uses it returns, and clears the field.
  void Retire(std::atomic<int>& field) noexcept;
  void RetireLocked(std::atomic<int>& field) noexcept;

  std::mutex lock_;           // of descriptors, against Close by another thread
  int users_ = 0;             // calls that use a descriptor now
  std::vector<int> retired_;  // to be closed by the last of them
  std::atomic<std::uint32_t> closings_ = 0;
  std::uint32_t closingsBefore_ = 0;
  std::array<char*, 2> addressList_{};
  int readsToSleepAtOnce_ = 0;  // until one tries again whether the peer answers soon
};

}  // namespace tessaret
