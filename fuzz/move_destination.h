// The other end of the association that a provider makes for a move. No connect of the program leads anywhere else.
#pragma once

namespace tessaret::fuzz {

class MoveDestination {
 public:
  /// The next connect leads to a node that takes CT images, and stores three; of the second it warns, and the third fails. Until then
  /// every link is refused.
  static void Await();
  /// Holds what the last one has heard to being PDUs of a requester.
  static void Leave();
  /// An image that can be sent.
  static const char* File();
};

}  // namespace tessaret::fuzz
