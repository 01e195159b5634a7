#pragma once

#include <glib.h>

#include <utility>

namespace vendril {

/// Owns an event source of the main context and removes it in the end. The source's callback must
/// not remove it itself: it returns G_SOURCE_CONTINUE.
class GlibSource {
 public:
  explicit GlibSource(guint id) : id_(id) {}
  GlibSource(GlibSource&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
  GlibSource& operator=(GlibSource&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
  }
  ~GlibSource() {
    if (id_ != 0) {
      g_source_remove(id_);
    }
  }

 private:
  guint id_;
};

}  // namespace vendril
