#include "config/JsonWriter.h"

#include <jansson.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <type_traits>

namespace vendril {
namespace {

struct JsonRelease {
  void operator()(json_t* value) const { json_decref(value); }
};
using JsonPtr = std::unique_ptr<json_t, JsonRelease>;

struct TextRelease {
  void operator()(char* text) const { std::free(text); }  // NOLINT(*-no-malloc)
};

struct IsValidJson {
  bool operator()(const PropertyList& value) const { return value.visit(*this); }
  bool operator()(const PropertyList::Array& array) const {
    return std::all_of(array.begin(), array.end(), *this);
  }
  bool operator()(const PropertyList::Dictionary& dictionary) const {
    return std::all_of(dictionary.begin(), dictionary.end(),
                       [this](const auto& entry) { return (*this)(entry.second); });
  }
  bool operator()(double number) const { return std::isfinite(number); }
  bool operator()(const PropertyList::Data&) const { return false; }
  bool operator()(Date) const { return false; }
  template <class Value>
  bool operator()(const Value&) const {
    return true;
  }
};

template <class Members>
JsonPtr objectOf(const Members& members);

/// Makes the JSON form of a value; null when there is none or when a text in it is not UTF-8.
struct ToJson {
  JsonPtr operator()(bool value) const { return JsonPtr(json_boolean(value)); }
  JsonPtr operator()(std::int64_t number) const { return JsonPtr(json_integer(number)); }
  JsonPtr operator()(std::uint64_t number) const {
    // The library's integers are signed; a real holds the rest of the range to 53 bits.
    constexpr auto kLargest = std::uint64_t{std::numeric_limits<json_int_t>::max()};
    return JsonPtr(number <= kLargest ? json_integer(static_cast<json_int_t>(number))
                                      : json_real(static_cast<double>(number)));
  }
  JsonPtr operator()(double number) const { return JsonPtr(json_real(number)); }
  JsonPtr operator()(const std::string& text) const {
    return JsonPtr(json_stringn(text.data(), text.size()));
  }
  JsonPtr operator()(const PropertyList::Data&) const { return nullptr; }
  JsonPtr operator()(Date) const { return nullptr; }
  JsonPtr operator()(const PropertyList::Array& array) const {
    JsonPtr result(json_array());
    for (const PropertyList& element : array) {
      if (json_array_append_new(result.get(), element.visit(*this).release()) != 0) {
        return nullptr;
      }
    }
    return result;
  }
  JsonPtr operator()(const PropertyList::Dictionary& dictionary) const {
    return objectOf(dictionary);
  }
};

template <class Members>
JsonPtr objectOf(const Members& members) {
  JsonPtr result(json_object());
  for (const auto& [key, value] : members) {
    json_t* member = value.visit(ToJson()).release();
    if (json_object_setn_new(result.get(), key.data(), key.size(), member) != 0) {
      return nullptr;
    }
  }
  return result;
}

JsonResult write(const JsonMembers& members, std::size_t flags) {
  const JsonPtr object = objectOf(members);
  if (!object) {
    return {std::nullopt, "A value is not valid UTF-8 text"};
  }
  const std::unique_ptr<char, TextRelease> text(json_dumps(object.get(), flags));
  if (!text) {
    return {std::nullopt, "Out of memory"};
  }
  return {std::string(text.get()), {}};
}

/// The library lets this one control character pass.
void escapeDelete(std::string& json) {
  constexpr char kDelete = '\x7F';
  for (std::size_t at = json.find(kDelete); at != std::string::npos; at = json.find(kDelete, at)) {
    json.replace(at, 1, "\\u007f");
  }
}

}  // namespace

bool isValidJsonObject(const JsonMembers& members) {
  return std::all_of(members.begin(), members.end(),
                     [](const auto& member) { return IsValidJson()(member.second); });
}

JsonResult writeJson(const JsonMembers& members) {
  return write(members, JSON_COMPACT | JSON_ESCAPE_SLASH);
}

JsonResult writeReadableJson(const JsonMembers& members) {
  JsonResult json = write(members, JSON_INDENT(2) | JSON_ENSURE_ASCII);
  if (json.bytes) {
    escapeDelete(*json.bytes);
  }
  return json;
}

}  // namespace vendril
