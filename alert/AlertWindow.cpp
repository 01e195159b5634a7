#include "alert/AlertWindow.h"

#include <array>
#include <utility>

namespace vendril {
namespace {

constexpr int kMargin = 24;
constexpr int kSpacing = 12;
// The size in which icon themes draw their dialog icons.
constexpr int kIconSize = 48;
// Line lengths that read well; longer texts wrap.
constexpr int kFewestCharactersPerLine = 30;
constexpr int kMostCharactersPerLine = 50;
// Longer texts scroll, so that the button stays on the smallest usual screen.
constexpr int kTallestText = 400;

GtkWidget* makeIcon(const std::string& name) {
  const std::string symbolic = name + "-symbolic";
  const std::array<const char*, 2> names{name.c_str(), symbolic.c_str()};
  GIcon* icon = g_themed_icon_new_from_names(const_cast<char**>(names.data()), names.size());
  // The role of the window says already what the icon says, so a screen reader skips the icon.
  auto* image =
      GTK_WIDGET(g_object_new(GTK_TYPE_IMAGE, "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION,
                              "gicon", icon, "pixel-size", kIconSize, nullptr));
  g_object_unref(icon);
  gtk_widget_set_valign(image, GTK_ALIGN_START);
  return image;
}

GtkWidget* makeLabel(const std::string& text, const char* styleClass) {
  GtkWidget* label = gtk_label_new(text.c_str());
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_width_chars(GTK_LABEL(label), kFewestCharactersPerLine);
  gtk_label_set_max_width_chars(GTK_LABEL(label), kMostCharactersPerLine);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_widget_add_css_class(label, styleClass);
  return label;
}

GtkWidget* makeTexts(const AlertText& text) {
  GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, kSpacing);
  gtk_box_append(GTK_BOX(texts), makeLabel(text.message, "title-2"));
  gtk_box_append(GTK_BOX(texts), makeLabel(text.information, "body"));

  GtkWidget* scroller = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER,
                                 GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scroller), kTallestText);
  gtk_scrolled_window_set_propagate_natural_width(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), texts);
  gtk_widget_set_hexpand(scroller, TRUE);
  return scroller;
}

GtkWidget* makeButton(const std::string& title) {
  GtkWidget* label = gtk_label_new(title.c_str());
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  gtk_label_set_max_width_chars(GTK_LABEL(label), kMostCharactersPerLine);
  GtkWidget* button = gtk_button_new();
  gtk_button_set_child(GTK_BUTTON(button), label);
  gtk_widget_add_css_class(button, "suggested-action");
  gtk_accessible_update_property(GTK_ACCESSIBLE(button), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 title.c_str(), -1);
  return button;
}

GtkWidget* makeContent(const AlertText& text, GtkWidget* button) {
  GtkWidget* upper = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kMargin);
  gtk_box_append(GTK_BOX(upper), makeIcon(text.iconName));
  gtk_box_append(GTK_BOX(upper), makeTexts(text));

  GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, kMargin);
  gtk_widget_set_margin_start(content, kMargin);
  gtk_widget_set_margin_end(content, kMargin);
  gtk_widget_set_margin_top(content, kMargin);
  gtk_widget_set_margin_bottom(content, kMargin);
  gtk_box_append(GTK_BOX(content), upper);
  gtk_box_append(GTK_BOX(content), button);
  return content;
}

GtkWidget* makeTitleBar() {
  GtkWidget* bar = gtk_header_bar_new();
  gtk_header_bar_set_show_title_buttons(GTK_HEADER_BAR(bar), FALSE);
  return bar;
}

}  // namespace

// The role alert is the one that screen readers get as an alert; the toolkit's alert dialog reaches
// them as a plain dialog, whose description they may leave out.
AlertWindow::AlertWindow(const AlertText& text, Answer answer)
    : answer_(std::move(answer)),
      window_(GTK_WINDOW(
          g_object_new(GTK_TYPE_WINDOW, "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT, nullptr))),
      button_(makeButton(text.button)) {
  gtk_window_set_title(window_, VENDRIL_NAME);
  gtk_window_set_icon_name(window_, VENDRIL_DESKTOP_ID);
  gtk_window_set_titlebar(window_, makeTitleBar());
  gtk_window_set_modal(window_, TRUE);
  gtk_window_set_resizable(window_, FALSE);
  gtk_window_set_child(window_, makeContent(text, button_));
  gtk_window_set_default_widget(window_, button_);
  gtk_window_set_focus(window_, button_);
  describe(text);
  connectAnswers();
}

AlertWindow::~AlertWindow() {
  gtk_window_destroy(window_);
}

void AlertWindow::describe(const AlertText& text) {
  gtk_accessible_update_property(GTK_ACCESSIBLE(window_), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 text.message.c_str(), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
                                 text.information.c_str(), -1);
  gtk_accessible_update_property(GTK_ACCESSIBLE(window_), GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);
}

void AlertWindow::connectAnswers() {
  // Return reaches the button as the window's default; Escape needs a shortcut of its own.
  const auto escape = [](GtkWidget*, GVariant*, gpointer self) -> gboolean {
    static_cast<AlertWindow*>(self)->answer_(true);
    return TRUE;
  };
  const auto click = [](GtkButton*, gpointer self) {
    static_cast<AlertWindow*>(self)->answer_(true);
  };
  const auto close = [](GtkWindow*, gpointer self) -> gboolean {
    static_cast<AlertWindow*>(self)->answer_(false);
    return TRUE;
  };
  GtkEventController* shortcuts = gtk_shortcut_controller_new();
  gtk_shortcut_controller_add_shortcut(
      GTK_SHORTCUT_CONTROLLER(shortcuts),
      gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_Escape, GdkModifierType{}),
                       gtk_callback_action_new(escape, this, nullptr)));
  gtk_widget_add_controller(GTK_WIDGET(window_), shortcuts);
  g_signal_connect(button_, "clicked", G_CALLBACK(+click), this);
  g_signal_connect(window_, "close-request", G_CALLBACK(+close), this);
}

void AlertWindow::present() {
  gtk_window_present(window_);
}

}  // namespace vendril
