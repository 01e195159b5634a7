// Shows one alert and tells how it ended. Called as
//
//   vendril-alert STYLE MESSAGE INFORMATION BUTTON
//
// with a style out of warning, informational and critical, and plain texts. Standard output gets
// "1000" and a line end when the button ended the alert; nothing otherwise. Standard input is the
// tie to the program that started this one: at its end the alert goes away.
//
// Exit status: 0 answered, 1 not answered, 2 wrong arguments, 3 no display.

#include <glib-unix.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "alert/AlertText.h"
#include "alert/AlertWindow.h"
#include "alert/AnsweringBus.h"
#include "alert/DarkStyle.h"

namespace vendril {
namespace {

constexpr int kAnswered = EXIT_SUCCESS;
constexpr int kNotAnswered = EXIT_FAILURE;
constexpr int kWrongArguments = 2;
constexpr int kNoDisplay = 3;

constexpr int kArgumentCount = 5;
constexpr const char* kFirstButtonReturn = "1000\n";

std::optional<std::string> iconNameOfStyle(std::string_view style) {
  if (style == "warning") {
    return "dialog-warning";
  }
  if (style == "informational") {
    return "dialog-information";
  }
  if (style == "critical") {
    return "dialog-error";
  }
  return std::nullopt;
}

std::string validText(const char* argument) {
  const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(argument, -1), g_free);
  return valid.get();
}

std::optional<AlertText> readArguments(int argc, char** argv) {
  if (argc != kArgumentCount) {
    return std::nullopt;
  }
  std::optional<std::string> iconName = iconNameOfStyle(argv[1]);
  if (!iconName) {
    return std::nullopt;
  }
  return AlertText{*iconName, validText(argv[2]), validText(argv[3]), validText(argv[4])};
}

bool isRightToLeft(const std::string& text) {
  auto* label = GTK_WIDGET(g_object_ref_sink(gtk_label_new(text.c_str())));
  const PangoDirection direction =
      pango_layout_get_direction(gtk_label_get_layout(GTK_LABEL(label)), 0);
  g_object_unref(label);
  return direction == PANGO_DIRECTION_RTL;
}

/// The desktop's direction comes from its language; a text in a right-to-left script gets its own
/// even where that language's locale is not installed.
void followTextDirection(const AlertText& text) {
  const bool rightToLeft =
      gtk_get_locale_direction() == GTK_TEXT_DIR_RTL || isRightToLeft(text.message);
  gtk_widget_set_default_direction(rightToLeft ? GTK_TEXT_DIR_RTL : GTK_TEXT_DIR_LTR);
}

/// One showing of the alert.
class Session {
 public:
  explicit Session(const AlertText& text)
      : loop_(g_main_loop_new(nullptr, FALSE), g_main_loop_unref),
        window_(text, [this](bool confirmed) { end(confirmed); }) {}

  /// Returns true when the button ended the alert.
  bool run() {
    const guint tie = g_unix_fd_add(STDIN_FILENO, G_IO_IN, starterSpoke, this);
    window_.present();
    g_main_loop_run(loop_.get());
    if (!starterGone_) {
      g_source_remove(tie);
    }
    return confirmed_;
  }

 private:
  void end(bool confirmed) {
    confirmed_ = confirmed;
    g_main_loop_quit(loop_.get());
  }

  static gboolean starterSpoke(gint descriptor, GIOCondition, gpointer data) {
    std::array<char, 64> ignored{};
    const ssize_t count = read(descriptor, ignored.data(), ignored.size());
    if (count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN))) {
      return G_SOURCE_CONTINUE;
    }
    auto* self = static_cast<Session*>(data);
    self->starterGone_ = true;
    self->end(false);
    return G_SOURCE_REMOVE;
  }

  std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop_;
  AlertWindow window_;
  bool confirmed_ = false;
  bool starterGone_ = false;
};

int showAlert(const AlertText& text) {
  // The desktop finds the application's name and icon by this identifier.
  g_set_prgname(VENDRIL_DESKTOP_ID);
  g_set_application_name(VENDRIL_NAME);
  const AnsweringBus bus;
  if (gtk_init_check() == 0) {
    std::fputs("no display can be opened\n", stderr);
    return kNoDisplay;
  }
  followTextDirection(text);
  const DarkStyle style(bus.connection());
  if (!Session(text).run()) {
    std::fputs("the alert was closed without an answer\n", stderr);
    return kNotAnswered;
  }
  std::fputs(kFirstButtonReturn, stdout);
  return std::fflush(stdout) == 0 ? kAnswered : kNotAnswered;
}

}  // namespace
}  // namespace vendril

int main(int argc, char** argv) {
  const std::optional<vendril::AlertText> text = vendril::readArguments(argc, argv);
  if (!text) {
    std::fputs("usage: vendril-alert STYLE MESSAGE INFORMATION BUTTON\n", stderr);
    return vendril::kWrongArguments;
  }
  return vendril::showAlert(*text);
}
