#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "alert/AlertText.h"

namespace vendril {

/// The dialog: an icon, a message, an informative text and one button. It has no close button.
class AlertWindow {
 public:
  /// Receives true when the button ended the dialog (clicked, or pressed by Return or Escape), and
  /// false when the desktop closed the window.
  using Answer = std::function<void(bool confirmed)>;

  AlertWindow(const AlertText& text, Answer answer);
  AlertWindow(const AlertWindow&) = delete;
  AlertWindow& operator=(const AlertWindow&) = delete;
  ~AlertWindow();

  /// Shows the window and asks the desktop for the keyboard focus.
  void present();

 private:
  void describe(const AlertText& text);
  void connectAnswers();

  Answer answer_;
  GtkWindow* window_;  // owned by the toolkit until it is destroyed
  GtkWidget* button_;  // owned by the window
};

}  // namespace vendril
