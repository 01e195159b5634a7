#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// Collects the newest bytes that come out of a pipe while the default main context runs.
class PipeTail {
 public:
  /// Reads from `stream`, which must be pollable and is kept.
  explicit PipeTail(GInputStream* stream);
  PipeTail(const PipeTail&) = delete;
  PipeTail& operator=(const PipeTail&) = delete;
  ~PipeTail();

  /// Takes what lies in the pipe now, without waiting for more. False at its end.
  bool collect();

  /// The last 4096 bytes of what has been collected; longer output keeps no more.
  const std::string& text() const { return text_; }

 private:
  GObjectPtr<GPollableInputStream> stream_;
  std::unique_ptr<GSource, ReleaseWith<g_source_unref>> source_;
  std::string text_;
};

/// A program that does one thing for this one and ends. It gets this process's environment and none
/// of its descriptors; its standard input is a pipe that ends when this process does. Destroying
/// it ends the program. Main thread only.
class HelperProcess {
 public:
  /// Starts the program at `arguments[0]`, without a shell. When that fails, `error` is set and
  /// nothing but the destructor may be called.
  HelperProcess(const std::vector<std::string>& arguments, GErrorSlot& error);
  HelperProcess(const HelperProcess&) = delete;
  HelperProcess& operator=(const HelperProcess&) = delete;
  ~HelperProcess();

  /// Handles the events of the default main context until the program has ended, and then returns
  /// true; false when `cancellable` is cancelled before.
  bool waitHandlingEvents(GCancellable* cancellable);

  /// How the ended program failed, with the last line of its standard error; nothing when its exit
  /// status is 0.
  std::optional<std::string> failure() const;

  /// What the ended program wrote on its standard output.
  const std::string& output() const { return output_->text(); }

 private:
  GObjectPtr<GSubprocess> process_;
  std::optional<PipeTail> output_;
  std::optional<PipeTail> errorOutput_;
};

}  // namespace vendril
