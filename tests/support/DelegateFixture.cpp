#include "support/DelegateFixture.h"

namespace vendril {

DelegateFixture::DelegateFixture() {
  host.fakeUserDirectories.directories = {library};
  host.fakeLaunchServices.defaults = {{"vendril", "com.brelto.vendril"},
                                      {"mervale", "com.brelto.vendril"}};
  host.fakeSessionLoginItems.add("Vendril", host.fakeBundle.path);
  writeFile(executable, "#!/bin/sh\n");
  publish(record);
}

void DelegateFixture::launch() {
  delegate->applicationWillFinishLaunching();
  delegate->applicationDidFinishLaunching();
  host.fakeSystemLog.take();
}

void DelegateFixture::open(const std::string& link) {
  host.fakeSystemLog.take();
  ASSERT_TRUE(host.fakeUrlEvents.deliver(link));
}

void DelegateFixture::publish(std::optional<PropertyList::Dictionary> newRecord) {
  host.fakePropertyListFiles.files.clear();
  if (newRecord) {
    host.fakePropertyListFiles.files.insert_or_assign(
        configurationPath,
        PropertyList::Dictionary{{"PublishedConfiguration", std::move(*newRecord)}});
  }
}

std::vector<std::string> DelegateFixture::delegateMessages() {
  const std::string prefix = "[ZQN5VendrilAppDelegate] ";
  std::vector<std::string> result;
  for (const std::string& message : host.fakeSystemLog.take()) {
    if (message.starts_with(prefix)) {
      result.push_back(message.substr(prefix.size()));
    }
  }
  return result;
}

const UrlRequest& DelegateFixture::onlyRequest() const {
  static const UrlRequest kNone;
  EXPECT_EQ(host.fakeUrlConnection.requests.size(), 1U);
  return host.fakeUrlConnection.requests.size() == 1
             ? host.fakeUrlConnection.requests.front().request
             : kNone;
}

std::size_t DelegateFixture::runCompletions() {
  return host.operationQueues.empty() ? 0 : host.operationQueues.front()->runAll();
}

}  // namespace vendril
