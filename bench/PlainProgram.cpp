#include "bench/PlainProgram.h"

#include <curl/curl.h>
#include <jansson.h>
#include <plist/plist.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

namespace vendril::bench {
namespace {

std::string textIn(plist_t dictionary, const char* key) {
  char* text = nullptr;
  plist_get_string_val(plist_dict_get_item(dictionary, key), &text);
  std::string result = text != nullptr ? text : "";
  std::free(text);
  return result;
}

bool flagIn(plist_t dictionary, const char* key) {
  std::uint8_t flag = 0;
  plist_get_bool_val(plist_dict_get_item(dictionary, key), &flag);
  return flag != 0;
}

bool isFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

}  // namespace

void writeConfiguration(const std::string& path) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path) << R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>PublishedConfiguration</key><dict>
  <key>AppName</key><string>Brelto Orvanta 3.21.0</string>
  <key>AppVersion</key><string>3.21.0.64.24</string>
  <key>SIPDomain</key><string>sip.example</string>
  <key>LogDirectory</key><string>/var/tmp</string>
  <key>ExecutablePath</key><string>/bin/true</string>
  <key>VideoCapable</key><true/>
  <key>MeetmeCapable</key><true/>
  <key>SIPReady</key><true/>
  <key>isMeetMeOnly</key><false/>
  <key>isTemporary</key><false/>
</dict></dict></plist>
)";
}

std::optional<std::pair<std::string, std::string>> plainParse(const char* link) {
  CURLU* const outer = curl_url();
  CURLU* const inner = curl_url();
  char* query = nullptr;
  char* parameters = nullptr;
  std::optional<std::pair<std::string, std::string>> result;
  constexpr std::string_view kPortal = "portalURI=";
  constexpr std::string_view kSession = "session_id=";
  if (curl_url_set(outer, CURLUPART_URL, link, CURLU_NON_SUPPORT_SCHEME) == CURLUE_OK &&
      curl_url_get(outer, CURLUPART_QUERY, &query, CURLU_URLDECODE) == CURLUE_OK &&
      std::string_view(query).starts_with(kPortal) &&
      curl_url_set(inner, CURLUPART_URL, query + kPortal.size(), 0) == CURLUE_OK &&
      curl_url_get(inner, CURLUPART_QUERY, &parameters, 0) == CURLUE_OK) {
    std::string_view session = parameters;
    session.remove_prefix(std::min(session.find(kSession) + kSession.size(), session.size()));
    result.emplace(query + kPortal.size(), session.substr(0, session.find('&')));
  }
  curl_free(query);
  curl_free(parameters);
  curl_url_cleanup(outer);
  curl_url_cleanup(inner);
  return result;
}

std::optional<PlainConfiguration> plainLoad(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  void* const values = plist_dict_get_item(root, "PublishedConfiguration");
  std::optional<PlainConfiguration> result;
  if (values != nullptr) {
    result = {textIn(values, "AppName"),        textIn(values, "AppVersion"),
              textIn(values, "SIPDomain"),      textIn(values, "LogDirectory"),
              textIn(values, "ExecutablePath"), flagIn(values, "VideoCapable"),
              flagIn(values, "MeetmeCapable"),  flagIn(values, "SIPReady"),
              flagIn(values, "isMeetMeOnly"),   flagIn(values, "isTemporary")};
  }
  plist_free(root);
  return result;
}

std::string plainReport(const std::string& path) {
  const PlainConfiguration values = plainLoad(path).value_or(PlainConfiguration());
  const bool found = isFile(values.executablePath);
  json_t* const report =
      json_pack("{s:s,s:s,s:b,s:i,s:i,s:i}", "appName", values.appName.c_str(), "appVersion",
                values.appVersion.c_str(), "isMeetMeOnly", values.isMeetMeOnly ? 1 : 0,
                "meetmeCapable", values.meetmeCapable && found ? 1 : 0, "videoCapable",
                values.videoCapable && found ? 1 : 0, "SIPready", values.sipReady && found ? 1 : 0);
  if (values.sipReady && found && !values.sipDomain.empty()) {
    json_object_set_new(report, "SIPDomain", json_string(values.sipDomain.c_str()));
  }
  char* const text = json_dumps(report, JSON_COMPACT | JSON_ESCAPE_SLASH);
  std::string result = text;
  std::free(text);
  json_decref(report);
  return result;
}

}  // namespace vendril::bench
