// Interactive mode: the server's leave to use the device.
#pragma once

#include <glib.h>
#include <v8.h>
#include <zeph-message.pb.h>

#include <memory>
#include <string>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

class MorvikData;

/// What is left to an application after the server has stopped interactive mode.
inline constexpr int kStopAutokillMs = 300000;

/// One morvik.start that waits for its answer.
class InteractiveData {
 public:
  InteractiveData(std::string askedId, MorvikData& instance, ScriptFunction function)
      : id(std::move(askedId)), data(&instance), callback(std::move(function)) {}
  ~InteractiveData();
  InteractiveData(const InteractiveData&) = delete;
  InteractiveData& operator=(const InteractiveData&) = delete;

  std::string id;                 ///< the interactive id that was asked for
  MorvikData* data;               ///< not owned
  ScriptFunction callback;        ///< called when the mode is granted
  v8::Global<v8::Object> object;  ///< what to hand to it, or empty
  bool answered = false;          ///< whether the end of this record is worth a line in the log
};

/// Sends the request of a morvik.start over the connection of the record's instance.
void askForInteractiveMode(std::unique_ptr<InteractiveData> record);

/// Sends the request of a morvik.stop. The instance has an interactive id, and keeps it.
void askToStop(const MorvikData& instance);

/// The reply function of a start request; `data` is an AnsweredOnce<InteractiveData>. OK grants the
/// mode and calls the script; any other code ends the process with status 1. An answer without a
/// code uses the request up: the script's function is never called.
void InteractiveCallback(void* data, const zeph::ZephMsg& message);

/// A stop notice has come: arms the timer that ends the process. Nothing disarms it. The script is
/// not told, and what it sends goes out as before.
void interactiveModeStopped();

/// That timer: ends the process with status 0.
gboolean stopAutokillCallback(gpointer unused);

}  // namespace morvik
