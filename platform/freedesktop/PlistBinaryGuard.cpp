#include "platform/freedesktop/PlistBinaryGuard.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Utf8.h"
#include "platform/freedesktop/PlistBinaryLayout.h"
#include "platform/freedesktop/PlistGuard.h"

namespace vendril {
namespace {

using Kind = BinaryPlistObject::Kind;

/// How much an object makes once every reference in it is replaced by a copy.
struct Expansion {
  std::size_t nesting = 0;
  std::size_t nodes = 0;
  std::size_t content = 0;
};

unsigned utf16Unit(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[2 * index]) * 256U +
         static_cast<unsigned char>(text[2 * index + 1]);
}

/// The length in UTF-8 of a text in UTF-16; nothing when a surrogate stands alone, or for U+0000.
/// libplist drops a lone surrogate, and gives up on an empty text of this kind.
std::optional<std::size_t> lengthInUtf8(std::string_view text) {
  const auto isLead = [](unsigned unit) { return unit >= 0xD800 && unit < 0xDC00; };
  const auto isTrail = [](unsigned unit) { return unit >= 0xDC00 && unit < 0xE000; };
  const std::size_t count = text.size() / 2;
  std::size_t length = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned unit = utf16Unit(text, i);
    if (isLead(unit)) {
      if (++i == count || !isTrail(utf16Unit(text, i))) {
        return std::nullopt;
      }
      length += 4;
    } else if (isTrail(unit) || unit == 0) {
      return std::nullopt;
    } else {
      length += unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
    }
  }
  return count > 0 ? std::optional(length) : std::nullopt;
}

/// The format means ASCII; whatever is UTF-8 is read as such.
std::optional<std::size_t> lengthOfBytes(std::string_view text) {
  const bool isText = text.find('\0') == std::string_view::npos && isValidUtf8(text);
  return isText ? std::optional(text.size()) : std::nullopt;
}

/// Integers of sixteen bytes are there for unsigned ones; libplist drops their upper half.
bool fitsInEightBytes(std::string_view integer) {
  constexpr std::size_t kWide = 16;
  return integer.size() < kWide ||
         std::all_of(integer.begin(), integer.begin() + kWide / 2, [](char b) { return b == 0; });
}

/// Measures what the root expands to. It goes through each object once, remembers what that came
/// to, and adds it up again at each further reference; the sum stops at the limits.
class BinaryGuard {
 public:
  explicit BinaryGuard(const BinaryPlistLayout& layout)
      : layout_(layout), known_(layout.objectCount()) {}

  bool accepts() { return visit(layout_.root(), 0).has_value(); }

 private:
  /// Counts an object inside `depth` containers and returns its nesting. An object that contains
  /// itself gets deeper until it is too deep.
  std::optional<std::size_t> visit(std::size_t number, std::size_t depth) {
    if (const std::optional<Expansion>& known = known_[number]) {
      const bool fits =
          depth + known->nesting <= PlistLimits::kNesting && count(known->nodes, known->content);
      return fits ? std::optional(known->nesting) : std::nullopt;
    }
    const Expansion before = total_;
    const std::optional<BinaryPlistObject> object = layout_.object(number);
    const auto nesting = object ? visitNew(*object, depth) : std::nullopt;
    if (nesting) {
      known_[number] =
          Expansion{*nesting, total_.nodes - before.nodes, total_.content - before.content};
    }
    return nesting;
  }

  std::optional<std::size_t> visitNew(const BinaryPlistObject& object, std::size_t depth) {
    switch (object.kind) {
      case Kind::array:
        return visitContainer(object, object.count, depth);
      case Kind::dictionary:
        return hasTextKeys(object) ? visitContainer(object, 2 * object.count, depth) : std::nullopt;
      case Kind::integer:
        return fitsInEightBytes(object.payload) && count(1, 0) ? std::optional<std::size_t>(0)
                                                               : std::nullopt;
      case Kind::data:
        return visitContent(object.count);
      case Kind::byteText:
        return visitContent(lengthOfBytes(object.payload));
      case Kind::utf16Text:
        return visitContent(lengthInUtf8(object.payload));
      default:
        return visitContent(0);
    }
  }

  std::optional<std::size_t> visitContent(std::optional<std::size_t> length) {
    return length && count(1, *length) ? std::optional<std::size_t>(0) : std::nullopt;
  }

  std::optional<std::size_t> visitContainer(const BinaryPlistObject& object, std::size_t references,
                                            std::size_t depth) {
    if (depth == PlistLimits::kNesting || !count(1, 0)) {
      return std::nullopt;
    }
    std::size_t nesting = 0;
    for (std::size_t i = 0; i < references; ++i) {
      const auto number = layout_.reference(object.payload, i);
      const auto inner = number ? visit(*number, depth + 1) : std::nullopt;
      if (!inner) {
        return std::nullopt;
      }
      nesting = std::max(nesting, *inner);
    }
    return nesting + 1;
  }

  bool hasTextKeys(const BinaryPlistObject& dictionary) const {
    for (std::size_t i = 0; i < dictionary.count; ++i) {
      const auto number = layout_.reference(dictionary.payload, i);
      const auto key = number ? layout_.object(*number) : std::nullopt;
      if (!key || (key->kind != Kind::byteText && key->kind != Kind::utf16Text)) {
        return false;
      }
    }
    return true;
  }

  /// Adds to the sum; false when it passes a limit. No addend is larger than the file or a limit,
  /// so that nothing overflows.
  bool count(std::size_t nodes, std::size_t content) {
    total_.nodes += nodes;
    total_.content += content;
    return total_.nodes <= PlistLimits::kNodes && total_.content <= PlistLimits::kContent;
  }

  const BinaryPlistLayout& layout_;
  std::vector<std::optional<Expansion>> known_;
  Expansion total_;
};

}  // namespace

bool isSafeBinaryPlist(std::string_view bytes) {
  const std::optional<BinaryPlistLayout> layout = BinaryPlistLayout::parse(bytes);
  return layout && layout->objectCount() <= PlistLimits::kNodes && BinaryGuard(*layout).accepts();
}

}  // namespace vendril
