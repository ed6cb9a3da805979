// The three descriptors that every program begins with, and what is known of them.
#pragma once

namespace tessaret::tool {

/// Fills the place of each of them that is closed, so that no file which is opened later gets its number and is written to
/// by mistake. Reading and writing there fail as they would have. To be called before anything is opened.
void FillClosedStandardStreams();

/// Whether colours and progress bars make sense on a descriptor: it is a terminal that can do more than print, and the
/// user did not ask for plain text by NO_COLOR.
bool IsLivelyTerminal(int descriptor);

}  // namespace tessaret::tool
