#pragma once

namespace vendril {

/// Opens the null device in the place of each standard stream that the process was started without.
/// The first files that the process opens would take these places otherwise, and get what is meant
/// for the streams. To be made before anything else is opened.
class StandardStreams {
 public:
  StandardStreams();
};

}  // namespace vendril
