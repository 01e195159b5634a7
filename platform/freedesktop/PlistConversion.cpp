#include "platform/freedesktop/PlistConversion.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include "platform/freedesktop/PlistScalar.h"
#include "platform/freedesktop/PlistXmlText.h"

namespace vendril {
namespace {

using IteratorPtr = std::unique_ptr<void, ReleaseWith<std::free>>;

std::optional<PropertyList> valueFromPlist(plist_t node);

PropertyList integerFromPlist(plist_t node) {
  std::uint64_t value = 0;
  plist_get_uint_val(node, &value);
  const bool isSigned =
      value <= std::numeric_limits<std::int64_t>::max() || isNegativePlistInteger(node);
  return isSigned ? PropertyList(static_cast<std::int64_t>(value)) : PropertyList(value);
}

PropertyList dataFromPlist(plist_t node) {
  std::uint64_t size = 0;
  const char* bytes = plist_get_data_ptr(node, &size);
  PropertyList::Data data;
  for (std::uint64_t i = 0; bytes != nullptr && i < size; ++i) {
    data.push_back(static_cast<std::byte>(bytes[i]));
  }
  return data;
}

std::string textFromPlist(plist_t node) {
  std::uint64_t size = 0;
  const char* bytes = plist_get_string_ptr(node, &size);
  return bytes != nullptr ? std::string(bytes, size) : std::string();
}

std::optional<PropertyList> arrayFromPlist(plist_t node) {
  plist_array_iter iterator = nullptr;
  plist_array_new_iter(node, &iterator);
  const IteratorPtr owner(iterator);
  PropertyList::Array array;
  plist_t element = nullptr;
  while (plist_array_next_item(node, iterator, &element), element != nullptr) {
    std::optional<PropertyList> value = valueFromPlist(element);
    if (!value) {
      return std::nullopt;
    }
    array.push_back(*std::move(value));
  }
  return array;
}

std::optional<PropertyList> valueFromPlist(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return value != 0;
    }
    case PLIST_UINT:
      return integerFromPlist(node);
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return value;
    }
    case PLIST_STRING:
      return textFromPlist(node);
    case PLIST_DATE:
      return plistDate(node);
    case PLIST_DATA:
      return dataFromPlist(node);
    case PLIST_ARRAY:
      return arrayFromPlist(node);
    case PLIST_DICT:
      return dictionaryFromPlist(node);
    default:
      return std::nullopt;
  }
}

/// Makes the node for a value of each kind; null when that cannot be.
struct NodeMaker {
  PlistPtr operator()(bool value) const { return PlistPtr(plist_new_bool(value ? 1 : 0)); }
  PlistPtr operator()(std::int64_t value) const { return makePlistInteger(value); }
  PlistPtr operator()(std::uint64_t value) const { return makePlistInteger(value); }
  PlistPtr operator()(double value) const { return PlistPtr(plist_new_real(value)); }
  PlistPtr operator()(Date value) const { return makePlistDate(value); }

  PlistPtr operator()(const std::string& text) const {
    return PlistPtr(isXmlText(text) ? plist_new_string(text.c_str()) : nullptr);
  }

  PlistPtr operator()(const PropertyList::Data& data) const {
    const std::string bytes(reinterpret_cast<const char*>(data.data()), data.size());
    return PlistPtr(plist_new_data(bytes.data(), bytes.size()));
  }

  PlistPtr operator()(const PropertyList::Array& array) const {
    PlistPtr node(plist_new_array());
    for (const PropertyList& element : array) {
      PlistPtr item = element.visit(*this);
      if (!item) {
        return nullptr;
      }
      plist_array_append_item(node.get(), item.release());
    }
    return node;
  }

  PlistPtr operator()(const PropertyList::Dictionary& dictionary) const {
    PlistPtr node(plist_new_dict());
    for (const auto& [key, value] : dictionary) {
      PlistPtr item = isXmlText(key) ? value.visit(*this) : nullptr;
      if (!item) {
        return nullptr;
      }
      plist_dict_set_item(node.get(), key.c_str(), item.release());
    }
    return node;
  }
};

}  // namespace

std::optional<PropertyList::Dictionary> dictionaryFromPlist(plist_t node) {
  if (plist_get_node_type(node) != PLIST_DICT) {
    return std::nullopt;
  }
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  const IteratorPtr owner(iterator);
  PropertyList::Dictionary dictionary;
  plist_t item = nullptr;
  while (plist_dict_next_item(node, iterator, nullptr, &item), item != nullptr) {
    std::optional<PropertyList> value = valueFromPlist(item);
    if (!value) {
      return std::nullopt;
    }
    char* key = nullptr;
    plist_dict_get_item_key(item, &key);
    const std::unique_ptr<char, ReleaseWith<std::free>> keyOwner(key);
    dictionary.insert_or_assign(key, *std::move(value));
  }
  return dictionary;
}

PlistPtr plistFromDictionary(const PropertyList::Dictionary& dictionary) {
  return NodeMaker()(dictionary);
}

}  // namespace vendril
