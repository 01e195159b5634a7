#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vendril {

/// A URL, kept as the text that it was made from: nothing is normalised, decoded or resolved. Two
/// URLs are equal when their texts are.
class Url {
 public:
  /// The URL that `text` spells; nothing when a byte is not a character that RFC 3986 allows in a
  /// URI ("%" is allowed, whatever follows it), when its structure does not parse, or when it is
  /// empty. References without a scheme are URLs too.
  static std::optional<Url> parse(std::string_view text);

  /// The file URL of an absolute path. Characters that a URL path does not allow are escaped.
  static Url fileUrlWithPath(std::string_view path);

  const std::string& absoluteString() const { return text_; }

  /// The part before the first colon, as written; empty when the text has no scheme.
  std::string_view scheme() const;

  /// The decoded path of a file URL without a foreign host; nothing for any other URL, nor when the
  /// path does not decode or holds a NUL.
  std::optional<std::string> fileSystemPath() const;

  friend bool operator==(const Url&, const Url&) = default;

 private:
  explicit Url(std::string text) : text_(std::move(text)) {}

  std::string text_;
};

/// True when `text` begins with `scheme` and a colon; ASCII case does not matter.
bool hasScheme(std::string_view text, std::string_view scheme);

}  // namespace vendril
