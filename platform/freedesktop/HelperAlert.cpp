#include "platform/freedesktop/HelperAlert.h"

#include <utility>

#include "platform/SystemLog.h"
#include "platform/freedesktop/HelperProcess.h"

namespace vendril {
namespace {

// What the helper writes when the button ended the alert.
const std::string kAnswer = std::to_string(Alert::kFirstButtonReturn) + "\n";

std::string nameOf(Alert::Style style) {
  switch (style) {
    case Alert::Style::warning:
      return "warning";
    case Alert::Style::informational:
      return "informational";
    case Alert::Style::critical:
      return "critical";
  }
  return "warning";
}

}  // namespace

HelperAlert::HelperAlert(std::string helperPath, SystemLog& systemLog, GCancellable* termination)
    : helperPath_(std::move(helperPath)),
      systemLog_(systemLog),
      termination_(G_CANCELLABLE(g_object_ref(termination))) {}

long HelperAlert::runModal() {
  const std::optional<std::string> failure = runHelper();
  if (!failure) {
    return kFirstButtonReturn;
  }
  systemLog_.write("The alert ended without an answer: " + *failure);
  return kAbortReturn;
}

/// Nothing when the button ended the alert, else what happened instead.
std::optional<std::string> HelperAlert::runHelper() const {
  GErrorSlot error;
  HelperProcess helper({helperPath_, nameOf(style_), messageText_, informativeText_, buttonTitle_},
                       error);
  if (error) {
    return error.message();
  }
  if (!helper.waitHandlingEvents(termination_.get())) {
    return "the application terminates";
  }
  if (std::optional<std::string> failure = helper.failure()) {
    return failure;
  }
  if (helper.output() != kAnswer) {
    return "the helper's answer is none that is known";
  }
  return std::nullopt;
}

}  // namespace vendril
