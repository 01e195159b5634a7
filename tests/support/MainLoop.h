#pragma once

#include <chrono>
#include <functional>

namespace vendril {

/// How long a test waits for something that is bound to happen before it gives up.
inline constexpr std::chrono::seconds kTestDeadline{20};

/// Runs the main loop of the test's own thread until `condition` holds; false when it still does
/// not when the deadline has passed.
[[nodiscard]] bool runMainLoopUntil(const std::function<bool()>& condition,
                                    std::chrono::milliseconds deadline = kTestDeadline);

}  // namespace vendril
