#pragma once

namespace vendril {

/// The configuration that stands in for a missing or unusable file: a binary property list whose
/// root is the configuration dictionary itself. Its "videoCapable" and "meetmeCapable" begin with a
/// small letter, unlike the keys that are read, so that a record made from it has neither.
extern const unsigned char ZQN5DefaultPublishedConfiguration_plist[];

/// The length of the list in bytes.
extern const unsigned int ZQN5DefaultPublishedConfiguration_plist_len;

}  // namespace vendril
