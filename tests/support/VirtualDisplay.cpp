#include "support/VirtualDisplay.h"

#include <cctype>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace vendril {
namespace {

constexpr std::chrono::seconds kStartTimeout{20};
constexpr int kFewestPixels = 100;

void endProcess(GObjectPtr<GSubprocess>& process) {
  if (process) {
    g_subprocess_send_signal(process.get(), SIGTERM);
    g_subprocess_wait(process.get(), nullptr, nullptr);
    process.reset();
  }
}

GObjectPtr<GSubprocess> startProcess(GSubprocessLauncher* launcher,
                                     std::vector<const char*> arguments) {
  arguments.push_back(nullptr);
  GErrorSlot error;
  GObjectPtr<GSubprocess> process(
      g_subprocess_launcher_spawnv(launcher, arguments.data(), error.out()));
  if (!process) {
    throw std::runtime_error(error.message());
  }
  return process;
}

std::string readDisplayNumber(GSubprocess* server) {
  std::string number;
  char character = 0;
  GInputStream* pipe = g_subprocess_get_stdout_pipe(server);
  while (g_input_stream_read(pipe, &character, 1, nullptr, nullptr) == 1 && character != '\n') {
    number += character;
  }
  if (number.empty()) {
    throw std::runtime_error("Xvfb named no display");
  }
  return number;
}

/// Reads the X window dump that Xvfb keeps its screen in (XWDFile.h: a header of big-endian 32-bit
/// fields, colour map entries of 12 bytes, then the lines of pixels).
class WindowDump {
 public:
  explicit WindowDump(const std::string& path) {
    bytes_.resize(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
    if (bytes_.size() < kFields * 4 || field(kDepth) != 24 || field(kBitsPerPixel) != 32) {
      throw std::runtime_error("Xvfb keeps its screen in an unknown form");
    }
  }

  ScreenPicture picture() const {
    const std::size_t width = field(kWidth);
    const std::size_t height = field(kHeight);
    ScreenPicture picture{static_cast<int>(width), static_cast<int>(height), {}};
    picture.pixels.reserve(width * height);
    const std::size_t start = field(kHeaderSize) + field(kColours) * 12;
    const std::size_t lineLength = field(kBytesPerLine);
    for (std::size_t y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < width; ++x) {
        // The least significant byte comes first: blue, green, red.
        const std::size_t pixel = start + y * lineLength + x * 4;
        picture.pixels.push_back({byte(pixel + 2), byte(pixel + 1), byte(pixel)});
      }
    }
    return picture;
  }

 private:
  static constexpr std::size_t kHeaderSize = 0;
  static constexpr std::size_t kDepth = 3;
  static constexpr std::size_t kWidth = 4;
  static constexpr std::size_t kHeight = 5;
  static constexpr std::size_t kBitsPerPixel = 11;
  static constexpr std::size_t kBytesPerLine = 12;
  static constexpr std::size_t kColours = 19;
  static constexpr std::size_t kFields = 25;

  std::uint8_t byte(std::size_t offset) const {
    return static_cast<std::uint8_t>(bytes_.at(offset));
  }
  std::size_t field(std::size_t index) const {
    std::size_t value = 0;
    for (std::size_t offset = index * 4; offset < index * 4 + 4; ++offset) {
      value = value << 8U | byte(offset);
    }
    return value;
  }

  std::vector<char> bytes_;
};

}  // namespace

int ScreenPicture::count(Matcher matches) const {
  int number = 0;
  for (const Pixel& pixel : pixels) {
    number += matches(pixel) ? 1 : 0;
  }
  return number;
}

std::optional<ScreenPoint> ScreenPicture::centre(Matcher matches) const {
  long number = 0;
  long sumX = 0;
  long sumY = 0;
  for (std::size_t index = 0; index < pixels.size(); ++index) {
    if (matches(pixels[index])) {
      ++number;
      sumX += static_cast<long>(index) % width;
      sumY += static_cast<long>(index) / width;
    }
  }
  if (number < kFewestPixels) {
    return std::nullopt;
  }
  return ScreenPoint{static_cast<int>(sumX / number), static_cast<int>(sumY / number)};
}

std::optional<std::string> VirtualDisplay::missingProgram() {
  for (const char* program : {"Xvfb", "openbox", "xdotool"}) {
    if (!GCharPtr(g_find_program_in_path(program))) {
      return program;
    }
  }
  return std::nullopt;
}

VirtualDisplay::VirtualDisplay(const std::string& directory) : directory_(directory) {
  const GObjectPtr<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                              G_SUBPROCESS_FLAGS_STDERR_SILENCE)));
  server_ = startProcess(launcher.get(), {"Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24",
                                          "-fbdir", directory_.c_str()});
  name_ = ":" + readDisplayNumber(server_.get());
  g_subprocess_launcher_setenv(launcher.get(), "DISPLAY", name_.c_str(), TRUE);
  // The last thing that openbox does at its start.
  const std::string sign = "touch " + directory_ + "/managed";
  windowManager_ = startProcess(launcher.get(), {"openbox", "--startup", sign.c_str()});
  awaitWindowManager();
}

VirtualDisplay::~VirtualDisplay() {
  endProcess(windowManager_);
  endProcess(server_);
}

void VirtualDisplay::breakDown() {
  endProcess(server_);
}

void VirtualDisplay::awaitWindowManager() const {
  const auto deadline = std::chrono::steady_clock::now() + kStartTimeout;
  while (!std::filesystem::exists(directory_ + "/managed")) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("openbox does not manage " + name_);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

std::string VirtualDisplay::xdotool(std::vector<const char*> arguments) const {
  const GObjectPtr<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                              G_SUBPROCESS_FLAGS_STDERR_SILENCE)));
  g_subprocess_launcher_setenv(launcher.get(), "DISPLAY", name_.c_str(), TRUE);
  arguments.insert(arguments.begin(), "xdotool");
  const GObjectPtr<GSubprocess> process = startProcess(launcher.get(), std::move(arguments));
  gchar* output = nullptr;
  g_subprocess_communicate_utf8(process.get(), nullptr, nullptr, &output, nullptr, nullptr);
  std::string text = GCharPtr(output ? output : g_strdup("")).get();
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())) != 0) {
    text.pop_back();
  }
  return text;
}

std::string VirtualDisplay::activeWindowTitle() const {
  return xdotool({"getactivewindow", "getwindowname"});
}

std::optional<int> VirtualDisplay::activeWindowProcess() const {
  const std::string process = xdotool({"getactivewindow", "getwindowpid"});
  return process.empty() ? std::nullopt : std::optional(std::stoi(process));
}

void VirtualDisplay::pressKey(const std::string& key) const {
  xdotool({"key", key.c_str()});
}

void VirtualDisplay::click(ScreenPoint point) const {
  xdotool({"mousemove", "--sync", std::to_string(point.x).c_str(), std::to_string(point.y).c_str(),
           "click", "1"});
}

ScreenPicture VirtualDisplay::picture() const {
  return WindowDump(directory_ + "/Xvfb_screen0").picture();
}

}  // namespace vendril
