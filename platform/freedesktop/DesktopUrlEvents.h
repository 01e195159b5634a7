#pragma once

#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include "platform/SystemLog.h"
#include "platform/UrlEvents.h"

namespace vendril {

/// Hands the links that the desktop gives the application to the handlers of URL events. Main
/// thread only.
class DesktopUrlEvents : public UrlEvents {
 public:
  /// `log` outlives this object.
  explicit DesktopUrlEvents(SystemLog& log) : log_(log) {}

  /// Calls `notice` as soon as a link is known to come, before it is handed to its handler.
  void setArrivalNotice(std::function<void()> notice) { notice_ = std::move(notice); }

  /// Says that links will be delivered soon.
  void announce() const;

  void setEventHandler(Handler handler, FourCharCode eventClass, FourCharCode eventId) override;

  /// Delivers `uri`, byte for byte, as a GetURL event and returns when it has been handled. An
  /// exception that leaves the handler, or the lack of a handler, is recorded in the log.
  void deliver(std::string_view uri) noexcept;

 private:
  void send(std::string_view uri);

  SystemLog& log_;
  std::function<void()> notice_;
  std::map<std::pair<FourCharCode, FourCharCode>, Handler> handlers_;
};

}  // namespace vendril
