#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/LoggerBlock.h"
#include "platform/PropertyList.h"

namespace vendril {

/// What the conferencing client publishes about itself, and the file that it publishes it in. Main
/// thread only. Failures are a false or absent result and one message to the logger block.
class ZQN5PublishedConfiguration {
 public:
  static constexpr const char* kClassName = "ZQN5PublishedConfiguration";

  /// A cleared record. An empty block logs nothing.
  explicit ZQN5PublishedConfiguration(LoggerBlock loggerBlock);

  /// Unsets every text and switches every flag off but `meetMeOnly`, which is switched on.
  void clear();

  /// The path of the file, formed anew on each call. Creates the preferences folder when it is
  /// missing, never the file. Nothing when there is no Library directory or no such folder.
  std::optional<std::string> persistentFilePath() const;

  /// The same path, without looking whether the folder is there.
  static std::optional<std::string> expectedFilePath();
  /// True when the file at `path` can be loaded.
  static bool holdsConfiguration(const std::string& path);

  /// Overwrites the whole record from the file, or from the built-in default when the file is
  /// missing or unusable. False, with the record as it was, when the default fails too.
  bool loadFromFile();
  /// The same, but creates nothing at all.
  bool loadWithoutTrace();

  /// Replaces the file by the record; whatever else the file held is lost.
  bool saveToFile() const;

  /// Deletes the file. True when there is none any more.
  bool removeFile() const;

  /// Loads the record and, when its version is not that of the application's own bundle, stores and
  /// saves the bundle's name and version.
  void updateVersionIfNeeded();

  /// Loads the record and reports it as a compact JSON object. The capabilities count only when the
  /// client's executable is found or the search for it is skipped. Nothing when there is no report.
  std::optional<std::string> getClientInfoJSONWithSkipSearch(bool skipSearch);
  /// The report of the record as it stands.
  std::optional<std::string> clientInfoJSON(bool skipSearch) const;
  /// The report with the search.
  std::optional<std::string> getClientInfoJSON() { return getClientInfoJSONWithSkipSearch(false); }

  /// True when something other than a folder stands at the executable's path.
  bool findBreltoOrvanta() const;

  /// The texts. A value is kept as it was found, whatever its kind; the getters give the empty text
  /// for a value that is unset or is not a text.
  std::string appName() const { return text(appName_); }
  void setAppName(std::optional<PropertyList> value) { appName_ = std::move(value); }
  std::string appVersion() const { return text(appVersion_); }
  void setAppVersion(std::optional<PropertyList> value) { appVersion_ = std::move(value); }
  std::string SIPDomain() const { return text(sipDomain_); }
  void setSIPDomain(std::optional<PropertyList> value) { sipDomain_ = std::move(value); }
  std::string logDirectory() const { return text(logDirectory_); }
  void setLogDirectory(std::optional<PropertyList> value) { logDirectory_ = std::move(value); }
  std::string executablePath() const { return text(executablePath_); }
  void setExecutablePath(std::optional<PropertyList> value) { executablePath_ = std::move(value); }

  bool videoCapable() const { return videoCapable_; }
  void setVideoCapable(bool value) { videoCapable_ = value; }
  bool meetmeCapable() const { return meetmeCapable_; }
  void setMeetmeCapable(bool value) { meetmeCapable_ = value; }
  bool SIPReady() const { return sipReady_; }
  void setSIPReady(bool value) { sipReady_ = value; }
  bool isMeetMeOnly() const { return meetMeOnly_; }
  void setMeetMeOnly(bool value) { meetMeOnly_ = value; }
  bool isTemporary() const { return temporary_; }
  void setTemporary(bool value) { temporary_ = value; }

  /// The record as it goes into the file: what is set, under the keys of the file.
  PropertyList::Dictionary dictionary() const;
  /// Overwrites the whole record with what `dictionary` holds.
  void assignFrom(const PropertyList::Dictionary& dictionary);

  const LoggerBlock& loggerBlock() const { return loggerBlock_; }
  void setLoggerBlock(LoggerBlock loggerBlock) { loggerBlock_ = std::move(loggerBlock); }

 private:
  static std::string text(const std::optional<PropertyList>& value);

  bool loadFrom(const std::optional<std::string>& path);

  std::optional<PropertyList> appName_;
  std::optional<PropertyList> appVersion_;
  std::optional<PropertyList> sipDomain_;
  std::optional<PropertyList> logDirectory_;
  std::optional<PropertyList> executablePath_;
  bool videoCapable_ = false;
  bool meetmeCapable_ = false;
  bool sipReady_ = false;
  bool meetMeOnly_ = true;
  bool temporary_ = false;
  LoggerBlock loggerBlock_;
};

}  // namespace vendril
