#include <cstdint>
#include <string>

#include "launcher/ZQN5Launcher.h"
#include "platform/AsciiCase.h"
#include "platform/Host.h"
#include "platform/SessionLoginItems.h"

namespace vendril {
namespace {

/// An item that cannot be removed is found in every pass; this many are enough.
constexpr int kMaximumPasses = 100;

/// True for the names under which our products put themselves into the list. No letter outside
/// ASCII has one of these words' letters as its other case, so folding ASCII alone finds them all.
bool isBreltoName(const std::string& displayName) {
  const std::string name = asciiLowercase(displayName);
  const auto contains = [&name](const char* word) { return name.find(word) != std::string::npos; };
  return contains("brelto") && (contains("orvanta") || contains("mervale"));
}

void removeItem(SessionLoginItems& loginItems, const SessionLoginItems::Item& item,
                const LoggerBlock& loggerBlock) {
  const std::int32_t status = loginItems.remove(item);
  logTo(loggerBlock, "clean: remove item status : %d", status);
}

/// Tells whether one of our products' items is stale, and logs what it found.
bool isStale(const ResolvedUrl& target, const Url& bundleUrl, const LoggerBlock& loggerBlock) {
  if (!target.url) {
    if (target.error) {
      logTo(loggerBlock, "clean: error retrieving auto start item from list '%@'", *target.error);
    }
    logTo(loggerBlock, "clean: Removing auto start item without URL");
    return true;
  }
  if (*target.url == bundleUrl) {
    logTo(loggerBlock, "clean: found matching auto start item. Skipping...");
    return false;
  }
  logTo(loggerBlock, "clean: found matching auto start item in different URL : %@. Removing...",
        *target.url);
  return true;
}

}  // namespace

bool ZQN5Launcher::isStaleLoginItem(const LoginItem& item, const LoggerBlock& loggerBlock) {
  const std::string name = item.displayName().value_or("");
  if (!isBreltoName(name)) {
    return false;
  }
  logTo(loggerBlock, "clean: Brelto item name : %@", name);
  return isStale(item.resolvedUrl(), bundleUrl(), loggerBlock);
}

bool ZQN5Launcher::cleanLoginItemWithloggerBlock(const LoggerBlock& loggerBlock) {
  SessionLoginItems& loginItems = Host::current().sessionLoginItems();
  const auto items = loginItems.copySnapshot();
  logTo(loggerBlock,
        "clean: searching for auto start item to be removed in array with '%lu' items.",
        items.size());
  for (const auto& item : items) {
    if (isStaleLoginItem(*item, loggerBlock)) {
      removeItem(loginItems, item, loggerBlock);
      return true;
    }
  }
  return false;
}

void ZQN5Launcher::cleanLoginItemsWithloggerBlock(const LoggerBlock& loggerBlock) {
  for (int pass = 1; pass <= kMaximumPasses && cleanLoginItemWithloggerBlock(loggerBlock); ++pass) {
    logTo(loggerBlock, "clean: some item was cleaned");
  }
}

}  // namespace vendril
