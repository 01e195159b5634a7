#include "support/AlertFixture.h"

#include <cstdlib>
#include <fstream>
#include <utility>

namespace vendril {
namespace {

constexpr unsigned kPollIntervalMs = 50;
constexpr unsigned kPatienceMs = 60000;

using Step = std::function<bool()>;

gboolean takeStep(gpointer step) {
  return (*static_cast<Step*>(step))() ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
}

void deleteStep(gpointer step) {
  delete static_cast<Step*>(step);
}

std::filesystem::path makePrivateDirectory() {
  std::string path = (std::filesystem::temp_directory_path() / "vendril-alert-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) {
    throw std::filesystem::filesystem_error("mkdtemp", path, std::error_code());
  }
  return path;
}

}  // namespace

const std::string AlertFixture::kRealHelper =
    std::string(VENDRIL_BUILD_DIR) + "/libexec/vendril/vendril-alert";

AlertFixture::AlertFixture() : home_(makePrivateDirectory()), termination_(g_cancellable_new()) {
  callEvery(kPatienceMs, [this] {
    ADD_FAILURE() << "what the test waits for has not come; " << state();
    terminate();
    return true;
  });
  for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                           "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
    setEnvironment(name, home_.string());
  }
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "GTK_THEME", "LANGUAGE", "LC_MESSAGES"}) {
    setEnvironment(name, std::nullopt);
  }
  // An address that nobody listens on: without one, GLib looks for other ways to a bus.
  setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (home_ / "no-bus").string());
  setEnvironment("LC_ALL", "C.UTF-8");
  setEnvironment("GTK_A11Y", "none");
  setEnvironment("GDK_BACKEND", "x11");
  setEnvironment("GSK_RENDERER", "cairo");
}

AlertFixture::~AlertFixture() {
  for (const auto& [name, value] : savedEnvironment_) {
    value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
  }
  std::error_code ignored;
  std::filesystem::remove_all(home_, ignored);
}

void AlertFixture::setEnvironment(const std::string& name,
                                  const std::optional<std::string>& value) {
  const char* old = std::getenv(name.c_str());
  savedEnvironment_.try_emplace(name, old ? std::optional<std::string>(old) : std::nullopt);
  value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
}

std::string AlertFixture::makeHelper(const std::string& script) const {
  const std::filesystem::path path = home_ / "helper";
  std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path.string();
}

std::unique_ptr<HelperAlert> AlertFixture::makeAlert(const std::string& helperPath) {
  return std::make_unique<HelperAlert>(helperPath, log_, termination_.get());
}

void AlertFixture::pollInMainLoop(std::function<bool()> step) {
  callEvery(kPollIntervalMs, std::move(step));
}

void AlertFixture::callEvery(unsigned milliseconds, std::function<bool()> step) {
  GSource* source = g_timeout_source_new(milliseconds);
  g_source_set_callback(source, takeStep, new Step(std::move(step)), deleteStep);
  g_source_attach(source, nullptr);
  sources_.emplace_back(source);
}

void ShownAlertFixture::SetUp() {
  if (const std::optional<std::string> missing = VirtualDisplay::missingProgram()) {
    GTEST_SKIP() << *missing << " is not installed";
  }
  display_.emplace(home().string());
  setEnvironment("DISPLAY", display_->name());
}

std::string ShownAlertFixture::state() {
  const bool drawn = display().picture().centre(isButtonColour).has_value();
  return "active window: \"" + display().activeWindowTitle() +
         "\", button drawn: " + (drawn ? "yes" : "no") +
         ", alerts acted on: " + std::to_string(actions_);
}

std::unique_ptr<HelperAlert> ShownAlertFixture::makeEnglishAlert() {
  std::unique_ptr<HelperAlert> alert = makeAlert(kRealHelper);
  alert->addButtonWithTitle("OK");
  alert->setMessageText("Network connection error");
  alert->setInformativeText(
      "There was an error when Vendril was sending data to Mervale Meeting Service");
  alert->setAlertStyle(Alert::Style::warning);
  return alert;
}

void ShownAlertFixture::whenAlertHasFocus(std::function<void()> act) {
  pollInMainLoop([this, act = std::move(act)] {
    if (display().activeWindowTitle() != "Vendril" || !display().picture().centre(isButtonColour)) {
      return false;
    }
    ++actions_;
    act();
    return true;
  });
}

bool isButtonColour(ScreenPicture::Pixel pixel) {
  return pixel.blue > 100 && pixel.blue > pixel.green + 40 && pixel.green > pixel.red + 40;
}

bool isWarningColour(ScreenPicture::Pixel pixel) {
  return pixel.red > 200 && pixel.green > 80 && pixel.green < 200 && pixel.blue < 110;
}

bool isLightBackground(ScreenPicture::Pixel pixel) {
  return pixel.red > 230 && pixel.green > 230 && pixel.blue > 230;
}

}  // namespace vendril
