// What another thread may do to an association, and many of them at once.
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <semaphore>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/end_in_time.h"
#include "net/identifiers.h"
#include "net/threaded_provider.h"
#include "support/all_threads.h"
#include "support/held_resources.h"

namespace tessaret::test {
namespace {

/// Whether a thread of this process waits for something in the system.
bool Waits(pid_t thread) {
  std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string line;
  std::getline(stat, line);
  // Its state stands behind its name, which is in parentheses.
  return line.find(") S ") != std::string::npos;
}

/// Runs `work`, which waits on `link` for a peer that does nothing, and closes the link meanwhile. Seconds from there to its end.
template <class Work>
double SecondsToEnd(Socket& link, Work work) {
  std::atomic<pid_t> begun = 0;
  std::atomic<bool> hasEnded = false;
  std::thread worker([&] {
    begun = ::gettid();
    work();
    hasEnded = true;
  });
  while (begun == 0) std::this_thread::yield();
  // Before that it may have no link to close, and would wait on one that nobody closes.
  while (!Waits(begun) && !hasEnded) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(kInstrumented ? 400 : 50));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(hasEnded);
  link.Close();
  worker.join();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(CloseByAnotherThread, EndsARead) {
  ExpectEndInTime("a read", [] {
    Association association({{1, kEcho, kImplicit}});
    return SecondsToEnd(association.pdu.Link, [&] {
      DICOMCommandObject command;
      EXPECT_EQ(association.pdu.Read(command), 0);
      EXPECT_EQ(Words(association.pdu), "The link was closed");
    });
  });
}

TEST(CloseByAnotherThread, EndsARequestThatIsNotAnswered) {
  ExpectEndInTime("a request", [] {
    const Listener silent;
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    return SecondsToEnd(pdu.Link, [&] { EXPECT_EQ(pdu.Connect("127.0.0.1", silent.Port()), 0); });
  });
}

TEST(CloseByAnotherThread, EndsAReleaseThatIsNotAnswered) {
  ExpectEndInTime("a release", [] {
    Association association({{1, kEcho, kImplicit}});
    return SecondsToEnd(association.pdu.Link, [&] { EXPECT_EQ(association.pdu.Close(), 1); });
  });
}

TEST(CloseByAnotherThread, EndsAWriteThatThePeerDoesNotTake) {
  ExpectEndInTime("a write", [] {
    Association association({{1, kEcho, kImplicit}});
    // More than the two ends hold, and encoded long before the link is closed.
    const std::string much(1 << 22, 'x');
    DICOMDataObject object;
    PutBytes(object, 0x7FE0, 0x0010, type_code::OW, much);
    return SecondsToEnd(association.pdu.Link, [&] {
      EXPECT_FALSE(association.pdu.Write(object, UID(kEcho)));
      EXPECT_EQ(Words(association.pdu), "The link was closed");
    });
  });
}

/// Until a peer comes, or says something.
double SecondsToEndAccepting(const std::function<Peer(const Listener&)>& connect) {
  Listener listener;
  const Peer peer = connect(listener);
  PDU_Service pdu;
  const int handle = listener.Give();
  return SecondsToEnd(pdu.Link, [&] {
    EXPECT_EQ(pdu.AcceptNext(handle), 0);
    // A peer that is there is being read.
    if (peer.Descriptor() >= 0) {
      EXPECT_EQ(Words(pdu), "The link was closed");
    }
  });
}

TEST(CloseByAnotherThread, EndsWaitingForAPeer) {
  ExpectEndInTime("waiting for a peer",
                  [] { return SecondsToEndAccepting([](const Listener&) { return Peer(); }); });
}

TEST(CloseByAnotherThread, EndsWaitingForTheRequestOfAPeer) {
  ExpectEndInTime("waiting for a request", [] {
    return SecondsToEndAccepting(
        [](const Listener& listener) { return ConnectTo(listener.Port()); });
  });
}

TEST(ManyAssociations, AtOnceHaveIdentifiersOfTheirOwn) {
  const ThreadedProvider provider;
  OnAllThreads([&](int) {
    for (int turn = 0; turn < 20; ++turn) {
      PDU_Service pdu;
      pdu.AddAbstractSyntax(UID(kEcho));
      for (int i = 0; i < 20; ++i) pdu.AddAbstractSyntax(UID("1.2." + std::to_string(i)));
      ASSERT_EQ(pdu.Connect("127.0.0.1", provider.Port()), 1) << Words(pdu);
      std::set<int> identifiers;
      for (const PresentationContext& context : pdu.AAssociateRQ.PresentationContexts) {
        EXPECT_EQ(context.PresentationContextID % 2, 1);
        EXPECT_TRUE(identifiers.insert(context.PresentationContextID).second);
      }
      EXPECT_EQ(pdu.AcceptedContexts.size(), 21u);
      EXPECT_TRUE(Verification().Write(&pdu)) << Words(pdu);
      EXPECT_EQ(pdu.Close(), 1);
    }
  });
}

TEST(ManyAssociations, StoreAtOnce) {
  const ThreadedProvider provider;
  OnAllThreads([&](int number) {
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kCt));
    ASSERT_EQ(pdu.Connect("127.0.0.1", provider.Port()), 1) << Words(pdu);
    for (int i = 0; i < 25; ++i) {
      DICOMDataObject object;
      PutUid(object, 0x0008, 0x0018, "1.2." + std::to_string(number) + "." + std::to_string(i));
      PutBytes(object, 0x7FE0, 0x0010, type_code::OW, std::string(9000, 'x'));
      CTStorage storage;
      EXPECT_TRUE(storage.Write(&pdu, &object)) << Words(pdu);
      EXPECT_EQ(storage.Status, 0);
    }
    pdu.Close();
  });
  EXPECT_EQ(provider.Stored(), 25 * kThreads);
}

Bytes StoreRequest() {
  return Joined(
      {StoreCommand(1), Data(1, kLastPart, Elements().Value(0x7FE0, 0x0010, Bytes(100)))});
}

/// A peer whose association with the provider stands.
Peer AssociatedWith(const ThreadedProvider& provider) {
  Peer peer = ConnectTo(provider.Port());
  peer.Send(RequestFor({{1, kCt, {kImplicit}}}));
  if (peer.ReceivePdu().at(0) != 2) throw std::runtime_error("no association");
  return peer;
}

/// Reached only where a test fails.
constexpr std::chrono::milliseconds kMostOfAHook(kFarTooLong);

double SecondsToStop(ThreadedProvider& provider) {
  const auto start = std::chrono::steady_clock::now();
  provider.Stop();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(AProviderThatStops, EndsWithinTwoSecondsWhateverItsAssociationsDo) {
  std::atomic<int> asked = 0;
  std::counting_semaphore<> mayGoOn(0);
  ThreadedProvider provider([&](const DICOMDataObject&) {
    ++asked;
    static_cast<void>(mayGoOn.try_acquire_for(kMostOfAHook));
  });
  std::vector<Peer> peers;
  // They say nothing; stop within a command, and before a data set; and have an object in the hands of the host.
  const Bytes store = StoreRequest();
  const Bytes command = SplitPdus(store)[0];
  const Bytes starts[] = {{}, {4}, Bytes(command.begin(), command.begin() + 20), command, store};
  for (int turn = 0; turn < 4; ++turn) {
    for (const Bytes& start : starts) {
      peers.push_back(AssociatedWith(provider));
      peers.back().Send(start);
    }
  }
  while (asked < 4) std::this_thread::yield();
  // One that has not said what it wants, and others behind it.
  for (int turn = 0; turn < 3; ++turn) peers.push_back(ConnectTo(provider.Port()));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  auto stopping = std::async(std::launch::async, [&] { return SecondsToStop(provider); });
  // Each sees the end while the hooks of some still run, whose answers come too late.
  for (const Peer& peer : peers) EXPECT_EQ(peer.ReceiveToEnd(), Bytes());
  EXPECT_EQ(stopping.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  mayGoOn.release(4);
  EXPECT_LT(stopping.get(), kEndUnderLoad);
  EXPECT_EQ(provider.Stored(), 4);
  EXPECT_THROW(ConnectTo(provider.Port()), std::runtime_error);
  EXPECT_LT(SecondsToStop(provider), kEndUnderLoad) << "once more";
}

TEST(AProviderThatStops, EndsWithinTwoSecondsThoughItHasJustBegun) {
  for (int turn = 0; turn < 20; ++turn) {
    ThreadedProvider provider;
    EXPECT_LT(SecondsToStop(provider), kEndUnderLoad);
  }
}

TEST(AHookThatBlocks, HoldsUpItsOwnAssociationAlone) {
  std::atomic<int> asked = 0;
  std::binary_semaphore mayGoOn(0);
  ThreadedProvider provider([&](const DICOMDataObject&) {
    if (++asked == 1) static_cast<void>(mayGoOn.try_acquire_for(kMostOfAHook));
  });
  const Peer blocked = AssociatedWith(provider);
  const Peer stands = AssociatedWith(provider);
  blocked.Send(StoreRequest());
  while (asked == 0) std::this_thread::yield();
  // For a second others store, on an association that stood before and on new ones.
  const auto start = std::chrono::steady_clock::now();
  int stored = 0;
  while (std::chrono::steady_clock::now() - start < std::chrono::seconds(1)) {
    const Peer comes = AssociatedWith(provider);
    for (const Peer* peer : {&stands, &comes}) {
      peer->Send(StoreRequest());
      ASSERT_EQ(peer->ReceivePdu().at(0), 4);
      ++stored;
    }
  }
  EXPECT_EQ(provider.Stored(), stored);
  EXPECT_GT(stored, 1);
  EXPECT_EQ(blocked.Received(), Bytes());
  mayGoOn.release();
  EXPECT_EQ(blocked.ReceivePdu().at(0), 4);
  EXPECT_EQ(provider.Stored(), stored + 1);
}

double ProcessorSeconds() {
  timespec used{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

TEST(AProviderWithoutDescriptors, WaitsWithoutWorkAndGoesOn) {
  const ThreadedProvider provider;
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  rlimit tight = usual;
  tight.rlim_cur = static_cast<rlim_t>(OpenDescriptors() + 20);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
  std::vector<int> taken;
  for (int next = ::dup(0); next >= 0; next = ::dup(0)) taken.push_back(next);
  ASSERT_FALSE(taken.empty());
  // The one that is left is the peer's, and nothing is left to accept it with.
  ::close(taken.back());
  taken.pop_back();
  const Peer peer = ConnectTo(provider.Port());
  peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  const double before = ProcessorSeconds();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_LT(ProcessorSeconds() - before, 0.1);
  EXPECT_EQ(peer.Received(), Bytes());
  for (const int descriptor : taken) ::close(descriptor);
  ::setrlimit(RLIMIT_NOFILE, &usual);
  EXPECT_EQ(peer.ReceivePdu()[0], 2);
}

TEST(Identifiers, AreHandedOutOnceEach) {
  SetIdentifierCounter(0xFFFFFF00);  // comes round at its end
  std::array<std::vector<std::uint32_t>, kThreads> taken;
  OnAllThreads([&](int number) {
    for (int i = 0; i < 1000; ++i) {
      taken[static_cast<std::size_t>(number)].push_back(TakeOddIdentifier());
      TakeIdentifier();
    }
  });
  std::set<std::uint32_t> all;
  for (const auto& some : taken) {
    for (const std::uint32_t identifier : some) {
      EXPECT_EQ(identifier % 2, 1u);
      EXPECT_TRUE(all.insert(identifier).second);
    }
  }
}

}  // namespace
}  // namespace tessaret::test
