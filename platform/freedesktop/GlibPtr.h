#pragma once

#include <gio/gio.h>

#include <memory>

namespace vendril {

/// Calls a C function that releases a resource.
template <auto release>
struct ReleaseWith {
  template <class T>
  void operator()(T* resource) const {
    release(resource);
  }
};

/// Owners of what GLib and GIO hand out, each with the function that gives it back.
template <class T>
using GObjectPtr = std::unique_ptr<T, ReleaseWith<g_object_unref>>;
using GCharPtr = std::unique_ptr<gchar, ReleaseWith<g_free>>;
using GErrorPtr = std::unique_ptr<GError, ReleaseWith<g_error_free>>;
using GKeyFilePtr = std::unique_ptr<GKeyFile, ReleaseWith<g_key_file_unref>>;
using GMainLoopPtr = std::unique_ptr<GMainLoop, ReleaseWith<g_main_loop_unref>>;
using GStrvPtr = std::unique_ptr<gchar*, ReleaseWith<g_strfreev>>;
using GVariantPtr = std::unique_ptr<GVariant, ReleaseWith<g_variant_unref>>;

/// Receives the error of a GLib call: pass `out()` as its last argument.
class GErrorSlot {
 public:
  GErrorSlot() = default;
  GErrorSlot(const GErrorSlot&) = delete;
  GErrorSlot& operator=(const GErrorSlot&) = delete;
  ~GErrorSlot() { g_clear_error(&error_); }

  /// Empties the slot and returns where the next error goes.
  GError** out() {
    g_clear_error(&error_);
    return &error_;
  }
  explicit operator bool() const { return error_ != nullptr; }
  const GError* get() const { return error_; }
  const char* message() const { return error_ != nullptr ? error_->message : ""; }
  bool matches(GQuark domain, int code) const { return g_error_matches(error_, domain, code) != 0; }

 private:
  GError* error_ = nullptr;
};

}  // namespace vendril
