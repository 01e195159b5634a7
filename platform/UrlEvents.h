#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vendril {

/// A request of the desktop that the application open a URL.
struct UrlEvent {
  /// The URL's text, byte for byte as the desktop gave it; nothing when it gave none.
  std::optional<std::string> directObject;
};

/// Delivers URL events to the one handler of each kind, on the main thread.
class UrlEvents {
 public:
  /// The class and the ID of an event: four characters each, the first in the highest byte.
  using FourCharCode = std::uint32_t;
  /// `reply` is the event to answer with.
  using Handler = std::function<void(const UrlEvent& event, UrlEvent& reply)>;

  /// The Internet suite's GetURL event: class 'GURL', ID 'GURL'.
  static constexpr FourCharCode kInternetEventClass = 0x4755524C;
  static constexpr FourCharCode kGetUrlEventId = 0x4755524C;
  /// The WWW! suite's OpenURL event: class 'WWW!', ID 'OURL'.
  static constexpr FourCharCode kWebEventClass = 0x57575721;
  static constexpr FourCharCode kOpenUrlEventId = 0x4F55524C;

  virtual ~UrlEvents() = default;

  /// Makes `handler` the one that receives the events of this class and ID from now on.
  virtual void setEventHandler(Handler handler, FourCharCode eventClass, FourCharCode eventId) = 0;
};

}  // namespace vendril
