// The catalogues of the alert's texts, as the build makes them.

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace vendril {
namespace {

constexpr const char* kButton = "ZQN5ErrorHandler.buttonOk.title";
constexpr const char* kTitle = "ZQN5Vendril.connectionError.title";
constexpr const char* kMessage = "ZQN5Vendril.connectionError.messageMervale";

/// The texts of one language.
struct Texts {
  std::string language;
  std::string button;
  std::string title;
};

class Translations : public ::testing::TestWithParam<Texts> {
 protected:
  void SetUp() override {
    setenv("LANGUAGE", GetParam().language.c_str(), 1);
    // Any locale but "C" makes gettext look at LANGUAGE.
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    bindtextdomain("vendril", VENDRIL_BUILD_DIR "/share/locale");
    bind_textdomain_codeset("vendril", "UTF-8");
  }
  void TearDown() override {
    unsetenv("LANGUAGE");
    std::setlocale(LC_ALL, "C");
  }

  static std::string lookUp(const char* key) { return dgettext("vendril", key); }
};

TEST_P(Translations, HoldsTheThreeTexts) {
  EXPECT_EQ(lookUp(kButton), GetParam().button);
  EXPECT_EQ(lookUp(kTitle), GetParam().title);
  const std::string message = lookUp(kMessage);
  EXPECT_THAT(message, ::testing::HasSubstr("Vendril"));
  EXPECT_THAT(message, ::testing::HasSubstr("Mervale Meeting Service"));
  EXPECT_NE(message, kMessage);
}

TEST_P(Translations, TranslatesEveryKeyOfTheTemplate) {
  const std::string directory = VENDRIL_SOURCE_DIR "/data/po/";
  const std::string catalogue = directory + GetParam().language + ".po";
  const std::string pattern = directory + "vendril.pot";
  const char* const arguments[] = {"msgcmp", catalogue.c_str(), pattern.c_str(), nullptr};
  gint status = -1;
  ASSERT_TRUE(g_spawn_sync(nullptr, const_cast<gchar**>(arguments), nullptr, G_SPAWN_SEARCH_PATH,
                           nullptr, nullptr, nullptr, nullptr, &status, nullptr));
  EXPECT_EQ(status, 0);
}

INSTANTIATE_TEST_SUITE_P(Catalogues, Translations,
                         ::testing::Values(Texts{"ar", "حسنًا", "خطأ في الاتصال بالشبكة"},
                                           Texts{"de", "OK", "Netzwerkverbindungsfehler"},
                                           Texts{"en", "OK", "Network connection error"},
                                           Texts{"es", "Aceptar", "Error de conexión de red"},
                                           Texts{"fr", "OK", "Erreur de connexion réseau"},
                                           Texts{"ja", "OK", "ネットワーク接続エラー"}),
                         [](const auto& instance) { return instance.param.language; });

}  // namespace
}  // namespace vendril
