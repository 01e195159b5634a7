#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/PrivateHome.h"

namespace httplib {
class Client;
}

namespace vendril {

/// Chromium with one window, driven over the WebDriver protocol. Its profile lies in the private
/// home, and its policies are its own: it lives in a mount namespace, so that those of the computer
/// stay as they are. Elements are named by CSS selectors. Every operation throws std::runtime_error
/// when the browser refuses it.
class Browser {
 public:
  /// The first of the programs that is not installed.
  static std::optional<std::string> missingProgram();

  /// Starts the browser on `display`. `policies` is the JSON text of its managed policies.
  Browser(const PrivateHome& home, const std::string& display, const std::string& policies);
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;
  /// Ends the browser and everything that it has started and that is still its child.
  ~Browser();

  void open(const std::string& url);
  /// Clicks the middle of an element, as a user does.
  void click(const std::string& selector);
  /// Types into an element, as a user does, or into the one that has the focus.
  void type(const std::string& selector, const std::string& text);
  void typeIntoFocus(const std::string& text);
  /// The text of the first such element that a user sees; empty when there is none.
  std::string text(const std::string& selector);
  /// The value of a JavaScript expression as text.
  std::string evaluate(const std::string& expression);
  /// What a screen reader calls an element.
  std::string accessibleName(const std::string& selector);
  /// Waits until the text of an element is or holds `expected`; false at the deadline.
  [[nodiscard]] bool waitForText(const std::string& selector, const std::string& expected);

  /// Chooses between the "light" and the "dark" colours, as the user's desktop would, without any
  /// motion.
  void preferColours(const std::string& scheme);
  void resizeTo(int width, int height);
  /// Writes what the window shows as a PNG file.
  void saveScreenshot(const std::string& path);

  /// The key codes of the protocol.
  static constexpr const char* kTab = "\xEE\x80\x84";
  static constexpr const char* kEnter = "\xEE\x80\x87";

 private:
  std::string element(const std::string& selector);
  std::string execute(const std::string& function, const std::vector<std::string>& arguments);
  std::string command(const std::string& path, const std::string& body) const;
  std::string query(const std::string& path) const;

  ChildProcess driver_;
  std::unique_ptr<httplib::Client> client_;
  std::string session_;
};

}  // namespace vendril
