#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/SystemLog.h"
#include "platform/freedesktop/GlibPtr.h"
#include "platform/freedesktop/HelperAlert.h"
#include "support/VirtualDisplay.h"

namespace vendril {

/// Keeps the log lines in the order of their writing.
class AlertLog : public SystemLog {
 public:
  void write(std::string_view message) noexcept override { lines.emplace_back(message); }

  std::vector<std::string> lines;
};

/// Alerts in a private home, without a display and without a bus. The process's environment is put
/// back when the test is over. A test that takes longer than a minute fails, and its alerts end.
class AlertFixture : public ::testing::Test {
 public:
  static const std::string kRealHelper;

 protected:
  AlertFixture();
  ~AlertFixture() override;

  void setEnvironment(const std::string& name, const std::optional<std::string>& value);
  const std::filesystem::path& home() const { return home_; }
  const std::vector<std::string>& log() const { return log_.lines; }

  /// Writes a shell script that stands for the helper, and returns its path.
  std::string makeHelper(const std::string& script) const;
  std::unique_ptr<HelperAlert> makeAlert(const std::string& helperPath);
  /// Asks every run of an alert to end, as a terminating application does.
  void terminate() { g_cancellable_cancel(termination_.get()); }

  /// What a test that waits in vain prints.
  virtual std::string state() { return "no display"; }

  /// Calls `step` from the main loop, again and again, until it returns true or the test is over.
  void pollInMainLoop(std::function<bool()> step);

 private:
  /// Detaches a source from the main loop and gives it back.
  struct DestroySource {
    void operator()(GSource* source) const {
      g_source_destroy(source);
      g_source_unref(source);
    }
  };

  void callEvery(unsigned milliseconds, std::function<bool()> step);

  std::filesystem::path home_;
  std::map<std::string, std::optional<std::string>> savedEnvironment_;
  AlertLog log_;
  GObjectPtr<GCancellable> termination_;
  std::vector<std::unique_ptr<GSource, DestroySource>> sources_;
};

/// Alerts that the real helper shows on a virtual display. The test is skipped where a program for
/// the display is not installed.
class ShownAlertFixture : public AlertFixture {
 protected:
  void SetUp() override;
  void TearDown() override { display_.reset(); }

  std::string state() override;

  VirtualDisplay& display() { return *display_; }

  /// The connection error alert in English.
  std::unique_ptr<HelperAlert> makeEnglishAlert();

  /// Calls `act` once from the main loop, when an alert is up, drawn and has the focus.
  void whenAlertHasFocus(std::function<void()> act);

 private:
  std::optional<VirtualDisplay> display_;
  int actions_ = 0;
};

/// The colours of the alert: its button's, its icon's, and its background's in the light style.
bool isButtonColour(ScreenPicture::Pixel pixel);
bool isWarningColour(ScreenPicture::Pixel pixel);
bool isLightBackground(ScreenPicture::Pixel pixel);

}  // namespace vendril
