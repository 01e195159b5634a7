#include "support/JsonText.h"

#include <jansson.h>

#include <memory>
#include <stdexcept>

namespace vendril {
namespace {

struct JsonRelease {
  void operator()(json_t* value) const { json_decref(value); }
};

PropertyList valueOf(const json_t* json);

PropertyList::Dictionary objectOf(const json_t* json) {
  PropertyList::Dictionary object;
  auto* source = const_cast<json_t*>(json);
  const char* key = nullptr;
  json_t* member = nullptr;
  json_object_foreach(source, key, member) {
    object.insert_or_assign(key, valueOf(member));
  }
  return object;
}

PropertyList valueOf(const json_t* json) {
  switch (json_typeof(json)) {
    case JSON_OBJECT:
      return objectOf(json);
    case JSON_ARRAY: {
      PropertyList::Array array;
      for (std::size_t i = 0; i < json_array_size(json); ++i) {
        array.push_back(valueOf(json_array_get(json, i)));
      }
      return array;
    }
    case JSON_STRING:
      return std::string(json_string_value(json), json_string_length(json));
    case JSON_INTEGER:
      return std::int64_t{json_integer_value(json)};
    case JSON_REAL:
      return json_real_value(json);
    case JSON_TRUE:
    case JSON_FALSE:
      return json_is_true(json);
    case JSON_NULL:
      break;
  }
  return "null";
}

}  // namespace

PropertyList::Dictionary parseJsonObject(const std::string& text) {
  const std::unique_ptr<json_t, JsonRelease> json(
      json_loadb(text.data(), text.size(), JSON_ALLOW_NUL | JSON_REJECT_DUPLICATES, nullptr));
  if (!json_is_object(json.get())) {
    throw std::runtime_error("not a JSON object: " + text);
  }
  return objectOf(json.get());
}

std::string textAt(const PropertyList::Dictionary& object, const std::string& key) {
  const auto entry = object.find(key);
  const auto* text = entry != object.end() ? entry->second.get<std::string>() : nullptr;
  return text != nullptr ? *text : "no text";
}

}  // namespace vendril
