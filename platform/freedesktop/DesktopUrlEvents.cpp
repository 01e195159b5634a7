#include "platform/freedesktop/DesktopUrlEvents.h"

#include <exception>
#include <string>

#include "platform/freedesktop/HeapReturn.h"

namespace vendril {

void DesktopUrlEvents::setEventHandler(Handler handler, FourCharCode eventClass,
                                       FourCharCode eventId) {
  handlers_[{eventClass, eventId}] = std::move(handler);
}

void DesktopUrlEvents::deliver(std::string_view uri) noexcept {
  try {
    send(uri);
  } catch (const std::exception& exception) {
    log_.write("The handling of a link failed:");
    log_.write(exception.what());
  } catch (...) {
    log_.write("The handling of a link failed");
  }
  returnHeapWhenQuiet();
}

void DesktopUrlEvents::announce() const {
  if (notice_) {
    notice_();
  }
}

void DesktopUrlEvents::send(std::string_view uri) {
  const auto found = handlers_.find({kInternetEventClass, kGetUrlEventId});
  if (found == handlers_.end()) {
    log_.write("Nothing handles links");
    return;
  }
  announce();
  // A copy, because a handler may set its successor while it runs.
  const Handler handler = found->second;
  UrlEvent reply;
  handler(UrlEvent{std::string(uri)}, reply);
}

}  // namespace vendril
