/// Events: what an object tells whoever has connected to it.
///
/// A host connects a sink with Advise and goes with Unadvise. Events arrive on the thread that the object belongs to, in the order in
/// which the sinks connected. A sink may connect, disconnect or release anything while it is called: one that joins does not hear of
/// the event under way, one that left is not called any more.
#pragma once

#include <cstdint>

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// What listens to any events, by number. In C++ a sink may instead have the event interface itself, such as _IDCMVolumeEvents, and
/// is then called through that.
class IEventSink : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F01003};

  /// `event` is the number of the event in the members of the event interface. `arguments` stay the source's and may be read only
  /// until this returns. The answer is not looked at.
  virtual Status OnEvent(std::int32_t event, const Variant* arguments, std::uint32_t count) = 0;
};

/// What objects with events have.
class IEventSource : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F01004};

  /// The event interface: one method an event. Never null.
  virtual const InterfaceInfo* DescribeEvents() = 0;

  /// Connects `sink`, of which a reference is taken, and gives the number of the connection, which is never 0. kPointer for a null
  /// argument, kCannotConnect for an object that is neither an IEventSink nor has the event interface, kOutOfMemory, kUnexpected while
  /// the source ends; then `*cookie` is 0.
  virtual Status Advise(IObject* sink, std::uint32_t* cookie) = 0;

  /// Ends a connection and releases its sink. kNoConnection where there is none of this number.
  virtual Status Unadvise(std::uint32_t cookie) = 0;
};

}  // namespace tessaret
