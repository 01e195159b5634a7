#pragma once

#include <optional>
#include <string>

namespace vendril::bench {

/// Prints one line for each measure and remembers whether a bound was broken.
class Table {
 public:
  Table();

  /// Two values and the first divided by the second, which may be `bound` at most.
  void ratio(const std::string& what, double agent, double other, const char* unit,
             std::optional<double> bound);

  /// The same for a value that the other one has to be at least `bound` times.
  void advantage(const std::string& what, double agent, double other, const char* unit,
                 double bound);

  /// One value, which may be `bound` at most.
  void amount(const std::string& what, double agent, const char* unit,
              std::optional<double> bound = std::nullopt);

  bool passed() const { return passed_; }

 private:
  void line(const std::string& what, double agent, std::optional<double> other, const char* unit,
            const std::string& ratio, const std::string& bound, bool within);

  bool passed_ = true;
};

}  // namespace vendril::bench
