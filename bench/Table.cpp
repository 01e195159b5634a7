#include "bench/Table.h"

#include <fmt/format.h>

#include <cstdio>

namespace vendril::bench {

Table::Table() {
  fmt::print("{:<46}{:>10}{:>10} {:<6}{:>8}{:>9}\n", "", "agent", "other", "unit", "ratio",
             "bound");
}

void Table::ratio(const std::string& what, double agent, double other, const char* unit,
                  std::optional<double> bound) {
  const double value = agent / other;
  line(what, agent, other, unit, fmt::format("{:.2f}", value),
       bound ? fmt::format("<= {:.2f}", *bound) : "", !bound || value <= *bound);
}

void Table::advantage(const std::string& what, double agent, double other, const char* unit,
                      double bound) {
  const double value = other / agent;
  line(what, agent, other, unit, fmt::format("1/{:.0f}", value), fmt::format(">= {:.0f}x", bound),
       value >= bound);
}

void Table::amount(const std::string& what, double agent, const char* unit,
                   std::optional<double> bound) {
  line(what, agent, std::nullopt, unit, "", bound ? fmt::format("<= {:.0f}", *bound) : "",
       !bound || agent <= *bound);
}

void Table::line(const std::string& what, double agent, std::optional<double> other,
                 const char* unit, const std::string& ratio, const std::string& bound,
                 bool within) {
  passed_ = passed_ && within;
  fmt::print("{:<46}{:>10.0f}{:>10} {:<6}{:>8}{:>9}{}\n", what, agent,
             other ? fmt::format("{:.0f}", *other) : "", unit, ratio, bound,
             within ? "" : "  TOO MUCH");
  std::fflush(stdout);
}

}  // namespace vendril::bench
