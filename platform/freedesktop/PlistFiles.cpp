#include "platform/freedesktop/PlistFiles.h"

#include <clocale>
#include <cstdint>

#include "platform/freedesktop/AtomicFile.h"
#include "platform/freedesktop/BoundedFile.h"
#include "platform/freedesktop/PlistConversion.h"
#include "platform/freedesktop/PlistGuard.h"

namespace vendril {
namespace {

/// Gives the calling thread the "C" locale, with its decimal point, for as long as it lives:
/// libplist reads real numbers in the thread's locale.
class NeutralNumbers {
 public:
  NeutralNumbers() : previous_(uselocale(neutralLocale())) {}
  NeutralNumbers(const NeutralNumbers&) = delete;
  NeutralNumbers& operator=(const NeutralNumbers&) = delete;
  ~NeutralNumbers() { uselocale(previous_); }

 private:
  static locale_t neutralLocale() {
    static const locale_t kLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return kLocale;
  }

  locale_t previous_;
};

PlistPtr parse(std::string_view bytes, PlistFormat format) {
  const NeutralNumbers neutral;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  plist_t root = nullptr;
  if (format == PlistFormat::binary) {
    plist_from_bin(bytes.data(), size, &root);
  } else {
    plist_from_xml(bytes.data(), size, &root);
  }
  return PlistPtr(root);
}

/// `root` as an XML property list that can be read again.
std::optional<std::string> xmlText(const PropertyList::Dictionary& root) {
  const PlistPtr node = plistFromDictionary(root);
  if (!node) {
    return std::nullopt;
  }
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_xml(node.get(), &bytes, &size);
  const PlistTextPtr owner(bytes);
  const std::string_view text(bytes, size);
  return parseDictionary(text) ? std::optional<std::string>(text) : std::nullopt;
}

/// XML may begin with a byte order mark, which says nothing in UTF-8.
std::string_view withoutByteOrderMark(std::string_view bytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const bool isMarked = bytes.starts_with(kMark) && bytes.substr(kMark.size()).starts_with('<');
  return isMarked ? bytes.substr(kMark.size()) : bytes;
}

}  // namespace

std::optional<PropertyList::Dictionary> parseDictionary(std::string_view bytes) {
  bytes = withoutByteOrderMark(bytes);
  const std::optional<PlistFormat> format = acceptedPlistFormat(bytes);
  const PlistPtr root = format ? parse(bytes, *format) : nullptr;
  return root ? dictionaryFromPlist(root.get()) : std::nullopt;
}

std::optional<PropertyList::Dictionary> PlistFiles::dictionaryWithContentsOfFile(
    const std::string& path) const {
  const std::optional<std::string> bytes = readBoundedFile(path, PlistLimits::kFileSize);
  return bytes ? parseDictionary(*bytes) : std::nullopt;
}

std::optional<PropertyList::Dictionary> PlistFiles::dictionaryWithData(
    std::span<const unsigned char> data) const {
  return parseDictionary({reinterpret_cast<const char*>(data.data()), data.size()});
}

bool PlistFiles::writeDictionary(const PropertyList::Dictionary& root,
                                 const std::string& path) const {
  const std::optional<std::string> text = xmlText(root);
  return text && !replaceFile(path, *text);
}

}  // namespace vendril
