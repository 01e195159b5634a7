#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/Date.h"

namespace vendril {

/// One value of a property list: a boolean, a number, a text, a date, data, or an array or
/// dictionary of values. A plain value type: copies are deep. Texts are UTF-8.
class PropertyList {
 public:
  using Data = std::vector<std::byte>;
  using Array = std::vector<PropertyList>;
  /// Keeps its keys in ascending byte order, the order in which a dictionary is printed.
  using Dictionary = std::map<std::string, PropertyList, std::less<>>;

  // NOLINTBEGIN(google-explicit-constructor): a value reads as a literal wherever one is needed.
  PropertyList(bool value) : value_(value) {}
  PropertyList(int value) : value_(std::int64_t{value}) {}
  PropertyList(std::int64_t value) : value_(value) {}
  PropertyList(std::uint64_t value) : value_(value) {}
  PropertyList(double value) : value_(value) {}
  PropertyList(const char* value) : value_(std::string(value)) {}
  PropertyList(std::string value) : value_(std::move(value)) {}
  PropertyList(std::string_view value) : value_(std::string(value)) {}
  PropertyList(Date value) : value_(value) {}
  PropertyList(Data value) : value_(std::move(value)) {}
  PropertyList(Array value) : value_(std::move(value)) {}
  PropertyList(Dictionary value) : value_(std::move(value)) {}
  // NOLINTEND(google-explicit-constructor)

  /// The value as a T (bool, std::int64_t, std::uint64_t, double, std::string, Date, Data, Array or
  /// Dictionary); null when it is of another kind. Owned by this value.
  template <class T>
  const T* get() const {
    return std::get_if<T>(&value_);
  }
  template <class T>
  T* get() {
    return std::get_if<T>(&value_);
  }

  /// Calls `visitor` with the value in its own type.
  template <class Visitor>
  decltype(auto) visit(Visitor&& visitor) const {
    return std::visit(std::forward<Visitor>(visitor), value_);
  }

  friend bool operator==(const PropertyList&, const PropertyList&) = default;

 private:
  std::variant<bool, std::int64_t, std::uint64_t, double, std::string, Date, Data, Array,
               Dictionary>
      value_;
};

/// The value as log messages show it. A dictionary is "{", one line "    key = value;" for each
/// entry in ascending key order, and "}"; an array is "(", one line "    value," for each element
/// (no comma after the last), and ")"; inner ones are indented by four further spaces. A text is
/// bare when it is non-empty and made of ASCII letters, digits and _ $ / : . alone, else in double
/// quotes with \ and " escaped. Booleans are 1 and 0, data is hexadecimal between < and >.
std::string description(const PropertyList& value);

/// The same for a dictionary that is not wrapped in a value.
std::string description(const PropertyList::Dictionary& dictionary);

}  // namespace vendril
