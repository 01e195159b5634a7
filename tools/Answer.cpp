#include "tools/Answer.h"

#include <cmath>
#include <stdexcept>

#include "platform/Utf8.h"
#include "tools/Text.h"

namespace vendril::tools {
namespace {

std::string utf8(const std::string& text) {
  return isValidUtf8(text) ? text : printable(text);
}

/// Makes the form of a value that JSON can hold.
struct Presentable {
  PropertyList operator()(const PropertyList& value) const { return value.visit(*this); }
  PropertyList operator()(const std::string& text) const { return utf8(text); }
  PropertyList operator()(const PropertyList::Array& array) const {
    PropertyList::Array result;
    for (const PropertyList& element : array) {
      result.push_back((*this)(element));
    }
    return result;
  }
  PropertyList operator()(const PropertyList::Dictionary& dictionary) const {
    PropertyList::Dictionary result;
    for (const auto& [key, value] : dictionary) {
      result.insert_or_assign(utf8(key), (*this)(value));
    }
    return result;
  }
  PropertyList operator()(double number) const {
    return std::isfinite(number) ? PropertyList(number) : PropertyList(std::to_string(number));
  }
  PropertyList operator()(Date date) const { return description(date); }
  PropertyList operator()(const PropertyList::Data& data) const {
    return description(PropertyList(data));
  }
  template <class Value>
  PropertyList operator()(const Value& value) const {
    return value;
  }
};

}  // namespace

std::string jsonText(const JsonMembers& members) {
  JsonMembers presentable;
  for (const auto& [key, value] : members) {
    presentable.emplace_back(key, Presentable()(value));
  }
  const JsonResult result = writeReadableJson(presentable);
  if (!result.bytes) {
    throw std::runtime_error(result.error);
  }
  return *result.bytes + "\n";
}

PropertyList arrayOf(const std::vector<std::string>& values) {
  return PropertyList::Array(values.begin(), values.end());
}

}  // namespace vendril::tools
