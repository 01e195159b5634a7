#include "config/ClientInfoReport.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>

#include "support/ConfigurationTest.h"

namespace vendril {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr const char* kPathIsEmpty =
    "[ZQN5PublishedConfiguration] Failed to find Brelto Orvanta executable: Path is empty";
constexpr const char* kDefaultReport =
    R"({"appName":"Brelto Orvanta 3.21.0","appVersion":"3.21.0.64.24","isMeetMeOnly":true,)"
    R"("meetmeCapable":0,"videoCapable":0,"SIPready":0})";
constexpr const char* kFullReport =
    R"({"appName":"Client","appVersion":"9","isMeetMeOnly":false,)"
    R"("meetmeCapable":1,"videoCapable":1,"SIPready":1,"SIPDomain":"sip.example"})";

class ClientInfoReport : public ConfigurationTest {
 protected:
  /// A configuration that can do everything and whose executable exists.
  PropertyList::Dictionary capable() {
    return {{"AppName", "Client"},
            {"AppVersion", "9"},
            {"SIPDomain", "sip.example"},
            {"ExecutablePath", library.write("client", "")},
            {"VideoCapable", true},
            {"MeetmeCapable", true},
            {"SIPReady", true}};
  }

  /// The report of a configuration that names the application `name`, and nothing else.
  std::optional<std::string> reportNaming(const PropertyList& name) {
    publish({{"AppName", name}});
    return configuration.getClientInfoJSONWithSkipSearch(true);
  }

  /// How such a report begins and ends.
  static std::string named(const std::string& name) {
    return R"({"appName":)" + name +
           R"(,"appVersion":"","isMeetMeOnly":false,"meetmeCapable":0,"videoCapable":0,)"
           R"("SIPready":0})";
  }

  static std::string dataNaming(const std::string& name) {
    return "{\n"
           "    SIPready = 0;\n"
           "    appName = " +
           name +
           ";\n"
           "    appVersion = \"\";\n"
           "    isMeetMeOnly = 0;\n"
           "    meetmeCapable = 0;\n"
           "    videoCapable = 0;\n"
           "}";
  }
};

TEST_F(ClientInfoReport, WithoutAFileTheDefaultIsReportedWithoutCapabilities) {
  EXPECT_EQ(configuration.getClientInfoJSON(), kDefaultReport);
  EXPECT_THAT(logged(), Contains(kPathIsEmpty));
}

TEST_F(ClientInfoReport, WithoutAFileSkippingTheSearchGivesTheSameWithoutADiscoveryMessage) {
  EXPECT_EQ(configuration.getClientInfoJSONWithSkipSearch(true), kDefaultReport);
  EXPECT_THAT(logged(), Not(Contains(kPathIsEmpty)));
}

TEST_F(ClientInfoReport, AFoundClientIsReportedWithItsCapabilities) {
  publish(capable());
  EXPECT_EQ(configuration.getClientInfoJSON(), kFullReport);
  EXPECT_EQ(logged().size(), 1U);
}

TEST_F(ClientInfoReport, AClientWithoutItsExecutableHasNoCapabilities) {
  publish(capable());
  std::filesystem::remove(library / "client");
  EXPECT_EQ(configuration.getClientInfoJSON(),
            R"({"appName":"Client","appVersion":"9","isMeetMeOnly":false,)"
            R"("meetmeCapable":0,"videoCapable":0,"SIPready":0})");
  EXPECT_EQ(logged().back(),
            "Failed to find Brelto Orvanta executable: '" + library / "client" + "'");
}

TEST_F(ClientInfoReport, SkippingTheSearchCountsTheClientAsFound) {
  publish(capable());
  std::filesystem::remove(library / "client");
  EXPECT_EQ(configuration.getClientInfoJSONWithSkipSearch(true), kFullReport);
  EXPECT_EQ(logged().size(), 1U);
}

TEST_F(ClientInfoReport, EachCapabilityFollowsItsOwnFlag) {
  publish({{"MeetmeCapable", true}});
  EXPECT_THAT(
      configuration.getClientInfoJSONWithSkipSearch(true),
      testing::Optional(testing::HasSubstr(R"("meetmeCapable":1,"videoCapable":0,"SIPready":0})")));
  publish({{"VideoCapable", true}});
  EXPECT_THAT(
      configuration.getClientInfoJSONWithSkipSearch(true),
      testing::Optional(testing::HasSubstr(R"("meetmeCapable":0,"videoCapable":1,"SIPready":0})")));
}

TEST_F(ClientInfoReport, AReadyClientWithoutADomainReportsNone) {
  auto values = capable();
  values.insert_or_assign("SIPDomain", "");
  publish(values);
  EXPECT_EQ(configuration.getClientInfoJSON(),
            R"({"appName":"Client","appVersion":"9","isMeetMeOnly":false,)"
            R"("meetmeCapable":1,"videoCapable":1,"SIPready":1})");
}

TEST_F(ClientInfoReport, ADomainIsNotReportedForAClientThatIsNotReady) {
  auto values = capable();
  values.insert_or_assign("SIPReady", false);
  publish(values);
  EXPECT_EQ(configuration.getClientInfoJSON(),
            R"({"appName":"Client","appVersion":"9","isMeetMeOnly":false,)"
            R"("meetmeCapable":1,"videoCapable":1,"SIPready":0})");
}

TEST_F(ClientInfoReport, ADomainThatIsNotATextCountsAsEmpty) {
  auto values = capable();
  values.insert_or_assign("SIPDomain", 5);
  publish(values);
  EXPECT_EQ(configuration.getClientInfoJSON(),
            R"({"appName":"Client","appVersion":"9","isMeetMeOnly":false,)"
            R"("meetmeCapable":1,"videoCapable":1,"SIPready":1})");
}

TEST_F(ClientInfoReport, EachReportReadsTheFileAnew) {
  publish({{"AppName", "before"}});
  EXPECT_EQ(configuration.getClientInfoJSONWithSkipSearch(true), named(R"("before")"));
  EXPECT_EQ(reportNaming("after"), named(R"("after")"));
}

TEST_F(ClientInfoReport, WithoutAnyConfigurationThereIsNoReport) {
  fake.fakePropertyListFiles.parsedData = std::nullopt;
  EXPECT_EQ(configuration.getClientInfoJSON(), std::nullopt);
  EXPECT_EQ(logged().back(), "Cannot get latest client info.");
}

TEST_F(ClientInfoReport, ASolidusIsEscaped) {
  EXPECT_EQ(reportNaming("a/b"), named(R"("a\/b")"));
}

TEST_F(ClientInfoReport, LettersOutsideAsciiAreRawUtf8) {
  EXPECT_EQ(reportNaming("Caf\xC3\xA9 \xF0\x9F\x93\x9E"),
            named("\"Caf\xC3\xA9 \xF0\x9F\x93\x9E\""));
}

TEST_F(ClientInfoReport, QuotesBackslashesAndControlCharactersAreEscaped) {
  EXPECT_EQ(reportNaming(std::string("\"\\\n\t\x01\0.", 7)), named(R"("\"\\\n\t\u0001\u0000.")"));
}

TEST_F(ClientInfoReport, ANameOfAnotherKindIsReportedInItsKind) {
  EXPECT_EQ(reportNaming(5), named("5"));
  EXPECT_EQ(reportNaming(-5), named("-5"));
  EXPECT_EQ(reportNaming(0.5), named("0.5"));
  EXPECT_EQ(reportNaming(true), named("true"));
  EXPECT_EQ(reportNaming(PropertyList::Array{"a", 1}), named(R"(["a",1])"));
  EXPECT_EQ(reportNaming(PropertyList::Dictionary{{"k", PropertyList::Array{}}, {"j", false}}),
            named(R"({"j":false,"k":[]})"));
}

TEST_F(ClientInfoReport, ANumberBeyondSignedIntegersIsReportedAsAReal) {
  EXPECT_EQ(reportNaming(std::uint64_t{9223372036854775807U}), named("9223372036854775807"));
  EXPECT_EQ(reportNaming(std::uint64_t{9223372036854775808U}), named("9.2233720368547758e18"));
}

TEST_F(ClientInfoReport, AnUnsetNameIsReportedAsTheEmptyText) {
  publish({{"VideoCapable", true}});
  EXPECT_THAT(configuration.getClientInfoJSONWithSkipSearch(true),
              testing::Optional(testing::StartsWith(R"({"appName":"","appVersion":"",)")));
}

TEST_F(ClientInfoReport, AValueWithoutAJsonFormIsAnInvalidObject) {
  EXPECT_EQ(reportNaming(Date()), std::nullopt);
  EXPECT_EQ(logged().back(), "Serialization to JSON failed with error: Object is invalid. Data:\n" +
                                 dataNaming("\"1970-01-01 00:00:00 +0000\"") + "\n");
  EXPECT_EQ(reportNaming(PropertyList::Data{std::byte{0xAB}}), std::nullopt);
  EXPECT_EQ(logged().back(), "Serialization to JSON failed with error: Object is invalid. Data:\n" +
                                 dataNaming("<ab>") + "\n");
}

TEST_F(ClientInfoReport, AValueWithoutAJsonFormIsFoundAtAnyDepth) {
  const PropertyList::Array withDate{"a", PropertyList::Dictionary{{"k", Date()}}};
  EXPECT_EQ(reportNaming(withDate), std::nullopt);
  EXPECT_THAT(logged().back(), testing::StartsWith("Serialization to JSON failed with error: "
                                                   "Object is invalid. Data:\n{\n"));
}

TEST_F(ClientInfoReport, ANumberThatIsNotFiniteIsAnInvalidObject) {
  for (const double number :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(reportNaming(number), std::nullopt);
    EXPECT_THAT(logged().back(), testing::StartsWith("Serialization to JSON failed with error: "
                                                     "Object is invalid. Data:\n{\n"));
  }
}

TEST_F(ClientInfoReport, ATextThatIsNotUtf8FailsToSerialize) {
  EXPECT_EQ(reportNaming("\xFF"), std::nullopt);
  EXPECT_EQ(logged().back(),
            "Serialization to JSON failed with error: A value is not valid UTF-8 text. Data:\n" +
                dataNaming("\"\xFF\"") + "\n");
  EXPECT_EQ(reportNaming(PropertyList::Array{PropertyList::Dictionary{{"\xFF", 1}}}), std::nullopt);
}

TEST_F(ClientInfoReport, BytesThatAreNotUtf8AreNoReport) {
  const auto writeBytes = [](const JsonMembers&) { return JsonResult{"{\"a\":\"\xFF\"}", ""}; };
  EXPECT_EQ(serializeClientInfo({{"a", "b"}}, configuration.loggerBlock(), writeBytes),
            std::nullopt);
  EXPECT_THAT(logged(),
              ElementsAre("Serialization to JSON failed with error: Cannot create JSON string"));
}

TEST_F(ClientInfoReport, AWriterThatFailsGivesItsReason) {
  const auto fail = [](const JsonMembers&) { return JsonResult{std::nullopt, "No luck"}; };
  EXPECT_EQ(serializeClientInfo({{"a", "b"}}, configuration.loggerBlock(), fail), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Serialization to JSON failed with error: No luck. Data:\n"
                                    "{\n    a = b;\n}\n"));
}

TEST_F(ClientInfoReport, WithoutALoggerBlockTheReportIsBuiltAndFailsAsWithOne) {
  configuration.setLoggerBlock(nullptr);
  EXPECT_EQ(configuration.getClientInfoJSON(), kDefaultReport);
  EXPECT_EQ(reportNaming(Date()), std::nullopt);
  const auto fail = [](const JsonMembers&) { return JsonResult{std::nullopt, "No luck"}; };
  EXPECT_EQ(serializeClientInfo({}, nullptr, fail), std::nullopt);
  const auto noText = [](const JsonMembers&) { return JsonResult{"\xFF", {}}; };
  EXPECT_EQ(serializeClientInfo({}, nullptr, noText), std::nullopt);
  fake.fakePropertyListFiles.files.clear();
  fake.fakePropertyListFiles.parsedData.reset();
  EXPECT_EQ(configuration.getClientInfoJSON(), std::nullopt);
  EXPECT_THAT(fake.fakeSystemLog.take(), testing::IsEmpty());
}

class ClientDiscovery : public ConfigurationTest {
 protected:
  bool findAt(const std::string& path) {
    configuration.setExecutablePath(path);
    return configuration.findBreltoOrvanta();
  }

  static std::string notFound(const std::string& path) {
    return "Failed to find Brelto Orvanta executable: '" + path + "'";
  }
};

TEST_F(ClientDiscovery, WithoutAPathLogsThatItIsEmpty) {
  EXPECT_FALSE(configuration.findBreltoOrvanta());
  EXPECT_FALSE(findAt(""));
  EXPECT_THAT(logged(), ElementsAre(kPathIsEmpty, kPathIsEmpty));
}

TEST_F(ClientDiscovery, FindsAFileEvenWhenItCannotBeExecuted) {
  EXPECT_TRUE(findAt(library.write("client", "")));
  EXPECT_THAT(logged(), testing::IsEmpty());
}

TEST_F(ClientDiscovery, AFolderCountsAsNotFound) {
  EXPECT_FALSE(findAt(library.path()));
  EXPECT_THAT(logged(), ElementsAre(notFound(library.path())));
}

TEST_F(ClientDiscovery, NothingAtThePathCountsAsNotFound) {
  EXPECT_FALSE(findAt(library / "missing"));
  EXPECT_THAT(logged(), ElementsAre(notFound(library / "missing")));
}

TEST_F(ClientDiscovery, FollowsASymbolicLink) {
  std::filesystem::create_symlink(library.write("client", ""), library / "link");
  std::filesystem::create_symlink(library.path(), library / "folder");
  std::filesystem::create_symlink(library / "missing", library / "broken");
  EXPECT_TRUE(findAt(library / "link"));
  EXPECT_FALSE(findAt(library / "folder"));
  EXPECT_FALSE(findAt(library / "broken"));
}

TEST_F(ClientDiscovery, APathWithANulByteFindsNoShorterName) {
  const std::string path = library.write("client", "") + std::string("\0x", 2);
  EXPECT_FALSE(findAt(path));
  EXPECT_THAT(logged(), ElementsAre(notFound(path)));
}

}  // namespace
}  // namespace vendril
