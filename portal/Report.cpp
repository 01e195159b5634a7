#include "portal/Report.h"

#include <glib.h>
#include <jansson.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>

#include "portal/FormBody.h"

namespace vendril::portal {
namespace {

template <auto release>
struct Releaser {
  template <class Resource>
  void operator()(Resource* resource) const {
    release(resource);
  }
};

using GText = std::unique_ptr<char, Releaser<g_free>>;
using JsonText = std::unique_ptr<char, Releaser<std::free>>;
using JsonPtr = std::unique_ptr<json_t, Releaser<json_decref>>;

std::string validUtf8(const std::string& text) {
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  return valid.get();
}

json_t* jsonText(const std::string& text) {
  json_t* const whole = json_stringn(text.data(), text.size());
  return whole != nullptr ? whole : json_string(validUtf8(text).c_str());
}

json_t* jsonPairs(const FormFields& pairs) {
  json_t* const array = json_array();
  for (const auto& [name, value] : pairs) {
    json_array_append_new(array, json_pack("[o, o]", jsonText(name), jsonText(value)));
  }
  return array;
}

/// True for the marks of Unicode's bidirectional algorithm, with which a text can show itself in
/// another order than it has.
bool isDirectionMark(gunichar code) {
  constexpr std::array<gunichar, 12> kMarks{0x061C, 0x200E, 0x200F, 0x202A, 0x202B, 0x202C,
                                            0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069};
  return std::find(kMarks.begin(), kMarks.end(), code) != kMarks.end();
}

bool isPrintable(gunichar code) {
  const GUnicodeType type = g_unichar_type(code);
  return type != G_UNICODE_CONTROL && type != G_UNICODE_LINE_SEPARATOR &&
         type != G_UNICODE_PARAGRAPH_SEPARATOR && !isDirectionMark(code);
}

std::string printable(std::string text) {
  // GLib takes a NUL for a byte that is not UTF-8.
  std::replace(text.begin(), text.end(), '\0', '?');
  const std::string valid = validUtf8(text);
  std::string result;
  for (const char* next = valid.c_str(); *next != '\0';) {
    const char* const character = next;
    next = g_utf8_find_next_char(next, nullptr);
    if (isPrintable(g_utf8_get_char(character))) {
      result.append(character, next);
    } else {
      result += '?';
    }
  }
  return result;
}

std::string headerOf(const Report& report, const char* wanted) {
  for (const auto& [name, value] : report.headers) {
    if (g_ascii_strcasecmp(name.c_str(), wanted) == 0) {
      return value;
    }
  }
  return {};
}

}  // namespace

std::string currentTime() {
  const std::unique_ptr<GDateTime, Releaser<g_date_time_unref>> now(g_date_time_new_now_utc());
  const GText seconds(g_date_time_format(now.get(), "%Y-%m-%dT%H:%M:%S"));
  const GText milliseconds(
      g_strdup_printf(".%03dZ", g_date_time_get_microsecond(now.get()) / 1000));
  return std::string(seconds.get()) + milliseconds.get();
}

std::string toJson(const Report& report) {
  const JsonPtr object(json_pack("{s:I, s:o, s:o, s:o, s:o, s:o, s:o, s:o, s:b}", "number",
                                 static_cast<json_int_t>(report.number), "time",
                                 jsonText(report.time), "method", jsonText(report.method), "target",
                                 jsonText(report.target), "headers", jsonPairs(report.headers),
                                 "fields", jsonPairs(decodeFormBody(report.body)), "body",
                                 jsonText(report.body), "answer", jsonText(report.answer),
                                 "successful", static_cast<int>(report.successful)));
  const JsonText text(json_dumps(object.get(), JSON_COMPACT));
  if (!text) {
    throw std::bad_alloc();
  }
  return text.get();
}

std::string toText(const Report& report) {
  std::string text = report.method + ' ' + printable(report.target) +
                     "\n  Content-Type: " + printable(headerOf(report, "Content-Type")) + '\n';
  for (const auto& [name, value] : decodeFormBody(report.body)) {
    text += "  " + printable(name) + " = " + printable(value) + '\n';
  }
  return text + "  answer: " + report.answer + "\n\n";
}

}  // namespace vendril::portal
