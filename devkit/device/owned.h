// Owner types for what GLib and GIO hand out.
#pragma once

#include <gio/gio.h>

#include <memory>

namespace morvik::devkit {

template <auto release>
struct Release {
  void operator()(auto* thing) const { release(thing); }
};

template <class Object>
using GOwned = std::unique_ptr<Object, Release<g_object_unref>>;
using GText = std::unique_ptr<char, Release<g_free>>;
using GTexts = std::unique_ptr<char*, Release<g_strfreev>>;  ///< up to a null
using GDate = std::unique_ptr<GDateTime, Release<g_date_time_unref>>;
using GSourceOwned = std::unique_ptr<GSource, Release<g_source_unref>>;
using GLoop = std::unique_ptr<GMainLoop, Release<g_main_loop_unref>>;
using GOptions = std::unique_ptr<GOptionContext, Release<g_option_context_free>>;

/// Takes the error of a GLib call: `GErrorOwned error; call(..., error.out());`.
class GErrorOwned {
 public:
  GErrorOwned() = default;
  ~GErrorOwned() { g_clear_error(&error_); }
  GErrorOwned(const GErrorOwned&) = delete;
  GErrorOwned& operator=(const GErrorOwned&) = delete;

  GError** out() { return &error_; }
  bool is(GQuark domain, int code) const { return g_error_matches(error_, domain, code) != FALSE; }
  /// The error's text, or the empty text when there is no error.
  const char* text() const { return error_ != nullptr ? error_->message : ""; }

 private:
  GError* error_ = nullptr;
};

}  // namespace morvik::devkit
