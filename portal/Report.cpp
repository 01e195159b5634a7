#include "portal/Report.h"

#include <glib.h>
#include <jansson.h>

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

json_t* jsonText(const std::string& text) {
  if (json_t* const whole = json_stringn(text.data(), text.size())) {
    return whole;
  }
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  return json_string(valid.get());
}

json_t* jsonPairs(const FormFields& pairs) {
  json_t* const array = json_array();
  for (const auto& [name, value] : pairs) {
    json_array_append_new(array, json_pack("[o, o]", jsonText(name), jsonText(value)));
  }
  return array;
}

std::string printable(std::string text) {
  constexpr unsigned char kSpace = 0x20;
  constexpr unsigned char kDelete = 0x7F;
  for (char& character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < kSpace || code == kDelete) {
      character = '?';
    }
  }
  return text;
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
