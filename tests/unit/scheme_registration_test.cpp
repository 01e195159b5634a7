#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "protocol/ZQN5ProtocolHandler.h"
#include "support/FakeHost.h"
#include "support/FreshProtocolHandler.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A handler of the schemes "mervale" and "vendril", not registered for either.
class SchemeRegistration : public testing::Test {
 protected:
  SchemeRegistration() { logMessages(); }

  void logMessages() {
    handler_.setLoggerBlock([this](std::string_view message) { log_.emplace_back(message); });
  }

  /// Makes the bundle declare `urlTypes` and the handler read them.
  void declare(PropertyList urlTypes) {
    host_.fakeBundle.info.insert_or_assign("CFBundleURLTypes", std::move(urlTypes));
    fresh_.rebuild();
    logMessages();
  }

  ZQN5ProtocolHandler::Schemes declaredSchemes() const {
    return ZQN5ProtocolHandler::supportedURLSchemes(host_.fakeBundle);
  }

  std::vector<std::string> takeLog() { return std::exchange(log_, {}); }
  std::vector<std::string> takeHistory() { return std::exchange(launchServices_.history, {}); }

  FakeHost host_;
  FreshProtocolHandler fresh_;
  ZQN5ProtocolHandler& handler_ = ZQN5ProtocolHandler::sharedInstance();
  FakeLaunchServices& launchServices_ = host_.fakeLaunchServices;
  std::vector<std::string> log_;
};

TEST_F(SchemeRegistration, DeclaredSchemesAreGatheredFromAllUrlTypes) {
  declare(PropertyList::Array{FakeBundle::urlType({"b", "a"}), FakeBundle::urlType({"c", "a"})});
  EXPECT_THAT(declaredSchemes(), ElementsAre("a", "b", "c"));
  EXPECT_THAT(handler_.supportedURLSchemes(), ElementsAre("a", "b", "c"));
}

TEST_F(SchemeRegistration, DeclaredSchemesKeepTheirCaseAndAreNotChecked) {
  declare(PropertyList::Array{FakeBundle::urlType({"Vendril", "vendril", "", "not a scheme"})});
  EXPECT_THAT(declaredSchemes(), ElementsAre("", "Vendril", "not a scheme", "vendril"));
}

TEST_F(SchemeRegistration, DeclaredSchemesAreReadAnewAtClassLevelOnly) {
  host_.fakeBundle.info.insert_or_assign("CFBundleURLTypes",
                                         PropertyList::Array{FakeBundle::urlType({"new"})});
  EXPECT_THAT(declaredSchemes(), ElementsAre("new"));
  EXPECT_THAT(handler_.supportedURLSchemes(), ElementsAre("mervale", "vendril"));
}

TEST_F(SchemeRegistration, UrlTypesWithoutSchemesAreSkipped) {
  declare(PropertyList::Array{PropertyList::Dictionary{{"CFBundleURLName", "none"}},
                              FakeBundle::urlType({}), FakeBundle::urlType({"vendril"})});
  EXPECT_THAT(declaredSchemes(), ElementsAre("vendril"));
}

TEST_F(SchemeRegistration, EntriesOfUnexpectedKindsDeclareNothing) {
  declare(PropertyList::Array{
      "text", 1, true, PropertyList::Array{"vendril"},
      PropertyList::Dictionary{{"CFBundleURLSchemes", "vendril"}},
      PropertyList::Dictionary{{"CFBundleURLSchemes", PropertyList::Dictionary{{"a", "b"}}}},
      PropertyList::Dictionary{
          {"CFBundleURLSchemes", PropertyList::Array{1, "mervale", PropertyList::Data{}}}}});
  EXPECT_THAT(declaredSchemes(), ElementsAre("mervale"));
}

TEST_F(SchemeRegistration, UrlTypesOfAnUnexpectedKindDeclareNothing) {
  for (const PropertyList& value :
       {PropertyList("vendril"), PropertyList(1), FakeBundle::urlType({"vendril"})}) {
    SCOPED_TRACE(description(value));
    declare(value);
    EXPECT_THAT(declaredSchemes(), IsEmpty());
  }
}

TEST_F(SchemeRegistration, WithoutUrlTypesEverySchemeIsInvalidButAllOfThemSucceed) {
  host_.fakeBundle.info.erase("CFBundleURLTypes");
  fresh_.rebuild();
  EXPECT_THAT(handler_.supportedURLSchemes(), IsEmpty());
  EXPECT_FALSE(handler_.isValidScheme("vendril"));
  EXPECT_TRUE(handler_.registerForAllSupportedURLSchemes());
  EXPECT_TRUE(handler_.unregisterFromAllSupportedURLSchemes());
  EXPECT_TRUE(handler_.isRegisteredForAllSupportedURLSchemes());
  EXPECT_THAT(takeHistory(), IsEmpty());
}

TEST_F(SchemeRegistration, DeclaredSchemeIsValidWithoutAMessage) {
  EXPECT_TRUE(handler_.isValidScheme("vendril"));
  EXPECT_TRUE(handler_.isValidScheme("mervale"));
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(SchemeRegistration, SchemesAreComparedExactly) {
  for (const char* scheme : {"Vendril", "VENDRIL", "vendri", "vendril ", "http"}) {
    EXPECT_FALSE(handler_.isValidScheme(scheme)) << scheme;
  }
  EXPECT_THAT(takeLog(), ElementsAre("Invalid 'Vendril' scheme has been found",
                                     "Invalid 'VENDRIL' scheme has been found",
                                     "Invalid 'vendri' scheme has been found",
                                     "Invalid 'vendril ' scheme has been found",
                                     "Invalid 'http' scheme has been found"));
}

TEST_F(SchemeRegistration, EmptySchemeIsInvalidEvenWhenItIsDeclared) {
  EXPECT_FALSE(handler_.isValidScheme(""));
  declare(PropertyList::Array{FakeBundle::urlType({""})});
  EXPECT_FALSE(handler_.isValidScheme(""));
  EXPECT_THAT(takeLog(),
              ElementsAre("Invalid '' scheme has been found", "Invalid '' scheme has been found"));
}

TEST_F(SchemeRegistration, OwnIdentifierIsInLowerCase) {
  host_.fakeBundle.identifier = "COM.Brelto.Vendril-2";
  EXPECT_EQ(ZQN5ProtocolHandler::bundleIdentifier(), "com.brelto.vendril-2");
}

TEST_F(SchemeRegistration, OwnIdentifierIsEmptyWhenTheBundleHasNone) {
  host_.fakeBundle.identifier.reset();
  EXPECT_EQ(ZQN5ProtocolHandler::bundleIdentifier(), "");
}

TEST_F(SchemeRegistration, RegisteringMakesTheLowerCaseIdentifierTheDefaultHandler) {
  EXPECT_TRUE(handler_.registerForURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Registering for 'vendril' scheme",
                                     "Successfully registered for 'vendril' scheme"));
  EXPECT_THAT(takeHistory(), ElementsAre("set vendril com.brelto.vendril"));
}

TEST_F(SchemeRegistration, RegisteringASchemeInAnotherCaseFails) {
  EXPECT_FALSE(handler_.registerForURLScheme("Vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Registering for 'Vendril' scheme",
                                     "Invalid 'Vendril' scheme has been found",
                                     "Failed to register for 'Vendril' scheme. Invalid scheme"));
  EXPECT_THAT(takeHistory(), IsEmpty());
}

TEST_F(SchemeRegistration, RegisteringTheEmptySchemeFails) {
  EXPECT_FALSE(handler_.registerForURLScheme(""));
  EXPECT_THAT(takeLog(),
              ElementsAre("Registering for '' scheme", "Invalid '' scheme has been found",
                          "Failed to register for '' scheme. Invalid scheme"));
}

TEST_F(SchemeRegistration, RefusedRegistrationLogsTheStatusUnsignedWithTwoLetters) {
  launchServices_.statusForScheme["vendril"] = -1;
  EXPECT_FALSE(handler_.registerForURLScheme("vendril"));
  EXPECT_THAT(takeLog(),
              ElementsAre("Registering for 'vendril' scheme",
                          "Failed to register for 'vendril' scheme. Status=4294967295ll"));
  launchServices_.statusForScheme["vendril"] = -10814;
  EXPECT_FALSE(handler_.registerForURLScheme("vendril"));
  EXPECT_THAT(takeLog(),
              ElementsAre("Registering for 'vendril' scheme",
                          "Failed to register for 'vendril' scheme. Status=4294956482ll"));
  launchServices_.statusForScheme["vendril"] = 7;
  EXPECT_FALSE(handler_.registerForURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Registering for 'vendril' scheme",
                                     "Failed to register for 'vendril' scheme. Status=7ll"));
}

TEST_F(SchemeRegistration, IsRegisteredWhenTheDefaultHandlerIsOursInAnyMixOfCase) {
  for (const char* handler : {"com.brelto.vendril", "com.brelto.Vendril", "COM.BRELTO.VENDRIL"}) {
    launchServices_.defaults["vendril"] = handler;
    EXPECT_TRUE(handler_.isRegisteredForURLScheme("vendril")) << handler;
  }
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(SchemeRegistration, IsNotRegisteredWhenAnotherHandlerIsTheDefault) {
  for (const char* handler : {"com.brelto.vendril2", "com.brelto", "org.other", ""}) {
    launchServices_.defaults["vendril"] = handler;
    EXPECT_FALSE(handler_.isRegisteredForURLScheme("vendril")) << handler;
  }
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(SchemeRegistration, IsNotRegisteredWhenThereIsNoDefaultHandler) {
  EXPECT_FALSE(handler_.isRegisteredForURLScheme("vendril"));
  EXPECT_THAT(takeLog(), IsEmpty());
  EXPECT_THAT(takeHistory(), ElementsAre("default vendril"));
}

TEST_F(SchemeRegistration, IsNotRegisteredForAnInvalidScheme) {
  launchServices_.defaults["Vendril"] = "com.brelto.vendril";
  EXPECT_FALSE(handler_.isRegisteredForURLScheme("Vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Invalid 'Vendril' scheme has been found"));
  EXPECT_THAT(takeHistory(), IsEmpty());
}

TEST_F(SchemeRegistration, UnregisteringAnInvalidSchemeFails) {
  EXPECT_FALSE(handler_.unregisterFromURLScheme("http"));
  EXPECT_THAT(takeLog(), ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme http",
                                     "Invalid 'http' scheme has been found",
                                     "Failed to unregister from 'http' scheme. Invalid scheme"));
  EXPECT_THAT(takeHistory(), IsEmpty());
}

TEST_F(SchemeRegistration, UnregisteringWhenNotTheDefaultHandlerSucceedsAndChangesNothing) {
  launchServices_.defaults["vendril"] = "org.other";
  launchServices_.handlers["vendril"] = {"com.brelto.vendril", "org.other"};
  EXPECT_TRUE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                                     "Application is not registered for 'vendril' scheme"));
  EXPECT_THAT(takeHistory(), ElementsAre("default vendril"));
}

/// A handler that is the default one of "vendril".
class SchemeUnregistration : public SchemeRegistration {
 protected:
  SchemeUnregistration() { launchServices_.defaults["vendril"] = "com.brelto.vendril"; }
};

TEST_F(SchemeUnregistration, FailsWhenTheHandlersCannotBeListed) {
  EXPECT_FALSE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                                     "Failed to unregister from 'vendril' scheme"));
  EXPECT_THAT(takeHistory(), ElementsAre("default vendril", "all vendril"));
}

TEST_F(SchemeUnregistration, FailsWhenThereIsNoHandler) {
  launchServices_.handlers["vendril"] = {};
  EXPECT_FALSE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                                     "Failed to unregister from 'vendril' scheme"));
}

TEST_F(SchemeUnregistration, FailsWhenTheApplicationIsTheOnlyHandler) {
  launchServices_.handlers["vendril"] = {"com.brelto.vendril"};
  EXPECT_FALSE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                                     "Failed to unregister from 'vendril' scheme"));
  EXPECT_EQ(launchServices_.setCount(), 0);
}

TEST_F(SchemeUnregistration, TriesTheLastHandlerFirst) {
  launchServices_.handlers["vendril"] = {"org.a", "org.b", "org.c"};
  EXPECT_TRUE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(
      takeLog(),
      ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                  "Successfully registered 'org.c' as new default handler for 'vendril' scheme",
                  "Successfully unregistered from 'vendril' scheme"));
  EXPECT_THAT(takeHistory(), ElementsAre("default vendril", "all vendril", "set vendril org.c"));
}

TEST_F(SchemeUnregistration, GoesOnTowardsTheFrontAfterARefusal) {
  launchServices_.handlers["vendril"] = {"org.a", "org.b", "org.c"};
  launchServices_.statusForHandler["org.c"] = -10814;
  EXPECT_TRUE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(
      takeLog(),
      ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                  "Failed to register 'org.c' as new default handler for 'vendril' scheme",
                  "Successfully registered 'org.b' as new default handler for 'vendril' scheme",
                  "Successfully unregistered from 'vendril' scheme"));
  EXPECT_EQ(launchServices_.defaults["vendril"], "org.b");
}

TEST_F(SchemeUnregistration, FailsWhenThreeHandlersAreRefusedInTurn) {
  launchServices_.handlers["vendril"] = {"org.a", "org.b", "org.c"};
  launchServices_.statusForScheme["vendril"] = -10810;
  EXPECT_FALSE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(takeLog(),
              ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                          "Failed to register 'org.c' as new default handler for 'vendril' scheme",
                          "Failed to register 'org.b' as new default handler for 'vendril' scheme",
                          "Failed to register 'org.a' as new default handler for 'vendril' scheme",
                          "Failed to unregister from 'vendril' scheme"));
  EXPECT_EQ(launchServices_.defaults["vendril"], "com.brelto.vendril");
}

TEST_F(SchemeUnregistration, SkipsTheApplicationWithoutAMessage) {
  launchServices_.handlers["vendril"] = {"org.a", "com.brelto.vendril"};
  EXPECT_TRUE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(
      takeLog(),
      ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                  "Successfully registered 'org.a' as new default handler for 'vendril' scheme",
                  "Successfully unregistered from 'vendril' scheme"));
}

TEST_F(SchemeUnregistration, TakesItsOwnIdentifierInAnotherCaseForAnotherHandler) {
  launchServices_.handlers["vendril"] = {"org.a", "com.brelto.Vendril"};
  EXPECT_TRUE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_THAT(takeLog(), ElementsAre("Unregistering from 'ZQN5ProtocolHandler' scheme vendril",
                                     "Successfully registered 'com.brelto.Vendril' as new default "
                                     "handler for 'vendril' scheme",
                                     "Successfully unregistered from 'vendril' scheme"));
}

TEST_F(SchemeUnregistration, WorksWithoutALoggerBlock) {
  handler_.setLoggerBlock({});
  launchServices_.handlers["vendril"] = {"org.a", "org.b"};
  launchServices_.statusForHandler["org.b"] = -10814;
  EXPECT_FALSE(handler_.unregisterFromURLScheme("http"));
  EXPECT_TRUE(handler_.unregisterFromURLScheme("vendril"));
  EXPECT_EQ(launchServices_.defaults["vendril"], "org.a");
  EXPECT_TRUE(handler_.registerForURLScheme("vendril"));
  EXPECT_EQ(launchServices_.defaults["vendril"], "com.brelto.vendril");
  EXPECT_THAT(takeLog(), IsEmpty());
}

/// A handler of the schemes "a", "b" and "c", registered for none.
class SchemeSets : public SchemeRegistration {
 protected:
  SchemeSets() { declare(PropertyList::Array{FakeBundle::urlType({"a", "b", "c"})}); }

  const ZQN5ProtocolHandler::Schemes all_{"a", "b", "c"};
};

TEST_F(SchemeSets, RegisteringStopsAtTheFirstFailure) {
  launchServices_.statusForScheme["b"] = -10810;
  EXPECT_FALSE(handler_.registerForURLSchemes(all_));
  EXPECT_THAT(takeHistory(), ElementsAre("set a com.brelto.vendril", "set b com.brelto.vendril"));
  EXPECT_THAT(takeLog(),
              ElementsAre("Registering for 'a' scheme", "Successfully registered for 'a' scheme",
                          "Registering for 'b' scheme",
                          "Failed to register for 'b' scheme. Status=4294956486ll"));
}

TEST_F(SchemeSets, RegisteringSucceedsWhenEveryMemberDoes) {
  EXPECT_TRUE(handler_.registerForURLSchemes({"a", "c"}));
  EXPECT_THAT(takeHistory(), ElementsAre("set a com.brelto.vendril", "set c com.brelto.vendril"));
}

TEST_F(SchemeSets, EmptySetSucceedsAndAsksNothing) {
  EXPECT_TRUE(handler_.registerForURLSchemes({}));
  EXPECT_TRUE(handler_.unregisterFromURLSchemes({}));
  EXPECT_TRUE(handler_.isRegisteredForURLSchemes({}));
  EXPECT_THAT(takeHistory(), IsEmpty());
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(SchemeSets, CheckingStopsAtTheFirstOneNotRegistered) {
  launchServices_.defaults = {{"a", "com.brelto.vendril"}, {"c", "com.brelto.vendril"}};
  EXPECT_FALSE(handler_.isRegisteredForURLSchemes(all_));
  EXPECT_THAT(takeHistory(), ElementsAre("default a", "default b"));
  EXPECT_TRUE(handler_.isRegisteredForURLSchemes({"a", "c"}));
}

TEST_F(SchemeSets, UnregisteringStopsAtTheFirstFailure) {
  EXPECT_TRUE(handler_.registerForAllSupportedURLSchemes());
  launchServices_.handlers = {{"a", {"org.a"}}, {"b", {}}, {"c", {"org.a"}}};
  takeHistory();
  EXPECT_FALSE(handler_.unregisterFromURLSchemes(all_));
  EXPECT_THAT(takeHistory(),
              ElementsAre("default a", "all a", "set a org.a", "default b", "all b"));
}

TEST_F(SchemeSets, OperationsOnAllSchemesCoverEveryDeclaredOne) {
  EXPECT_FALSE(handler_.isRegisteredForAllSupportedURLSchemes());
  EXPECT_TRUE(handler_.registerForAllSupportedURLSchemes());
  EXPECT_TRUE(handler_.isRegisteredForAllSupportedURLSchemes());
  launchServices_.handlers = {{"a", {"org.a"}}, {"b", {"org.b"}}, {"c", {"org.c"}}};
  EXPECT_TRUE(handler_.unregisterFromAllSupportedURLSchemes());
  EXPECT_EQ(launchServices_.defaults.at("a"), "org.a");
  EXPECT_EQ(launchServices_.defaults.at("b"), "org.b");
  EXPECT_EQ(launchServices_.defaults.at("c"), "org.c");
  EXPECT_FALSE(handler_.isRegisteredForAllSupportedURLSchemes());
}

TEST_F(SchemeSets, CheckingSeveralSharesOneLookAtTheRegistryEachTime) {
  ASSERT_TRUE(handler_.registerForAllSupportedURLSchemes());
  EXPECT_TRUE(handler_.isRegisteredForAllSupportedURLSchemes());
  EXPECT_TRUE(handler_.isRegisteredForAllSupportedURLSchemes());
  EXPECT_THAT(launchServices_.looks, ElementsAre(all_, all_));
  EXPECT_EQ(launchServices_.questionsWithoutALook, 0);
  EXPECT_TRUE(handler_.isRegisteredForURLScheme("a"));
  EXPECT_EQ(launchServices_.questionsWithoutALook, 1);
}

TEST_F(SchemeSets, OperationsOnAllSchemesUseTheSchemesReadAtCreation) {
  host_.fakeBundle.info.erase("CFBundleURLTypes");
  EXPECT_TRUE(handler_.registerForAllSupportedURLSchemes());
  EXPECT_THAT(takeHistory(), ElementsAre("set a com.brelto.vendril", "set b com.brelto.vendril",
                                         "set c com.brelto.vendril"));
}

}  // namespace
}  // namespace vendril
