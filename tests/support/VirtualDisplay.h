#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// A place on a screen, in pixels from its top left corner.
struct ScreenPoint {
  int x = 0;
  int y = 0;
};

/// What a screen showed at one moment.
struct ScreenPicture {
  struct Pixel {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
  };
  using Matcher = bool (*)(Pixel);

  int width = 0;
  int height = 0;
  std::vector<Pixel> pixels;

  int count(Matcher matches) const;
  /// The mean place of the pixels that match; nothing when fewer than a hundred do.
  std::optional<ScreenPoint> centre(Matcher matches) const;
};

/// An X server without a screen, with a window manager, for as long as it lives. Its programs are
/// Xvfb, openbox and xdotool.
class VirtualDisplay {
 public:
  /// The first of the programs that is not installed.
  static std::optional<std::string> missingProgram();

  /// Starts the server on a free display number and keeps its files in `directory`.
  explicit VirtualDisplay(const std::string& directory);
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;
  ~VirtualDisplay();

  /// What DISPLAY is to say.
  const std::string& name() const { return name_; }

  /// The title of the window that has the focus; empty when none has.
  std::string activeWindowTitle() const;
  /// The process that owns the window with the focus.
  std::optional<int> activeWindowProcess() const;
  /// Presses keys as a user does; in the notation of xdotool, like "Return" or "alt+F4".
  void pressKey(const std::string& key) const;
  void click(ScreenPoint point) const;
  ScreenPicture picture() const;

  /// Ends the server under the feet of its clients.
  void breakDown();

 private:
  std::string xdotool(std::vector<const char*> arguments) const;
  void awaitWindowManager() const;

  std::string directory_;
  std::string name_;
  GObjectPtr<GSubprocess> server_;
  GObjectPtr<GSubprocess> windowManager_;
};

}  // namespace vendril
