#pragma once

#include "platform/Application.h"

namespace vendril {

/// An application without an event loop: launches its delegate and counts requests to terminate.
class FakeApplication : public Application {
 public:
  int terminations = 0;

  int main(int /*argc*/, char** /*argv*/, ApplicationDelegate& delegate) override {
    delegate.applicationWillFinishLaunching();
    delegate.applicationDidFinishLaunching();
    delegate.applicationWillTerminate();
    return 0;
  }
  void terminate() override { ++terminations; }
};

}  // namespace vendril
