#include "support/Browser.h"

#include <glib.h>
#include <httplib.h>
#include <jansson.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {
namespace {

/// How long a page may take to show what it should; the start of a browser included.
constexpr std::chrono::seconds kDeadline{60};
constexpr std::chrono::milliseconds kPause{20};
constexpr const char* kElementKey = "element-6066-11e4-a52e-4f735466cecf";
constexpr const char* kPolicies = "/etc/chromium";

/// Binds the directory $1 over $2 and runs the driver. It takes a free port of one address family
/// and then the same of the other, which may be taken; so it gets several tries.
constexpr const char* kBindAndDrive = R"(mount --bind "$1" "$2" || exit 1
for attempt in 1 2 3 4 5; do chromedriver --port=0 && exit 0; done
exit 1)";

struct JsonRelease {
  void operator()(json_t* value) const { json_decref(value); }
};
using Json = std::unique_ptr<json_t, JsonRelease>;

Json parse(const std::string& text) {
  return Json(json_loadb(text.data(), text.size(), JSON_DECODE_ANY, nullptr));
}

std::string write(const Json& value) {
  char* const text = json_dumps(value.get(), JSON_COMPACT | JSON_ENCODE_ANY);
  std::string result = text != nullptr ? text : "";
  std::free(text);
  return result;
}

std::string textOf(const json_t* value) {
  const char* const text = json_string_value(value);
  return text != nullptr ? text : "";
}

/// The driver in namespaces where the browser's policies are those in `policies` and where every
/// process ends with the driver.
std::vector<std::string> driverCommand(const std::string& policies) {
  std::vector<std::string> command{"unshare", "--mount",      "--pid",
                                   "--fork",  "--kill-child", "--mount-proc"};
  if (::geteuid() != 0) {
    command.insert(command.end(), {"--user", "--map-root-user"});
  }
  command.insert(command.end(), {"sh", "-c", kBindAndDrive, "sh", policies, kPolicies});
  return command;
}

std::string policiesIn(const PrivateHome& home, const std::string& policies) {
  const std::filesystem::path directory = home.root() / "chromium";
  writeFile(directory / "policies/managed/test.json", policies);
  return directory;
}

int portOf(ChildProcess& driver) {
  const std::string kAnnouncement = "was started successfully on port ";
  if (!driver.waitForOut(kAnnouncement) || !driver.waitForOut(".\n")) {
    throw std::runtime_error("chromedriver does not start: " + driver.out() + driver.err());
  }
  return std::stoi(driver.out().substr(driver.out().find(kAnnouncement) + kAnnouncement.size()));
}

/// No sandbox, because it cannot be had as root; and nothing that talks to the world outside.
std::string capabilities(const PrivateHome& home) {
  Json arguments(json_array());
  for (const std::string& argument :
       {std::string("--no-sandbox"), std::string("--disable-gpu"), std::string("--disable-quic"),
        std::string("--no-first-run"), std::string("--disable-background-networking"),
        std::string("--disable-component-update"), std::string("--disable-sync"),
        std::string("--disable-dev-shm-usage"), std::string("--no-default-browser-check"),
        std::string("--force-device-scale-factor=1"),
        "--user-data-dir=" + (home.root() / "profile").string()}) {
    json_array_append_new(arguments.get(), json_string(argument.c_str()));
  }
  return write(Json(json_pack("{s:{s:{s:{s:O}}}}", "capabilities", "alwaysMatch",
                              "goog:chromeOptions", "args", arguments.get())));
}

/// The JSON text of the value that the driver answered with.
std::string valueOf(const std::string& path, const httplib::Result& result) {
  if (!result) {
    throw std::runtime_error(path + ": " + httplib::to_string(result.error()));
  }
  if (result->status != 200) {
    throw std::runtime_error(path + ": " + result->body);
  }
  const Json answer = parse(result->body);
  return write(Json(json_incref(json_object_get(answer.get(), "value"))));
}

}  // namespace

std::optional<std::string> Browser::missingProgram() {
  for (const char* program : {"chromium", "chromedriver", "unshare"}) {
    if (!GCharPtr(g_find_program_in_path(program))) {
      return program;
    }
  }
  return std::nullopt;
}

// The desktop's name makes xdg-open, which the browser runs, hand links to GIO, which reaches the
// agent through the bus.
Browser::Browser(const PrivateHome& home, const std::string& display, const std::string& policies)
    : driver_(driverCommand(policiesIn(home, policies)),
              {{"DISPLAY", display}, {"XDG_CURRENT_DESKTOP", "GNOME"}}),
      client_(std::make_unique<httplib::Client>("127.0.0.1", portOf(driver_))) {
  client_->set_read_timeout(kDeadline);
  const Json session = parse(command("/session", capabilities(home)));
  session_ = "/session/" + textOf(json_object_get(session.get(), "sessionId"));
}

Browser::~Browser() {
  client_->Delete(session_);
  client_->Get("/shutdown");
  driver_.waitForExit();
}

std::string Browser::command(const std::string& path, const std::string& body) const {
  return valueOf(path, client_->Post(session_ + path, body, "application/json; charset=utf-8"));
}

std::string Browser::query(const std::string& path) const {
  return valueOf(path, client_->Get(session_ + path));
}

void Browser::open(const std::string& url) {
  command("/url", write(Json(json_pack("{s:s}", "url", url.c_str()))));
}

std::string Browser::element(const std::string& selector) {
  const Json found = parse(command(
      "/element",
      write(Json(json_pack("{s:s, s:s}", "using", "css selector", "value", selector.c_str())))));
  return "/element/" + textOf(json_object_get(found.get(), kElementKey));
}

void Browser::click(const std::string& selector) {
  command(element(selector) + "/click", "{}");
}

void Browser::type(const std::string& selector, const std::string& text) {
  command(element(selector) + "/value", write(Json(json_pack("{s:s}", "text", text.c_str()))));
}

void Browser::typeIntoFocus(const std::string& text) {
  type(":focus", text);
}

std::string Browser::execute(const std::string& function,
                             const std::vector<std::string>& arguments) {
  Json values(json_array());
  for (const std::string& argument : arguments) {
    json_array_append_new(values.get(), json_string(argument.c_str()));
  }
  const Json value = parse(command(
      "/execute/sync",
      write(Json(json_pack("{s:s, s:O}", "script", function.c_str(), "args", values.get())))));
  return textOf(value.get());
}

std::string Browser::text(const std::string& selector) {
  return execute("return document.querySelector(arguments[0])?.innerText ?? ''", {selector});
}

std::string Browser::accessibleName(const std::string& selector) {
  const Json name = parse(query(element(selector) + "/computedlabel"));
  return textOf(name.get());
}

std::string Browser::evaluate(const std::string& expression) {
  return execute("return String(" + expression + ")", {});
}

bool Browser::waitForText(const std::string& selector, const std::string& expected) {
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  while (text(selector).find(expected) == std::string::npos) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

void Browser::preferColours(const std::string& scheme) {
  command("/goog/cdp/execute",
          write(Json(json_pack("{s:s, s:{s:[{s:s, s:s}, {s:s, s:s}]}}", "cmd",
                               "Emulation.setEmulatedMedia", "params", "features", "name",
                               "prefers-color-scheme", "value", scheme.c_str(), "name",
                               "prefers-reduced-motion", "value", "reduce"))));
}

void Browser::resizeTo(int width, int height) {
  command("/goog/cdp/execute",
          write(Json(json_pack("{s:s, s:{s:i, s:i, s:i, s:b}}", "cmd",
                               "Emulation.setDeviceMetricsOverride", "params", "width", width,
                               "height", height, "deviceScaleFactor", 1, "mobile", 0))));
}

void Browser::saveScreenshot(const std::string& path) {
  const Json picture = parse(query("/screenshot"));
  const std::string encoded = textOf(picture.get());
  gsize size = 0;
  guchar* const bytes = g_base64_decode(encoded.c_str(), &size);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  g_free(bytes);
}

}  // namespace vendril
