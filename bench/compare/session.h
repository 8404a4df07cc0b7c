// An application that runs its task, and the server's end of it.
#pragma once

#include "compare/measures.h"
#include "compare/process-facts.h"

namespace morvik::bench {

class Session {
 public:
  /// Launches the application and grants its start. A task that waits for events has said that it
  /// listens, and the requests that fill its table have been taken.
  Session(Field& field, Contestant& contestant, const Task& task);

  /// The application ends first: none sees its server go.
  ~Session() { application_.reset(); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Link& link() { return link_; }
  [[nodiscard]] pid_t pid() const { return application_->pid(); }
  [[nodiscard]] Activity activity() const { return activityOf(pid()); }

  /// Sends so many of the same message at once and gives the seconds until the application has
  /// spoken.
  double burst(const std::string& frame, int count);
  /// Sends a message and gives the microseconds until so many have come back.
  double exchange(const std::string& frame, int replies = 1);

 private:
  std::unique_ptr<Application> application_;
  Link link_;
};

std::string buttonFrame();
std::string tagFrame();

}  // namespace morvik::bench
