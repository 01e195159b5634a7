#pragma once

#include <functional>

namespace vendril {

/// What a child process of a test has for itself.
enum class Own { mounts, mountsAndNetwork };

/// Runs `body` in a child process whose mounts, and network if so wanted, are its own; a network of
/// its own has nothing but 127.0.0.1. What is expected in vain there, and a child that dies, is a
/// failure of the test. The test is skipped, with the reason, where the system allows no
/// namespaces. To be called while the process has one thread.
void runInOwnNamespace(Own own, const std::function<void()>& body);

}  // namespace vendril
