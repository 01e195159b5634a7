#pragma once

#include "platform/Application.h"

namespace vendril {

/// Hands every operation on to another Application, which outlives this one. A test that breaks one
/// operation overrides that one.
class ForwardingApplication : public Application {
 public:
  explicit ForwardingApplication(Application& target) : target_(target) {}

  int main(int argc, char** argv, ApplicationDelegate& delegate) override {
    return target_.main(argc, argv, delegate);
  }
  void terminate() override { target_.terminate(); }

 private:
  Application& target_;
};

}  // namespace vendril
