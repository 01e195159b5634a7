#include "platform/Date.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <array>
#include <ctime>

namespace vendril {
namespace {

struct BrokenDownDate {
  std::tm fields;
  int milliseconds;
};

using Seconds = std::chrono::seconds;
using Milliseconds = std::chrono::milliseconds;

/// Not made by way of the clock, which counts in nanoseconds: the first second of its range begins
/// before the range does.
std::time_t wholeSeconds(Date date) {
  return std::chrono::floor<Seconds>(date).time_since_epoch().count();
}

BrokenDownDate localDate(Date date) {
  BrokenDownDate result{};
  const std::time_t seconds = wholeSeconds(date);
  localtime_r(&seconds, &result.fields);
  const auto fraction = std::chrono::floor<Milliseconds>(date) - std::chrono::floor<Seconds>(date);
  result.milliseconds = static_cast<int>(fraction.count());
  return result;
}

/// The fields that a pattern may name. Appends the field's value to a text.
struct Field {
  std::string_view name;
  void (*append)(std::string& out, const BrokenDownDate& date);
};

/// Appends a number in as many digits; no field of a date needs more. Each log line has seven of
/// them, and a format whose width is an argument costs ten times as much.
template <std::size_t Digits>
void appendNumber(std::string& out, int value) {
  std::array<char, Digits> text{};
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
    *digit = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  out.append(text.data(), text.size());
}

constexpr std::array<Field, 7> kFields{{
    {"yyyy", [](auto& out, const auto& date) { appendNumber<4>(out, date.fields.tm_year + 1900); }},
    {"MM", [](auto& out, const auto& date) { appendNumber<2>(out, date.fields.tm_mon + 1); }},
    {"dd", [](auto& out, const auto& date) { appendNumber<2>(out, date.fields.tm_mday); }},
    {"HH", [](auto& out, const auto& date) { appendNumber<2>(out, date.fields.tm_hour); }},
    {"mm", [](auto& out, const auto& date) { appendNumber<2>(out, date.fields.tm_min); }},
    {"ss", [](auto& out, const auto& date) { appendNumber<2>(out, date.fields.tm_sec); }},
    {"SSS", [](auto& out, const auto& date) { appendNumber<3>(out, date.milliseconds); }},
}};

const Field* fieldAt(std::string_view pattern) {
  constexpr std::string_view kFirstLetters = "yMdHmsS";
  if (kFirstLetters.find(pattern.front()) == std::string_view::npos) {
    return nullptr;
  }
  for (const Field& field : kFields) {
    if (pattern.starts_with(field.name)) {
      return &field;
    }
  }
  return nullptr;
}

}  // namespace

std::string description(Date date) {
  const std::time_t seconds = wholeSeconds(date);
  std::tm fields{};
  gmtime_r(&seconds, &fields);
  return fmt::format("{:%Y-%m-%d %H:%M:%S} +0000", fields);
}

std::string DateFormatter::stringFromDate(Date date) const {
  std::string out;
  const BrokenDownDate brokenDown = localDate(date);
  std::string_view rest = pattern_;
  while (!rest.empty()) {
    if (const Field* field = fieldAt(rest)) {
      field->append(out, brokenDown);
      rest.remove_prefix(field->name.size());
    } else {
      out += rest.front();
      rest.remove_prefix(1);
    }
  }
  return out;
}

}  // namespace vendril
