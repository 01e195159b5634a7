#pragma once

#include <gio/gio.h>

#include <string>

namespace vendril::bench {

/// A session bus of our own. While it lives, it is the session bus of this process and of those
/// that it starts; then the one before it is again.
class PrivateBus {
 public:
  /// The bus starts the services that files in `serviceDirectory` describe; none when it is empty.
  explicit PrivateBus(const std::string& serviceDirectory);
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// Asks the owner of `busName` to open `link`; does not wait for an answer. The bus starts a
  /// service that has no owner.
  void open(const std::string& busName, const std::string& link);

  /// The same, and waits until the link has been handled.
  void openAndWait(const std::string& busName, const std::string& link);

  /// Waits until `busName` has an owner, or has none. Throws std::runtime_error after 30 s.
  void waitForOwner(const std::string& busName, bool owned);

  /// The process that owns `busName`.
  pid_t ownerOf(const std::string& busName);

 private:
  bool hasOwner(const std::string& busName);
  GVariant* askBus(const char* method, const std::string& busName, const char* replyType);

  std::string addressBefore_;
  GTestDBus* daemon_;
  GDBusConnection* connection_ = nullptr;
};

}  // namespace vendril::bench
